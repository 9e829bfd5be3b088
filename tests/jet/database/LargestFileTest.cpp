// The largest file that a format allows: what doesn't fit any more is refused as a whole.
#include "jet/Check.h"
#include "jet/database/DatabasePager.h"
#include "jet/page/DataPage.h"
#include "jet/page/MapLayout.h"
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
        std::uint64_t size = 0;
        {
            Database file(path_);
            file.createTable({
                "cheques",
                {{"lancamento", ColumnType::longInteger, 0, true}, {"obs", ColumnType::text, 200}},
                {{"PrimaryKey", {{"lancamento"}}, true},           {"obs", {{"obs"}}}            }
            });
            size = useUp(file);
        }
        std::filesystem::resize_file(path_, size); // with a hole, where the system has such
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

private:
    /// Puts all pages but the last into use, up to the largest size: that of the file, in bytes, of
    /// which the last pages aren't there yet.
    static std::uint64_t useUp(Database& file) {
        Pager& pager = DatabasePager::of(file);
        const Format& format = pager.format();
        const auto bits = static_cast<std::uint32_t>(MapPageLayout::bits(format));
        const auto most = static_cast<std::uint32_t>(format.largestFile / format.pageSize);
        DatabaseTransaction open(file);
        file.claim();
        const UsageMap free(pager, kFreePagesMap, UsageMap::Kind::global);
        for (std::uint32_t page = most - kRoom - 1; page > pager.pageCount();
             page -= std::min(page, bits))
            PageAllocator(pager).remove(free, static_cast<PageNo>(page)); // makes its part
        std::vector<PageNo> parts;
        const PageRef holder = pager.read(kFreePagesMap.page);
        const auto row =
            DataPage(format, holder.bytes(), kFreePagesMap.page).slot(kFreePagesMap.slot);
        for (std::size_t part = 0; part < MapRowLayout::referencesIn(row.bytes.size()); ++part)
            parts.push_back(load(row.bytes.data(), MapRowLayout::reference(part)));
        for (std::uint32_t page = pager.pageCount(); page < most - kRoom; ++page)
            setBit(pager.change(parts[page / bits]).subspan(MapPageLayout::bitmap), page % bits,
                   false);
        open.commit();
        return (most - kRoom) * std::uint64_t{format.pageSize};
    }
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
