#include "controls/Form.h"

#include "controls/DatePicker.h"
#include "controls/FieldGrid.h"
#include "controls/HeadingStrip.h"
#include "controls/Icons.h"
#include "controls/KeyHabits.h"
#include "controls/MessageBox.h"
#include "controls/Spoken.h"
#include "controls/Typing.h"
#include "controls/WindowList.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace {

PromptHook& promptHook() {
    static PromptHook hook;
    return hook;
}

void showPrompt(const QString& text) {
    if (promptHook())
        promptHook()(text);
}

void keepDigits(QLineEdit& box) {
    const QString text = box.text();
    if (std::ranges::all_of(text, isDigit))
        return;
    const auto before = onlyDigits(text.first(box.cursorPosition())).size();
    box.setText(onlyDigits(text));
    box.setCursorPosition(static_cast<int>(before));
}

/// What the desktop puts around a window; nothing before it is on show.
QMargins frameOf(const QWidget& window) {
    return window.windowHandle() ? window.windowHandle()->frameMargins() : QMargins();
}

/// A control is called by the label that is its buddy, lists too, of which Qt doesn't know it.
void nameByLabels(const QWidget& window) {
    for (const auto* label : window.findChildren<QLabel*>()) {
        QWidget* control = label->buddy();
        if (!control || !control->accessibleName().isEmpty())
            continue;
        QString name = label->text().remove('&').trimmed();
        if (name.endsWith(':'))
            name.chop(1);
        control->setAccessibleName(name.trimmed());
    }
    for (auto* button : window.findChildren<QAbstractButton*>()) {
        const auto* box = qobject_cast<QLineEdit*>(button->parentWidget());
        if (box && button->accessibleName().isEmpty()) // the picture in a date box
            button->setAccessibleName("Calendário de " + box->accessibleName());
        else if (button->text().endsWith(':') && button->accessibleName().isEmpty())
            button->setAccessibleName(button->text().chopped(1).remove('&'));
    }
}

} // namespace

PromptHook setPromptHook(PromptHook hook) { return std::exchange(promptHook(), std::move(hook)); }

Form::Form()
    : QDialog(nullptr, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint) {
    KeyHabits::install();
}

Form::~Form() = default;

bool Form::load() {
    if (loaded_)
        return true;
    loaded_ = true;
    Icons::applyTo(*this);
    installSpoken();
    nameByLabels(*this);
    arrangeFields(*this);
    if (const auto* heading = findChild<HeadingStrip*>())
        setWindowIcon(Icons::named(heading->iconName()));
    for (auto* control : findChildren<QWidget*>())
        control->installEventFilter(this);
    // Enter presses the button that has the focus (see filterKey) and no other: none may look as
    // if.
    for (auto* button : findChildren<QPushButton*>()) {
        button->setAutoDefault(false);
        button->setDefault(false);
    }
    loaded_ = guarded([this] { Form_Load(); });
    if (!loaded_)
        retire();
    return loaded_;
}

void Form::showModal() {
    if (isVisible())
        return showModeless();
    if (!load())
        return;
    const QPointer<Form> self = this;
    modal_ = true;
    exec();
    if (!self)
        return; // the program is ending
    modal_ = false;
    if (retired_)
        deleteLater();
}

void Form::showModeless() {
    show();
    raise();
    activateWindow();
}

void Form::unload() {
    if (unloading_)
        return;
    unloading_ = true;
    if (std::exchange(loaded_, false))
        guarded([this] { Form_Unload(); });
    showPrompt("");
    hide();
    // Gone right behind its message box, before the screen has given it the focus back, it would
    // leave no window with the focus.
    const QWindow* shown = windowHandle();
    if (QWindow* owner = shown ? shown->transientParent() : nullptr; owner && owner->isVisible())
        owner->requestActivate();
    retire();
    if (!retired_)
        unloading_ = false; // a window of its own maker: may be shown again
}

void Form::retire() {
    retired_ = WindowList::instance().retire(*this);
    if (retired_ && !modal_)
        deleteLater();
}

void Form::reject() {
    if (somethingTyped() &&
        showMessage("O que foi digitado ainda não foi salvo.\n\nSair sem salvar?", "Mensagem",
                    MessageIcon::question, MessageButtons::yesNo) != MessageAnswer::yes)
        return;
    if (closeButton_)
        closeButton_->click();
    else
        unload();
}

void Form::closeEvent(QCloseEvent* event) {
    event->accept();
    unload();
}

void Form::setVisible(bool visible) {
    if (!visible) {
        focused_ = nullptr; // hiding is not leaving a control
    } else if (!isVisible()) {
        if (!load())
            return;
        // In front of the window it is opened from, without becoming that window's child.
        const QWidget* owner = QApplication::activeWindow();
        winId();
        if (owner && owner != this)
            windowHandle()->setTransientParent(owner->windowHandle());
    }
    QDialog::setVisible(visible);
}

void Form::keyPressEvent(QKeyEvent* event) {
    // Enter in a control that has no use for it must not press a button elsewhere in the window.
    if (!isEnter(*event))
        QDialog::keyPressEvent(event);
}

void Form::prompts(std::initializer_list<Prompt> table) {
    for (const auto& [control, text] : table) {
        prompts_[control] = QString::fromUtf8(text);
        control->setAccessibleDescription(prompts_[control]); // what others see in the status bar
    }
}

void Form::enterAsTab(std::initializer_list<QWidget*> controls) {
    for (QWidget* control : controls)
        enterAsTab_.insert(control);
}

void Form::digitsOnly(QLineEdit* box) {
    digitsOnly_.insert(box);
    enterAsTab_.insert(box);
    // Keys are stopped before they type; this is for all other ways a text gets in.
    connect(box, &QLineEdit::textEdited, box, [box] { keepDigits(*box); });
}

void Form::nothingTyped() { untouched_.emplace(*this); }

bool Form::somethingTyped() const {
    if (!untouched_)
        return false;
    const auto differences = EntryValues(*this).differencesTo(*untouched_);
    return std::ranges::any_of(differences, [&](const EntryValues::Difference& now) {
        if (!now.changeable)
            return false; // worked out by the program
        // A number that is punctuated only while nobody is in it is the same number.
        return !digitsOnly_.contains(now.control) || onlyDigits(now.here) != onlyDigits(now.there);
    });
}

void Form::tellsRecord(QLineEdit* key, const QString& word, QLineEdit* name) {
    const auto tell = [this, key, word, name] {
        QString record = key->text().isEmpty() ? QString("Novo") : word + " " + key->text();
        if (name && !name->text().isEmpty())
            record += ": " + name->text();
        for (auto* strip : findChildren<HeadingStrip*>())
            strip->setRecord(record);
    };
    connect(key, &QLineEdit::textChanged, this, tell);
    if (name)
        connect(name, &QLineEdit::textChanged, this, tell);
    tell();
}

void Form::centre(std::optional<int> top) {
    ensurePolished();
    if (layout())
        layout()->activate();
    if (!testAttribute(Qt::WA_Resized))
        adjustSize();
    const QWidget* owner = QApplication::activeWindow();
    const bool frameless = windowFlags() & Qt::FramelessWindowHint;
    place_ = Place{frameOf(isVisible() || frameless || !owner ? *this : *owner), top};
    place();
}

void Form::place() {
    const QWidget* owner = QApplication::activeWindow();
    const QRect area = (owner ? owner->screen() : screen())->availableGeometry();
    const QSize whole = size().expandedTo(minimumSizeHint()).grownBy(place_->frame);
    const int across = std::max(0, (area.width() - whole.width()) / 2);
    const int down = place_->top.value_or(std::max(0, (area.height() - whole.height()) / 2));
    move(area.topLeft() + QPoint(across, down));
}

void Form::advertir(QWidget* control, const QString& text) {
    showMessage(text, "Advertência", MessageIcon::exclamation);
    control->setFocus();
}

void Form::whenGotFocus(QWidget* control, const Handler& handler) {
    gotFocus_.insert(control, handler);
}

void Form::whenLostFocus(QWidget* control, const Handler& handler) {
    lostFocus_.insert(control, handler);
}

void Form::focusCame(QWidget* control) {
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

void Form::focusWent() {
    QWidget* control = std::exchange(focused_, nullptr);
    if (!control || unloading_ || !isVisible())
        return;
    for (const Handler& handler : lostFocus_.values(control))
        guarded(handler);
}

// Only the button that closes the window can be gone to all the same.
bool Form::keepsFocus(QWidget& control, const QFocusEvent& leaving) {
    auto* date = qobject_cast<DatePicker*>(&control);
    if (!date || !date->isEnabled() || unloading_ || !isVisible() ||
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

bool Form::filterKey(QWidget* control, const QKeyEvent& key) {
    if (isEnter(key) && !(key.modifiers() & Qt::ControlModifier))
        for (const Handler& handler : onEnter_.values(control))
            guarded(handler);
    if (isEnter(key) && enterAsTab_.contains(control)) {
        focusNextPrevChild(true);
        return true;
    }
    if (auto* button = qobject_cast<QAbstractButton*>(control);
        button && isEnter(key) && !button->isCheckable()) {
        button->click();
        return true;
    }
    return false;
}

bool Form::pressByAccessKey(QAbstractButton& button, const QShortcutEvent& key) {
    if (!button.isEnabled() || key.isAmbiguous())
        return false; // Qt moves the focus among the candidates
    keptFocus_ = false;
    button.setFocus(Qt::ShortcutFocusReason);
    if (isVisible() && !keptFocus_)
        button.click();
    return true;
}

bool Form::event(QEvent* event) {
    const bool done = QDialog::event(event);
    // In front of the others the window has its frame. From here on its place is the operator's.
    if (event->type() == QEvent::WindowActivate && place_ && isVisible()) {
        const QMargins frame = frameOf(*this);
        if (std::exchange(place_->frame, frame) != frame)
            place();
        place_.reset();
    }
    return done;
}

bool Form::eventFilter(QObject* watched, QEvent* event) {
    auto* control = qobject_cast<QWidget*>(watched);
    if (!control)
        return QDialog::eventFilter(watched, event);
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
        break;
    case QEvent::FocusOut: {
        const auto& went = *static_cast<QFocusEvent*>(event);
        if (went.reason() == Qt::ActiveWindowFocusReason)
            showPrompt(""); // nobody types here behind another window
        if (keepingFocus_ || !leavesControl(went))
            break;
        if (keepsFocus(*control, went))
            return true;
        const bool pressed = QGuiApplication::mouseButtons() & Qt::LeftButton;
        focusWent();
        releasedOnLeaving_ = pressed && !(QGuiApplication::mouseButtons() & Qt::LeftButton);
        break;
    }
    case QEvent::KeyPress:
        if (filterKey(control, *static_cast<QKeyEvent*>(event)))
            return true;
        break;
    case QEvent::Shortcut:
        if (button && pressByAccessKey(*button, *static_cast<QShortcutEvent*>(event)))
            return true;
        break;
    case QEvent::MouseButtonPress:
        if (std::exchange(pressDue_, false))
            return true;
        if (std::exchange(enteredByMouse_, false))
            return true; // all of it stays marked
        // A message box came up on leaving, and the mouse button was let go in it. The press that
        // only now arrives is the click that the operator made: a warning must not swallow it.
        if (std::exchange(releasedOnLeaving_, false) && button && button->isEnabled()) {
            button->click();
            return true;
        }
        break;
    default:
        break;
    }
    return QDialog::eventFilter(watched, event);
}
