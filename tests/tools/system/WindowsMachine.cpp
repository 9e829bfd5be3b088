#include "support/system/WindowsLine.h"
#include "tools/Machine.h"
#include "tools/Tools.h"

#include <array>
#include <windows.h>

namespace {

/// What a program has ended with that Ctrl+C ended.
constexpr DWORD kEndedByKey = 0xC000013A;
constexpr UINT kKilled = 9;
/// Milliseconds in which the key has come there: what is needed to take it may be in the hands of
/// what stands still.
constexpr DWORD kMostForKey = 200;

/// Ctrl+C goes to everybody at the console.
BOOL WINAPI stay(DWORD /*what*/) { return TRUE; }

/// There is one.
bool haveConsole() {
    static const bool have = (::GetConsoleCP() != 0 || ::AllocConsole() != 0) &&
                             ::SetConsoleCtrlHandler(stay, TRUE) != 0;
    return have;
}

bool isAtWork(const std::filesystem::path& folder) {
    try {
        return std::ranges::any_of(filesIn(folder), isPart);
    } catch (const std::filesystem::filesystem_error&) {
        return false; // changed while it was looked at
    }
}

} // namespace

bool fellBy(Blow blow, std::vector<std::string> words, const std::filesystem::path& folder) {
    if (blow != Blow::kill && !haveConsole()) {
        ADD_FAILURE() << "no console";
        return false;
    }
    words.insert(words.begin(), VALTRINO_MDB);
    std::wstring line = windowsLine(words);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION made{};
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                         &made) == 0) {
        ADD_FAILURE() << "can't run " << words.front();
        return false;
    }
    // It stands still while it is looked at.
    for (bool goesOn = true; goesOn && ::WaitForSingleObject(made.hProcess, 0) == WAIT_TIMEOUT;) {
        ::SuspendThread(made.hThread);
        if (isAtWork(folder)) {
            if (blow == Blow::kill)
                ::TerminateProcess(made.hProcess, kKilled);
            else
                EXPECT_NE(::GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0) << ::GetLastError();
            ::WaitForSingleObject(made.hProcess, kMostForKey);
            goesOn = false;
        }
        ::ResumeThread(made.hThread);
    }
    ::WaitForSingleObject(made.hProcess, INFINITE);
    DWORD code = 0;
    ::GetExitCodeProcess(made.hProcess, &code);
    ::CloseHandle(made.hThread);
    ::CloseHandle(made.hProcess);
    return code == (blow == Blow::kill ? kKilled : kEndedByKey);
}

std::vector<std::string> asOrdinaryUser(std::vector<std::string> words) { return words; }

std::string machineName() {
    std::array<wchar_t, 256> name{};
    auto size = static_cast<DWORD>(name.size());
    EXPECT_NE(::GetComputerNameExW(ComputerNamePhysicalDnsHostname, name.data(), &size), 0);
    return std::filesystem::path(name.data()).string();
}
