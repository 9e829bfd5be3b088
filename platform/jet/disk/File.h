#pragma once

#include "jet/Disk.h"

#include <optional>

namespace jet {

/// An open file. Everything fails with Error{io}, naming the file and the system's reason; reading
/// past the end is a failure too.
class File {
public:
    using Mode = Disk::Mode;

    /// @throws Error{notFound}, Error{exists} (createNew), Error{readOnly} (no permission to
    /// write),
    ///         Error{io}.
    File(std::filesystem::path path, Mode mode, Disk& disk = Disk::system());
    /// The same of what may not be there: then nothing.
    [[nodiscard]] static std::optional<File> ifThere(std::filesystem::path path, Mode mode,
                                                     Disk& disk);

    /// As Disk::resolved() has it, but for what lies beside a database, which has its name from
    /// this one.
    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }
    [[nodiscard]] Disk& disk() const noexcept { return *disk_; }
    [[nodiscard]] std::uint64_t size() const;
    /// Another number once the file has been changed.
    [[nodiscard]] std::int64_t changedAt() const;
    void read(std::uint64_t offset, std::span<std::byte> into) const;
    /// @throws Error{full} when the disk has no room.
    void write(std::uint64_t offset, std::span<const std::byte> from);
    void truncate(std::uint64_t size);
    /// Returns when what was written has reached the disk.
    void sync();

    /// Takes `count` bytes from `offset` for this open file, shared with others who take them so or
    /// alone, until close or unlock(). False, at once, if another has any of them.
    [[nodiscard]] bool tryLock(Disk::Lock kind, std::uint64_t offset, std::uint64_t count = 1);
    void unlock(std::uint64_t offset, std::uint64_t count = 1) noexcept;
    /// The first of `count` bytes from `offset` that another open file has locked, in any way, or
    /// for itself alone; or `offset` + `count`.
    [[nodiscard]] std::uint64_t firstHeld(std::uint64_t offset, std::uint64_t count) const {
        return firstMet(Disk::Lock::exclusive, offset, count);
    }
    [[nodiscard]] std::uint64_t firstHeldAlone(std::uint64_t offset, std::uint64_t count) const {
        return firstMet(Disk::Lock::shared, offset, count);
    }
    [[nodiscard]] bool isHeld(std::uint64_t offset) const { return firstHeld(offset, 1) == offset; }
    [[nodiscard]] bool isHeldAlone(std::uint64_t offset) const {
        return firstHeldAlone(offset, 1) == offset;
    }
    /// Whether `path` still names this very file; a link to it doesn't.
    [[nodiscard]] bool isAt(const std::filesystem::path& path) const { return handle_->isAt(path); }
    [[nodiscard]] Disk::Attributes attributes() const;
    /// From here on is read what others have written, where a machine would remember what it has
    /// read itself: to be called when a lock says that they have done. Elsewhere it costs nothing.
    void lookAgain();

    /// Gives this file the rights of another, as far as the account that we are may do that. Where
    /// the group can't be given nobody gets by way of it what everybody hasn't.
    /// @return whether all of them are the same now.
    bool takeRights(const Disk::Rights& rights) noexcept;

    /// Names in a folder; each is on the disk when it returns.
    /// @throws Error{io, readOnly, notFound}.
    static void rename(Disk& disk, const std::filesystem::path& from,
                       const std::filesystem::path& to);
    static void link(Disk& disk, const std::filesystem::path& file,
                     const std::filesystem::path& name);
    static void remove(Disk& disk, const std::filesystem::path& path);
    /// Nothing where there is no such folder.
    [[nodiscard]] static std::vector<Disk::Entry> list(Disk& disk,
                                                       const std::filesystem::path& folder);
    /// Unless it is there. Those who may use the folder around it may use it.
    static void makeFolder(Disk& disk, const std::filesystem::path& folder);
    static void syncFolderOf(Disk& disk, const std::filesystem::path& path);

    /// While it lives nobody else can write in the file, where the system sees to that.
    class Claim {
    public:
        /// @throws Error{locked} if somebody is about to.
        explicit Claim(File& file);
        Claim(const Claim&) = delete;
        Claim& operator=(const Claim&) = delete;
        ~Claim() { handle_.endWriting(); }

    private:
        Disk::Handle& handle_;
    };

private:
    /// Of what can't be opened: why, in `error`.
    File(std::filesystem::path path, Mode mode, Disk& disk, int& error);
    [[nodiscard]] std::uint64_t firstMet(Disk::Lock kind, std::uint64_t offset,
                                         std::uint64_t count) const;

    std::filesystem::path path_;
    Disk* disk_;
    std::unique_ptr<Disk::Handle> handle_;
};

} // namespace jet
