#include "jet/Process.h"

#include <csignal>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

struct Process::Running {
    pid_t id = -1;
    int in = -1;
    int out = -1;
};

Process::Process(const std::vector<std::string>& words) : running_(std::make_unique<Running>()) {
    int in[2];
    int out[2];
    if (::pipe(in) != 0 || ::pipe(out) != 0)
        throw std::runtime_error("pipe");
    std::vector<std::string> copies = words;
    std::vector<char*> arguments;
    arguments.reserve(copies.size() + 1);
    for (std::string& word : copies)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    running_->id = ::fork();
    if (running_->id == 0) {
        ::dup2(in[0], STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        for (const int end : {in[0], in[1], out[0], out[1]})
            ::close(end);
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    running_->in = in[1];
    running_->out = out[0];
}

Process::Process(Process&& other) noexcept = default;

Process::~Process() {
    if (!running_)
        return;
    if (running_->id > 0)
        kill();
    closeInput();
    ::close(running_->out);
}

std::string Process::read() {
    char buffer[4096];
    const auto got = ::read(running_->out, buffer, sizeof buffer);
    return got > 0 ? std::string(buffer, static_cast<std::size_t>(got)) : "";
}

void Process::closeInput() {
    if (running_->in >= 0)
        ::close(std::exchange(running_->in, -1));
}

int Process::finish(std::string* said) {
    closeInput();
    for (std::string part = read(); !part.empty(); part = read())
        if (said != nullptr)
            *said += part;
    int status = 0;
    ::waitpid(std::exchange(running_->id, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

void Process::kill() {
    ::kill(running_->id, SIGKILL);
    ::waitpid(std::exchange(running_->id, -1), nullptr, 0);
}
