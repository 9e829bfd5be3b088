#pragma once

#include "jet/page/Turns.h"
#include "jet/share/ReadingTurn.h"
#include "jet/share/Rescue.h"
#include "jet/share/WritingTurn.h"

namespace jet {

/// What the stations that have one database file open agree on, seen from one of them.
///
/// Reading happens in sections: while one is open nobody of us writes pages. At its beginning the
/// commit pairs tell whether another has written since the last one; then what is remembered of the
/// file goes. Writing takes W, at the first change of a transaction, and catches up with what
/// others have written: from there to the end of the transaction nobody else of us changes
/// anything, so nothing is ever written over what we haven't seen. Pages go into the file when all
/// readers have left and no program can enter.
///
/// A foreign program in the file follows other rules, which we don't know well enough to write
/// beside it: as long as it is there we read, with care, and refuse to write.
class Sharing final : public Turns {
public:
    /// Becomes one of the file's users, after undoing what a station that died has left half done;
    /// leaves when it is destroyed, and with the last station the lock file goes.
    /// `mayWrite`: whether the file is open for that. What keeps us from sharing the file is no
    /// error but a reason to read only. `forget` is called when all that is remembered of the file
    /// has to go; it may throw.
    /// @throws Error{locked, io, readOnly} if a transaction that was cut off can't be undone now.
    Sharing(File& database, const Format& format, bool mayWrite, Snapshot::Forget forget);

    /// Why nobody may write, or nothing.
    [[nodiscard]] std::optional<Hindrance> hindrance(Presence::Look look) {
        return presence_.hindrance(look);
    }
    /// Whether a program died writing and left nothing to undo that with, or met a damaged page.
    [[nodiscard]] bool isSuspect() const noexcept { return presence_.isSuspect(); }
    /// What recovery has to tell the operator.
    [[nodiscard]] const std::optional<std::string>& notice() const noexcept {
        return rescue_.notice();
    }
    [[nodiscard]] Snapshot& snapshot() noexcept { return snapshot_; }

    // Reading. Only the outermost section costs anything, and none while writing.
    void beginReading() override;
    void endReading() noexcept override { reading_.close(); }
    void beginOnSnapshot() override;
    void breathe() noexcept override { reading_.breathe(); }
    [[nodiscard]] bool keepsWriterWaiting() override {
        return reading_.isOpen() && !writing_.isHeld() && reading_.isAwaited();
    }
    void beforeRead() override { reading_.protect(); }
    void verifyPage() override;
    [[nodiscard]] bool inSection() const noexcept override { return reading_.isOpen(); }
    [[nodiscard]] bool disturbed() const noexcept override { return reading_.isDisturbed(); }

    // Writing.
    void beginWriting() override;
    void endWriting() noexcept override;
    [[nodiscard]] bool isWriting() const noexcept override { return writing_.isHeld(); }
    [[nodiscard]] bool isAwaited() const override { return writing_.isAwaited(); }
    [[nodiscard]] bool isTakenByOther() const override { return writing_.isTakenByOther(); }
    void commit(const ChangedPages& changed) override { writing_.commit(changed); }
    [[noreturn]] void refuseOvertaken() override { snapshot_.refuse(); }
    [[nodiscard]] bool isBroken() const noexcept override { return writing_.isBroken(); }

private:
    void enterUnshared();
    void enter();
    void openSection();
    void catchUp();
    [[nodiscard]] bool undoDeadWriter(const CommitPairs& pairs);
    void requireWritable(Presence::Look look);

    Presence presence_;
    Snapshot snapshot_;
    Rescue rescue_;
    ReadingTurn reading_;
    WritingTurn writing_; ///< leaves first
};

} // namespace jet
