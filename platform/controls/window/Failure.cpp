#include "controls/window/Failure.h"

#include <utility>

namespace {

FailureHandler& failureHandler() {
    static FailureHandler handler;
    return handler;
}

bool failing = false;
int pauses = 0;

} // namespace

FailureHandler setFailureHandler(FailureHandler handler) {
    return std::exchange(failureHandler(), std::move(handler));
}

void endWithReport(const std::exception_ptr& failure) {
    if (!failureHandler())
        std::terminate();
    failing = true;
    failureHandler()(failure);
    failing = false;
}

bool isFailing() noexcept { return failing; }

HandlersPaused::HandlersPaused() noexcept { ++pauses; }
HandlersPaused::~HandlersPaused() { --pauses; }
bool HandlersPaused::anyLives() noexcept { return pauses > 0; }
