// An open file: its tables, what their rows keep, and what is refused.
#include "jet/Sentences.h"
#include "jet/database/ChequeFile.h"
#include "jet/database/DatabasePager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

using namespace jet;
using namespace std::string_literals;

namespace {

INSTANTIATE_TEST_SUITE_P(, DatabaseFile, bothVersions(), versionName);

TEST_P(DatabaseFile, NewFileHasTheSystemTablesAndNoOthers) {
    Database file(path);
    EXPECT_EQ(file.version(), GetParam());
    EXPECT_EQ(file.readOnlyReason(), std::nullopt);
    EXPECT_TRUE(file.tableNames().empty());
    EXPECT_THAT(file.allTableNames(), testing::ElementsAre("MSysACEs", "MSysObjects", "MSysQueries",
                                                           "MSysRelationships"));
    EXPECT_EQ(file.table("msysobjects").rowCount(), 8);
    EXPECT_EQ(file.table("MSysACEs").rowCount(), 16);
}

TEST_P(DatabaseFile, CreateRefusesAFileThatIsThere) {
    EXPECT_EQ(errorOf([&] { Database::create(path, GetParam()); }), Errc::exists);
    EXPECT_NO_THROW(Database{path});
}

TEST_P(DatabaseFile, RowsComeBackAfterReopening) {
    RowId id{};
    {
        Database file(path);
        Row row = cheque(7, "Nº 1 ção");
        row[kObsAt] = "observação de algumas palavras"s;
        id = file.createTable(shopCheques()).insert(row);
    }
    Database file(path);
    Table& table = file.table("CHEQUES");
    EXPECT_EQ(table.name(), "Cheques");
    const auto row = table.read(id);
    ASSERT_TRUE(row);
    EXPECT_EQ((*row)[kLancamentoAt], Value(std::int64_t{1}));
    EXPECT_EQ((*row)[kNumeroAt], Value("Nº 1 ção"s));
    EXPECT_EQ((*row)[kDataAt], Value(Date::of({2026, 3, 31})));
    EXPECT_EQ((*row)[kValorAt], Value(Currency{12345600}));
    EXPECT_TRUE(isNull((*row)[5]));
    EXPECT_EQ((*row)[kObsAt], Value("observação de algumas palavras"s));
    EXPECT_EQ((*row)[kDescontarAt], Value(true));
}

TEST_P(DatabaseFile, ColumnsAreFoundWithoutCaseAndTrailingBlanks) {
    Database file(path);
    const Table& table = file.createTable(shopCheques());
    EXPECT_EQ(table.findColumn("BOMPARA"), kDataAt);
    EXPECT_EQ(table.findColumn("bompara   "), kDataAt);
    EXPECT_EQ(table.findColumn("RENUNERAÇÃO"), 5U);
    EXPECT_EQ(table.findColumn("valores"), std::nullopt);
}

TEST_P(DatabaseFile, UnknownTableIsSaidByName) {
    Database file(path);
    try {
        (void)file.table("fornecedores");
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::notFound);
        EXPECT_THAT(error.what(), testing::HasSubstr("fornecedores"));
    }
}

TEST_P(DatabaseFile, NumbersGoOnAfterTheLargestEvenIfItWasErased) {
    Database file(path);
    Table& table = file.createTable(shopCheques());
    table.insert(cheque(1, "1"));
    const RowId second = table.insert(cheque(1, "2"));
    table.erase(second);
    Row own = cheque(1, "9");
    own[kLancamentoAt] = std::int64_t{40};
    table.insert(own);
    table.insert(cheque(1, "10"));
    EXPECT_THAT(column(table, kLancamentoAt), testing::ElementsAre(1, 40, 41));
}

TEST_P(DatabaseFile, NumbersGoOnAfterOneThatARowWasGivenLater) {
    Database file(path);
    Table& table = file.createTable(shopCheques());
    const Assignment other[] = {
        {kLancamentoAt, std::int64_t{40}}
    };
    table.update(table.insert(cheque(1, "1")), other);
    table.insert(cheque(1, "2"));
    EXPECT_THAT(column(table, kLancamentoAt), testing::ElementsAre(40, 41));
}

TEST_P(DatabaseFile, RefusedRowsLeaveEverythingAsItWas) {
    Database file(path);
    Table& table = file.createTable(shopCheques());
    table.insert(cheque(1, "1"));
    file.flush();
    const std::uint32_t pages = DatabasePager::of(file).pageCount();

    Row twice = cheque(1, "2");
    twice[kLancamentoAt] = std::int64_t{1};
    twice[kObsAt] = std::string(30000, 'x');
    EXPECT_EQ(errorOf([&] { table.insert(twice); }), Errc::duplicate);
    EXPECT_EQ(errorOf([&] { table.insert(cheque(1, std::string(21, '1'))); }), Errc::tooLong);
    EXPECT_EQ(errorOf([&] { table.insert(cheque(3'000'000'000, "1")); }), Errc::outOfRange);
    Row wrongType = cheque(1, "1");
    wrongType[kValorAt] = "12,50"s;
    EXPECT_EQ(errorOf([&] { table.insert(wrongType); }), Errc::outOfRange);
    Row wrongDate = cheque(1, "1");
    wrongDate[kDataAt] = Date{4e6};
    EXPECT_EQ(errorOf([&] { table.insert(wrongDate); }), Errc::outOfRange);
    const Assignment noKey[] = {
        {kLancamentoAt, {}}
    };
    EXPECT_EQ(errorOf([&] { table.update(RowId{}, noKey); }), Errc::conflict);
    RowCursor first = table.scan();
    ASSERT_TRUE(first.first());
    EXPECT_EQ(errorOf([&] { table.update(first.id(), noKey); }), Errc::nullValue);

    file.flush();
    EXPECT_EQ(table.rowCount(), 1);
    EXPECT_EQ(DatabasePager::of(file).pageCount(), pages);
    EXPECT_EQ(countEntries(table, 1), 1);
    table.insert(cheque(1, "2"));
    EXPECT_THAT(column(table, kLancamentoAt), testing::ElementsAre(1, 2));
}

TEST_P(DatabaseFile, CurrencyAndWholeNumbersAreKeptToTheirLimits) {
    Database file(path);
    Table& table = file.createTable(shopCheques());
    for (const std::int64_t amount :
         {std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()}) {
        Row row = cheque(std::numeric_limits<std::int32_t>::min(), "1");
        row[kValorAt] = Currency{amount};
        const auto back = table.read(table.insert(row));
        EXPECT_EQ((*back)[kValorAt], Value(Currency{amount}));
        EXPECT_EQ((*back)[kClienteAt],
                  Value(std::int64_t{std::numeric_limits<std::int32_t>::min()}));
    }
    Row whole = cheque(1, "1");
    whole[kValorAt] = std::int64_t{922337203685478};
    EXPECT_EQ(errorOf([&] { table.insert(whole); }), Errc::outOfRange);
}

TEST_P(DatabaseFile, TransactionsAreAllOrNothing) {
    Database file(path);
    Table& table = file.createTable(shopCheques());
    table.insert(cheque(1, "1"));
    {
        DatabaseTransaction open(file);
        for (int i = 0; i < 500; ++i)
            table.insert(cheque(i, std::to_string(i)));
        EXPECT_EQ(table.rowCount(), 501);
    }
    EXPECT_EQ(table.rowCount(), 1);
    EXPECT_EQ(countEntries(table, 2), 1);
    {
        DatabaseTransaction open(file);
        table.insert(cheque(5, "5"));
        EXPECT_EQ(errorOf([&] { table.insert(cheque(1, std::string(99, '1'))); }), Errc::tooLong);
        open.commit();
    }
    EXPECT_THAT(column(table, kClienteAt), testing::ElementsAre(1, 5));
    EXPECT_EQ(errorOf([&] { file.commit(); }), Errc::misuse);
    EXPECT_EQ(errorOf([&] { file.rollback(); }), Errc::misuse);
    file.begin();
    EXPECT_EQ(errorOf([&] { file.begin(); }), Errc::misuse);
}

TEST_P(DatabaseFile, ATableMadeInATransactionThatIsTakenBackIsGone) {
    Database file(path);
    {
        DatabaseTransaction open(file);
        file.createTable(shopCheques()).insert(cheque(1, "1"));
        EXPECT_TRUE(file.hasTable("cheques"));
    }
    EXPECT_FALSE(file.hasTable("cheques"));
    file.createTable(shopCheques()).insert(cheque(1, "1"));
    EXPECT_EQ(errorOf([&] { file.createTable(shopCheques()); }), Errc::exists);
}

TEST_P(DatabaseFile, AnErasedRowIsAConflictForWhoStillHasItsId) {
    Database file(path);
    Table& table = file.createTable(shopCheques());
    table.insert(cheque(1, "1"));
    const RowId id = table.insert(cheque(1, "1"));
    const auto version = table.rowVersion(id);
    const Assignment change[] = {
        {kClienteAt, std::int64_t{2}}
    };
    table.update(id, change);
    EXPECT_NE(table.rowVersion(id), version);
    table.erase(id);
    EXPECT_EQ(table.rowVersion(id), std::nullopt);
    EXPECT_EQ(table.read(id), std::nullopt);
    EXPECT_EQ(errorOf([&] { table.update(id, change); }), Errc::conflict);
    EXPECT_EQ(errorOf([&] { table.erase(id); }), Errc::conflict);
}

TEST_P(DatabaseFile, KeyRangesFindTheRowsBetween) {
    Database file(path);
    Table& table = file.createTable(shopCheques());
    for (int i = 0; i < 300; ++i)
        table.insert(cheque(i % 50, std::to_string(1000 + i)));
    const auto found = [&](std::size_t index, const KeyRange& range, std::size_t shown) {
        std::vector<Value> values;
        for (const RowId row : rowsBetween(table, index, range))
            values.push_back((*table.read(row))[shown]);
        return values;
    };
    const Value client = std::int64_t{7};
    EXPECT_EQ(found(1, table.keysEqual(1, {&client, 1}), kClienteAt).size(), 6U);
    EXPECT_EQ(found(1, table.keysBetween(1, {}, Value(std::int64_t{48}), std::nullopt), kClienteAt)
                  .size(),
              12U);
    // The index on numero descends.
    EXPECT_THAT(found(2, table.keysBetween(2, {}, Value("1001"s), Value("1003"s)), kNumeroAt),
                testing::ElementsAre(Value("1003"s), Value("1002"s), Value("1001"s)));
}

TEST_P(DatabaseFile, RowsAreFoundByWhateverTheirColumnsAre) {
    Database file(path);
    // clang-format off
    Table& table = file.createTable({
        "tudo",
        {{"sim", ColumnType::boolean},
         {"numero", ColumnType::longInteger},
         {"obs", ColumnType::memo},
         {"guid", ColumnType::guid}},
        {{"sim", {{"sim"}}}, {"numero", {{"numero"}}}, {"obs", {{"obs"}}}, {"guid", {{"guid"}}},
         {"numero abaixo", {{"numero", false}}}, {"sim abaixo", {{"sim", false}}},
         {"dois", {{"sim"}, {"numero"}}}}
    });
    // clang-format on
    Guid guid;
    guid.bytes.fill(std::byte{0xFF});
    const std::string text(3000, 'x');
    const std::int64_t largest = 2147483647;
    table.insert(Row{true, largest, text, guid});
    table.insert(Row{false, Value{}, Value{}, Value{}});
    const auto found = [&](std::size_t index, const KeyRange& range) {
        return rowsBetween(table, index, range).size();
    };
    const struct {
        std::size_t index;
        std::vector<Value> key;
    } cases[] = {
        {0, {true}          },
        {0, {false}         },
        {1, {largest}       },
        {1, {Value{}}       },
        {2, {text}          },
        {2, {Value{}}       },
        {3, {guid}          },
        {3, {Value{}}       },
        {4, {largest}       },
        {4, {Value{}}       },
        {5, {true}          },
        {5, {false}         },
        {6, {true, largest} },
        {6, {false, Value{}}},
        {6, {true}          },
    };
    for (const auto& [index, key] : cases)
        EXPECT_EQ(found(index, table.keysEqual(index, key)), 1U) << index;
    const Value yes = true;
    EXPECT_EQ(found(6, table.keysBetween(6, {&yes, 1}, Value(std::int64_t{5}), std::nullopt)), 1U);
    EXPECT_EQ(found(6, table.keysBetween(6, {&yes, 1}, std::nullopt, Value(std::int64_t{5}))), 0U);
    EXPECT_EQ(found(1, table.keysBetween(1, {}, std::nullopt, Value(largest))), 2U);
    EXPECT_EQ(table.partBetween(1, {Bytes(1, std::byte{0xFF}), Bytes(1, std::byte{0})}), 0);
}

TEST_P(DatabaseFile, AnIndexMayRequireItsColumns) {
    Database file(path);
    TableSpec spec{"notas", {{"n", ColumnType::longInteger}}, {{"n", {{"n"}}}}};
    spec.indexes.front().required = true;
    Table& table = file.createTable(spec);
    const RowId id = table.insert(Row{std::int64_t{1}});
    EXPECT_EQ(errorOf([&] { table.insert(Row(1)); }), Errc::nullValue);
    EXPECT_EQ(errorOf([&] {
                  table.update(id, std::vector<Assignment>{
                                       {0, Value{}}
                  });
              }),
              Errc::nullValue);
    EXPECT_EQ(table.rowCount(), 1);
}

TEST_P(DatabaseFile, AKeyMayHaveAYesOrNoInIt) {
    Database file(path);
    Table& table = file.createTable({
        "chaves",
        {{"n", ColumnType::longInteger}, {"sim", ColumnType::boolean}},
        {{"PrimaryKey", {{"n"}, {"sim"}}, true}                             }
    });
    table.insert(Row{std::int64_t{1}, false});
    table.insert(Row{std::int64_t{1}, true});
    EXPECT_EQ(errorOf([&] { table.insert(Row{std::int64_t{1}, false}); }), Errc::duplicate);
    EXPECT_EQ(errorOf([&] { table.insert(Row{Value{}, false}); }), Errc::nullValue);
}

TEST_P(DatabaseFile, TextKeysIgnoreCaseInAUniqueIndex) {
    Database file(path);
    Table& table = file.createTable(
        {"nomes", {{"nome", ColumnType::text, 40}}, {{"nome", {{"nome"}}, false, true}}});
    const auto insert = [&](const char* name) {
        table.insert(std::vector<Value>{std::string(name)});
    };
    insert("José");
    insert("Jose");
    EXPECT_EQ(errorOf([&] { insert("JOSÉ"); }), Errc::duplicate);
    EXPECT_EQ(errorOf([&] { insert("jose  "); }), Errc::duplicate);
    table.insert(std::vector<Value>{Value{}});
    table.insert(std::vector<Value>{Value{}}); // nulls may repeat
    EXPECT_EQ(table.rowCount(), 4);
}

TEST_P(DatabaseFile, TwoOpeningsReadAndWriteInTurn) {
    Database first(path);
    Table& table = first.createTable(shopCheques());
    table.insert(cheque(1, "1"));
    first.flush();
    {
        Database second(path);
        EXPECT_EQ(second.readOnlyReason(), std::nullopt);
        EXPECT_EQ(second.table("cheques").rowCount(), 1);
        second.table("cheques").insert(cheque(1, "2"));
        second.flush();
        EXPECT_EQ(table.rowCount(), 2);
    }
    table.insert(cheque(1, "3"));
    EXPECT_THAT(column(table, kLancamentoAt), testing::ElementsAre(1, 2, 3));
    EXPECT_TRUE(std::filesystem::exists(folder / "loja.ldb"));
}

TEST_P(DatabaseFile, TheLockFileGoesWithTheLastOpening) {
    { Database file(path); }
    EXPECT_FALSE(std::filesystem::exists(folder / "loja.ldb"));
    EXPECT_FALSE(std::filesystem::exists(folder / "loja.mdb-journal"));
    EXPECT_EQ(Database(path).readOnlyReason(), std::nullopt);
}

TEST_P(DatabaseFile, OpeningForReadingChangesNothing) {
    { Database(path).createTable(shopCheques()).insert(cheque(1, "1")); }
    const auto bytes = [&] {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    const std::string before = bytes();
    {
        Database file(path, {.readOnly = true, .codePage = {}, .password = {}});
        EXPECT_EQ(column(file.table("cheques"), kClienteAt).size(), 1U);
        EXPECT_TRUE(file.readOnlyReason());
    }
    { Database file(path); }
    EXPECT_EQ(bytes(), before);
}

TEST_P(DatabaseFile, TablesWhoseIndexesDisagreeWithTheRowsAreNotChanged) {
    RowId id{};
    {
        Database file(path);
        Table& table = file.createTable(shopCheques());
        for (int i = 0; i < 20; ++i)
            id = table.insert(cheque(1234567, "1"));
    }
    {
        // Another program's slip: a client code changed in the row but not in its index.
        std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
        std::string page(GetParam() == Version::jet3 ? 2048 : 4096, 0);
        file.seekg(static_cast<std::streamoff>(number(id.page) * page.size()));
        file.read(page.data(), static_cast<std::streamsize>(page.size()));
        const std::size_t at = page.find("\x87\xD6\x12"s);
        ASSERT_NE(at, std::string::npos);
        page[at] = 0x11;
        file.seekp(static_cast<std::streamoff>(number(id.page) * page.size()));
        file.write(page.data(), static_cast<std::streamsize>(page.size()));
    }
    Database file(path);
    Table& table = file.table("cheques");
    EXPECT_EQ(column(table, kClienteAt).size(), 20U);
    try {
        table.insert(cheque(1, "1"));
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::readOnly);
        EXPECT_THAT(error.what(), testing::HasSubstr("\"cliente\" não confere"));
    }
}

TEST_P(DatabaseFile, AMissingFileIsNotFound) {
    EXPECT_EQ(errorOf([&] { Database file(folder / "outra.mdb"); }), Errc::notFound);
    EXPECT_FALSE(std::filesystem::exists(folder / "outra.ldb"));
}

TEST(DatabaseFormats, WhatIsNoDatabaseOfTheseFormatsIsSaidCaseByCase) {
    TemporaryFolder folder;
    const auto path = folder / "x.mdb";
    const auto sentence = [&](const std::string& content) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
        try {
            Database file(path);
        } catch (const Error& error) {
            return std::string(error.what());
        }
        return "opened"s;
    };
    const auto header = [](const std::string& name, char version) {
        return "\0\1\0\0"s + name + "\0"s + version + std::string(8192, '\0');
    };
    EXPECT_THAT(sentence(""), testing::HasSubstr("não é um banco de dados"));
    EXPECT_THAT(sentence(std::string(10000, 'x')), testing::HasSubstr("não é um banco de dados"));
    EXPECT_THAT(sentence(header("Standard ACE DB", 2)), testing::HasSubstr("accdb"));
    EXPECT_THAT(sentence(header("MSISAM Database", 1)), testing::HasSubstr("finanças"));
    EXPECT_THAT(sentence(header("Standard Jet DB", 3)), testing::HasSubstr("versão mais nova"));
    EXPECT_THAT(sentence(header("Standard Jet DB", 1)), testing::HasSubstr("codificado"));

    std::filesystem::remove(path);
    Database::create(path, Version::jet4);
    std::filesystem::resize_file(path, 4096 * 9 + 100);
    EXPECT_EQ(errorOf([&] { Database file(path); }), Errc::corrupt);
}

} // namespace
