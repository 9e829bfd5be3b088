#include "support/Program.h"
#include "support/TemporaryFolder.h"
#include "support/system/WindowsLine.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <windows.h>

namespace {

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

ProgramResult runProgram(const std::vector<std::string>& words,
                         const std::string& /*environment*/) {
    const TemporaryFolder folder;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const auto open = [&](const std::filesystem::path& path, DWORD access) {
        return ::CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                             OPEN_ALWAYS, 0, nullptr);
    };
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = open("NUL", GENERIC_READ);
    start.hStdOutput = open(folder / "stdout", GENERIC_WRITE);
    start.hStdError = open(folder / "stderr", GENERIC_WRITE);
    PROCESS_INFORMATION made{};
    std::wstring line = windowsLine(words);
    const bool started = ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                          nullptr, &start, &made) != 0;
    ProgramResult result;
    if (started) {
        ::WaitForSingleObject(made.hProcess, INFINITE);
        DWORD code = 0;
        ::GetExitCodeProcess(made.hProcess, &code);
        result.code = static_cast<int>(code);
        ::CloseHandle(made.hThread);
        ::CloseHandle(made.hProcess);
    }
    for (const HANDLE handle : {start.hStdInput, start.hStdOutput, start.hStdError})
        ::CloseHandle(handle);
    if (!started)
        throw std::runtime_error("can't run " + words.front());
    result.out = contentOf(folder / "stdout");
    result.err = contentOf(folder / "stderr");
    return result;
}

void endAtOnce() {
    ::TerminateProcess(::GetCurrentProcess(), 1);
    std::abort(); // unreached
}
