#pragma once

#include "jet/Database.h"
#include "support/Samples.h"

#include <filesystem>
#include <vector>

/// The real files to be tried; none where a clone stands without them.
[[nodiscard]] inline std::vector<std::filesystem::path> sampleFiles() {
    std::vector<std::filesystem::path> files;
    if (const auto folder = samplesFolder()) {
        for (const auto& entry : std::filesystem::directory_iterator(*folder / "samples"))
            if (entry.path().extension() == ".mdb")
                files.push_back(entry.path());
        files.push_back(*folder / "automacao-jet4.mdb");
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
