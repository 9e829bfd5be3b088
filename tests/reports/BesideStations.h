#pragma once

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "reports/ReportFilter.h"
#include "support/OtherStations.h"

/// Reports of a file that others work in as well.
class ReportBesideStations : public ReportFromFilter {
protected:
    static constexpr int kCheques = 400;
    static constexpr const char* kBusy = "está gravando no banco de dados";

    void SetUp() override {
        ReportFromFilter::SetUp();
        // No printer is asked for by accident.
        setPrinterFunctions({[] { return false; }, {}});
        addCheques(data().Automacao, kCheques);
        data().rsCheques.Requery();
    }
    void TearDown() override {
        setPrinterFunctions({});
        ReportFromFilter::TearDown();
    }

    /// Cheques of May 2025, of a real each, stored by whoever has that connection.
    static void addCheques(ado::Connection& by, int count) {
        ado::Recordset cheques;
        cheques.Open("cheques", by);
        ado::Transaction all(by);
        for (int i = 0; i < count; ++i) {
            cheques.AddNew();
            for (const auto& [name, value] :
                 cheque("123456", 1, 1, day(2025, 5, 1), day(2025, 6, 1), 10'000))
                cheques[name] = value;
            cheques.Update();
        }
        all.commit();
    }

    static void ask(const char* first, const char* last) {
        auto& form = openFor("relch");
        period(form, first, last);
        click(form, "CmdImprimir");
    }
    /// Until no more of them come.
    static void waitForRows() {
        EXPECT_TRUE(QTest::qWaitFor([] { return report().state() != RowsState::coming; }, 60'000));
    }
    /// The rows of a report stop coming, and `meanwhile` is done before they could come again.
    template <class Work>
    void stopHalfWay(Work&& meanwhile) {
        ask("01052025", "31052025");
        window().show();
        const WritingProgram other(shop().file(), GetParam());
        expectFailure(kBusy);
        waitForRows();
        ASSERT_EQ(report().state(), RowsState::failed);
        meanwhile();
    }
    static frmRel_ChequesSF& window() { return frmRel_ChequesSF::instance(); }
    /// What the window's label of that name says.
    static QString said(const char* name) { return text(window(), name); }
    /// The pages on show, as they look.
    static QImage seen() { return control<QWidget>(window(), "pages").grab().toImage(); }
};
