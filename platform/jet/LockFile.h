#pragma once

#include "jet/File.h"

#include <optional>

namespace jet {

/// The file beside a database (same name, ending .ldb) whose byte ranges say who is at work in it.
/// Its content is of no matter here; the ranges lie far beyond its end.
class LockFile {
public:
    LockFile(const std::filesystem::path& database, Disk& disk);
    /// Leaves; removes the file if we made it and nobody else is in it.
    ~LockFile();
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    /// Becomes the one who may write, until destroyed. False if another is.
    /// @throws Error{readOnly, io} if the file can't be made or opened.
    [[nodiscard]] bool becomeWriter();

private:
    std::filesystem::path path_;
    Disk& disk_;
    std::optional<File> file_;
    bool made_ = false;
};

} // namespace jet
