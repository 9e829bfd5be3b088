// The cheque list as it settles cheques.
#include "collections/ChequeList.h"
#include "support/CpuTimer.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// ---- ticking

TEST_P(ChequeList, TickingAndUntickingReadTheValueInTwoWays) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    EXPECT_EQ(text(form, "lbltotal"), "Total Selecionado :0,00");
    clickCheckBox(form, "lstterceiros", 2); // 1.234,56
    EXPECT_EQ(text(form, "lbltotal"), "Total Selecionado:1,23");
    clickCheckBox(form, "lstterceiros", 1); // 100,00
    EXPECT_EQ(text(form, "lbltotal"), "Total Selecionado:101,23");
    clickCheckBox(form, "lstterceiros", 1);
    EXPECT_EQ(text(form, "lbltotal"), "Total Selecionado:1,23") << "whole and below a thousand";
    clickCheckBox(form, "lstterceiros", 2);
    EXPECT_EQ(text(form, "lbltotal"), "Total Selecionado:-1.233,33");
    click(form, "chkdescontar");
    EXPECT_EQ(text(form, "lbltotal"), "Total Selecionado :0,00");
    clickCheckBox(form, "lstterceiros", 0); // 150,50
    EXPECT_EQ(text(form, "lbltotal"), "Total Selecionado:150,00");
    clickCheckBox(form, "lstterceiros", 0);
    EXPECT_EQ(text(form, "lbltotal"), "Total Selecionado:-0,50");
}

TEST_P(ChequeList, TicksByKeyboard) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    enter(form, "lstterceiros");
    press(Qt::Key_Space);
    press(Qt::Key_Down);
    press(Qt::Key_Space);
    EXPECT_TRUE(list(form).isChecked(0));
    EXPECT_TRUE(list(form).isChecked(1));
    EXPECT_EQ(text(form, "lbltotal"), "Total Selecionado:1.099,00");
}

// ---- settlement

TEST_P(ChequeList, SettlementDeletesTheTickedChequesAndStartsAfresh) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    type(form, "txtbanco", "C"); // 4, 1
    clickCheckBox(form, "lstterceiros", 1);
    click(form, "cmdsalvar");
    EXPECT_THAT(stored(), ElementsAre("2", "3", "4"));
    EXPECT_THAT(listed(form), IsEmpty());
    EXPECT_EQ(text(form, "txtbanco"), "");
    EXPECT_EQ(text(form, "txtcliente"), "");
    EXPECT_EQ(text(form, "lbltotal"), "Total:");
    EXPECT_EQ(focus(), "txtbanco");
    EXPECT_TRUE(control<QCheckBox>(form, "chkdescontar").isChecked()) << "stays as it is";
    EXPECT_EQ(data().rsCheques.RecordCount(), 3);
    EXPECT_FALSE(data().Automacao.inTransaction());
}

TEST_P(ChequeList, SettlesByKeyboardAlone) {
    givenCheques();
    auto& form = openFor("Baixar");
    type("a"); // the bank list has the focus
    EXPECT_EQ(numbers(form), "2 3");
    for (int i = 0; i < 4; ++i)
        press(Qt::Key_Return);
    EXPECT_EQ(focus(), "lstterceiros");
    press(Qt::Key_Space);
    press(Qt::Key_Down);
    press(Qt::Key_Space);
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_THAT(stored(), ElementsAre("1", "4"));
    EXPECT_EQ(focus(), "txtbanco");
}

TEST_P(ChequeList, SettlingNothingStillClearsTheList) {
    givenCheques();
    auto& form = openFor("Baixar");
    type(form, "txtcliente", "Maria");
    click(form, "cmdsalvar");
    EXPECT_THAT(stored(), ElementsAre("1", "2", "3", "4"));
    EXPECT_THAT(listed(form), IsEmpty());
    EXPECT_EQ(text(form, "txtcliente"), "");
    EXPECT_EQ(text(form, "lbltotal"), "Total:");
    EXPECT_EQ(focus(), "txtbanco");
}

TEST_P(ChequeList, EachChequeIsSettledInATransactionOfItsOwn) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    clickCheckBox(form, "lstterceiros", 0);
    clickCheckBox(form, "lstterceiros", 1);
    list(form).setText(1, 0, "x'"); // the second fails
    expectFailure("");
    click(form, "cmdsalvar");
    EXPECT_THAT(stored(), ElementsAre("1", "2", "3")) << "the first stays settled";
    EXPECT_FALSE(data().Automacao.inTransaction());
}

TEST_P(ChequeList, AChequeThatIsGoneIsPassedOver) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    clickCheckBox(form, "lstterceiros", 0);
    clickCheckBox(form, "lstterceiros", 1);
    Mirtal::apagarPorChave("Cheques", "lancamento", "4", false);
    click(form, "cmdsalvar");
    EXPECT_THAT(stored(), ElementsAre("1", "2"));
}

TEST_P(ChequeList, TheLastChequesMayAllBeGone) {
    givenCheques();
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    clickCheckBox(form, "lstterceiros", 0);
    for (const char* number : {"1", "2", "3", "4"})
        Mirtal::apagarPorChave("Cheques", "lancamento", number, false);
    click(form, "cmdsalvar");
    EXPECT_THAT(stored(), IsEmpty());
    EXPECT_EQ(text(form, "lbltotal"), "Total:");
}

TEST_P(ChequeList, SettlementTakesOffTheFilterThatAnotherWindowLeft) {
    givenCheques();
    data().rsCheques.setFilter("cliente=2");
    auto& form = openFor("Baixar");
    click(form, "chkdescontar");
    clickCheckBox(form, "lstterceiros", 1); // Maria's
    click(form, "cmdsalvar");
    EXPECT_THAT(stored(), ElementsAre("1", "2", "4"));
    EXPECT_EQ(data().rsCheques.Filter(), "");
}

// ---- long lists

TEST_P(ChequeList, AListCostsWhatItListsAndNotWhatTheTableHolds) {
    ado::Recordset& rs = data().rsCheques;
    {
        ado::Transaction many(data().Automacao);
        for (int i = 0; i < 20'000; ++i) {
            rs.AddNew();
            rs["cliente"] = i < 10 ? 1 : 2;
            rs["banco"] = 1;
            rs["numero"] = QString::number(i);
            rs["bompara"] = day(2024, 1 + i % 12, 1 + i % 28);
            rs["valor"] = jet::Currency{1'000'000};
            rs.Update();
        }
        many.commit();
    }
    rs.Requery();
    auto& form = openFor("Baixar");
    CpuTimer timer;
    type(form, "txtcliente", "M");
    const double few = timer.milliseconds();
    EXPECT_EQ(list(form).count(), 10);
    enter(form, "txtbanco");
    timer.restart();
    type(form, "txtcliente", "A");
    const double all = timer.milliseconds();
    EXPECT_EQ(list(form).count(), 19'990);
    EXPECT_LT(few, all / 10);

    for (int row = 0; row < 10; ++row)
        list(form).setChecked(row * 1000, true);
    click(form, "cmdsalvar");
    EXPECT_EQ(rs.RecordCount(), 19'990);
}

} // namespace
