#include "jet/share/Attendance.h"

#include "jet/Error.h"
#include "jet/Waiting.h"

namespace jet {

namespace {

/// The system takes the locks of who dies from one file after the other; and who looks may have one
/// for a moment.
constexpr std::chrono::milliseconds kLongestDying{250};

} // namespace

Attendance::~Attendance() {
    if (marked_ != 0)
        database_.unlock(kStations + marked_);
}

void Attendance::mark() {
    // Shared: a file that may only be read takes no other lock. Another who is just looking may be
    // in the way.
    if (waitFor([&] { return database_.tryLock(Disk::Lock::shared, kStations + lock_.user()); },
                kLongestDying))
        marked_ = lock_.user();
}

bool Attendance::unaccounted() const {
    for (std::uint64_t user = 1; user <= LockFile::kMostUsers; ++user) {
        user = database_.firstHeld(kStations + user, LockFile::kMostUsers + 1 - user) - kStations;
        if (user > LockFile::kMostUsers)
            return false;
        if (user == lock_.user() || !lock_.isUser(static_cast<unsigned>(user)))
            return true;
    }
    return false;
}

bool Attendance::hasStranger() const {
    return unaccounted() && !waitFor([this] { return !unaccounted(); }, kLongestDying);
}

} // namespace jet
