#include "bench/BenchWindows.h"

#include "controls/Failure.h"
#include "controls/Style.h"

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
