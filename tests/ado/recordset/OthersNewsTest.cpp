// What recordsets that stay open see of the rows that another station adds, changes and deletes.
#include "ado/Shop.h"
#include "jet/TableDefinition.h"
#include "support/Versions.h"

#include <fstream>

namespace {

using ado::Connection;
using ado::Recordset;
using jet::Errc;
using Strings = std::vector<std::string>;

/// Banks 1 to 3 (Banco do Norte, Banco do Sul, Agrário) in three recordsets that were open before:
/// the whole table, a list with a condition, and a list in another order. One of them stands on
/// Banco do Sul in the middle of the names.
class OthersNewsTest : public Shop {
protected:
    OthersNewsTest() {
        addSomeOfEach();
        connection.database().flush();
        other.Open(connectionString());
        theirs.Open("bancos", other);
        whole.Open("bancos", connection);
        some.Open("select * from bancos where cod_banco<1000", connection);
        byName.Open("bancos", connection);
        byName.setSort("nome");
        for (Recordset* mine : open)
            mine->Find("codigo=2");
    }
    void TearDown() override {
        theirs.Close();
        other.Close();
        Shop::TearDown();
    }

    void added(const char* name, int code = 7) {
        theirs.AddNew();
        theirs["cod_banco"] = code;
        theirs["nome"] = name;
        theirs.Update();
        other.flush();
    }
    void changed(const char* row, const char* name, int code = 7) {
        goTo(row);
        theirs["nome"] = name;
        theirs["cod_banco"] = code;
        theirs.Update();
        other.flush();
    }
    void deleted(const char* row) {
        goTo(row);
        theirs.Delete();
        other.flush();
    }
    void goTo(const char* row) {
        theirs.MoveFirst();
        theirs.Find(row);
    }
    static std::string name(const Recordset& rs) { return rs["nome"].text(); }

    Connection other;
    Recordset theirs;
    Recordset whole;
    Recordset some;
    Recordset byName;
    std::vector<Recordset*> open{&whole, &some, &byName};
};
INSTANTIATE_TEST_SUITE_P(, OthersNewsTest, bothVersions(), keptName);

TEST_P(OthersNewsTest, ARowAddedIsFound) {
    added("Cerrado");
    for (Recordset* mine : open) {
        mine->MoveFirst();
        mine->Find("nome='Cerrado'");
        ASSERT_FALSE(mine->EOF());
        EXPECT_EQ((*mine)["codigo"].integer(), 4);
    }
}

TEST_P(OthersNewsTest, ARowAddedIsCountedWithoutAnyMove) {
    added("Cerrado");
    for (Recordset* mine : open) {
        EXPECT_EQ(mine->RecordCount(), 4);
        EXPECT_EQ(name(*mine), "Banco do Sul") << "the place stays";
    }
}

TEST_P(OthersNewsTest, MovesMeetARowAddedAtItsPlace) {
    added("Cerrado");
    EXPECT_EQ(column(whole, "nome"),
              (Strings{"Banco do Norte", "Banco do Sul", "Agrário", "Cerrado"}));
    EXPECT_EQ(column(some, "nome"),
              (Strings{"Banco do Norte", "Banco do Sul", "Agrário", "Cerrado"}));
    byName.MoveNext();
    EXPECT_EQ(name(byName), "Cerrado") << "after Banco do Sul";
    byName.MovePrevious();
    byName.MovePrevious();
    EXPECT_EQ(name(byName), "Banco do Norte");
    for (Recordset* mine : {&whole, &byName}) {
        mine->MoveLast();
        EXPECT_EQ(name(*mine), "Cerrado");
    }
}

TEST_P(OthersNewsTest, FilterAndSortTakeInWhatIsNew) {
    for (Recordset* mine : open) {
        mine->setFilter("nome>'Banco'");
        EXPECT_EQ(mine->RecordCount(), 2);
    }
    added("Cerrado");
    for (Recordset* mine : open) {
        mine->setFilter("nome>'Banco'"); // the same
        EXPECT_EQ(mine->RecordCount(), 3);
        mine->setSort("nome desc");
        EXPECT_EQ(name(*mine), "Cerrado");
    }
    added("Litoral");
    for (Recordset* mine : open) {
        mine->setSort("nome desc");
        EXPECT_EQ(name(*mine), "Litoral");
    }
}

TEST_P(OthersNewsTest, WhatDoesntMeetTheConditionStaysOut) {
    added("Longe", 5000);
    EXPECT_EQ(some.RecordCount(), 3);
    EXPECT_EQ(whole.RecordCount(), 4);
}

TEST_P(OthersNewsTest, ARowChangedShowsSoAndStandsAtItsNewPlace) {
    changed("codigo=3", "Zona Sul");
    EXPECT_EQ(column(byName, "nome"), (Strings{"Banco do Norte", "Banco do Sul", "Zona Sul"}));
    for (Recordset* mine : open) {
        mine->MoveFirst();
        mine->Find("nome='Zona Sul'");
        EXPECT_FALSE(mine->EOF());
        mine->MoveFirst();
        mine->Find("nome='Agrário'");
        EXPECT_TRUE(mine->EOF());
    }
}

TEST_P(OthersNewsTest, ARowThatNoLongerBelongsLeavesTheList) {
    changed("codigo=2", "Banco do Sul", 5000);
    some.MoveNext();
    EXPECT_EQ(name(some), "Agrário");
    EXPECT_EQ(some.RecordCount(), 2);
    EXPECT_EQ(column(some, "codigo"), (Strings{"1", "3"}));
}

TEST_P(OthersNewsTest, AMoveFromARowDeletedGoesToItsNeighbours) {
    deleted("codigo=2");
    for (Recordset* mine : open)
        EXPECT_EQ(mine->RecordCount(), 2);
    whole.MoveNext();
    EXPECT_EQ(name(whole), "Agrário");
    some.MovePrevious();
    EXPECT_EQ(name(some), "Banco do Norte");
    byName.MovePrevious();
    EXPECT_EQ(name(byName), "Banco do Norte");
    byName.MoveNext();
    EXPECT_TRUE(byName.EOF());
}

TEST_P(OthersNewsTest, FindGoesOnFromARowDeleted) {
    deleted("codigo=2");
    for (Recordset* mine : {&whole, &some}) {
        mine->Find("codigo>=2");
        EXPECT_EQ(name(*mine), "Agrário");
    }
    byName.Find("codigo=1");
    EXPECT_TRUE(byName.EOF()) << "it stands before";
}

TEST_P(OthersNewsTest, ARowDeletedCantBeReadNorChanged) {
    deleted("codigo=2");
    for (Recordset* mine : open) {
        EXPECT_EQ(errorOf([&] { (void)name(*mine); }), Errc::conflict);
        EXPECT_EQ(errorOf([&] { (*mine)["nome"] = "Meu"; }), Errc::conflict);
        EXPECT_EQ(errorOf([&] { mine->Delete(); }), Errc::conflict);
    }
    whole.MoveFirst();
    whole.Delete();
    EXPECT_EQ(errorOf([&] { (void)name(whole); }), Errc::noCurrentRow) << "that was nobody else";
}

TEST_P(OthersNewsTest, ANewRowInTheDeletedOnesPlaceIsNotTakenForIt) {
    for (Recordset* mine : open)
        EXPECT_EQ(name(*mine), "Banco do Sul");
    deleted("codigo=2");
    added("Cerrado"); // may get the deleted one's place in the file
    for (Recordset* mine : open)
        EXPECT_EQ(errorOf([&] { (void)name(*mine); }), Errc::conflict);
    whole.MoveNext();
    EXPECT_EQ(name(whole), "Agrário");
    some.MoveNext();
    EXPECT_EQ(name(some), "Agrário");
    byName.MovePrevious();
    EXPECT_EQ(name(byName), "Banco do Norte");
}

TEST_P(OthersNewsTest, AllMayBeDeletedAndOthersCome) {
    for (const char* row : {"codigo=1", "codigo=2", "codigo=3"})
        deleted(row);
    for (Recordset* mine : open) {
        EXPECT_EQ(mine->RecordCount(), 0);
        EXPECT_EQ(errorOf([&] { mine->MoveFirst(); }), Errc::noCurrentRow);
        EXPECT_TRUE(mine->BOF());
        EXPECT_TRUE(mine->EOF());
    }
    added("Cerrado");
    for (Recordset* mine : open) {
        EXPECT_EQ(mine->RecordCount(), 1);
        mine->MoveFirst();
        EXPECT_EQ(name(*mine), "Cerrado");
    }
}

TEST_P(OthersNewsTest, BeforeTheFirstOfNoRowsIsBehindTheLastToo) {
    for (Recordset* mine : open) {
        mine->MoveFirst();
        mine->MovePrevious();
        EXPECT_FALSE(mine->EOF());
    }
    for (const char* row : {"codigo=1", "codigo=2", "codigo=3"})
        deleted(row);
    for (Recordset* mine : open) {
        EXPECT_EQ(mine->RecordCount(), 0);
        EXPECT_TRUE(mine->BOF());
        EXPECT_TRUE(mine->EOF());
    }
}

TEST_P(OthersNewsTest, ATableWithoutAKeyKeepsItsPlaceByTheRow) {
    connection.database().createTable({"avulsos", {{"n", jet::ColumnType::longInteger}}, {}});
    for (const std::int64_t n : {1, 2, 3})
        add("avulsos", {
                           {"n", n}
        });
    connection.flush();
    Recordset mine;
    mine.Open("avulsos", connection);
    Recordset yours;
    yours.Open("avulsos", other);
    const auto deleteTheirs = [&](const char* row) {
        yours.MoveFirst();
        yours.Find(row);
        yours.Delete();
        other.flush();
    };
    mine.Find("n=2");
    deleteTheirs("n=1");
    EXPECT_EQ(mine["n"].integer(), 2);
    deleteTheirs("n=2");
    EXPECT_EQ(errorOf([&] { (void)mine["n"].value(); }), Errc::conflict);
    mine.MoveNext();
    EXPECT_EQ(mine["n"].integer(), 3);
}

TEST_P(OthersNewsTest, WhatIsLateIsTakenInWithAChangeOfOnesOwn) {
    connection.database().setSnapshotHold(std::chrono::hours(1));
    EXPECT_EQ(some.RecordCount(), 3);
    added("Cerrado");
    Recordset editor;
    editor.Open("bancos", connection);
    editor.AddNew();
    editor["cod_banco"] = 8;
    editor["nome"] = "Litoral";
    editor.Update();
    some.Requery();
    EXPECT_EQ(column(some, "nome"),
              (Strings{"Banco do Norte", "Banco do Sul", "Agrário", "Cerrado", "Litoral"}));
}

TEST_P(OthersNewsTest, AWalkGoesOnWhileOthersWrite) {
    int at = 0;
    Strings met;
    for (byName.MoveFirst(); !byName.EOF(); byName.MoveNext()) {
        met.push_back(name(byName));
        added(("Zebra " + std::to_string(++at)).c_str());
        if (at == 3)
            break;
    }
    EXPECT_EQ(met, (Strings{"Agrário", "Banco do Norte", "Banco do Sul"}));
    byName.MoveNext();
    EXPECT_EQ(name(byName), "Zebra 1");
}

TEST_P(OthersNewsTest, InATransactionToo) {
    ado::Transaction transaction(connection);
    added("Cerrado");
    for (Recordset* mine : open) {
        mine->MoveFirst();
        mine->Find("nome='Cerrado'");
        ASSERT_FALSE(mine->EOF());
    }
    byName["nome"] = "Meu";
    byName.Update();
    transaction.commit();
    EXPECT_EQ(theirs.RecordCount(), 4);
    goTo("nome='Meu'");
    EXPECT_FALSE(theirs.EOF());
}

TEST_P(OthersNewsTest, ARowWhosePageIsAnotherTablesByNowIsAConflictNotDamage) {
    Recordset keyset;
    keyset.Open("select * from bancos order by nome", connection, ado::CursorType::Keyset);
    Recordset joined;
    joined.Open("select bancos.nome from cheques inner join bancos on cheques.banco=bancos.codigo",
                connection);
    Recordset cheques;
    cheques.Open("cheques", other);
    auto scan = table("bancos").scan();
    ASSERT_TRUE(scan.first());
    const jet::Format& format = jet::formatOf(GetParam());
    const std::size_t owner =
        jet::number(scan.id().page) * format.pageSize + format.dataPage.owner.at;
    std::fstream file(connection.database().path(),
                      std::ios::binary | std::ios::in | std::ios::out);
    const auto give = [&](const char* newOwner, const char* agency) {
        const std::uint32_t page = jet::number(table(newOwner).definition().page());
        const char bytes[] = {static_cast<char>(page), static_cast<char>(page >> 8), 0, 0};
        file.seekp(static_cast<std::streamoff>(owner));
        file.write(bytes, sizeof bytes).flush();
        cheques["agencia"] = agency;
        cheques.Update();
        other.flush();
    };
    give("cheques", "1");
    for (Recordset* mine : {&keyset, &joined})
        EXPECT_EQ(errorOf([&] { (void)name(*mine); }), Errc::conflict);
    give("bancos", "2");
    keyset.Requery();
    EXPECT_EQ(name(keyset), "Agrário");
}

TEST_P(OthersNewsTest, TheOtherTypesListWhatThereWasUntilRequery) {
    Recordset keyset;
    keyset.Open("select * from bancos order by nome", connection, ado::CursorType::Keyset);
    added("Cerrado");
    changed("codigo=1", "Norte");
    deleted("codigo=3");
    EXPECT_EQ(keyset.RecordCount(), 3);
    keyset.MoveFirst();
    EXPECT_EQ(errorOf([&] { (void)name(keyset); }), Errc::conflict);
    keyset.MoveNext();
    EXPECT_EQ(name(keyset), "Norte");
    keyset.Requery();
    EXPECT_EQ(column(keyset, "nome"), (Strings{"Banco do Sul", "Cerrado", "Norte"}));
}

} // namespace
