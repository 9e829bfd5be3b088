#include "jet/share/WritingTurn.h"

#include "jet/Waiting.h"
#include "jet/share/Alone.h"
#include "jet/share/Held.h"
#include "jet/share/Patience.h"

#include <utility>

namespace jet {

namespace {

/// So long it is left to who waited for it, and may just be asleep.
constexpr std::chrono::milliseconds kForNext{200};
/// Who has it longer is writing, and sees to the journal when leaving.
constexpr std::chrono::milliseconds kForOneThatLeaves{100};

} // namespace

WritingTurn::~WritingTurn() {
    if (!committer_)
        return;
    LockFile& lock = presence_.lock();
    try {
        // The journal of somebody else's transaction isn't ours to remove: only with W, which we
        // have if nobody writes, and as the last one. Two that leave at once do it one after the
        // other, and the second is the last.
        if (!held_ && !waitFor([&] { return lock.tryLock(LockFile::kWriting); }, kForOneThatLeaves))
            return;
        if (lock.otherUsers().empty())
            committer_->leave();
        lock.giveUpUser();
        lock.unlock(LockFile::kWriting);
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // An empty journal left behind does no harm.
    }
}

void WritingTurn::allow() {
    committer_.emplace(presence_.database(), presence_.format(), presence_.lock().user());
}

bool WritingTurn::isAwaited() const { return presence_.lock().isHeld(LockFile::kWantsWriting); }

bool WritingTurn::isTakenByOther() const {
    return !held_ && presence_.lock().isHeldAlone(LockFile::kWriting);
}

bool WritingTurn::take() {
    LockFile& lock = presence_.lock();
    if (std::exchange(yields_, false))
        waitFor([&] { return isTakenByOther() || !isAwaited(); }, kForNext);
    held_ = lock.tryLock(LockFile::kWriting);
    if (!held_) {
        const Announced wish(lock, LockFile::kWantsWriting, Disk::Lock::shared);
        held_ = waitFor([&] { return lock.tryLock(LockFile::kWriting); }, patience::kForTurn);
    }
    return held_;
}

void WritingTurn::giveBack() noexcept {
    try {
        yields_ = isAwaited();
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // Then the others have to be as quick as we.
    }
    presence_.lock().unlock(LockFile::kWriting);
    held_ = false;
}

void WritingTurn::commit(const ChangedPages& changed) {
    const Alone alone(presence_);
    if (const auto hindrance = presence_.hindrance(Presence::Look::entranceClosed)) {
        // Into the file that nobody has any more no transaction can go, now or later.
        if (hindrance->why == Hindrance::Why::replaced)
            throw Error(Errc::conflict, hindrance->sentence);
        throw hindrance->error();
    }
    if (!snapshot_.isCurrent())
        throw Error(Errc::conflict,
                    "Outro programa alterou o banco de dados ao mesmo tempo. Nada foi gravado; "
                    "confira os dados e repita a alteração.");
    const File::Claim claim(presence_.database());
    const std::uint64_t pageSize = presence_.format().pageSize;
    if (presence_.database().size() != changed.fileBefore * pageSize)
        snapshot_.refuse();
    try {
        committer_->commit(changed);
    } catch (...) {
        // What was undone has counted as well.
        if (!committer_->isBroken())
            snapshot_.start(snapshot_.inFile());
        throw;
    }
    snapshot_.count();
}

} // namespace jet
