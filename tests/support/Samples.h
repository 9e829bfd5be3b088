#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>

/// The folder of real sample databases: the environment's VALTRINO_SAMPLES if set, else the folder
/// the build was configured with. Nothing where it doesn't exist: a clone may stand without it, and
/// the tests that need it are then skipped:
///
///     const auto samples = samplesFolder();
///     if (!samples)
///         GTEST_SKIP() << "no sample databases here";
///
/// Treat the folder as read-only: copy a file before opening it for writing.
[[nodiscard]] inline std::optional<std::filesystem::path> samplesFolder() {
    const char* given = std::getenv("VALTRINO_SAMPLES");
    std::filesystem::path folder = given != nullptr ? given : VALTRINO_SAMPLES;
    if (!std::filesystem::is_directory(folder))
        return std::nullopt;
    return folder;
}
