#include "tools/Machine.h"
#include "tools/Tools.h"

#include <array>
#include <csignal>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

bool fellBy(Blow blow, std::vector<std::string> words, const std::filesystem::path& folder) {
    const int signal = blow == Blow::key ? SIGINT : blow == Blow::machine ? SIGTERM : SIGKILL;
    words.insert(words.begin(), VALTRINO_MDB);
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const pid_t program = ::fork();
    if (program == 0) {
        ::signal(signal, SIG_DFL); // whoever runs the tests may ignore it
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::execv(VALTRINO_MDB, arguments.data());
        ::_exit(127);
    }
    // It waits before and after whatever it asks of the system, until it has been looked at.
    int status = 0;
    while (::waitpid(program, &status, 0) == program && WIFSTOPPED(status)) {
        if (std::ranges::any_of(filesIn(folder), isPart)) {
            ::kill(program, signal);
            ::ptrace(PTRACE_DETACH, program, nullptr, nullptr);
        } else {
            ::ptrace(PTRACE_SYSCALL, program, nullptr, nullptr);
        }
    }
    return WIFSIGNALED(status) && WTERMSIG(status) == signal;
}

std::vector<std::string> asOrdinaryUser(std::vector<std::string> words) {
    if (::geteuid() == 0) // for whom nothing is forbidden
        words.insert(words.begin(),
                     {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
    return words;
}

std::string machineName() {
    std::array<char, 256> name{};
    EXPECT_EQ(::gethostname(name.data(), name.size() - 1), 0);
    return name.data();
}
