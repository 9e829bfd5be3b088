#pragma once

#include "jet/Unfinished.h"
#include "jet/share/LockFile.h"

#include <optional>

namespace jet {

/// While one lives nobody has the database open, or can open it. Needs nothing of the database but
/// its name: for what replaces the file, or works on it as a whole.
class FileAlone {
public:
    /// @throws Error{locked} naming who has it open; Error{readOnly, io} if the lock file can't be
    ///         used.
    explicit FileAlone(const std::filesystem::path& database, Disk& disk = Disk::system());

private:
    LockFile lock_;
    std::optional<Unfinished> unfinished_; ///< the lock file: nobody else has it
};

} // namespace jet
