#include "print/ReportPrinting.h"
#include "reports/ReportFilter.h"

namespace {

using testing::Contains;
using testing::ElementsAre;

class ChequeReport : public ReportFromFilter {
protected:
    static std::string today() { return QDate::currentDate().toString("dd/MM/yyyy").toStdString(); }
};

INSTANTIATE_TEST_SUITE_P(, ChequeReport, everywhere(), keptName);

TEST_P(ChequeReport, HasHeaderHeadingsRowsAndTotal) {
    print("relch", "", "", "");
    EXPECT_THAT(printed(),
                ElementsAre("Relatório de Cheques Página: 1",
                            "Referente ao período: 01/01/2026 a 31/01/2026 Data: " + today(),
                            "Cheque Nome Dt. Emissão Valor Cheque Banco Bom Para",
                            "000002 João 10/01/2026 123,45 Banco do Vale 01/02/2026",
                            "000003 Maria 31/01/2026 0,05 Caixa 15/02/2026",
                            "000001 Maria 10/01/2026 1.000,00 Banco do Vale 01/03/2026",
                            "Total: 1.123,50"));
}

TEST_P(ChequeReport, OfBouncedChequesHasTheSameColumnsAndNoDueDate) {
    print("relsf", "", "", "");
    EXPECT_THAT(printed(),
                ElementsAre("Relatório de Cheques Sem Fundos Página: 1",
                            "Referente ao período: 01/01/2026 a 31/01/2026 Data: " + today(),
                            "Cheque Nome Dt. Emissão Valor Cheque Banco Bom Para",
                            "900001 João 05/01/2026 77,00 Banco do Vale", "Total: 77,00"));
}

TEST_P(ChequeReport, OfOneRowTotalsThatRow) {
    print("relch", "João", "", "");
    EXPECT_THAT(printed(), Contains("Total: 123,45"));
}

TEST_P(ChequeReport, StartsItsTotalFromNothing) {
    print("relch", "", "", "");
    print("relch", "Maria", "", "");
    EXPECT_THAT(printed(), Contains("Total: 1.000,05"));
}

TEST_P(ChequeReport, KeepsItsTotalAndPeriodWhenTheNextFindsNothing) {
    print("relch", "", "", "");
    auto& form = openFor("relch");
    period(form, "01012020", "31012020");
    expectMessage("Impressão", "Não há registros a imprimir.");
    click(form, "CmdImprimir");
    const auto lines = printed();
    EXPECT_THAT(lines, Contains("Total: 1.123,50"));
    EXPECT_THAT(lines, Contains(testing::HasSubstr("01/01/2026 a 31/01/2026")));
}

TEST_P(ChequeReport, ShowsThePeriodAsItWasWhenPrintingBegan) {
    print("relch", "", "", "");
    period(openFor("relch"), "05052025", "06062025");
    EXPECT_THAT(printed(), Contains(testing::HasSubstr("01/01/2026 a 31/01/2026")));
}

TEST_P(ChequeReport, ASecondOneWhileOneIsAtWorkIsRefused) {
    print("relch", "", "", "");
    auto& form = openFor("relch");
    const Relatorio::Run atWork(report());
    expectMessage("Impressão", "Já existe um relatório em andamento.");
    click(form, "CmdImprimir");
}

TEST_P(ChequeReport, WithoutAPrinterOnlyPrintingIsRefused) {
    setPrinterFunctions({[] { return false; }, {}});
    print("relch", "", "", "");
    expectMessage("Impressão", "É necessário existir uma impressora instalada no Windows.");
    EXPECT_EQ(printReport(report(), 1, nullptr, [](qint64, qint64) { return true; }),
              PrintOutcome::refused);
    EXPECT_THAT(printed(), Contains("Total: 1.123,50"));
    setPrinterFunctions({});
}

TEST_P(ChequeReport, ClosedByEscGivesTheFocusBackToWhoAskedForIt) {
    auto& form = openFor("relch");
    period(form, "01012026", "31012026");
    enter(form, "CmdImprimir");
    press(Qt::Key_Space);
    auto& window = frmRel_ChequesSF::instance();
    activate(window);
    window.setFocus();
    EXPECT_EQ(focus(), "pages");
    press(Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(QTest::qWaitFor([] { return focus() == "CmdImprimir"; }, 60'000));
}

// A report on show takes its rows while the program is idle: when the data is closed it ends.
TEST_P(ChequeReport, EndsWithTheData) {
    print("relch", "", "", "");
    data().fechar();
    EXPECT_EQ(details().size(), 3U);
}

} // namespace
