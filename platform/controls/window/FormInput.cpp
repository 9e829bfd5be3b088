#include "controls/window/FormInput.h"

#include "controls/box/DatePicker.h"
#include "controls/typing/Typing.h"
#include "controls/window/Failure.h"
#include "controls/window/MessageBox.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace {

PromptHook& promptHook() {
    static PromptHook hook;
    return hook;
}

void keepDigits(QLineEdit& box) {
    const QString text = box.text();
    if (std::ranges::all_of(text, isDigit))
        return;
    const auto before = onlyDigits(text.first(box.cursorPosition())).size();
    box.setText(onlyDigits(text));
    box.setCursorPosition(static_cast<int>(before));
}

} // namespace

PromptHook setPromptHook(PromptHook hook) { return std::exchange(promptHook(), std::move(hook)); }

void showPrompt(const QString& text) {
    if (promptHook())
        promptHook()(text);
}

FormInput::FormInput(QWidget& window, Handler moveOn)
    : window_(window), moveOn_(std::move(moveOn)) {}

void FormInput::watchControls() {
    working_ = true;
    for (auto* control : window_.findChildren<QWidget*>())
        control->installEventFilter(this);
}

void FormInput::setPrompt(QWidget* control, const QString& text) {
    prompts_[control] = text;
    control->setAccessibleDescription(text); // what others see in the status bar
}

void FormInput::digitsOnly(QLineEdit* box) {
    digitsOnly_.insert(box);
    enterAsTab_.insert(box);
    // Keys are stopped before they type; this is for all other ways a text gets in.
    connect(box, &QLineEdit::textEdited, box, [box] { keepDigits(*box); });
}

void FormInput::whenGotFocus(QWidget* control, const Handler& handler) {
    gotFocus_.insert(control, handler);
}

void FormInput::whenLostFocus(QWidget* control, const Handler& handler) {
    lostFocus_.insert(control, handler);
}

void FormInput::whenEnter(QWidget* control, const Handler& handler) {
    onEnter_.insert(control, handler);
}

bool FormInput::atWork() const { return working_ && window_.isVisible(); }

void FormInput::focusCame(QWidget* control) {
    showPrompt(prompts_.value(control, control->toolTip()));
    if (focused_ == control)
        return;  // back from a message box, a menu or another window
    focusWent(); // the focus was set while another window was in front
    focused_ = control;
    for (const Handler& handler : gotFocus_.values(control))
        guarded(handler);
    if (digitsOnly_.contains(control))
        qobject_cast<QLineEdit*>(control)->selectAll(); // its handler may have set its text
}

void FormInput::focusWent() {
    QWidget* control = std::exchange(focused_, nullptr);
    if (!control || !atWork())
        return;
    for (const Handler& handler : lostFocus_.values(control))
        guarded(handler);
}

// Only the button that closes the window can be gone to all the same.
bool FormInput::keepsFocus(QWidget& control, const QFocusEvent& leaving) {
    auto* date = qobject_cast<DatePicker*>(&control);
    if (!date || !date->isEnabled() || !atWork() ||
        (closeButton_ && QApplication::focusWidget() == closeButton_))
        return false;
    const QString refusal = date->refusal();
    if (refusal.isEmpty())
        return false;
    const bool byMouse = leaving.reason() == Qt::MouseFocusReason;
    {
        // First the focus: the window gives it, after the message, to whoever had it before.
        const QScopedValueRollback<bool> keeping(keepingFocus_, true);
        date->setFocus();
        showMessage(refusal, "Advertência", MessageIcon::exclamation);
    }
    date->selectAll();
    keptFocus_ = true;
    pressDue_ = byMouse; // comes as soon as the focus has been dealt with
    QTimer::singleShot(0, this, [this] { pressDue_ = false; });
    return true;
}

bool FormInput::filterKey(QWidget* control, const QKeyEvent& key) {
    if (isEnter(key) && !(key.modifiers() & Qt::ControlModifier))
        for (const Handler& handler : onEnter_.values(control))
            guarded(handler);
    if (isEnter(key) && enterAsTab_.contains(control)) {
        moveOn_();
        return true;
    }
    if (auto* button = qobject_cast<QAbstractButton*>(control);
        button && isEnter(key) && !button->isCheckable()) {
        button->click();
        return true;
    }
    return false;
}

bool FormInput::pressByAccessKey(QAbstractButton& button, const QShortcutEvent& key) {
    if (!button.isEnabled() || key.isAmbiguous())
        return false; // Qt moves the focus among the candidates
    keptFocus_ = false;
    button.setFocus(Qt::ShortcutFocusReason);
    if (window_.isVisible() && !keptFocus_)
        button.click();
    return true;
}

bool FormInput::leave(QWidget& control, const QFocusEvent& leaving) {
    if (leaving.reason() == Qt::ActiveWindowFocusReason)
        showPrompt(""); // nobody types here behind another window
    if (keepingFocus_ || !leavesControl(leaving))
        return false;
    if (keepsFocus(control, leaving))
        return true;
    const bool pressed = QGuiApplication::mouseButtons() & Qt::LeftButton;
    focusWent();
    releasedOnLeaving_ = pressed && !(QGuiApplication::mouseButtons() & Qt::LeftButton);
    return false;
}

bool FormInput::filterPress(QAbstractButton* button) {
    if (std::exchange(pressDue_, false))
        return true;
    if (std::exchange(enteredByMouse_, false))
        return true; // all of it stays marked
    // A message box came up on leaving, and the mouse button was let go in it. The press that only
    // now arrives is the click that the operator made: a warning must not swallow it.
    if (std::exchange(releasedOnLeaving_, false) && button && button->isEnabled()) {
        button->click();
        return true;
    }
    return false;
}

bool FormInput::eventFilter(QObject* watched, QEvent* event) {
    auto* control = qobject_cast<QWidget*>(watched);
    if (!control)
        return false;
    if (digitsOnly_.contains(control) && typesNoDigit(*event)) {
        event->accept(); // refused before it takes the place of what is marked
        return true;
    }
    auto* button = qobject_cast<QAbstractButton*>(control);
    switch (event->type()) {
    case QEvent::FocusIn:
        enteredByMouse_ = static_cast<QFocusEvent*>(event)->reason() == Qt::MouseFocusReason &&
                          digitsOnly_.contains(control);
        if (!keepingFocus_ || control == focused_) // then only its prompt comes back
            focusCame(control);
        return false;
    case QEvent::FocusOut:
        return leave(*control, *static_cast<QFocusEvent*>(event));
    case QEvent::KeyPress:
        return filterKey(control, *static_cast<QKeyEvent*>(event));
    case QEvent::Shortcut:
        return button && pressByAccessKey(*button, *static_cast<QShortcutEvent*>(event));
    case QEvent::MouseButtonPress:
        return filterPress(button);
    default:
        return false;
    }
}
