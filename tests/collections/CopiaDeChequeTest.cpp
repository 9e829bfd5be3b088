// The bounced cheque that is copied from a received one.
#include "collections/BouncedCheques.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

TEST_P(BouncedCheques, CopiesAReceivedChequeByItsNumber) {
    given("cheques",
          {received(kBento, kNorte, "100", "outro"), received(kCarla, kAgro, "200", "De um amigo"),
           received(kAna, kNorte, "200", "o segundo")});
    const auto before = receivedCheques();
    auto& form = open<FrmLancasSFundos>();
    type(form, "txtEmpresa", "Loja Dois");
    click(form, "CmdBuscar");
    EXPECT_TRUE(panelShown(form));
    EXPECT_EQ(focus(), "cmbncheque");
    type("200");
    press(Qt::Key_Return);
    EXPECT_FALSE(panelShown(form));
    EXPECT_EQ(focus(), "txtcliente");
    EXPECT_EQ(shown(form), "|Carla Reis|Agrobanco|0042-1|200|03/02/2026|1.234,56|Loja Dois|De um "
                           "amigo")
        << "of two with the number the first; the company stays";
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre("1|3|2|0042-1|200|03/02/2026|1234,56|Loja Dois|De um amigo"));
    EXPECT_EQ(receivedCheques(), before) << "the received cheque is left as it is";
}

TEST_P(BouncedCheques, ANumberIsComparedAsText) {
    given("cheques", {received(kBento, kNorte, "0100", "com zero"),
                      received(kCarla, kAgro, "100", "sem zero")});
    auto& form = open<FrmLancasSFundos>();
    copy(form, "100");
    EXPECT_EQ(text(form, "txtcliente"), "Carla Reis");
    copy(form, "0100");
    EXPECT_EQ(text(form, "txtcliente"), "Bento Dias");
}

TEST_P(BouncedCheques, ACopyTakesThePlaceOfWhatWasTyped) {
    Row bare = {
        {"cliente", number(kAna)  },
        {"banco",   number(kNorte)},
        {"numero",  words("100")  }
    };
    given("cheques", {bare});
    auto& form = open<FrmLancasSFundos>();
    fill(form, "Carla", "7", "10");
    copy(form, "100");
    EXPECT_EQ(shown(form), "|Ana Costa|Banco Norte||100|" + today() + "|0,00|Loja Dois|");
}

TEST_P(BouncedCheques, AnUnknownNumberIsToldAndChangesNothing) {
    given("cheques", {received(kBento, kNorte, "100", "")});
    auto& form = open<FrmLancasSFundos>();
    type(form, "txtnumero", "7");
    const std::string before = shown(form);
    expectMessage("Mensagem", "Cheque não cadastrado ");
    copy(form, "101");
    EXPECT_FALSE(panelShown(form));
    EXPECT_EQ(focus(), "txtcliente");
    EXPECT_EQ(shown(form), before);
}

TEST_P(BouncedCheques, LeavingThePanelEmptyClosesItSilently) {
    given("cheques", {received(kBento, kNorte, "100", "")});
    auto& form = open<FrmLancasSFundos>();
    copy(form, "");
    EXPECT_FALSE(panelShown(form));
    EXPECT_EQ(focus(), "txtcliente");
    EXPECT_EQ(shown(form), newCheque());
}

TEST_P(BouncedCheques, WithoutAnyReceivedChequeThePanelStays) {
    auto& form = open<FrmLancasSFundos>();
    copy(form, "100");
    EXPECT_TRUE(panelShown(form));
    EXPECT_EQ(focus(), "CmdNovo");
    enter(form, "cmbncheque");
    copy(form, ""); // asked for again it is empty, and then goes
    EXPECT_FALSE(panelShown(form));
}

TEST_P(BouncedCheques, ThePanelIsEmptyEachTimeItIsAskedFor) {
    given("cheques", {received(kBento, kNorte, "100", "")});
    auto& form = open<FrmLancasSFundos>();
    copy(form, "100");
    click(form, "CmdBuscar");
    EXPECT_EQ(text(form, "cmbncheque"), "");
}

TEST_P(BouncedCheques, ThePanelIsRefusedForAStoredChequeUntilNew) {
    given("semfundos", {bounced(kAna, "1", 10)});
    auto& form = open<FrmLancasSFundos>();
    click(form, "btnNavegacao", 0);
    expectMessage("Mensagem", "Clique em novo para copiar dados !", MessageIcon::information);
    press(Qt::Key_U, Qt::AltModifier);
    EXPECT_FALSE(panelShown(form));
    click(form, "CmdNovo");
    press(Qt::Key_U, Qt::AltModifier);
    EXPECT_TRUE(panelShown(form));
    EXPECT_EQ(focus(), "cmbncheque");
}

// The window of received cheques may have left them restricted to one client.
TEST_P(BouncedCheques, OnlyTheReceivedChequesAtHandAreSearched) {
    given("cheques", {received(kBento, kNorte, "100", ""), received(kAna, kNorte, "200", "")});
    data().rsCheques.setFilter("cliente=2");
    auto& form = open<FrmLancasSFundos>();
    expectMessage("Mensagem", "Cheque não cadastrado ");
    copy(form, "100");
    copy(form, "200");
    EXPECT_EQ(text(form, "txtcliente"), "Ana Costa");
}

TEST_P(BouncedCheques, AnApostropheBreaksTheSearch) {
    given("cheques", {received(kBento, kNorte, "100", "")});
    auto& form = open<FrmLancasSFundos>();
    expectFailure("");
    copy(form, "1'0");
}

TEST_P(BouncedCheques, ACopyWhoseClientIsGoneLeavesNoneChosen) {
    given("cheques", {received(9, kAgro, "100", "")});
    auto& form = open<FrmLancasSFundos>();
    type(form, "txtcliente", "Ana");
    copy(form, "100");
    EXPECT_EQ(text(form, "txtcliente"), "");
    EXPECT_EQ(text(form, "txtbanco"), "Agrobanco");
    expectMessage("Advertência", "É necessário preencher o nome do cliente.");
    click(form, "CmdIncluir");
}

} // namespace
