// Which state of the data is read while other stations change them, on a server.
#include "ado/ConnectionString.h"
#include "ado/Shop.h"
#include "ado/server/ServerCursor.h"
#include "ado/server/ServerWire.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>

namespace {

using ado::Recordset;
using Strings = std::vector<std::string>;

class ServerStateTest : public Shop {
protected:
    ServerStateTest() {
        addSomeOfEach();
        other.Open(connectionString());
    }
    void TearDown() override {
        other.Close();
        Shop::TearDown();
    }
    void addCheques(ado::Connection& by, int count) {
        ado::Transaction all(by);
        Recordset cheques;
        cheques.Open("cheques", by);
        for (int i = 0; i < count; ++i) {
            cheques.AddNew();
            cheques["numero"] = std::to_string(1000 + i);
            cheques["banco"] = 1;
            cheques.Update();
        }
        all.commit();
    }
    static void rename(ado::Connection& by, const std::string& name) {
        Recordset banks;
        banks.Open("bancos", by);
        banks["nome"] = name;
        banks.Update();
    }
    /// Until somebody waits for another to end, or that one has ended without.
    void awaitQueueOf(const std::future<void>& one) {
        ado::ServerWire looking(ado::serverAddress(connectionString()).value());
        while (one.wait_for(std::chrono::microseconds(200)) != std::future_status::ready &&
               looking.run("select 1 from pg_locks where not granted").rows() == 0)
            continue;
    }
    ado::Connection other;
};
INSTANTIATE_TEST_SUITE_P(, ServerStateTest, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ServerStateTest);

constexpr char kJoin[] = "select cheques.numero, bancos.nome from cheques inner join bancos on "
                         "cheques.banco=bancos.codigo order by cheques.numero";

TEST_P(ServerStateTest, AJoinIsWalkedAsItWasOpenedWhateverOthersDoMeanwhile) {
    addCheques(connection, 700);
    const Strings before = column(kJoin, "numero");
    Recordset list;
    list.Open(kJoin, connection);
    list.MoveNext();
    Recordset theirs;
    theirs.Open("cheques", other);
    theirs.Find("numero='1600'");
    theirs.Delete();
    theirs.AddNew();
    theirs["numero"] = "000001"; // would come first, and push the others on by one
    theirs["banco"] = 1;
    theirs.Update();
    EXPECT_EQ(list.RecordCount(), static_cast<std::int64_t>(before.size()));
    list.MoveNext();
    EXPECT_EQ(list["numero"].text(), before[2]);
    EXPECT_EQ(column(list, "numero"), before);
    list.Requery();
    EXPECT_EQ(list["numero"].text(), "000001");
}

TEST_P(ServerStateTest, WhatIsHeldIsOfOneState) {
    const Strings before = column("bancos", "nome");
    {
        const auto held = connection.store().hold();
        EXPECT_EQ(column("bancos", "nome"), before);
        rename(other, "Deles");
        EXPECT_EQ(column("bancos", "nome"), before);
        connection.store().onSnapshot([&] { EXPECT_EQ(column("bancos", "nome"), before); });
    }
    EXPECT_EQ(column("bancos", "nome").front(), "Deles");
    const auto twice = connection.store().read([&] {
        Strings names = column("bancos", "nome");
        rename(other, "Outra vez deles");
        return std::pair(names, column("bancos", "nome"));
    });
    EXPECT_EQ(twice.first, twice.second);
}

TEST_P(ServerStateTest, WhatIsChangedWhileHeldIsKept) {
    const auto held = connection.store().hold();
    EXPECT_EQ(rowsIn("bancos"), 3);
    rename(connection, "Um");
    rename(other, "Dois"); // and isn't kept from it
    EXPECT_EQ(column("bancos", "nome").front(), "Dois");
    {
        ado::Transaction changes(connection);
        rename(connection, "Três");
        changes.commit();
    }
    EXPECT_EQ(column("bancos", "nome").front(), "Três");
    Recordset theirs;
    theirs.Open("bancos", other);
    EXPECT_EQ(theirs["nome"].text(), "Três");
}

TEST_P(ServerStateTest, AfterAFailureWhileHeldTheRestIsRead) {
    const auto held = connection.store().hold();
    EXPECT_EQ(rowsIn("bancos"), 3);
    Recordset wrong;
    EXPECT_ANY_THROW(wrong.Open("select * from bancos where nada=1", connection));
    EXPECT_EQ(rowsIn("bancos"), 3);
}

TEST_P(ServerStateTest, WhoClaimsSeesAllAndNobodyChangesItUntilHeEnds) {
    Recordset mine;
    mine.Open("bancos", connection);
    EXPECT_EQ(mine["nome"].text(), "Banco do Norte");
    ado::Transaction all(connection);
    rename(other, "Deles");
    connection.store().claim();
    EXPECT_EQ(mine["nome"].text(), "Deles");
    auto theirs = std::async(std::launch::async, [&] { rename(other, "Depois"); });
    awaitQueueOf(theirs);
    EXPECT_EQ(column("bancos", "nome").front(), "Deles");
    all.commit();
    theirs.get();
    EXPECT_EQ(column("bancos", "nome").front(), "Depois");
}

TEST_P(ServerStateTest, WhoClaimsRowsSeesThemAsTheyStayAndKeepsNobodyFromAddingOthers) {
    Recordset mine;
    mine.Open("bancos", connection);
    EXPECT_EQ(mine["nome"].text(), "Banco do Norte");
    ado::Transaction all(connection);
    rename(other, "Deles");
    connection.store().claimRows();
    EXPECT_EQ(mine["nome"].text(), "Deles");
    auto added = std::async(std::launch::async, [&] { addCheques(other, 1); });
    awaitQueueOf(added);
    EXPECT_EQ(added.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    ado::Connection third;
    third.Open(connectionString());
    auto theirs = std::async(std::launch::async, [&] { rename(third, "Depois"); });
    awaitQueueOf(theirs);
    mine.Requery();
    mine["nome"] = mine["nome"].text() + " e meu";
    mine.Update();
    all.commit();
    EXPECT_EQ(errorOf([&] { theirs.get(); }), jet::Errc::conflict) << "it has read what was there";
    EXPECT_EQ(column("bancos", "nome").front(), "Deles e meu");
}

TEST_P(ServerStateTest, TwoWhoClaimTakeTurns) {
    const auto once = [](ado::Connection& by) {
        for (int i = 0; i < 20; ++i) {
            ado::Transaction all(by);
            i % 2 == 0 ? by.store().claim() : by.store().claimRows();
            Recordset banks;
            banks.Open("bancos", by);
            banks["cod_banco"] = banks["cod_banco"].integer() + 1;
            banks.Update();
            all.commit();
        }
    };
    auto theirs = std::async(std::launch::async, [&] { once(other); });
    once(connection);
    theirs.get();
    EXPECT_EQ(column("bancos", "cod_banco").front(), "144");
}

// Another may work for longer than anybody waits.
TEST_P(ServerStateTest, AfterATransactionThatCouldntBeginTheNextOneCan) {
    const std::string address = ado::serverAddress(connectionString()).value();
    ado::ServerWire busy(address);
    busy.begin();
    busy.takeTurn();
    static_cast<void>(busy.run("select 1"));
    ado::ServerWire wire(address);
    static_cast<void>(wire.run("set lock_timeout = '20ms'"));
    wire.begin();
    wire.takeTurn();
    EXPECT_THAT([&] { static_cast<void>(wire.run("select 1")); },
                testing::ThrowsMessage<jet::Error>(
                    "Outra estação está gravando os mesmos registros. Tente de novo."));
    EXPECT_THROW(wire.commit(), jet::Error);
    busy.rollback();
    wire.begin();
    wire.takeTurn();
    EXPECT_EQ(wire.run("select 1").rows(), 1);
    EXPECT_NO_THROW(wire.commit());
}

TEST_P(ServerStateTest, OfAJoinWhatHasNoRowIsShownAsNone) {
    Recordset cheque;
    cheque.Open("cheques", other);
    cheque["banco"] = 99;
    cheque.Update();
    Recordset list;
    list.Open("select * from cheques left join bancos on cheques.banco=bancos.codigo "
              "order by lancamento",
              connection);
    EXPECT_TRUE(list.shown("bancos") == ado::Shown());
    EXPECT_FALSE(list.shown("cheques") == ado::Shown());
    list.MoveNext();
    EXPECT_FALSE(list.shown("bancos") == ado::Shown());
    list.setFilter("banco=2");
    list.Find("lancamento>2");
    EXPECT_EQ(list["lancamento"].integer(), 6) << "of those of that bank";
    Recordset computed;
    computed.Open("select codigo+0 as c from bancos", connection);
    computed.setFilter("c>1");
    EXPECT_EQ(computed.RecordCount(), 2);
}

TEST_P(ServerStateTest, AnAnswerThatIsTooLongIsRefused) {
    const auto most = std::exchange(ado::ServerAnswer::mostBytes, 1000);
    Recordset list;
    EXPECT_EQ(errorOf([&] { list.Open(kJoin, connection); }), jet::Errc::full);
    ado::ServerAnswer::mostBytes = most;
    list.Open(kJoin, connection);
    EXPECT_EQ(list.RecordCount(), 6);
}

TEST_P(ServerStateTest, AClaimOutsideOfATransactionIsAMistake) {
    EXPECT_EQ(errorOf([&] { connection.store().claim(); }), jet::Errc::misuse);
    EXPECT_EQ(errorOf([&] { connection.store().claimRows(); }), jet::Errc::misuse);
}

} // namespace
