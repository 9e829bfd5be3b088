#pragma once

#include "controls/folder/FileChooser.h"
#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"
#include "support/QtPrinters.h"

#include <QTest>

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <optional>

/// Base of the tests that work a window through its real controls, with keys and clicks.
///
/// Controls are named as in the window's design. A click or a key takes effect before the call
/// returns; nothing waits. Message boxes, file dialogs and failures must be announced before what
/// brings them up: one that nobody announced fails the test, and so does an announced one that has
/// not come when the test ends. All windows are gone at the end of a test.
///
///     auto& form = open<frmBancos>();
///     expectMessage("Advertência", "O nome do banco deve ser preenchido.");
///     click(form, "cmdSalvar");
///     EXPECT_EQ(focus(), "txtNome");
class FormTest : public testing::Test {
protected:
    FormTest();
    ~FormTest() override;
    void TearDown() override;

    /// Shows a window, modeless, and makes it the active one.
    template <class Window>
    static Window& open() {
        Window& window = Window::instance();
        window.show();
        activate(window);
        return window;
    }
    static void activate(QWidget& window);

    /// The control, which must be there.
    template <class Control = QWidget>
    static Control& control(const QWidget& form, const QString& name) {
        auto* found = form.findChild<Control*>(name);
        if (!found)
            throw std::runtime_error("no control " + name.toStdString());
        return *found;
    }

    /// Presses a button or ticks a box with the mouse.
    static void click(QWidget& form, const QString& name);
    /// Presses a button of a NavigationBar, 0 to 3.
    static void click(QWidget& form, const QString& name, int index);
    /// Clicks in a ListView: on a row, on the check box of a row, on a column's head.
    static void clickRow(QWidget& form, const QString& name, int row);
    static void clickCheckBox(QWidget& form, const QString& name, int row);
    static void clickColumn(QWidget& form, const QString& name, int column);

    /// Gives the control the focus as Tab does, which marks a box's text.
    static void enter(QWidget& form, const QString& name);
    /// Types a text into the control that has the focus.
    static void type(const QString& text);
    /// enter(), then type().
    static void type(QWidget& form, const QString& name, const QString& text);
    /// Presses a key where the focus is.
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    /// The name of the control that has the focus; "" if none has.
    static QString focus();
    /// The text of a box, drop-down list, label, button or heading; a label's as it is read,
    /// without the mark of its field's access key.
    static QString text(const QWidget& form, const QString& name);
    /// The prompt shown last.
    [[nodiscard]] QString prompt() const { return prompt_; }

    /// The next message box must be this one, in every point; it is answered with `answer`.
    void expectMessage(const QString& title, const QString& text,
                       MessageIcon icon = MessageIcon::exclamation,
                       MessageButtons buttons = MessageButtons::ok,
                       MessageAnswer answer = MessageAnswer::ok);
    /// The next file dialog must be this one; it is answered with `answer`, nothing for giving up.
    void expectFile(const FileRequest& request, const std::optional<QString>& answer);
    /// The next failure that reaches a guard must have `part` in its what().
    void expectFailure(const QString& part);

    /// Announces that a window will be shown modally and what is done in it; must be called before
    /// what shows it. If the window is still on show afterwards it is hidden and the test fails.
    template <class Window>
    void whileModal(std::function<void(Window&)> work) {
        announceModal([work = std::move(work)] {
            Window& window = Window::instance();
            if (!window.isVisible())
                return false; // still loading, which lets events through
            activate(window);
            const QPointer<QWidget> shown = &window;
            work(window);
            if (shown && shown->isVisible()) {
                ADD_FAILURE() << "the modal window was left open";
                shown->hide();
            }
            return true;
        });
    }

private:
    struct ExpectedMessage {
        Message message;
        MessageAnswer answer;
    };
    struct ExpectedFile {
        FileRequest request;
        std::optional<QString> answer;
    };

    /// `work` is tried until it says that its window was on show and the work is done.
    void announceModal(const std::function<bool()>& work);
    void tryModal(const std::function<bool()>& work);
    MessageAnswer answerMessage(const Message& message);
    std::optional<QString> answerFile(const FileRequest& request);
    void takeFailure(const std::exception_ptr& failure);

    std::deque<ExpectedMessage> messages_;
    std::deque<ExpectedFile> files_;
    std::deque<QString> failures_;
    int modalsDue_ = 0;
    QString prompt_;
    QObject lifetime_; ///< what waits for a modal window waits no longer than the test
};
