#pragma once

#include "jet/Copies.h"
#include "jet/DamagedFile.h"
#include "jet/Salvage.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

/// A damaged file, and what is saved of it in a new one.
class SalvageFile : public testing::TestWithParam<jet::Version> {
protected:
    SalvageFile() {
        jet::Database database(file_.path(), {true, {}, {}});
        for (const jet::RowId id : file_.rows)
            cheques_.push_back(*database.table("Cheques").read(id));
        others_ = rowsOf(database, "Outra");
    }

    /// Saves the damage, and what can be saved of the file.
    jet::SalvageReport& salvageIt() {
        file_.save();
        const std::string damaged = contentOf(file_.path());
        std::filesystem::remove(target_);
        report_ = jet::salvage(file_.path(), target_);
        EXPECT_TRUE(contentOf(file_.path()) == damaged) << "the source is only read";
        EXPECT_TRUE(jet::check(target_).sound()) << listed(jet::check(target_));
        EXPECT_EQ(filesIn(folder_.path()), std::vector<std::string>{"salvo.mdb"});
        return report_;
    }

    /// Every row of "Cheques" is in the new file as it was, or told to be missing, or to have lost
    /// the field it differs in.
    void expectNothingDroppedSilently(const std::string& table = "Cheques") {
        jet::Database database(target_);
        std::map<std::int64_t, jet::Row> saved;
        for (const std::string& name : {table, table + "_separados"})
            if (database.hasTable(name))
                for (jet::Row& row : rowsOf(database, name))
                    saved.emplace(std::get<std::int64_t>(row.front()), std::move(row));
        for (std::size_t i = 0; i < cheques_.size(); ++i) {
            SCOPED_TRACE("row " + std::to_string(i));
            const auto number = std::get<std::int64_t>(cheques_[i].front());
            const auto found = saved.find(number);
            if (found == saved.end()) {
                EXPECT_TRUE(isTold(file_.rows[i], {jet::Loss::What::row, jet::Loss::What::page}))
                    << told(report_);
                continue;
            }
            for (std::size_t column = 0; column < cheques_[i].size(); ++column)
                if (found->second[column] != cheques_[i][column]) {
                    EXPECT_TRUE(jet::isNull(found->second[column]));
                    EXPECT_TRUE(isTold(file_.rows[i], {jet::Loss::What::value})) << told(report_);
                }
        }
    }

    /// A loss of one of these kinds names the row or its page.
    [[nodiscard]] bool isTold(jet::RowId row, const std::vector<jet::Loss::What>& kinds) const {
        return std::ranges::any_of(report_.losses, [&](const jet::Loss& loss) {
            return std::ranges::count(kinds, loss.what) > 0 && loss.page == row.page &&
                   (!loss.slot || *loss.slot == row.slot);
        });
    }
    [[nodiscard]] static std::string told(const jet::SalvageReport& report) {
        std::string text;
        for (const jet::Loss& loss : report.losses)
            text += std::to_string(static_cast<int>(loss.what)) + " " + loss.table + " " +
                    std::to_string(number(loss.page)) + ": " + loss.reason + "\n";
        return text;
    }
    void expectAll(const std::string& table = "Cheques", const std::string& other = "Outra") {
        jet::Database database(target_);
        EXPECT_TRUE(rowsOf(database, table) == cheques_);
        EXPECT_TRUE(rowsOf(database, other) == others_);
    }

    void wipe(jet::PageNo page) { std::ranges::fill(file_.page(page), std::byte{}); }
    void wipe(jet::RowId map) { std::ranges::fill(file_.bytesOf(map), std::byte{0xEE}); }

    DamagedFile file_{GetParam()};
    std::vector<jet::Row> cheques_; ///< in the order of DamagedFile::rows
    std::vector<jet::Row> others_;
    TemporaryFolder folder_;
    std::filesystem::path target_ = folder_ / "salvo.mdb";
    jet::SalvageReport report_;
};
