// Reports of a file that other stations and programs write meanwhile.
#include "print/ReportPrinting.h"
#include "reports/BesideStations.h"

#include <QPushButton>

namespace {

using testing::Contains;
using testing::HasSubstr;

// ---- A report that can't begin

TEST_P(ReportBesideStations, OneThatCantBeginLeavesTheOneOnShow) {
    print("relch", "", "", "");
    const auto lines = printed();
    ASSERT_THAT(lines, Contains("Total: 1.123,50"));
    const QImage page = seen();
    {
        const WritingProgram other(shop().file(), GetParam());
        expectFailure(kBusy);
        ask("01052025", "31052025");
    }
    EXPECT_EQ(printed(), lines);
    EXPECT_EQ(seen(), page);
    EXPECT_EQ(window().windowTitle(), "Relatório de Cheques");
    // And goes on telling of what keeps it from being printed.
    expectMessage("Impressão", "É necessário existir uma impressora instalada no Windows.");
    click(window(), "print");
}

TEST_P(ReportBesideStations, OneThatFindsNothingLeavesTheRowsOfTheOneOnShowComing) {
    ask("01052025", "31052025");
    ASSERT_FALSE(report().isComplete());
    expectMessage("Impressão", "Não há registros a imprimir.");
    ask("01011990", "31011990");
    ASSERT_TRUE(QTest::qWaitFor([] { return report().isComplete(); }, 60'000));
    EXPECT_THAT(printed(), Contains("Total: 400,00"));
    EXPECT_THAT(printed(), Contains(HasSubstr("01/05/2025 a 31/05/2025")));
}

// ---- Rows that stop coming

TEST_P(ReportBesideStations, OneWhoseRowsStopComingIsToldAndNeitherPrintedNorSaved) {
    ask("01052025", "31052025");
    window().show();
    {
        const WritingProgram other(shop().file(), GetParam());
        expectFailure(kBusy);
        ASSERT_TRUE(QTest::qWaitFor([] { return report().state() == RowsState::failed; }, 60'000));
    }
    EXPECT_THAT(said("failed").toStdString(),
                HasSubstr("Relatório incompleto: a leitura das linhas parou depois de "));
    EXPECT_THAT(said("pageCount").toStdString(), testing::EndsWith("(incompleto)"));
    for (const auto& [tool, title] :
         {std::pair("print", "Impressão"), std::pair("pdf", "Salvar como PDF"),
          std::pair("xlsx", "Salvar como planilha"), std::pair("csv", "Salvar como CSV")}) {
        expectMessage(title, kIncomplete);
        click(window(), tool);
        EXPECT_EQ(said("news"), "");
    }
}

TEST_P(ReportBesideStations, OneWhoseRowsStopComingCanBeTriedAgain) {
    ask("01052025", "31052025");
    window().show();
    {
        const WritingProgram other(shop().file(), GetParam());
        expectFailure(kBusy);
        ASSERT_TRUE(QTest::qWaitFor([] { return report().state() == RowsState::failed; }, 60'000));
        const QString before = said("failed");
        expectFailure(kBusy); // it still writes
        click(window(), "again");
        EXPECT_EQ(said("failed"), before);
    }
    click(window(), "again");
    EXPECT_FALSE(control(window(), "failed").isVisible());
    ASSERT_TRUE(QTest::qWaitFor([] { return report().isComplete(); }, 60'000));
    EXPECT_THAT(printed(), Contains("Total: 400,00"));
    EXPECT_EQ(said("pageCount"), "Página 1 de 9");
}

INSTANTIATE_TEST_SUITE_P(, ReportBesideStations, bothVersions(), versionName);

} // namespace
