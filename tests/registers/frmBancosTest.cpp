// The register of banks: what it shows, its keys and its list.
#include "registers/BankRegister.h"

#include <QToolButton>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// ---- as it opens

INSTANTIATE_TEST_SUITE_P(, BankRegister, everywhere(), keptName);

TEST_P(BankRegister, SaysWhatItIs) {
    auto& form = open<frmBancos>();
    EXPECT_EQ(form.windowTitle(), "Cadastro de Bancos");
    EXPECT_EQ(text(form, "Label24"), "Informações cadastrais dos bancos.");
    EXPECT_EQ(text(form, "Label1"), "Código:");
    EXPECT_EQ(text(form, "Label2"), "Nome:");
    const auto& list = control<ListView>(form, "lstListagem");
    EXPECT_EQ(list.columnCaption(0), "Código");
    EXPECT_EQ(list.columnCaption(1), "Nome");
    EXPECT_FALSE(control(form, "lblCodigo").isVisible());
}

TEST_P(BankRegister, NamesItsButtons) {
    auto& form = open<frmBancos>();
    EXPECT_EQ(text(form, "cmdNovo"), "No&vo");
    EXPECT_EQ(text(form, "cmdSalvar"), "&Salvar");
    EXPECT_EQ(text(form, "cmdExcluir"), "E&xcluir");
    EXPECT_EQ(text(form, "cmdFechar"), "Fecha&r");
    const char* tips[] = {"Início do Arquivo", "Registro Anterior", "Próximo Registro",
                          "Fim do Arquivo"};
    for (int i = 0; i < NavigationBar::kCount; ++i)
        EXPECT_EQ(control<NavigationBar>(form, "btnNavegacao").button(i)->toolTip(), tips[i]);
}

TEST_P(BankRegister, OpensOnTheFirstBankWithAllListedAndTheCodeFocused) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    EXPECT_EQ(shown(form), "1|341|Banco Leste");
    EXPECT_THAT(listed(form), ElementsAre("341|Banco Leste", "104|Banco Norte", "237|Agrobanco"));
    EXPECT_EQ(focus(), "txtCodigo");
}

TEST_P(BankRegister, OpensEmptyOverAnEmptyTable) {
    auto& form = open<frmBancos>();
    EXPECT_EQ(shown(form), "||");
    EXPECT_THAT(listed(form), IsEmpty());
    for (int i = 0; i < NavigationBar::kCount; ++i)
        click(form, "btnNavegacao", i);
    EXPECT_EQ(shown(form), "||");
}

TEST_P(BankRegister, ListKeysAreFiveZerosABlankAndTheNumber) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    const auto& list = control<ListView>(form, "lstListagem");
    EXPECT_EQ(list.item(0).key, "00000 1");
    EXPECT_EQ(list.item(2).key, "00000 3");
    EXPECT_FALSE(list.item(0).icon.isNull());
}

TEST_P(BankRegister, EmptyFieldsShowEmpty) {
    given("bancos", {{{"cod_banco", number(104)}}, {{"nome", words("Sem código")}}});
    auto& form = open<frmBancos>();
    EXPECT_EQ(shown(form), "1|104|");
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(shown(form), "2||Sem código");
    EXPECT_THAT(listed(form), ElementsAre("104|", "|Sem código"));
}

// ---- walking

TEST_P(BankRegister, TheNavigationButtonsWalkAndStopAtTheEnds) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    const struct {
        int button;
        const char* shows;
    } steps[] = {
        {1, "1|341|Banco Leste"},
        {2, "2|104|Banco Norte"},
        {2, "3|237|Agrobanco"  },
        {2, "3|237|Agrobanco"  },
        {1, "2|104|Banco Norte"},
        {0, "1|341|Banco Leste"},
        {3, "3|237|Agrobanco"  },
        {0, "1|341|Banco Leste"},
    };
    for (const auto& [button, shows] : steps) {
        click(form, "btnNavegacao", button);
        EXPECT_EQ(shown(form), shows);
    }
}

TEST_P(BankRegister, WalkingGoesOnAfterASearchThatFoundNothing) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    type(form, "txtCodigo", "999");
    press(Qt::Key_Return);
    click(form, "btnNavegacao", 2);
    EXPECT_EQ(shown(form), "3|237|Agrobanco");
    type(form, "txtCodigo", "999");
    press(Qt::Key_Return);
    click(form, "btnNavegacao", 1);
    EXPECT_EQ(shown(form), "3|237|Agrobanco");
}

TEST_P(BankRegister, AClickInTheListBringsTheBankUp) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    clickRow(form, "lstListagem", 2);
    EXPECT_EQ(shown(form), "3|237|Agrobanco");
    clickRow(form, "lstListagem", 1);
    EXPECT_EQ(shown(form), "2|104|Banco Norte");
}

TEST_P(BankRegister, AListClickFindsAKeyOfTwoDigits) {
    for (int i = 1; i <= 12; ++i)
        given("bancos", {bank(i, "Banco")});
    auto& form = open<frmBancos>();
    EXPECT_EQ(control<ListView>(form, "lstListagem").item(11).key, "00000 12");
    clickRow(form, "lstListagem", 11);
    EXPECT_EQ(shown(form), "12|12|Banco");
}

TEST_P(BankRegister, AListedBankThatIsGoneShowsNothing) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    ado::Recordset other;
    other.Open("select * from bancos where codigo=2", data().Automacao);
    other.Delete();
    clickRow(form, "lstListagem", 1);
    EXPECT_EQ(shown(form), "||");
}

TEST_P(BankRegister, AHeadOrdersTheListAndTheWalkButLeavesTheBoxes) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    click(form, "btnNavegacao", 2);
    clickColumn(form, "lstListagem", 0);
    EXPECT_THAT(listed(form), ElementsAre("104|Banco Norte", "237|Agrobanco", "341|Banco Leste"));
    clickColumn(form, "lstListagem", 1);
    EXPECT_THAT(listed(form), ElementsAre("237|Agrobanco", "341|Banco Leste", "104|Banco Norte"));
    EXPECT_EQ(shown(form), "2|104|Banco Norte");
    click(form, "btnNavegacao", 0);
    EXPECT_EQ(shown(form), "3|237|Agrobanco");
}

TEST_P(BankRegister, TheOrderOutlivesTheWindow) {
    givenThreeBanks();
    clickColumn(open<frmBancos>(), "lstListagem", 1);
    click(frmBancos::instance(), "cmdFechar");
    EXPECT_EQ(shown(open<frmBancos>()), "3|237|Agrobanco");
}

// ---- the code box

TEST_P(BankRegister, ACodeIsTypedOverTheOneOnShow) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    type("104");
    press(Qt::Key_Return);
    EXPECT_EQ(shown(form), "2|104|Banco Norte");
    expectMessage("Advertência", "Este banco já está cadastrado.");
    press(Qt::Key_S, Qt::AltModifier);
    type("237");
    press(Qt::Key_Return);
    EXPECT_EQ(shown(form), "3|237|Agrobanco");
}

TEST_P(BankRegister, TheCodeBoxTakesDigitsOnly) {
    auto& form = open<frmBancos>();
    type(form, "txtCodigo", "1a0-4 .,x");
    EXPECT_EQ(text(form, "txtCodigo"), "104");
    EXPECT_EQ(focus(), "txtCodigo");
    press(Qt::Key_Backspace);
    EXPECT_EQ(text(form, "txtCodigo"), "10");
}

TEST_P(BankRegister, TheNameBoxTakesAnything) {
    auto& form = open<frmBancos>();
    type(form, "txtNome", "Banco 1 & Cia. - D");
    EXPECT_EQ(text(form, "txtNome"), "Banco 1 & Cia. - D");
}

TEST_P(BankRegister, EnterMovesOnAndPressesNothing) {
    auto& form = open<frmBancos>();
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtNome");
    press(Qt::Key_Enter);
    EXPECT_EQ(focus(), "cmdSalvar");
    EXPECT_EQ(shown(form), "||");
}

TEST_P(BankRegister, TypedWithEnterThroughTheFieldsANewBankIsSavedByOneMore) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    press(Qt::Key_V, Qt::AltModifier);
    type("1");
    press(Qt::Key_Return);
    type("Banco Oeste");
    press(Qt::Key_Return);
    EXPECT_EQ(shown(form), "|1|Banco Oeste") << "no other bank over it";
    press(Qt::Key_Return);
    EXPECT_EQ(stored().back(), "4|1|Banco Oeste");
    EXPECT_EQ(focus(), "txtCodigo");
}

// ---- the list shows which bank is on show

TEST_P(BankRegister, TheBankOnShowIsTheOneMarkedInTheList) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    auto& list = control<ListView>(form, "lstListagem");
    const auto marked = [&] {
        const auto rows = list.selectionModel()->selectedRows();
        return rows.isEmpty() ? QString() : list.text(rows.front().row(), 0);
    };
    EXPECT_EQ(marked(), "341");
    click(form, "btnNavegacao", 3);
    EXPECT_EQ(marked(), "237");
    enter(form, "txtCodigo");
    type("104");
    press(Qt::Key_Return);
    EXPECT_EQ(marked(), "104");
    clickColumn(form, "lstListagem", 1);
    EXPECT_EQ(marked(), "104") << "in another order";
    press(Qt::Key_V, Qt::AltModifier);
    EXPECT_EQ(marked(), "") << "a new bank is none of them";
}

TEST_P(BankRegister, KeysMoveTheMarkAndLeavingGivesItBackToTheBankOnShow) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    auto& list = control<ListView>(form, "lstListagem");
    enter(form, "lstListagem");
    press(Qt::Key_Down);
    EXPECT_EQ(list.selectionModel()->selectedRows().value(0).row(), 1);
    EXPECT_EQ(shown(form), "1|341|Banco Leste");
    press(Qt::Key_Tab);
    EXPECT_EQ(list.selectionModel()->selectedRows().value(0).row(), 0);
    enter(form, "lstListagem");
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(shown(form), "2|104|Banco Norte");
    EXPECT_EQ(list.selectionModel()->selectedRows().value(0).row(), 1);
}

TEST_P(BankRegister, EscAsksBeforeATypedBankIsLost) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    const auto expectQuestion = [&](MessageAnswer answer) {
        expectMessage("Mensagem", "O que foi digitado ainda não foi salvo.\n\nSair sem salvar?",
                      MessageIcon::question, MessageButtons::yesNo, answer);
    };
    click(form, "cmdNovo");
    type(form, "txtNome", "Banco Oeste");
    expectQuestion(MessageAnswer::no);
    press(Qt::Key_Escape);
    EXPECT_EQ(shown(form), "||Banco Oeste");
    click(form, "btnNavegacao", 1);
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible()) << "a stored bank, untouched";
}

TEST_P(BankRegister, AKnownCodeBringsItsBankUp) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    type(form, "txtCodigo", "237");
    press(Qt::Key_Return);
    EXPECT_EQ(shown(form), "3|237|Agrobanco");
    EXPECT_EQ(focus(), "txtNome");
}

TEST_P(BankRegister, AnUnknownCodeLeavesTheFormAsItIs) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    type(form, "txtCodigo", "999");
    press(Qt::Key_Return);
    EXPECT_EQ(shown(form), "1|999|Banco Leste");
}

TEST_P(BankRegister, LeavingTheEmptyCodeBoxLooksForNothing) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    click(form, "cmdNovo");
    press(Qt::Key_Return);
    EXPECT_EQ(shown(form), "||");
}

// ---- the other commands

TEST_P(BankRegister, NeverDeletes) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    expectMessage("Advertência",
                  "Não é possível excluir registros neste sistema. Tente excluir pelo "
                  "sistema de Automação.");
    click(form, "cmdExcluir");
    EXPECT_EQ(stored().size(), 3U);
    EXPECT_EQ(shown(form), "1|341|Banco Leste");
}

TEST_P(BankRegister, DeleteWithoutACodeOnlyGoesToTheCode) {
    auto& form = open<frmBancos>();
    enter(form, "txtNome");
    click(form, "cmdExcluir");
    EXPECT_EQ(focus(), "txtCodigo");
}

TEST_P(BankRegister, NewEmptiesTheBoxesAndKeepsTheList) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    click(form, "cmdNovo");
    EXPECT_EQ(shown(form), "||");
    EXPECT_EQ(focus(), "txtCodigo");
    EXPECT_EQ(listed(form).size(), 3U);
}

TEST_P(BankRegister, CloseAndEscUnload) {
    click(open<frmBancos>(), "cmdFechar");
    EXPECT_FALSE(frmBancos::instance().isLoaded());
    auto& form = open<frmBancos>();
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_FALSE(frmBancos::instance().isLoaded());
}

TEST_P(BankRegister, PromptsWhatEachControlIsForAndNothingOnceClosed) {
    auto& form = open<frmBancos>();
    EXPECT_EQ(prompt(), "Código de identificação do banco.");
    enter(form, "txtNome");
    EXPECT_EQ(prompt(), "Nome do banco.");
    enter(form, "lstListagem");
    EXPECT_EQ(prompt(), "Listagem de bancos.");
    click(form, "cmdFechar");
    EXPECT_EQ(prompt(), "");
}

TEST_P(BankRegister, TabGoesThroughTheWindowAsTheEyeDoes) {
    open<frmBancos>();
    std::vector<std::string> order;
    do {
        order.push_back(focus().toStdString());
        press(Qt::Key_Tab);
    } while (focus() != "txtCodigo" && order.size() < 20);
    EXPECT_THAT(order, ElementsAre("txtCodigo", "txtNome", "lstListagem", //
                                   "btnNavegacao", "btnNavegacao", "btnNavegacao", "btnNavegacao",
                                   "cmdNovo", "cmdSalvar", "cmdExcluir", "cmdFechar"));
}

} // namespace
