#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <memory_resource>
#include <string>

/// What the engine asks of the operating system beside files (those: Disk.h). One source a system,
/// chosen by CMake; nothing else of the engine knows which system it runs on.
namespace jet::sys {

/// What the machine is called in its network; "" if that can't be told.
[[nodiscard]] std::string machineName();

/// The number of this program among those that run on this machine.
[[nodiscard]] std::uint64_t processNumber();
/// Whether a program of that number runs on this machine, or may: false only if surely not.
[[nodiscard]] bool mayRun(std::uint64_t process);

/// In the time of the place where the machine stands.
[[nodiscard]] std::tm localTime(std::time_t time);

/// Takes a file away, at any moment: while a signal is handled as well.
void removeNow(const std::filesystem::path::value_type* path) noexcept;

/// Memory for pages of files, which come and go by the thousand. From any thread; what is given
/// back may stay with the program, for the next ones.
[[nodiscard]] std::pmr::memory_resource& pageMemory();

/// Whether the error number of a call about files says that there is no room.
[[nodiscard]] bool isNoRoom(int error) noexcept;

} // namespace jet::sys
