// What of a received cheque must be filled in, and what is saved.
#include "cheques/ChequeEntry.h"
#include "shell/Mirtal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using ReceivedCheques = ChequeEntry;

TEST_P(ReceivedCheques, AsksForTheClientFirst) {
    auto& form = open<FrmLancarCheques>();
    expectMessage("Advertência", "É necessário preencher o nome do cliente.");
    click(form, "CmdIncluir");
    EXPECT_EQ(focus(), "txtNome");
    EXPECT_THAT(stored(), IsEmpty());
    EXPECT_FALSE(data().Automacao.inTransaction());
}

TEST_P(ReceivedCheques, ANameThatNoClientHasIsNoClient) {
    auto& form = open<FrmLancarCheques>();
    fill(form, "Ninguem", "1", "10");
    expectMessage("Advertência", "É necessário preencher o nome do cliente.");
    click(form, "CmdIncluir");
    EXPECT_EQ(text(form, "txtNome"), "Ninguem");
}

TEST_P(ReceivedCheques, AsksForTheBankSecond) {
    auto& form = open<FrmLancarCheques>();
    type(form, "txtNome", "Ana");
    expectMessage("Advertência", "É necessário preencher o nome do banco.");
    click(form, "CmdIncluir");
    EXPECT_EQ(focus(), "txtbanco");
}

TEST_P(ReceivedCheques, AsksForTheNumberThird) {
    auto& form = open<FrmLancarCheques>();
    type(form, "txtNome", "Ana");
    type(form, "txtbanco", "Agro");
    expectMessage("Advertência", "É necessário preencher O número do cheque.");
    click(form, "CmdIncluir");
    EXPECT_EQ(focus(), "txtnumero");
}

TEST_P(ReceivedCheques, AsksForTheValueLast) {
    auto& form = open<FrmLancarCheques>();
    fill(form, "Ana", "1", "0,00");
    expectMessage("Advertência", "É necessário preencher o Valor do Cheque.");
    click(form, "CmdIncluir");
    EXPECT_EQ(focus(), "txtvalor");
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_P(ReceivedCheques, ANegativeValuePasses) {
    auto& form = open<FrmLancarCheques>();
    fill(form, "Ana", "1", "-5");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|2|2|0042|1|01/03/2026|31/03/2026|-5,00|||Verdadeiro"));
}

TEST_P(ReceivedCheques, NothingElseNeedsBeFilledIn) {
    auto& form = open<FrmLancarCheques>();
    type(form, "txtNome", "Ana");
    type(form, "txtbanco", "Agro");
    type(form, "txtnumero", "7");
    type(form, "txtvalor", "0,01");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_P(ReceivedCheques, NoMoreCanBeTypedThanTheFileHolds) {
    auto& form = open<FrmLancarCheques>();
    expectRoom(form, {
                         {"txtagencia",    10 },
                         {"txtnumero",     20 },
                         {"txtautorizou",  50 },
                         {"txtobservacao", 255},
    });
}

TEST_P(ReceivedCheques, WhatTheFileCantHoldIsRefusedAndNothingTypedIsLost) {
    auto& form = open<FrmLancarCheques>();
    fill(form, "Ana", "1", "10");
    auto& box = control<QLineEdit>(form, "txtagencia");
    box.setMaxLength(100);
    box.setText("mais do que cabe");
    expectMessage("Advertência",
                  "O campo \"Agência\" aceita no máximo 10 caracteres; o texto informado tem 16.");
    click(form, "CmdIncluir");
    EXPECT_EQ(focus(), "txtagencia");
    EXPECT_EQ(text(form, "txtnumero"), "1");
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_P(ReceivedCheques, ADueDateWithoutAYearIsTheFirstOneNotBeforeTheIssueDate) {
    auto& form = open<FrmLancarCheques>();
    const std::tuple<const char*, const char*, const char*> dates[] = {
        {"22112019", "1502", "15/02/2020"},
        {"22112019", "2211", "22/11/2019"},
        {"10012031", "0901", "09/01/2032"},
    };
    for (const auto& [issue, typed, taken] : dates) {
        type(form, "txtdata", issue);
        press(Qt::Key_Return);
        EXPECT_EQ(focus(), "txtbompara");
        type(typed);
        press(Qt::Key_Return);
        EXPECT_EQ(text(form, "txtbompara"), taken);
    }
}

TEST_P(ReceivedCheques, SavesANewChequeAndIsReadyForTheNext) {
    auto& form = open<FrmLancarCheques>();
    fill(form, "Ana", "000123", "1234,56");
    press(Qt::Key_Return);
    type("Seu José");
    press(Qt::Key_Return);
    type("Cheque de D'Ávila");
    press(Qt::Key_Return);
    press(Qt::Key_Return); // the focus is on the save
    EXPECT_THAT(stored(), ElementsAre("1|2|2|0042|000123|01/03/2026|31/03/2026|1234,56|Cheque de "
                                      "D'Ávila|Seu José|Verdadeiro"));
    EXPECT_EQ(shown(form), newCheque(30, "descontar|"));
    EXPECT_EQ(focus(), "txtNome");
    EXPECT_FALSE(data().Automacao.inTransaction());
    EXPECT_EQ(data().rsCheques.RecordCount(), 1);
}

TEST_P(ReceivedCheques, SavesAChequeThatTheClientComesToExchange) {
    auto& form = open<FrmLancarCheques>();
    fill(form, "Ana", "1", "10");
    click(form, "txtdescontar");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|2|2|0042|1|01/03/2026|31/03/2026|10,00|||Falso"));
    EXPECT_TRUE(ticked(form, "txtdescontar"));
}

TEST_P(ReceivedCheques, ChangesTheChequeOnShow) {
    given("cheques", {cheque(kAna, "1", 10), cheque(kCarla, "2", 20), cheque(kAna, "3", 30)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 2);
    EXPECT_EQ(text(form, "txtlancamento"), "2");
    type(form, "txtvalor", "25,50");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|2|1||1|01/03/2026|01/04/2026|10,00|||Verdadeiro",
                                      "2|3|1||2|01/03/2026|01/04/2026|25,50|||Verdadeiro",
                                      "3|2|1||3|01/03/2026|01/04/2026|30,00|||Verdadeiro"));
    EXPECT_EQ(shown(form), newCheque(30, "descontar|"));
}

TEST_P(ReceivedCheques, AChequeDeletedMeanwhileFailsAndUndoesTheSaving) {
    given("cheques", {cheque(kAna, "1", 10), cheque(kCarla, "2", 20)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    Mirtal::apagarPorChave("Cheques", "lancamento", "1", false);
    expectFailure("foi excluído");
    click(form, "CmdIncluir");
    EXPECT_FALSE(data().Automacao.inTransaction());
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_P(ReceivedCheques, ARunOfChequesFallsDueEveryThirtyDays) {
    auto& form = open<FrmLancarCheques>();
    click(form, "cmbcheques");
    fill(form, "Ana", "1", "10");
    type(form, "txtbompara", "10012026");
    for (const char* next : {"2", "3", "4"}) {
        press(Qt::Key_S, Qt::AltModifier);
        EXPECT_EQ(focus(), "txtnumero");
        EXPECT_EQ(text(form, "txtnumero"), "");
        type(next);
    }
    EXPECT_THAT(stored(), ElementsAre("1|2|2|0042|1|01/03/2026|10/01/2026|10,00|||Verdadeiro",
                                      "2|2|2|0042|2|01/03/2026|09/02/2026|10,00|||Verdadeiro",
                                      "3|2|2|0042|3|01/03/2026|11/03/2026|10,00|||Verdadeiro"));
    EXPECT_EQ(shown(form), "|Ana Costa|Agrobanco|0042|4|01/03/2026|10/04/2026|10,00|||descontar|"
                           "varios");
}

TEST_P(ReceivedCheques, ARunBegunOnAStoredChequeGoesOnChangingIt) {
    given("cheques", {cheque(kAna, "1", 10), cheque(kCarla, "2", 20)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 3);
    click(form, "cmbcheques");
    click(form, "CmdIncluir");
    EXPECT_EQ(text(form, "txtlancamento"), "2");
    type("8");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|2|1||1|01/03/2026|01/04/2026|10,00|||Verdadeiro",
                                      "2|3|1||8|01/03/2026|01/05/2026|20,00|||Verdadeiro"));
}

} // namespace
