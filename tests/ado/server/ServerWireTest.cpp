// What is said to a server, one thing behind the other, and what becomes of it when the line breaks
// there.
#include "ado/server/ServerWire.h"

#include "ado/ConnectionString.h"
#include "ado/Shop.h"
#include "support/Cluster.h"
#include "support/Relay.h"

#include <gmock/gmock.h>

#include <optional>

namespace {

using jet::Errc;
using testing::HasSubstr;

class ServerWireTest : public Shop {
protected:
    ServerWireTest() {
        addSomeOfEach();
        relay.emplace(address());
        wire.emplace(relay->address());
        wire->leaveTraces();
    }
    void TearDown() override {
        wire.reset();
        relay.reset();
        Shop::TearDown();
    }
    [[nodiscard]] std::string address() const {
        return ado::serverAddress(connectionString()).value();
    }
    void say(const char* sql = "select 1") { static_cast<void>(wire->run(sql)); }
    /// Changes the first bank's name.
    ado::ServerStatement rename(const std::string& name) {
        return {"update bancos set nome = '" + name + "' where codigo = 1"};
    }
    void renameWithin(const std::string& name) {
        wire->begin();
        static_cast<void>(wire->run(rename(name)));
        wire->commit();
    }
    std::string firstBank() { return column("bancos", "nome").front(); }
    /// The line breaks, and that is noticed before anything is said on it.
    void breakLine() {
        relay->cutAll();
        while (wire->line().isUp())
            wire->line().listen([](std::string_view, int) {});
    }
    static std::string told(const std::function<void()>& body, Errc code = Errc::offline) {
        try {
            body();
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), code) << error.what();
            return error.what();
        }
        return {};
    }
    std::optional<Relay> relay;
    std::optional<ado::ServerWire> wire;
};
INSTANTIATE_TEST_SUITE_P(, ServerWireTest, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ServerWireTest);

TEST_P(ServerWireTest, ATransactionIsBegunOnceAndEndedOnce) {
    EXPECT_EQ(errorOf([&] { wire->commit(); }), Errc::misuse);
    EXPECT_EQ(errorOf([&] { wire->rollback(); }), Errc::misuse);
    wire->begin();
    EXPECT_EQ(errorOf([&] { wire->begin(); }), Errc::misuse);
    wire->lookAfter();
    wire->commit(); // of nothing
    wire->begin();
    wire->mark();
    wire->forgetMark();
    wire->mark();
    wire->backToMark();
    static_cast<void>(wire->run(rename("Um")));
    wire->mark();
    static_cast<void>(wire->run(rename("Dois")));
    wire->backToMark();
    wire->claim(); // in the middle
    wire->commit();
    EXPECT_EQ(firstBank(), "Um");
    ado::ServerWire other(address()); // without a trace
    EXPECT_EQ(other.runAlone({"select 1"}).field(0, 0), "1");
}

TEST_P(ServerWireTest, ALineThatHasBrokenBetweenTwoThingsTakesTheTransactionAlong) {
    wire->begin();
    static_cast<void>(wire->run(rename("Um")));
    breakLine();
    for (int i = 0; i < 2; ++i)
        EXPECT_THAT(told([&] { say(); }), HasSubstr("Nada dela foi gravado"));
    EXPECT_THAT(told([&] { wire->commit(); }), HasSubstr("Nada dela foi gravado"));
    wire->begin();
    static_cast<void>(wire->run(rename("Um")));
    breakLine();
    EXPECT_THAT(told([&] { wire->commit(); }), HasSubstr("Nada dela foi gravado"));
    wire->begin();
    breakLine();
    static_cast<void>(wire->run(rename("Dois"))); // nothing was lost
    wire->put(rename("Três"));
    relay->cut(Relay::Cut::before, "update bancos");
    EXPECT_THAT(told([&] { wire->sendPut(); }), HasSubstr("Nada dela foi gravado"));
    wire->rollback();
    EXPECT_EQ(firstBank(), "Banco do Norte");
}

TEST_P(ServerWireTest, WhatIsReadIsAskedForTwiceAndNotMoreOften) {
    wire->beginReading();
    say();
    wire->lookAfter();
    breakLine();
    EXPECT_THAT(told([&] { say(); }), HasSubstr("no meio da leitura"));
    say();
    wire->endReading();
    relay->cut(Relay::Cut::before, "select 2", 2);
    EXPECT_THAT(told([&] { say("select 2"); }), HasSubstr("no meio da leitura"));
    say("select 2");
}

TEST_P(ServerWireTest, ATransactionInDoubtStaysSoUntilTheServerHasSaid) {
    const auto doubt = [&](const char* name) {
        relay->cut(Relay::Cut::answered, "commit");
        relay->close(true);
        const auto patience =
            std::exchange(ado::ServerLine::patience, std::chrono::milliseconds(50));
        EXPECT_THAT(told([&] { renameWithin(name); }), HasSubstr("ainda não se sabe"));
        ado::ServerLine::patience = patience;
    };
    doubt("Um");
    relay->close(false);
    relay->cut(Relay::Cut::before, "insert into valtrino_estacoes.gravacao (estacao) ");
    EXPECT_THAT(told([&] { wire->begin(); }), HasSubstr("ainda não se sabe"));
    EXPECT_THAT(told([&] { wire->begin(); }), HasSubstr("Ela foi feita"));
    wire->lookAfter();
    renameWithin("Dois");
    EXPECT_EQ(firstBank(), "Dois");
    doubt("Três");
    wire.reset(); // who leaves now isn't told
    relay->close(false);
    EXPECT_EQ(firstBank(), "Três");
}

TEST_P(ServerWireTest, AServerThatWantsAnotherPasswordMeanwhileSaysWhatBecameOfIt) {
    const auto demand = [&](const std::string& password) {
        Cluster::answer(address(),
                        "do $$ begin alter role caixa password '" + password + "'; end $$");
    };
    demand("segredo");
    std::string with = relay->address();
    with.replace(with.find("loja@"), 4, "caixa:segredo");
    wire.emplace(with);
    wire->leaveTraces();
    demand("outra");
    relay->cut(Relay::Cut::answered, "commit");
    EXPECT_THAT(told([&] { renameWithin("Um"); }, Errc::password), HasSubstr("Não a repita"));
    wire->lookAfter(); // not again by itself
    wire->setPassword("outra");
    EXPECT_THAT(told([&] {
                    for (;;)
                        wire->lookAfter();
                }),
                HasSubstr("Ela foi feita"));
    EXPECT_EQ(firstBank(), "Um");
    demand(Cluster::kPassword);
}

} // namespace
