// The program as the shop runs it, but for two things: message boxes are told on the standard
// output and answered at once, and so is every window that comes and goes. Once the main window
// stands it does what its environment's OBSERVED_ACTION names (an action of the main window), or
// waits. With OBSERVED_SPLASH the window manager is as one who closes the splash while it stands.
// What the action has opened gets the keys of OBSERVED_KEYS ("|" for Enter, "&s" for Alt+S), each
// where the focus is then. OBSERVED_DISK, "write automacao.mdb 3" or "read automacao.mdb 0", is a
// disk that fails from the action on, after so many calls.
#include "controls/window/MessageBox.h"
#include "shell/DatabaseFolder.h"
#include "shell/Programa.h"
#include "shell/dbconectar.h"
#include "support/FailingDisk.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QMainWindow>
#include <QTest>
#include <QTimer>

#include <cerrno>
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
        if (qEnvironmentVariableIsSet("OBSERVED_DISK"))
            changeDisk();
        const QString name = qEnvironmentVariable("OBSERVED_ACTION");
        QTimer::singleShot(0, &window, [this, &window, name] {
            failFromNowOn();
            if (name == "close")
                window.close();
            else if (auto* action = window.findChild<QAction*>(name))
                action->trigger();
        });
        QTimer::singleShot(0, this, &Observer::typeNext);
    }

    void changeDisk() {
        dbconectar& data = dbconectar::instance();
        data.fechar();
        data.Automacao.setDisk(disk_);
        data.abrir();
    }
    void failFromNowOn() {
        const QStringList fault = qEnvironmentVariable("OBSERVED_DISK").split(' ');
        if (fault.size() != 3)
            return;
        disk_.what =
            fault[0] == "read" ? FailingDisk::Refuses::reading : FailingDisk::Refuses::writing;
        disk_.spared = fault[2].toInt();
        disk_.error = EIO;
        disk_.refused = fault[1].toStdString();
    }
    /// Before the key takes effect the next one is waited for: it may go to a window that this one
    /// opens and that returns only when it is closed.
    void typeNext() {
        if (keys_.isEmpty())
            return;
        QWidget* const target = QApplication::focusWidget();
        if (!target || target->window()->objectName() == "MDICheques") {
            QTimer::singleShot(10, this, &Observer::typeNext);
            return;
        }
        const bool access = keys_.startsWith('&');
        const QChar key = keys_[access ? 1 : 0];
        keys_.remove(0, access ? 2 : 1);
        QTimer::singleShot(0, this, &Observer::typeNext);
        if (key == '|')
            QTest::keyClick(target, Qt::Key_Return);
        else
            QTest::keyClick(target, key.toLatin1(), access ? Qt::AltModifier : Qt::NoModifier);
    }

    QElapsedTimer sinceSplash_;
    QString keys_ = qEnvironmentVariable("OBSERVED_KEYS");
    FailingDisk disk_;
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
