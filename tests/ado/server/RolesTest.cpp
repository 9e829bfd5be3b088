// Who may do what in a shop on a server.
#include "ado/Connection.h"
#include "ado/ConnectionString.h"
#include "ado/Recordset.h"
#include "ado/ServerShop.h"
#include "ado/Shop.h"
#include "ado/server/ServerWire.h"
#include "support/Cluster.h"

#include <gmock/gmock.h>

#include <thread>
#include <utility>

namespace {

using jet::Errc;
using testing::Not;
using testing::StartsWith;

/// A shop, and who logs in at its server.
class RolesTest : public testing::Test {
protected:
    void SetUp() override {
        if (const std::string why = Cluster::absence(); !why.empty())
            GTEST_SKIP() << why;
        address_ = Cluster::instance(shopTables()).newDatabase();
        ado::createShopOnServer(address_, shopTables(), {"dono da loja", "atendentes"});
        ado::ServerWire wire(address_);
        for (const char* step :
             {"do $$ begin create role maria login; create role joana login; create role jose "
              "login; exception when duplicate_object then null; end $$",
              R"(grant "dono da loja" to joana)", "grant atendentes to maria"})
            static_cast<void>(wire.run(step));
    }
    [[nodiscard]] std::string as(const std::string& who) const {
        return Cluster::as(who, address_);
    }
    /// What the server says to a statement of hers; "" if it does it.
    static std::string refusal(ado::ServerWire& wire, const std::string& sql) {
        try {
            static_cast<void>(wire.run(sql));
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), Errc::readOnly) << error.what();
            return error.what();
        }
        return {};
    }
    std::string address_;
};

const jet::TableSpec kNotes{
    "notas",
    {{"numero", jet::ColumnType::longInteger, 0, true}, {"texto", jet::ColumnType::text, 20}},
    {{"PrimaryKey", {{"numero"}}, true}                                                }
};

void addNote(ado::Connection& connection, const char* table, const char* column) {
    ado::Recordset rows;
    rows.Open(table, connection);
    rows.AddNew();
    rows[column] = "Nova";
    rows.Update();
    rows[column] = "Outra";
    rows.Update();
    rows.AddNew();
    rows[column] = "De passagem";
    rows.Update();
    rows.Delete();
}

TEST_F(RolesTest, AClerkWorksWithRowsAndMakesNoTable) {
    ado::Connection connection;
    connection.Open("Data Source=" + ado::quotedValue(as("maria")));
    EXPECT_NO_THROW(addNote(connection, "bancos", "nome"));
    try {
        connection.store().createTable(kNotes);
        ADD_FAILURE() << "made a table";
    } catch (const jet::Error& error) {
        EXPECT_EQ(error.code(), Errc::readOnly) << error.what();
    }
}

TEST_F(RolesTest, AClerkChangesNothingOfTheTablesThemselves) {
    ado::ServerWire wire(as("maria"));
    for (const char* sql :
         {"drop table bancos", "alter table bancos add column x integer", "truncate bancos",
          "create table valtrino.x (n integer)", "create schema x", "drop schema valtrino cascade",
          "create index on bancos (nome)", "alter table bancos disable trigger all",
          "create or replace function valtrino.jet_len(text) returns integer return 1",
          "set role \"dono da loja\"", "create table public.x (n integer)",
          "create temporary table x (n integer)"})
        EXPECT_THAT(refusal(wire, sql), StartsWith("O servidor não deixa este usuário")) << sql;
}

TEST_F(RolesTest, WhatTheOwnersPeopleMakeIsTheOwnersAndForAllClerks) {
    ado::Connection owner;
    owner.Open("Data Source=" + ado::quotedValue(as("joana")));
    owner.store().createTable(kNotes);
    ado::Connection clerk;
    clerk.Open("Data Source=" + ado::quotedValue(as("maria")));
    EXPECT_NO_THROW(addNote(clerk, "notas", "texto"));
    ado::ServerWire wire(address_);
    EXPECT_EQ(wire.run("select distinct tableowner from pg_tables where schemaname = 'valtrino'")
                  .field(0, 0),
              "dono da loja");
}

TEST_F(RolesTest, WhoIsNeitherDoesntGetIn) {
    EXPECT_THROW(ado::ServerWire{as("jose")}, jet::Error);
}

TEST_F(RolesTest, NobodyHoldsTheServerUpForever) {
    ado::ServerWire wire(address_);
    const ado::ServerRows set =
        wire.run("select unnest(setconfig) from pg_db_role_setting s join pg_database d on "
                 "d.oid = s.setdatabase where d.datname = current_database() order by 1");
    ASSERT_EQ(set.rows(), 2);
    EXPECT_EQ(set.field(0, 0), "idle_in_transaction_session_timeout=10min");
    EXPECT_EQ(set.field(1, 0), "statement_timeout=10min");
}

// Another shop of the same server has them already.
TEST_F(RolesTest, RolesThatAreThereServeASecondShop) {
    const std::string other = Cluster::instance(shopTables()).newDatabase();
    EXPECT_NO_THROW(ado::createShopOnServer(other, shopTables(), {"dono da loja", "atendentes"}));
}

// He may make roles and bases, and isn't the master of the server.
TEST_F(RolesTest, WhoMakesAShopActsForItsOwner) {
    const std::string base = Cluster::instance(shopTables()).newDatabase();
    Cluster::answer(base, "do $$ begin create role tecnico login createrole createdb; "
                          "execute format('alter database %I owner to tecnico', "
                          "current_database()); end $$");
    const jet::TableSpec table{
        "fichas",
        {{"numero", jet::ColumnType::byte},
          {"nome", jet::ColumnType::text, 20},
          {"cidade", jet::ColumnType::text, 20},
          {"obs", jet::ColumnType::memo}},
        {{"PrimaryKey", {{"numero"}}, true},    {"nome", {{"nome"}, {"cidade"}}}   }
    };
    jet::TableSpec further = table;
    further.indexes = {
        {"cidade", {{"CIDADE"}}},
        {"falta",  {{"falta"}} },
        {"nome",   {{"nome"}}  }
    };
    further.indexes.front().included = {"nome", "obs", "falta"};
    ado::createShopOnServer(Cluster::as("tecnico", base),
                            {
                                {table}
    },
                            {"dono novo", "novos"}, {{further, kNotes}});
    EXPECT_EQ(Cluster::answer(base, "select tableowner from pg_tables where tablename = 'fichas'"),
              "dono novo");
    EXPECT_THAT(Cluster::answer(base, "select string_agg(indexdef, '; ') from pg_indexes "
                                      "where tablename = 'fichas'"),
                testing::AllOf(testing::HasSubstr("INCLUDE (nome)"), Not(testing::HasSubstr("obs")),
                               Not(testing::HasSubstr("falta"))));
}

TEST_F(RolesTest, WhoWasFasterIsNamedUnlessItIsOnesOwnName) {
    const auto ofBank = [](ado::Connection& connection, ado::Recordset& bank) -> ado::Recordset& {
        bank.Open("select * from bancos where codigo=1", connection);
        return bank;
    };
    ado::Connection maria;
    maria.Open("Data Source=" + ado::quotedValue(as("maria")));
    ado::Recordset banks;
    banks.Open("bancos", maria);
    banks.AddNew();
    banks["nome"] = "Sul";
    banks.Update();
    for (const auto& [who, by] : {std::pair("joana", "alterado por joana depois"),
                                  std::pair("maria", "alterado por outra janela ou por outro")}) {
        ado::Recordset hers;
        const ado::Shown shown = ofBank(maria, hers).shown();
        const std::uint64_t heard = maria.store().generation();
        ado::Connection other;
        other.Open("Data Source=" + ado::quotedValue(as(who)));
        ado::Recordset bank;
        ofBank(other, bank)["nome"] = std::string("De ") + who;
        bank.Update();
        while (maria.store().generation() == heard)
            std::this_thread::yield();
        try {
            hers.Edit(shown);
            ADD_FAILURE() << "nobody was faster";
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), Errc::conflict);
            EXPECT_THAT(error.what(), testing::HasSubstr(by));
        }
    }
}

} // namespace
