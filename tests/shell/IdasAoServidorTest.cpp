// How often a window waits for the server in each of its operations: what a long way there costs.
#ifdef VALTRINO_SERVER

#include "support/WindowOperations.h"

#include <algorithm>

namespace {

class WindowsFarAway : public WindowOperations, public testing::WithParamInterface<Kept> {
protected:
    WindowsFarAway() : WindowOperations(400, 20'000) {}
    std::uint64_t asked(const Operation& operation) {
        operation.prepare();
        QCoreApplication::processEvents();
        std::uint64_t most = 0;
        for (int i = 0; i < operation.times; ++i) {
            const std::uint64_t before = data().Automacao.store().tally().waits;
            operation.work();
            QCoreApplication::processEvents();
            most = std::max(most, data().Automacao.store().tally().waits - before);
        }
        return most;
    }
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(WindowsFarAway);
INSTANTIATE_TEST_SUITE_P(, WindowsFarAway, onServers(), keptName);

TEST_P(WindowsFarAway, WaitForTheServerAFewTimesAndOnceToWalk) {
    for (const Operation& operation : operations()) {
        const std::uint64_t questions = asked(operation);
        EXPECT_LE(questions, operation.waits) << operation.window << ": " << operation.name;
    }
}

} // namespace

#endif
