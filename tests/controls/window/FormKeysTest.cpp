// The keys of a window: Enter, keys held down, what a box for digits takes, and what Esc asks.
#include "controls/window/FormLife.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QToolButton>

#include <initializer_list>

namespace {

TEST_F(FormLife, EnterMovesOnWhereTheTableSaysSo) {
    auto& form = opened();
    enter(form, "txtNome");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtLivre");
    enter(form, "txtNome");
    press(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(focus(), "txtLivre");
}

TEST_F(FormLife, EnterElsewherePressesNothing) {
    auto& form = opened();
    enter(form, "txtLivre");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtLivre");
    EXPECT_EQ(journal, Journal{"recebeu Enter"});
}

TEST_F(FormLife, EnterRunsItsHandlerAndThenGoesOnToTheControl) {
    auto& form = opened();
    form.onEntered = [&] {
        journal << "Enter";
        form.cmdSalvar->setFocus();
    };
    enter(form, "txtLivre");
    press(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(focus(), "txtLivre");
    journal.clear();
    press(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(focus(), "cmdSalvar");
    EXPECT_EQ(journal, (Journal{"Enter", "recebeu Enter"}));
}

TEST_F(FormLife, EnterOnAButtonPressesIt) {
    auto& form = opened();
    enter(form, "cmdSalvar");
    press(Qt::Key_Return);
    EXPECT_EQ(journal, Journal{"salvar"});
    form.btnNavegacao->button(3)->setFocus();
    press(Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(journal, (Journal{"salvar", "navegar 3"}));
}

TEST_F(FormLife, EnterDoesNotTickACheckBox) {
    class frmMarca final : public Form {
    public:
        frmMarca() { box->setObjectName("chkMarca"); }
        static frmMarca& instance() { return WindowList::instance().one<frmMarca>(); }
        QCheckBox* box = new QCheckBox("&Marcar", this);
    };
    auto& form = open<frmMarca>();
    enter(form, "chkMarca");
    press(Qt::Key_Return);
    EXPECT_FALSE(form.box->isChecked());
    press(Qt::Key_M, Qt::AltModifier);
    EXPECT_TRUE(form.box->isChecked());
}

TEST_F(FormLife, NoButtonLooksAsIfEnterPressedItFromElsewhere) {
    auto& form = opened();
    EXPECT_FALSE(form.cmdSalvar->isDefault());
    enter(form, "cmdFechar");
    EXPECT_FALSE(form.cmdFechar->isDefault());
}

/// As the screen sends it while a key stays down.
void repeatKey(QWidget& control, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
               const QString& text = {}) {
    QTest::simulateEvent(&control, true, key, modifiers, text, true, 0);
}

TEST_F(FormLife, AKeyHeldDownPressesNoButton) {
    auto& form = opened();
    for (QWidget* button :
         std::initializer_list<QWidget*>{form.cmdSalvar, form.btnNavegacao->button(2)}) {
        button->setFocus();
        repeatKey(*button, Qt::Key_Return);
        repeatKey(*button, Qt::Key_Enter, Qt::KeypadModifier);
        repeatKey(*button, Qt::Key_Space, Qt::NoModifier, " ");
    }
    enter(form, "txtLivre");
    repeatKey(*form.txtLivre, Qt::Key_S, Qt::AltModifier, "s");
    EXPECT_EQ(journal, Journal{});
    EXPECT_EQ(focus(), "txtLivre");
    EXPECT_EQ(text(form, "txtLivre"), "");
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_EQ(journal, Journal{"salvar"});
}

TEST_F(FormLife, AKeyPressedAgainInTheMomentInWhichItWasLetGoIsHeldDown) {
    auto& form = opened();
    form.cmdSalvar->setFocus();
    const auto send = [&](QEvent::Type type, quint64 when) {
        QKeyEvent key(type, Qt::Key_Return, Qt::NoModifier);
        key.setTimestamp(when);
        QCoreApplication::sendEvent(form.cmdSalvar, &key);
    };
    send(QEvent::KeyPress, 100);
    EXPECT_EQ(journal, Journal{"salvar"});
    for (const quint64 when : {600U, 630U, 660U}) {
        send(QEvent::KeyRelease, when);
        send(QEvent::KeyPress, when);
    }
    EXPECT_EQ(journal, Journal{"salvar"});
    send(QEvent::KeyRelease, 700);
    send(QEvent::KeyPress, 780);
    EXPECT_EQ(journal, (Journal{"salvar", "salvar"}));
}

TEST_F(FormLife, ALetterWithAltThatIsNoAccessKeyTypesNothing) {
    auto& form = opened();
    type(form, "txtLivre", "Ana");
    QTest::sendKeyEvent(QTest::Click, form.txtLivre, Qt::Key_K, QString("k"), Qt::AltModifier);
    EXPECT_EQ(text(form, "txtLivre"), "Ana");
    constexpr auto kAltGr = Qt::ControlModifier | Qt::AltModifier;
    QTest::sendKeyEvent(QTest::Click, form.txtLivre, Qt::Key_Q, QString("/"), kAltGr);
    EXPECT_EQ(text(form, "txtLivre"), "Ana/") << "AltGr does type";
}

TEST_F(FormLife, WhatADigitsBoxRefusesLeavesItAsItWas) {
    auto& form = opened();
    type(form, "txtCodigo", "104");
    const auto untouched = [&] {
        form.txtCodigo->selectAll();
        return [&form] {
            return form.txtCodigo->text() == "104" && form.txtCodigo->selectedText() == "104";
        };
    }();
    type("a");
    EXPECT_TRUE(untouched());
    QTest::sendKeyEvent(QTest::Click, form.txtCodigo, Qt::Key_K, QString("k"), Qt::AltModifier);
    EXPECT_TRUE(untouched());
    QInputMethodEvent composed;
    composed.setCommitString("á");
    QCoreApplication::sendEvent(form.txtCodigo, &composed);
    EXPECT_TRUE(untouched());
    QGuiApplication::clipboard()->setText("banco");
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_TRUE(untouched());
    type("3");
    EXPECT_EQ(text(form, "txtCodigo"), "3");
}

TEST_F(FormLife, AClickIntoADigitsBoxMarksAllOfItOnce) {
    auto& form = opened();
    type(form, "txtCodigo", "104");
    enter(form, "txtNome");
    const auto clickIn = [&] { QTest::mouseClick(form.txtCodigo, Qt::LeftButton); };
    clickIn();
    EXPECT_EQ(form.txtCodigo->selectedText(), "104");
    clickIn();
    EXPECT_EQ(form.txtCodigo->selectedText(), "") << "the second click places the caret";
}

class frmPerda final : public Form {
public:
    frmPerda() {
        auto* column = new QVBoxLayout(this);
        for (QLineEdit* box : {txtNome, txtSoma}) {
            box->setAccessibleName("Campo");
            column->addWidget(box);
        }
        txtNome->setObjectName("txtNome");
        txtSoma->setReadOnly(true);
    }
    static frmPerda& instance() { return WindowList::instance().one<frmPerda>(); }
    using Form::nothingTyped;

    QLineEdit* txtNome = new QLineEdit;
    QLineEdit* txtSoma = new QLineEdit;

private:
    void Form_Load() override { nothingTyped(); }
};

TEST_F(FormLife, EscAsksBeforeWhatWasTypedIsLost) {
    auto& form = open<frmPerda>();
    const auto esc = [&](MessageAnswer answer) {
        expectMessage("Mensagem", "O que foi digitado ainda não foi salvo.\n\nSair sem salvar?",
                      MessageIcon::question, MessageButtons::yesNo, answer);
        press(Qt::Key_Escape);
    };
    type(form, "txtNome", "Ana");
    esc(MessageAnswer::no);
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(text(form, "txtNome"), "Ana");
    esc(MessageAnswer::yes);
    EXPECT_FALSE(form.isVisible());
}

TEST_F(FormLife, EscDoesNotAskWhereNothingCanBeLost) {
    auto& form = open<frmPerda>();
    type(form, "txtNome", "Ana");
    form.nothingTyped();             // stored
    form.txtSoma->setText("150,00"); // worked out
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    type(opened(), "txtLivre", "a window that stores nothing");
    press(Qt::Key_Escape);
    EXPECT_EQ(journal, (Journal{"fechar", "unload"}));
}

TEST_F(FormLife, ADigitsBoxTakesDigitsAndEditingKeysOnly) {
    auto& form = opened();
    type(form, "txtCodigo", "1a0-4 ç");
    EXPECT_EQ(text(form, "txtCodigo"), "104");
    press(Qt::Key_Home);
    press(Qt::Key_Delete);
    press(Qt::Key_Right);
    press(Qt::Key_Backspace);
    EXPECT_EQ(text(form, "txtCodigo"), "4");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtNome");
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(focus(), "txtCodigo");
}

TEST_F(FormLife, ADigitsBoxTakesTheDigitsOfWhatIsPasted) {
    auto& form = opened();
    type(form, "txtCodigo", "99");
    press(Qt::Key_Left);
    QGuiApplication::clipboard()->setText("nº 1-04");
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(text(form, "txtCodigo"), "91049");
    EXPECT_EQ(form.txtCodigo->cursorPosition(), 4);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "91049");
}

TEST_F(FormLife, ADigitsBoxKeepsWhatTheProgramSets) {
    auto& form = opened();
    form.txtCodigo->setText("123.456.789-09");
    EXPECT_EQ(text(form, "txtCodigo"), "123.456.789-09");
}

} // namespace
