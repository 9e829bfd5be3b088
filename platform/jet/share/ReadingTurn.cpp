#include "jet/share/ReadingTurn.h"

#include "jet/Waiting.h"
#include "jet/share/Patience.h"

namespace jet {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// So often a reader asks whether a writer waits for the readers to leave.
constexpr milliseconds kWriterEvery{2};
/// So long it then lets that one go first.
constexpr milliseconds kForWriter{100};

} // namespace

void ReadingTurn::open() {
    depth_ = 1;
    disturbed_ = repeatable_ = false;
    try {
        lock();
    } catch (...) {
        abandon();
        throw;
    }
}

void ReadingTurn::openOnSnapshot() noexcept {
    depth_ = 1;
    protection_ = Protection::snapshot;
    repeatable_ = true;
}

void ReadingTurn::close() noexcept {
    if (--depth_ == 0)
        release();
}

void ReadingTurn::abandon() noexcept {
    depth_ = 0;
    release();
}

void ReadingTurn::protect() {
    if (protection_ != Protection::snapshot)
        return;
    protection_ = Protection::none;
    lock();
    verify();
}

void ReadingTurn::verify() {
    if (snapshot_.isCurrent())
        return;
    disturbed_ = true;
    throw Error(Errc::locked,
                "Outra estação ou outro programa gravou no banco de dados durante a leitura" +
                    presence_.others() + ". Tente de novo.");
}

void ReadingTurn::breathe() noexcept {
    if (depth_ != 1 || !repeatable_ || protection_ != Protection::lock || presence_.isCareful())
        return;
    try {
        if (!isAwaited())
            return;
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // Where that can't be told there may be one.
    }
    release();
    protection_ = Protection::snapshot;
}

void ReadingTurn::release() noexcept {
    if (protection_ == Protection::lock)
        presence_.lock().unlock(LockFile::kReading);
    protection_ = Protection::none;
}

bool ReadingTurn::isAwaited() {
    const auto now = steady_clock::now();
    if (presence_.isShared() && now - asked_ >= kWriterEvery) {
        asked_ = now;
        awaited_ = presence_.lock().isHeldAlone(LockFile::kWantsReaders);
    }
    return awaited_;
}

void ReadingTurn::lock() {
    if (!presence_.isShared())
        return;
    // A writer would wait for ever if readers took turns.
    if (isAwaited())
        awaited_ = !waitFor([&] { return !presence_.lock().isHeldAlone(LockFile::kWantsReaders); },
                            kForWriter);
    if (!waitFor([&] { return tryLock(); }, patience::kForTurn))
        throw Error(Errc::locked, "Outra estação está gravando no banco de dados há muito tempo" +
                                      presence_.others() + ". Espere um pouco e tente de novo.");
    presence_.database().lookAgain();
}

bool ReadingTurn::tryLock() {
    const bool got = presence_.lock().tryLock(LockFile::kReading, Disk::Lock::shared);
    if (got)
        protection_ = Protection::lock;
    return got;
}

} // namespace jet
