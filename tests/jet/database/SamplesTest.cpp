// Our reading of real files against that of an independent reader.
#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/IndependentReader.h"
#include "jet/SampleFiles.h"
#include "support/MdbTools.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

using namespace jet;

namespace {

std::string bytesOf(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

TEST(Samples, ReadAsTheIndependentReaderReadsThem) {
    const TemporaryFolder folder;
    const auto files = sampleFiles(folder);
    if (files.empty() || !hasMdbTools())
        GTEST_SKIP() << "no sample databases or no independent reader here";
    for (const auto& file : files) {
        const Database::Options options = optionsFor(file);
        expectSameAsIndependentReader(
            file, options,
            options.codePage ? "MDB_JET3_CHARSET=CP" + std::to_string(*options.codePage) : "");
    }
}

TEST(Samples, HaveTheUserTablesThatTheIndependentReaderLists) {
    const TemporaryFolder folder;
    const auto files = sampleFiles(folder);
    if (files.empty() || !hasMdbTools())
        GTEST_SKIP() << "no sample databases or no independent reader here";
    for (const auto& file : files) {
        SCOPED_TRACE(file.filename().string());
        std::vector<std::string> listed;
        std::istringstream lines(runProgram({"mdb-tables", "-1", file.string()}).out);
        for (std::string name; std::getline(lines, name);)
            if (!name.empty())
                listed.push_back(name);
        std::vector<std::string> ours = Database(file, optionsFor(file)).tableNames();
        std::ranges::sort(listed);
        std::ranges::sort(ours);
        EXPECT_EQ(ours, listed);
    }
}

TEST(Samples, ReadingAndCheckingLeavesThemAsTheyAre) {
    const TemporaryFolder folder;
    const auto files = sampleFiles(folder);
    if (files.empty())
        GTEST_SKIP() << "no sample databases here";
    for (const auto& sample : files) {
        SCOPED_TRACE(sample.filename().string());
        const std::filesystem::path file = folder / "copy.mdb";
        std::filesystem::copy_file(sample, file, std::filesystem::copy_options::overwrite_existing);
        std::filesystem::permissions(file, std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
        const std::string before = bytesOf(file);
        {
            Database::Options options = optionsFor(sample);
            options.readOnly = false;
            Database database(file, options);
            for (const std::string& name : database.allTableNames()) {
                Table& table = database.table(name);
                (void)table.readOnlyReason();
                RowCursor row = table.scan();
                for (bool there = row.first(); there; there = row.next())
                    (void)row.row().values();
            }
        }
        EXPECT_TRUE(check(file).sound());
        EXPECT_TRUE(bytesOf(file) == before);
    }
}

TEST(Samples, TheChineseFileReadsUnderItsOwnCodePage) {
    const auto folder = samplesFolder();
    if (!folder)
        GTEST_SKIP() << "no sample databases here";
    const auto file = *folder / "samples" / "charsetGBK.mdb";
    Database database(file, optionsFor(file));
    RowCursor row = database.table("table1").scan();
    ASSERT_TRUE(row.first());
    const Row values = row.row().values();
    const bool found = std::ranges::any_of(values, [](const Value& value) {
        const auto* text = std::get_if<std::string>(&value);
        return text != nullptr && text->starts_with("GBK") && text->size() == 9;
    });
    EXPECT_TRUE(found) << "\"GBK\" and two Chinese characters";
}

/// One file of ours with every type that a table of this version may have; its rows.
std::vector<Row> makeFileOfAllTypes(const std::filesystem::path& path, Version version) {
    Database::create(path, version);
    Database database(path);
    // clang-format off
    TableSpec spec{
        "Tipos",
        {{"numero", ColumnType::longInteger, 0, true},
         {"byte", ColumnType::byte},
         {"inteiro", ColumnType::integer},
         {"valor", ColumnType::currency},
         {"simples", ColumnType::single},
         {"duplo", ColumnType::real},
         {"data", ColumnType::date},
         {"bytes", ColumnType::binary, 30},
         {"texto", ColumnType::text, 255},
         {"memo", ColumnType::memo},
         {"ole", ColumnType::ole},
         {"guid", ColumnType::guid},
         {"sim", ColumnType::boolean}},
        {{"PrimaryKey", {{"numero"}}, true}}
    };
    // clang-format on
    if (version == Version::jet4)
        spec.columns.push_back({"decimal", ColumnType::numeric, 0, false, 18, 3});
    Table& table = database.createTable(spec);
    std::vector<Row> rows;
    for (int i = 0; i < 60; ++i) {
        const bool some = i % 7 != 0;
        const auto size = static_cast<std::size_t>(i * i * i % 9000);
        Row row(table.columns().size());
        if (some) {
            row[1] = std::int64_t{i} * 4;
            row[2] = std::int64_t{i} * 1000 - 30000;
            row[3] = Currency{(i - 30) * 1'234'567'891LL};
            row[4] = i / 8.0;
            row[5] = i * 1e100;
            row[6] = Date::of({2004, 1 + i % 12, 1 + i % 28, i % 24, i, 59 - i % 50});
            row[7] = Bytes(static_cast<std::size_t>(1 + i % 30), std::byte{0xA5});
            row[8] = std::string("Ação ") + std::string(static_cast<std::size_t>(i) * 3, 'x');
            row[9] = std::string(size, 'm') + "ç";
            row[10] = Bytes(size, std::byte{0x3C});
            Guid guid;
            guid.bytes.fill(static_cast<std::byte>(i));
            row[11] = guid;
            row[12] = i % 2 == 0;
            if (version == Version::jet4)
                row[13] = Numeric{
                    i % 2 == 0, {0, 0, 1, static_cast<std::uint32_t>(i)},
                         3
                };
        } else {
            row[12] = false;
        }
        table.insert(row);
        row[0] = std::int64_t{i} + 1;
        rows.push_back(std::move(row));
    }
    return rows;
}

TEST(OurFiles, ReadBackAsTheyWereWritten) {
    const TemporaryFolder folder;
    for (const Version version : {Version::jet3, Version::jet4}) {
        const auto file = folder / (version == Version::jet3 ? "3.mdb" : "4.mdb");
        const std::vector<Row> rows = makeFileOfAllTypes(file, version);
        Database database(file);
        std::vector<Row> found;
        RowCursor row = database.table("Tipos").scan();
        for (bool there = row.first(); there; there = row.next())
            found.push_back(row.row().values());
        EXPECT_TRUE(found == rows);
    }
}

TEST(OurFiles, ReadAsTheIndependentReaderReadsThem) {
    if (!hasMdbTools())
        GTEST_SKIP() << "no independent reader here";
    const TemporaryFolder folder;
    for (const Version version : {Version::jet3, Version::jet4}) {
        const auto file = folder / (version == Version::jet3 ? "3.mdb" : "4.mdb");
        (void)makeFileOfAllTypes(file, version);
        EXPECT_TRUE(check(file).clean());
        expectSameAsIndependentReader(file);
        EXPECT_EQ(runProgram({"mdb-ver", file.string()}).out,
                  version == Version::jet3 ? "JET3\n" : "JET4\n");
    }
}

} // namespace
