#include "controls/Failure.h"

#include <utility>

namespace {

FailureHandler& current() {
    static FailureHandler handler;
    return handler;
}

bool failing = false;
int pauses = 0;

} // namespace

FailureHandler setFailureHandler(FailureHandler handler) {
    return std::exchange(current(), std::move(handler));
}

void endWithReport(const std::exception_ptr& failure) {
    if (!current())
        std::terminate();
    failing = true;
    current()(failure);
    failing = false;
}

bool isFailing() noexcept { return failing; }

HandlersPaused::HandlersPaused() noexcept { ++pauses; }
HandlersPaused::~HandlersPaused() { --pauses; }
bool HandlersPaused::anyLives() noexcept { return pauses > 0; }
