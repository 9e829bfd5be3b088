#include "ado/engine/SortFiles.h"

#include <algorithm>

namespace ado {

/// A file as SQLite sees it; that of the system below follows it in memory.
struct SortFiles::File : sqlite3_file {
    SortFiles* files;
    std::uint64_t size;

    sqlite3_file* below() { return reinterpret_cast<sqlite3_file*>(this + 1); }

    void resize(std::uint64_t to) {
        files->used_ += to - size;
        files->largest_ = std::max(files->largest_, files->used_);
        size = to;
    }

    static File& of(sqlite3_file* file) { return *static_cast<File*>(file); }

    static int close(sqlite3_file* file) {
        of(file).resize(0);
        return of(file).below()->pMethods->xClose(of(file).below());
    }
    static int write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
        const auto end = static_cast<std::uint64_t>(at) + static_cast<std::uint64_t>(count);
        const std::uint64_t grown = std::max(of(file).size, end) - of(file).size;
        if (grown > of(file).files->most_ - of(file).files->used_)
            return SQLITE_TOOBIG; // of SQLITE_FULL the disk tells
        of(file).resize(of(file).size + grown);
        return of(file).below()->pMethods->xWrite(of(file).below(), bytes, count, at);
    }

    /// What needs no look at it.
    template <auto Method, class... Arguments>
    static int pass(sqlite3_file* file, Arguments... arguments) {
        sqlite3_file* const below = of(file).below();
        return (below->pMethods->*Method)(below, arguments...);
    }

    using Methods = sqlite3_io_methods;
    static constexpr Methods kMethods{
        .iVersion = 1,
        .xClose = close,
        .xRead = pass<&Methods::xRead>,
        .xWrite = write,
        .xTruncate = pass<&Methods::xTruncate>,
        .xSync = pass<&Methods::xSync>,
        .xFileSize = pass<&Methods::xFileSize>,
        .xLock = pass<&Methods::xLock>,
        .xUnlock = pass<&Methods::xUnlock>,
        .xCheckReservedLock = pass<&Methods::xCheckReservedLock>,
        .xFileControl = pass<&Methods::xFileControl>,
        .xSectorSize = pass<&Methods::xSectorSize>,
        .xDeviceCharacteristics = pass<&Methods::xDeviceCharacteristics>,
        .xShmMap = nullptr,
        .xShmLock = nullptr,
        .xShmBarrier = nullptr,
        .xShmUnmap = nullptr,
        .xFetch = nullptr,
        .xUnfetch = nullptr,
    };
};

SortFiles::SortFiles(std::uint64_t most)
    : system_{*sqlite3_vfs_find(nullptr), this, sqlite3_vfs_find(nullptr)},
      name_("sort files " + std::to_string(reinterpret_cast<std::uintptr_t>(this))), most_(most) {
    system_.pNext = nullptr;
    system_.zName = name_.c_str();
    system_.szOsFile += static_cast<int>(sizeof(File));
    system_.xOpen = open;
    sqlite3_vfs_register(&system_, 0);
}

SortFiles::~SortFiles() { sqlite3_vfs_unregister(&system_); }

int SortFiles::open(sqlite3_vfs* system, const char* path, sqlite3_file* file, int flags,
                    int* outFlags) {
    const auto& self = *static_cast<System*>(system);
    auto& opened = File::of(file);
    opened.files = self.files;
    opened.size = 0;
    const int result = self.below->xOpen(self.below, path, opened.below(), flags, outFlags);
    // SQLite closes what has methods, opened or not; the one below says which it wants.
    opened.pMethods = opened.below()->pMethods != nullptr ? &File::kMethods : nullptr;
    return result;
}

} // namespace ado
