#pragma once

#include <csignal>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

/// Where it is measured what the tests reach.
extern "C" int __llvm_profile_write_file()
    __attribute__((weak)); // NOLINT(bugprone-reserved-identifier)

/// Ends what fork() has made of the test, without the test's own end.
[[noreturn]] inline void endFork(int status) {
    if (&__llvm_profile_write_file != nullptr)
        static_cast<void>(__llvm_profile_write_file());
    ::_exit(status);
}

/// A program that runs beside the test; killed, if need be, when this goes.
class Process {
public:
    explicit Process(std::vector<std::string> words) {
        int in[2];
        int out[2];
        if (::pipe(in) != 0 || ::pipe(out) != 0)
            throw std::runtime_error("pipe");
        id_ = ::fork();
        if (id_ == 0) {
            ::dup2(in[0], STDIN_FILENO);
            ::dup2(out[1], STDOUT_FILENO);
            for (const int end : {in[0], in[1], out[0], out[1]})
                ::close(end);
            std::vector<char*> arguments;
            arguments.reserve(words.size() + 1);
            for (std::string& word : words)
                arguments.push_back(word.data());
            arguments.push_back(nullptr);
            ::execv(arguments[0], arguments.data());
            ::_exit(127);
        }
        ::close(in[0]);
        ::close(out[1]);
        in_ = in[1];
        out_ = out[0];
    }
    Process(Process&& other) noexcept
        : id_(std::exchange(other.id_, -1)), in_(std::exchange(other.in_, -1)),
          out_(std::exchange(other.out_, -1)) {}
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() {
        if (id_ > 0)
            kill();
        closeInput();
        if (out_ >= 0)
            ::close(out_);
    }

    /// What it has written next, when there is something; "" at its end.
    std::string read() {
        char buffer[4096];
        const auto got = ::read(out_, buffer, sizeof buffer);
        return got > 0 ? std::string(buffer, static_cast<std::size_t>(got)) : "";
    }
    void closeInput() {
        if (in_ >= 0)
            ::close(std::exchange(in_, -1));
    }
    /// Its exit code; what it has written so far is in `said`.
    int finish(std::string* said = nullptr) {
        closeInput();
        for (std::string part = read(); !part.empty(); part = read())
            if (said)
                *said += part;
        int status = 0;
        ::waitpid(std::exchange(id_, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    void kill() {
        ::kill(id_, SIGKILL);
        ::waitpid(std::exchange(id_, -1), nullptr, 0);
    }

private:
    pid_t id_ = -1;
    int in_ = -1;
    int out_ = -1;
};
