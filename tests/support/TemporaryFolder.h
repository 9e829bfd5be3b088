#pragma once

#include <filesystem>
#include <random>
#include <string>

/// A folder of its own for one test, gone with all it holds when the test ends.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::random_device source;
        do
            path_ = std::filesystem::temp_directory_path() /
                    ("valtrino-test-" + std::to_string(source()));
        while (!std::filesystem::create_directory(path_));
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }
    [[nodiscard]] std::filesystem::path operator/(const char* name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};
