#pragma once

#include "jet/Database.h"
#include "support/MdbTools.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

// The technician's program as the tests run it.

/// The whole text, by what the standard library takes for a pattern: the test library's own depends
/// on the system.
MATCHER_P(FollowsPattern, pattern, "") { return std::regex_match(arg, std::regex(pattern)); }

using Records = std::vector<std::vector<std::string>>;

inline ProgramResult run(std::vector<std::string> words) {
    words.insert(words.begin(), VALTRINO_MDB);
    return runProgram(words);
}

/// A run that must go well and say nothing on the side; what it printed.
inline std::string outputOf(const std::vector<std::string>& words) {
    const ProgramResult result = run(words);
    EXPECT_EQ(result.code, 0) << result.err << result.out;
    EXPECT_THAT(result.err, testing::IsEmpty());
    return result.out;
}

inline Records dumped(const std::string& file, const std::string& table) {
    return parseCsv(outputOf({"dump", file, table, "--csv"}));
}

inline std::vector<std::string> filesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

/// Those of a new shop.
inline const std::vector<std::string> kTables = {"bancos", "cheques", "cliente_fornecedor",
                                                 "semfundos"};

/// A line that is refused: nothing is done, and the reader is led to the help.
inline void expectUsageError(const std::vector<std::string>& words, const char* reason) {
    const ProgramResult result = run(words);
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.out, testing::IsEmpty());
    EXPECT_THAT(result.err, testing::HasSubstr(reason));
    EXPECT_THAT(result.err, FollowsPattern(".*\\. Veja \"valtrino-mdb( [a-z]+)? --help\"\\.\n"));
}

/// Writes a file and says where.
inline std::string written(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
}

/// Of files, in one format and the other.
class Tools : public testing::TestWithParam<std::string> {
protected:
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_.path(); }
    [[nodiscard]] std::string file(const char* name = "automacao.mdb") const {
        return (folder_ / name).string();
    }
    /// A file of invented rows.
    [[nodiscard]] std::string sample(const std::vector<std::string>& more = {},
                                     const char* name = "automacao.mdb") const {
        std::vector<std::string> words{"sample", file(name), GetParam(), "--today", "2004-06-01"};
        words.insert(words.end(), more.begin(), more.end());
        EXPECT_THAT(outputOf(words), testing::StartsWith("Criado: " + file(name) + ", "));
        return file(name);
    }

    /// So many rows of history, long ones now and then; the table is made if there is none.
    static void addHistory(const std::string& path, int rows) {
        using jet::ColumnType;
        jet::Database database(path);
        if (!database.hasTable("valtrino_historico"))
            database.createTable({
                .name = "valtrino_historico",
                .columns = {{.name = "id", .type = ColumnType::longInteger, .autonumber = true},
                            {.name = "grupo", .type = ColumnType::longInteger},
                            {.name = "antes", .type = ColumnType::memo}},
                .indexes = {{.name = "PrimaryKey", .columns = {{"id"}}, .primary = true},
                            {.name = "grupo", .columns = {{"grupo"}}}}
            });
        jet::Table& history = database.table("valtrino_historico");
        for (int row = 0; row < rows; ++row)
            history.insert(std::vector<jet::Value>{
                {}, std::int64_t{row / 7}, std::string(row % 100 == 0 ? 9'000 : 200, 'x')});
    }

private:
    TemporaryFolder folder_;
};
