#pragma once

#include "jet/page/CommitPairs.h"
#include "jet/share/LockFile.h"

#include <gtest/gtest.h>

/// Whether somebody has the database to write in it, so that other stations have to wait.
inline bool isHeldForWriting(const std::filesystem::path& database) {
    const jet::File lock(std::filesystem::path(database).replace_extension(".ldb"),
                         jet::File::Mode::readWrite);
    return lock.isHeld(jet::LockFile::kWriting);
}

/// A program in the middle of writing the file: nobody can read meanwhile.
class WritingProgram {
public:
    WritingProgram(const std::filesystem::path& database, jet::Version version)
        : file_(database, jet::File::Mode::readWrite), format_(jet::formatOf(version)),
          lock_(std::filesystem::path(database).replace_extension(".ldb"),
                jet::File::Mode::readWrite),
          before_(jet::CommitPairs(file_, format_)[kUser]) {
        EXPECT_TRUE(lock_.tryLock(jet::Disk::Lock::exclusive, 0x10000000 + kUser));
        jet::CommitPairs::write(file_, format_, kUser, jet::CommitPairs::kWriting);
    }
    WritingProgram(const WritingProgram&) = delete;
    WritingProgram& operator=(const WritingProgram&) = delete;
    ~WritingProgram() { jet::CommitPairs::write(file_, format_, kUser, before_); }

private:
    static constexpr unsigned kUser = 9;
    jet::File file_;
    const jet::Format& format_;
    jet::File lock_;
    std::uint16_t before_;
};
