#include "jet/LockFile.h"

#include "jet/Error.h"

#include <system_error>

namespace jet {

namespace {

constexpr std::uint64_t kUsersAt = 0x10000001;
constexpr std::uint64_t kUsers = 255;
constexpr std::uint64_t kWriterAt = 0x70001001;

} // namespace

LockFile::LockFile(const std::filesystem::path& database)
    : path_(std::filesystem::path(database).replace_extension(".ldb")) {}

bool LockFile::becomeWriter() {
    while (true) {
        try {
            file_.emplace(path_, File::Mode::createNew);
            made_ = true;
        } catch (const Error& error) {
            if (error.code() != Errc::exists)
                throw;
            made_ = false;
            try {
                file_.emplace(path_, File::Mode::readWrite);
            } catch (const Error& gone) {
                if (gone.code() == Errc::notFound)
                    continue;
                throw;
            }
        }
        if (!file_->tryLock(kWriterAt)) {
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
    if (std::error_code ignored; !file_->isLockedByAnother(kUsersAt, kUsers))
        std::filesystem::remove(path_, ignored);
}

} // namespace jet
