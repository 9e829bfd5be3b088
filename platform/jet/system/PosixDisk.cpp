#include "jet/Disk.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace jet {

namespace {

/// Calls again what a signal has interrupted; the result, or the error number below zero.
template <class Call>
auto retried(Call&& call) {
    while (true) {
        const auto result = call();
        if (result >= 0)
            return result;
        if (errno != EINTR)
            return static_cast<decltype(result)>(-errno);
    }
}

struct flock rangeOf(short type, std::uint64_t offset, std::uint64_t count) {
    struct flock range {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = static_cast<off_t>(offset);
    range.l_len = static_cast<off_t>(count);
    return range;
}

std::int64_t changeOf(const struct stat& info) {
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return info.st_mtim.tv_sec * kNanoseconds + info.st_mtim.tv_nsec;
}

/// What has to be known of a file system that other machines use too.
struct Network {
    std::int64_t type;
    bool remembers; ///< see Disk::Handle
};
constexpr Network kNetworks[] = {
    {0x6969,     true }, // NFS: a client looks at the server again when it gets a lock, or too late
    {0xFF534D42, false}, // SMB in its three generations: the server takes what is remembered away
    {0xFE534D42, false},
    {0x517B,     false},
    {0x5346414F, false}, // AFS
    {0x00C36400, false}, // Ceph
    {0x01021997, false}, // 9P
};

const Network* networkOf(int handle) {
    struct statfs info {};
    if (::fstatfs(handle, &info) != 0) // unreached: only a share loses an open file
        return nullptr;
    const auto type = static_cast<std::int64_t>(static_cast<std::uint32_t>(info.f_type));
    const auto* found = std::ranges::find(kNetworks, type, &Network::type);
    return found == std::end(kNetworks) ? nullptr : found;
}

/// open() that waits for nobody: neither for the other end of a pipe nor, longer than this, for a
/// program that the system asks to let go of the file.
int openAtOnce(const char* path, int flags) {
    for (int tries = 0;; ++tries) {
        const int handle =
            retried([&] { return ::open(path, flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666); });
        if (handle != -EWOULDBLOCK || tries == 100)
            return handle;
        ::usleep(20'000);
    }
}

/// The same file, but a write returns when the server has it; as it was where that can't be had.
int writeThrough(int handle, int flags) { // unreached: see shares.sh
    const std::string same = "/proc/self/fd/" + std::to_string(handle);
    const int through =
        openAtOnce(same.c_str(), (flags & ~(O_CREAT | O_EXCL | O_NOFOLLOW)) | O_DSYNC);
    if (through < 0)
        return handle;
    ::close(handle);
    return through;
}

class SystemHandle final : public Disk::Handle {
public:
    SystemHandle(int handle, bool remembers) : handle_(handle), remembers_(remembers) {}
    SystemHandle(const SystemHandle&) = delete;
    SystemHandle& operator=(const SystemHandle&) = delete;
    ~SystemHandle() override { ::close(handle_); }

    std::int64_t size() override {
        struct stat info {};
        if (::fstat(handle_, &info) != 0) // unreached: only a share loses an open file
            return -errno;
        return info.st_size;
    }
    std::int64_t read(std::uint64_t offset, std::span<std::byte> into) override {
        return retried(
            [&] { return ::pread(handle_, into.data(), into.size(), static_cast<off_t>(offset)); });
    }
    std::int64_t write(std::uint64_t offset, std::span<const std::byte> from) override {
        return retried([&] {
            return ::pwrite(handle_, from.data(), from.size(), static_cast<off_t>(offset));
        });
    }
    int truncate(std::uint64_t size) override {
        return retried([&] { return ::ftruncate(handle_, static_cast<off_t>(size)); });
    }
    int sync() override {
        return retried([&] { return ::fdatasync(handle_); });
    }
    int lock(Disk::Lock kind, std::uint64_t offset, std::uint64_t count) override {
        // Locks of the open file itself: those of the process would go with any other handle on the
        // file.
        const short type = kind == Disk::Lock::none     ? F_UNLCK
                           : kind == Disk::Lock::shared ? F_RDLCK
                                                        : F_WRLCK;
        struct flock range = rangeOf(type, offset, count);
        const int result = retried([&] { return ::fcntl(handle_, F_OFD_SETLK, &range); });
        return result == -EAGAIN || result == -EACCES ? 0 : result < 0 ? result : 1;
    }
    std::int64_t firstHeld(Disk::Lock meeting, std::uint64_t offset, std::uint64_t count) override {
        // The system names any lock in the way, not the first: go on before it.
        std::uint64_t end = offset + count;
        while (end > offset) {
            struct flock range =
                rangeOf(meeting == Disk::Lock::shared ? F_RDLCK : F_WRLCK, offset, end - offset);
            const int result = retried([&] { return ::fcntl(handle_, F_OFD_GETLK, &range); });
            if (result < 0)
                return result;
            if (range.l_type == F_UNLCK)
                break;
            end = std::max(static_cast<std::uint64_t>(range.l_start), offset);
        }
        return static_cast<std::int64_t>(end);
    }
    std::int64_t changedAt() override {
        struct stat info {};
        if (::fstat(handle_, &info) != 0) // unreached: only a share loses an open file
            return -errno;
        return changeOf(info);
    }
    bool isAt(const std::filesystem::path& path) override {
        struct stat mine {};
        struct stat there {};
        return ::fstat(handle_, &mine) == 0 && ::lstat(path.c_str(), &there) == 0 &&
               mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
    }
    int attributes(Disk::Attributes& into) override {
        struct stat info {};
        if (::fstat(handle_, &info) != 0) // unreached: only a share loses an open file
            return -errno;
        into = {
            {info.st_uid, info.st_gid, info.st_mode & 07777U},
            info.st_nlink
        };
        return 0;
    }
    int setOwner(std::uint32_t owner, std::uint32_t group) override {
        return ::fchown(handle_, owner, group) == 0 ? 0 : -errno;
    }
    int setMode(std::uint32_t mode) override {
        return ::fchmod(handle_, static_cast<mode_t>(mode)) == 0 ? 0 : -errno;
    }
    [[nodiscard]] bool remembers() const noexcept override { return remembers_; }

private:
    int handle_;
    bool remembers_;
};

class PosixDisk final : public Disk {
public:
    std::unique_ptr<Handle> open(const std::filesystem::path& path, Mode mode,
                                 int& error) override {
        const int flags = (writes(mode) ? O_RDWR : O_RDONLY) |
                          (makes(mode) ? O_CREAT | O_EXCL : 0) | (isBeside(mode) ? O_NOFOLLOW : 0);
        int handle = openAtOnce(path.c_str(), flags);
        if (handle < 0) {
            error = -handle == ENXIO ? EISDIR : -handle; // a socket, or a device that isn't there
            return nullptr;
        }
        struct stat info {};
        if (::fstat(handle, &info) != 0 || !S_ISREG(info.st_mode)) {
            ::close(handle);
            error = EISDIR;
            return nullptr;
        }
        const Network* network = networkOf(handle);
        // A file that is made in one go is synced at its end, and nobody looks at it before.
        const bool atOnce = writes(mode) && mode != Mode::createNew;
        if (atOnce && network != nullptr) // unreached: see shares.sh
            handle = writeThrough(handle, flags);
        static_cast<void>(::fcntl(handle, F_SETFL, 0)); // O_NONBLOCK; the others can't be set
        return std::make_unique<SystemHandle>(handle, network != nullptr && network->remembers);
    }
    std::filesystem::path resolved(const std::filesystem::path& path) override {
        const std::unique_ptr<char, decltype(&std::free)> whole(::realpath(path.c_str(), nullptr),
                                                                &std::free);
        if (whole)
            return whole.get();
        std::error_code error; // of what isn't there
        std::filesystem::path found = std::filesystem::weakly_canonical(path, error);
        return error || found.empty() ? path : found;
    }
    bool exists(const std::filesystem::path& path) override {
        struct stat info {};
        return ::lstat(path.c_str(), &info) == 0;
    }
    int rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
        return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : -errno;
    }
    int link(const std::filesystem::path& file, const std::filesystem::path& name) override {
        return ::link(file.c_str(), name.c_str()) == 0 ? 0 : -errno;
    }
    int remove(const std::filesystem::path& path) override {
        return ::unlink(path.c_str()) == 0 ? 0 : -errno;
    }
    int list(const std::filesystem::path& folder, std::vector<Entry>& entries) override {
        const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), &::closedir);
        if (!open)
            return -errno;
        while (true) {
            errno = 0;
            const dirent* next = ::readdir(open.get());
            if (!next)
                return -errno;
            struct stat info {};
            const std::string name = next->d_name;
            if (name != "." && name != ".." &&
                ::fstatat(::dirfd(open.get()), next->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0)
                entries.push_back({name, S_ISREG(info.st_mode),
                                   static_cast<std::uint64_t>(info.st_size), changeOf(info)});
        }
    }
    int makeFolder(const std::filesystem::path& folder) override {
        struct stat info {};
        if (::mkdir(folder.c_str(), 0777) == 0)
            return 1;
        const int error = errno;
        const bool there = ::stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
        return error == EEXIST && there ? 0 : -error;
    }
    int copyRights(const std::filesystem::path& from, const std::filesystem::path& to) override {
        struct stat like {};
        struct stat mine {};
        if (::stat(from.c_str(), &like) != 0 || ::stat(to.c_str(), &mine) != 0)
            return -errno;
        const bool group =
            like.st_gid == mine.st_gid || ::chown(to.c_str(), Disk::kSameOwner, like.st_gid) == 0;
        const bool owner =
            like.st_uid == mine.st_uid || ::chown(to.c_str(), like.st_uid, Disk::kSameOwner) == 0;
        if (::chmod(to.c_str(), Rights::allowed(like.st_mode & 07777U, group)) != 0)
            return -errno;
        return owner && group ? 0 : -EPERM;
    }
    int syncFolderOf(const std::filesystem::path& path) override {
        const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
        const int handle =
            retried([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
        if (handle < 0)
            return handle;
        const int result = retried([&] { return ::fsync(handle); });
        ::close(handle);
        // A share's folder may not know how: then its server answers for the names by itself.
        return result == -EINVAL || result == -ENOTSUP ? 0 : result;
    }
};

} // namespace

Disk& Disk::system() {
    static PosixDisk disk;
    return disk;
}

} // namespace jet
