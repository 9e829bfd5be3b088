// The largest file that a format allows: what doesn't fit any more is refused as a whole.
#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/FullFile.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using namespace jet;

namespace {

constexpr std::uint32_t kRoom = 12; ///< pages

class LargestFile : public testing::TestWithParam<Version> {
protected:
    LargestFile() : path_(folder_ / "loja.mdb") {
        Database::create(path_, GetParam());
        Database(path_).createTable({
            "cheques",
            {{"lancamento", ColumnType::longInteger, 0, true}, {"obs", ColumnType::text, 200}},
            {{"PrimaryKey", {{"lancamento"}}, true},           {"obs", {{"obs"}}}            }
        });
        leaveRoom(path_, kRoom);
    }

    Table& table(Database& file) { return file.table("cheques"); }
    static Row cheque(int number) { return {{}, std::to_string(number) + std::string(180, 'x')}; }
    /// How many cheques fit, each saved by itself.
    int fill(Database& file) {
        for (int number = 0;; ++number) {
            try {
                table(file).insert(cheque(number));
            } catch (const Error& error) {
                EXPECT_EQ(error.code(), Errc::full);
                EXPECT_THAT(error.what(), testing::HasSubstr("tamanho máximo do seu formato"));
                EXPECT_THAT(error.what(), testing::HasSubstr("Apague registros antigos"));
                return number;
            }
        }
    }
    TemporaryFolder folder_;
    std::filesystem::path path_;
};

INSTANTIATE_TEST_SUITE_P(, LargestFile, bothVersions(), versionName);

TEST_P(LargestFile, KeepsAllThatFitsAndRefusesTheNextAsAWhole) {
    int fit = 0;
    {
        Database file(path_);
        fit = fill(file);
        EXPECT_GT(fit, static_cast<int>(kRoom));
        EXPECT_EQ(table(file).rowCount(), fit);
    }
    EXPECT_LE(std::filesystem::file_size(path_), GetParam() == Version::jet3 ? 1U << 30 : 1U << 31);
    EXPECT_TRUE(check(path_).sound());

    Database file(path_);
    RowCursor row = table(file).scan();
    int number = 0;
    for (bool there = row.first(); there; there = row.next(), ++number)
        EXPECT_EQ(row.row().values()[1], cheque(number)[1]);
    EXPECT_EQ(number, fit);
}

TEST_P(LargestFile, ATransactionThatMeetsItsEndIsTakenBackAndLeavesRoom) {
    {
        Database file(path_);
        {
            DatabaseTransaction open(file);
            EXPECT_GT(fill(file), 0);
        }
        EXPECT_EQ(table(file).rowCount(), 0);
        table(file).insert(cheque(0));
    }
    EXPECT_TRUE(check(path_).sound());
}

TEST_P(LargestFile, TakesRowsAgainWhereOthersWereErased) {
    Database file(path_);
    const int fit = fill(file);
    RowCursor row = table(file).scan();
    std::vector<RowId> all;
    for (bool there = row.first(); there; there = row.next())
        all.push_back(row.id());
    for (const RowId id : all)
        table(file).erase(id);
    EXPECT_EQ(fill(file), fit);
}

} // namespace
