// Files and servers as other programs leave them: what can't be taken over is told, and the rest
// is.
#include "ado/ServerCheck.h"
#include "ado/migrate/Migrated.h"
#include "jet/MemoryDisk.h"
#include "support/FileRules.h"
#include "support/Relay.h"

namespace {

using jet::ColumnType;
using jet::Errc;
using jet::ExtraObject;
using jet::Row;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

void makeShop(jet::Database& database) {
    for (const jet::TableSpec& spec : shopTables())
        database.createTable(spec);
}

class MigrationOdd : public Migration {
protected:
    void onServer(std::initializer_list<const char*> statements) {
        ado::ServerWire wire(address_);
        for (const char* const sql : statements)
            static_cast<void>(wire.run(sql));
    }
    /// From now on a server that does something by itself after commands of that kind.
    void afterEach(const std::string& command, const std::string& work) {
        onServer({"create schema falso", "grant usage on schema falso to public",
                  "create sequence falso.vez", "grant usage on sequence falso.vez to public"});
        onServer({("create function falso.faz() returns event_trigger language plpgsql as $b$ "
                   "begin " +
                   work + " end $b$")
                      .c_str(),
                  ("create event trigger faz on ddl_command_end when tag in ('" + command +
                   "') execute function falso.faz()")
                      .c_str()});
    }
    /// From now on one whose table of banks has that trigger.
    void onBanks(const std::string& kind, const std::string& work) {
        onServer({"create schema falso", "grant usage on schema falso to public",
                  ("create function falso.muda() returns trigger language plpgsql as $b$ begin " +
                   work + " return new; end $b$")
                      .c_str(),
                  ("create function falso.faz() returns event_trigger language plpgsql as $b$ "
                   "begin if to_regclass('valtrino.bancos') is not null and not exists (select 1 "
                   "from pg_trigger where tgname = 'muda') then create " +
                   kind + " for each row execute function falso.muda(); end if; end $b$")
                      .c_str(),
                  ("create event trigger faz on ddl_command_end when tag in ('CREATE TABLE') "
                   "execute function falso.faz()")});
    }
};
INSTANTIATE_TEST_SUITE_P(, MigrationOdd, testing::Values(jet::Version::jet4));

TEST_P(MigrationOdd, ANameThatIsTooLongIsRefusedBeforeAnythingIsMade) {
    const auto path = file([](jet::Database& database) {
        std::string name; // of fewer than 64 characters, and more bytes
        for (int i = 0; i < 40; ++i)
            name += "ç";
        database.createTable({"t", {{name, ColumnType::longInteger}}, {}});
    });
    EXPECT_THAT(refusal(path, Errc::unsupported),
                AllOf(HasSubstr("O nome do campo \"çç"), HasSubstr("Nada foi mudado")));
}

// Times with fractions are rounded; the sum of some columns has no place in a number.
TEST_P(MigrationOdd, RowsWithOddValuesAreThereAndTold) {
    const auto row = [](int i) {
        const jet::Currency much{i < 2 ? INT64_MAX : -1};
        return Row{
            jet::Date{36892.000005},
            much, jet::Numeric{ true, {0, 0, 0, 99999}, 0}
        };
    };
    const auto path = file([&](jet::Database& database) {
        jet::Table& table = database.createTable({
            "t",
            {{"quando", ColumnType::date},
              {"muito", ColumnType::currency},
              {"exato", ColumnType::numeric, 0, false, 5, 0}},
            {{"muito", {{"muito"}}, false, false, false, true}}
        });
        for (int i = 0; i < 5000; ++i)
            table.insert(row(i));
    });
    std::vector<std::uint64_t> told;
    const auto progress = [&](const std::string&, std::uint64_t done, std::uint64_t all) {
        EXPECT_EQ(all, 5000U);
        told.push_back(done);
    };
    const ado::Migration done = there(path, progress);
    EXPECT_THAT(done.notes, ElementsAre(HasSubstr("5000 horas têm frações de segundo")));
    EXPECT_THAT(told, ElementsAre(0, 2048, 4548));
    EXPECT_THAT(done.tables[0].sums, IsEmpty());
    EXPECT_THAT(answer("select conname from pg_constraint where contype = 'c' and conrelid = "
                       "'valtrino.t'::regclass"),
                "falta: muito");
    told.clear();
    const ado::Migration returned =
        ado::migrateToFile(address_, folder_ / "volta.mdb", GetParam(), progress);
    EXPECT_THAT(told, ElementsAre(0, 4096));
    EXPECT_EQ(returned.tables[0].digest, done.tables[0].digest);
    EXPECT_THAT(returned.tables[0].sums, IsEmpty());
}

TEST_P(MigrationOdd, RulesThatTheServerDoesntTakeAreTold) {
    const std::string message = std::string(57, 'x') + "não pode ser assim";
    const auto path = file([&](jet::Database& database) {
        makeShop(database);
        // clang-format off
        setRules(database, "cheques",
                 {{.column = "agencia", .defaultValue = "Format(1, \"@\")", .rule = ">5 And Date()-1"},
                  {.column = "numero", .defaultValue = "GenGUID(1)"},
                  {.column = "banco", .defaultValue = "\"abc\""},
                  {.column = "descontar", .defaultValue = "-1"},
                  {.column = "valor", .rule = ">0", .message = message},
                  {.column = "cliente", .rule = ">0", .message = message},
                  {.column = "data", .rule = "Desconhecida([data])"},
                  {.rule = "[bompara]>=[data]"}});
        // clang-format on
    });
    EXPECT_THAT(
        there(path).notes,
        UnorderedElementsAre(
            AllOf(HasSubstr("A regra do campo \"agencia\""), HasSubstr("não pôde ser feito")),
            AllOf(HasSubstr("O valor inicial do campo \"agencia\""), HasSubstr("não tem igual")),
            AllOf(HasSubstr("O valor inicial do campo \"numero\""), HasSubstr("não tem igual")),
            AllOf(HasSubstr("O valor inicial do campo \"banco\""), HasSubstr("não pôde ser feito")),
            AllOf(HasSubstr("A regra do campo \"data\""), HasSubstr("não tem igual"))));
    EXPECT_EQ(answer("insert into valtrino.cheques (valor) values (1) returning descontar"), "t");
    EXPECT_EQ(
        answer("select string_agg(conname, '|' order by conname collate \"C\") from "
               "pg_constraint where contype = 'c' and conrelid = 'valtrino.cheques'::regclass"),
        "regra: cheques|" + std::string(57, 'x') + "n 2|" + std::string(57, 'x') + "não p");
}

TEST_P(MigrationOdd, AnIndexThatTheServerRefusesIsTold) {
    const auto path = file(makeShop);
    const std::pair<const char*, const char*> refusals[] = {
        {"raise 'hoje não';",                                                "hoje não"           },
        {"if nextval('falso.vez') = 1 then raise unique_violation; end if;",
         "distingue maiúsculas de minúsculas"                                                     },
        {"if nextval('falso.vez') <= 2 then raise unique_violation; end if;", "não pôde ser feito"},
    };
    for (const auto& [work, said] : refusals) {
        address_ = Cluster::instance(shopTables()).newDatabase();
        afterEach("CREATE INDEX", work);
        EXPECT_THAT(there(path).notes, Contains(AllOf(HasSubstr("O índice "), HasSubstr(said))));
    }
}

TEST_P(MigrationOdd, RelationshipsOfEveryKindAreTheServers) {
    const auto path = file([](jet::Database& database) {
        database.createTable({
            "mãe",
            {{"a", ColumnType::longInteger}, {"b", ColumnType::longInteger}},
            {{"PrimaryKey", {{"a"}, {"b"}}, true}                             }
        });
        database.createTable({
            "filha", {{"a", ColumnType::longInteger}, {"b", ColumnType::longInteger}},
             {                              }
        });
        jet::relate(database, {
                                  "duas",
                                  "filha",
                                  "mãe",
                                  {{"a", "a"}, {"b", "b"}},
                                  jet::RelationshipFlags::cascadeNull
        });
    });
    EXPECT_THAT(there(path).notes, IsEmpty());
    EXPECT_EQ(answer("select pg_get_constraintdef(oid) from pg_constraint where contype = 'f'"),
              "FOREIGN KEY (a, b) REFERENCES \"mãe\"(a, b) ON DELETE SET NULL");
    expectSame(path, back());
}

TEST_P(MigrationOdd, WhatElseLiesInAFileIsTold) {
    const auto path = file([](jet::Database& database) {
        makeShop(database);
        jet::addExtra(database, {.type = ExtraObject::kServerLink, .name = "De longe", .link = {}});
        enterObject(database, 0x0F000099, "Ficha", -32768, 0x0F000002);
        enterObject(database, 0x0F00009A, "Lista", -32764, 0x0F000003);
    });
    EXPECT_THAT(there(path).notes, ElementsAre(HasSubstr("vincula de outros"),
                                               HasSubstr("outros objetos: \"Ficha\", \"Lista\"")));
}

TEST_P(MigrationOdd, WhatIsNamedAsTheServerCantSayIsToldAndLeftOut) {
    const auto path = file([](jet::Database& database) {
        makeShop(database);
        for (const char* const name : {"meia \xED\xA0\x80", "Inteira"})
            jet::addExtra(database, {.type = ExtraObject::kLink, .name = name, .link = {}});
    });
    EXPECT_THAT(there(path).notes, Contains(AllOf(HasSubstr("O que o arquivo guarda de \"meia "),
                                                  HasSubstr("não cabe no servidor"))));
    const auto returned = back();
    jet::Database database(returned, onlyRead());
    EXPECT_THAT(extrasOf(database).objects,
                ElementsAre(testing::Field(&ExtraObject::name, "Inteira")));
}

// ---- a server that doesn't do as it is told

TEST_P(MigrationOdd, MoreOrFewerRowsThanWereSentAreFoundOut) {
    const auto path = file([](jet::Database& database) {
        makeShop(database);
        for (std::int64_t i = 1; i <= 2; ++i)
            database.table("bancos").insert(Row{i, i, std::string("Banco")});
    });
    onBanks("trigger muda before insert on valtrino.bancos",
            "if new.codigo = 2 then return null; end if;");
    EXPECT_THAT(refusal(path, Errc::corrupt), HasSubstr("o número de registros"));
    address_ = Cluster::instance(shopTables()).newDatabase();
    onBanks("trigger muda after insert on valtrino.bancos",
            "if new.codigo = 2 then insert into valtrino.bancos values (3, 3, 'x'); end if;");
    EXPECT_THAT(refusal(path, Errc::corrupt), HasSubstr("o registro 3"));
}

TEST_P(MigrationOdd, WhatTheServerRefusesAtTheVeryEndIsNotKept) {
    const auto path = file([](jet::Database& database) {
        makeShop(database);
        database.table("bancos").insert(Row{std::int64_t{1}, {}, {}});
    });
    onBanks("constraint trigger muda after insert on valtrino.bancos deferrable initially deferred",
            "raise 'no fim não';");
    try {
        static_cast<void>(there(path));
        ADD_FAILURE() << "was migrated";
    } catch (const jet::Error& error) {
        EXPECT_NE(error.code(), Errc::offline);
        EXPECT_THAT(error.what(), HasSubstr("no fim não"));
    }
    EXPECT_EQ(answer("select count(*) from pg_namespace where nspname = 'valtrino'"), "0");
}

TEST_P(MigrationOdd, WhatIsntKnownAtTheEndOfALineIsSaid) {
    const auto path = file(makeShop);
    const std::string direct = address_;
    Relay relay(direct);
    address_ = relay.address();
    relay.cut(Relay::Cut::answered, "commit");
    try {
        static_cast<void>(there(path, [&](const std::string&, std::uint64_t, std::uint64_t) {
            relay.close(true); // to new lines
        }));
        ADD_FAILURE() << "was migrated";
    } catch (const jet::Error& error) {
        EXPECT_EQ(error.code(), Errc::offline);
        EXPECT_THAT(error.what(), HasSubstr("não se sabe se ela foi feita"));
    }
    address_ = direct;
}

// ---- on the way back

TEST_P(MigrationOdd, TablesOfOtherProgramsAreTakenAlong) {
    static_cast<void>(there(file(makeShop)));
    onServer(
        {"create table valtrino.outra (n integer generated by default as identity, "
         "m bigint generated by default as identity, largo varchar(300), "
         "larguíssimo varchar(33000), sem_fim varchar, exato numeric, enorme numeric(38, 2), "
         "dados jsonb, pouco smallint check (pouco between 0 and 255), "
         "menos smallint check (menos <= 7), check (tableoid <> 0))",
         "comment on column valtrino.outra.pouco is 'valtrino: byte'",
         "comment on column valtrino.outra.menos is 'valtrino: byte'",
         "comment on column valtrino.outra.n is 'o número'",
         "create index \"a.b\" on valtrino.outra (n)",
         "create index \"a!b\" on valtrino.outra (m desc)",
         "create index \" x\" on valtrino.outra (pouco)",
         "comment on index valtrino.\" x\" is 'valtrino: 1'",
         "create unique index y on valtrino.outra (n, pouco)",
         "comment on index valtrino.y is 'valtrino: x'",
         "create table valtrino.vazia ()",
         "create table valtrino.sem_chave (a integer)",
         "insert into valtrino.sem_chave values (1)",
         "insert into valtrino.sem_chave values (2)",
         "create materialized view valtrino.visão as select 1 as a",
         "create index on valtrino.visão (a)",
         "create foreign data wrapper longe",
         "create server longe foreign data wrapper longe",
         "create foreign table valtrino.longe (a integer default 3 check (a > 0)) server longe",
         ("insert into valtrino.outra values (5, 6, repeat('l', 300), repeat('m', 600), 'f', "
          "1.5, 2.25, '{\"a\": 1}', 200, 7)")});
    std::vector<std::string> notes;
    const auto returned = back(&notes);
    EXPECT_THAT(notes, ElementsAre(HasSubstr("tableoid")));
    jet::Database database(returned, onlyRead());
    EXPECT_TRUE(database.hasTable("sem_chave"));
    EXPECT_FALSE(database.hasTable("vazia"));
    EXPECT_FALSE(database.hasTable("longe"));
    const jet::Table& table = database.table("outra");
    EXPECT_THAT(indexesOf(table),
                ElementsAre("a_b2: m down", "a_b: n", "i x: pouco", "y unique: n pouco"));
    EXPECT_TRUE(
        rowsOf(database, "outra")[0] ==
        (Row{std::int64_t{5}, std::string("6"), std::string(300, 'l'), std::string(600, 'm'),
             std::string("f"), std::string("1.5"), std::string("2.25"), std::string("{\"a\": 1}"),
             std::int64_t{200}, std::int64_t{7}}));
    const auto rules = jet::rulesOf(database, table).values;
    ASSERT_EQ(rules.size(), 1U);
    EXPECT_EQ(rules[0].text, "[menos]<=7");
}

TEST_P(MigrationOdd, ARowThatAFileHasNoPlaceForIsToldByTableAndNumber) {
    static_cast<void>(there(file(makeShop)));
    std::string columns;
    for (int i = 0; i < 30; ++i)
        columns +=
            (i > 0 ? ", c" : "c") + std::to_string(i) + " varchar(255) default repeat('ž', 255)";
    onServer({("create table valtrino.larga (" + columns + ")").c_str(),
              "insert into valtrino.larga default values"});
    try {
        static_cast<void>(back());
        ADD_FAILURE() << "was brought back";
    } catch (const jet::Error& error) {
        EXPECT_THAT(error.what(),
                    HasSubstr("O registro 1 da tabela \"larga\" não cabe num arquivo"));
    }
    onServer(
        {"drop table valtrino.larga", "insert into valtrino.cheques (data) values ('infinity')"});
    try {
        static_cast<void>(back());
        ADD_FAILURE() << "was brought back";
    } catch (const jet::Error& error) {
        EXPECT_THAT(error.what(), AllOf(HasSubstr("tabela \"cheques\", registro 1"),
                                        HasSubstr("\"data\" tem no servidor")));
    }
}

TEST_P(MigrationOdd, WhatWasKeptOfAFileAndHasNoPlaceAnyMoreIsTold) {
    static_cast<void>(there(file([](jet::Database& database) {
        makeShop(database);
        setRules(database, "bancos",
                 {
                     {.column = "nome", .required = true}
        });
        setRules(database, "cheques",
                 {
                     {.column = "agencia",      .defaultValue = "\"1\""},
                     { .column = "numero", .defaultValue = "\"2\"",       .rule = "<>\"x\""}
        });
        setRules(database, "semfundos",
                 {
                     {.column = "agencia", .defaultValue = "\"1\"", .rule = "<>\"x\""}
        });
        jet::relate(database, {"só dito",
                               "cheques",
                               "bancos",
                               {{"banco", "codigo"}},
                               jet::RelationshipFlags::notEnforced});
        jet::addExtra(
            database,
            {.type = ExtraObject::kQuery,
             .name = "Todos",
             .link = {},
             .steps = {{std::int64_t{1}, jet::Bytes(1), {}, {}, {}, std::int64_t{0}, {}}}});
    })));
    onServer(
        {"alter table valtrino.cheques drop column banco",
         "alter table valtrino.cheques alter agencia set default '7'",
         "drop table valtrino.semfundos cascade",
         "update valtrino_arquivo.objeto set propriedades = '\\x4d52320001' where nome = 'bancos'",
         "update valtrino_arquivo.objeto set nome = 'cheques' where nome = 'Todos'",
         "insert into valtrino_arquivo.passo (objeto, passo) values (999, 1)"});
    std::vector<std::string> notes;
    const auto returned = back(&notes);
    EXPECT_THAT(notes,
                UnorderedElementsAre(AllOf(HasSubstr("\"bancos\""), HasSubstr("danificadas")),
                                     HasSubstr("O que se guardava de \"só dito\""),
                                     HasSubstr("O que se guardava de \"cheques\"")));
    jet::Database database(returned, onlyRead());
    EXPECT_FALSE(database.hasTable("semfundos"));
    const auto rules = jet::rulesOf(database, database.table("cheques")).values;
    ASSERT_EQ(rules.size(), 2U);
    EXPECT_EQ(rules[0].defaultText, "\"7\"");
    EXPECT_EQ(rules[1].text, "<>\"x\"");
}

TEST_P(MigrationOdd, RelationshipsThatAFileHasntAreTold) {
    static_cast<void>(there(file([](jet::Database& database) {
        makeShop(database);
        jet::relate(database, {"de banco", "cheques", "bancos", {{"banco", "codigo"}}});
    })));
    onServer({"create schema fora", "create table fora.dias (dia integer primary key)",
              "alter table valtrino.cheques add constraint fora foreign key (cliente) references "
              "fora.dias",
              "alter table valtrino.cheques add constraint nulo foreign key (cliente) references "
              "valtrino.cliente_fornecedor on update set null",
              "alter table valtrino.cheques add constraint um_só exclude (banco with =)",
              "alter table valtrino.cheques add constraint parte check (btrim(numero, '0') <> '')",
              "alter table valtrino.semfundos add constraint \"de banco\" foreign key (banco) "
              "references valtrino.bancos on delete restrict"});
    std::vector<std::string> notes;
    const auto returned = back(&notes);
    EXPECT_THAT(notes, ElementsAre(HasSubstr("\"fora\""), HasSubstr("\"nulo\""),
                                   HasSubstr("\"parte\""), HasSubstr("\"um_só\"")));
    jet::Database database(returned, onlyRead());
    const auto bonds = extrasOf(database).relationships;
    ASSERT_EQ(bonds.size(), 2U);
    EXPECT_EQ(bonds[1].name, "de banco 2");
    EXPECT_EQ(bonds[1].flags, 0);
}

TEST_P(MigrationOdd, WhatADiskAltersIsFoundOut) {
    static_cast<void>(there(file([](jet::Database& database) {
        makeShop(database);
        database.table("bancos").insert(Row{std::int64_t{1}, {}, std::string("Central")});
        jet::addExtra(database, {.type = ExtraObject::kLink, .name = "Vizinha", .link = {}});
    })));
    const auto altered = [](jet::Bytes& bytes, std::string_view word, std::size_t wide) {
        for (std::size_t at = 0; at + word.size() * wide <= bytes.size(); ++at) {
            std::size_t same = 0;
            while (same < word.size() && bytes[at + same * wide] == std::byte(word[same]))
                ++same;
            if (same == word.size())
                bytes[at] = std::byte{'X'};
        }
    };
    for (const auto& [word, said] :
         {std::pair("Central", "o registro 1 no arquivo não é o do servidor"),
          std::pair("Vizinha", "o que o arquivo tem de \"Vizinha\" não é")}) {
        MemoryDisk disk;
        disk.onWrite = [&, name = word](jet::Bytes& bytes) {
            altered(bytes, name, 1);
            altered(bytes, name, 2);
        };
        try {
            static_cast<void>(
                ado::migrateToFile(address_, "/loja/volta.mdb", GetParam(), {}, disk));
            ADD_FAILURE() << "was brought back";
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), Errc::corrupt);
            EXPECT_THAT(error.what(), HasSubstr(said));
        }
        EXPECT_THAT(disk.image(), IsEmpty());
    }
}

// ---- looking at a shop

TEST_P(MigrationOdd, ACheckTellsWhatIsntThere) {
    address_ = Cluster::instance(shopTables()).newShop();
    const ado::Reference references[] = {
        {"cheques",   "banco",  "bancos", "codigo"},
        {"cheques",   "banco",  "outra",  "codigo"},
        {"outra",     "banco",  "bancos", "codigo"},
        {"semfundos", "praça", "bancos", "codigo"},
        {"semfundos", "banco",  "bancos", "praça"},
    };
    const auto sentences = [&] {
        std::vector<std::string> all;
        for (const jet::Finding& finding :
             ado::checkServer(address_, shopTables(), {}, references).findings)
            all.push_back(finding.sentence);
        return all;
    };
    EXPECT_THAT(sentences(), IsEmpty());
    onServer({"alter table valtrino.bancos drop column nome",
              "alter table valtrino.bancos alter codigo drop identity",
              "alter table valtrino.semfundos drop constraint semfundos_pkey",
              "do $$ declare i regclass; begin for i in select indexrelid::regclass from pg_index "
              "where indrelid = 'valtrino.cheques'::regclass and not indisprimary loop execute "
              "'drop index ' || i; end loop; end $$"});
    EXPECT_THAT(sentences(),
                UnorderedElementsAre("falta o campo \"nome\" da tabela \"bancos\"",
                                     "o campo \"codigo\" da tabela \"bancos\" não é numerado",
                                     "falta um índice de \"cliente\" da tabela \"cheques\"",
                                     "falta um índice de \"bompara\" da tabela \"cheques\"",
                                     "falta um índice de \"numero\" da tabela \"cheques\"",
                                     "falta a chave da tabela \"semfundos\""));
}

} // namespace
