#pragma once

#include "jet/page/CommitPairs.h"
#include "jet/share/Attendance.h"
#include "jet/share/Hindrance.h"

#include <chrono>
#include <optional>
#include <string>

namespace jet {

/// Who has one database open: we, as a user of its lock file, the other stations, and foreign
/// programs, which follow other rules. And whether anybody may write, which hangs on that.
class Presence {
public:
    Presence(File& database, const Format& format)
        : database_(database), format_(format), lock_(database.path(), database.disk()),
          attendance_(database, lock_) {}

    [[nodiscard]] File& database() noexcept { return database_; }
    [[nodiscard]] const Format& format() const noexcept { return format_; }
    [[nodiscard]] LockFile& lock() noexcept { return lock_; }

    /// Opens the lock file. What keeps us from using it is a hindrance, no error.
    void open();
    /// Whether we agree with the others by way of the lock file.
    [[nodiscard]] bool isShared() const noexcept { return shared_; }
    /// Becomes a user of it. Requires O. @throws Error{locked} if all numbers are taken.
    void takeUser();
    /// One of the lock file's bytes, alone. @throws Error{locked} naming the others.
    void require(std::uint64_t what, std::chrono::milliseconds longest);

    /// How far it is looked for what hinders.
    enum class Look : std::uint8_t {
        known,         ///< only what lasts; costs nothing
        users,         ///< who is a user at this moment; the rest if that was looked for long ago
        around,        ///< who is there at this moment; costs a few calls of the system
        entranceClosed ///< the same, while nobody of us comes or leaves: requires O
    };
    /// Why nobody of us may write, or nothing.
    [[nodiscard]] std::optional<Hindrance> hindrance(Look look);
    /// From here on, as long as we have the file open.
    void hinder(Hindrance::Why why, const std::string& sentence);

    /// A foreign program among the users.
    [[nodiscard]] std::optional<unsigned> foreigner(Look look);
    /// Looks who is there: isCareful() tells what was found.
    std::optional<Hindrance> lookAround(Look look);
    /// The same if the last time is so long ago that a program could have opened the file since.
    void lookIfDue();
    [[nodiscard]] bool isLookDue(std::chrono::steady_clock::time_point now) const noexcept;
    /// Whether somebody may write who doesn't heed our locks.
    [[nodiscard]] bool isCareful() const noexcept { return careful_; }
    void beCareful() noexcept { careful_ = true; }
    /// @throws Error{locked} if somebody is at work in the file whom the lock file doesn't know.
    void requireNoStranger() const;

    /// The user who died writing: the pair says writing, and nobody is there to write.
    [[nodiscard]] std::optional<std::size_t> deadWriter(const CommitPairs& pairs) const;
    /// A program died writing and left nothing to undo that with, or met a damaged page.
    void noteSuspect(const CommitPairs& pairs);
    /// The same, where nobody can be asked who it was.
    void noteSuspect() noexcept { suspect_ = careful_ = true; }
    [[nodiscard]] bool isSuspect() const noexcept { return suspect_; }

    /// ": CAIXA2, CAIXA3 (Maria)", for the end of a sentence; empty if nobody can be named.
    [[nodiscard]] std::string others() const;

private:
    File& database_;
    const Format& format_;
    LockFile lock_;
    Attendance attendance_;            ///< leaves before lock_
    std::optional<Hindrance> lasting_; ///< why never writable
    bool shared_ = false;
    bool suspect_ = false;
    bool careful_ = false;
    std::chrono::steady_clock::time_point looked_{}; ///< around
    bool clear_ = false;                             ///< nothing that hinders was found then
};

} // namespace jet
