#pragma once

#include "controls/box/EntryValues.h"
#include "controls/look/CentredPlace.h"
#include "controls/window/Failure.h"
#include "controls/window/FormInput.h"

#include <QDialog>

#include <initializer_list>
#include <optional>

class QAbstractButton;
class QLineEdit;

/// Base of every child window: gives it the life the windows are written for, and the guard where
/// what its handlers throw ends.
///
/// Life. A window class has one instance, made on first use by its own `instance()` and kept in the
/// WindowList. The first time it is shown (or load() is called) `Form_Load` runs. hide() keeps it
/// as it is. The close box, Esc and unload() run `Form_Unload`, clear the prompt, hide the window
/// and retire the object: the next `instance()` builds a new one, in the state of its design. The
/// retired object stays valid until the handlers at work have returned to the event loop, and for
/// the caller of showModal() until it has returned there too. A window whose Form_Load fails is not
/// shown and is retired as well: nothing of it is left half loaded.
///
/// Before Form_Load the window dresses itself: buttons get the icons they name (see Icons.h), the
/// window that of its HeadingStrip, and each control the accessible name of the label whose buddy
/// it is; after it the fields stand as FieldGrid.h says. It is never larger than its screen (see
/// CentredPlace.h). Enter presses the button that has the focus and no other, and no other looks as
/// if. Held down, a key presses none at all (see KeyHabits.h).
///
/// A DatePicker whose text is no date isn't left, but to close the window: the operator is told,
/// the text is marked, and what he had pressed instead is not done.
///
/// Handlers are plain private member functions connected with on(), gotFocus() and lostFocus() in
/// the constructor, after setupUi(). None may let an exception out; the guard catches it.
class Form : public QDialog {
    Q_OBJECT
public:
    Form();
    ~Form() override;

    /// Runs Form_Load if it has not run yet. For who works on a window without showing it.
    /// @return false if Form_Load failed, which has been told then.
    [[nodiscard]] bool load();
    [[nodiscard]] bool isLoaded() const noexcept { return loaded_; }

    /// Shows the window in front of the active one and returns when it is hidden or unloaded; the
    /// rest of the program waits. To a window already on show is only returned: the ones that were
    /// opened from it are closed as by Esc, unless one of them has something to ask first.
    void showModal();
    /// Shows the window, or brings it to the front, and returns at once.
    void showModeless();

    /// Runs Form_Unload, clears the prompt, hides the window and retires it. Does nothing while
    /// already unloading.
    void unload();

    /// Where another has changed the record on show since: shows it as it is stored now, in place
    /// of what has been typed, so that the operator can be shown both.
    /// @return false, and nothing changes, if no record is on show, or it is gone or no other.
    virtual bool mostrarGravado() { return false; }

    /// Esc: what the close button does, or unload() if the window names none; before that it asks
    /// if something would be lost (see nothingTyped()).
    void reject() override;
    void setVisible(bool visible) override;

protected:
    struct Prompt {
        QWidget* control;
        const char* text; ///< UTF-8
    };

    virtual void Form_Load() {}
    virtual void Form_Unload() {}

    /// Connects a signal of a control to a handler of this window. The handler may take fewer
    /// arguments than the signal has.
    template <class Control, class Signal, class Self, class... Args>
    void on(Control* control, Signal signal, void (Self::*handler)(Args...)) {
        connectGuarded(control, signal, static_cast<Self*>(this), handler);
    }

    /// Runs the handler when the focus comes to the control, or leaves it, within this window. A
    /// message box, a menu or another window in front does not count as leaving; neither does
    /// hiding or unloading this window. A handler of lostFocus() may set the focus elsewhere. It
    /// has run before the click that took the focus away, by mouse or access key, reaches its own
    /// handler.
    template <class Self>
    void gotFocus(QWidget* control, void (Self::*handler)()) {
        input_.whenGotFocus(control,
                            [self = static_cast<Self*>(this), handler] { (self->*handler)(); });
    }
    template <class Self>
    void lostFocus(QWidget* control, void (Self::*handler)()) {
        input_.whenLostFocus(control,
                             [self = static_cast<Self*>(this), handler] { (self->*handler)(); });
    }

    /// Shows each control's prompt while it has the focus; for one without a prompt its tool-tip,
    /// for one without that nothing. Behind another window, a message box too, there is none; it is
    /// back when this one is in front.
    void prompts(std::initializer_list<Prompt> table);
    /// In these controls Enter, that of the keypad too, moves the focus on and does nothing else.
    void enterAsTab(std::initializer_list<QWidget*> controls);
    /// Enter in the control, without Ctrl, runs the handler; then the key goes on as ever.
    template <class Self>
    void onEnter(QWidget* control, void (Self::*handler)()) {
        input_.whenEnter(control,
                         [self = static_cast<Self*>(this), handler] { (self->*handler)(); });
    }
    /// The box takes digits and editing keys only; of what is pasted or dropped, only the digits.
    /// What has none is refused and changes nothing. Enter moves on. Entered, by mouse too, all of
    /// it is marked, ready to be typed over. What the program sets is left as it is.
    void digitsOnly(QLineEdit* box) { input_.digitsOnly(box); }
    /// Names the close button, which Esc presses. Its own handler calls unload().
    void closesWith(QAbstractButton* button) { input_.setCloseButton(button); }

    /// What stands in the fields now is stored, or was put there by the program: none of it can be
    /// lost. From then on Esc asks, before it closes the window, if the fields hold anything else.
    void nothingTyped();

    /// From now on the heading strips say which record is on show: "Novo" while the box of its key
    /// is empty, or else `word` and the key; and with `name` whose it is.
    void tellsRecord(QLineEdit* key, const QString& word, QLineEdit* name = nullptr);

    /// Puts the window in the middle of its screen; with `top`, so many pixels under the screen's
    /// upper edge (see CentredPlace.h).
    void centre(std::optional<int> top = std::nullopt) { place_.centre(top); }
    /// Says what is missing or wrong (title "Advertência", exclamation, OK), then puts the focus on
    /// the control.
    void advertir(QWidget* control, const QString& text);

    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// Closes what stands in front of this modal window, as far as that lets itself be closed.
    void returnTo();
    void retire();
    [[nodiscard]] bool somethingTyped() const;

    FormInput input_{*this, [this] { focusNextPrevChild(true); }};
    CentredPlace place_{*this};
    std::optional<EntryValues> untouched_; ///< what the fields held when nothing was typed
    bool loaded_ = false;
    bool unloading_ = false;
    bool modal_ = false;
    bool retired_ = false;
};
