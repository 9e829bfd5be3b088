#pragma once

#include "jet/share/LockFile.h"

namespace jet {

/// Who is at work in a database, as the file itself tells.
///
/// The stations agree by locks in the lock file, which goes by the database's name: who has come to
/// the same file by another name (a second link to it), or after somebody has deleted the lock file
/// from under those at work, agrees with nobody. So each station also leaves a mark where no name
/// can deceive: user n of the lock file has byte kStations + n of the database locked, shared,
/// beyond the end of the largest file. A mark that the lock file's users can't account for is a
/// stranger's.
class Attendance {
public:
    Attendance(File& database, const LockFile& lock) noexcept : database_(database), lock_(lock) {}
    Attendance(const Attendance&) = delete;
    Attendance& operator=(const Attendance&) = delete;
    /// Before the user leaves the lock file, so that nobody takes our mark for a stranger's.
    ~Attendance();

    /// Of the lock file's user that we have become. @throws Error{io} if the disk has no locks.
    void mark();
    /// Whether somebody is at work in the file who isn't one of the lock file's users. Who is just
    /// dying may look so for a moment: that is waited for.
    [[nodiscard]] bool hasStranger() const;

private:
    static constexpr std::uint64_t kStations = 0x80000000;
    [[nodiscard]] bool unaccounted() const;

    File& database_;
    const LockFile& lock_;
    unsigned marked_ = 0; ///< as this user
};

} // namespace jet
