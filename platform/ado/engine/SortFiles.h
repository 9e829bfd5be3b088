#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>

namespace ado {

/// Where SQLite puts what it sorts when that is too much for memory: files of the system's folder
/// for such, that lose their names when they are made and so can't outlive the program, and that
/// all together take no more than so many bytes. One thread at a time.
class SortFiles {
public:
    explicit SortFiles(std::uint64_t most);
    ~SortFiles();
    SortFiles(const SortFiles&) = delete;
    SortFiles& operator=(const SortFiles&) = delete;

    /// What SQLite knows them by: the last argument of sqlite3_open_v2(). They outlive the handle.
    [[nodiscard]] const char* name() const noexcept { return name_.c_str(); }
    /// The most bytes they have held.
    [[nodiscard]] std::uint64_t largest() const noexcept { return largest_; }

private:
    /// SQLite's default system, but that files are opened here.
    struct System : sqlite3_vfs {
        SortFiles* files;
        sqlite3_vfs* below;
    };
    struct File;

    static int open(sqlite3_vfs* system, const char* path, sqlite3_file* file, int flags,
                    int* outFlags);

    System system_;
    std::string name_;
    std::uint64_t most_;
    std::uint64_t used_ = 0;
    std::uint64_t largest_ = 0;
};

} // namespace ado
