#include "jet/system/System.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace jet::sys {

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

bool isNoRoom(int error) noexcept { return error == ENOSPC || error == EDQUOT; }

} // namespace jet::sys
