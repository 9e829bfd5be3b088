#include "agenda/Desfazer.h"
#include "agenda/FrmAgenda.h"
#include "agenda/FrmFicha.h"
#include "agenda/JanelaDeImpressao.h"
#include "cheques/FrmConsultaCH.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "controls/box/BarChart.h"
#include "controls/box/DropDownList.h"
#include "controls/box/ListView.h"
#include "registers/frmCliFor.h"
#include "shell/Historico.h"
#include "shell/Valores.h"
#include "support/ChequeShop.h"
#include "support/FormChecks.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Sheet : public Everywhere<ChequeShop> {
protected:
    // clang-format off
    static Row due(int client, int days, std::int64_t reais, int cents = 0) {
        return {
            {"cliente", number(client)},
            {"banco",   number(kAgro)},
            {"bompara", Valores::data(QDate::currentDate().addDays(days))},
            {"valor",   money(reais, cents)},
        };
    }
    static Row bounced(const char* numero, int dayOfMay, std::int64_t reais) {
        return {
            {"cliente", number(kAna)},
            {"banco",   number(kAgro)},
            {"numero",  words(numero)},
            {"data",    day(2026, 5, dayOfMay)},
            {"valor",   money(reais)},
        };
    }
    // clang-format on
    /// Deletes rows as a window does under that name. @return the number of what it did.
    static std::int32_t erase(const char* operation, const char* table, const char* where) {
        const Historico::Operacao named(data().historico, operation);
        ado::Recordset rs;
        rs.Open(QString("select * from %1 where %2").arg(table, where), data().Automacao);
        for (; !rs.EOF(); rs.MoveNext())
            rs.Delete();
        return named.grupo();
    }
    static FrmFicha& sheetOf(const char* name) {
        auto& form = open<FrmFicha>();
        type(form, "txtcliente", name);
        press(Qt::Key_Return);
        return form;
    }
    static std::vector<std::string> listed(const QWidget& form, const char* name) {
        const auto& list = control<ListView>(form, name);
        std::vector<std::string> lines;
        lines.reserve(static_cast<std::size_t>(list.count()));
        for (int row = 0; row < list.count(); ++row)
            lines.push_back(
                (list.item(row).text + "|" + list.item(row).subItems.join('|')).toStdString());
        return lines;
    }
    static std::string figures(const QWidget& form) {
        return (text(form, "txtemmaos") + "|" + text(form, "txtlimite") + "|" +
                text(form, "txtlivre"))
            .toStdString();
    }
    static std::string today() { return Valores::literal(QDate::currentDate()).toStdString(); }
    static std::string inDays(int days) {
        return formatDate(QDate::currentDate().addDays(days)).toStdString();
    }
};

INSTANTIATE_TEST_SUITE_P(, Sheet, everywhere(), keptName);

} // namespace

TEST_P(Sheet, TellsWhatIsInHandTheLimitAndWhatIsFree) {
    given("cheques",
          {due(kCarla, 5, 1000), due(kCarla, -5, 200, 1), due(kAna, 1, 150), due(kBento, 1, 7)});
    EXPECT_EQ(figures(sheetOf("carla")), "2 cheques, R$ 1.200,01|R$ 1.500,00|R$ 299,99");
    EXPECT_EQ(figures(sheetOf("ana")), "1 cheque, R$ 150,00|R$ 100,00|nada: passou R$ 50,00");
    auto& form = sheetOf("bento");
    EXPECT_EQ(figures(form), "1 cheque, R$ 7,00|R$ 0,00|sem limite");
    EXPECT_EQ(control<HeadingStrip>(form, "titulo").record(), "Bento Dias");
}

TEST_P(Sheet, PartsThemByHowOldAndHowFarOffTheyAre) {
    given("cheques", {due(kAna, -400, 1), due(kAna, -1, 2), due(kAna, 0, 4), due(kAna, 30, 8),
                      due(kAna, 31, 16), due(kAna, 60, 32), due(kAna, 61, 64), due(kAna, 90, 128),
                      due(kAna, 91, 256), due(kBento, 0, 512)});
    auto& form = sheetOf("ana");
    EXPECT_THAT(listed(form, "lstprazos"),
                ElementsAre("Atrasados|2|3,00", "Até 30 dias|2|12,00", "31 a 60 dias|2|48,00",
                            "61 a 90 dias|2|192,00", "Mais de 90|1|256,00"));
    const auto& chart = control<BarChart>(form, "grfprazos");
    ASSERT_EQ(chart.bars().size(), 5U);
    EXPECT_EQ(chart.bars()[1].words, "Até 30 dias: 2 cheques, R$ 12,00");
    EXPECT_EQ(chart.bars()[1].height, 12);
    EXPECT_THAT(listed(form, "lstavencer"), testing::Contains(inDays(31) + "|1|16,00"));
    EXPECT_EQ(listed(form, "lstavencer").size(), 7U);
}

TEST_P(Sheet, SumsWhatFallsDueOnOneDay) {
    given("cheques", {due(kAna, 1, 10), due(kAna, 0, 1), due(kAna, 1, 20)});
    EXPECT_THAT(listed(sheetOf("ana"), "lstavencer"),
                ElementsAre(inDays(0) + "|1|1,00", inDays(1) + "|2|30,00"));
}

TEST_P(Sheet, KeepsChequesWithoutADueDateApart) {
    given("cheques", {
                         {{"cliente", number(kAna)}, {"valor", money(9)}}
    });
    auto& form = sheetOf("ana");
    EXPECT_EQ(listed(form, "lstprazos").back(), "Sem vencimento|1|9,00");
    EXPECT_THAT(listed(form, "lstavencer"), IsEmpty());
}

TEST_P(Sheet, ListsTheBouncedOnesTheLatestFirst) {
    given("semfundos", {bounced("11", 3, 10), bounced("12", 9, 20), bounced("13", 1, 30)});
    EXPECT_THAT(listed(sheetOf("ana"), "lstsemfundos"),
                ElementsAre("09/05/2026|12|20,00", "03/05/2026|11|10,00", "01/05/2026|13|30,00"));
}

TEST_P(Sheet, IsEmptyWithoutAClient) {
    given("cheques", {due(kAna, 1, 10)});
    auto& form = sheetOf("ana");
    type(form, "txtcliente", "ninguém");
    press(Qt::Key_Return);
    EXPECT_EQ(figures(form), "||");
    for (const char* list : {"lstprazos", "lstavencer", "lstsemfundos"})
        EXPECT_THAT(listed(form, list), IsEmpty()) << list;
    EXPECT_EQ(control<HeadingStrip>(form, "titulo").record(), "Nenhum cliente");
    EXPECT_TRUE(control<BarChart>(form, "grfprazos").bars().empty());
}

TEST_P(Sheet, IsReadAnewByF5) {
    auto& form = sheetOf("ana");
    given("cheques", {due(kAna, 1, 10)});
    EXPECT_EQ(figures(form), "0 cheques, R$ 0,00|R$ 100,00|R$ 100,00");
    press(Qt::Key_F5);
    EXPECT_EQ(figures(form), "1 cheque, R$ 10,00|R$ 100,00|R$ 90,00");
}

TEST_P(Sheet, IsOfTheClientInTheWindowInFront) {
    given("cheques", {due(kCarla, 1, 10)});
    given("semfundos", {bounced("11", 3, 10)});
    const auto of = [this](QWidget& form) {
        activate(form);
        QString shown;
        whileModal<FrmFicha>([&](FrmFicha& sheet) {
            shown = control<DropDownList>(sheet, "txtcliente").text();
            click(sheet, "cmdsair");
        });
        FrmFicha::mostrar();
        return shown;
    };
    auto& entry = open<FrmLancarCheques>();
    click(entry, "btnNavegacao", 0);
    EXPECT_EQ(of(entry), "Carla Reis");
    auto& returned = open<FrmLancasSFundos>();
    click(returned, "btnNavegacao", 0);
    EXPECT_EQ(of(returned), "Ana Costa");
    auto& consulted = open<FrmConsultaCH>();
    type(consulted, "txtNome", "bento");
    EXPECT_EQ(of(consulted), "Bento Dias");
    auto& agenda = open<FrmAgenda>();
    type(agenda, "txtcliente", "bento");
    EXPECT_EQ(of(agenda), "Bento Dias");
    activate(agenda);
    control<DropDownList>(agenda, "txtcliente").setListIndex(-1);
    press(Qt::Key_F5);
    control<ListView>(agenda, "lstcheques").setCurrentRow(0);
    EXPECT_EQ(of(agenda), "Carla Reis");
    auto& client = open<frmCliFor>();
    click(client, "btnNavegacao", 3);
    EXPECT_EQ(of(client), text(client, "txtNome"));
    click(client, "cmdNovo");
    EXPECT_EQ(of(client), ""); // not stored yet
}

TEST_P(Sheet, TellsWhatWasSettledInAYearAndHowLate) {
    given("cheques", {due(kAna, -5, 10), due(kAna, -2, 20), due(kAna, 1, 40), due(kBento, -9, 80)});
    auto& form = sheetOf("ana");
    EXPECT_EQ(text(form, "txtbaixados"), "ainda não há histórico");
    erase(Historico::kBaixa, "cheques", ("bompara<" + today()).c_str());
    press(Qt::Key_F5);
    EXPECT_EQ(text(form, "txtbaixados"), "2 cheques, R$ 30,00, atraso médio 3,5 dias");
    EXPECT_EQ(text(form, "txtemmaos"), "1 cheque, R$ 40,00");
}

TEST_P(Sheet, LeavesOutWhatWasUndone) {
    given("cheques", {due(kAna, -5, 10)});
    auto& form = sheetOf("ana");
    ASSERT_EQ(Desfazer::desfazer(erase(Historico::kBaixa, "cheques", "cliente=2")), "");
    press(Qt::Key_F5);
    EXPECT_EQ(text(form, "txtbaixados"), "0 cheques, R$ 0,00");
    EXPECT_EQ(text(form, "txtemmaos"), "1 cheque, R$ 10,00");
}

TEST_P(Sheet, TellsBouncedOnesOpenAndOld) {
    given("semfundos", {bounced("11", 3, 10), bounced("12", 9, 20)});
    auto& form = sheetOf("ana");
    EXPECT_EQ(text(form, "txtdevolvidos"), "2 cheques, R$ 30,00");
    erase(Historico::kExclusao, "semfundos", "numero='11'");
    press(Qt::Key_F5);
    EXPECT_EQ(text(form, "txtdevolvidos"),
              "1 cheque, R$ 20,00; excluídos em 12 meses: 1 cheque, R$ 10,00");
}

TEST_P(Sheet, IsPrintedOnOnePage) {
    auto& form = sheetOf("ana");
    expectMessage("Impressão", "Não há registros a imprimir.", MessageIcon::exclamation);
    click(form, "cmdimprimir");
    for (int i = 0; i < 60; ++i)
        given("cheques", {due(kAna, i, 1)});
    for (int i = 1; i <= 30; ++i)
        given("semfundos", {bounced(std::to_string(i).c_str(), i, 2)});
    erase(Historico::kBaixa, "cheques", ("bompara=" + today()).c_str());
    press(Qt::Key_F5);
    click(form, "cmdimprimir");
    auto& window = JanelaDeImpressao::instance();
    ASSERT_TRUE(window.isVisible());
    auto& report = *window.findChild<Relatorio*>("Relatorio");
    EXPECT_EQ(report.pageCount(), 1);
    QStringList texts;
    for (const Relatorio::Text& each : report.textsOf(1))
        texts += each.text;
    const std::string page = texts.join('|').toStdString();
    for (const std::string part :
         {"Ana Costa     Limite: R$ 100,00     Livre: R$ 41,00", "Em mãos|Até 30 dias||30|30,00",
          "A vencer|depois||39|39,00", "Devolvido sem fundos|30/05/2026|30|1|2,00",
          "Devolvidos sem fundos|antes||18|36,00", "Baixados em 12 meses|atraso 0,0 dias||1|1,00",
          "59,00"})
        EXPECT_THAT(page, testing::HasSubstr(part));
    window.close();
}

TEST_P(Sheet, OfNobodyIsNotPrinted) {
    auto& form = open<FrmFicha>();
    expectMessage("Advertência", "Escolha o cliente cuja ficha deve ser impressa.",
                  MessageIcon::exclamation);
    click(form, "cmdimprimir");
    EXPECT_EQ(focus(), "txtcliente");
}

TEST_P(Sheet, OfMoreThanCanBeSummedSaysSo) {
    const jet::Value most = jet::Currency{std::numeric_limits<std::int64_t>::max()};
    given("cheques", {
                         {{"cliente", number(kAna)}, {"valor", most}},
                         {{"cliente", number(kAna)}, {"valor", most}}
    });
    open<FrmFicha>();
    expectFailure("A soma dos cheques passa do maior valor possível.");
    type("ana");
    press(Qt::Key_Return);
}

TEST_P(Sheet, HasANameForEachControlNoSharedKeysAndNoCutText) {
    given("cheques", {due(kAna, -1, 9999), due(kAna, 45, 123456)});
    EXPECT_EQ(faultsOf(sheetOf("ana")), QStringList());
}
