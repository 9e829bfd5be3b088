#include "shell/Mirtal.h"

#include "controls/box/DropDownList.h"
#include "jet/Error.h"
#include "support/QtPrinters.h"
#include "support/ShopTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SharedRoutines : public Everywhere<ShopTest> {
protected:
    void givenBanks() {
        given("bancos", {
                            {{"cod_banco", number(237)}, {"nome", words("Sul")}  },
                            {{"cod_banco", number(104)}, {"nome", words("norte")}},
                            {{"cod_banco", number(341)}, {"nome", words("Leste")}}
        });
    }
    static std::vector<std::string> entries(const DropDownList& list) {
        std::vector<std::string> found;
        found.reserve(static_cast<std::size_t>(list.count()));
        for (int i = 0; i < list.count(); ++i)
            found.push_back(list.itemText(i).toStdString() + "=" +
                            std::to_string(list.itemData(i)));
        return found;
    }
    static jet::Errc failureOf(const std::function<void()>& work) {
        try {
            work();
        } catch (const jet::Error& failure) {
            return failure.code();
        }
        ADD_FAILURE() << "nothing failed";
        return {};
    }
};

INSTANTIATE_TEST_SUITE_P(, SharedRoutines, everywhere(), keptName);

TEST_P(SharedRoutines, ZerosFillATextUpToEightCharacters) {
    EXPECT_EQ(Mirtal::zerosAEsquerda("123"), "00000123");
    EXPECT_EQ(Mirtal::zerosAEsquerda(""), "00000000");
    EXPECT_EQ(Mirtal::zerosAEsquerda("12345678"), "12345678");
    EXPECT_EQ(Mirtal::zerosAEsquerda("123456789"), "123456789");
}

TEST_P(SharedRoutines, DeleteByKeyTakesTheRowWithTheNumber) {
    givenBanks();
    Mirtal::apagarPorChave("bancos", "cod_banco", "104", false);
    EXPECT_THAT(rows("select cod_banco from bancos order by codigo"), ElementsAre("237", "341"));
}

TEST_P(SharedRoutines, DeleteByKeyTakesTheRowWithTheText) {
    givenBanks();
    Mirtal::apagarPorChave("Bancos", "nome", "Sul", true);
    EXPECT_THAT(rows("select nome from bancos order by codigo"), ElementsAre("norte", "Leste"));
}

TEST_P(SharedRoutines, DeleteByKeyTakesTheFirstRowOnly) {
    given("cheques",
          {{{"numero", words("7")}}, {{"numero", words("7")}}, {{"numero", words("7")}}});
    Mirtal::apagarPorChave("Cheques", "numero", "7", true);
    EXPECT_THAT(rows("select lancamento from cheques order by lancamento"), ElementsAre("2", "3"));
}

TEST_P(SharedRoutines, DeleteByKeyFailsWhereNoRowHasTheValue) {
    givenBanks();
    EXPECT_EQ(failureOf([] { Mirtal::apagarPorChave("bancos", "cod_banco", "1", false); }),
              jet::Errc::noCurrentRow);
    EXPECT_EQ(rows("select * from bancos").size(), 3U);
}

TEST_P(SharedRoutines, DeleteByKeyRefusesARowThatAnotherStationHasChangedSinceItWasShown) {
    givenBanks();
    data().Automacao.flush();
    EXPECT_EQ(data().rsBancos["nome"].text(), "Sul");
    const ado::Shown before = data().rsBancos.shown();
    {
        ado::Connection other;
        other.Open(data().Automacao.ConnectionString());
        ado::Recordset theirs;
        theirs.Open("select * from bancos where cod_banco=237", other);
        theirs["nome"] = "Sul e Oeste";
        theirs.Update();
    }
    const auto apagar = [](const ado::Shown& visto) {
        Mirtal::apagarPorChave("bancos", "cod_banco", "237", false, visto);
    };
    EXPECT_EQ(failureOf([&] { apagar(before); }), jet::Errc::conflict);
    EXPECT_EQ(rows("select * from bancos").size(), 3U);
    data().rsBancos.Requery();
    EXPECT_EQ(data().rsBancos["nome"].text(), "Sul e Oeste"); // now it has been seen
    apagar(data().rsBancos.shown());
    EXPECT_EQ(rows("select * from bancos").size(), 2U);
}

TEST_P(SharedRoutines, DeleteByKeyPastesTheValueAsItStands) {
    given("bancos", {{{"nome", words("D'Oeste")}}});
    EXPECT_EQ(failureOf([] { Mirtal::apagarPorChave("bancos", "nome", "D'Oeste", true); }),
              jet::Errc::syntax);
    EXPECT_EQ(rows("select * from bancos").size(), 1U);
}

TEST_P(SharedRoutines, AListIsFilledInTheOrderOfTheTextShown) {
    givenBanks();
    DropDownList list;
    list.addItem("antiga", 9);
    Mirtal::preencherLista(list, data().rsBancos, "nome", "codigo");
    EXPECT_THAT(entries(list), ElementsAre("Leste=3", "norte=2", "Sul=1"));
}

TEST_P(SharedRoutines, AListOverAnEmptyRecordsetIsEmpty) {
    DropDownList list;
    list.addItem("antiga", 9);
    Mirtal::preencherLista(list, data().rsBancos, "nome", "codigo");
    EXPECT_THAT(entries(list), IsEmpty());
}

TEST_P(SharedRoutines, NavigationWalksAndStopsAtTheEnds) {
    givenBanks();
    ado::Recordset& banks = data().rsBancos;
    banks.MoveFirst();
    const struct {
        int button;
        const char* stands;
    } steps[] = {
        {1, "237"},
        {2, "104"},
        {3, "341"},
        {2, "341"},
        {1, "104"},
        {0, "237"},
    };
    for (const auto& [button, stands] : steps) {
        EXPECT_TRUE(Mirtal::navegar(banks, button));
        EXPECT_EQ(banks["cod_banco"].text(), stands);
    }
    for (const int other : {-1, 4}) {
        EXPECT_TRUE(Mirtal::navegar(banks, other));
        EXPECT_EQ(banks["cod_banco"].text(), "237") << other;
    }
    banks.Find("cod_banco=999");
    EXPECT_TRUE(Mirtal::navegar(banks, 2));
    EXPECT_EQ(banks["cod_banco"].text(), "341");
}

TEST_P(SharedRoutines, NavigationWithoutRecordsDoesNothing) {
    for (int button = 0; button < 4; ++button)
        EXPECT_FALSE(Mirtal::navegar(data().rsBancos, button));
}

TEST_P(SharedRoutines, ASearchBeginsAtTheFirstRowAndSaysWhetherItFoundOne) {
    ado::Recordset& banks = data().rsBancos;
    EXPECT_FALSE(Mirtal::localizar(banks, "codigo=1")) << "no records";
    givenBanks();
    banks.MoveLast();
    EXPECT_TRUE(Mirtal::localizar(banks, "codigo=1"));
    EXPECT_EQ(banks["codigo"].integer(), 1);
    EXPECT_FALSE(Mirtal::localizar(banks, "codigo=9"));
    EXPECT_TRUE(banks.EOF());
    EXPECT_TRUE(Mirtal::localizar(banks, "codigo=2")) << "after one that found nothing";
}

TEST_P(SharedRoutines, AMessageGoesWhereTheMainWindowShowsIt) {
    QString shown = "nada";
    Mirtal::aoMostrarMensagem([&](const QString& text) { shown = text; });
    Mirtal::mensagem("Digite o valor do cheque");
    EXPECT_EQ(shown, "Digite o valor do cheque");
    Mirtal::aoMostrarMensagem({});
    Mirtal::mensagem("");
    EXPECT_EQ(shown, "Digite o valor do cheque");
}

TEST_P(SharedRoutines, AReportsErrorsAreToldByTheirNumbers) {
    const QString internal = "Erro na configuração interna do relatório.";
    const QString messages[] = {
        "É necessário existir uma impressora instalada no Windows.",
        "Não há registros a imprimir.",
        internal,
        internal,
        internal,
        "A página configurada para o relatório não possuí espaço suficiente para a impressão.",
        "Já existe um relatório em andamento.",
    };
    auto code = static_cast<qint32>(0x800403E9);
    for (const QString& message : messages) {
        expectMessage("Impressão", message);
        Mirtal::erroDeRelatorio(code++, "");
    }
    // Deliberate: what nobody knows is told by an empty message.
    for (const qint32 unknown : {code, static_cast<qint32>(0x800403E8), -1}) {
        expectMessage("Impressão", "");
        Mirtal::erroDeRelatorio(unknown, "detalhe");
    }
    expectMessage("Impressão", "Erro não previsto:\ndisco cheio");
    Mirtal::erroDeRelatorio(0, "disco cheio");
}

} // namespace
