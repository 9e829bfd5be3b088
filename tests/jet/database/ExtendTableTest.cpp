// Columns and indexes that a table gets when it has rows already.
#include "jet/ExtendTable.h"

#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/IndependentReader.h"
#include "jet/SampleFiles.h"
#include "support/FileRules.h"
#include "support/MdbTools.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace jet;
using testing::ElementsAre;
using testing::IsEmpty;
using enum jet::ColumnType;

namespace {

constexpr std::size_t kRowsBefore = 400;

class Extending : public testing::TestWithParam<Version> {
protected:
    /// Clients and their cheques, the remarks of some longer than a page.
    void SetUp() override {
        Database::create(file(), GetParam());
        Database database(file());
        // clang-format off
        database.createTable({
            "clientes", {{"codigo", longInteger, 0, true}, {"nome", text, 40}},
             {{"PrimaryKey", {{"codigo"}}, true}}
        });
        database.createTable({
            "cheques",
            {{"lancamento", longInteger, 0, true},
             {"cliente", longInteger},
             {"numero", text, 20},
             {"pago", boolean},
             {"obs", memo}},
            {{"PrimaryKey", {{"lancamento"}}, true}, {"cliente", {{"cliente"}}}}
        });
        // clang-format on
        for (const char* name : {"Ana", "Bia"})
            database.table("clientes").insert(Row{Value(), std::string(name)});
        Table& cheques = database.table("cheques");
        for (std::size_t i = 0; i < kRowsBefore; ++i)
            cheques.insert(Row{Value(), std::int64_t(1 + i % 2), std::to_string(i), i % 3 == 0,
                               std::string(i % 50 == 0 ? 9000 : i % 40, 'x')});
    }

    [[nodiscard]] std::filesystem::path file() const { return folder_ / "automacao.mdb"; }
    static std::vector<Row> rowsOf(Table& table) {
        std::vector<Row> rows;
        RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next())
            rows.push_back(row.row().values());
        return rows;
    }
    void expectSound() const {
        for (const Finding& finding : check(file()).findings)
            ADD_FAILURE() << finding.sentence;
        if (hasMdbTools())
            expectSameAsIndependentReader(file());
    }

private:
    TemporaryFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(, Extending, bothVersions(), versionName);

TEST_P(Extending, RowsThatAreThereStayAndTakeTheNewColumns) {
    // clang-format off
    const TableSpec more{"",
                         {{"sim", boolean},
                          {"b", byte},
                          {"i", ColumnType::integer},
                          {"n", longInteger},
                          {"valor", currency},
                          {"r", real},
                          {"quando", date},
                          {"bytes", binary, 8},
                          {"texto", text, 30},
                          {"longo", memo},
                          {"id", guid}},
                         {}};
    const Row filled{true,
                     std::int64_t{255},
                     std::int64_t{-3},
                     std::int64_t{70'000},
                     Currency{-12'345},
                     0.5,
                     Date::of({2004, 6, 1}),
                     Bytes{std::byte{7}, std::byte{0}},
                     std::string("novo"),
                     std::string(9000, 'y'),
                     Guid::random()};
    // clang-format on
    std::vector<Row> before;
    {
        Database database(file());
        before = rowsOf(database.table("cheques"));
        extendTable(database, "Cheques", more);
        Table& table = database.table("cheques");
        for (Row& row : before) {
            row.push_back(false);
            row.resize(row.size() + more.columns.size() - 1);
        }
        EXPECT_EQ(rowsOf(table), before);
        EXPECT_EQ(table.rowCount(), std::int64_t{kRowsBefore});
    }
    expectSound();
    {
        Database database(file());
        Table& table = database.table("cheques");
        RowCursor row = table.scan();
        std::vector<RowId> all;
        for (bool there = row.first(); there; there = row.next())
            all.push_back(row.id());
        for (std::size_t i = 0; i < all.size(); i += 3) {
            std::vector<Assignment> changes;
            for (std::size_t k = 0; k < filled.size(); ++k) {
                changes.push_back({5 + k, filled[k]});
                before[i][5 + k] = filled[k];
            }
            table.update(all[i], changes);
        }
        Row added{Value(), std::int64_t{2}, std::string("novo"), true, Value()};
        added.insert(added.end(), filled.begin(), filled.end());
        table.insert(added);
        added[0] = std::int64_t{kRowsBefore + 1}; // counted on
        before.push_back(added);
        EXPECT_THAT(rowsOf(table), testing::UnorderedElementsAreArray(before));
    }
    expectSound();
}

TEST_P(Extending, ANewIndexHoldsTheRowsThatAreThere) {
    Database database(file());
    // clang-format off
    extendTable(database, "cheques",
                {
                    "", {{"agencia", text, 10}},
                     {{"a_numero", {{"numero"}}, false, true},
                     {"obs", {{"cliente"}, {"numero", false}}},
                     {"ZZ", {{"agencia"}}, false, false, true}}
    });
    // clang-format on
    Table& table = database.table("cheques");
    std::vector<std::string> names;
    for (const LogicalIndex& index : table.definition().logicalIndexes)
        names.push_back(index.name);
    EXPECT_THAT(names, ElementsAre("a_numero", "cliente", "obs", "PrimaryKey", "ZZ"));
    std::size_t numero = 0;
    for (std::size_t i = 0; i < table.indexes().size(); ++i)
        if (table.indexes()[i].name == "a_numero")
            numero = i;
    const std::vector<Value> key{std::string("123")};
    IndexTree::Cursor found = table.walk(numero);
    ASSERT_TRUE(found.seek(table.keysEqual(numero, key).lower));
    EXPECT_EQ(std::get<std::string>((*table.read(found.row()))[2]), "123");
    EXPECT_THROW(
        table.insert(Row{Value(), std::int64_t{1}, std::string("123"), true, Value(), Value()}),
        Error);
    database.flush();
    expectSound();
}

TEST_P(Extending, WhatTheRowsDontAllowChangesNothing) {
    const std::vector<std::byte> before = [&] {
        File bytes(file(), File::Mode::read);
        Bytes all(bytes.size());
        bytes.read(0, all);
        return all;
    }();
    // clang-format off
    const struct {
        TableSpec more;
        Errc code;
    } unfit[] = {
        {{"", {{"novo", text, 10}}, {{"u", {{"cliente"}}, false, true}}},                      Errc::duplicate},
        {{"", {{"novo", longInteger}}, {{"u", {{"novo"}}, false, false, false, true}}},
         Errc::nullValue                                                                                      },
        {{"", {{"OBS", text, 10}}, {}},                                                        Errc::exists   },
        {{"", {}, {{"CLIENTE", {{"numero"}}}}},                                                Errc::exists   },
        {{"", {}, {{"u", {{"nenhum"}}}}},                                                      Errc::notFound },
        {{"", std::vector<ColumnSpec>(251, ColumnSpec{.name = "x", .type = boolean}), {}},
         Errc::misuse                                                                                         },
    };
    // clang-format on
    Database database(file());
    for (const auto& [more, code] : unfit) {
        try {
            extendTable(database, "cheques", more);
            ADD_FAILURE();
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), code) << error.what();
        }
        EXPECT_FALSE(database.inTransaction());
        EXPECT_EQ(database.table("cheques").columns().size(), 5U);
        EXPECT_EQ(database.table("cheques").indexes().size(), 2U);
    }
    EXPECT_THROW(extendTable(database, "MSysObjects", {"", {{"x", text, 1}}, {}}), Error);
    EXPECT_THROW(extendTable(database, "nenhuma", {"", {{"x", text, 1}}, {}}), Error);
    File now(file(), File::Mode::read);
    Bytes bytes(now.size());
    now.read(0, bytes);
    // Those at work in a file leave their marks on its first page.
    const std::size_t page = formatOf(GetParam()).pageSize;
    EXPECT_TRUE(
        std::ranges::equal(std::span(bytes).subspan(page), std::span(before).subspan(page)));
}

TEST_P(Extending, ADefinitionGrowsOverFurtherPages) {
    Database database(file());
    for (int round = 0; round < 3; ++round) {
        TableSpec more;
        for (int i = 0; i < 60; ++i)
            more.columns.push_back(
                {.name = "campo de nome comprido e de numero " + std::to_string(100 * round + i),
                 .type = i % 2 == 0 ? text : boolean,
                 .width = static_cast<std::uint16_t>(i % 2 == 0 ? 5 : 0)});
        more.columns.back().type = memo;
        more.indexes.push_back(
            {.name = "i" + std::to_string(round), .columns = {{more.columns.front().name}}});
        extendTable(database, "cheques", more);
    }
    Table& table = database.table("cheques");
    EXPECT_EQ(table.columns().size(), 5U + 180U);
    EXPECT_GT(table.definition().pages.size(), 3U);
    Row row(table.columns().size());
    row[184] = std::string(5000, 'z');
    row[5] = std::string("abc");
    table.insert(row);
    database.flush();
    expectSound();
}

TEST_P(Extending, RulesAndRelationshipsGoOn) {
    {
        Database database(file());
        addRelationship(database, {"liga", "cheques", {"cliente"}, "clientes", {"codigo"}});
        setRules(database, "cheques",
                 {
                     {.column = "numero", .rule = "<>\"13\""}
        });
    }
    Database database(file());
    for (const char* name : {"cheques", "clientes"})
        extendTable(database, name, {"", {{"novo", text, 10}}, {{"novo", {{"novo"}}}}});
    Table& cheques = database.table("cheques");
    const auto refusalOf = [&](Row row) {
        try {
            cheques.insert(row);
        } catch (const Error& error) {
            return error.code();
        }
        return Errc::io;
    };
    EXPECT_EQ(refusalOf({Value(), std::int64_t{3}, std::string("1"), true, Value(), Value()}),
              Errc::related);
    EXPECT_EQ(refusalOf({Value(), std::int64_t{1}, std::string("13"), true, Value(), Value()}),
              Errc::rule);
    Table& clients = database.table("clientes");
    EXPECT_THROW(clients.erase(clients.scan().first() ? clients.walk(0).row() : RowId{}), Error);
    database.flush();
    expectSound();
}

TEST_P(Extending, WhoHasTheTableOpenIsTold) {
    Database other(file());
    Table& theirs = other.table("cheques");
    Database database(file());
    Table& ours = database.table("cheques");
    extendTable(database, "cheques", {"", {{"novo", text, 10}}, {}});
    for (Table* table : {&ours, &theirs})
        try {
            (void)table->insert(Row(5));
            ADD_FAILURE();
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::conflict) << error.what();
        }
    for (Database* each : {&database, &other}) {
        EXPECT_EQ(each->table("cheques").columns().size(), 6U);
        each->table("cheques").insert(Row(6));
        each->flush();
    }
    EXPECT_EQ(database.table("cheques").rowCount(), std::int64_t{kRowsBefore + 2});
}

// Files of other programs: deleted columns, text in fixed columns, definitions over several pages.
TEST(ExtendingRealFiles, EveryTableThatCanBeChangedTakesAColumn) {
    const TemporaryFolder folder;
    const auto files = sampleFiles(folder);
    if (files.empty())
        GTEST_SKIP() << "no real files here";
    std::size_t extended = 0;
    for (const auto& file : files) {
        SCOPED_TRACE(file.filename().string());
        Database::Options options = optionsFor(file);
        options.readOnly = false;
        const std::size_t known = check(file).findings.size();
        {
            Database database(file, options);
            for (const std::string& name : database.tableNames()) {
                if (database.table(name).readOnlyReason())
                    continue;
                // clang-format off
                extendTable(database, name,
                            {"",
                             {{"valtrino a", longInteger},
                              {"valtrino b", text, 20},
                              {"valtrino c", boolean},
                              {"valtrino d", memo}},
                             {{"valtrino", {{"valtrino a"}}}}});
                // clang-format on
                Table& table = database.table(name);
                const auto added = table.findColumn("valtrino b");
                ASSERT_TRUE(added);
                std::vector<RowId> rows;
                RowCursor row = table.scan();
                for (bool there = row.first(); there && rows.size() < 5; there = row.next()) {
                    EXPECT_TRUE(row.row().isNull(*added));
                    rows.push_back(row.id());
                }
                for (const RowId id : rows)
                    table.update(id, std::vector<Assignment>{
                                         {*added, std::string("visto")}
                    });
                ++extended;
            }
        }
        EXPECT_LE(check(file).findings.size(), known);
        if (hasMdbTools())
            expectSameAsIndependentReader(
                file, optionsFor(file),
                options.codePage ? "MDB_JET3_CHARSET=CP" + std::to_string(*options.codePage) : "");
    }
    EXPECT_GT(extended, 20U);
}

} // namespace
