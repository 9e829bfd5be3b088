// A table of so many rows that it isn't looked through whole before its first change.
#include "jet/RuleFile.h"
#include "jet/Sentences.h"
#include "jet/database/DatabasePager.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

using namespace jet;
using testing::HasSubstr;

namespace {

class LargeTable : public testing::TestWithParam<Version> {
protected:
    static constexpr std::int64_t kRows = 3100;

    LargeTable() {
        Database::create(path, GetParam());
        database.emplace(path);
        Table& table = database->createTable({
            "contas",
            {{"id", ColumnType::longInteger, 0, true}, {"valor", ColumnType::longInteger}},
            {{"PrimaryKey", {{"id"}}, true},           {"valor", {{"valor"}}}            }
        });
        DatabaseTransaction all(*database);
        for (std::int64_t i = 0; i < kRows; ++i)
            rows.push_back(table.insert(Row{Value{}, Value{i % 100}}));
        all.commit();
    }
    Table& table() { return database->table("contas"); }

    /// Takes the entry of a row out of an index, or puts one there for it, and opens the file anew.
    void damage(std::size_t index, RowId row, bool takeOut) {
        Pager& pager = DatabasePager::of(*database);
        const RealIndex& real = table().definition().realIndexes[index];
        IndexTree tree(pager, table().definition().page(), real.root, real.map);
        Bytes key = table().keyOf(index, row).value();
        PageAllocator pages(pager);
        database->begin();
        database->claim();
        if (takeOut) {
            tree.erase(pages, key, row);
        } else {
            key.back() ^= std::byte{1};
            tree.insert(pages, key, row);
        }
        database->commit();
        database.emplace(path);
    }
    void expectRefused(const char* words) {
        EXPECT_THAT(table().readOnlyReason().value_or(""),
                    AllOf(HasSubstr("\"contas\""), HasSubstr(words)));
        EXPECT_EQ(errorOf([&] { table().insert(Row{Value{}, Value{}}); }), Errc::readOnly);
        EXPECT_TRUE(database->damage());
    }

    TemporaryFolder folder;
    std::filesystem::path path = folder / "dados.mdb";
    std::optional<Database> database;
    std::vector<RowId> rows;
};

INSTANTIATE_TEST_SUITE_P(, LargeTable, bothVersions(), versionName);

TEST_P(LargeTable, ThatIsSoundIsChanged) {
    database.emplace(path);
    EXPECT_EQ(table().readOnlyReason(), std::nullopt);
    table().erase(rows.front());
    EXPECT_EQ(table().rowCount(), kRows - 1);
    EXPECT_EQ(database->damage(), std::nullopt);
}

TEST_P(LargeTable, IsNotChangedIfARowIsMissingInAnIndex) {
    damage(0, rows.front(), true);
    expectRefused("PrimaryKey");
}

TEST_P(LargeTable, IsNotChangedIfAnIndexBeginsWithAKeyThatIsNotItsRows) {
    damage(0, rows.front(), false);
    expectRefused("PrimaryKey");
}

TEST_P(LargeTable, IsNotChangedIfAnIndexEndsWithAKeyThatIsNotItsRows) {
    damage(0, rows.back(), false);
    expectRefused("PrimaryKey");
}

TEST_P(LargeTable, TellsAboutHowMuchOfAnIndexLiesBetweenTwoKeys) {
    const auto part = [&](std::int64_t low, std::int64_t high) {
        return table().partBetween(1, table().keysBetween(1, {}, Value{low}, Value{high}));
    };
    EXPECT_NEAR(part(0, 99), 1, 0.001);
    EXPECT_NEAR(part(0, 49), 0.5, 0.1);
    EXPECT_NEAR(part(50, 99), 0.5, 0.1);
    EXPECT_NEAR(part(70, 79), 0.1, 0.05);
    EXPECT_EQ(part(70, 60), 0) << "and never less than nothing";
    EXPECT_NEAR(table().partBetween(1, table().keysBetween(1, {}, Value{std::int64_t{50}}, {})),
                0.5, 0.1);
}

TEST_P(LargeTable, IsWalkedFromARowOnBothWays) {
    RowCursor row = table().scan();
    ASSERT_TRUE(row.seek(rows[2000]));
    EXPECT_EQ(row.id(), rows[2000]);
    EXPECT_TRUE(row.next());
    EXPECT_EQ(row.id(), rows[2001]);
    EXPECT_TRUE(row.previous() && row.previous());
    EXPECT_EQ(row.id(), rows[1999]);
    // One that has gone: to the next that is there.
    table().erase(rows[1000]);
    ASSERT_TRUE(row.seek(rows[1000]));
    EXPECT_EQ(row.id(), rows[1001]);
    EXPECT_TRUE(row.previous());
    EXPECT_EQ(row.id(), rows[999]);
    // Back from the end, and to its beginning.
    std::int64_t count = 0;
    for (bool there = row.last(); there; there = row.previous())
        ++count;
    EXPECT_EQ(count, kRows - 1);
    // At an end it stands on nothing, and stays there.
    EXPECT_FALSE(row.valid());
    EXPECT_FALSE(row.next() || row.previous());
    EXPECT_FALSE(row.seek({static_cast<PageNo>(number(rows.back().page) + 1), 0}));
    EXPECT_FALSE(row.next() || row.previous());
    EXPECT_TRUE(row.first());
    EXPECT_EQ(row.id(), rows.front());
}

} // namespace
