#include "jet/system/System.h"
#include "jet/system/WindowsError.h"
#include "jet/system/WindowsFile.h"

#include <array>
#include <cerrno>
#include <cxxabi.h>
#include <limits>

extern "C" void* __dso_handle; // NOLINT(bugprone-reserved-identifier)

namespace jet::sys {

namespace {

// When a thread ends, the compiler's libraries free its own variables, and call their destructors,
// in the order in which the two were first asked for. A variable is freed first then, and what its
// destructor finds is anything: so a destructor is asked for before there is a variable.
[[maybe_unused]] const int kDestructorsBeforeMemory =
    abi::__cxa_thread_atexit([](void*) {}, nullptr, static_cast<void*>(&__dso_handle));

} // namespace

std::string machineName() {
    std::array<wchar_t, 256> name{};
    auto size = static_cast<DWORD>(name.size());
    if (::GetComputerNameExW(ComputerNamePhysicalDnsHostname, name.data(), &size) == 0)
        return "";
    return std::filesystem::path(std::wstring(name.data(), size)).string();
}

std::uint64_t processNumber() { return ::GetCurrentProcessId(); }

bool mayRun(std::uint64_t process) {
    if (process > std::numeric_limits<DWORD>::max())
        return false;
    const HANDLE handle = ::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE,
                                        static_cast<DWORD>(process));
    if (handle == nullptr)
        return ::GetLastError() != ERROR_INVALID_PARAMETER;
    // One that has ended is kept as long as somebody has a handle of it.
    const bool runs = ::WaitForSingleObject(handle, 0) == WAIT_TIMEOUT;
    ::CloseHandle(handle);
    return runs;
}

std::tm localTime(std::time_t time) {
    std::tm local{};
    ::localtime_s(&local, &time);
    return local;
}

void removeNow(const std::filesystem::path::value_type* path) noexcept { ::DeleteFileW(path); }

std::pmr::memory_resource& pageMemory() { return *std::pmr::new_delete_resource(); }

bool isNoRoom(int error) noexcept { return error == ENOSPC; }

} // namespace jet::sys
