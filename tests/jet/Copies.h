#pragma once

#include "jet/Check.h"
#include "jet/Database.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

/// What tests of copied files ask of them.

/// All rows of a table, in their order.
[[nodiscard]] inline std::vector<jet::Row> rowsOf(jet::Database& database,
                                                  const std::string& table) {
    std::vector<jet::Row> rows;
    jet::RowCursor row = database.table(table).scan();
    for (bool there = row.first(); there; there = row.next())
        rows.push_back(row.row().values());
    return rows;
}

[[nodiscard]] inline std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The names of the files in a folder.
[[nodiscard]] inline std::vector<std::string> filesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    if (std::filesystem::is_directory(folder))
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

/// Takes the message and the code of the error that `action` must end with.
template <class Action>
void expectError(jet::Errc code, const std::string& words, Action&& action) {
    try {
        action();
        ADD_FAILURE() << "no error";
    } catch (const jet::Error& error) {
        EXPECT_EQ(error.code(), code) << error.what();
        EXPECT_NE(std::string(error.what()).find(words), std::string::npos) << error.what();
    }
}
