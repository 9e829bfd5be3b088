// The program as the shop runs it, but for two things: message boxes are told on the standard
// output and answered at once, and so is every window that comes and goes. Once the main window
// stands it does what its environment's OBSERVED_ACTION names (an action of the main window), or
// waits. With OBSERVED_SPLASH the window manager is as one who closes the splash while it stands.
#include "controls/MessageBox.h"
#include "shell/Mirtal.h"
#include "shell/Programa.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QMainWindow>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int kIntoTheSecond = 300; ///< ms

void tell(const QString& line) {
    std::fputs((line + "\n").toUtf8().constData(), stdout);
    std::fflush(stdout);
}

/// Sees every window of the program.
class Observer final : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* widget = qobject_cast<QWidget*>(watched);
        if (!widget || !widget->isWindow())
            return false;
        if (event->type() == QEvent::Show)
            shown(*widget);
        else if (event->type() == QEvent::Hide)
            tell("hide " + widget->objectName());
        return false;
    }

private:
    void shown(QWidget& window) {
        tell("show " + window.objectName());
        if (window.objectName() == "frmSplash") {
            sinceSplash_.start();
            if (qEnvironmentVariableIsSet("OBSERVED_SPLASH"))
                QTimer::singleShot(kIntoTheSecond, &window, [&window] {
                    tell(window.close() ? "the splash was closed" : "the splash stays");
                });
        }
        if (window.objectName() != "MDICheques")
            return;
        tell(QString("after %1 ms").arg(sinceSplash_.elapsed()));
        tell("folder " + Mirtal::DatabaseFolder);
        const QString name = qEnvironmentVariable("OBSERVED_ACTION");
        QTimer::singleShot(0, &window, [&window, name] {
            if (name == "close")
                window.close();
            else if (auto* action = window.findChild<QAction*>(name))
                action->trigger();
        });
    }

    QElapsedTimer sinceSplash_;
};

void observe() { qApp->installEventFilter(new Observer(qApp)); }

} // namespace

Q_COREAPP_STARTUP_FUNCTION(observe)

int main(int argc, char** argv) {
    setMessageFunction([](const Message& message) {
        tell("message " + message.title + ": " + message.text);
        return MessageAnswer::ok;
    });
    return executarPrograma(argc, argv);
}
