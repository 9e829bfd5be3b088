// What a file keeps beside its tables, on the way back from a server.
#include "ado/migrate/Migrated.h"
#include "ado/migrate/RuleText.h"
#include "support/FileRules.h"
#include "support/Versions.h"

namespace {

using jet::RelationshipSpec;
using jet::Row;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const RelationshipSpec kOfBank{"banco do cheque",
                               "cheques",
                               "bancos",
                               {{"banco", "codigo"}},
                               jet::RelationshipFlags::cascadeDelete};

class MigrationBack : public Migration {
protected:
    /// A shop's file with rules of every kind, and what else another program keeps in it.
    std::filesystem::path shop() {
        return file([](jet::Database& database) {
            for (const jet::TableSpec& spec : shopTables())
                database.createTable(spec);
            setRules(database, "cheques",
                     {
                         {.column = "valor",                            .rule = ">0", .message = "O valor é positivo."},
                         {.column = "numero",                                            .required = true,                                       .allowZeroLength = false},
                         {.column = "agencia",                    .defaultValue = "\"0001\""},
                         {.column = "observacao",.rule = "Format([observacao],\"@\")<>\"x\""                 },
                         {.rule = "[bompara]>=[data]",   .message = "Bom para depois."}
            });
            jet::relate(database, kOfBank);
            jet::relate(database, {"só dito",
                                   "cheques",
                                   "cliente_fornecedor",
                                   {{"cliente", "codigo"}},
                                   jet::RelationshipFlags::notEnforced});
            jet::addExtra(
                database,
                {
                    .type = jet::ExtraObject::kQuery,
                    .name = "Os maiores",
                    .link = {    },
                    .steps = { {std::int64_t{1}, jet::Bytes(1), {}, {}, {}, std::int64_t{0}, {}},
                             {std::int64_t{8},
                               jet::Bytes(1),
                               {},
                               {},
                               std::string("cheques.valor>100"),
                               {},
                               {}}}
            });
            jet::addExtra(database,
                          {
                              .type = jet::ExtraObject::kLink,
                              .name = "De fora",
                              .link = {std::string("C:\\outro.mdb"), {}, std::string("t")}
            });
            database.table("bancos").insert(
                Row{std::int64_t{1}, std::int64_t{7}, std::string("Praça")});
        });
    }
    void onServer(std::initializer_list<const char*> statements) {
        ado::ServerWire wire(address_);
        static_cast<void>(wire.run("set search_path = valtrino"));
        for (const char* const sql : statements)
            static_cast<void>(wire.run(sql));
    }
    static std::string messageOf(const std::function<void()>& work) {
        try {
            work();
        } catch (const jet::Error& error) {
            return error.what();
        }
        return "";
    }
};
INSTANTIATE_TEST_SUITE_P(, MigrationBack, bothVersions(), versionName);

class MigrationOfChanges : public MigrationBack {};
INSTANTIATE_TEST_SUITE_P(, MigrationOfChanges, testing::Values(jet::Version::jet4), versionName);

TEST_P(MigrationBack, RulesRelationshipsAndQueriesAreThere) {
    const auto path = shop();
    EXPECT_THAT(there(path).notes, ElementsAre(HasSubstr("observacao"), HasSubstr("\"Os maiores\""),
                                               HasSubstr("\"De fora\"")));
    std::vector<std::string> notes;
    const auto returned = back(&notes);
    EXPECT_THAT(notes, IsEmpty());
    expectSame(path, returned);
    // As the engine keeps them, and not only as they are written.
    jet::Database database(returned);
    jet::Table& cheques = database.table("cheques");
    const auto add = [&](std::int64_t bank, std::int64_t value) {
        const auto at = [&](const char* name) { return *cheques.findColumn(name); };
        return cheques.insert(std::vector<jet::Assignment>{
            {at("banco"),  bank                        },
            {at("numero"), std::string("1")            },
            {at("valor"),  jet::Currency{value * 10000}}
        });
    };
    EXPECT_EQ(messageOf([&] { add(1, -1); }), "O valor é positivo.");
    EXPECT_THAT(messageOf([&] { add(9, 1); }), HasSubstr("bancos"));
    const auto row = cheques.read(add(1, 1));
    EXPECT_EQ(std::get<std::string>((*row)[*cheques.findColumn("agencia")]), "0001");
    jet::RowCursor bank = database.table("bancos").scan();
    ASSERT_TRUE(bank.first());
    database.table("bancos").erase(bank.id());
    EXPECT_EQ(cheques.rowCount(), 0);
}

TEST_P(MigrationOfChanges, WhatWasTakenFromTheServerStaysAway) {
    static_cast<void>(there(shop()));
    onServer({"alter table cheques drop constraint \"O valor é positivo.\"",
              "alter table cheques drop constraint \"falta: numero\"",
              "alter table cheques drop constraint \"banco do cheque\"",
              "alter table cheques alter agencia drop default"});
    std::vector<std::string> notes;
    const auto returned = back(&notes);
    EXPECT_THAT(notes, IsEmpty());
    jet::Database database(returned, onlyRead());
    EXPECT_THAT(extrasOf(database).relationships,
                ElementsAre(testing::Field(&RelationshipSpec::name, "só dito")));
    const auto rules = jet::rulesOf(database, database.table("cheques")).values;
    ASSERT_EQ(rules.size(), 3U);
    EXPECT_TRUE(rules[0].refusesEmptyText);
    EXPECT_FALSE(rules[0].required);
    EXPECT_THAT(rules[1].text, HasSubstr("Format"));
    EXPECT_EQ(rules[2].text, "[bompara]>=[data]");
}

TEST_P(MigrationBack, WhatWasAddedOnTheServerComesIfAFileCanSayIt) {
    const auto path = file([](jet::Database& database) {
        for (const jet::TableSpec& spec : shopTables())
            database.createTable(spec);
    });
    static_cast<void>(there(path));
    onServer({("alter table cheques add constraint \"de banco\" foreign key (banco) references "
               "bancos (codigo) on update cascade on delete set null"),
              "alter table cheques add constraint pequeno check (valor between 1 and 5000)",
              "alter table cheques add constraint praça check (agencia in ('A', 'B'))",
              "alter table cheques add check (numero is not null)",
              "alter table cheques add check (observacao <> '')",
              "alter table bancos alter nome set not null",
              "alter table bancos alter nome set default 'Sem nome'",
              "alter table cheques alter data set default localtimestamp(0)",
              "alter table cheques alter valor set default random()",
              "alter table cheques add constraint números check (numero ~ '^[0-9]+$')",
              ("alter table cheques add constraint outro foreign key (cliente) references "
               "cliente_fornecedor (codigo) on delete set default")});
    std::vector<std::string> notes;
    const auto returned = back(&notes);
    EXPECT_THAT(notes, testing::UnorderedElementsAre(
                           AllOf(HasSubstr("\"números\""), HasSubstr("cheques")),
                           AllOf(HasSubstr("\"outro\""), HasSubstr("SET DEFAULT")),
                           AllOf(HasSubstr("campo \"valor\""), HasSubstr("random()"))));
    EXPECT_TRUE(jet::check(returned).clean());
    jet::Database database(returned, onlyRead());
    EXPECT_THAT(extrasOf(database).relationships,
                ElementsAre(RelationshipSpec{"de banco",
                                             "cheques",
                                             "bancos",
                                             {{"banco", "codigo"}},
                                             jet::RelationshipFlags::cascadeUpdate |
                                                 jet::RelationshipFlags::cascadeNull}));
    const auto rules = jet::rulesOf(database, database.table("cheques"));
    EXPECT_FALSE(rules.problem.has_value());
    std::size_t conditions = 0;
    for (const auto& rule : rules.values) {
        EXPECT_EQ(rule.text.empty(), !rule.condition.has_value());
        EXPECT_EQ(rule.defaultText.empty(), !rule.defaultValue.has_value());
        conditions += rule.condition ? 1 : 0;
    }
    EXPECT_EQ(conditions, 1U);
    const auto whole = std::ranges::find_if(rules.values, [](const auto& r) { return !r.column; });
    ASSERT_NE(whole, rules.values.end());
    EXPECT_EQ(whole->text, "(([valor]>=1) And ([valor]<=5000)) And ([agencia] In (\"A\", \"B\"))");
    EXPECT_EQ(whole->message, "pequeno / praça");
    const auto ofBanks = jet::rulesOf(database, database.table("bancos")).values;
    ASSERT_EQ(ofBanks.size(), 1U);
    EXPECT_TRUE(ofBanks[0].required);
    EXPECT_EQ(ofBanks[0].defaultText, "\"Sem nome\"");
}

// As the server writes out what it is told, and as the file's own rules are written there.
TEST_P(MigrationOfChanges, AConditionOfTheServerIsSaidInTheFilesWords) {
    static_cast<void>(there(shop()));
    const std::pair<const char*, const char*> conditions[] = {
        {"valor > 0",                               "[valor]>0"                             },
        {"valor * 2 - 1 <> -3.5",                   "(([valor]*2)-1)<>-3.5"                 },
        {"not descontar or valor is null",          "(Not [descontar]) Or ([valor] Is Null)"},
        {"numero = 'd''água \"x\"'",               "[numero]=\"d'água \"\"x\"\"\""        },
        {"length(numero) <= 8",                     "Len([numero])<=8"                      },
        {"jet_left(agencia, 2) = 'SP'",             "Left([agencia], 2)=\"SP\""             },
        {"data >= '2001-05-31'",                    "[data]>=#05/31/2001 00:00:00#"         },
        {"bompara > data and cliente in (1, 2, 3)",
         "([bompara]>[data]) And ([cliente] In (1, 2, 3))"                                  },
        {"numero like 'A%'",                        nullptr                                 },
        {"octet_length(numero) < 5",                nullptr                                 },
        {"case when descontar then valor > 0 end",  nullptr                                 },
        {"numero collate \"C\" > 'a'",              nullptr                                 },
        {"extract(dow from data) <> 0",             nullptr                                 },
    };
    for (const auto& [sql, text] : conditions) {
        onServer({"alter table cheques drop constraint if exists nova"});
        onServer(
            {(std::string("alter table cheques add constraint nova check (") + sql + ")").c_str()});
        const auto said = ado::ruleText(answer(
            "select pg_get_expr(conbin, conrelid) from pg_constraint where conname = 'nova'"));
        EXPECT_EQ(said.has_value(), text != nullptr) << sql;
        if (said && text != nullptr) {
            EXPECT_EQ(said->text, text) << sql;
        }
    }
}

// Another program's table, and a shop that never was in a file.
TEST_P(MigrationOfChanges, AShopMadeOnTheServerHasNothingBeside) {
    address_ = Cluster::instance(shopTables()).newShop();
    std::vector<std::string> notes;
    const auto returned = back(&notes);
    EXPECT_THAT(notes, IsEmpty());
    jet::Database database(returned, onlyRead());
    EXPECT_THAT(extrasOf(database).relationships, IsEmpty());
    EXPECT_EQ(database.tableNames().size(), shopTables().size());
}

} // namespace
