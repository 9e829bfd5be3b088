#include "tools/system/Console.h"

#include <array>
#include <fcntl.h>
#include <io.h>
#include <iostream>
#include <streambuf>
#include <windows.h>

namespace console {

namespace {

void (*tidyUp)() noexcept = nullptr;

HANDLE worker = nullptr; ///< the thread that does what was asked for

/// Runs beside the worker, which must do nothing more: it would miss what is taken away from it. It
/// isn't stopped where it has the lock that taking files away needs too.
BOOL WINAPI endEarly(DWORD /*what*/) {
    const HANDLE heap = ::GetProcessHeap();
    ::HeapLock(heap);
    ::SuspendThread(worker);
    CONTEXT stopped{}; // asked for, it is when the thread really stands still
    stopped.ContextFlags = CONTEXT_CONTROL;
    ::GetThreadContext(worker, &stopped);
    ::HeapUnlock(heap);
    tidyUp();
    ::TerminateProcess(::GetCurrentProcess(), STATUS_CONTROL_C_EXIT);
    return TRUE;
}

std::string utf8(const std::wstring& text) {
    const int count = static_cast<int>(text.size());
    const int size =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), count, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), count, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

/// How many bytes at the end belong to a character that isn't whole yet.
std::size_t unfinished(const std::string& bytes) {
    for (std::size_t back = 1; back <= std::min<std::size_t>(3, bytes.size()); ++back) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
        if (byte < 0x80)
            return 0;
        if (byte >= 0xC0)
            return back < (byte >= 0xF0 ? 4U : byte >= 0xE0 ? 3U : 2U) ? back : 0;
    }
    return 0;
}

/// Characters on a screen, whatever page of them it is set to.
class Screen final : public std::streambuf {
public:
    explicit Screen(HANDLE handle) : handle_(handle) { setp(room_.data(), room_.data() + kRoom); }

protected:
    int_type overflow(int_type byte) override {
        if (sync() != 0)
            return traits_type::eof();
        if (!traits_type::eq_int_type(byte, traits_type::eof()))
            sputc(traits_type::to_char_type(byte));
        return traits_type::not_eof(byte);
    }
    int sync() override {
        waiting_.append(pbase(), pptr());
        setp(room_.data(), room_.data() + kRoom);
        std::string later = waiting_.substr(waiting_.size() - unfinished(waiting_));
        waiting_.resize(waiting_.size() - later.size());
        const int size = static_cast<int>(waiting_.size());
        std::wstring text(waiting_.size(), L'\0');
        text.resize(static_cast<std::size_t>(
            ::MultiByteToWideChar(CP_UTF8, 0, waiting_.data(), size, text.data(), size)));
        waiting_ = std::move(later);
        DWORD written = 0;
        return text.empty() || ::WriteConsoleW(handle_, text.data(),
                                               static_cast<DWORD>(text.size()), &written, nullptr)
                   ? 0
                   : -1;
    }

private:
    static constexpr std::size_t kRoom = 4096;
    HANDLE handle_;
    std::array<char, kRoom> room_{};
    std::string waiting_;
};

/// Null if it is none.
HANDLE screenOf(DWORD which, DWORD& mode) {
    const HANDLE handle = ::GetStdHandle(which);
    return ::GetConsoleMode(handle, &mode) != 0 ? handle : nullptr;
}

void show(std::ostream& stream, DWORD which, int file) {
    ::_setmode(file, _O_BINARY);
    DWORD mode = 0;
    if (const HANDLE handle = screenOf(which, mode))
        stream.rdbuf(new Screen(handle)); // as long as the program itself
}

} // namespace

std::vector<std::string> words(int /*count*/, char** /*words*/) {
    std::vector<std::string> all;
    int count = 0;
    wchar_t** const given = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    for (int i = 1; i < count; ++i)
        all.push_back(utf8(given[i]));
    ::LocalFree(given);
    return all;
}

void prepareOutput() {
    show(std::cout, STD_OUTPUT_HANDLE, 1);
    show(std::cerr, STD_ERROR_HANDLE, 2);
}

bool isWatched() {
    DWORD mode = 0;
    const HANDLE handle = screenOf(STD_ERROR_HANDLE, mode);
    return handle != nullptr &&
           ::SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void beforeEarlyEnd(void (*tidy)() noexcept) {
    tidyUp = tidy;
    const HANDLE self = ::GetCurrentProcess();
    ::DuplicateHandle(self, ::GetCurrentThread(), self, &worker, 0, FALSE, DUPLICATE_SAME_ACCESS);
    ::SetConsoleCtrlHandler(endEarly, TRUE);
}

} // namespace console
