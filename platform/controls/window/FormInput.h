#pragma once

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <functional>

class QAbstractButton;
class QFocusEvent;
class QKeyEvent;
class QLineEdit;
class QShortcutEvent;

/// Focus, keys and prompts of the controls of a window, as Form.h promises them to the windows.
class FormInput final : public QObject {
public:
    using Handler = std::function<void()>;

    /// @param moveOn gives the focus to the next control of the window
    FormInput(QWidget& window, Handler moveOn);

    /// From now on hears of all that reaches the controls that the window has now.
    void watchControls();
    /// The window is being unloaded: leaving a control means nothing any more.
    void rest() { working_ = false; }

    void setPrompt(QWidget* control, const QString& text);
    void whenGotFocus(QWidget* control, const Handler& handler);
    void whenLostFocus(QWidget* control, const Handler& handler);
    void whenEnter(QWidget* control, const Handler& handler);
    void enterAsTab(QWidget* control) { enterAsTab_.insert(control); }
    void digitsOnly(QLineEdit* box);
    [[nodiscard]] bool isDigitsOnly(QWidget* control) const {
        return digitsOnly_.contains(control);
    }

    /// The one button that can be gone to while a date box holds no date.
    void setCloseButton(QAbstractButton* button) { closeButton_ = button; }
    [[nodiscard]] QAbstractButton* closeButton() const { return closeButton_; }

    /// The window goes: whatever has the focus isn't left by that.
    void forgetFocus() { focused_ = nullptr; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] bool atWork() const;
    void focusCame(QWidget* control);
    void focusWent();
    /// Keeps the focus in a date box whose text is no date, and says so. @return whether it did.
    bool keepsFocus(QWidget& control, const QFocusEvent& leaving);
    /// @return whether the control must not be told of it.
    bool leave(QWidget& control, const QFocusEvent& leaving);
    bool filterKey(QWidget* control, const QKeyEvent& key);
    bool filterPress(QAbstractButton* button);
    bool pressByAccessKey(QAbstractButton& button, const QShortcutEvent& key);

    QWidget& window_;
    Handler moveOn_;
    bool working_ = false;
    QHash<QWidget*, QString> prompts_;
    QMultiHash<QWidget*, Handler> gotFocus_;
    QMultiHash<QWidget*, Handler> lostFocus_;
    QMultiHash<QWidget*, Handler> onEnter_;
    QSet<QWidget*> enterAsTab_;
    QSet<QWidget*> digitsOnly_;
    QAbstractButton* closeButton_ = nullptr;
    /// The control that has told that the focus came to it and not yet that it went.
    QWidget* focused_ = nullptr;
    /// A control has been entered that had to be left again; see keepsFocus().
    bool keptFocus_ = false;
    bool keepingFocus_ = false;
    bool pressDue_ = false; ///< of the mouse, on that control
    /// The mouse button was let go while a control was being left for the one that it is on.
    bool releasedOnLeaving_ = false;
    bool enteredByMouse_ = false; ///< and the click that did it is still to come
};

/// Where prompts go: to the main window's status bar. "" clears it.
using PromptHook = std::function<void(const QString&)>;
/// Sets where prompts go. Without one they go nowhere.
/// @return the hook set before.
PromptHook setPromptHook(PromptHook hook);
/// Shows a prompt where prompts go.
void showPrompt(const QString& text);
