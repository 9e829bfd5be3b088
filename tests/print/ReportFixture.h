#pragma once

#include "print/ReportFiles.h"
#include "samples/ShopReport.h"
#include "support/FormTest.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

/// The shop's report, its error events noted, a folder for its files.
class ReportTest : public FormTest {
protected:
    ReportTest() {
        QObject::connect(&shop_.report, &Relatorio::error, &shop_,
                         [this](qint32 code) { errors_.push_back(code); });
    }

    /// All of the report's rows, at once.
    void takeAll() {
        const Relatorio::Run run(shop_.report);
        ASSERT_EQ(shop_.report.takeAll(run, goOn), RowsState::complete);
    }

    [[nodiscard]] QString path(const char* name) const {
        return QString::fromStdString((folder_ / name).string());
    }

    /// What is in the folder.
    [[nodiscard]] std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            names.push_back(entry.path().filename().string());
        return names;
    }

    static bool goOn(qint64, qint64) { return true; }

    ShopReport shop_;
    Relatorio& report_ = shop_.report;
    std::vector<qint32> errors_;
    TemporaryFolder folder_;
};

/// As many as stand on a page of the shop's report, and as many as leave the total room below.
constexpr int kRowsOnPage = 46;
constexpr int kRowsAboveTotal = 45;
