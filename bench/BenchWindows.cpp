#include "bench/BenchWindows.h"

#include "controls/look/Style.h"
#include "controls/window/Failure.h"

#include <exception>

namespace {

void giveUp(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    std::exit(EXIT_FAILURE);
}

} // namespace

void prepareWindows(QApplication& application, const MessageFunction& answer) {
    aplicarEstilo(application);
    setMessageFunction(answer);
    setFailureHandler(&giveUp);
}
