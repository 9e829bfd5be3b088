// Whole tables on their way to a server and back, when something goes wrong in the middle.
#include "ado/server/ServerCopy.h"

#include "ado/Shop.h"
#include "ado/server/ServerWire.h"
#include "jet/Waiting.h"
#include "support/Cluster.h"
#include "support/Relay.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

using jet::Errc;

class ServerCopyTest : public testing::Test {
protected:
    void SetUp() override {
        if (const std::string why = Cluster::absence(); !why.empty())
            GTEST_SKIP() << why;
        address_ = Cluster::instance(shopTables()).newDatabase();
        Cluster::answer(address_, "do $$ begin create schema valtrino; "
                                  "create table valtrino.textos (t text); end $$");
        begin();
    }
    void TearDown() override {
        jet::setWaitHook({});
        ado::ServerLine::silence = silence_;
        wire.reset();
        relay.reset();
    }
    /// A new line, and on it a transaction.
    void begin() {
        wire.reset();
        relay.emplace(address_);
        wire.emplace(relay->address());
        wire->begin();
        static_cast<void>(wire->run("select 1"));
    }
    using Next = std::function<bool(std::string& piece)>;
    Errc in(const Next& next, const char* sql = "copy textos from stdin") {
        return errorOf([&] { copyIn(wire->line(), sql, next); });
    }
    Errc out(const std::function<void()>& took, const std::string& rows) {
        return errorOf([&] {
            copyOut(wire->line(), "copy (select " + rows + ") to stdout",
                    [&](std::string_view) { took(); });
        });
    }
    /// That it can go on, after what was refused; nothing is kept of that.
    void expectGoodForMore() {
        wire->rollback();
        EXPECT_EQ(wire->run("select count(*) from textos").field(0, 0), "0");
        wire->begin();
        static_cast<void>(wire->run("select 1"));
    }
    std::string address_;
    std::optional<Relay> relay;
    std::optional<ado::ServerWire> wire;

private:
    std::chrono::milliseconds silence_ = ado::ServerLine::silence;
};

constexpr char kMany[] = "repeat('x', 1000) from generate_series(1, 20000)";
const auto kNothing = [] {};

bool giveMuch(std::string& piece) {
    piece.assign(std::size_t{1} << 20, 'x');
    return true;
}

TEST_F(ServerCopyTest, WhatIsRefusedLeavesTheLineGood) {
    EXPECT_EQ(in([](std::string&) { return false; }, "copy nada from stdin"), Errc::notFound);
    expectGoodForMore();
    EXPECT_EQ(in([](std::string& piece) {
                  piece = "um\tdois\n";
                  return false;
              }),
              Errc::outOfRange);
    expectGoodForMore();
    EXPECT_EQ(in([](std::string& piece) -> bool {
                  piece = "um\n";
                  throw jet::Error(Errc::cancelled, "parado");
              }),
              Errc::cancelled);
    expectGoodForMore();
    EXPECT_EQ(out(kNothing, "1/0"), Errc::outOfRange);
    expectGoodForMore();
    EXPECT_EQ(out(kNothing, "repeat('x', 1000), 1/(n-9000) from generate_series(1, 20000) n"),
              Errc::outOfRange);
    expectGoodForMore();
}

TEST_F(ServerCopyTest, ALineThatBreaksOnTheWayThereIsTold) {
    for (int pieces : {0, 1, 30}) { // at once, or when no more of them go
        int given = 0;
        EXPECT_EQ(in([&](std::string& piece) {
                      if (given++ == pieces)
                          relay->cutAll();
                      return giveMuch(piece);
                  }),
                  Errc::offline);
        EXPECT_EQ(in(giveMuch), Errc::offline) << "and it stays so";
        begin();
    }
    // More than is under way at once, while nobody takes it.
    bool stands = true;
    EXPECT_EQ(in([&](std::string& piece) {
                  relay->stand(true);
                  jet::setWaitHook([&] {
                      if (std::exchange(stands, false)) {
                          relay->cutAll();
                          relay->stand(false);
                      }
                  });
                  piece.assign(std::size_t{64} << 20, 'x');
                  return true;
              }),
              Errc::offline);
}

TEST_F(ServerCopyTest, ALineThatBreaksOnTheWayBackIsTold) {
    EXPECT_EQ(out([&] { relay->cutAll(); }, kMany), Errc::offline);
    EXPECT_EQ(out(kNothing, kMany), Errc::offline) << "and it stays so";
}

TEST_F(ServerCopyTest, AServerThatStandsStillIsAsGoodAsGone) {
    ado::ServerLine::silence = std::chrono::milliseconds(50);
    EXPECT_EQ(in([&](std::string& piece) {
                  relay->stand(true);
                  piece = "um\n";
                  return false;
              }),
              Errc::offline);
    relay->stand(false);
    begin();
    bool once = false;
    EXPECT_EQ(out(
                  [&] {
                      if (!std::exchange(once, true))
                          relay->stand(true);
                  },
                  kMany),
              Errc::offline);
    relay->stand(false);
}

} // namespace
