// A file that another program has made otherwise than this one does, or damaged: what can be
// changed in it is, and what can't is only read.
#include "jet/DamagedFile.h"
#include "jet/Salvage.h"
#include "jet/Sentences.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace jet;

namespace {

class PatchedFile : public testing::TestWithParam<Version> {
protected:
    /// Why nothing is changed in "Cheques"; a row of it is refused for that.
    std::string reasonAfter(const std::function<void()>& patch) {
        file.restore();
        patch();
        file.save();
        Database database(file.path());
        Table& table = database.table("Cheques");
        std::string reason = table.readOnlyReason().value_or("");
        try {
            table.insert(Row(5));
            ADD_FAILURE() << "not refused";
        } catch (const Error& error) {
            EXPECT_EQ(error.what(), reason);
        }
        return reason;
    }
    /// Where in the definition of "Cheques" the flags of a column are.
    [[nodiscard]] std::size_t columnFlags(std::size_t column) const {
        return file.columnBlock(column) + file.format().column.flags.at;
    }

    DamagedFile file{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(, PatchedFile, bothVersions(), versionName);

TEST_P(PatchedFile, WithADamagedIndexIsOnlyRead) {
    EXPECT_THAT(reasonAfter([&] {
                    std::ranges::fill(file.page(file.cheques.realIndexes[1].root), std::byte{});
                }),
                testing::HasSubstr("pode ser consultada mas não alterada. "));
    EXPECT_THAT(reasonAfter([&] { // an entry of a row that has none any more
                    const RowId id = file.rows.back();
                    file.put<std::uint16_t>(
                        id.page, file.slotAt(id.slot),
                        static_cast<std::uint16_t>(
                            file.get<std::uint16_t>(id.page, file.slotAt(id.slot)) | 0xC000U));
                }),
                testing::HasSubstr("não confere com a linha"));
}

TEST_P(PatchedFile, WhoseRelationshipsHaveAnotherFormIsOnlyRead) {
    EXPECT_THAT(reasonAfter([&] {
                    const Bytes name = TextCodec(GetParam()).encode("grbit", false, false);
                    const auto page = file.page(PageNo{5});
                    const auto found =
                        std::search(page.begin(), page.end(), name.begin(), name.end());
                    ASSERT_NE(found, page.end());
                    *found = std::byte{'x'};
                }),
                testing::HasSubstr("não tem a coluna grbit"));
}

TEST_P(PatchedFile, WhoseColumnHasNoPlaceForItsLongValuesTakesNone) {
    const std::size_t length =
        file.get<std::uint32_t>(file.cheques.page(), file.format().definition.length.at);
    file.put<std::uint16_t>(file.cheques.page(), length - 2 - LongValueMapsLayout::size, 1);
    file.save();
    Database database(file.path());
    Table& table = database.table("Cheques");
    const std::int64_t rows = table.rowCount();
    Row row(5);
    row[4] = std::string(3000, 'x');
    EXPECT_EQ(errorOf([&] { table.insert(row); }), Errc::corrupt);
    EXPECT_EQ(table.rowCount(), rows);
    table.insert(Row(5));
    EXPECT_EQ(table.rowCount(), rows + 1);
}

TEST_P(PatchedFile, WhoseKeyIsNotSaidToBeUniqueKeepsItUniqueAllTheSame) {
    const std::size_t flags = file.realIndexBlock(0) + file.format().realIndex.flags.at;
    const auto had = file.get<std::uint8_t>(file.cheques.page(), flags);
    file.put<std::uint8_t>(file.cheques.page(), flags,
                           static_cast<std::uint8_t>(had & ~IndexFlags::unique));
    file.save();
    Database database(file.path());
    Row row(5);
    row[0] = std::int64_t{1};
    EXPECT_EQ(errorOf([&] { database.table("Cheques").insert(row); }), Errc::duplicate);
}

TEST_P(PatchedFile, WhoseValuesAreOfAnotherSizeThanTheirTypeIsDamaged) {
    std::vector<ColumnSpec> columns{
        {"valor", ColumnType::guid}
    };
    if (GetParam() == Version::jet4)
        columns.push_back({"valor", ColumnType::numeric});
    for (const ColumnSpec& column : columns) {
        file.restore();
        PageNo page{};
        RowId row;
        file.withDatabase([&](Database& database) {
            Table& table = database.createTable({"Valores", {column}, {}});
            page = table.definition().page();
            row = table.insert(
                Row{column.type == ColumnType::guid ? Value(Guid{}) : Value(Numeric{})});
        });
        file.put<std::uint16_t>(page,
                                file.format().statisticsAt(0) + file.format().column.length.at, 3);
        file.save();
        Database database(file.path());
        EXPECT_EQ(errorOf([&] { (void)database.table("Valores").read(row); }), Errc::corrupt);
    }
}

TEST_P(PatchedFile, WhosePagesAreNotWhereItsMapsSayTakesNoMore) {
    file.setBit(file.cheques.freeMap, file.otherPage, true);
    file.setBit(file.cheques.longValues.front().owned, file.chainParts.front().page, false);
    file.save();
    Database database(file.path());
    Table& table = database.table("Cheques");
    const std::int64_t rows = table.rowCount();
    EXPECT_EQ(errorOf([&] { table.insert(Row(5)); }), Errc::corrupt);
    EXPECT_EQ(errorOf([&] { table.erase(file.chain); }), Errc::corrupt);
    EXPECT_EQ(table.rowCount(), rows);
}

TEST_P(PatchedFile, ThatCountsTooFewRowsNeverCountsLessThanNone) {
    file.put<std::uint32_t>(file.cheques.page(), file.format().definition.rows.at, 0);
    file.save();
    Database database(file.path());
    Table& table = database.table("Cheques");
    table.erase(file.rows.back());
    EXPECT_EQ(table.rowCount(), 0);
}

TEST_P(PatchedFile, NumbersItsRowsByChanceWhereTheColumnSaysSo) {
    PageNo page{};
    file.withDatabase([&](Database& database) {
        page =
            database.createTable({"Chaves", {{"guid", ColumnType::guid}}, {}}).definition().page();
    });
    const std::size_t flags = file.format().statisticsAt(0) + file.format().column.flags.at;
    file.put<std::uint8_t>(
        page, flags,
        static_cast<std::uint8_t>(file.get<std::uint8_t>(page, flags) | ColumnFlags::autoGuid));
    file.save();
    Database database(file.path());
    Table& table = database.table("Chaves");
    const Guid own{{std::byte{7}}};
    const Value first = table.read(table.insert(Row(1))).value()[0];
    const Value second = table.read(table.insert(Row(1))).value()[0];
    EXPECT_TRUE(std::holds_alternative<Guid>(first) && std::holds_alternative<Guid>(second));
    EXPECT_NE(first, second);
    EXPECT_EQ(table.read(table.insert(Row{own})).value()[0], Value(own));
}

TEST_P(PatchedFile, LongerThanItsFormatAllowsIsRefused) {
    std::filesystem::resize_file(file.path(), file.format().largestFile + file.format().pageSize);
    const std::string words = "maior do que o seu formato permite";
    EXPECT_THAT(sentenceOf([&] { Database database(file.path()); }, Errc::corrupt),
                testing::HasSubstr(words));
    EXPECT_THAT(sentenceOf([&] { (void)salvage(file.path(), file.path().string() + ".novo"); },
                           Errc::unsupported),
                testing::HasSubstr(words));
    EXPECT_THAT(listed(check(file.path())), testing::HasSubstr(words));
}

} // namespace
