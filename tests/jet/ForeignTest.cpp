// A program that keeps to none of our rules, or takes away what we have open: nothing of ours is
// written over its work, and what was taken away is an error, not a wrong row.
#include "jet/Check.h"
#include "jet/MemoryDisk.h"
#include "jet/Sentences.h"
#include "jet/ShopWork.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace jet;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A shop's file with two tables, and another program at work in it.
class Foreign : public testing::TestWithParam<Version> {
protected:
    static constexpr int kRows = 200;

    static TableSpec numbers(const std::string& name) {
        return {
            name,
            {{"codigo", ColumnType::longInteger, 0, true}, {"valor", ColumnType::longInteger}},
            {{"PrimaryKey", {{"codigo"}}, true},           {"valor", {{"valor"}}}            }
        };
    }

    static Row rowOf(std::int64_t value) { return {Value{}, Value{value}}; }

    Foreign() {
        Database::create(kPath, GetParam(), disk);
        Database file(kPath, on(disk));
        for (const char* name : {"contas", "bancos"}) {
            Table& table = file.createTable(numbers(name));
            for (int i = 0; i < kRows; ++i)
                table.insert(rowOf(i));
        }
    }

    /// The row of the catalog that names a table.
    static RowId catalogRow(Table& objects, const std::string& name) {
        RowCursor row = objects.scan();
        for (bool there = row.first(); there; there = row.next())
            if (const Value value = row.row().value(*objects.findColumn("Name"));
                std::get_if<std::string>(&value) && std::get<std::string>(value) == name)
                return row.id();
        ADD_FAILURE() << "no table " << name;
        return {};
    }
    void rename(const std::string& name, const std::string& newName) {
        Database other(kPath, on(disk));
        Table& objects = other.table("MSysObjects");
        const Assignment change[] = {
            {*objects.findColumn("Name"), newName}
        };
        objects.update(catalogRow(objects, name), change);
    }
    /// As a program does that gives the pages to others at once.
    void drop(const std::string& name) {
        Database other(kPath, on(disk));
        const Table& table = other.table(name);
        std::vector<PageNo> pages = table.definition().pages;
        RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next())
            pages.push_back(row.id().page);
        pages.push_back(table.tree(0).root());
        File file(kPath, File::Mode::readWrite, disk);
        const Bytes rubbish(formatOf(GetParam()).pageSize, std::byte{0x5A});
        for (const PageNo page : pages)
            file.write(std::uint64_t{number(page)} * rubbish.size(), rubbish);
        Table& objects = other.table("MSysObjects");
        objects.erase(catalogRow(objects, name));
    }

    static void expectGone(const std::function<void()>& action) {
        EXPECT_THAT(sentenceOf(action, Errc::notFound),
                    AllOf(HasSubstr("\"contas\""), HasSubstr("excluída ou mudou de nome")));
    }
    /// Whatever is asked of a table that was taken away.
    static void expectGone(Table& table, RowId id) {
        expectGone([&] { static_cast<void>(table.rowCount()); });
        expectGone([&] { static_cast<void>(table.read(id)); });
        expectGone([&] { static_cast<void>(table.stamp(id)); });
        expectGone([&] { static_cast<void>(table.keyOf(0, id)); });
        expectGone([&] { table.scan().first(); });
        expectGone([&] { table.scan().last(); });
        expectGone([&] { table.walk(0).first(); });
        expectGone([&] { table.walk(1).last(); });
        expectGone([&] { static_cast<void>(table.readOnlyReason()); });
        expectGone([&] { table.insert(rowOf(7)); });
        expectGone([&] { table.erase(id); });
        const Assignment change[] = {
            {1, Value{std::int64_t{7}}}
        };
        expectGone([&] { table.update(id, change); });
    }

    MemoryDisk disk;
};

INSTANTIATE_TEST_SUITE_P(, Foreign, bothVersions(), versionName);

// ---- tables that another program takes away ----------------------------------------------------

TEST_P(Foreign, ATableThatWasRenamedIsAnErrorForWhoHasItOpen) {
    Database file(kPath, on(disk));
    Table& table = file.table("contas");
    RowCursor scan = table.scan();
    IndexTree::Cursor walk = table.walk(0);
    RowReader reader = table.reader();
    ASSERT_TRUE(scan.first() && walk.first() && reader.read(scan.id()));
    const RowId id = scan.id();
    ASSERT_EQ(table.readOnlyReason(), std::nullopt);

    rename("contas", "contas de antes");
    expectGone([&] { scan.next(); });
    expectGone([&] { walk.next(); });
    expectGone([&] { static_cast<void>(reader.read(id)); });
    expectGone(table, id);
    EXPECT_FALSE(file.hasTable("contas"));
    EXPECT_EQ(file.table("contas de antes").rowCount(), kRows);
    EXPECT_EQ(file.table("bancos").rowCount(), kRows);

    rename("contas de antes", "contas");
    expectGone(table, id); // what it has missed nobody knows
    file.table("contas").insert(rowOf(1));
    file.flush();
    EXPECT_EQ(file.table("contas").rowCount(), kRows + 1);
    EXPECT_TRUE(check(kPath, disk).clean());
}

TEST_P(Foreign, ATableThatWasDroppedIsAnErrorForWhoHasItOpen) {
    Database file(kPath, on(disk));
    Table& table = file.table("contas");
    RowCursor scan = table.scan();
    IndexTree::Cursor walk = table.walk(1);
    ASSERT_TRUE(scan.first() && walk.first());
    const RowId id = scan.id();

    drop("contas");
    expectGone([&] { scan.next(); });
    expectGone([&] { walk.next(); });
    expectGone(table, id);
    EXPECT_THAT(file.tableNames(), Not(Contains("contas")));
    EXPECT_EQ(file.table("bancos").rowCount(), kRows);
    file.table("bancos").insert(rowOf(1));
    file.flush();
}

TEST_P(Foreign, ATableThatHasAnotherStructureIsAnErrorForWhoHasItOpen) {
    Database file(kPath, on(disk));
    Table& table = file.table("contas");
    RowCursor scan = table.scan();
    ASSERT_TRUE(scan.first());
    {
        Database other(kPath, on(disk));
        // As a column that was added and taken away again leaves it.
        const TableDefinition& definition = other.table("contas").definition();
        File raw(kPath, File::Mode::readWrite, disk);
        std::array<std::byte, 2> columns{};
        store<std::uint16_t>(columns.data(), definition.maxColumns + 1);
        raw.write(std::uint64_t{number(definition.page())} * formatOf(GetParam()).pageSize +
                      formatOf(GetParam()).maxColumnsAt,
                  columns);
        other.table("bancos").insert(rowOf(0));
    }
    const auto expectChanged = [](const std::function<void()>& action) {
        EXPECT_THAT(sentenceOf(action, Errc::conflict),
                    HasSubstr("A estrutura da tabela \"contas\" foi alterada"));
    };
    expectChanged([&] { scan.next(); });
    expectChanged([&] { table.insert(rowOf(1)); });
    EXPECT_EQ(file.table("bancos").rowCount(), kRows + 1);
}

TEST_P(Foreign, ATableOfATransactionThatWasUndoneIsAnErrorForWhoHasIt) {
    Database file(kPath, on(disk));
    file.begin();
    Table& table = file.createTable(numbers("nova"));
    const RowId id = table.insert(rowOf(1));
    file.rollback();
    EXPECT_THAT(sentenceOf([&] { static_cast<void>(table.read(id)); }, Errc::notFound),
                HasSubstr("\"nova\""));
    TableSpec other = numbers("nova");
    other.columns.push_back({"nome", ColumnType::text, 20});
    EXPECT_EQ(file.createTable(other).columns().size(), 3U);
}

} // namespace
