// The life of a window, its handlers and the guard, on small windows made for it.
#include "controls/look/Icons.h"
#include "controls/window/FormLife.h"
#include "controls/window/HeadingStrip.h"

#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QToolButton>

#include <gtest/gtest-spi.h>

#include <stdexcept>

namespace {

TEST_F(FormLife, IsBuiltOnFirstUseAndLoadedOnFirstShow) {
    auto& form = frmTeste::instance();
    EXPECT_EQ(&form, &frmTeste::instance());
    EXPECT_EQ(frmTeste::built, 1);
    EXPECT_FALSE(form.isLoaded());
    form.show();
    EXPECT_EQ(journal, Journal{"load"});
    EXPECT_TRUE(form.isLoaded());
}

TEST_F(FormLife, LoadsOnceAlsoWithoutBeingShown) {
    auto& form = frmTeste::instance();
    EXPECT_TRUE(form.load());
    form.show();
    EXPECT_EQ(journal, Journal{"load"});
}

TEST_F(FormLife, IsKeptWhenHidden) {
    auto& form = opened();
    type(form, "txtLivre", "abc");
    form.hide();
    form.show();
    EXPECT_EQ(journal, Journal{});
    EXPECT_EQ(text(frmTeste::instance(), "txtLivre"), "abc");
}

TEST_F(FormLife, IsBuiltAnewAfterItCouldNotBeLoaded) {
    auto& failed = frmTeste::instance();
    failed.onLoad = [&failed] {
        failed.txtLivre->setEnabled(false);
        throw std::runtime_error("sem dados");
    };
    expectFailure("sem dados");
    failed.showModal();
    EXPECT_FALSE(failed.isVisible());
    EXPECT_FALSE(failed.isLoaded());
    auto& next = open<frmTeste>();
    EXPECT_EQ(frmTeste::built, 2);
    EXPECT_TRUE(next.txtLivre->isEnabled());
    EXPECT_EQ(journal, (Journal{"load", "load"}));
}

TEST_F(FormLife, StartsAnewAfterUnloading) {
    auto& form = opened();
    type(form, "txtLivre", "abc");
    form.unload();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(prompt(), "");
    auto& next = open<frmTeste>();
    EXPECT_EQ(frmTeste::built, 2);
    EXPECT_EQ(journal, (Journal{"unload", "load"}));
    EXPECT_EQ(text(next, "txtLivre"), "");
}

TEST_F(FormLife, TheCloseBoxUnloads) {
    opened().close();
    EXPECT_EQ(journal, Journal{"unload"});
}

TEST_F(FormLife, EscPressesTheCloseButton) {
    opened();
    press(Qt::Key_Escape);
    EXPECT_EQ(journal, (Journal{"fechar", "unload"}));
}

TEST_F(FormLife, UnloadingBeforeLoadingRunsNoHandler) {
    frmTeste::instance().unload();
    EXPECT_EQ(journal, Journal{});
    frmTeste::instance();
    EXPECT_EQ(frmTeste::built, 2);
}

TEST_F(FormLife, ARetiredWindowOutlivesTheHandlerThatRetiredItAndNoMore) {
    const QPointer<frmTeste> form = &opened();
    click(*form, "cmdFechar");
    EXPECT_TRUE(form);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(form);
}

TEST_F(FormLife, AModalWindowHoldsItsCallerUntilItIsUnloaded) {
    whileModal<frmTeste>([](frmTeste& form) {
        EXPECT_TRUE(form.isModal());
        journal << "aberta";
        click(form, "cmdFechar");
    });
    auto& form = frmTeste::instance();
    form.showModal();
    journal << "de volta";
    EXPECT_EQ(journal, (Journal{"load", "aberta", "fechar", "unload", "de volta"}));
    EXPECT_EQ(form.txtCodigo->text(), "") << "still valid here";
}

TEST_F(FormLife, AModalWindowMayOpenAnother) {
    class frmOutro final : public Form {
    public:
        static frmOutro& instance() { return WindowList::instance().one<frmOutro>(); }
        void Form_Load() override { journal << "load 2"; }
        void Form_Unload() override { journal << "unload 2"; }
    };
    whileModal<frmTeste>([&](frmTeste& form) {
        form.onSave = [] {
            frmOutro::instance().showModal();
            journal << "depois";
        };
        whileModal<frmOutro>([](frmOutro& other) { other.close(); });
        click(form, "cmdSalvar");
        form.hide();
    });
    frmTeste::instance().showModal();
    EXPECT_EQ(journal, (Journal{"load", "salvar", "load 2", "unload 2", "depois"}));
    EXPECT_TRUE(frmTeste::instance().isLoaded());
}

TEST_F(FormLife, AnEmptiedListDestroysItsWindows) {
    const QPointer<frmTeste> retired = &opened();
    retired->unload();
    const QPointer<frmTeste> next = &frmTeste::instance();
    WindowList::instance().clear();
    EXPECT_FALSE(retired);
    EXPECT_FALSE(next);
}

TEST_F(FormLife, AFailingHandlerIsReportedAndGoesNoFurther) {
    auto& form = opened();
    form.onSave = [] { throw std::runtime_error("arquivo travado"); };
    expectFailure("travado");
    click(form, "cmdSalvar");
}

// No failure is announced: a message about it would fail the test.
TEST_F(FormLife, WhatNobodyHasAskedForFailsInSilenceAndWaitsLikeTheRest) {
    EXPECT_FALSE(quietly([] { throw std::runtime_error("sem rede"); }));
    bool ran = false;
    EXPECT_TRUE(quietly([&] { ran = true; }));
    EXPECT_TRUE(ran);
    const HandlersPaused paused;
    EXPECT_FALSE(quietly([] { ADD_FAILURE() << "in the middle of work"; }));
}
TEST_F(FormLife, AFailingLoadShowsNoWindow) {
    auto& form = frmTeste::instance();
    form.onLoad = [] { throw std::runtime_error("sem tabela"); };
    expectFailure("sem tabela");
    form.showModal();
    EXPECT_FALSE(form.isVisible());
    EXPECT_FALSE(form.isLoaded());
    expectFailure("sem tabela");
    form.showModeless();
    EXPECT_FALSE(form.isVisible());
}

TEST_F(FormLife, WhileAFailureIsReportedNoOtherHandlerRuns) {
    auto& form = opened();
    int reports = 0;
    const FailureHandler tests = setFailureHandler([&](const std::exception_ptr&) {
        ++reports;
        click(form, "btnNavegacao", 1);
        type(form, "txtNome", "x");
    });
    form.onSave = [] { throw 1; };
    click(form, "cmdSalvar");
    setFailureHandler(tests);
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(journal, Journal{"salvar"});
}

TEST_F(FormLife, OpensWithTheFocusInItsFirstField) {
    opened();
    EXPECT_EQ(focus(), "txtCodigo");
    EXPECT_EQ(prompt(), "Código.");
}

TEST_F(FormLife, ThePromptIsAlwaysThatOfTheControlThatHasTheFocus) {
    auto& form = opened();
    enter(form, "txtNome");
    EXPECT_EQ(prompt(), "Nome.");
    enter(form, "txtLivre");
    EXPECT_EQ(prompt(), "") << "of the field before";
    enter(form, "txtNome");
    form.btnNavegacao->button(2)->setFocus();
    EXPECT_EQ(prompt(), "Próximo Registro");
    enter(form, "cmdSalvar");
    EXPECT_EQ(prompt(), "");
    enter(form, "txtNome");
    click(form, "cmdFechar");
    EXPECT_EQ(prompt(), "");
}

TEST_F(FormLife, BehindAnotherWindowNoFieldPrompts) {
    auto& form = opened();
    QMessageBox box(QMessageBox::Warning, "Mensagem", "Outra estação alterou o registro.");
    box.show();
    activate(box);
    EXPECT_EQ(prompt(), "");
    box.hide();
    activate(form);
    EXPECT_EQ(prompt(), "Código.");
}

TEST_F(FormLife, TellsWhenTheFocusComesAndGoes) {
    auto& form = opened();
    enter(form, "txtNome");
    EXPECT_EQ(journal, Journal{"entrou"});
    enter(form, "txtLivre");
    EXPECT_EQ(journal, (Journal{"entrou", "saiu"}));
}

TEST_F(FormLife, AHandlerOfLostFocusMaySendTheFocusElsewhere) {
    auto& form = opened();
    form.onLeave = [&] { form.cmdSalvar->setFocus(); };
    enter(form, "txtNome");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "cmdSalvar");
}

TEST_F(FormLife, AnotherWindowInFrontIsNotLeaving) {
    auto& form = opened();
    enter(form, "txtNome");
    QWidget other;
    other.show();
    activate(other);
    activate(form);
    EXPECT_EQ(journal, Journal{"entrou"});
    EXPECT_EQ(focus(), "txtNome");
}

TEST_F(FormLife, AFocusSetBehindAnotherWindowIsToldOnComingBack) {
    auto& form = opened();
    enter(form, "txtNome");
    QWidget other;
    other.show();
    activate(other);
    form.txtLivre->setFocus();
    EXPECT_EQ(journal, Journal{"entrou"});
    activate(form);
    EXPECT_EQ(journal, (Journal{"entrou", "saiu"}));
}

TEST_F(FormLife, HidingAndUnloadingAreNotLeaving) {
    auto& form = opened();
    enter(form, "txtNome");
    form.hide();
    form.show();
    activate(form);
    form.unload();
    EXPECT_FALSE(journal.contains("saiu"));
}

TEST_F(FormLife, ClickingAndAccessKeysLeaveTheFieldFirst) {
    auto& form = opened();
    enter(form, "txtNome");
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_EQ(journal, (Journal{"entrou", "saiu", "salvar"}));
    EXPECT_EQ(focus(), "cmdSalvar");
    journal.clear();
    enter(form, "txtNome");
    click(form, "cmdSalvar");
    EXPECT_EQ(journal, (Journal{"entrou", "saiu", "salvar"}));
}

TEST_F(FormLife, AWarningOnLeavingDoesNotSwallowTheClickThatLeft) {
    auto& form = opened();
    enter(form, "txtNome");
    const QPoint at = form.cmdSalvar->mapTo(&form, form.cmdSalvar->rect().center());
    // As a message box does: the button is let go while it is open.
    form.onLeave = [&] {
        QTest::mouseRelease(form.windowHandle(), Qt::LeftButton, {}, QPoint(1, 1));
    };
    QTest::mousePress(form.windowHandle(), Qt::LeftButton, {}, at);
    EXPECT_EQ(journal, (Journal{"entrou", "saiu", "salvar"}));
    EXPECT_FALSE(form.cmdSalvar->isDown());
}

TEST_F(FormLife, WarnsAndPutsTheFocusOnTheControl) {
    class frmAviso final : public Form {
    public:
        frmAviso() {
            box->setObjectName("txtNome");
            on(button, &QPushButton::clicked, &frmAviso::button_Click);
        }
        static frmAviso& instance() { return WindowList::instance().one<frmAviso>(); }
        QPushButton* button = new QPushButton(this);
        QLineEdit* box = new QLineEdit(this);

    private:
        void button_Click() { return advertir(box, "O nome deve ser preenchido."); }
    };
    auto& form = open<frmAviso>();
    expectMessage("Advertência", "O nome deve ser preenchido.");
    form.button->click();
    EXPECT_EQ(focus(), "txtNome");
}

TEST_F(FormLife, StandsInTheMiddleOfTheScreen) {
    class frmCentro final : public Form {
    public:
        static frmCentro& instance() { return WindowList::instance().one<frmCentro>(); }
        void Form_Load() override {
            resize(300, 200);
            centre();
        }
    };
    auto& form = open<frmCentro>();
    const QRect screen = form.screen()->availableGeometry();
    const QRect whole = form.frameGeometry();
    ASSERT_NE(whole.size(), form.size()) << "a frame stands around it";
    EXPECT_NEAR(whole.left() - screen.left(), screen.right() - whole.right(), 1);
    EXPECT_NEAR(whole.top() - screen.top(), screen.bottom() - whole.bottom(), 1);
    // Moved by the operator, it stays there when it comes to the front again.
    form.move(10, 20);
    QWidget other;
    other.show();
    activate(other);
    activate(form);
    EXPECT_EQ(form.pos(), QPoint(10, 20));
}

TEST_F(FormLife, TakesItsWindowIconFromTheHeadingAndGivesButtonsTheirs) {
    class frmIcone final : public Form {
    public:
        frmIcone() {
            strip->setIconName("banco");
            button->setProperty("iconName", "save");
        }
        static frmIcone& instance() { return WindowList::instance().one<frmIcone>(); }
        HeadingStrip* strip = new HeadingStrip(this);
        QPushButton* button = new QPushButton(this);
    };
    auto& form = open<frmIcone>();
    EXPECT_EQ(form.windowIcon().name(), "banco");
    EXPECT_EQ(form.button->icon().name(), "save");
}

// The fixture itself: it must notice what nobody announced.

TEST_F(FormLife, TheFixtureFailsOnAMessageNobodyAnnounced) {
    EXPECT_NONFATAL_FAILURE(showMessage("Texto", "Título", MessageIcon::question),
                            "nobody announced");
}

TEST_F(FormLife, TheFixtureFailsOnAMessageThatDiffersInAnything) {
    expectMessage("Mensagem", "Texto", MessageIcon::information);
    EXPECT_NONFATAL_FAILURE(showMessage("Texto", "Mensagem", MessageIcon::exclamation),
                            "exclamation");
}

} // namespace
