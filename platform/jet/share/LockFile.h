#pragma once

#include "jet/disk/File.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace jet {

/// The file beside a database (same name, ending .ldb) by which the stations at work in it know of
/// each other: what counts are locks on bytes far beyond its end, which go with whoever holds them.
///
/// A slot for each user names machine and account. It stays when the user has left.
///
/// Under that name may lie anything: the file is only ever used, written or removed if it is a
/// regular one of a single name, isn't the database itself, and holds nothing but such slots.
///
/// W is taken before R, and R before O; who has a later one never waits for an earlier one.
class LockFile {
public:
    static constexpr unsigned kMostUsers = 255;

    // The bytes that are locked.
    /// User n's is n bytes on: alone, while the database is open, by any program of the format.
    static constexpr std::uint64_t kUsers = 0x10000000;
    /// The same by us, as a mark that the user is a copy of this program; without it he is foreign.
    static constexpr std::uint64_t kMarks = 0x70000000;
    /// R: shared while reading, alone while pages are written.
    static constexpr std::uint64_t kReading = 0x70001000;
    /// W: alone, from the first change of a transaction to its end.
    static constexpr std::uint64_t kWriting = 0x70001001;
    /// O: alone, while entering, leaving, recovering, writing pages.
    static constexpr std::uint64_t kEntering = 0x70001002;
    /// Alone, by who waits for R: readers then leave it a moment.
    static constexpr std::uint64_t kWantsReaders = 0x70001003;
    /// Shared, by who waits for W: who has it gives it up early, and isn't first again.
    static constexpr std::uint64_t kWantsWriting = 0x70001004;

    // The slot of user n is the (n - 1)-th of the file.
    static constexpr std::size_t kName = 32; ///< of machine or account: a zero and blanks behind
    static constexpr std::size_t kSlot = 2 * kName;

    /// `database` as File::path() has it.
    LockFile(const std::filesystem::path& database, Disk& disk);
    /// Gives up every lock, and removes the file if no user is left in it.
    ~LockFile();
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    /// Opens the file, or makes it: with the rights of `database`, if given.
    /// @throws Error{readOnly, io} if it can't be made, or what has its name is no lock file.
    void open(const File* database = nullptr);
    /// Whether the file opened is still the one of that name.
    [[nodiscard]] bool isCurrent() const { return file_->isAt(path_); }
    [[nodiscard]] bool isOpen() const noexcept { return file_.has_value(); }
    void close() noexcept { file_.reset(); }

    [[nodiscard]] bool tryLock(std::uint64_t what, Disk::Lock kind = Disk::Lock::exclusive) {
        return file_->tryLock(kind, what);
    }
    void unlock(std::uint64_t what) noexcept { file_->unlock(what); }
    /// By another than us, be it shared.
    [[nodiscard]] bool isHeld(std::uint64_t what) const { return file_->isHeld(what); }
    /// The same of what is only ever held alone: to ask that is in nobody's way who asks it too.
    [[nodiscard]] bool isHeldAlone(std::uint64_t what) const { return file_->isHeldAlone(what); }

    /// Becomes a user. Requires O. False if all 255 are taken.
    [[nodiscard]] bool takeUser();
    /// Is none any more. The mark goes last: it never lacks, so that nobody takes us for foreign.
    void giveUpUser() noexcept;
    /// Ours; 0 for none.
    [[nodiscard]] unsigned user() const noexcept { return user_; }
    [[nodiscard]] bool isUser(unsigned user) const;    ///< another than us
    [[nodiscard]] bool isForeign(unsigned user) const; ///< not marked as a copy of this program
    /// All others, ascending; while the gate is closed, those who were in when it was.
    [[nodiscard]] std::vector<unsigned> otherUsers() const;
    /// "MAQUINA (Maria)" from the user's slot; just the machine for the user name that everybody
    /// has who hasn't been given one.
    [[nodiscard]] std::string nameOf(unsigned user) const;

    /// Takes every free user byte, so that no program can enter. False, and none taken, if somebody
    /// is just entering.
    [[nodiscard]] bool closeGate();
    void openGate() noexcept;

private:
    using Range = std::pair<std::uint64_t, std::uint64_t>; ///< first byte, count
    void leave();
    [[nodiscard]] std::optional<File> openOrMake();
    void requireLockFile() const;

    std::filesystem::path database_;
    std::filesystem::path path_;
    Disk& disk_;
    std::optional<File> file_;
    unsigned user_ = 0;
    std::vector<Range> gate_;
    std::vector<unsigned> outside_; ///< the others whom the gate, closed last, didn't lock out
};

} // namespace jet
