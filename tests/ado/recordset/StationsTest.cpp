// Two stations with the shop's file open: what one saves the other sees, and nobody saves over what
// he hasn't seen.
#include "ado/recordset/Stations.h"

#include <sstream>

namespace {

using jet::Errc;

INSTANTIATE_TEST_SUITE_P(, StationsTest, bothVersions(), keptName);

TEST_P(StationsTest, WhatOneSavesTheOtherSees) {
    Recordset list;
    mine.Open("bancos", connection);
    list.Open("select * from bancos order by nome", connection);
    theirs.Open("bancos", other);
    save(other, theirs, "2", "Banco Novo");
    EXPECT_EQ(shown(mine, "2"), "Banco Novo");
    theirs.AddNew();
    theirs["cod_banco"] = 237;
    theirs["nome"] = "Aroeira";
    theirs.Update();
    other.database().flush();
    EXPECT_EQ(mine.RecordCount(), 4);
    list.Requery();
    EXPECT_EQ(list.RecordCount(), 4);
    EXPECT_EQ(list["nome"].text(), "Agrário");
}

TEST_P(StationsTest, ARecordThatAnotherStationHasChangedSinceItWasShownIsNotSavedOver) {
    openBanks();
    const Shown before = show(mine, "2");
    save(other, theirs, "2", "Deles");
    try {
        save(connection, mine, "2", "Meu", before);
        ADD_FAILURE() << "saved over";
    } catch (const jet::Error& error) {
        EXPECT_EQ(error.code(), Errc::conflict);
        EXPECT_NE(std::string_view(error.what()).find("alterado por " + machine()),
                  std::string_view::npos)
            << error.what();
    }
    EXPECT_EQ(shown(mine, "2"), "Deles");
    EXPECT_TRUE(mine.isOther(before));
    // Now it has been shown.
    save(connection, mine, "2", "Meu", show(mine, "2"));
    EXPECT_EQ(shown(theirs, "2"), "Meu");
}

TEST_P(StationsTest, NothingThatIsReadMeanwhileCountsAsShown) {
    Recordset list;
    mine.Open("bancos", connection);
    list.Open("select bancos.nome,numero from cheques inner join bancos on "
              "cheques.banco=bancos.codigo where bancos.codigo=1",
              connection);
    theirs.Open("bancos", other);
    const Shown before = show(mine, "1");
    save(other, theirs, "1", "Deles");
    // By a list, a look-up, a filter, a sort, a sum, and in a transaction that is given up.
    list.Requery();
    EXPECT_EQ(list["bancos.nome"].text(), "Deles");
    EXPECT_EQ(shown(mine, "1"), "Deles");
    mine.setFilter("codigo<3");
    mine.setSort("nome");
    for (mine.MoveFirst(); !mine.EOF(); mine.MoveNext())
        EXPECT_FALSE(mine["nome"].text().empty());
    mine.clearFilter();
    EXPECT_EQ(errorOf([&] { save(connection, mine, "1", "Meu", before); }), Errc::conflict);
    EXPECT_EQ(errorOf([&] { save(connection, mine, "1", "Meu", before); }), Errc::conflict);
    EXPECT_EQ(errorOf([&] {
                  goTo(mine, "1");
                  mine.Delete(before);
              }),
              Errc::conflict);
    EXPECT_EQ(shown(theirs, "1"), "Deles");
}

TEST_P(StationsTest, OfARowInAJoinTheTableNamedCounts) {
    Recordset list;
    Recordset cheques;
    list.Open("select * from cheques inner join bancos on cheques.banco=bancos.codigo "
              "where lancamento=1",
              connection);
    cheques.Open("cheques", connection);
    theirs.Open("bancos", other);
    const Shown cheque = list.shown("Cheques");
    EXPECT_EQ(cheque, cheques.shown());
    save(other, theirs, "1", "Deles");
    list.Requery();
    EXPECT_FALSE(cheques.isOther(cheque));
    EXPECT_EQ(errorOf([&] { (void)list.shown("semfundos"); }), Errc::notFound);
    cheques.Delete(cheque);
    EXPECT_EQ(cheques.RecordCount(), 5);
}

TEST_P(StationsTest, ARecordThatAnotherStationHasDeletedIsGone) {
    openBanks();
    const Shown before = show(mine, "3");
    goTo(theirs, "3");
    theirs.Delete();
    other.flush();
    EXPECT_EQ(errorOf([&] { save(connection, mine, "3", "Meu", before); }), Errc::gone);
    EXPECT_EQ(errorOf([&] { mine.Delete(before); }), Errc::gone);
    EXPECT_FALSE(mine.isOther(before)); // there is none
    // Nor is a new one that has its place in the file the same.
    theirs.AddNew();
    theirs["cod_banco"] = 33;
    theirs["nome"] = "Agrário";
    theirs.Update();
    other.flush();
    mine.MoveLast();
    EXPECT_EQ(mine["nome"].text(), "Agrário");
    EXPECT_EQ(errorOf([&] { mine.Delete(before); }), Errc::conflict);
    EXPECT_EQ(theirs.RecordCount(), 3);
}

TEST_P(StationsTest, AllWhoHaveWrittenSinceAreNamed) {
    openBanks();
    Connection stations[2];
    for (Connection& station : stations)
        station.Open(connectionString());
    std::fstream lock(std::filesystem::path(connection.database().path()).replace_extension(".ldb"),
                      std::ios::binary | std::ios::in | std::ios::out);
    for (int user = 2; user <= 4; ++user) { // as if each were on a machine of its own
        const std::string name = "CAIXA" + std::to_string(user);
        lock.seekp(std::streamoff{64} * (user - 1));
        lock.write(name.c_str(), static_cast<std::streamsize>(name.size() + 1));
    }
    lock.flush();
    const Shown before = show(mine, "2");
    EXPECT_EQ(mine.byWhom(before), " por outra janela ou por outro programa");
    const auto saveAt = [](Connection& station, const char* name) {
        Recordset banks;
        banks.Open("bancos", station);
        save(station, banks, "2", name);
    };
    saveAt(other, "Dois");
    EXPECT_TRUE(mine.isOther(before));
    EXPECT_EQ(mine.byWhom(before), " por CAIXA2");
    saveAt(stations[0], "Três");
    EXPECT_TRUE(mine.isOther(before));
    EXPECT_EQ(mine.byWhom(before), " por CAIXA2 ou CAIXA3");
    saveAt(stations[1], "Quatro");
    EXPECT_TRUE(mine.isOther(before));
    EXPECT_EQ(mine.byWhom(before), " por CAIXA2, CAIXA3 ou CAIXA4");
    EXPECT_FALSE(mine.isOther(mine.shown()));
}

TEST_P(StationsTest, WhatWasNeverShownIsNotChangedAsShown) {
    mine.Open("bancos", connection);
    EXPECT_TRUE(mine.isOther(Shown()));
    Recordset clients;
    clients.Open("select * from cliente_fornecedor left join semfundos on "
                 "semfundos.cliente=cliente_fornecedor.codigo where codigo=4",
                 connection);
    EXPECT_EQ(clients.shown("semfundos"), Shown()) << "she has none";
    EXPECT_EQ(errorOf([&] { mine.Edit({}); }), Errc::conflict);
    EXPECT_EQ(errorOf([&] { mine.Delete(Shown()); }), Errc::conflict);
    EXPECT_EQ(mine.EditMode(), ado::EditMode::None);
}

TEST_P(StationsTest, OurOwnSavesAreNoConflictForWhoShowsThem) {
    mine.Open("bancos", connection);
    const Shown first = show(mine, "2");
    Shown stored;
    {
        ado::Transaction transaction(connection);
        mine.Edit(first);
        mine["nome"] = "Um";
        mine.Update();
        stored = mine.shown();
        transaction.commit();
    }
    EXPECT_EQ(show(mine, "2"), stored);
    {
        ado::Transaction undone(connection);
        mine.Edit(stored);
        mine["nome"] = "Nunca";
        mine.Update();
    }
    save(connection, mine, "2", "Dois", stored);
    // Another window of the program that still shows the first has not seen that.
    EXPECT_EQ(errorOf([&] { save(connection, mine, "2", "Três", first); }), Errc::conflict);
    EXPECT_EQ(shown(mine, "2"), "Dois");
}

TEST_P(StationsTest, ADeletionOfWhatAnotherHasChangedIsRefused) {
    openBanks();
    const Shown before = show(mine, "3");
    save(other, theirs, "3", "Deles");
    {
        ado::Transaction transaction(connection);
        goTo(mine, "3");
        EXPECT_EQ(errorOf([&] { mine.Delete(before); }), Errc::conflict);
    }
    EXPECT_EQ(shown(mine, "3"), "Deles");
    mine.Delete();
    connection.database().flush();
    theirs.Requery();
    EXPECT_EQ(theirs.RecordCount(), 2);
}

TEST_P(StationsTest, APurgeGoesByWhatItMeetsNotByOldLists) {
    mine.Open("select * from bancos order by codigo", connection);
    theirs.Open("bancos", other);
    for (; !mine.EOF(); mine.MoveNext())
        EXPECT_FALSE(mine["nome"].text().empty());
    save(other, theirs, "1", "Deles");
    ado::Transaction transaction(connection);
    Recordset purge;
    purge.Open("select * from bancos where codigo<3", connection);
    for (; !purge.EOF(); purge.MoveNext())
        purge.Delete();
    transaction.commit();
    theirs.Requery();
    EXPECT_EQ(theirs.RecordCount(), 1);
}

TEST_P(StationsTest, ATransactionIsUndoneEvenIfTheFileCantBeAsked) {
    mine.Open("bancos", connection);
    const std::filesystem::path file = connection.database().path();
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    connection.BeginTrans();
    std::filesystem::resize_file(file, 0);
    EXPECT_EQ(errorOf([&] { connection.CommitTrans(); }), Errc::io);
    connection.RollbackTrans();
    EXPECT_FALSE(connection.inTransaction());
    std::ofstream(file, std::ios::binary | std::ios::in) << bytes.str();
    save(connection, mine, "2", "Meu");
    EXPECT_EQ(shown(mine, "2"), "Meu");
}

TEST_P(StationsTest, ATableThatAnotherProgramRenamesIsAnErrorWhereItIsOpen) {
    Recordset whole;
    Recordset list;
    Recordset join;
    Recordset others;
    whole.Open("bancos", connection);
    list.Open("select * from bancos order by nome", connection);
    join.Open("select bancos.nome,numero from cheques inner join bancos on "
              "cheques.banco=bancos.codigo",
              connection);
    others.Open("cheques", connection);
    const auto rename = [&](const char* name, const char* newName) {
        jet::Table& objects = other.database().table("MSysObjects");
        const std::size_t column = *objects.findColumn("Name");
        jet::RowCursor row = objects.scan();
        for (bool there = row.first(); there; there = row.next()) {
            if (row.row().value(column) != jet::Value{std::string(name)})
                continue;
            const jet::Assignment change[] = {
                {column, std::string(newName)}
            };
            objects.update(row.id(), change);
            other.database().flush();
            return;
        }
    };
    rename("bancos", "bancos velhos");
    const auto gone = [](const std::function<void()>& action) {
        try {
            action();
            ADD_FAILURE() << "no error";
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), Errc::notFound) << error.what();
            EXPECT_NE(std::string(error.what()).find("\"bancos\""), std::string::npos)
                << error.what();
        }
    };
    gone([&] { whole.MoveNext(); });
    gone([&] { static_cast<void>(whole.RecordCount()); });
    gone([&] { whole.Requery(); });
    gone([&] { list.Requery(); });
    gone([&] { list.MoveFirst(), static_cast<void>(list["nome"].text()); });
    gone([&] { join.Requery(), join.MoveLast(); });
    gone([&] { Recordset().Open("select * from bancos", connection); });
    gone([&] { Recordset().Open("bancos", connection); });
    others.Requery();
    EXPECT_GT(others.RecordCount(), 0);

    rename("bancos velhos", "bancos");
    Recordset again;
    again.Open("select * from bancos order by nome", connection);
    EXPECT_EQ(again["nome"].text(), "Agrário");
    Recordset joined;
    joined.Open("select bancos.nome,numero from cheques inner join bancos on "
                "cheques.banco=bancos.codigo",
                connection);
    EXPECT_GT(joined.RecordCount(), 0);
    gone([&] { whole.MoveFirst(); });
}

/// In one format: what is remembered has nothing to do with it, and so many rows take their time.
class ManyRowsTest : public StationsTest {};
INSTANTIATE_TEST_SUITE_P(, ManyRowsTest, testing::Values(jet::Version::jet4), keptName);

TEST_P(ManyRowsTest, HoweverManyRowsAreReadMeanwhileWhatWasShownCounts) {
    constexpr int kRows = 100'001;
    {
        jet::DatabaseTransaction many(connection.database());
        const std::size_t name = *table("bancos").findColumn("nome");
        const std::vector<jet::Assignment> given{
            {name, std::string("Agência")}
        };
        for (int i = 0; i < kRows; ++i)
            table("bancos").insert(given);
        many.commit();
    }
    openBanks();
    const Shown before = show(mine, "2");
    save(other, theirs, "2", "Deles");
    int read = 0;
    for (mine.MoveFirst(); !mine.EOF(); mine.MoveNext())
        read += mine["nome"].text().empty() ? 0 : 1;
    EXPECT_EQ(read, kRows + 3);
    EXPECT_EQ(errorOf([&] { save(connection, mine, "2", "Meu", before); }), Errc::conflict);
}

} // namespace
