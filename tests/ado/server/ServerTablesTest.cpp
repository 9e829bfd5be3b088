// Tables of a server: of every type, with the keys that there are, and changed while they are open.
#include "ado/Follower.h"
#include "ado/server/ShopWithOthers.h"
#include "jet/Numbers.h"
#include "jet/TableDefinition.h"
#include "support/Cluster.h"

#include <gmock/gmock.h>

#include <map>

namespace {

using ado::Recordset;
using jet::ColumnType;
using jet::Currency;
using jet::Errc;
using jet::Value;
using testing::ElementsAre;
using testing::HasSubstr;
using Strings = std::vector<std::string>;

class ServerTablesTest : public ShopWithOthers {
protected:
    [[nodiscard]] Strings columnsOf(const char* table) {
        Strings names;
        for (const jet::Column& column : connection.store().shape(table).columns())
            names.push_back(column.name);
        return names;
    }
};
INSTANTIATE_TEST_SUITE_P(, ServerTablesTest, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ServerTablesTest);

const jet::TableSpec kTypes{
    "tipos",
    {{"n", ColumnType::longInteger, 0, true},
      {"byte", ColumnType::byte},
      {"curto", ColumnType::integer},
      {"longo", ColumnType::longInteger},
      {"valor", ColumnType::currency},
      {"simples", ColumnType::single},
      {"duplo", ColumnType::real},
      {"dia", ColumnType::date},
      {"texto", ColumnType::text, 10},
      {"sim", ColumnType::boolean},
      {"memo", ColumnType::memo},
      {"guid", ColumnType::guid},
      {"cru", ColumnType::binary, 4},
      {"objeto", ColumnType::ole},
      {"decimal", ColumnType::numeric, 0, false, 10, 2},
      {"preciso", ColumnType::numeric, 0, false, 10, 4}},
    {{"PrimaryKey", {{"n"}}, true}         }
};

TEST_P(ServerTablesTest, EveryTypeIsReadAsItWasStored) {
    makeTable(kTypes);
    jet::Guid guid;
    for (std::size_t i = 0; i < guid.bytes.size(); ++i)
        guid.bytes[i] = static_cast<std::byte>(16 * i + i);
    const std::pair<const char*, Value> values[] = {
        {"byte",    std::int64_t{255}                       },
        {"curto",   std::int64_t{-300}                      },
        {"longo",   std::int64_t{70'000}                    },
        {"valor",   Currency{-12'345}                       },
        {"simples", 0.5                                     },
        {"duplo",   -1.25e100                               },
        {"dia",     jet::Date::of({2024, 2, 29, 23, 59, 58})},
        {"texto",   std::string("d'água")                  },
        {"sim",     true                                    },
        {"memo",    std::string("longo")                    },
        {"guid",    guid                                    },
        {"cru",     jet::Bytes{std::byte{0xF0}}             },
        {"objeto",  jet::Bytes(3,                             std::byte{0x0F})},
        {"decimal",         12.34                                        },
        {"preciso",         1.2345},
    };
    Recordset rows;
    rows.Open("tipos", connection);
    rows.AddNew();
    for (const auto& [field, value] : values)
        if (const auto* const number = std::get_if<double>(&value); number && *number > 1)
            rows[field] = *number > 12 ? "12,34" : "1,2345"; // exactly
        else
            rows[field] = value;
    rows.Update();
    for (const char* statement :
         {"tipos", "select * from tipos where tipos.n=1",
          "select tipos.* from tipos inner join bancos on bancos.codigo=tipos.n",
          "select byte,curto,longo,valor,simples,duplo,dia,texto,sim,memo,guid,cru,objeto,decimal,"
          "preciso from tipos group by byte,curto,longo,valor,simples,duplo,dia,texto,sim,memo,"
          "guid,cru,objeto,decimal,preciso"}) {
        SCOPED_TRACE(statement);
        if (rowsIn("bancos") == 0)
            elsewhere("insert into bancos (nome) values ('Um')");
        Recordset again;
        again.Open(statement, connection);
        for (const auto& [field, value] : values)
            EXPECT_TRUE(again[field].value() == value) << field << ": " << again.FieldCount();
    }
    EXPECT_EQ(rows["guid"].text(), guid.text());
}

TEST_P(ServerTablesTest, WhatAColumnDoesntHoldIsRefused) {
    makeTable(kTypes);
    Recordset rows;
    rows.Open("tipos", connection);
    const std::pair<const char*, std::string> refused[] = {
        {"curto", "32768"           },
        {"curto", "-32769"          },
        {"longo", "2147483648"      },
        {"longo", "-2147483649"     },
        {"longo", "1,5"             },
        {"dia",   "31/02/2024"      },
        {"texto", "12345678901"     },
        {"texto", std::string("a\0b", 3)},
        {"memo",       std::string("a\0b",                    3)},
        {"decimal",     "1,234"   },
    };
    for (const auto& [field, text] : refused)
        EXPECT_THAT(rows[field].refusal(text).value_or(""), HasSubstr(field)) << text;
    const std::pair<const char*, std::string> taken[] = {
        {"curto", "-32768"          },
        {"longo", "2147483647"      },
        {"texto", "1234567890"      },
        {"memo",  std::string(70'000, 'm')},
        {"dia",       "29/02/2024"                    },
        {"sim",       "sim"}
    };
    for (const auto& [field, text] : taken)
        EXPECT_EQ(rows[field].refusal(text), std::nullopt) << field;
    rows.AddNew();
    rows["memo"] = std::string("a\0b", 3);
    EXPECT_EQ(errorOf([&] { rows.Update(); }), Errc::outOfRange);
    rows["memo"] = "a";
    rows["byte"] = 256;
    EXPECT_EQ(errorOf([&] { rows.Update(); }), Errc::rule);
    rows["byte"] = 255;
    rows.Update();
    EXPECT_EQ(rows["byte"].integer(), 255);
}

TEST_P(ServerTablesTest, WhatIsLeftEmptyIsTheServersToFill) {
    makeTable(kTypes);
    makeTable(
        {"senhas", {{"n", ColumnType::longInteger, 0, true}}, {{"PrimaryKey", {{"n"}}, true}}});
    Recordset rows;
    rows.Open("tipos", connection);
    rows.AddNew();
    rows["n"] = nullptr;
    rows["sim"] = nullptr;
    rows.Update();
    EXPECT_EQ(rows["n"].integer(), 1);
    EXPECT_EQ(rows["sim"].value(), Value(false));
    Recordset numbers;
    numbers.Open("senhas", connection);
    numbers.AddNew();
    numbers.Update();
    EXPECT_EQ(numbers["n"].integer(), 1);
    const ado::Shown shown = rows.shown();
    rows.Edit(shown);
    rows.Update(); // nothing of it
    EXPECT_FALSE(rows.isOther(shown));
    elsewhere("update tipos set memo = 'outro'");
    EXPECT_EQ(errorOf([&] { rows.Edit(shown); }), Errc::conflict);

    // The same many at once.
    ado::Store& store = connection.store();
    EXPECT_TRUE(store.writesAtOnce());
    jet::Row empty(kTypes.columns.size());
    const jet::Row none{Value()};
    jet::Row numbered = empty;
    numbered[0] = std::int64_t{9};
    numbered[9] = false;
    ado::Transaction transaction(connection);
    const auto write = [&](const char* table, const jet::Row* before, const jet::Row* after) {
        const ado::Store::RowWrite one[] = {
            {table, before, after}
        };
        return store.write(one);
    };
    EXPECT_TRUE(write("tipos", nullptr, &empty));
    EXPECT_TRUE(write("senhas", nullptr, &none));
    EXPECT_TRUE(write("tipos", nullptr, &numbered));
    EXPECT_TRUE(write("tipos", &numbered, &numbered)) << "which only has to be there, as it is";
    EXPECT_FALSE(write("nada", nullptr, &empty));
    transaction.commit();
    EXPECT_EQ(column("select n from tipos where not sim", "n"), (Strings{"1", "2", "9"}));
    EXPECT_EQ(rowsIn("senhas"), 2);
}

TEST_P(ServerTablesTest, ColumnsThatOthersHaveMadeAreReadAsFarAsTheyAreKnown) {
    alter("create table soltos (n integer primary key, solto numeric, livre varchar, "
          "exato timestamp, preco numeric(19,4), outro numeric(10,4), rede inet)");
    elsewhere("do $$ begin insert into soltos values (1, 2.5, 'd''água', '2024-02-29 10:00:00.75', "
              "'NaN', 2.5, '127.0.0.1'); perform pg_notify('valtrino', 'soltos:0'); end $$");
    Recordset rows;
    rows.Open("soltos", connection);
    EXPECT_EQ(rows["solto"].number(), 2.5);
    EXPECT_EQ(rows["livre"].text(), "d'água");
    EXPECT_EQ(rows["livre"].DefinedSize(), std::nullopt);
    EXPECT_EQ(rows["exato"].date(), jet::Date::of({2024, 2, 29, 10, 0, 0}));
    EXPECT_EQ(rows["preco"].currency(), Currency{});
    EXPECT_EQ(rows["outro"].number(), 2.5);
    EXPECT_EQ(rows["rede"].text(), "127.0.0.1");
    rows["livre"] = std::string(300, 'x');
    rows.Update();
    EXPECT_EQ(rows["livre"].text(), std::string(300, 'x'));
}

// ---- keys

TEST_P(ServerTablesTest, AKeyOfTwoColumnsIsGoneByInItsOwnOrder) {
    alter("create table pares (a integer, b varchar(10) collate texto, c integer, "
          "primary key (b, a))");
    EXPECT_THAT(connection.store().keyOf("pares"), ElementsAre(1U, 0U));
    Recordset rows;
    rows.Open("pares", connection);
    for (const auto& [a, b] : {std::pair(1, "y"), std::pair(2, "x"), std::pair(1, "x")}) {
        rows.AddNew();
        rows["a"] = a;
        rows["b"] = b;
        rows.Update();
    }
    EXPECT_EQ(column("pares", "a"), (Strings{"1", "2", "1"}));
    rows.Requery();
    rows.FindFirst("a=2");
    rows["c"] = 5;
    rows.Update();
    EXPECT_EQ(rows["c"].integer(), 5);
    rows.Delete();
    rows.MoveNext();
    EXPECT_EQ(rows["b"].text(), "y");
    EXPECT_EQ(rows.RecordCount(), 2);
    rows.setFilter("a=1");
    rows.AddNew();
    rows["a"] = 1;
    rows["b"] = "z";
    rows.Update();
    rows.MoveNext();
    EXPECT_TRUE(rows.EOF()) << "it stands behind all others";

    Recordset names;
    makeTable({
        "siglas",
        {{"sigla", ColumnType::text, 5}, {"nome", ColumnType::text, 20}},
        {{"PrimaryKey", {{"sigla"}}, true}                             }
    });
    elsewhere("insert into siglas values ('b', 'Banco'), ('5', 'Cinco')");
    names.Open("siglas", connection);
    names.FindFirst("sigla='B'");
    EXPECT_EQ(names["nome"].text(), "Banco");
    EXPECT_EQ(errorOf([&] { names.FindFirst("sigla=5"); }), Errc::syntax) << "no text";
}

TEST_P(ServerTablesTest, WithoutAKeyRowsAreOnlyRead) {
    makeTable({"avulsos", {{"n", ColumnType::longInteger}}, {}});
    elsewhere("insert into avulsos values (2), (1)");
    Recordset rows;
    rows.Open("select * from avulsos order by n", connection);
    EXPECT_EQ(column(rows, "n"), (Strings{"1", "2"}));
    rows.MoveFirst();
    EXPECT_EQ(errorOf([&] { rows["n"] = 3; }), Errc::readOnly);
    EXPECT_EQ(errorOf([&] { rows.Delete(); }), Errc::readOnly);
    EXPECT_THAT(connection.store().keyOf("avulsos"), ElementsAre());
    ado::Transaction transaction(connection);
    const jet::Row row{std::int64_t{3}};
    const ado::Store::RowWrite one[] = {
        {"avulsos", nullptr, &row}
    };
    EXPECT_FALSE(connection.store().write(one)) << "a row is found by its key";
}

TEST_P(ServerTablesTest, ChangesAreToldByWhateverNameTheKeyHas) {
    makeTable({
        "copos d'água",
        {{"nº d'água", ColumnType::integer},    {"nome", ColumnType::text, 20}              },
        {{"PrimaryKey", {{"nº d'água"}}, true}, {"nome", {{"nome"}, {"nº d'água", false}}}}
    });
    std::map<std::uint32_t, int> rows;
    ado::Follower follower(connection, "copos d'água", {"nº d'água", "nome"},
                           [&](std::uint32_t block, ado::Follower::Rows& given) {
                               for (rows[block] = 0; given.next();)
                                   rows[block] += given.isNull(1) ? 100 : 1;
                           });
    EXPECT_EQ(follower.progress(), 0);
    while (follower.follow(std::chrono::milliseconds(5)))
        continue;
    EXPECT_EQ(follower.progress(), 1);
    elsewhere(R"(insert into "copos d'água" values (1, 'um'), (1500, null))");
    elsewhere("update \"copos d'água\" set nome = 'dois' where nome = 'um'");
    while (follower.follow(std::chrono::milliseconds(5)))
        continue;
    EXPECT_EQ(rows[0], 1);
    EXPECT_EQ(rows[1], 100);
    EXPECT_EQ(follower.progress(), 1);
}

TEST_P(ServerTablesTest, WhatCantBeFollowedIsSaid) {
    makeTable(kTypes);
    makeTable({"avulsos", {{"n", ColumnType::longInteger}}, {}});
    const auto refusal = [&](const char* table, const char* field) {
        return errorOf([&] { const ado::Follower follower(connection, table, {field}, {}); });
    };
    EXPECT_EQ(refusal("nada", "n"), Errc::notFound);
    EXPECT_EQ(refusal("tipos", "nada"), Errc::notFound);
    EXPECT_EQ(refusal("tipos", "memo"), Errc::unsupported);
    EXPECT_EQ(refusal("avulsos", "n"), Errc::unsupported);
}

// ---- tables that change

TEST_P(ServerTablesTest, TablesThatOthersChangeAreTheNewOnesForWhoOpensThemNow) {
    ado::Store& store = connection.store();
    alter("create table fichas (a integer, b varchar(10) collate texto, primary key (a)); "
          "insert into fichas values (1, 'um'), (2, 'dois')");
    Recordset old;
    old.Open("select * from fichas where a>0", connection);
    EXPECT_EQ(old["b"].text(), "um");
    alter("alter table fichas add c integer");
    EXPECT_THAT(columnsOf("fichas"), ElementsAre("a", "b", "c"));
    EXPECT_EQ(old.FieldCount(), 2U) << "as it was opened";
    old.MoveLast();
    EXPECT_EQ(old["b"].text(), "dois");
    alter("alter table fichas rename c to d");
    EXPECT_THAT(columnsOf("fichas"), ElementsAre("a", "b", "d"));
    alter("alter table fichas alter d type double precision");
    EXPECT_EQ(store.shape("fichas").columns()[2].type, ColumnType::real);
    alter("alter table fichas alter b type varchar(20) collate texto");
    EXPECT_EQ(store.shape("fichas").columns()[1].maxCharacters(), 20U);
    alter("alter table fichas drop constraint fichas_pkey, add primary key (b)");
    EXPECT_THAT(store.keyOf("fichas"), ElementsAre(1U));
    alter("drop table fichas; create table fichas (a integer, b varchar(20) collate texto, "
          "d double precision, primary key (b))");
    EXPECT_EQ(rowsIn("fichas"), 0);
    EXPECT_EQ(errorOf([&] {
                  makeTable({"FICHAS", {{"a", ColumnType::longInteger}}, {}});
              }),
              Errc::exists);
    alter("drop table fichas");
    EXPECT_FALSE(store.hasTable("fichas"));
    EXPECT_EQ(errorOf([&] { static_cast<void>(store.shape("fichas")); }), Errc::notFound);
    old.Requery();
    EXPECT_EQ(errorOf([&] { static_cast<void>(old["b"].text()); }), Errc::notFound);
    Recordset gone;
    EXPECT_EQ(errorOf([&] { gone.Open("select * from fichas", connection); }), Errc::notFound);
    EXPECT_EQ(errorOf([&] { gone.Open("select b.nada+1 as c from bancos as b", connection); }),
              Errc::notFound)
        << "a field that only the server looks for";
}

TEST_P(ServerTablesTest, ATableThatCantBeMadeLeavesNothing) {
    const jet::TableSpec wrong{
        "fichas", {{"n", ColumnType::longInteger}}, {{"PrimaryKey", {{"falta"}}, true}}};
    EXPECT_EQ(errorOf([&] { makeTable(wrong); }), Errc::notFound);
    EXPECT_FALSE(connection.store().hasTable("fichas"));
    ado::Transaction transaction(connection);
    EXPECT_EQ(errorOf([&] { makeTable(wrong); }), Errc::notFound);
    makeTable({"fichas", {{"n", ColumnType::longInteger}}, {}});
    EXPECT_TRUE(connection.store().hasTable("fichas"));
    transaction.commit();
    EXPECT_EQ(rowsIn("fichas"), 0);
}

TEST_P(ServerTablesTest, ADatabaseWithoutAShopIsToldSo) {
    ado::Connection none;
    try {
        none.Open("Data Source=" + Cluster::instance(shopTables()).newDatabase());
        ADD_FAILURE() << "is open";
    } catch (const jet::Error& error) {
        EXPECT_EQ(error.code(), Errc::notFound);
        EXPECT_THAT(error.what(), HasSubstr("não tem uma loja"));
    }
}

TEST_P(ServerTablesTest, AServerThatOnlyReadsSaysSo) {
    EXPECT_EQ(connection.store().readOnlyReason(), std::nullopt);
    EXPECT_EQ(connection.store().readOnlyReason("bancos"), std::nullopt);
    const auto setting = [&](const char* words) {
        static_cast<void>(past.run("do $$ begin execute format('alter database %I " +
                                   std::string(words) + "', current_database()); end $$"));
    };
    setting("set default_transaction_read_only = on");
    {
        ado::Connection station;
        station.Open(connectionString());
        setting("reset default_transaction_read_only");
        EXPECT_THAT(station.store().readOnlyReason().value_or(""),
                    HasSubstr("somente para leitura"));
        EXPECT_THAT(station.store().readOnlyReason("bancos").value_or(""),
                    HasSubstr(station.store().place()));
        EXPECT_EQ(errorOf([&] { static_cast<void>(station.store().readOnlyReason("nada")); }),
                  Errc::notFound);
        Recordset banks;
        banks.Open("bancos", station);
        banks.AddNew();
        EXPECT_EQ(errorOf([&] { banks.Update(); }), Errc::readOnly);
    }
    setting("reset default_transaction_read_only");
}

} // namespace
