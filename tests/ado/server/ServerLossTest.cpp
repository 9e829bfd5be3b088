// What becomes of the work when the line to the server breaks, or the server itself.
#include "ado/ConnectionString.h"
#include "ado/Follower.h"
#include "ado/Recorder.h"
#include "ado/Shop.h"
#include "ado/server/ServerWire.h"
#include "jet/Waiting.h"
#include "support/Cluster.h"
#include "support/Relay.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <optional>

namespace {

using ado::Recordset;
using jet::Errc;
using testing::HasSubstr;
using Strings = std::vector<std::string>;

/// A station whose line goes by way of a relay, and another whose line doesn't.
class ServerLossTest : public Shop {
protected:
    ServerLossTest() {
        addSomeOfEach();
        relay.emplace(ado::serverAddress(connectionString()).value());
        station.Open("Data Source=" + relay->address());
    }
    void TearDown() override {
        ado::ServerLine::patience = patience_;
        ado::ServerLine::silence = silence_;
        station.Close();
        relay.reset();
        Shop::TearDown();
    }
    /// Adds a bank, as windows do.
    void add(const std::string& name) {
        ado::Transaction saving(station);
        Recordset banks;
        banks.Open("bancos", station);
        banks.AddNew();
        banks["nome"] = name;
        banks.Update();
        saving.commit();
    }
    /// The same without a transaction.
    void addAlone(const std::string& name) {
        Recordset banks;
        banks.Open("bancos", station);
        banks.AddNew();
        banks["nome"] = name;
        banks.Update();
    }
    std::ptrdiff_t banksNamed(const std::string& name) {
        return std::ranges::count(column("bancos", "nome"), name);
    }
    /// What the operator is told of what `body` does; "" if it goes well.
    static std::string told(const std::function<void()>& body) {
        try {
            body();
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), Errc::offline) << error.what();
            return error.what();
        }
        return {};
    }
    std::optional<Relay> relay;
    ado::Connection station;
    std::chrono::milliseconds patience_ = ado::ServerLine::patience;

private:
    std::chrono::milliseconds silence_ = ado::ServerLine::silence;
};
INSTANTIATE_TEST_SUITE_P(, ServerLossTest, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ServerLossTest);

TEST_P(ServerLossTest, WhatIsReadIsAskedAgain) {
    Recordset banks;
    banks.Open("bancos", station);
    relay->cutAll();
    EXPECT_EQ(banks["nome"].text(), "Banco do Norte");
    relay->cut(Relay::Cut::before, "select");
    Recordset again;
    again.Open("select * from bancos where cod_banco=33", station);
    EXPECT_EQ(again["nome"].text(), "Agrário");
    banks.MoveLast();
    EXPECT_EQ(banks["nome"].text(), "Agrário");
    EXPECT_GE(relay->lines(), 2);
}

TEST_P(ServerLossTest, WhileAnAnswerIsAwaitedTheWindowsArePainted) {
    int painted = 0;
    jet::setWaitHook([&] { ++painted; });
    relay->setDelay(std::chrono::milliseconds(200));
    Recordset banks;
    banks.Open("bancos", station);
    EXPECT_EQ(banks["nome"].text(), "Banco do Norte");
    jet::setWaitHook({});
    relay->setDelay(std::chrono::milliseconds(0));
    EXPECT_GT(painted, 3);
}

TEST_P(ServerLossTest, OneThatStandsStillIsAsGoodAsGone) {
    ado::ServerLine::silence = std::chrono::milliseconds(100);
    ado::ServerLine::patience = std::chrono::milliseconds(300);
    relay->stand(true);
    EXPECT_THAT(told([&] { add("Novo"); }), HasSubstr("ainda não voltou"));
    relay->stand(false);
    EXPECT_EQ(banksNamed("Novo"), 0);
    ado::ServerLine::patience = patience_;
    add("Novo");
    EXPECT_EQ(banksNamed("Novo"), 1);
}

TEST_P(ServerLossTest, OneThatStandsStillIsGoneThoughAnotherOfTheAddressAnswers) {
    Relay second(ado::serverAddress(connectionString()).value());
    std::string both = relay->address();
    const std::string place = "localhost:";
    const std::string other = second.address();
    const std::size_t port = other.find(place);
    both.insert(both.find('/', both.find(place)),
                "," + other.substr(port, other.find('/', port) - port));
    station.Close();
    station.Open("Data Source=" + both);
    const int lines = second.lines();
    ado::ServerLine::silence = std::chrono::milliseconds(100);
    relay->stand(true);
    add("Novo");
    EXPECT_EQ(banksNamed("Novo"), 1);
    EXPECT_GT(second.lines(), lines);
    relay->stand(false);
    station.Close();
}

TEST_P(ServerLossTest, OneThatOnlyTakesItsTimeIsWaitedFor) {
    ado::ServerLine::silence = std::chrono::milliseconds(20);
    relay->setDelay(std::chrono::milliseconds(200));
    const ado::Transaction saving(station);
    Recordset banks;
    banks.Open("bancos", station);
    EXPECT_EQ(banks["nome"].text(), "Banco do Norte"); // what the line breaks in isn't asked again
    EXPECT_GT(relay->lines(), 1);                      // the one that asks whether it is alive
    relay->setDelay(std::chrono::milliseconds(0));
}

TEST_P(ServerLossTest, ASaveWhoseCommitDidntArriveIsToldAndCanBeRepeated) {
    relay->cut(Relay::Cut::before, "commit");
    EXPECT_THAT(told([&] { add("Novo"); }), HasSubstr("não foi feita: grave de novo"));
    EXPECT_EQ(banksNamed("Novo"), 0);
    add("Novo");
    EXPECT_EQ(banksNamed("Novo"), 1);
}

TEST_P(ServerLossTest, ASaveWhoseAnswerIsLostIsDoneOnce) {
    relay->cut(Relay::Cut::answered, "commit");
    add("Novo");
    EXPECT_EQ(banksNamed("Novo"), 1);
    add("Outro");
    EXPECT_EQ(banksNamed("Outro"), 1);
}

TEST_P(ServerLossTest, ASaveCutInTheMiddleOfItsCommitIsWhatItIsToldToBe) {
    for (int i = 0; i < 10; ++i) {
        const std::string name = "Novo " + std::to_string(i);
        relay->cut(Relay::Cut::at, "commit");
        const bool done = told([&] { add(name); }).empty();
        EXPECT_EQ(banksNamed(name), done ? 1 : 0);
    }
}

TEST_P(ServerLossTest, ASaveOfOneStatementIsDoneOnce) {
    relay->cut(Relay::Cut::before, "insert into \"bancos\"");
    addAlone("Novo"); // nothing of it had arrived
    EXPECT_EQ(banksNamed("Novo"), 1);
    relay->cut(Relay::Cut::answered, "insert into \"bancos\"");
    EXPECT_THAT(told([&] { addAlone("Outro"); }), HasSubstr("foi feita: não a repita"));
    EXPECT_EQ(banksNamed("Outro"), 1);
    for (int i = 0; i < 10; ++i) {
        const std::string name = "Meio " + std::to_string(i);
        relay->cut(Relay::Cut::at, "insert into \"bancos\"");
        static_cast<void>(told([&] { addAlone(name); }));
        EXPECT_EQ(banksNamed(name), 1);
    }
}

TEST_P(ServerLossTest, AServerThatFallsAndComesBackIsWorkedOnWith) {
    Recordset banks;
    banks.Open("bancos", station);
    add("Antes");
    Cluster::instance(shopTables()).crash();
    EXPECT_EQ(banks["nome"].text(), "Banco do Norte");
    add("Depois");
    EXPECT_THAT(told([&] {
                    ado::Transaction saving(station);
                    banks["nome"] = "Mudado";
                    banks.Update();
                    Cluster::instance(shopTables()).crash();
                    saving.commit();
                }),
                HasSubstr("grave de novo"));
    EXPECT_EQ(column("bancos", "nome"),
              (Strings{"Banco do Norte", "Banco do Sul", "Agrário", "Antes", "Depois"}));
}

TEST_P(ServerLossTest, ASaveCutInItsMiddleIsUndoneAndTypedOn) {
    Recordset banks;
    banks.Open("bancos", station);
    EXPECT_THAT(told([&] {
                    ado::Transaction saving(station);
                    banks["nome"] = "Mudado";
                    banks.Update();
                    banks.AddNew();
                    banks["nome"] = "Novo";
                    relay->cut(Relay::Cut::before, "insert into \"bancos\"");
                    banks.Update();
                }),
                HasSubstr("Nada dela foi gravado"));
    EXPECT_TRUE(station.hasUndone());
    EXPECT_EQ(banks["nome"].text(), "Novo"); // as it was typed
    banks.Update();
    EXPECT_EQ(column("bancos", "nome"),
              (Strings{"Banco do Norte", "Banco do Sul", "Agrário", "Novo"}));
}

TEST_P(ServerLossTest, OfASaveInDoubtIsToldAsSoonAsTheServerIsBack) {
    for (const bool done : {false, true}) {
        const std::string name = done ? "Feito" : "Desfeito";
        relay->cut(done ? Relay::Cut::answered : Relay::Cut::before, "commit");
        relay->close(true);
        ado::ServerLine::patience = std::chrono::milliseconds(50);
        EXPECT_THAT(told([&] { add(name); }), HasSubstr("ainda não se sabe"));
        EXPECT_THAT(told([&] { add(name); }), HasSubstr("ainda não se sabe")); // not again
        relay->close(false);
        std::string news;
        while (news.empty()) // while idle
            news = told([&] { station.flushIfDue(); });
        EXPECT_THAT(news, HasSubstr(done ? "Ela foi feita: não a repita" : "Ela não foi feita"));
        EXPECT_EQ(banksNamed(name), done ? 1 : 0);
        EXPECT_EQ(told([&] { station.flushIfDue(); }), "");
        add("Depois");
    }
    EXPECT_EQ(banksNamed("Depois"), 2);
}

TEST_P(ServerLossTest, WhatOthersDidMeanwhileIsSeen) {
    Recordset list;
    list.Open("select * from bancos where cod_banco>0 order by nome", station);
    EXPECT_EQ(list.RecordCount(), 3);
    std::map<std::uint32_t, int> banks;
    ado::Follower follower(station, "bancos", {"cod_banco"},
                           [&](std::uint32_t block, ado::Follower::Rows& rows) {
                               banks[block] = 0;
                               while (rows.next())
                                   ++banks[block];
                           });
    const auto follow = [&] {
        while (follower.follow(std::chrono::milliseconds(5)))
            continue;
    };
    follow();
    EXPECT_EQ(banks[0], 3);
    relay->close(true);
    relay->cutAll();
    Recordset theirs;
    theirs.Open("bancos", connection);
    theirs.AddNew();
    theirs["cod_banco"] = 7;
    theirs["nome"] = "Banco do Meio";
    theirs.Update();
    relay->close(false);
    const auto before = station.store().generation();
    while (station.store().generation() == before) // while idle
        station.flushIfDue();
    follow();
    EXPECT_EQ(banks[0], 4);
    EXPECT_EQ(list.RecordCount(), 4);
    list.MoveNext();
    EXPECT_EQ(list["nome"].text(), "Banco do Meio");
}

constexpr char kChequesWithBanks[] =
    "select cheques.numero, bancos.nome from cheques inner join bancos on "
    "cheques.banco=bancos.codigo order by cheques.numero";

TEST_P(ServerLossTest, AJoinGoesOnIfNothingHasChanged) {
    {
        ado::Transaction all(connection);
        Recordset cheques;
        cheques.Open("cheques", connection);
        for (int i = 0; i < 700; ++i) {
            cheques.AddNew();
            cheques["numero"] = std::to_string(1000 + i);
            cheques["banco"] = 1;
            cheques.Update();
        }
        all.commit();
    }
    const Strings all = column(kChequesWithBanks, "numero");
    Recordset list;
    list.Open(kChequesWithBanks, station);
    relay->cutAll();
    EXPECT_EQ(column(list, "numero"), all);
    list.Requery();
    relay->cut(Relay::Cut::before, "fetch");
    EXPECT_EQ(column(list, "numero"), all);
    list.Requery();
    Recordset theirs;
    theirs.Open("bancos", connection);
    theirs["nome"] = "Outro";
    theirs.Update();
    relay->cutAll();
    EXPECT_THAT(told([&] { column(list, "numero"); }), HasSubstr("Abra a lista de novo"));
}

TEST_P(ServerLossTest, WhatIsHeldBeginsAnewOrIsTold) {
    int times = 0;
    station.store().onSnapshot([&] {
        ++times;
        Recordset banks;
        banks.Open("select * from bancos", station);
        Recordset cheques;
        if (times == 1)
            relay->cut(Relay::Cut::before, "savepoint");
        cheques.Open("select * from cheques", station);
    });
    EXPECT_EQ(times, 2);
}

TEST_P(ServerLossTest, WhatMayNotBeginAnewIsTold) {
    const auto brokenOff = [&] {
        return told([&] {
            Recordset banks;
            banks.Open("select * from bancos", station);
            station.store().onSnapshot([&] {
                relay->cutAll();
                Recordset cheques;
                cheques.Open("select * from cheques", station);
            });
        });
    };
    {
        const auto held = station.store().hold();
        EXPECT_THAT(brokenOff(), HasSubstr("no meio da leitura"));
    }
    const ado::Transaction saving(station);
    EXPECT_THAT(brokenOff(), HasSubstr("no meio da gravação"));
}

TEST_P(ServerLossTest, AListOfAJoinOutlivesItsLine) {
    {
        ado::ServerWire past(ado::serverAddress(connectionString()).value());
        static_cast<void>(past.run("insert into cheques (numero, banco) "
                                   "select n::text, 1 from generate_series(1000, 1699) n"));
    }
    const Strings all = column(kChequesWithBanks, "numero");
    Recordset list;
    list.Open(kChequesWithBanks, station);
    {
        ado::Transaction saving(station);
        Recordset banks;
        banks.Open("select * from bancos", station);
        relay->cutAll();
        EXPECT_THAT(told([&] { list.MoveLast(); }), HasSubstr("Nada dela foi gravado"));
    }
    list.MoveLast(); // it goes on from what it has
    EXPECT_EQ(list["numero"].text(), all.back());
    list.Requery();
    relay->cutAll();
    Recordset banks;
    banks.Open("select * from bancos", station); // on another line
    list.Close();
    EXPECT_EQ(banks.RecordCount(), 3);
}

/// Keeps what is changed of banks, and counts it.
class Counted final : public ado::Recorder {
public:
    bool keeps(const ado::TableShape& table, bool /*isNew*/) override {
        return table.name() == "bancos";
    }
    void changed(std::span<const Change> /*rows*/) override { ++times; }
    int times = 0;
};

TEST_P(ServerLossTest, AChangeOfWhichARecordIsKeptIsUndoneWithIt) {
    Counted recorder;
    ado::Connection kept;
    kept.setRecorder(&recorder);
    kept.Open("Data Source=" + relay->address());
    Recordset banks;
    banks.Open("bancos", kept);
    relay->cut(Relay::Cut::before, "commit");
    banks["nome"] = "Outro";
    EXPECT_THAT(told([&] { banks.Update(); }), HasSubstr("não foi feita"));
    EXPECT_EQ(recorder.times, 1);
    EXPECT_EQ(banksNamed("Outro"), 0);
    banks.Update();
    EXPECT_EQ(banksNamed("Outro"), 1);
    kept.Close();
}

TEST_P(ServerLossTest, WhoHasWrittenWhileTheLineWasAwayIsntKnown) {
    Recordset mine;
    mine.Open("bancos", station);
    const ado::Shown shown = mine.shown();
    relay->cutAll();
    const auto change = [&](const char* name) {
        const auto before = station.store().generation();
        Recordset theirs;
        theirs.Open("bancos", connection);
        theirs["nome"] = name;
        theirs.Update();
        while (station.store().generation() == before)
            station.flushIfDue();
    };
    change("Deles");
    EXPECT_EQ(mine["nome"].text(), "Deles");
    change("Outra vez");
    EXPECT_EQ(mine.byWhom(shown), " por outra janela ou por outro programa");
}

TEST_P(ServerLossTest, AServerThatWantsAnotherPasswordIsGivenIt) {
    const std::string direct = ado::serverAddress(connectionString()).value();
    const auto demand = [&](const std::string& password) {
        Cluster::answer(direct, "do $$ begin alter role caixa password '" + password + "'; end $$");
    };
    std::string with = relay->address();
    with.replace(with.find("loja@"), 4, "caixa:segredo");
    demand("segredo");
    ado::Connection cashier;
    cashier.Open("Data Source=" + with);
    demand("outra");
    relay->cutAll();
    Recordset banks;
    const auto open = [&] { banks.Open("bancos", cashier); };
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(errorOf([&] {
                      open();
                      static_cast<void>(banks["nome"].text());
                  }),
                  i == 0 ? Errc::password : Errc::misuse);
    cashier.store().setPassword("outra");
    EXPECT_EQ(banks["nome"].text(), "Banco do Norte");
    cashier.Close();
    demand(Cluster::kPassword);
}

TEST_P(ServerLossTest, WhoLeavesInTheMiddleOfASaveLeavesNothing) {
    station.BeginTrans();
    Recordset banks;
    banks.Open("bancos", station);
    banks["nome"] = "Pela metade";
    banks.Update();
    station.Close();
    EXPECT_EQ(banksNamed("Pela metade"), 0);
}

} // namespace
