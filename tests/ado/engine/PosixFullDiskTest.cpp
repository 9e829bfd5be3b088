// What no longer goes into the folder for temporary files, where a program can be told so.
#include "ado/Shop.h"
#include "ado/engine/Engine.h"

#include <csignal>
#include <sys/resource.h>

namespace {

using jet::Errc;

class SortingOnAFullDisk : public Shop {
protected:
    SortingOnAFullDisk() { addSomeOfEach(); }
};

INSTANTIATE_TEST_SUITE_P(Versions, SortingOnAFullDisk, testing::Values(jet::Version::jet4));

TEST_P(SortingOnAFullDisk, WhereTheDiskTakesNoMoreTheOperatorIsToldSo) {
    ado::Engine engine(connection.database(), {.bytes = std::size_t{8} << 20});
    static_cast<void>(engine.spelling().table("bancos"));
    const std::string sorted = "select '" + std::string(10'000, 'x') +
                               "' as x, b1.codigo from bancos as b1, bancos as b2, bancos as b3, "
                               "bancos as b4, bancos as b5, bancos as b6, bancos as b7 "
                               "order by x, b1.codigo";
    const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
    const struct {
        decltype(RLIMIT_FSIZE) what;
        rlim_t most;
    } limits[] = {
        {RLIMIT_FSIZE,  rlim_t{1} << 20}, // the folder is full
        {RLIMIT_NOFILE, 0              }, // no file can be made in it
    };
    for (const auto& [what, most] : limits) {
        auto wide = engine.prepare(sorted);
        rlimit before{};
        ASSERT_EQ(getrlimit(what, &before), 0);
        const rlimit small{most, before.rlim_max};
        ASSERT_EQ(setrlimit(what, &small), 0);
        std::string told;
        EXPECT_EQ(errorOf([&] {
                      try {
                          (void)wide.step();
                      } catch (const jet::Error& error) {
                          told = error.what();
                          throw;
                      }
                  }),
                  Errc::io);
        setrlimit(what, &before);
        EXPECT_NE(told.find("espaço na pasta temporária"), std::string::npos) << told;
        auto next = engine.prepare("select codigo from bancos");
        EXPECT_TRUE(next.step());
    }
    std::signal(SIGXFSZ, ignored);
}

} // namespace
