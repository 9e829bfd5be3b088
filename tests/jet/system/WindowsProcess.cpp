#include "jet/Process.h"

#include <filesystem>
#include <stdexcept>
#include <utility>
#include <windows.h>

struct Process::Running {
    HANDLE program = nullptr;
    HANDLE in = nullptr;
    HANDLE out = nullptr;
};

namespace {

void close(HANDLE& handle) {
    if (handle != nullptr)
        ::CloseHandle(std::exchange(handle, nullptr));
}

/// A pipe whose one end the program gets.
void makePipe(HANDLE& forProgram, HANDLE& forTest, bool programReads) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    if (::CreatePipe(&reading, &writing, &inherited, 0) == 0)
        throw std::runtime_error("pipe");
    forProgram = programReads ? reading : writing;
    forTest = programReads ? writing : reading;
    ::SetHandleInformation(forTest, HANDLE_FLAG_INHERIT, 0);
}

} // namespace

Process::Process(const std::vector<std::string>& words) : running_(std::make_unique<Running>()) {
    std::wstring line;
    for (const std::string& word : words)
        line += (line.empty() ? L"\"" : L" \"") + std::filesystem::path(word).wstring() + L"\"";
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    makePipe(start.hStdInput, running_->in, true);
    makePipe(start.hStdOutput, running_->out, false);
    start.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION made{};
    const bool started = ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                          nullptr, &start, &made) != 0;
    ::CloseHandle(start.hStdInput);
    ::CloseHandle(start.hStdOutput);
    if (!started)
        throw std::runtime_error("can't start " + words.front());
    ::CloseHandle(made.hThread);
    running_->program = made.hProcess;
}

Process::Process(Process&& other) noexcept = default;

Process::~Process() {
    if (!running_)
        return;
    if (running_->program != nullptr)
        kill();
    closeInput();
    close(running_->out);
}

std::string Process::read() {
    char buffer[4096];
    DWORD got = 0;
    if (::ReadFile(running_->out, buffer, sizeof buffer, &got, nullptr) == 0)
        return "";
    std::string text(buffer, got);
    std::erase(text, '\r'); // a stream of text writes them before each end of line
    return text;
}

void Process::closeInput() { close(running_->in); }

int Process::finish(std::string* said) {
    closeInput();
    for (std::string part = read(); !part.empty(); part = read())
        if (said != nullptr)
            *said += part;
    ::WaitForSingleObject(running_->program, INFINITE);
    DWORD code = 0;
    ::GetExitCodeProcess(running_->program, &code);
    close(running_->program);
    return static_cast<int>(code);
}

void Process::kill() {
    ::TerminateProcess(running_->program, 1);
    ::WaitForSingleObject(running_->program, INFINITE);
    close(running_->program);
}
