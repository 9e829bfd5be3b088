#include "jet/system/System.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <sys/mman.h>
#include <unistd.h>

namespace jet::sys {

namespace {

/// Large pieces begin where the processor's large pages do, and ask for those: the first touch of
/// each of its own small ones would cost as much as reading a page of the file.
class LargePages final : public std::pmr::memory_resource {
    static constexpr std::size_t kLarge = std::size_t{2} << 20;
    static std::size_t aligned(std::size_t bytes, std::size_t alignment) {
        return bytes < kLarge ? alignment : kLarge;
    }

    void* do_allocate(std::size_t bytes, std::size_t alignment) override {
        void* const piece = heap_.allocate(bytes, aligned(bytes, alignment));
        if (bytes >= kLarge)
            ::madvise(piece, bytes, MADV_HUGEPAGE);
        return piece;
    }
    void do_deallocate(void* piece, std::size_t bytes, std::size_t alignment) override {
        heap_.deallocate(piece, bytes, aligned(bytes, alignment));
    }
    // unreached: it has to be said, though nobody asks
    [[nodiscard]] bool do_is_equal(const memory_resource& other) const noexcept override {
        return this == &other;
    }

    memory_resource& heap_ = *std::pmr::new_delete_resource();
};

} // namespace

std::string machineName() {
    std::array<char, 256> name{};
    if (::gethostname(name.data(), name.size() - 1) != 0) // unreached: there is room for any name
        return "";
    return name.data();
}

std::uint64_t processNumber() { return static_cast<std::uint64_t>(::getpid()); }

bool mayRun(std::uint64_t process) {
    return ::kill(static_cast<::pid_t>(process), 0) == 0 || errno != ESRCH;
}

std::tm localTime(std::time_t time) {
    std::tm local{};
    ::localtime_r(&time, &local);
    return local;
}

void removeNow(const std::filesystem::path::value_type* path) noexcept {
    static_cast<void>(::unlink(path));
}

std::pmr::memory_resource& pageMemory() {
#ifdef JET_PAGES_WATCHED
    return *std::pmr::new_delete_resource();
#else
    static auto& pool = *new std::pmr::synchronized_pool_resource({512, 4096}, new LargePages);
    return pool; // until the end: what is destroyed there may have pages still
#endif
}

bool isNoRoom(int error) noexcept { return error == ENOSPC || error == EDQUOT; }

} // namespace jet::sys
