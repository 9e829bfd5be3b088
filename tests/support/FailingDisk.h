#pragma once

#include "jet/Disk.h"

#include <cstdint>
#include <string>

/// The system's disk, which refuses to write, or to read, where and when it is told to.
class FailingDisk final : public jet::Disk {
public:
    enum class Refuses : std::uint8_t {
        writing,
        reading,
        life ///< the program is killed where it would write
    };

    /// End of the names of the files that are refused; "" for none.
    std::string refused;
    Refuses what = Refuses::writing;
    /// So many of these calls still go through.
    int spared = 0;
    int error = 0; ///< ENOSPC, EIO

    std::unique_ptr<Handle> open(const std::filesystem::path& path, Mode mode,
                                 int& failure) override;
    std::filesystem::path resolved(const std::filesystem::path& path) override {
        return system().resolved(path);
    }
    bool exists(const std::filesystem::path& path) override { return system().exists(path); }
    int rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
        return system().rename(from, to);
    }
    int link(const std::filesystem::path& file, const std::filesystem::path& name) override {
        return system().link(file, name);
    }
    int remove(const std::filesystem::path& path) override { return system().remove(path); }
    int list(const std::filesystem::path& folder, std::vector<Entry>& entries) override {
        return system().list(folder, entries);
    }
    int makeFolder(const std::filesystem::path& folder) override {
        return system().makeFolder(folder);
    }
    int copyRights(const std::filesystem::path& from, const std::filesystem::path& to) override {
        return system().copyRights(from, to);
    }
    int syncFolderOf(const std::filesystem::path& path) override {
        return system().syncFolderOf(path);
    }

    /// Whether this call is refused; doesn't return if the program is killed.
    [[nodiscard]] bool refuses(Refuses call, const std::string& name);
};
