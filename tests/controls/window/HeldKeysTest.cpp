// What is typed while a window waits for its data, when another window has come in front meanwhile.
#include "controls/box/DatePicker.h"
#include "controls/box/MoneyEdit.h"
#include "controls/window/Form.h"
#include "controls/window/Repainting.h"
#include "support/FormTest.h"

#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

namespace {

/// An entry whose number, left, waits for an answer.
class Entry final : public Form {
public:
    Entry() {
        auto* inside = new QVBoxLayout(this);
        for (QWidget* each : std::initializer_list<QWidget*>{&number, &day, &value, &name, &save})
            inside->addWidget(each);
        enterAsTab({&number, &day, &value, &name});
        closesWith(&close_);
        lostFocus(&number, &Entry::number_LostFocus);
        lostFocus(&value, &Entry::value_LostFocus);
        on(&save, &QPushButton::clicked, &Entry::save_Click);
    }

    std::function<void()> whileWaiting;
    std::function<void()> whenSaved = [] {};
    QLineEdit number;
    DatePicker day;
    MoneyEdit value;
    QLineEdit name;
    QPushButton save{"&Salvar"};
    QStringList done;

private:
    void number_LostFocus() { whileWaiting(); }
    void value_LostFocus() { done << "checked"; }
    void save_Click() {
        done << "saved";
        whenSaved();
    }

    QPushButton close_;
};

class HeldKeys : public FormTest {
protected:
    HeldKeys() {
        other_.show();
        entry_.showModeless();
        activate(entry_);
        entry_.number.setFocus();
        entry_.whileWaiting = [this] { wait(); };
    }

    /// Of the entry, whatever has come in front since.
    void key(int code, const QString& text = {}, Qt::KeyboardModifiers modifiers = {}) {
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease})
            qt_handleKeyEvent(entry_.windowHandle(), type, code, modifiers, text);
    }
    void typed(const QString& text) {
        for (const QChar each : text)
            key(each.unicode(), each);
        key(Qt::Key_Return);
    }
    /// What the screen has held back.
    void typeTheRest() {
        typed("05122026");
        typed("10,00");
        typed("Gerente");
        key(Qt::Key_S, "s", Qt::AltModifier);
    }
    /// Another window comes in front, and the answer only then.
    void wait() {
        other_.activateWindow();
        Repainting windows(std::chrono::milliseconds(0));
        for (int i = 0; i < 100 && QApplication::activeWindow() != &other_; ++i)
            windows.repaint();
        EXPECT_EQ(QApplication::activeWindow(), &other_);
    }

    QLineEdit other_;
    Entry entry_;
};

TEST_F(HeldKeys, ReachTheFieldsTheyWereTypedForThoughAnotherWindowIsInFront) {
    key(Qt::Key_Return);
    typeTheRest();
    EXPECT_EQ(entry_.number.text(), "");
    EXPECT_EQ(entry_.day.text(), "05/12/2026");
    EXPECT_EQ(entry_.value.text(), "10,00");
    EXPECT_EQ(entry_.name.text(), "Gerente");
    EXPECT_EQ(entry_.done, (QStringList{"checked", "saved"}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &other_; }));
    EXPECT_EQ(other_.text(), "");
}

TEST_F(HeldKeys, LeaveWhatTheyBringUpInFront) {
    bool stays = false;
    entry_.whenSaved = [&] {
        QMessageBox message(&entry_);
        QTimer::singleShot(0, &message, [&] {
            for (int i = 0; i < 10; ++i)
                QApplication::processEvents();
            stays = QApplication::activeWindow() == &message;
            message.accept();
        });
        message.exec();
    };
    key(Qt::Key_Return);
    typeTheRest();
    EXPECT_EQ(entry_.done, (QStringList{"checked", "saved"}));
    EXPECT_TRUE(stays);
}

} // namespace
