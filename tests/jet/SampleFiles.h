#pragma once

#include "jet/Database.h"
#include "support/Samples.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <vector>

/// Copies, in `to`, of the real files to be tried; none where a clone stands without them. Each
/// test has its own: some steps need a file alone.
[[nodiscard]] inline std::vector<std::filesystem::path> sampleFiles(const TemporaryFolder& to) {
    std::vector<std::filesystem::path> files;
    const auto take = [&](const std::filesystem::path& file) {
        const std::filesystem::path copy = to.path() / "amostras" / file.filename();
        std::filesystem::create_directory(copy.parent_path());
        std::filesystem::copy_file(file, copy);
        files.push_back(copy);
    };
    if (const auto folder = samplesFolder()) {
        for (const auto& entry : std::filesystem::directory_iterator(*folder / "samples"))
            if (entry.path().extension() == ".mdb")
                take(entry.path());
        take(*folder / "automacao-jet4.mdb");
    }
    return files;
}

/// How to read one of them, or a copy under the same name.
[[nodiscard]] inline jet::Database::Options optionsFor(const std::filesystem::path& file) {
    jet::Database::Options options;
    options.readOnly = true;
    if (file.filename() == "password.mdb")
        options.password = "ucanaccess";
    if (file.filename() == "charsetGBK.mdb")
        options.codePage = 936; // the file names 1252, and is wrong
    return options;
}
