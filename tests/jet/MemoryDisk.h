#pragma once

#include "jet/Disk.h"
#include "jet/Types.h"

#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

/// The files of a disk: what is in each, by its name.
using DiskImage = std::map<std::string, jet::Bytes>;

/// A disk in memory that remembers every change and every sync, and that fails when it is told to.
/// Locks work as the system's do between the handles of one disk.
class MemoryDisk final : public jet::Disk {
public:
    struct Operation {
        enum class Kind : std::uint8_t {
            write,
            truncate,
            sync,
            loss, ///< a sync that failed: what was to reach the disk won't, though programs see it
            name,
            rename,
            remove,
            syncNames
        };
        Kind kind{};
        std::size_t file = 0;
        std::uint64_t offset = 0; ///< write; truncate: the new size
        jet::Bytes bytes;
        std::string name; ///< syncNames: of the folder
        std::string newName;
    };

    explicit MemoryDisk(const DiskImage& image = {});
    ~MemoryDisk() override;

    std::unique_ptr<Handle> open(const std::filesystem::path& path, Mode mode, int& error) override;
    std::filesystem::path resolved(const std::filesystem::path& path) override;
    bool exists(const std::filesystem::path& path) override;
    int rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
    int link(const std::filesystem::path& file, const std::filesystem::path& name) override;
    int remove(const std::filesystem::path& path) override;
    int list(const std::filesystem::path& folder, std::vector<Entry>& entries) override;
    int makeFolder(const std::filesystem::path& folder) override;
    int copyRights(const std::filesystem::path& from, const std::filesystem::path& to) override;
    int syncFolderOf(const std::filesystem::path& path) override;

    /// What a test puts under a name, and whose it is. Only open() heeds rights, and rename() and
    /// remove() if each may only touch its own: `account` 0 may do everything.
    enum class Kind : std::uint8_t { file, link, channel, folder };
    void put(const std::string& name, Kind kind, const std::string& target = "");
    [[nodiscard]] Rights& rightsOf(const std::string& name);
    std::uint32_t account = 0;
    std::uint32_t group = 0; ///< of the account; new files are of both, for nobody else
    bool eachItsOwn = false;
    /// Whether the disk is of another machine, and what is read may be old.
    bool remembers = false;
    /// Whether each folder is on a disk of its own, so that nothing is renamed from one to another.
    bool foldersApart = false;

    /// As programs see it.
    [[nodiscard]] DiskImage image() const;
    [[nodiscard]] const std::vector<Operation>& record() const noexcept { return record_; }

    /// From the `call`-th call on (counted from 1, all functions alike), one or all fail. A write
    /// that fails has put down half of its sectors.
    void failFrom(std::uint64_t call, bool forever, int error);
    void failNoMore() noexcept { failAt_ = 0; }
    [[nodiscard]] std::uint64_t calls() const noexcept { return calls_; }
    /// Whether a disk is at work at this moment: the memory it takes then stands for the real
    /// disk's, not the program's.
    [[nodiscard]] static bool isBusy() noexcept { return busy_ > 0; }

    /// Called before a lock is tried for, with its first byte, and before a read, with its place.
    std::function<void(std::uint64_t)> onLock;
    /// The same before it is asked whether another has one.
    std::function<void(std::uint64_t)> onAsk;
    std::function<void(std::uint64_t)> onRead;
    /// A place of a file that the disk doesn't give any more.
    std::optional<std::pair<std::string, std::uint64_t>> lost;
    /// May alter what is about to be written, as a bad cable does.
    std::function<void(jet::Bytes&)> onWrite;
    /// Files that can't be opened for writing, or made.
    std::function<bool(const std::string&)> failing;
    /// A file for which there is no room: no write to it succeeds.
    std::string failWrites;

private:
    friend class MemoryHandle;
    struct Content;
    struct Busy {
        Busy() { ++busy_; }
        ~Busy() { --busy_; }
    };
    static inline int busy_ = 0;
    [[nodiscard]] bool allows(const Content& file, Mode mode) const;
    [[nodiscard]] bool mayTouch(const std::string& name) const;
    /// 0, or the error that this call has to fail with.
    [[nodiscard]] int next();

    std::map<std::string, std::size_t> names_;
    std::vector<std::shared_ptr<Content>> files_;
    std::vector<Operation> record_;
    std::uint64_t calls_ = 0;
    std::uint64_t failAt_ = 0;
    bool failForever_ = false;
    int failure_ = 0;
};

/// What a disk may hold if the power goes after some of a record's operations: everything synced by
/// then, and of what wasn't any part, in sectors of 512 bytes and in any order. A name is synced
/// with its folder only, not with its file; of a rename the new name may be there and the old one
/// still, but never neither.
class PowerCut {
public:
    explicit PowerCut(const DiskImage& before);

    void advance(const MemoryDisk::Operation& operation);

    [[nodiscard]] DiskImage nothingMore() const;
    [[nodiscard]] DiskImage everything() const;
    /// `kept` is how many sectors in a hundred get to the disk.
    [[nodiscard]] DiskImage some(std::mt19937_64& random, unsigned kept) const;

private:
    struct FileState {
        jet::Bytes durable;
        std::vector<const MemoryDisk::Operation*> pending;
    };
    using Chooser = std::function<bool()>;
    [[nodiscard]] jet::Bytes contentOf(const FileState& file, const Chooser& keep) const;
    [[nodiscard]] DiskImage build(const Chooser& keep) const;

    std::vector<FileState> files_;
    std::map<std::string, std::size_t> names_;
    std::vector<const MemoryDisk::Operation*> pendingNames_;
};
