// The purge of old cheques, on databases of both versions.
#include "reports/FrmApagar.h"

#include "controls/box/DatePicker.h"
#include "controls/box/DropDownList.h"
#include "shell/Mirtal.h"
#include "support/ShopTest.h"

#include <QApplication>
#include <QLabel>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

class Purge : public Everywhere<ShopTest> {
protected:
    void SetUp() override {
        ShopTest::SetUp();
        Mirtal::aoMostrarMensagem(
            [this](const QString& text) { said_.push_back(text.toStdString()); });
    }
    void TearDown() override {
        Mirtal::aoMostrarMensagem({});
        ShopTest::TearDown();
    }

    static Row bank(int officialCode, const char* name) {
        return {
            {"cod_banco", number(officialCode)},
            {"nome",      words(name)         }
        };
    }
    /// Banks 1 and 2, in the other order by name.
    void givenBanks() { given("bancos", {bank(104, "Caixa da Serra"), bank(237, "Agrobanco")}); }
    static Row cheque(const jet::Value& due, int bankCode = 1) {
        return {
            {"bompara", due                                 },
            {"banco",   number(bankCode)                    },
            {"cliente", number(1)                           },
            {"valor",   jet::Value(jet::Currency{1'000'000})}
        };
    }
    /// Entry numbers 1 to 3, due on three days of January 2024.
    void givenThree() {
        given("cheques",
              {cheque(day(2024, 1, 20)), cheque(day(2024, 1, 10)), cheque(day(2024, 1, 15), 2)});
    }
    static Strings stored() { return rows("select lancamento from cheques order by lancamento"); }

    static void choose(QWidget& form, const char* first, const char* last, const char* bankName) {
        type(form, "txtdtinicial", first);
        type(form, "txtdtfinal", last);
        enter(form, "txtbanco");
        if (*bankName != '\0')
            type(bankName);
    }
    /// Types the choice and purges, up to the word of its end.
    void purge(FrmApagar& form, const char* first, const char* last, const char* bankName = "") {
        choose(form, first, last, bankName);
        expectDone();
        click(form, "cmdExcluir");
    }
    void expectDone() {
        expectMessage("Mensagem", "Operação concluída !", MessageIcon::information);
    }
    void expectUnknownBank() { expectMessage("Mensagem", "Banco não cadastrado !"); }

    /// Each text that the program put into the status bar.
    Strings said_;
};
INSTANTIATE_TEST_SUITE_P(, Purge, everywhere(), keptName);

// ---- which cheques go

TEST_P(Purge, ASingleChequeIsDeleted) {
    givenThree();
    purge(open<FrmApagar>(), "10012024", "10012024");
    EXPECT_THAT(stored(), ElementsAre("1", "3"));
    EXPECT_EQ(focus(), "txtdtinicial") << "where the next purge begins";
}

TEST_P(Purge, OfTwoChequesTheSecondStays) {
    givenThree();
    purge(open<FrmApagar>(), "10012024", "15012024");
    EXPECT_THAT(stored(), ElementsAre("1", "3"));
}

TEST_P(Purge, OfThreeChequesTheSecondStaysUntilTheNextPurge) {
    givenThree();
    auto& form = open<FrmApagar>();
    purge(form, "01012024", "31012024");
    EXPECT_THAT(stored(), ElementsAre("2"));
    purge(form, "01012024", "31012024");
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_P(Purge, OfManyChequesOnlyTheSecondStays) {
    for (int i = 0; i < 30; ++i)
        given("cheques", {cheque(day(2024, 1, 30 - i)), cheque(day(2023, 5, 1 + i))});
    purge(open<FrmApagar>(), "01012024", "31012024");
    const Strings left = stored();
    EXPECT_EQ(left.size(), 31U);
    EXPECT_THAT(rows("select lancamento from cheques where bompara>=#01/01/2024#"),
                ElementsAre("3"));
}

TEST_P(Purge, BothDaysCountAndWhatIsOutsideOrUndatedStays) {
    given("cheques", {cheque(day(2024, 2, 2)), cheque(day(2024, 2, 3)), cheque(day(2024, 2, 20)),
                      cheque(day(2024, 3, 2)), cheque(day(2024, 3, 3)), cheque(jet::Value())});
    purge(open<FrmApagar>(), "03022024", "02032024");
    EXPECT_THAT(stored(), ElementsAre("1", "3", "5", "6"));
}

TEST_P(Purge, APeriodThatEndsBeforeItBeginsSelectsNothing) {
    givenThree();
    purge(open<FrmApagar>(), "31012024", "01012024");
    EXPECT_THAT(stored(), ElementsAre("1", "2", "3"));
}

TEST_P(Purge, WithNothingToDeleteItIsDoneAllTheSame) {
    purge(open<FrmApagar>(), "01012024", "31012024");
    givenThree();
    purge(FrmApagar::instance(), "01012025", "31012025");
    EXPECT_THAT(stored(), ElementsAre("1", "2", "3"));
}

TEST_P(Purge, BouncedChequesAreNeverPurged) {
    given("semfundos", {
                           {{"numero", words("1")}, {"data", day(2024, 1, 10)}},
                           {{"numero", words("2")}, {"data", day(2024, 1, 11)}}
    });
    purge(open<FrmApagar>(), "01012024", "31012024");
    EXPECT_EQ(rows("select * from semfundos").size(), 2U);
}

// ---- of one bank

TEST_P(Purge, ABankIsMatchedByItsNameAndNotByItsCodes) {
    givenBanks();
    givenThree();
    auto& form = open<FrmApagar>();
    for (const char* code : {"1", "104"}) {
        choose(form, "01012024", "31012024", code);
        expectUnknownBank();
        click(form, "cmdExcluir");
        control<DropDownList>(form, "txtbanco").setText("");
    }
    EXPECT_THAT(stored(), ElementsAre("1", "2", "3"));
    purge(form, "01012024", "31012024", "Agrobanco");
    EXPECT_THAT(stored(), ElementsAre("1", "2"));
    purge(form, "01012024", "31012024", "caixa da serra");
    EXPECT_THAT(stored(), ElementsAre("2")) << "the second of that bank";
}

TEST_P(Purge, ABankChosenInTheListIsTheOnePurged) {
    givenBanks();
    givenThree();
    auto& form = open<FrmApagar>();
    purge(form, "01012024", "31012024", "a"); // completed by the list
    EXPECT_THAT(stored(), ElementsAre("1", "2"));
}

TEST_P(Purge, AnUnknownBankStopsItAndTakesTheFocus) {
    givenBanks();
    givenThree();
    auto& form = open<FrmApagar>();
    choose(form, "01012024", "31012024", "Agrobanc0");
    expectUnknownBank();
    click(form, "cmdExcluir");
    EXPECT_EQ(focus(), "txtbanco");
    EXPECT_EQ(text(form, "txtbanco"), "Agrobanc0");
    EXPECT_EQ(text(form, "txtdtinicial"), "01/01/2024");
    EXPECT_THAT(stored(), ElementsAre("1", "2", "3"));
    EXPECT_THAT(said_, IsEmpty());
}

TEST_P(Purge, WithoutAnyBanksNoNameIsRegistered) {
    given("cheques", {cheque(day(2024, 1, 20), 0), cheque(day(2024, 1, 21), 0)});
    auto& form = open<FrmApagar>();
    choose(form, "01012024", "31012024", "Agrobanco");
    expectUnknownBank();
    click(form, "cmdExcluir");
    EXPECT_THAT(stored(), ElementsAre("1", "2"));
}

TEST_P(Purge, AnApostropheInTheBanksNameBreaksTheSearch) {
    given("bancos", {bank(1, "Banco D'Oeste")});
    givenThree();
    auto& form = open<FrmApagar>();
    choose(form, "01012024", "31012024", "Banco D'Oeste");
    expectFailure("");
    click(form, "cmdExcluir");
    EXPECT_THAT(stored(), ElementsAre("1", "2", "3"));
}

TEST_P(Purge, TheBankIsLookedForFromTheFirstOneOn) {
    givenBanks();
    givenThree();
    auto& form = open<FrmApagar>();
    data().rsBancos.MoveLast();
    purge(form, "01012024", "31012024", "Agrobanco");
    EXPECT_THAT(stored(), ElementsAre("1", "2"));
}

// ---- what the operator sees

TEST_P(Purge, TheStatusBarCountsAlongAndIsEmptyAtTheEnd) {
    givenThree();
    purge(open<FrmApagar>(), "01012024", "31012024");
    EXPECT_THAT(said_, ElementsAre("Registros excluídos..:1", "Registros excluídos..:2", ""));
}

TEST_P(Purge, TheWindowsArePaintedWhileItWorks) {
    {
        ado::Recordset& cheques = data().rsCheques;
        ado::Transaction many(data().Automacao);
        for (int i = 0; i < 3000; ++i) {
            cheques.AddNew();
            cheques["bompara"] = day(2024, 1, 1 + i % 31);
            cheques.Update();
        }
        many.commit();
    }
    struct Panel : QLabel {
        Strings painted;
        void paintEvent(QPaintEvent* event) override {
            painted.push_back(text().toStdString());
            QLabel::paintEvent(event);
        }
    } panel;
    panel.show();
    Mirtal::aoMostrarMensagem([&panel](const QString& text) { panel.setText(text); });
    purge(open<FrmApagar>(), "01012024", "31012024");
    EXPECT_THAT(stored(), ElementsAre("2"));
    std::size_t counts = 0;
    for (const std::string& text : panel.painted)
        counts += text.starts_with("Registros excluídos..:") ? 1 : 0;
    EXPECT_GT(counts, 1U);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    Mirtal::aoMostrarMensagem({});
}

TEST_P(Purge, AfterwardsItStandsAsAtFirstAndOtherWindowsSeeTheDeletions) {
    givenBanks();
    givenThree();
    data().rsCheques.setFilter("banco=1");
    EXPECT_EQ(data().rsCheques.RecordCount(), 2);
    auto& form = open<FrmApagar>();
    purge(form, "01012024", "31012024", "Caixa da Serra");
    EXPECT_EQ(control<DatePicker>(form, "txtdtinicial").value(), QDate::currentDate());
    EXPECT_EQ(control<DatePicker>(form, "txtdtfinal").value(), QDate::currentDate());
    EXPECT_EQ(text(form, "txtbanco"), "");
    EXPECT_EQ(data().rsCheques.RecordCount(), 1);
    EXPECT_EQ(data().rsCheques["lancamento"].integer(), 2) << "on the first row again";
    EXPECT_EQ(data().rsCheques.Filter(), "banco=1");
}

TEST_P(Purge, OpensWithTodaysDatesAndTheBanksByName) {
    givenBanks();
    auto& form = open<FrmApagar>();
    EXPECT_EQ(control<DatePicker>(form, "txtdtinicial").value(), QDate::currentDate());
    EXPECT_EQ(control<DatePicker>(form, "txtdtfinal").value(), QDate::currentDate());
    const auto& banks = control<DropDownList>(form, "txtbanco");
    ASSERT_EQ(banks.count(), 2);
    EXPECT_EQ(banks.itemText(0), "Agrobanco");
    EXPECT_EQ(banks.itemData(0), 2);
    EXPECT_EQ(banks.itemText(1), "Caixa da Serra");
    EXPECT_EQ(banks.itemData(1), 1);
    EXPECT_EQ(text(form, "txtbanco"), "");
    EXPECT_EQ(text(form, "cmdExcluir"), "&Excluir");
    EXPECT_EQ(text(form, "cmdsair"), "Sai&r");
}

TEST_P(Purge, WorksByKeyboardAloneWithAPromptAtEachField) {
    givenBanks();
    givenThree();
    auto& form = open<FrmApagar>();
    EXPECT_EQ(focus(), "txtdtinicial");
    EXPECT_EQ(prompt(), "Informe data incial");
    type("01012024");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "txtdtfinal");
    EXPECT_EQ(prompt(), "Informe data final");
    type("31012024");
    press(Qt::Key_Enter);
    EXPECT_EQ(focus(), "txtbanco");
    EXPECT_EQ(prompt(), "Informe nome do banco (opcional)");
    type("ag");
    EXPECT_EQ(text(form, "txtbanco"), "Agrobanco");
    press(Qt::Key_Return);
    EXPECT_EQ(focus(), "cmdExcluir");
    expectDone();
    press(Qt::Key_E, Qt::AltModifier);
    EXPECT_THAT(stored(), ElementsAre("1", "2"));
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(prompt(), "");
}

TEST_P(Purge, SairClosesTheWindowAndTheNextOneIsFresh) {
    auto& form = open<FrmApagar>();
    choose(form, "01012024", "31012024", "Agro");
    click(form, "cmdsair");
    EXPECT_FALSE(form.isVisible());
    auto& next = open<FrmApagar>();
    EXPECT_EQ(text(next, "txtbanco"), "");
    EXPECT_EQ(control<DatePicker>(next, "txtdtinicial").value(), QDate::currentDate());
}

} // namespace
