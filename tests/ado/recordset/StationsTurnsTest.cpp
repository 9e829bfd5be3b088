// When a station sees what another has stored, and who waits for whom meanwhile.
#include "ado/recordset/Stations.h"

#include <atomic>
#include <thread>

namespace {

using jet::Errc;

TEST_P(StationsTest, ALongWorkThatOnlyReadsWritesWhatIsDue) {
    openBanks();
    mine["nome"] = "Meu";
    mine.Update();
    std::this_thread::sleep_for(std::chrono::milliseconds(550));
    mine.MoveFirst();
    EXPECT_EQ(shown(theirs, "1"), "Meu");
    save(other, theirs, "1", "Deles"); // nobody has the file any more
    mine.MoveFirst();
    EXPECT_EQ(mine["nome"].text(), "Deles");
}

TEST_P(StationsTest, WhatIsNotYetWrittenIsSeenByNobodyElse) {
    openBanks();
    mine["nome"] = "Meu";
    mine.Update();
    EXPECT_EQ(shown(theirs, "1"), "Banco do Norte");
    connection.flushIfDue();
    connection.database().flush();
    EXPECT_EQ(shown(theirs, "1"), "Meu");
}

TEST_P(StationsTest, WhoWalksThroughAListKeepsNobodyFromSaving) {
    Recordset list;
    list.Open("select bancos.nome,numero from cheques inner join bancos on "
              "cheques.banco=bancos.codigo",
              connection);
    theirs.Open("bancos", other);
    for (int i = 0; !list.EOF(); list.MoveNext(), ++i) {
        const std::string name = "Banco " + std::to_string(i);
        save(other, theirs, "1", name.c_str());
        save(other, theirs, "2", name.c_str());
        save(other, theirs, "3", name.c_str());
        EXPECT_EQ(list["bancos.nome"].text(), name);
    }
}

TEST_P(StationsTest, NewsMayBeLateForAsLongAsTheyHold) {
    openBanks();
    Shown before;
    std::string seen;
    // Twice a second a station looks around and hears of all: news are late between two looks.
    for (int attempt = 0; attempt < 50 && seen != "Antes"; ++attempt) {
        connection.database().setSnapshotHold({});
        save(other, theirs, "2", "Antes");
        EXPECT_EQ(shown(mine, "2"), "Antes");
        connection.database().setSnapshotHold(std::chrono::hours(1));
        before = show(mine, "2");
        save(other, theirs, "2", "Deles");
        seen = shown(mine, "2");
    }
    EXPECT_EQ(seen, "Antes");
    // What is stored counts when something is changed, not what is remembered.
    EXPECT_EQ(errorOf([&] { save(connection, mine, "2", "Meu", before); }), Errc::conflict);
    EXPECT_EQ(shown(mine, "2"), "Deles");
    save(other, theirs, "2", "Outra vez");
    connection.database().setSnapshotHold({});
    EXPECT_EQ(shown(mine, "2"), "Outra vez");
}

TEST_P(StationsTest, WhatIsNotRememberedIsNewsEvenWhileNewsHold) {
    Connection late;
    late.Open(connectionString());
    late.database().setSnapshotHold(std::chrono::hours(1));
    Recordset banks;
    mine.Open("bancos", late);
    EXPECT_EQ(shown(mine, "2"), "Banco do Sul");
    banks.Open("bancos", other);
    save(other, banks, "2", "Deles");
    theirs.Open("cheques", other);
    for (int i = 0; i < 200; ++i) {
        theirs.AddNew();
        theirs["numero"] = std::to_string(900000 + i);
        theirs["banco"] = 2;
        theirs.Update();
    }
    other.flush();
    // Pages that nobody has read here yet: all that is seen is then as new as they are.
    Recordset joined;
    joined.Open("select bancos.nome, numero from cheques inner join bancos on "
                "cheques.banco=bancos.codigo where bancos.codigo=2 and numero>='900000'",
                late);
    EXPECT_EQ(joined.RecordCount(), 200);
    joined.MoveFirst();
    EXPECT_EQ(joined["bancos.nome"].text(), "Deles");
}

TEST_P(StationsTest, TransactionsOfOnePieceOfWorkShowWhenItEnds) {
    openBanks();
    const auto erase = [&](const char* code) {
        ado::Transaction transaction(connection);
        mine.MoveFirst();
        mine.Find(std::string("codigo=") + code);
        mine.Delete();
        transaction.commitLater();
    };
    erase("1");
    EXPECT_EQ(theirs.RecordCount(), 3);
    erase("2");
    {
        ado::Transaction undone(connection);
        mine.MoveFirst();
        mine.Delete();
    }
    mine.Requery();
    EXPECT_EQ(mine.RecordCount(), 1);
    connection.flush();
    EXPECT_EQ(theirs.RecordCount(), 1);
    save(other, theirs, "3", "Deles");
    EXPECT_EQ(shown(mine, "3"), "Deles");
}

TEST_P(StationsTest, AStatementThatTakesLongLetsOthersWriteInBetween) {
    std::string tables = "bancos as b1";
    int saved = 0;
    // On a slow disk a save takes longer than a short statement: each table trebles its time.
    for (int count = 2; count < 15 && saved < 3; ++count) {
        tables += ", bancos as b" + std::to_string(count);
        if (count < 11)
            continue;
        std::atomic<bool> running = true;
        saved = 0;
        std::thread another([&] {
            theirs.Open("bancos", other);
            while (running && saved < 3) {
                save(other, theirs, "2", saved % 2 == 0 ? "Banco Novo" : "Banco Velho");
                if (running)
                    ++saved;
            }
            theirs.Close();
        });
        Recordset all;
        all.Open("select b1.nome from " + tables + " order by b1.nome", connection);
        running = false;
        another.join();
        EXPECT_FALSE(all.EOF());
    }
    EXPECT_EQ(saved, 3);
}

} // namespace
