#include "tools/system/Console.h"

#include <algorithm>
#include <csignal>
#include <unistd.h>

namespace console {

namespace {

void (*tidyUp)() noexcept = nullptr;

extern "C" void endEarly(int signal) {
    tidyUp();
    static_cast<void>(::raise(signal)); // handled no more: it ends the program
}

} // namespace

std::vector<std::string> words(int count, char** words) {
    return {words + 1, words + std::max(count, 1)};
}

void prepareOutput() {}

bool isWatched() { return ::isatty(STDERR_FILENO) != 0; }

void beforeEarlyEnd(void (*tidy)() noexcept) {
    tidyUp = tidy;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        struct sigaction before {};
        action.sa_handler = endEarly;
        action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            static_cast<void>(::sigaction(signal, &action, nullptr));
    }
}

} // namespace console
