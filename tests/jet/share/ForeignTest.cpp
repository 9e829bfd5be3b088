// A program that keeps to none of our rules, or takes away what we have open: nothing of ours is
// written over its work, and what was taken away is an error, not a wrong row.
#include "jet/Check.h"
#include "jet/MemoryDisk.h"
#include "jet/Sentences.h"
#include "jet/ShopWork.h"
#include "jet/share/LockFile.h"
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
        expectGone([&] { static_cast<void>(table.rowVersion(id)); });
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
                      formatOf(GetParam()).definition.maxColumns.at,
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

// ---- a program that writes and tells nobody ---------------------------------------------------

TEST_P(Foreign, AFileThatIsReplacedWhileItIsBeingOpenedIsRefused) {
    const Bytes whole = disk.image().at(kPath);
    bool replaced = false;
    disk.onLock = [&](std::uint64_t byte) {
        if (byte != LockFile::kEntering || std::exchange(replaced, true))
            return;
        File(std::string("/loja/copia.mdb"), File::Mode::createNew, disk).write(0, whole);
        File::rename(disk, "/loja/copia.mdb", kPath);
    };
    EXPECT_THAT(sentenceOf([&] { Database(kPath, on(disk)); }, Errc::locked),
                HasSubstr("acaba de ser substituído"));
    EXPECT_EQ(Database(kPath, on(disk)).table("contas").rowCount(), kRows);
}

TEST_P(Foreign, ATableThatWasDroppedAndMadeAgainIsAnErrorForWhoHasTheOldOne) {
    Database file(kPath, on(disk));
    Table& table = file.table("contas");
    RowCursor scan = table.scan();
    ASSERT_TRUE(scan.first());
    drop("contas");
    {
        Database other(kPath, on(disk));
        other.createTable(numbers("contas")).insert(rowOf(5));
        other.flush();
    }
    expectGone(table, scan.id());
    EXPECT_EQ(file.table("contas").rowCount(), 1);
}

TEST_P(Foreign, ATableWhoseDefinitionWasDamagedIsAnErrorForWhoHasItOpen) {
    Database file(kPath, on(disk));
    Table& table = file.table("contas");
    ASSERT_EQ(table.rowCount(), kRows);
    {
        Database other(kPath, on(disk));
        File(kPath, File::Mode::readWrite, disk)
            .write(std::uint64_t{number(table.definition().page())} * formatOf(GetParam()).pageSize,
                   Bytes(1, std::byte{9}));
        other.table("bancos").insert(rowOf(0));
        other.flush();
    }
    EXPECT_EQ(errorOf([&] { table.insert(rowOf(1)); }), Errc::corrupt);
    EXPECT_EQ(file.table("bancos").rowCount(), kRows + 1);
}

/// One station, and a program that writes into its file as into any other.
class Intruder : public Foreign {
protected:
    static constexpr std::int64_t kOurs = 0x01234567;
    static constexpr std::int64_t kTheirs = 0x07654321;

    static void set(Table& table, RowId id, std::int64_t value) {
        const Assignment change[] = {
            {1, Value{value}}
        };
        table.update(id, change);
    }

    static std::int64_t valueOf(Table& table, RowId id) {
        const auto row = table.read(id);
        return row ? std::get<std::int64_t>((*row)[1]) : -1;
    }

    Intruder() {
        set(table, mine, kOurs);
        set(table, neighbour, kOurs + 1);
        file.flush();
    }

    RowId rowAt(int place) {
        RowCursor row = table.scan();
        EXPECT_TRUE(row.first());
        while (place-- > 0)
            EXPECT_TRUE(row.next());
        return row.id();
    }
    [[nodiscard]] Bytes stored() const { return disk.image().at(kPath); }
    File raw() { return File(kPath, File::Mode::readWrite, disk); }
    /// Puts a value of its own in the place of ours, all indexes left as they are.
    void changeInPlace(PageNo page) {
        File intruder = raw();
        Bytes bytes(formatOf(GetParam()).pageSize);
        const std::uint64_t at = std::uint64_t{number(page)} * bytes.size();
        intruder.read(at, bytes);
        bool found = false;
        for (std::size_t i = 0; i + 4 <= bytes.size() && !found; ++i)
            if (load<std::uint32_t>(bytes.data() + i) == static_cast<std::uint32_t>(kOurs)) {
                store<std::uint32_t>(bytes.data() + i, static_cast<std::uint32_t>(kTheirs));
                found = true;
            }
        ASSERT_TRUE(found);
        intruder.write(at, bytes);
    }
    /// Saving is refused, and the file then as that program has left it.
    void expectRefused(const std::function<void()>& save) {
        const Bytes before = stored();
        EXPECT_THAT(sentenceOf(save, Errc::conflict), HasSubstr("sem avisar as estações"));
        EXPECT_EQ(stored(), before);
    }

    /// Its change stands, ours of the neighbour before it does, and another one is taken.
    void expectSavedBesideIt() {
        EXPECT_EQ(valueOf(table, mine), kTheirs);
        EXPECT_EQ(valueOf(table, neighbour), kOurs + 1);
        set(table, neighbour, 1);
        file.flush();
        EXPECT_EQ(valueOf(table, mine), kTheirs);
        EXPECT_EQ(valueOf(table, neighbour), 1);
    }

    Database file{kPath, on(disk)};
    Table& table{file.table("contas")};
    RowId mine{rowAt(0)};
    RowId neighbour{rowAt(1)};
};

INSTANTIATE_TEST_SUITE_P(, Intruder, bothVersions(), versionName);

TEST_P(Intruder, WhatItHasChangedIsNotSavedOver) {
    ASSERT_EQ(valueOf(table, mine), kOurs);
    changeInPlace(mine.page);
    // Another row of that page, which is written whole.
    expectRefused([&] {
        set(table, neighbour, 1);
        file.flush();
    });
    expectSavedBesideIt();
}

TEST_P(Intruder, WhatItChangesWhileATransactionIsOpenIsNotSavedOver) {
    file.begin();
    set(table, neighbour, 1);
    changeInPlace(mine.page);
    expectRefused([&] { file.commit(); });
    EXPECT_TRUE(file.inTransaction());
    expectRefused([&] { file.commit(); });
    file.rollback();
    expectSavedBesideIt();
}

TEST_P(Intruder, GatheredChangesAreNotSavedOverIt) {
    set(table, neighbour, 1);
    changeInPlace(mine.page);
    expectRefused([&] { file.flush(); });
    file.flush(); // dropped: they were made from what is there no more
    EXPECT_EQ(valueOf(table, mine), kTheirs);
    EXPECT_EQ(valueOf(table, neighbour), kOurs + 1);
}

TEST_P(Intruder, WhatASaveHasOnlyLookedAtHasToBeTrueAsWell) {
    ASSERT_EQ(valueOf(table, mine), kOurs);
    // The key stays as it is; that it is the only one of its kind was looked up there.
    const PageNo root = table.tree(*table.primaryKey()).root();
    raw().write((std::uint64_t{number(root)} + 1) * formatOf(GetParam()).pageSize - 1,
                Bytes(1, std::byte{0x77}));
    expectRefused([&] {
        set(table, mine, 1);
        file.flush();
    });
    set(table, mine, 1);
    file.flush();
    EXPECT_EQ(valueOf(table, mine), 1);
}

TEST_P(Intruder, AFileThatWasCutIsNotWrittenAsIfItWereWhole) {
    const Bytes whole = stored();
    const std::size_t page = formatOf(GetParam()).pageSize;
    const std::size_t left = whole.size() - 3 * page;
    raw().truncate(left);
    expectRefused([&] { set(table, mine, 1); });
    // What others refer to isn't given to anybody else, now or by the next station.
    const auto fill = [&](Database& station) {
        const Bytes before = stored();
        EXPECT_THAT(sentenceOf(
                        [&] {
                            const DatabaseTransaction all(station);
                            for (int i = 0; i < 3000; ++i)
                                station.table("contas").insert(rowOf(i));
                        },
                        Errc::corrupt),
                    Not(HasSubstr("sem avisar")));
        EXPECT_EQ(stored(), before);
    };
    fill(file);
    {
        Database next(kPath, on(disk));
        fill(next);
    }
    EXPECT_EQ(stored().size(), left);
    // It was in the middle of its work.
    raw().write(left, std::span(whole).subspan(left));
    expectRefused([&] { set(table, mine, 1); });
    set(table, mine, 1);
    file.flush();
    EXPECT_EQ(valueOf(table, mine), 1);
    EXPECT_TRUE(check(kPath, disk).clean());
}

TEST_P(Intruder, AFileCutWithinAPageIsNotWritten) {
    raw().truncate(stored().size() - 100);
    for (int i = 0; i < 3; ++i)
        expectRefused([&] { set(table, mine, 1); });
}

TEST_P(Intruder, AFileThatHasGrownIsLookedAtAnew) {
    const std::uint64_t size = stored().size();
    raw().write(size, Bytes(2 * formatOf(GetParam()).pageSize));
    expectRefused([&] { set(table, mine, 1); });
    set(table, mine, 1);
    for (int i = 0; i < 3000; ++i)
        table.insert(rowOf(i));
    file.flush();
    EXPECT_EQ(table.rowCount(), kRows + 3000);
    EXPECT_TRUE(check(kPath, disk).clean());
}

} // namespace
