#include "jet/Waiting.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <utility>

namespace jet {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kShortestPause{1};
constexpr milliseconds kLongestPause{5};
/// Until then nobody notices that the window stands still.
constexpr milliseconds kUnnoticed{60};

/// Set by the program, called by whatever thread waits: the daily copy has one of its own.
struct Hook {
    std::mutex mutex;
    std::function<void()> called;
};

Hook& hook() {
    static Hook set;
    return set;
}

void callHook() {
    const std::function<void()> called = [] {
        const std::lock_guard lock(hook().mutex);
        return hook().called;
    }();
    if (called)
        called();
}

} // namespace

void setWaitHook(std::function<void()> called) {
    const std::lock_guard lock(hook().mutex);
    hook().called = std::move(called);
}

bool waitFor(const std::function<bool()>& attempt, milliseconds longest) {
    if (attempt())
        return true;
    const auto begin = std::chrono::steady_clock::now();
    milliseconds pauses = kShortestPause;
    while (true) {
        const auto waited = std::chrono::steady_clock::now() - begin;
        if (waited >= longest)
            return false;
        if (waited >= kUnnoticed)
            callHook();
        std::this_thread::sleep_for(pauses);
        pauses = std::min(pauses * 2, kLongestPause);
        if (attempt())
            return true;
    }
}

void pause(milliseconds time) {
    waitFor([] { return false; }, time);
}

} // namespace jet
