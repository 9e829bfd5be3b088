// A list of rows that is walked and searched on a server, of which only some are here, while others
// and we ourselves change them.
#include "ado/server/ShopWithOthers.h"

#include <gmock/gmock.h>

namespace {

using ado::Recordset;
using jet::Errc;
using testing::ElementsAre;
using Strings = std::vector<std::string>;

class ServerListTest : public ShopWithOthers {
protected:
    ServerListTest() { addSomeOfEach(); }
    /// More banks than come at once: 4 to 43.
    void addBanks() {
        elsewhere("insert into bancos (cod_banco, nome) "
                  "select n, 'Banco ' || chr(64 + n % 20) from generate_series(1, 40) n");
    }
};
INSTANTIATE_TEST_SUITE_P(, ServerListTest, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ServerListTest);

// ---- rows that are kept for who walks over them again

TEST_P(ServerListTest, WhatIsKeptServesNoOtherListAndNoOtherMoment) {
    addBanks();
    Recordset banks;
    banks.Open("bancos", connection);
    banks.setSort("nome");
    Strings before = walk(banks);
    ASSERT_EQ(before.size(), 43U);
    const auto setAside = [&] {
        banks.setSort("nome");
        before = walk(banks);
        banks.FindFirst("nome='Banco C' and codigo>10");
        EXPECT_EQ(banks["nome"].text(), "Banco C");
    };
    const auto again = [&] {
        banks.setSort(banks.Sort());
        return walk(banks);
    };
    setAside();
    EXPECT_EQ(waits([&] { EXPECT_EQ(again(), before); }), 0U);

    setAside();
    banks.setFilter("codigo>2");
    EXPECT_EQ(again().size(), 41U) << "another condition";
    banks.clearFilter();

    setAside();
    banks.setSort("codigo");
    EXPECT_EQ(again().front(), "Banco do Norte") << "another order";

    setAside();
    elsewhere("update bancos set nome = 'Aaa' where codigo = 30");
    EXPECT_EQ(again().front(), "Aaa") << "changed meanwhile";

    setAside();
    {
        const auto held = connection.store().hold();
        EXPECT_GT(waits([&] { EXPECT_EQ(again(), before); }), 0U) << "of that one state";
        EXPECT_GT(waits([&] { EXPECT_EQ(again(), before); }), 0U);
    }
    {
        ado::Transaction transaction(connection);
        EXPECT_GT(waits([&] { EXPECT_EQ(again(), before); }), 0U) << "of the transaction";
    }
}

TEST_P(ServerListTest, WhoHasChangedTheListWalksOverItAnew) {
    addBanks();
    Recordset banks;
    banks.Open("bancos", connection);
    banks.setSort("nome desc");
    const auto again = [&] {
        banks.setSort("nome desc");
        return walk(banks);
    };
    again();
    banks.MoveFirst();
    banks.Delete();
    EXPECT_EQ(again().size(), 42U) << "deleted";
    banks.MoveFirst();
    banks["nome"] = "Zz";
    banks.Update();
    EXPECT_EQ(again().front(), "Zz") << "changed";
    banks.Requery();
    EXPECT_EQ(again().size(), 42U) << "asked for anew";
    banks.MoveFirst();
    elsewhere("delete from bancos where nome = 'Banco do Sul'");
    EXPECT_EQ(banks["nome"].text(), "Zz");
    EXPECT_EQ(again().size(), 41U) << "deleted by others, though the first row is known";
}

// ---- after changes of one's own

TEST_P(ServerListTest, AKeyIsLookedForWhereItStandsByNow) {
    Recordset banks;
    banks.Open("bancos", connection);
    banks.setSort("nome");
    const auto asked = [&](const char* criterion, const char* name) {
        return waits([&] {
            banks.FindFirst(criterion);
            EXPECT_EQ(banks.EOF() ? "" : banks["nome"].text(), name) << criterion;
        });
    };
    EXPECT_EQ(asked("codigo=2", "Banco do Sul"), 0U) << "all rows are here";
    EXPECT_EQ(asked("codigo=9", ""), 0U);
    EXPECT_EQ(asked("codigo=1 or codigo=3", "Agrário"), 1U) << "no key";
    EXPECT_EQ(asked("cod_banco=33", "Agrário"), 1U) << "no key";
    EXPECT_EQ(asked("codigo>2", "Agrário"), 1U) << "no key";
    EXPECT_EQ(asked("codigo=1", "Banco do Norte"), 1U) << "of others nothing is known any more";
    banks.MoveFirst();
    banks.Delete();
    EXPECT_EQ(asked("codigo=3", ""), 1U) << "deleted here";
    banks.Requery();
    EXPECT_EQ(asked("codigo=1", "Banco do Norte"), 1U) << "asked for anew";
    banks.Requery();
    banks.MoveFirst();
    banks["nome"] = "Norte";
    banks.Update();
    EXPECT_EQ(asked("codigo=1", "Norte"), 1U) << "changed here";
    banks.AddNew();
    banks["nome"] = "Aurora";
    banks.Update();
    EXPECT_EQ(asked("codigo=4", "Aurora"), 1U) << "added here";
    banks.Requery();
    banks.MoveFirst();
    elsewhere("update bancos set nome = 'Outro' where codigo = 4");
    EXPECT_GE(asked("codigo=4", "Outro"), 1U) << "changed elsewhere";
    banks.Requery();
    banks.MoveLast();
    elsewhere("update bancos set nome = 'Mais um' where codigo = 4");
    EXPECT_EQ(banks.RecordCount(), 3);
    EXPECT_GE(asked("codigo=4", "Mais um"), 1U);
}

TEST_P(ServerListTest, ARowAddedStandsBehindAllOthersUntilRequery) {
    Recordset banks;
    banks.Open("bancos", connection);
    banks.setSort("nome");
    for (const char* name : {"Aurora", "Zona"}) {
        banks.AddNew();
        banks["nome"] = name;
        banks.Update();
        EXPECT_EQ(banks["nome"].text(), name);
        banks.MovePrevious();
        EXPECT_EQ(banks["nome"].text(), "Banco do Sul") << name;
        banks.FindFirst(std::string("nome='") + name + "'");
        banks.Delete();
        banks.AddNew();
        banks["nome"] = name;
        banks.Update();
        banks.MoveNext();
        EXPECT_TRUE(banks.EOF()) << name;
        banks.MoveFirst();
        EXPECT_EQ(banks["nome"].text(), "Agrário");
        EXPECT_EQ(banks.RecordCount(), name == std::string("Aurora") ? 4 : 5);
        banks.Requery();
    }
    EXPECT_THAT(walk(banks),
                ElementsAre("Agrário", "Aurora", "Banco do Norte", "Banco do Sul", "Zona"));
}

TEST_P(ServerListTest, ARowAddedMayStandAlone) {
    Recordset far;
    far.Open("select * from bancos where cod_banco>5000 order by nome", connection);
    for (const int code : {1, 6000}) { // one that doesn't belong to them, and one that does
        far.AddNew();
        far["cod_banco"] = code;
        far.Update();
        far.MovePrevious();
        EXPECT_TRUE(far.BOF()) << code;
        far.Requery();
    }
    EXPECT_EQ(far.RecordCount(), 1);
}

TEST_P(ServerListTest, AroundARowThatIsDeletedTheOthersAreKnown) {
    Recordset banks;
    banks.Open("bancos", connection);
    banks.setSort("nome");
    banks.Delete();
    banks.MoveFirst();
    EXPECT_EQ(banks["nome"].text(), "Banco do Norte");
    banks.FindFirst("nome='Banco do Norte' and codigo=1");
    banks.MovePrevious();
    EXPECT_TRUE(banks.BOF());
    banks.MoveNext();
    banks.Delete();
    EXPECT_FALSE(banks.isEmpty()) << "what stands behind isn't here";
    banks.FindFirst("nome='Banco do Sul' and codigo=2");
    banks.Delete();
    EXPECT_TRUE(banks.isEmpty());
    EXPECT_EQ(banks.RecordCount(), 0);
}

TEST_P(ServerListTest, TheCountIsAskedForOnce) {
    addBanks();
    Recordset banks;
    banks.Open("bancos", connection);
    banks.setSort("nome");
    const auto asked = [&](int count) {
        return waits([&] { EXPECT_EQ(banks.RecordCount(), count); });
    };
    EXPECT_EQ(asked(43), 1U);
    EXPECT_EQ(asked(43), 0U);
    EXPECT_EQ(waits([&] { banks.FindFirst("codigo=41"); }), 1U) << "not among those that are here";
    EXPECT_EQ(banks["nome"].text(), "Banco R");
    banks.Requery();
    banks.MoveFirst();
    elsewhere("delete from bancos where codigo = 40");
    EXPECT_EQ(asked(42), 1U);
    banks.Delete();
    EXPECT_EQ(asked(41), 1U);
}

// ---- while others change them

TEST_P(ServerListTest, AnEmptyListFills) {
    Recordset banks;
    banks.Open("select * from bancos where cod_banco>1000 order by nome", connection);
    const auto add = [&](const char* name) {
        elsewhere(std::string("insert into bancos (cod_banco, nome) values (1001, '") + name +
                  "')");
    };
    EXPECT_TRUE(banks.isEmpty());
    EXPECT_TRUE(banks.BOF());
    add("Um");
    EXPECT_FALSE(banks.isEmpty());
    EXPECT_FALSE(banks.BOF());
    EXPECT_EQ(banks.RecordCount(), 1);
    banks.MoveLast();
    EXPECT_EQ(banks["nome"].text(), "Um");
    banks.Delete();
    banks.Requery();
    EXPECT_TRUE(banks.EOF());
    add("Dois");
    banks.MoveFirst();
    EXPECT_EQ(banks["nome"].text(), "Dois");
}

TEST_P(ServerListTest, FromARowThatOthersHaveMovedOrDeletedTheWalkGoesOn) {
    addBanks();
    Recordset list;
    list.Open("bancos", connection);
    list.setSort("nome, codigo");
    const auto at = [&](int code) {
        list.FindFirst("codigo=" + std::to_string(code) + " and nome>''");
        EXPECT_EQ(list["codigo"].integer(), code);
    };
    const auto name = [](const std::string& as, int code) {
        return "update bancos set nome = '" + as + "' where codigo = " + std::to_string(code);
    };
    at(10);
    elsewhere(name("Zebra", 10));
    list.MovePrevious();
    EXPECT_EQ(list["nome"].text(), "Banco S") << "the last of the others";
    at(11);
    elsewhere(name("Banco A", 12));
    list.MovePrevious();
    EXPECT_EQ(list["codigo"].integer(), 30) << "the other Banco G";
    at(10);
    elsewhere(name("Aaa", 10));
    list.MoveNext();
    EXPECT_EQ(list["nome"].text(), "Agrário") << "the first of the others";
    at(3);
    elsewhere(name("Agrária", 3));
    list.MoveNext();
    EXPECT_EQ(list["nome"].text(), "Banco @") << "in its place as before";
    list.MovePrevious();
    EXPECT_EQ(list["nome"].text(), "Agrária");
    elsewhere("delete from bancos where codigo = 3");
    list.MoveNext();
    EXPECT_EQ(list["nome"].text(), "Banco @");
    at(2);
    elsewhere("delete from bancos where codigo = 2");
    list.MoveNext();
    EXPECT_EQ(list["nome"].text(), "Banco E");
    list.MoveLast();
    EXPECT_EQ(list["codigo"].integer(), 42);
    elsewhere("delete from bancos where codigo = 42");
    list.MoveNext();
    EXPECT_TRUE(list.EOF());

    // More than come at once stand on either side.
    Recordset whole;
    whole.Open("bancos", connection);
    whole.FindFirst("codigo=5 and nome>''");
    elsewhere("delete from bancos where codigo = 5");
    whole.MoveNext();
    EXPECT_EQ(whole["codigo"].integer(), 6);
    Strings on = walk(whole, "codigo");
    EXPECT_EQ(on.size(), 37U);
    EXPECT_EQ(on.back(), "43");
    whole.FindFirst("codigo=41 and nome>''");
    elsewhere("delete from bancos where codigo = 41");
    Strings back;
    for (whole.MovePrevious(); !whole.BOF(); whole.MovePrevious())
        back.push_back(whole["codigo"].text());
    EXPECT_EQ(back.size(), 37U);
    EXPECT_EQ(back.front(), "40");
    EXPECT_EQ(back.back(), "1");
}

TEST_P(ServerListTest, WhatOthersHaveDoneToTheRowStoodOnIsntWrittenOver) {
    Recordset mine;
    mine.Open("bancos", connection);
    const ado::Shown shown = mine.shown();
    EXPECT_EQ(mine["nome"].text(), "Banco do Norte");
    static_cast<void>(past.run("update bancos set nome = 'Deles' where codigo = 1"));
    EXPECT_EQ(errorOf([&] { mine.Delete(); }), Errc::conflict) << "told of it or not";
    connection.BeginTrans();
    mine.MoveLast();
    EXPECT_EQ(mine["nome"].text(), "Agrário");
    static_cast<void>(past.run("update bancos set cod_banco = 34 where codigo = 3"));
    EXPECT_EQ(errorOf([&] { mine.Delete(); }), Errc::conflict) << "in a transaction nobody tells";
    connection.RollbackTrans();
    mine.MoveFirst();
    mine.MoveNext();
    mine["nome"] = "Meu";
    elsewhere("delete from bancos where codigo = 2");
    EXPECT_EQ(errorOf([&] { mine.Update(); }), Errc::conflict);
    mine.CancelUpdate();
    EXPECT_EQ(column("bancos", "nome"), (Strings{"Deles", "Agrário"}));
    mine.MoveLast();
    mine.MoveNext();
    EXPECT_FALSE(mine.isOther(shown)) << "no row";
    EXPECT_EQ(errorOf([&] { mine.Delete(shown); }), Errc::gone);
    EXPECT_EQ(errorOf([&] { mine.Edit(shown); }), Errc::gone);
    EXPECT_EQ(errorOf([&] { static_cast<void>(mine.shown()); }), Errc::noCurrentRow);
}

TEST_P(ServerListTest, WhoHasChangedARowIsToldByHisNameIfThatIsKnown) {
    Recordset mine;
    mine.Open("bancos", connection);
    const ado::Shown shown = mine.shown();
    const std::string nobody = " por outra janela ou por outro programa";
    EXPECT_EQ(mine.byWhom(shown), nobody) << "nobody has";
    elsewhere("update cheques set numero = '7' where lancamento = 1");
    EXPECT_EQ(mine.byWhom(shown), nobody) << "another table";
    elsewhere("select pg_notify('valtrino', 'bancos')");
    EXPECT_EQ(mine.byWhom(shown), nobody) << "goes by the same name";
}

// ---- what is asked for

TEST_P(ServerListTest, WhoOnlyReadsForwardsAsksForTheFieldsAndMayCompareAllTheSame) {
    const auto open = [this](Recordset& rows, const char* statement, ado::LockType lock) {
        rows.Open(statement, connection, ado::CursorType::ForwardOnly, lock);
    };
    Recordset names;
    open(names, "select nome from bancos order by cod_banco desc", ado::LockType::ReadOnly);
    EXPECT_EQ(names.FieldCount(), 1U);
    EXPECT_EQ(names["nome"].text(), "Banco do Norte");
    const ado::Shown shown = names.shown();
    EXPECT_FALSE(names.isOther(shown));
    elsewhere("update bancos set cod_banco = 900 where codigo = 1");
    EXPECT_TRUE(names.isOther(shown)) << "though that field isn't asked for";
    EXPECT_THAT(walk(names), ElementsAre("Banco do Norte", "Agrário", "Banco do Sul"));
    Recordset changed;
    open(changed, "select nome from bancos order by cod_banco desc", ado::LockType::Optimistic);
    changed["nome"] = "Norte";
    changed.Update();
    EXPECT_THAT(walk(changed), ElementsAre("Norte", "Agrário", "Banco do Sul"));
}

TEST_P(ServerListTest, OfALongListNoMoreThanAWindowIsKept) {
    constexpr int kRows = 34'000;
    elsewhere("do $$ begin set local session_replication_role = replica; "
              "insert into cheques (numero) select n::text from generate_series(7, " +
              std::to_string(kRows) + ") n; perform pg_notify('valtrino', 'cheques:0'); end $$");
    Recordset cheques;
    cheques.Open("cheques", connection);
    const auto at = [&] { return cheques["lancamento"].integer(); };
    int row = 1;
    for (; row < 1200; ++row) {
        ASSERT_EQ(at(), row);
        cheques.MoveNext();
    }
    for (; row > 0; --row) {
        ASSERT_EQ(at(), row);
        cheques.MovePrevious();
    }
    EXPECT_TRUE(cheques.BOF());
    EXPECT_EQ(cheques.RecordCount(), kRows);
    cheques.MoveLast();
    EXPECT_EQ(at(), kRows);
    cheques.MovePrevious();
    EXPECT_EQ(at(), kRows - 1);
}

} // namespace
