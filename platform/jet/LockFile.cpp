#include "jet/LockFile.h"

#include "jet/Error.h"

#include <system_error>

namespace jet {

namespace {

constexpr std::uint64_t kUsersAt = 0x10000001;
constexpr std::uint64_t kUsers = 255;
constexpr std::uint64_t kWriterAt = 0x70001001;

} // namespace

LockFile::LockFile(const std::filesystem::path& database, Disk& disk)
    : path_(std::filesystem::path(database).replace_extension(".ldb")), disk_(disk) {}

bool LockFile::becomeWriter() {
    while (true) {
        try {
            file_.emplace(path_, File::Mode::createNew, disk_);
            made_ = true;
        } catch (const Error& error) {
            if (error.code() != Errc::exists)
                throw;
            made_ = false;
            try {
                file_.emplace(path_, File::Mode::readWrite, disk_);
            } catch (const Error& gone) {
                if (gone.code() == Errc::notFound)
                    continue;
                throw;
            }
        }
        if (!file_->tryLock(Disk::Lock::exclusive, kWriterAt)) {
            file_.reset();
            return false;
        }
        // Whoever left meanwhile may have removed the very file we opened.
        if (file_->isAt(path_))
            return true;
        file_.reset();
    }
}

LockFile::~LockFile() {
    if (!file_ || !made_)
        return;
    try {
        if (file_->firstHeld(kUsersAt, kUsers) == kUsersAt + kUsers)
            static_cast<void>(disk_.remove(path_));
    } catch (const Error&) { // NOLINT(bugprone-empty-catch)
        // A lock file left behind does no harm.
    }
}

} // namespace jet
