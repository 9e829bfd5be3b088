#pragma once

#include "jet/share/Snapshot.h"

namespace jet {

/// The turn to read: sections, in which nobody of us writes pages. They nest; what protects one is
/// that of the outermost.
class ReadingTurn {
public:
    ReadingTurn(Presence& presence, Snapshot& snapshot) noexcept
        : presence_(presence), snapshot_(snapshot) {}

    [[nodiscard]] bool isOpen() const noexcept { return depth_ > 0; }
    /// Somebody has written in the middle of the section: what was read doesn't fit together.
    [[nodiscard]] bool isDisturbed() const noexcept { return disturbed_; }

    /// A section without protection of its own: within another, or while we have the turn to write.
    void nest() noexcept { ++depth_; }
    /// The outermost. It begins with R, shared, and ends with nothing open if that throws.
    /// @throws Error{locked} if somebody writes for too long.
    void open();
    /// The same, without a lock as long as nothing is read from the file: the cache is that of the
    /// snapshot, which has just been found to hold. Only for what can be done again.
    void openOnSnapshot() noexcept;
    /// The section opened last can be done again.
    void makeRepeatable() noexcept { repeatable_ = true; }
    void close() noexcept;
    /// All of them, after one that didn't come to be.
    void abandon() noexcept;

    /// Before the file is read: from here on R is held. @throws as open(), and verify().
    void protect();
    /// @throws Error{locked}, and isDisturbed(), if the file is that of the snapshot no more.
    void verify();
    /// Whether a writer waits for R, as of some thousandths of a second ago at most. @throws
    /// Error{io}.
    [[nodiscard]] bool isAwaited();
    /// Gives R up for one who waits for it, where the section can be done again.
    void breathe() noexcept;

    /// Gives R up in the middle of a section, which goes on under another protection: that of the
    /// turn to write, or until lock().
    void release() noexcept;
    /// Takes R. @throws as open().
    void lock();
    /// Takes R if it is to be had at once; whether it was. @throws Error{io}.
    bool tryLock();

private:
    enum class Protection : std::uint8_t {
        none,     ///< no section is open, or we write, or the file has no locks
        snapshot, ///< nobody has written since it was taken, and nothing is read from the file
        lock,     ///< R, shared
    };

    Presence& presence_;
    Snapshot& snapshot_;
    unsigned depth_ = 0;
    Protection protection_ = Protection::none;
    bool repeatable_ = false;
    bool disturbed_ = false;
    bool awaited_ = false; ///< when it was last asked
    std::chrono::steady_clock::time_point asked_{};
};

} // namespace jet
