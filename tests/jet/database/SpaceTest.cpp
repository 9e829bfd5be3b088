// Rows and long texts that outgrow their place, and space that is used again.
#include "jet/Sentences.h"
#include "jet/database/ChequeFile.h"
#include "jet/database/DatabasePager.h"

using namespace jet;
using namespace std::string_literals;

namespace {

TEST_P(DatabaseFile, RowsKeepTheirIdWhenTheyOutgrowTheirPage) {
    Database file(path);
    Table& table = file.createTable({
        "notas",
        {{"codigo", ColumnType::longInteger, 0, true},
          {"a", ColumnType::text, 255},
          {"b", ColumnType::text, 255},
          {"c", ColumnType::text, 255}},
        {{"PrimaryKey", {{"codigo"}}, true}                }
    });
    std::map<RowId, std::string> expected;
    for (int i = 0; i < 60; ++i) {
        const std::string text = "linha " + std::to_string(i);
        expected[table.insert(std::vector<Value>{{}, text, {}, {}})] = text;
    }
    // Grow, grow again (the moved copy may have to move once more), shrink back.
    for (const std::size_t size : {200U, 255U, 3U}) {
        for (auto& [id, text] : expected) {
            text = std::string(size, 'a' + static_cast<char>(id.slot % 26));
            const Assignment changes[] = {
                {1, text},
                {2, text},
                {3, text}
            };
            table.update(id, changes);
        }
        std::map<RowId, std::string> found;
        RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next())
            found[row.id()] = std::get<std::string>(row.row().value(3));
        EXPECT_EQ(found, expected);
    }
    for (const auto& [id, text] : expected)
        table.erase(id);
    EXPECT_EQ(table.rowCount(), 0);
    EXPECT_FALSE(table.scan().first());
}

TEST_P(DatabaseFile, LongTextsOfEveryLengthComeBackAndGiveTheirPagesBack) {
    Database file(path);
    Table& table = file.createTable(shopCheques());
    const RowId id = table.insert(cheque(1, "1"));
    file.flush();
    std::uint32_t largest = 0;
    for (int round = 0; round < 3; ++round) {
        for (const std::size_t length : {0U, 1U, 31U, 32U, 33U, 64U, 65U, 2035U, 2036U, 2037U,
                                         4075U, 4076U, 4077U, 9000U, 70000U}) {
            const std::string text(length, 'm');
            const Assignment change[] = {
                {kObsAt, text}
            };
            table.update(id, change);
            EXPECT_EQ((*table.read(id))[kObsAt], Value(text)) << length;
        }
        if (round == 0)
            largest = DatabasePager::of(file).pageCount();
        EXPECT_EQ(DatabasePager::of(file).pageCount(), largest);
    }
    const std::string accents = "ção — “aspas”";
    const Assignment change[] = {
        {kObsAt, accents}
    };
    table.update(id, change);
    EXPECT_EQ((*table.read(id))[kObsAt], Value(accents));
}

TEST_P(DatabaseFile, LongTextsGiveWayInARowThatGetsTooLong) {
    Database file(path);
    const std::size_t stays = formatOf(GetParam()).inlineLongValue / 2; // the longest, as text
    TableSpec spec{"textos", {}, {}};
    for (int i = 0; i < 50; ++i)
        spec.columns.push_back(
            {"obs" + std::to_string(i), ColumnType::memo, 0, false, 18, 0, false});
    for (int i = 0; i < 4; ++i)
        spec.columns.push_back(
            {"nome" + std::to_string(i), ColumnType::text, 255, false, 18, 0, false});
    Table& table = file.createTable(spec);
    Row row(54);
    for (std::size_t i = 0; i < 30; ++i)
        row[i] = std::string(stays, static_cast<char>('a' + i % 26));
    const RowId id = table.insert(row);
    // Now they no longer fit beside it, though none of them is given anew.
    std::vector<Assignment> changes;
    for (std::size_t i = 50; i < 54; ++i)
        changes.push_back({i, row[i] = std::string(250, 'n')});
    for (std::size_t i = 30; i < 50; ++i)
        changes.push_back({i, row[i] = std::string(stays, 'z')});
    table.update(id, changes);
    EXPECT_EQ(table.read(id), std::optional(row));
    table.erase(id);
    file.flush();
    EXPECT_TRUE(check(path).clean());
}

TEST_P(DatabaseFile, AnotherLongTextInTheSamePlaceIsAnotherVersionOfTheRow) {
    Database file(path);
    Table& table = file.createTable(shopCheques());
    Row row = cheque(1, "1");
    row[kObsAt] = std::string(1500, 'a');
    const RowId id = table.insert(row);
    const auto version = table.rowVersion(id);
    for (const char letter : {'b', 'c'}) { // the second stands where the first stood
        table.update(id, std::vector<Assignment>{
                             {kObsAt, std::string(1500, letter)}
        });
        EXPECT_NE(table.rowVersion(id), version) << letter;
    }
}

TEST_P(DatabaseFile, SpaceOfErasedRowsIsUsedAgain) {
    Database file(path);
    Table& table = file.createTable(shopCheques());
    const auto fill = [&] {
        DatabaseTransaction open(file);
        for (int i = 0; i < 3000; ++i)
            table.insert(cheque(i, std::to_string(i)));
        open.commit();
    };
    const auto empty = [&] {
        DatabaseTransaction open(file);
        RowCursor row = table.scan();
        while (row.first())
            table.erase(row.id());
        open.commit();
    };
    fill();
    empty();
    fill();
    const std::uint32_t pages = DatabasePager::of(file).pageCount();
    for (int round = 0; round < (JET_ONE_IN == 1 ? 4 : 1); ++round) {
        empty();
        fill();
    }
    EXPECT_EQ(DatabasePager::of(file).pageCount(), pages);
}

TEST_P(DatabaseFile, MapsGrowPastTheirFirstBitmaps) {
    // More pages than a new map covers in either format, in table, index and file.
    Database file(path);
    Table& table = file.createTable({
        "grande",
        {{"codigo", ColumnType::longInteger, 0, true}, {"texto", ColumnType::text, 255}},
        {{"PrimaryKey", {{"codigo"}}, true}                                           }
    });
    constexpr int kRows = 24000;
    {
        DatabaseTransaction open(file);
        const std::string text = std::string(250, 'x');
        for (int i = 0; i < kRows; ++i)
            table.insert(std::vector<Value>{{}, text});
        open.commit();
    }
    EXPECT_GT(DatabasePager::of(file).pageCount(), 1500U);
    EXPECT_EQ(static_cast<int>(column(table, 0).size()), kRows);
    EXPECT_EQ(countEntries(table, 0), kRows);
}

TEST_P(DatabaseFile, WideTablesHaveDefinitionsOfSeveralPages) {
    TableSpec spec{"larga", {}, {{"PrimaryKey", {{"campo numero 0"}}, true}}};
    for (int i = 0; i < 250; ++i)
        spec.columns.push_back({"campo numero " + std::to_string(i),
                                i % 3 ? ColumnType::integer : ColumnType::text,
                                static_cast<std::uint16_t>(i % 3 ? 0 : 8)});
    RowId id{};
    {
        Database file(path);
        Table& table = file.createTable(spec);
        Row row(250);
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = i % 3 ? Value(static_cast<std::int64_t>(i)) : Value(std::to_string(i));
        id = table.insert(row);
    }
    Database file(path);
    Table& table = file.table("larga");
    EXPECT_GT(table.definition().pages.size(), 1U);
    EXPECT_EQ((*table.read(id))[249], Value("249"s));
    EXPECT_EQ((*table.read(id))[248], Value(std::int64_t{248}));
}

TEST_P(DatabaseFile, ARowThatFitsNoPageIsRefused) {
    Database file(path);
    TableSpec spec{"larga", {}, {}};
    for (int i = 0; i < 20; ++i)
        spec.columns.push_back({"c" + std::to_string(i), ColumnType::text, 255});
    Table& table = file.createTable(spec);
    EXPECT_EQ(errorOf([&] { table.insert(Row(20, Value(std::string(255, 'x')))); }), Errc::tooLong);
    EXPECT_EQ(table.rowCount(), 0);
}

TEST_P(DatabaseFile, ALongTextOfARowThatAnotherHasChangedMeanwhileIsAConflict) {
    Database first(path);
    Table& table = first.createTable(shopCheques());
    Row row = cheque(1, "1");
    row[kObsAt] = std::string(9000, 'm');
    const RowId id = table.insert(row);
    first.flush();
    RowReader reader = table.reader();
    const RowView* seen = reader.read(id);
    ASSERT_NE(seen, nullptr);
    Database second(path);
    const Assignment change[] = {
        {kObsAt, std::string(9000, 'n')}
    };
    second.table("cheques").update(id, change);
    second.flush();
    first.onSnapshot([] {}); // notices what the other has written
    EXPECT_EQ(errorOf([&] { static_cast<void>(seen->value(kObsAt)); }), Errc::conflict);
    EXPECT_EQ(reader.read(id)->value(kObsAt), Value(std::string(9000, 'n')));
}

} // namespace
