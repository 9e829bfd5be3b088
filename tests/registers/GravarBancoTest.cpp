// What is saved of a bank, and what is refused.
#include "registers/BankRegister.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST_P(BankRegister, SavesANewBankAndIsReadyForTheNext) {
    auto& form = open<frmBancos>();
    type(form, "txtCodigo", "104");
    press(Qt::Key_Return);
    type("Banco do Norte");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored(), ElementsAre("1|104|Banco do Norte"));
    EXPECT_EQ(shown(form), "||");
    EXPECT_THAT(listed(form), ElementsAre("104|Banco do Norte"));
    EXPECT_EQ(focus(), "txtCodigo");
    EXPECT_FALSE(data().Automacao.inTransaction());
}

TEST_P(BankRegister, SavesWithTheAccessKeys) {
    auto& form = open<frmBancos>();
    type("104");
    press(Qt::Key_Return);
    type("Banco do Norte");
    press(Qt::Key_S, Qt::AltModifier);
    type("237");
    press(Qt::Key_Return);
    type("Banco do Sul");
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_THAT(stored(), ElementsAre("1|104|Banco do Norte", "2|237|Banco do Sul"));
    EXPECT_EQ(shown(form), "||");
}

TEST_P(BankRegister, ChangesTheBankOnShowAndThenShowsTheFirst) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    clickRow(form, "lstListagem", 2);
    type(form, "txtNome", "Agrobanco S.A.");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored(),
                ElementsAre("1|341|Banco Leste", "2|104|Banco Norte", "3|237|Agrobanco S.A."));
    EXPECT_EQ(shown(form), "1|341|Banco Leste");
    EXPECT_THAT(listed(form),
                ElementsAre("341|Banco Leste", "104|Banco Norte", "237|Agrobanco S.A."));
    EXPECT_EQ(focus(), "txtCodigo");
}

TEST_P(BankRegister, AfterAChangeTheFirstIsThatOfTheOrderChosen) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    clickColumn(form, "lstListagem", 0);
    clickRow(form, "lstListagem", 2);
    type(form, "txtNome", "Banco do Leste");
    click(form, "cmdSalvar");
    EXPECT_EQ(shown(form), "2|104|Banco Norte");
}

TEST_P(BankRegister, AnUnknownCodeTypedOverAStoredBankIsItsNewCode) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    clickRow(form, "lstListagem", 1);
    type(form, "txtCodigo", "999");
    press(Qt::Key_Return);
    type("Banco Novo");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored(), ElementsAre("1|341|Banco Leste", "2|999|Banco Novo", "3|237|Agrobanco"));
}

TEST_P(BankRegister, RefusesABankWithoutCode) {
    auto& form = open<frmBancos>();
    type(form, "txtNome", "Banco do Norte");
    expectMessage("Advertência", "O código do banco deve ser informado.");
    click(form, "cmdSalvar");
    EXPECT_EQ(focus(), "txtCodigo");
    EXPECT_THAT(stored(), IsEmpty());
    EXPECT_EQ(shown(form), "||Banco do Norte");
}

TEST_P(BankRegister, AsksForTheCodeBeforeTheName) {
    auto& form = open<frmBancos>();
    expectMessage("Advertência", "O código do banco deve ser informado.");
    click(form, "cmdSalvar");
}

TEST_P(BankRegister, RefusesABankWithoutName) {
    auto& form = open<frmBancos>();
    type(form, "txtCodigo", "104");
    expectMessage("Advertência", "O nome do banco deve ser preenchido.");
    click(form, "cmdSalvar");
    EXPECT_EQ(focus(), "txtNome");
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_P(BankRegister, RefusesToSaveAStoredBankUnchanged) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    expectMessage("Advertência", "Este banco já está cadastrado.");
    click(form, "cmdSalvar");
    EXPECT_EQ(focus(), "txtCodigo");
    EXPECT_EQ(stored().size(), 3U);
    EXPECT_EQ(data().rsBancos.Filter(), "");
    EXPECT_EQ(data().rsBancos.RecordCount(), 3);
    EXPECT_EQ(shown(form), "1|341|Banco Leste");
}

TEST_P(BankRegister, RefusesASecondBankOfTheSameCodeAndName) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    click(form, "cmdNovo");
    put(form, "txtNome", "banco norte"); // the file compares texts without regard to case
    put(form, "txtCodigo", "0104");
    expectMessage("Advertência", "Este banco já está cadastrado.");
    press(Qt::Key_Return);
    put(form, "txtNome", "banco norte");
    click(form, "cmdSalvar");
    EXPECT_EQ(stored().size(), 3U);
}

TEST_P(BankRegister, AcceptsTheSameCodeUnderAnotherName) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    click(form, "cmdNovo");
    enter(form, "txtNome");
    put(form, "txtCodigo", "104");
    type("Outro Banco");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored(), ElementsAre("1|341|Banco Leste", "2|104|Banco Norte", "3|237|Agrobanco",
                                      "4|104|Outro Banco"));
}

TEST_P(BankRegister, AnApostropheInTheNameFailsAndStoresNothing) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    click(form, "cmdNovo");
    type(form, "txtCodigo", "999");
    press(Qt::Key_Return);
    type("Banco D'Oeste");
    expectFailure("apóstrofo");
    click(form, "cmdSalvar");
    EXPECT_FALSE(data().Automacao.inTransaction());
    data().rsBancos.clearFilter();
    EXPECT_EQ(stored().size(), 3U);
}

TEST_P(BankRegister, TheFirstBankOfAllMayHaveAnApostrophe) {
    auto& form = open<frmBancos>(); // no other bank, no duplicate to look for
    type(form, "txtCodigo", "999");
    press(Qt::Key_Return);
    type("Banco D'Oeste");
    click(form, "cmdSalvar");
    EXPECT_THAT(stored(), ElementsAre("1|999|Banco D'Oeste"));
}

TEST_P(BankRegister, ABankDeletedMeanwhileFailsAndUndoesTheSaving) {
    givenThreeBanks();
    auto& form = open<frmBancos>();
    type(form, "txtNome", "Outro nome");
    ado::Recordset other;
    other.Open("select * from bancos where codigo=1", data().Automacao);
    other.Delete();
    expectFailure("foi excluído");
    click(form, "cmdSalvar");
    EXPECT_FALSE(data().Automacao.inTransaction());
    EXPECT_THAT(stored(), ElementsAre("2|104|Banco Norte", "3|237|Agrobanco"));
}

} // namespace
