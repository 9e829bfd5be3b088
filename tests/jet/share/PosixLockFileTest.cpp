// How a machine's name stands in the lock file, whatever it is: where a test may give it one.
#include "jet/Fork.h"
#include "jet/LockSlots.h"

#include <functional>
#include <sched.h>

using namespace jet;

namespace {

class NamedMachines : public LockSlots {};

/// What `name` is called where nobody is touched by it; false if that can't be had.
bool isCalledFor(const std::string& name, const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::unshare(CLONE_NEWUTS) != 0 || ::sethostname(name.data(), name.size()) != 0)
            endFork(2);
        work();
        endFork(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 1) << name;
    return WEXITSTATUS(status) == 0;
}

TEST_F(NamedMachines, CutALongNameOfTheMachineAndGiveANamelessOneItsPlace) {
    const struct {
        std::string name, shown;
    } cases[] = {
        {"CAIXA2",       "CAIXA2"      },
        {std::string(31, 'a'),           std::string(31, 'a')},
        {std::string(32,          'b'),                        std::string(31, 'b')},
        {std::string(64, 'c'),std::string(31, 'c')},
        {"",              "LOCAL"              },
    };
    for (const auto& [name, shown] : cases)
        if (!isCalledFor(name, [&, &wanted = shown] {
                const Database file(kPath, on(disk));
                EXPECT_EQ(slot(1), field(wanted) + field("Admin"));
            }))
            GTEST_SKIP() << "this account can't call the machine otherwise";
}

} // namespace
