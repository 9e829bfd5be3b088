#include "controls/window/Form.h"

#include "controls/look/Icons.h"
#include "controls/look/Spoken.h"
#include "controls/typing/KeyHabits.h"
#include "controls/typing/Typing.h"
#include "controls/window/FieldGrid.h"
#include "controls/window/FieldNames.h"
#include "controls/window/HeadingStrip.h"
#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QWindow>

#include <algorithm>
#include <utility>

Form::Form()
    : QDialog(nullptr, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint) {
    KeyHabits::install();
    installSpoken();
}

Form::~Form() = default;

bool Form::load() {
    if (loaded_)
        return true;
    loaded_ = true;
    Icons::applyTo(*this);
    nameByLabels(*this);
    if (const auto* heading = findChild<HeadingStrip*>())
        setWindowIcon(Icons::named(heading->iconName()));
    input_.watchControls();
    // Enter presses the button that has the focus (see filterKey) and no other: none may look as
    // if.
    for (auto* button : findChildren<QPushButton*>()) {
        button->setAutoDefault(false);
        button->setDefault(false);
    }
    loaded_ = guarded([this] { Form_Load(); });
    if (!loaded_)
        retire();
    arrangeFields(*this); // knowing now how much each can hold
    return loaded_;
}

void Form::showModal() {
    if (isVisible())
        return returnTo();
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

void Form::returnTo() {
    while (auto* inFront = qobject_cast<Form*>(QApplication::activeModalWidget())) {
        if (inFront == this || !isModal())
            break;
        inFront->reject();
        if (inFront->isVisible())
            return; // what is typed there isn't given up
    }
    showModeless();
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
    input_.rest();
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
    if (input_.closeButton())
        input_.closeButton()->click();
    else
        unload();
}

void Form::closeEvent(QCloseEvent* event) {
    event->accept();
    unload();
}

void Form::setVisible(bool visible) {
    if (!visible) {
        input_.forgetFocus(); // hiding is not leaving a control
    } else if (!isVisible()) {
        if (!load())
            return;
        // In front of the window it is opened from, without becoming that window's child.
        const QWidget* owner = QApplication::activeWindow();
        winId();
        if (owner && owner != this)
            windowHandle()->setTransientParent(owner->windowHandle());
        place_.open();
    }
    QDialog::setVisible(visible);
}

void Form::keyPressEvent(QKeyEvent* event) {
    // Enter in a control that has no use for it must not press a button elsewhere in the window.
    if (!isEnter(*event))
        QDialog::keyPressEvent(event);
}

void Form::prompts(std::initializer_list<Prompt> table) {
    for (const auto& [control, text] : table)
        input_.setPrompt(control, QString::fromUtf8(text));
}

void Form::enterAsTab(std::initializer_list<QWidget*> controls) {
    for (QWidget* control : controls)
        input_.enterAsTab(control);
}

bool Form::event(QEvent* event) {
    const bool done = QDialog::event(event);
    if (event->type() == QEvent::WindowActivate && isVisible())
        place_.settle();
    if (event->type() == QEvent::LayoutRequest && isVisible())
        place_.stayWithin();
    return done;
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
        return !input_.isDigitsOnly(now.control) || onlyDigits(now.here) != onlyDigits(now.there);
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

void Form::advertir(QWidget* control, const QString& text) {
    showMessage(text, "Advertência", MessageIcon::exclamation);
    control->setFocus();
}

#include "controls/window/moc_Form.cpp"
