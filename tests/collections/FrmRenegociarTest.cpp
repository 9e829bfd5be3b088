#include "collections/FrmRenegociar.h"

#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLocCHTerceiros.h"
#include "controls/window/HeadingStrip.h"
#include "shell/Mirtal.h"
#include "support/FormChecks.h"
#include "support/ShopTest.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

/// The renegotiation over a shop with three cheques, in a file of either version.
class Renegotiation : public Everywhere<ShopTest> {
protected:
    void SetUp() override {
        ShopTest::SetUp();
        given("bancos", {
                            {{"cod_banco", number(104)}, {"nome", words("Caixa da Serra")}}
        });
        given("cliente_fornecedor", {
                                        {{"nome", words("Maria")}, {"tipo", yes(true)}},
                                        {{"nome", words("Ana")},   {"tipo", yes(true)}},
        });
        given("cheques", {
                             cheque(1, "000101", 10'000'000, day(2026, 3, 1)),
                             cheque(2, "000102", 1'505'000, day(2026, 4, 10)),
                             cheque(1, "000103", 12'345'600, {}),
                         });
    }
    static Row cheque(int client, const char* numero, std::int64_t tenThousandths,
                      const jet::Value& due) {
        // clang-format off
        return {
            {"cliente",   number(client)},
            {"banco",     number(1)},
            {"numero",    words(numero)},
            {"agencia",   words("0001")},
            {"valor",     jet::Value(jet::Currency{tenThousandths})},
            {"data",      day(2026, 2, 1)},
            {"bompara",   due},
            {"descontar", yes(true)}
        };
        // clang-format on
    }

    /// Picks a cheque in the list, by its entry number.
    void find(QWidget& form, const char* number) {
        whileModal<FrmLocCHTerceiros>([number](FrmLocCHTerceiros& list) {
            EXPECT_EQ(Mirtal::modo, "localizarCH");
            EXPECT_FALSE(Mirtal::registroEscolhido);
            click(list, "chkdescontar");
            auto& rows = control<ListView>(list, "lstterceiros");
            for (int row = 0; row < rows.count(); ++row) {
                if (rows.text(row, 0) != number)
                    continue;
                clickRow(list, "lstterceiros", row);
                clickRow(list, "lstterceiros", row);
                return;
            }
            ADD_FAILURE() << "not listed: " << number;
        });
        click(form, "CmdLocalizar");
        activate(form);
    }
    void findNone(QWidget& form) {
        whileModal<FrmLocCHTerceiros>([](FrmLocCHTerceiros& list) { click(list, "cmdsair"); });
        click(form, "CmdLocalizar");
        activate(form);
    }
    /// Types rate and date as a clerk does, from the rate on.
    static void renegotiate(const char* rate, const char* date) {
        EXPECT_EQ(focus(), "txttaxa_juros");
        type(rate);
        press(Qt::Key_Return);
        type(date);
        press(Qt::Key_Return);
    }
    /// What stands in the boxes, the key first.
    static std::string shown(const QWidget& form) {
        QStringList all;
        for (const char* box :
             {"txtlancamento", "txtnome", "txtnumero", "txtdata", "txtvalor", "txtbom_para",
              "txttaxa_juros", "txtnovo_vencto", "txtvl_juros", "txtnovo_valor"})
            all << text(form, box);
        return all.join('|').toStdString();
    }
    static std::string emptyForm() {
        const std::string today = formatDate(QDate::currentDate()).toStdString();
        return "|||" + today + "|0,00|" + today + "|0,00|" + today + "|0,00|0,00";
    }
    static std::vector<std::string> stored() {
        return rows("select lancamento, cliente, banco, numero, agencia, data, bompara, valor, "
                    "observacao, descontar from cheques order by lancamento");
    }
    static constexpr char kFirst[] = "1|1|1|000101|0001|01/02/2026|01/03/2026|1000,00||Verdadeiro";
    static constexpr char kSecond[] = "2|2|1|000102|0001|01/02/2026|10/04/2026|150,50||Verdadeiro";
    static constexpr char kThird[] = "3|1|1|000103|0001|01/02/2026||1234,56||Verdadeiro";
};

INSTANTIATE_TEST_SUITE_P(, Renegotiation, everywhere(), keptName);

// ---- as it opens

TEST_P(Renegotiation, SaysWhatItIs) {
    auto& form = open<FrmRenegociar>();
    EXPECT_EQ(form.windowTitle(), "Renegociação de cheques");
    const std::pair<const char*, const char*> texts[] = {
        {"Label10",    "Informações gerais sobre cheque:"},
        {"Label1",     "Nome do Cliente:"                  },
        {"Label2",     "Nº Cheque:"                       },
        {"Label3",     "Dt.Emissão:"                      },
        {"Label4",     "Valor :"                           },
        {"Label5",     "Dt.Vencto:"                        },
        {"Label7",     "Novo Vencto:"                      },
        {"Label8",     "Vlr.Juros:"                        },
        {"Label9",     "Novo Valor:"                       },
        {"CmdIncluir", "&Salvar"                           },
    };
    for (const auto& [name, expected] : texts)
        EXPECT_EQ(text(form, name), expected);
}

TEST_P(Renegotiation, OpensEmptyAndReadyToFind) {
    auto& form = open<FrmRenegociar>();
    EXPECT_EQ(shown(form), emptyForm());
    EXPECT_FALSE(control(form, "txttaxa_juros").isEnabled());
    EXPECT_FALSE(control(form, "txtnovo_vencto").isEnabled());
    EXPECT_EQ(focus(), "CmdLocalizar");
}

TEST_P(Renegotiation, HasANameForEachControlNoSharedKeysAndNoCutText) {
    EXPECT_EQ(faultsOf(open<FrmRenegociar>()), QStringList());
}

TEST_P(Renegotiation, OnlyRateAndNewDateAreForTyping) {
    auto& form = open<FrmRenegociar>();
    find(form, "1");
    const std::string before = shown(form);
    EXPECT_FALSE(control(form, "txtlancamento").isVisible());
    EXPECT_EQ(control<HeadingStrip>(form, "Label10").record(), "Lançamento 1");
    for (const char* box : {"txtnome", "txtnumero", "txtdata", "txtvalor", "txtbom_para",
                            "txtvl_juros", "txtnovo_valor"}) {
        type(form, box, "7");
        press(Qt::Key_Up);
        press(Qt::Key_Delete);
        press(Qt::Key_F4);
    }
    EXPECT_EQ(shown(form), before);
}

TEST_P(Renegotiation, TabPassesOverWhatIsNotForTyping) {
    auto& form = open<FrmRenegociar>();
    find(form, "1");
    for (const char* next :
         {"txtnovo_vencto", "CmdIncluir", "CmdLocalizar", "CmdSair", "txttaxa_juros"}) {
        press(Qt::Key_Tab);
        EXPECT_EQ(focus(), next);
    }
}

// ---- find

TEST_P(Renegotiation, ShowsTheChequePicked) {
    auto& form = open<FrmRenegociar>();
    find(form, "1");
    const std::string today = formatDate(QDate::currentDate()).toStdString();
    EXPECT_EQ(shown(form),
              "1|Maria|000101|01/02/2026|1.000,00|01/03/2026|0,00|" + today + "|0,00|0,00");
    EXPECT_TRUE(control(form, "txttaxa_juros").isEnabled());
    EXPECT_TRUE(control(form, "txtnovo_vencto").isEnabled());
    EXPECT_EQ(focus(), "txttaxa_juros");
}

TEST_P(Renegotiation, TheEntryOfChequesOnShowShowsThePickedOneToo) {
    auto& entry = open<FrmLancarCheques>();
    auto& form = open<FrmRenegociar>();
    find(form, "2");
    EXPECT_EQ(text(entry, "txtnumero"), "000102");
}

TEST_P(Renegotiation, FindsBehindTheFilterThatAnotherWindowLeft) {
    auto& form = open<FrmRenegociar>();
    data().rsCheques.setFilter("cliente=1");
    find(form, "2");
    EXPECT_EQ(data().rsCheques.Filter(), "");
    EXPECT_EQ(text(form, "txtlancamento"), "2");
}

TEST_P(Renegotiation, NothingPickedLeavesTheWindowEmpty) {
    auto& form = open<FrmRenegociar>();
    findNone(form);
    EXPECT_EQ(shown(form), emptyForm());
    EXPECT_FALSE(control(form, "txttaxa_juros").isEnabled());
    find(form, "1");
    findNone(form);
    EXPECT_EQ(shown(form), emptyForm()) << "what was on show is cleared first";
    EXPECT_TRUE(control(form, "txttaxa_juros").isEnabled()) << "stays as it is";
}

TEST_P(Renegotiation, AnEmptyDueDateShowsAsAnEmptyDateBoxDoes) {
    auto& form = open<FrmRenegociar>();
    find(form, "3");
    EXPECT_EQ(text(form, "txtbom_para"), formatDate(QDate::currentDate()));
}

TEST_P(Renegotiation, AClientThatIsGoneLeavesHisNameEmpty) {
    auto& form = open<FrmRenegociar>();
    whileModal<FrmLocCHTerceiros>([](FrmLocCHTerceiros& list) {
        click(list, "chkdescontar");
        clickRow(list, "lstterceiros", 0); // Ana's
        data().rsCliente.setFilter("nome='Ninguém'");
        clickRow(list, "lstterceiros", 0);
    });
    click(form, "CmdLocalizar");
    data().rsCliente.clearFilter();
    EXPECT_EQ(text(form, "txtlancamento"), "2");
    EXPECT_EQ(text(form, "txtnome"), "");
}

// ---- interest

TEST_P(Renegotiation, ShowsTheInterestAndTheNewValue) {
    const struct {
        const char* what;
        const char* rate;
        const char* date;
        const char* interest;
        const char* newValue;
    } cases[] = {
        {"a thousand at two over thirty days", "2", "31032026", "600,00",  "1.600,00"},
        {"the same due date",                  "2", "01032026", "0,00",    "1.000,00"},
        {"ten days earlier",                   "2", "19022026", "-200,00", "800,00"  },
        {"without a rate",                     "",  "31032026", "0,00",    "1.000,00"},
    };
    auto& form = open<FrmRenegociar>();
    for (const auto& [what, rate, date, interest, newValue] : cases) {
        find(form, "1");
        renegotiate(rate, date);
        EXPECT_EQ(text(form, "txtvl_juros"), interest) << what;
        EXPECT_EQ(text(form, "txtnovo_valor"), newValue) << what;
        EXPECT_EQ(focus(), "CmdIncluir") << what;
    }
}

TEST_P(Renegotiation, ReckonsWithFourDecimalsAndShowsTwo) {
    auto& form = open<FrmRenegociar>();
    find(form, "2");
    renegotiate("0,0333", "11042026"); // 150,50 for a day: 0,05011...
    EXPECT_EQ(text(form, "txttaxa_juros"), "0,0333");
    EXPECT_EQ(text(form, "txtvl_juros"), "0,05");
    EXPECT_EQ(text(form, "txtnovo_valor"), "150,55");
    EXPECT_EQ(control<MoneyEdit>(form, "txtvl_juros").valor(), Amount{501});
    EXPECT_EQ(control<MoneyEdit>(form, "txtnovo_valor").valor(), Amount{1'505'501});
}

TEST_P(Renegotiation, ANewDateWithoutAYearIsTheFirstOneFromTheOldDateOn) {
    auto& form = open<FrmRenegociar>();
    const std::pair<const char*, const char*> dates[] = {
        {"3103", "31/03/2026"},
        {"0103", "01/03/2026"},
        {"2802", "28/02/2027"}
    };
    for (const auto& [typed, taken] : dates) {
        find(form, "1");
        renegotiate("2", typed);
        EXPECT_EQ(text(form, "txtnovo_vencto"), taken);
    }
}

TEST_P(Renegotiation, IsReckonedAgainEachTimeTheNewDateIsLeft) {
    auto& form = open<FrmRenegociar>();
    find(form, "1");
    renegotiate("2", "31032026");
    type(form, "txttaxa_juros", "1");
    EXPECT_EQ(text(form, "txtvl_juros"), "600,00") << "not before";
    press(Qt::Key_Return);
    press(Qt::Key_Tab);
    EXPECT_EQ(text(form, "txtvl_juros"), "300,00");
    EXPECT_EQ(text(form, "txtnovo_valor"), "1.300,00");
    EXPECT_EQ(focus(), "CmdIncluir");
}

TEST_P(Renegotiation, AShortlyTypedDateCountsAsTheDateItIs) {
    auto& form = open<FrmRenegociar>();
    find(form, "1");
    renegotiate("2", "31/3/26");
    EXPECT_EQ(text(form, "txtnovo_vencto"), "31/03/2026");
    EXPECT_EQ(text(form, "txtvl_juros"), "600,00");
}

TEST_P(Renegotiation, ATimeOfDayInTheDueDateIsPartOfADay) {
    data().rsCheques.Find("lancamento=1");
    data().rsCheques["bompara"] = jet::Date::of({.year = 2026, .month = 3, .day = 1, .hour = 12});
    data().rsCheques.Update();
    auto& form = open<FrmRenegociar>();
    find(form, "1");
    renegotiate("2", "02032026");
    EXPECT_EQ(text(form, "txtvl_juros"), "10,00");
}

TEST_P(Renegotiation, WhatIsTooMuchForAnAmountIsAFailureNotAWrongNumber) {
    auto& form = open<FrmRenegociar>();
    find(form, "1");
    type("99999999999");
    press(Qt::Key_Return);
    type("31129999");
    expectFailure("passa do maior valor");
    press(Qt::Key_Return);
}

// ---- save

TEST_P(Renegotiation, StoresTheDueDateAndNothingElse) {
    auto& form = open<FrmRenegociar>();
    find(form, "1");
    renegotiate("2", "31032026");
    press(Qt::Key_Return); // on the save button
    EXPECT_THAT(stored(), ElementsAre("1|1|1|000101|0001|01/02/2026|31/03/2026|1000,00||Verdadeiro",
                                      kSecond, kThird));
    EXPECT_EQ(shown(form), emptyForm());
    EXPECT_EQ(focus(), "txttaxa_juros");
    EXPECT_FALSE(data().Automacao.inTransaction());
    EXPECT_EQ(data().rsCheques["lancamento"].integer(), 1) << "read again";
}

TEST_P(Renegotiation, StoresTheDateOfAChequeThatHadNone) {
    auto& form = open<FrmRenegociar>();
    find(form, "3");
    renegotiate("", "05052026");
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(),
                ElementsAre(kFirst, kSecond,
                            "3|1|1|000103|0001|01/02/2026|05/05/2026|1234,56||Verdadeiro"));
}

TEST_P(Renegotiation, OneAfterTheOther) {
    auto& form = open<FrmRenegociar>();
    find(form, "3");
    renegotiate("1", "05052026");
    press(Qt::Key_S, Qt::AltModifier);
    find(form, "2");
    renegotiate("1", "06062026");
    press(Qt::Key_S, Qt::AltModifier);
    EXPECT_THAT(stored(),
                ElementsAre(kFirst, "2|2|1|000102|0001|01/02/2026|06/06/2026|150,50||Verdadeiro",
                            "3|1|1|000103|0001|01/02/2026|05/05/2026|1234,56||Verdadeiro"));
}

TEST_P(Renegotiation, WithoutAChequeOnShowTheSaveDoesNothing) {
    auto& form = open<FrmRenegociar>();
    click(form, "CmdIncluir");
    EXPECT_EQ(focus(), "CmdIncluir");
    find(form, "1");
    findNone(form);
    type(form, "txttaxa_juros", "2");
    click(form, "CmdIncluir");
    EXPECT_EQ(text(form, "txttaxa_juros"), "2,00") << "not even cleared";
    EXPECT_THAT(stored(), ElementsAre(kFirst, kSecond, kThird));
}

// Deliberate: the search goes on from where the finding left it, and says nothing.
TEST_P(Renegotiation, TheSaveSearchesFromTheCurrentRowOn) {
    auto& form = open<FrmRenegociar>();
    find(form, "2");
    renegotiate("2", "31032026");
    data().rsCheques.MoveLast();
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre(kFirst, kSecond, kThird));
    EXPECT_EQ(shown(form), emptyForm());
    EXPECT_EQ(focus(), "txttaxa_juros");

    find(form, "2");
    renegotiate("2", "31032026");
    data().rsCheques.MoveFirst();
    click(form, "CmdIncluir");
    EXPECT_EQ(stored()[1], "2|2|1|000102|0001|01/02/2026|31/03/2026|150,50||Verdadeiro");
}

TEST_P(Renegotiation, AChequeThatIsGoneIsPassedOverInSilence) {
    auto& form = open<FrmRenegociar>();
    find(form, "2");
    renegotiate("2", "31032026");
    Mirtal::apagarPorChave("Cheques", "lancamento", "2", false);
    data().rsCheques.Requery();
    click(form, "CmdIncluir");
    EXPECT_THAT(stored(), ElementsAre(kFirst, kThird));
    EXPECT_EQ(shown(form), emptyForm());
}

// ---- prompts, keys and closing

TEST_P(Renegotiation, RateAndDateHaveTheirPromptsAndClosingClearsThem) {
    auto& form = open<FrmRenegociar>();
    find(form, "1");
    EXPECT_EQ(prompt(), "Digite a taxa de juros ao mês");
    press(Qt::Key_Enter);
    EXPECT_EQ(focus(), "txtnovo_vencto");
    EXPECT_EQ(prompt(), "Digite a nova data a ser descontado o cheque.");
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(prompt(), "");
    EXPECT_EQ(Mirtal::modo, "localizarCH") << "stays as the finding left it";
    EXPECT_EQ(shown(open<FrmRenegociar>()), emptyForm());
}

TEST_P(Renegotiation, ClosingFromTheNewDateReckonsNothing) {
    auto& form = open<FrmRenegociar>();
    find(form, "1");
    type("2");
    press(Qt::Key_Return);
    click(form, "CmdSair");
    EXPECT_FALSE(form.isVisible());
    EXPECT_THAT(stored(), ElementsAre(kFirst, kSecond, kThird));
}

} // namespace
