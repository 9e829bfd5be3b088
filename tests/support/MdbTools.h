#pragma once

#include "support/Program.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

/// The programs of the package mdbtools, which read database files by code that isn't ours. A test
/// that needs them is skipped, or does without that part, where they aren't installed.
[[nodiscard]] inline bool hasMdbTools() {
    return std::system("command -v mdb-export mdb-tables mdb-schema mdb-ver >/dev/null 2>&1") == 0;
}

/// Records of CSV text as mdb-export and our own tool write it.
[[nodiscard]] inline std::vector<std::vector<std::string>> parseCsv(const std::string& text) {
    std::vector<std::vector<std::string>> records;
    std::vector<std::string> record;
    std::string field;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted) {
            if (c != '"')
                field += c;
            else if (i + 1 < text.size() && text[i + 1] == '"')
                field += text[++i];
            else
                quoted = false;
        } else if (c == '"') {
            quoted = true;
        } else if (c == ',' || c == '\n') {
            record.push_back(std::move(field));
            field.clear();
            if (c == '\n') {
                records.push_back(std::move(record));
                record.clear();
            }
        } else if (c != '\r') {
            field += c;
        }
    }
    return records;
}

/// A table as mdb-export gives it, column names first: days and times as yyyy-mm-ddThh:mm:ss, bytes
/// in hexadecimal, null as nothing.
[[nodiscard]] inline std::vector<std::vector<std::string>>
exportedByMdbTools(const std::filesystem::path& file, const std::string& table,
                   const std::string& environment = {}) {
    return parseCsv(runProgram({"mdb-export", "-b", "hex", "-D", "%Y-%m-%dT%H:%M:%S", "-T",
                                "%Y-%m-%dT%H:%M:%S", file.string(), table},
                               environment)
                        .out);
}
