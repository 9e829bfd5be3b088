// A compacted file is the same database in less room.
#include "jet/Compact.h"

#include "jet/Copies.h"
#include "jet/DamagedFile.h"
#include "jet/IndependentReader.h"
#include "jet/SampleFiles.h"
#include "jet/ShopWork.h"
#include "jet/SmallFiles.h"
#include "jet/copy/Rewriter.h"
#include "jet/database/DatabasePager.h"
#include "jet/row/DefinitionImage.h"
#include "support/MdbTools.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <algorithm>
#include <set>
#include <sstream>

using namespace jet;

namespace {

std::vector<std::string> sortedLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    std::ranges::sort(lines);
    return lines;
}

/// The ends of relationships, by the names of the tables they join.
std::multiset<std::pair<std::string, std::string>> ends(Database& database) {
    std::map<PageNo, std::string> names;
    for (const std::string& name : database.allTableNames())
        names[database.table(name).definition().page()] = name;
    std::multiset<std::pair<std::string, std::string>> found;
    for (const auto& [page, name] : names)
        for (const auto& end :
             DefinitionImage(DatabasePager::of(database), database.table(name).definition())
                 .relationshipEnds())
            found.emplace(name, names.at(end.otherTable));
    return found;
}

TEST(CompactSamples, KeepEverything) {
    const TemporaryFolder folder;
    const auto files = sampleFiles(folder);
    if (files.empty())
        GTEST_SKIP() << "no sample databases here";
    for (const auto& file : files) {
        SCOPED_TRACE(file.filename().string());
        const auto small = folder.path() / file.filename();
        const Compacted done = compact(file, small);
        EXPECT_LE(done.pagesAfter, done.pagesBefore);
        EXPECT_EQ(std::filesystem::file_size(small) * done.pagesBefore,
                  std::filesystem::file_size(file) * done.pagesAfter);
        EXPECT_TRUE(check(small).sound());
        EXPECT_EQ(check(small).freePages, 0U);

        Database before(file, optionsFor(file));
        Database after(small, optionsFor(file)); // the password too
        ASSERT_EQ(after.allTableNames(), before.allTableNames());
        EXPECT_EQ(ends(after), ends(before));
        for (const std::string& name : before.allTableNames()) {
            SCOPED_TRACE(name);
            if (!name.starts_with("MSysObj") && !name.starts_with("MSysACE")) {
                EXPECT_TRUE(rowsOf(before, name) == rowsOf(after, name));
            }
            EXPECT_EQ(after.table(name).indexes().size(), before.table(name).indexes().size());
        }
    }
}

TEST(CompactSamples, ReadAsBeforeByTheIndependentReader) {
    const TemporaryFolder folder;
    const auto files = sampleFiles(folder);
    if (files.empty() || !hasMdbTools())
        GTEST_SKIP() << "no sample databases or no independent reader here";
    for (std::size_t i = 0; i < files.size(); i += JET_ONE_IN) {
        const auto& file = files[i];
        SCOPED_TRACE(file.filename().string());
        const auto small = folder.path() / file.filename();
        (void)compact(file, small);
        EXPECT_EQ(sortedLines(runProgram({"mdb-schema", small.string()}).out),
                  sortedLines(runProgram({"mdb-schema", file.string()}).out));
        std::istringstream tables(runProgram({"mdb-tables", "-1", file.string()}).out);
        for (std::string name; std::getline(tables, name);) {
            if (name.empty())
                continue;
            SCOPED_TRACE(name);
            auto before = exportedByMdbTools(file, name);
            auto after = exportedByMdbTools(small, name);
            std::ranges::sort(before);
            std::ranges::sort(after);
            EXPECT_EQ(after, before);
            EXPECT_EQ(runProgram({"mdb-prop", small.string(), name}).out,
                      runProgram({"mdb-prop", file.string(), name}).out);
        }
    }
}

TEST(CompactSamples, CompactedAgainAreTheSameFile) {
    const TemporaryFolder folder;
    const auto files = sampleFiles(folder);
    if (files.empty())
        GTEST_SKIP() << "no sample databases here";
    for (std::size_t i = 0; i < files.size(); i += JET_ONE_IN) {
        const auto& file = files[i];
        SCOPED_TRACE(file.filename().string());
        (void)compact(file, folder / "um.mdb");
        (void)compact(folder / "um.mdb", folder / "dois.mdb");
        EXPECT_TRUE(contentOf(folder / "um.mdb") == contentOf(folder / "dois.mdb"));
        std::filesystem::remove(folder / "um.mdb");
        std::filesystem::remove(folder / "dois.mdb");
    }
}

class Compact : public testing::TestWithParam<Version> {
protected:
    Compact() { Database::create(source_, GetParam()); }

    static TableSpec cheques() {
        // clang-format off
        return {
            "Cheques",
            {{"numero", ColumnType::longInteger, 0, true},
             {"nome", ColumnType::text, 60},
             {"valor", ColumnType::currency},
             {"obs", ColumnType::memo}},
            {{"PrimaryKey", {{"numero"}}, true}, {"nome", {{"nome", false}, {"valor"}}}}
        };
        // clang-format on
    }
    /// A table whose rows come and go.
    Table& fill(Database& database, int rows) const {
        Table& table = database.createTable(cheques());
        database.begin();
        for (int i = 0; i < rows; ++i)
            table.insert(Row{Value(), "Nome " + std::to_string(i * 7919 % 1000),
                             Currency{std::int64_t{i} * 10000},
                             i % 3 == 0
                                 ? Value(std::string(static_cast<std::size_t>(i) * 7 % 6000, 'm'))
                                 : Value()});
        database.commit();
        return table;
    }

    TemporaryFolder folder_;
    std::filesystem::path source_ = folder_ / "automacao.mdb";
    std::filesystem::path target_ = folder_ / "menor.mdb";
};

INSTANTIATE_TEST_SUITE_P(, Compact, bothVersions(), versionName);

TEST_P(Compact, GivesBackTheRoomOfDeletedRowsAndKeepsTheNumbering) {
    std::vector<Row> kept;
    {
        Database database(source_);
        Table& table = fill(database, 2000);
        database.begin();
        std::vector<RowId> all;
        RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next())
            all.push_back(row.id());
        for (std::size_t i = 0; i < all.size(); ++i)
            if (i % 5 != 0 || i > 1900)
                table.erase(all[i]);
        database.commit();
        kept = rowsOf(database, "Cheques");
    }
    const Compacted done = compact(source_, target_);
    EXPECT_LT(done.pagesAfter, done.pagesBefore / 2);
    EXPECT_TRUE(check(target_).clean());
    Database database(target_);
    EXPECT_TRUE(rowsOf(database, "Cheques") == kept);
    Table& table = database.table("Cheques");
    const RowId added = table.insert(Row{Value(), std::string("novo"), Value(), Value()});
    EXPECT_EQ(std::get<std::int64_t>(table.read(added)->front()), 2001);
}

TEST_P(Compact, TheNewFileCanBeWorkedWith) {
    {
        Database database(source_);
        fill(database, 3000);
    }
    (void)compact(source_, target_);
    {
        Database database(target_);
        Table& table = database.table("Cheques");
        EXPECT_FALSE(table.readOnlyReason());
        std::vector<RowId> all;
        RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next())
            all.push_back(row.id());
        database.begin();
        for (std::size_t i = 0; i < all.size(); ++i)
            if (i % 3 == 0)
                table.erase(all[i]);
            else if (i % 3 == 1)
                table.update(all[i], std::vector<Assignment>{
                                         {1,                     "Outro nome, mais longo " + std::to_string(i)},
                                         { 3, std::string(i % 5000,                                          'n')}
                });
            else
                table.insert(Row{Value(), "Mais " + std::to_string(i), Value(), Value()});
        database.createTable({"Outra", {{"texto", ColumnType::text, 9}}, {}});
        database.commit();
    }
    EXPECT_TRUE(check(target_).clean());
}

TEST_P(Compact, ReadsTheSameInTheIndependentReader) {
    if (!hasMdbTools())
        GTEST_SKIP() << "no independent reader here";
    {
        Database database(source_);
        fill(database, 300);
    }
    (void)compact(source_, target_);
    expectSameAsIndependentReader(target_);
}

TEST_P(Compact, NobodyIsAtWorkInTheNewFile) {
    (void)compact(source_, target_);
    const Format& format = formatOf(GetParam());
    std::string before = contentOf(source_).substr(0, format.pageSize);
    const std::string after = contentOf(target_).substr(0, format.pageSize);
    for (std::size_t pair = 0; pair < 256; ++pair) {
        EXPECT_EQ(after[format.header.commitPairs.at + 2 * pair], '\0');
        EXPECT_EQ(after[format.header.commitPairs.at + 2 * pair + 1], '\1');
    }
    before.replace(format.header.commitPairs.at, 512, after, format.header.commitPairs.at, 512);
    EXPECT_TRUE(before == after) << "the rest of the header";
}

TEST_P(Compact, RefusesATargetThatIsThere) {
    std::ofstream(target_) << "meu";
    expectError(Errc::exists, "já existe", [&] { (void)compact(source_, target_); });
    EXPECT_EQ(contentOf(target_), "meu");
}

TEST_P(Compact, RefusesASourceThatIsntThereOrIsNoDatabase) {
    expectError(Errc::notFound, "não existe",
                [&] { (void)compact(folder_ / "nenhum.mdb", target_); });
    std::ofstream(folder_ / "texto.mdb") << std::string(9000, 'x');
    expectError(Errc::unsupported, "não é um banco de dados",
                [&] { (void)compact(folder_ / "texto.mdb", target_); });
    EXPECT_FALSE(std::filesystem::exists(target_));
}

TEST_P(Compact, RefusesAFileWithErrors) {
    DamagedFile file(GetParam());
    file.put<std::uint8_t>(file.pages.front(), 0, 0x05);
    file.save();
    expectError(Errc::corrupt, "tem erros e não foi compactado: tabela \"Cheques\"",
                [&] { (void)compact(file.path(), target_); });
    EXPECT_EQ(filesIn(folder_.path()), std::vector<std::string>{"automacao.mdb"});
}

TEST_P(Compact, RefusesAnIndexWhoseOrderOfTextsItDoesntKnow) {
    DamagedFile file(GetParam());
    const Format& format = file.format();
    const std::size_t name = 3; // the place of the column "nome" among the descriptors
    const std::size_t at = format.definition.size +
                           file.cheques.realIndexes.size() * format.statistics.size +
                           name * format.column.size + format.column.language.at;
    file.put<std::uint16_t>(file.cheques.page(), at, 0x041F);
    file.save();
    expectError(Errc::unsupported, "o campo \"nome\" tem índice e usa a ordem de texto 1055",
                [&] { (void)compact(file.path(), target_); });
    EXPECT_EQ(filesIn(folder_.path()), std::vector<std::string>{"automacao.mdb"});
}

TEST_P(Compact, RefusesASourceThatChangesMeanwhile) {
    {
        Database database(source_);
        fill(database, 50);
    }
    const auto change = [&](const std::string&, std::uint64_t, std::uint64_t) {
        std::filesystem::last_write_time(source_, std::filesystem::last_write_time(source_) +
                                                      std::chrono::seconds(1));
    };
    expectError(Errc::conflict, "foi alterado durante a compactação",
                [&] { (void)compact(source_, target_, change); });
    EXPECT_EQ(filesIn(folder_.path()), std::vector<std::string>{"automacao.mdb"});
}

TEST_P(Compact, RefusesAFileThatWasCut) {
    const std::size_t page = formatOf(GetParam()).pageSize;
    const struct {
        std::uint64_t left;
        const char* words;
    } cases[] = {
        {std::filesystem::file_size(source_) - 100, "a última página está incompleta"},
        {3 * page,                                  "o arquivo está incompleto"        },
    };
    for (const auto& [left, words] : cases) {
        std::filesystem::resize_file(source_, left);
        const std::string before = contentOf(source_);
        expectError(Errc::corrupt, words, [&] { (void)compact(source_, target_); });
        EXPECT_TRUE(contentOf(source_) == before);
        EXPECT_EQ(filesIn(folder_.path()), std::vector<std::string>{"automacao.mdb"});
    }
}

/// A bad cable: wherever `word` goes by, its first letter becomes another.
void garble(Bytes& bytes, std::string_view word, char letter) {
    for (const std::size_t width : {1U, 2U}) { // a letter is one byte, or two
        Bytes sought(word.size() * width);
        for (std::size_t i = 0; i < word.size(); ++i)
            sought[i * width] = static_cast<std::byte>(word[i]);
        for (auto at = bytes.begin();
             (at = std::search(at, bytes.end(), sought.begin(), sought.end())) != bytes.end();)
            *at = static_cast<std::byte>(letter);
    }
}

TEST_P(Compact, ACopyThatIsSoundButNotTheSameIsRefused) {
    MemoryDisk whole;
    Database::create(kPath, GetParam(), whole);
    {
        Database database(kPath, on(whole));
        Table& table = database.createTable(cheques());
        table.insert(Row{std::int64_t{0x34333231}, "Ana Maria", // the number is "1234" on disk
                         Currency{0x3837363534333231}, "Devolvido"}); // the amount "12345678"
    }
    const struct {
        const char* word;
        char letter;
        const char* told;
    } slips[] = {
        {"Cheques",    'c', "as tabelas"                           },
        {"valor",      'V', "as colunas da tabela \"Cheques\""     },
        {"PrimaryKey", 'p', "os índices da tabela \"Cheques\""    },
        {"1234",       '0', "as numerações da tabela \"Cheques\""},
        {"Ana Maria",  'a', "as linhas da tabela \"Cheques\""      },
        {"2345678",    '9', "as linhas da tabela \"Cheques\""      },
        {"Devolvido",  'd', "as linhas da tabela \"Cheques\""      },
    };
    for (const auto& [word, letter, told] : slips) {
        SCOPED_TRACE(word);
        MemoryDisk disk(whole.image());
        disk.onWrite = [&, sought = word, other = letter](Bytes& bytes) {
            garble(bytes, sought, other);
        };
        expectError(Errc::corrupt, std::string("A cópia não foi aproveitada: ") + told,
                    [&] { (void)compact(kPath, "/loja/menor.mdb", {}, disk); });
        EXPECT_TRUE(disk.image() == whole.image()) << "the original, and nothing beside it";
    }
}

TEST_P(Compact, LeavesNothingWhenTheDiskIsFull) {
    {
        Database database(source_);
        fill(database, 500);
    }
    if (!SmallFiles::canBeHad())
        GTEST_SKIP() << "a system where files can't be kept small";
    const std::uint64_t whole = std::filesystem::file_size(source_);
    for (std::uint64_t room = 0; room < whole; room += whole / 9) {
        SCOPED_TRACE(room);
        {
            const SmallFiles small(room);
            expectError(Errc::full, "espaço", [&] { (void)compact(source_, target_); });
        }
        EXPECT_EQ(filesIn(folder_.path()), std::vector<std::string>{"automacao.mdb"});
    }
    (void)compact(source_, target_);
    EXPECT_TRUE(check(target_).clean());
}

TEST(CompactObjects, ARightOnAForgottenTableDoesntBecomeThatOnAnother) {
    PageNumbers numbers;
    numbers.add(PageNo{2}, PageNo{2});
    numbers.add(PageNo{40}, PageNo{6});
    numbers.add(PageNo{50}, PageNo{7});
    numbers.add(PageNo{8});
    EXPECT_EQ(numbers.translated(40), 6U);
    EXPECT_EQ(numbers.translated(0x80000007), 0x80000007U);
    EXPECT_EQ(numbers.translated(30), 30U); // nobody's before, nobody's now
    for (const std::uint32_t forgotten : {7U, 8U}) {
        EXPECT_NE(numbers.translated(forgotten), forgotten);
        EXPECT_GT(numbers.translated(forgotten), 40U);
    }
}

} // namespace
