#include "jet/Waiting.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace jet {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kShortestPause{1};
constexpr milliseconds kLongestPause{5};
/// Until then nobody notices that the window stands still.
constexpr milliseconds kUnnoticed{60};

std::function<void()>& hook() {
    static std::function<void()> set;
    return set;
}

} // namespace

void setWaitHook(std::function<void()> called) { hook() = std::move(called); }

bool waitFor(const std::function<bool()>& attempt, milliseconds longest) {
    if (attempt())
        return true;
    const auto begin = std::chrono::steady_clock::now();
    milliseconds pauses = kShortestPause;
    while (true) {
        const auto waited = std::chrono::steady_clock::now() - begin;
        if (waited >= longest)
            return false;
        if (waited >= kUnnoticed && hook())
            hook()();
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
