#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <grp.h>
#include <iostream>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

/// An account of the machine that works beside the test, in a process of its own, and whose new
/// files nobody else may use by themselves. Only root can become one.
class Account {
public:
    /// `own` is the account's first group, `shop` another that it belongs to.
    Account(uid_t user, gid_t own, gid_t shop) : user_(user), own_(own), shop_(shop) {}

    static bool canBeHad() { return ::geteuid() == 0; }

    /// Whether `work` was done without an exception. It ends as the system ends it: see died().
    [[nodiscard]] bool does(const std::function<void()>& work) {
        start(work);
        return finish();
    }
    /// The same in two parts: between start() and finish() it stands where its work calls pause().
    void start(const std::function<void()>& work) {
        if (::pipe(paused_) != 0 || ::pipe(goes_) != 0)
            throw std::runtime_error("pipe");
        id_ = ::fork();
        if (id_ == 0)
            ::_exit(run(work));
        ::close(paused_[1]);
        ::close(goes_[0]);
        char word = 0;
        if (::read(paused_[0], &word, 1) < 0) // its end as well
            throw std::runtime_error("pipe");
    }
    void pause() {
        ::close(goes_[1]);
        char word = 0;
        if (::write(paused_[1], "1", 1) != 1 || ::read(goes_[0], &word, 1) < 0)
            throw std::runtime_error("pipe");
    }
    bool finish() {
        ::close(goes_[1]);
        ::close(paused_[0]);
        int status = 0;
        ::waitpid(id_, &status, 0);
        signal_ = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    /// The signal that ended the last work, or 0.
    [[nodiscard]] int died() const noexcept { return signal_; }

private:
    int run(const std::function<void()>& work) {
        ::close(paused_[0]);
        ::umask(077);
        if (::setgroups(1, &shop_) != 0 || ::setgid(own_) != 0 || ::setuid(user_) != 0)
            return 2;
        try {
            work();
            return testing::Test::HasFailure() ? 1 : 0;
        } catch (const std::exception& error) {
            std::cerr << "account " << user_ << ": " << error.what() << std::endl;
            return 1;
        }
    }

    uid_t user_;
    gid_t own_;
    gid_t shop_;
    pid_t id_ = -1;
    int paused_[2] = {-1, -1};
    int goes_[2] = {-1, -1};
    int signal_ = 0;
};
