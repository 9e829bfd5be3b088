#pragma once

#include "jet/share/Committer.h"
#include "jet/share/Snapshot.h"

#include <optional>

namespace jet {

/// The turn to write, W: among our stations one has it at a time, from the first change of a
/// transaction to its end.
class WritingTurn {
public:
    WritingTurn(Presence& presence, Snapshot& snapshot) noexcept
        : presence_(presence), snapshot_(snapshot) {}
    WritingTurn(const WritingTurn&) = delete;
    WritingTurn& operator=(const WritingTurn&) = delete;
    /// A journal that nobody needs goes with the last station.
    ~WritingTurn();

    /// From here on we may commit, as the lock file's user that we are.
    void allow();

    [[nodiscard]] bool isHeld() const noexcept { return held_; }
    /// Whether another station waits for it.
    [[nodiscard]] bool isAwaited() const;
    [[nodiscard]] bool isTakenByOther() const;
    /// Waits for who has it, and if others waited when we had it last, for one of them. False if
    /// that takes too long. Requires that R isn't held: its holder may be waiting for that.
    [[nodiscard]] bool take();
    void giveBack() noexcept;

    /// Puts a transaction into the file, when the readers have left and while nobody can enter.
    /// Requires the turn. @throws as Turns::commit().
    void commit(const ChangedPages& changed);
    [[nodiscard]] bool isBroken() const noexcept { return committer_ && committer_->isBroken(); }

private:
    Presence& presence_;
    Snapshot& snapshot_;
    std::optional<Committer> committer_;
    bool held_ = false;
    bool yields_ = false; ///< it was given back with others waiting
};

} // namespace jet
