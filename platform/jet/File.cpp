#include "jet/File.h"

#include "jet/Error.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace jet {

namespace {

[[noreturn]] void fail(const char* action, const std::filesystem::path& path, int error) {
    const Errc code = error == ENOENT || error == ENOTDIR                    ? Errc::notFound
                      : error == EEXIST                                      ? Errc::exists
                      : error == ENOSPC || error == EDQUOT || error == EFBIG ? Errc::full
                      : error == EACCES || error == EPERM || error == EROFS  ? Errc::readOnly
                                                                             : Errc::io;
    const char* reason = code == Errc::notFound   ? "o arquivo não existe"
                         : code == Errc::exists   ? "o arquivo já existe"
                         : code == Errc::full     ? "não há espaço no disco"
                         : code == Errc::readOnly ? "sem permissão"
                                                  : nullptr;
    throw Error(
        code, "Não foi possível " + std::string(action) + " o arquivo \"" + path.string() + "\": " +
                  (reason ? std::string(reason) : std::generic_category().message(error)) + ".");
}

struct flock exclusive(std::uint64_t offset, std::uint64_t count) {
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    range.l_start = static_cast<off_t>(offset);
    range.l_len = static_cast<off_t>(count);
    return range;
}

} // namespace

File::File(std::filesystem::path path, Mode mode) : path_(std::move(path)) {
    const int flags = mode == Mode::read        ? O_RDONLY
                      : mode == Mode::readWrite ? O_RDWR
                                                : O_RDWR | O_CREAT | O_EXCL;
    handle_ = ::open(path_.c_str(), flags | O_CLOEXEC, 0666);
    if (handle_ < 0)
        fail(mode == Mode::createNew ? "criar" : "abrir", path_, errno);
    struct stat info {};
    if (::fstat(handle_, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(std::exchange(handle_, -1));
        throw Error(Errc::io, "\"" + path_.string() + "\" não é um arquivo.");
    }
}

File::~File() {
    if (handle_ >= 0)
        ::close(handle_);
}

File::File(File&& other) noexcept
    : path_(std::move(other.path_)), handle_(std::exchange(other.handle_, -1)) {}

std::uint64_t File::size() const {
    struct stat info {};
    if (::fstat(handle_, &info) != 0)
        fail("ler", path_, errno);
    return static_cast<std::uint64_t>(info.st_size);
}

void File::read(std::uint64_t offset, std::span<std::byte> into) const {
    while (!into.empty()) {
        const ssize_t got = ::pread(handle_, into.data(), into.size(), static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            fail("ler", path_, errno);
        if (got == 0)
            throw Error(Errc::io, "O arquivo \"" + path_.string() +
                                      "\" terminou antes do esperado: ele ficou menor.");
        into = into.subspan(static_cast<std::size_t>(got));
        offset += static_cast<std::uint64_t>(got);
    }
}

void File::write(std::uint64_t offset, std::span<const std::byte> from) {
    while (!from.empty()) {
        const ssize_t put = ::pwrite(handle_, from.data(), from.size(), static_cast<off_t>(offset));
        if (put < 0 && errno == EINTR)
            continue;
        if (put < 0)
            fail("gravar", path_, errno);
        from = from.subspan(static_cast<std::size_t>(put));
        offset += static_cast<std::uint64_t>(put);
    }
}

void File::truncate(std::uint64_t size) {
    while (::ftruncate(handle_, static_cast<off_t>(size)) != 0)
        if (errno != EINTR)
            fail("gravar", path_, errno);
}

void File::sync() {
    while (::fdatasync(handle_) != 0)
        if (errno != EINTR)
            fail("gravar", path_, errno);
}

bool File::tryLock(std::uint64_t offset) {
    // Locks of the open file itself: those of the process would go with any other handle on the
    // file.
    struct flock range = exclusive(offset, 1);
    while (::fcntl(handle_, F_OFD_SETLK, &range) != 0) {
        if (errno == EAGAIN || errno == EACCES)
            return false;
        if (errno != EINTR)
            fail("reservar", path_, errno);
    }
    return true;
}

bool File::isLockedByAnother(std::uint64_t offset, std::uint64_t count) const noexcept {
    struct flock range = exclusive(offset, count);
    return ::fcntl(handle_, F_OFD_GETLK, &range) != 0 || range.l_type != F_UNLCK;
}

bool File::isAt(const std::filesystem::path& path) const noexcept {
    struct stat mine {};
    struct stat there {};
    return ::fstat(handle_, &mine) == 0 && ::stat(path.c_str(), &there) == 0 &&
           mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
}

} // namespace jet
