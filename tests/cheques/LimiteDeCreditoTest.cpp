// The credit warning: when it comes, what it says, and what it leaves behind.
#include "cheques/ChequeEntry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::SizeIs;

class CreditLimit : public ChequeEntry {
protected:
    void expectWarning(const QString& limit, const QString& total) {
        expectMessage("Limite de crédito",
                      "Cliente ultrapassou seu Limite de crédito!\r\rLimite  Crédito :" + limit +
                          "\rTotal em Cheques:" + total,
                      MessageIcon::critical);
    }
    /// Chooses a client, types a value and leaves it.
    static void leaveValue(QWidget& form, const char* name, const char* value) {
        type(form, "txtNome", name);
        press(Qt::Key_Return);
        type(form, "txtvalor", value);
        press(Qt::Key_Return);
    }
    static std::string filter() { return data().rsCheques.Filter(); }
};

INSTANTIATE_TEST_SUITE_P(, CreditLimit, everywhere(), keptName);

TEST_P(CreditLimit, SaysNothingWhileNoChequeIsStored) {
    auto& form = open<FrmLancarCheques>();
    leaveValue(form, "Ana", "5000");
    EXPECT_EQ(filter(), "");
    EXPECT_EQ(focus(), "txtautorizou");
}

TEST_P(CreditLimit, SaysNothingWhenTheTotalEqualsTheLimit) {
    given("cheques", {cheque(kAna, "1", 60)});
    auto& form = open<FrmLancarCheques>();
    leaveValue(form, "Ana", "40");
    EXPECT_EQ(focus(), "txtautorizou");
}

TEST_P(CreditLimit, WarnsAtOneCentMoreAndGoesOn) {
    given("cheques", {cheque(kAna, "1", 60)});
    auto& form = open<FrmLancarCheques>();
    expectWarning("100,00", "100,01");
    leaveValue(form, "Ana", "40,01");
    EXPECT_EQ(focus(), "txtautorizou");
    EXPECT_EQ(text(form, "txtvalor"), "40,01");
}

TEST_P(CreditLimit, WritesThousandsWithAPoint) {
    given("cheques", {cheque(kCarla, "1", 1234, 56)});
    auto& form = open<FrmLancarCheques>();
    expectWarning("1.500,00", "2.000.001.234,56");
    leaveValue(form, "Carla", "2000000000");
}

TEST_P(CreditLimit, NeverWarnsOfAClientWhoseLimitIsZero) {
    given("cheques", {cheque(kBento, "1", 900000)});
    auto& form = open<FrmLancarCheques>();
    leaveValue(form, "Bento", "900000");
}

TEST_P(CreditLimit, CountsEveryChequeOfTheClientAndNoOther) {
    given("cheques", {cheque(kAna, "1", 30), cheque(kCarla, "2", 900), cheque(kAna, "3", 30)});
    ado::Recordset other; // one to be exchanged at the shop, long due, counts as well
    other.Open("select * from cheques where numero='3'", data().Automacao);
    other["descontar"] = false;
    other["bompara"] = day(2001, 1, 1);
    other.Update();
    auto& form = open<FrmLancarCheques>();
    leaveValue(form, "Ana", "40");
    expectWarning("100,00", "100,01");
    leaveValue(form, "Ana", "40,01");
}

TEST_P(CreditLimit, StopsAtTheFirstChequeThatPassesTheLimit) {
    given("cheques", {cheque(kAna, "1", 50), cheque(kAna, "2", 60), cheque(kAna, "3", 70)});
    auto& form = open<FrmLancarCheques>();
    expectWarning("100,00", "120,00");
    leaveValue(form, "Ana", "10");
}

TEST_P(CreditLimit, ANegativeValueLowersTheTotal) {
    given("cheques", {cheque(kAna, "1", 105)});
    auto& form = open<FrmLancarCheques>();
    leaveValue(form, "Ana", "-5");
    expectWarning("100,00", "100,01");
    leaveValue(form, "Ana", "-4,99");
}

TEST_P(CreditLimit, AStoredChequeCountsAsItIsStoredAndAsItIsTyped) {
    given("cheques", {cheque(kAna, "1", 60)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    enter(form, "txtNome");
    press(Qt::Key_Return);
    enter(form, "txtvalor");
    expectWarning("100,00", "120,00");
    press(Qt::Key_Return);
}

TEST_P(CreditLimit, IsReadOnLeavingTheClientOnly) {
    given("cheques", {cheque(kAna, "1", 600)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    type(form, "txtvalor", "700");
    press(Qt::Key_Return); // no client was left yet: no limit
    enter(form, "txtNome");
    press(Qt::Key_Return);
    enter(form, "txtvalor");
    expectWarning("100,00", "1.300,00");
    press(Qt::Key_Return);
}

TEST_P(CreditLimit, StaysWhenNoClientIsChosen) {
    given("cheques", {cheque(kAna, "1", 60)});
    auto& form = open<FrmLancarCheques>();
    type(form, "txtNome", "Ana");
    press(Qt::Key_Return);
    type(form, "txtNome", "zzz");
    press(Qt::Key_Return);
    click(form, "btnNavegacao", 0);
    enter(form, "txtvalor");
    expectWarning("100,00", "120,00");
    press(Qt::Key_Return);
}

TEST_P(CreditLimit, AnEmptyLimitIsZero) {
    given("cliente_fornecedor", {
                                    {{"nome", words("Davi")}, {"tipo", yes(true)}}
    });
    given("cheques", {cheque(kAna, "1", 60), cheque(4, "2", 60)});
    auto& form = open<FrmLancarCheques>();
    type(form, "txtNome", "Ana");
    press(Qt::Key_Return);
    leaveValue(form, "Davi", "900");
}

TEST_P(CreditLimit, NothingIsSummedWithoutAClient) {
    given("cheques", {cheque(kAna, "1", 60)});
    auto& form = open<FrmLancarCheques>();
    type(form, "txtvalor", "900");
    press(Qt::Key_Return);
    EXPECT_EQ(filter(), "");
}

// ---- what it leaves behind

TEST_P(CreditLimit, TheWarningLeavesAllChequesAtHand) {
    given("cheques", {cheque(kAna, "1", 60), cheque(kCarla, "2", 10)});
    auto& form = open<FrmLancarCheques>();
    expectWarning("100,00", "160,00");
    leaveValue(form, "Ana", "100");
    EXPECT_EQ(filter(), "");
    EXPECT_EQ(data().rsCheques.RecordCount(), 2);
}

TEST_P(CreditLimit, WithoutAWarningOnlyTheClientsChequesStayAtHand) {
    given("cheques", {cheque(kCarla, "1", 10), cheque(kAna, "2", 20), cheque(kAna, "3", 30),
                      cheque(kCarla, "4", 40)});
    auto& form = open<FrmLancarCheques>();
    leaveValue(form, "Ana", "1");
    EXPECT_EQ(filter(), "cliente=2");
    const struct {
        int button;
        const char* number;
    } steps[] = {
        {2, "3"}, // the sum went to the end
        {1, "2"},
        {1, "2"},
        {3, "3"},
        {2, "3"},
        {0, "2"},
    };
    for (const auto& [button, number] : steps) {
        click(form, "btnNavegacao", button);
        EXPECT_EQ(text(form, "txtnumero"), number);
    }
}

TEST_P(CreditLimit, TheSearchOfTheSaveStaysWithinTheClientsCheques) {
    given("cheques", {cheque(kCarla, "1", 10), cheque(kAna, "2", 20)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    leaveValue(form, "Ana", "1"); // Carla's cheque is to be Ana's
    expectFailure("Não há registro atual");
    click(form, "CmdIncluir");
    EXPECT_FALSE(data().Automacao.inTransaction());
    EXPECT_THAT(stored(), ElementsAre("1|3|1||1|01/03/2026|01/04/2026|10,00|||Verdadeiro",
                                      "2|2|1||2|01/03/2026|01/04/2026|20,00|||Verdadeiro"));
}

TEST_P(CreditLimit, ANewChequeIsStoredWhileOthersAreOutOfSight) {
    given("cheques", {cheque(kCarla, "1", 10), cheque(kAna, "2", 20)});
    auto& form = open<FrmLancarCheques>();
    fill(form, "Ana", "77", "5");
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_EQ(filter(), "cliente=2");
    EXPECT_EQ(data().rsCheques.RecordCount(), 2);
    EXPECT_THAT(stored(), SizeIs(3));
    leaveValue(form, "Carla", "1");
    EXPECT_EQ(filter(), "cliente=3");
}

TEST_P(CreditLimit, AClientWithoutChequesLeavesNoneAtHand) {
    given("cheques", {cheque(kAna, "1", 20)});
    auto& form = open<FrmLancarCheques>();
    click(form, "btnNavegacao", 0);
    leaveValue(form, "Carla", "9000");
    EXPECT_EQ(filter(), "cliente=3");
    EXPECT_EQ(data().rsCheques.RecordCount(), 0);
    const std::string before = shown(form);
    for (int i = 0; i < 4; ++i)
        click(form, "btnNavegacao", i);
    EXPECT_EQ(shown(form), before);
    expectMessage("Mensagem", "Não existe registros para excluir !");
    click(form, "CmdExcluir");
    EXPECT_THAT(stored(), SizeIs(1));
    // Deliberate: with none at hand nothing is summed for the next client either.
    leaveValue(form, "Ana", "9000");
    EXPECT_EQ(filter(), "cliente=3");
}

TEST_P(CreditLimit, NeverStopsASave) {
    given("cheques", {cheque(kAna, "1", 60)});
    auto& form = open<FrmLancarCheques>();
    fill(form, "Ana", "2", "5000");
    expectWarning("100,00", "5.060,00");
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_THAT(stored(), SizeIs(2));
    fill(form, "Ana", "3", "5000");
    expectWarning("100,00", "5.060,00"); // at the first cheque already
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), SizeIs(3));
}

TEST_P(CreditLimit, ATotalTooLargeToCountIsAFailureNotAWrongNumber) {
    given("cheques", {cheque(kBento, "1", 900'000'000'000'000)});
    auto& form = open<FrmLancarCheques>();
    type(form, "txtNome", "Bento");
    press(Qt::Key_Return);
    type(form, "txtvalor", "900000000000000");
    expectFailure("O total dos cheques do cliente passa do maior valor possível.");
    press(Qt::Key_Return);
}

} // namespace
