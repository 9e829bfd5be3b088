// Reports of a file that other stations and programs write meanwhile.
#include "print/ReportPrinting.h"
#include "reports/BesideStations.h"
#include "reports/FonteDeCheques.h"

#include <algorithm>
#include <functional>

namespace {

using testing::Contains;
using testing::HasSubstr;

// ---- A report that can't begin

TEST_P(ReportBesideStations, OneThatCantBeginLeavesTheOneOnShow) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
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
    waitForRows();
    ASSERT_TRUE(report().isComplete());
    EXPECT_THAT(printed(), Contains("Total: 400,00"));
    EXPECT_THAT(printed(), Contains(HasSubstr("01/05/2025 a 31/05/2025")));
}

// ---- Rows that stop coming

TEST_P(ReportBesideStations, OneWhoseRowsStopComingIsToldAndNeitherPrintedNorSaved) {
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    stopHalfWay([] {});
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
    if (onServer())
        GTEST_SKIP() << kByTheFile;
    stopHalfWay([this] {
        const QString before = said("failed");
        expectFailure(kBusy); // it still writes
        click(window(), "again");
        EXPECT_EQ(said("failed"), before);
    });
    click(window(), "again");
    EXPECT_FALSE(control(window(), "failed").isVisible());
    waitForRows();
    ASSERT_TRUE(report().isComplete());
    EXPECT_THAT(printed(), Contains("Total: 400,00"));
    EXPECT_EQ(said("pageCount"), "Página 1 de 9");
}

// ---- Rows that change while they are read

/// Runs `save` at some of the rows that come in, as another station saves while they do.
class SavesMeanwhile {
public:
    SavesMeanwhile(int every, int most, std::function<void()> save) {
        QObject::connect(frmRel_ChequesSF::instance().findChild<Relatorio*>("Relatorio"),
                         &Relatorio::detail, &life_,
                         [this, every, most, save = std::move(save)](const ReportRow&) {
                             if (++rows_ % every != 0 || saved_ == most)
                                 return;
                             ++saved_;
                             save();
                         });
    }
    [[nodiscard]] int saved() const noexcept { return saved_; }

private:
    QObject life_;
    int rows_ = 0;
    int saved_ = 0;
};

/// Takes a real from the last cheque and gives it to the first: both sum up to the same as before.
void moveAReal(ado::Connection& by) {
    ado::Recordset cheques;
    cheques.Open("select * from cheques where data=#05/01/2025# order by lancamento", by);
    ado::Transaction both(by);
    for (const std::int64_t step : {10'000, -10'000}) {
        step > 0 ? cheques.MoveFirst() : cheques.MoveLast();
        cheques["valor"] = jet::Currency{cheques["valor"].currency().tenThousandths + step};
        cheques.Update();
    }
    both.commit();
}

/// The amounts of the report on show, in its order.
std::vector<std::int64_t> amounts(const Relatorio& report) {
    std::vector<std::int64_t> found;
    report.rows().visit(0, report.rows().size(), [&](qint64, const std::vector<ReportValue>& row) {
        found.push_back(std::get<Amount>(row[3]).tenThousandths);
        return true;
    });
    return found;
}

TEST_P(ReportBesideStations, OneIsOfOneStateWhenAnotherStationSavesMeanwhile) {
    ado::Connection other;
    other.Open(data().Automacao.ConnectionString());
    SavesMeanwhile saves(200, 1, [&] { moveAReal(other); });
    ask("01052025", "31052025");
    waitForRows();
    ASSERT_TRUE(report().isComplete());
    EXPECT_EQ(saves.saved(), 1);
    const auto found = amounts(report());
    ASSERT_EQ(found.size(), std::size_t{kCheques});
    EXPECT_EQ(std::ranges::max(found), 20'000);
    EXPECT_EQ(std::ranges::min(found), 0);
    EXPECT_THAT(printed(), Contains("Total: 400,00"));
}

TEST_P(ReportBesideStations, OneIsOfOneStateWhenThisProgramSavesMeanwhile) {
    SavesMeanwhile saves(200, 1, [&] { moveAReal(data().Automacao); });
    ask("01052025", "31052025");
    waitForRows();
    ASSERT_TRUE(report().isComplete());
    EXPECT_EQ(saves.saved(), 1);
    EXPECT_EQ(std::ranges::max(amounts(report())), 20'000);
    EXPECT_THAT(printed(), Contains("Total: 400,00"));
}

TEST_P(ReportBesideStations, OneComesToItsEndHoweverOftenAnotherStationSaves) {
    ado::Connection other;
    other.Open(data().Automacao.ConnectionString());
    int changes = 0;
    QObject::connect(&report(), &Relatorio::startedOver, &window(), [&] { ++changes; });
    SavesMeanwhile saves(50, -1, [&] { moveAReal(other); });
    ask("01052025", "31052025");
    waitForRows();
    ASSERT_TRUE(report().isComplete());
    if (onServer())
        EXPECT_LE(changes,
                  FonteDeCheques::kVezes); // what has come just when it is read is taken in
    else
        EXPECT_EQ(changes, FonteDeCheques::kVezes);
    EXPECT_GT(saves.saved(), changes);
    const auto found = amounts(report());
    EXPECT_EQ(found.size(), std::size_t{kCheques});
    EXPECT_EQ(std::ranges::max(found) - 10'000, 10'000 - std::ranges::min(found));
    EXPECT_THAT(printed(), Contains("Total: 400,00"));
}

TEST_P(ReportBesideStations, OneHasTheRowsThatCameAndWithoutThoseThatWent) {
    ado::Connection other;
    other.Open(data().Automacao.ConnectionString());
    SavesMeanwhile saves(200, 1, [&] {
        addCheques(other, 30);
        ado::Recordset first;
        first.Open("select * from cheques where data=#05/01/2025# order by lancamento", other);
        for (int i = 0; i < 10; ++i, first.MoveNext())
            first.Delete();
        other.flush();
    });
    ask("01052025", "31052025");
    waitForRows();
    ASSERT_TRUE(report().isComplete());
    EXPECT_EQ(report().rows().size(), kCheques + 20);
    EXPECT_THAT(printed(), Contains("Total: 420,00"));
}

INSTANTIATE_TEST_SUITE_P(, ReportBesideStations, everywhere(), keptName);

} // namespace
