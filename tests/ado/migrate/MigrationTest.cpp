// A file's tables to a server and back.
#include "ado/Connection.h"
#include "ado/ConnectionString.h"
#include "ado/Recordset.h"
#include "ado/migrate/Migrated.h"
#include "support/FileRules.h"
#include "support/Samples.h"
#include "support/Versions.h"

#include <fstream>

namespace {

using jet::ColumnType;
using jet::Errc;
using jet::Row;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

INSTANTIATE_TEST_SUITE_P(, Migration, testing::Values(jet::Version::jet4), versionName);

// clang-format off
jet::TableSpec everyType(jet::Version version) {
    jet::TableSpec spec{"de tudo: ção",
                        {{"n", ColumnType::longInteger, 0, true},
                         {"sim", ColumnType::boolean},
                         {"pouco", ColumnType::byte},
                         {"curto", ColumnType::integer},
                         {"valor", ColumnType::currency},
                         {"fração", ColumnType::single},
                         {"dupla", ColumnType::real},
                         {"quando", ColumnType::date},
                         {"bytes", ColumnType::binary, 20},
                         {"Texto \"com\" aspas", ColumnType::text, 50},
                         {"longo", ColumnType::memo},
                         {"objeto", ColumnType::ole},
                         {"guia", ColumnType::guid}},
                        {{"PrimaryKey", {{"n"}}, true, true, false, true},
                         {"texto", {{"Texto \"com\" aspas"}, {"curto", false}}},
                         {"um só", {{"valor"}}, false, true, true}}};
    if (version == jet::Version::jet4)
        spec.columns.push_back({"exato", ColumnType::numeric, 0, false, 28, 5});
    return spec;
}

void fillWithEveryValue(jet::Database& database) {
    const bool jet4 = database.version() == jet::Version::jet4;
    jet::Table& table = database.createTable(everyType(database.version()));
    const auto add = [&](Row row) {
        if (!jet4)
            row.resize(13);
        table.insert(row);
    };
    const auto date = [](const jet::CivilTime& time) { return jet::Date::of(time); };
    std::string control("\x01\t\n\r\x1F\\.\\N'\"");
    const jet::Bytes bytes{std::byte{0}, std::byte{0xFF}, std::byte{'\\'}, std::byte{'\n'}};
    add(Row(14)); // all null, but for the number and the yes/no
    add({std::int64_t{7}, true, std::int64_t{255}, std::int64_t{-32768},
         jet::Currency{INT64_MAX}, 436.88, 0.1, date({1899, 12, 29, 18, 30, 1}), bytes,
         std::string(), std::string(), bytes, jet::Guid::random(),
         jet::Numeric{true, {0, 0, 0, 123456}, 5}});
    add({std::int64_t{-3}, false, std::int64_t{0}, std::int64_t{32767}, jet::Currency{INT64_MIN},
         -1e38, -5e-324, date({100, 1, 1, 0, 0, 0}), jet::Bytes(20, std::byte{1}), control,
         std::string(5000, 'x') + "ção", jet::Bytes(9000, std::byte{2}), jet::Guid{},
         jet::Numeric{false, {0, 0, 0, 1}, 5}});
    add({std::int64_t{2147483000}, true, std::int64_t{1}, std::int64_t{0}, jet::Currency{-1}, 0.0,
         1e308, date({9999, 12, 31, 23, 59, 59}), jet::Bytes(1, std::byte{0}), std::string("Ação"),
         std::string(" \n "), jet::Bytes{}, jet::Guid::random(),
         jet::Numeric{false, {0, 0x204FCE5E, 0x3E250261, 0x0FFFFFFF}, 5}});
}

// clang-format on

class MigrationOfTypes : public Migration {};
INSTANTIATE_TEST_SUITE_P(, MigrationOfTypes, bothVersions(), versionName);

TEST_P(MigrationOfTypes, GoThereAndBack) {
    const auto path = file(fillWithEveryValue);
    const ado::Migration done = there(path);
    EXPECT_THAT(done.notes, IsEmpty());
    ASSERT_EQ(done.tables.size(), 1U);
    EXPECT_EQ(done.tables[0].rows, 4U);
    expectSame(path, back());
}

TEST_P(Migration, RowsKeepTheirOrderWhateverTheirSize) {
    const auto path = file([](jet::Database& database) {
        jet::Table& table = database.createTable({
            "t", {{"n", ColumnType::longInteger}, {"texto", ColumnType::memo}},
             {                              }
        });
        for (std::int64_t i = 0; i < 300; ++i)
            table.insert(Row{i, std::string(static_cast<std::size_t>(i * 7919 % 1500), 'a')});
    });
    static_cast<void>(there(path));
    expectSame(path, back());
}

TEST_P(Migration, NumberingGoesOnWhereTheFileWould) {
    const auto path = file([](jet::Database& database) {
        jet::Table& table = database.createTable(shopTables()[1]);
        table.insert(Row{{}, std::int64_t{1}, std::string("Fica")});
        const jet::RowId gone = table.insert(Row{std::int64_t{41}, {}, {}});
        table.erase(gone);
    });
    static_cast<void>(there(path));
    ado::Connection connection;
    connection.Open("Data Source=" + ado::quotedValue(address_));
    ado::Recordset rows;
    rows.Open("bancos", connection);
    rows.AddNew();
    rows["nome"] = "Novo";
    rows.Update();
    EXPECT_EQ(rows["codigo"].text(), "42");
    connection.Close();
    const auto returned = back();
    jet::Database is(returned, onlyRead());
    EXPECT_EQ(is.table("bancos").lastNumber(), 42);
}

// What was changed on the server lies elsewhere there: a file has it by its key.
TEST_P(Migration, ChangedRowsComeBackInTheOrderOfTheirKeys) {
    const auto path = file([](jet::Database& database) {
        jet::Table& table = database.createTable(shopTables()[1]);
        for (const std::int64_t code : {3, 1, 2})
            table.insert(Row{code, {}, std::string("Banco")});
    });
    static_cast<void>(there(path));
    static_cast<void>(answer("update valtrino.bancos set nome = 'B' where codigo = 1 returning 1"));
    const auto returned = back();
    jet::Database is(returned, onlyRead());
    std::vector<std::int64_t> codes;
    for (const Row& row : rowsOf(is, "bancos"))
        codes.push_back(std::get<std::int64_t>(row[0]));
    EXPECT_THAT(codes, ElementsAre(1, 2, 3));
}

class MigrationRules : public Migration {
protected:
    /// The sentence by which the server refuses a statement, or "".
    std::string refused(const std::string& sql) {
        try {
            ado::ServerWire wire(address_);
            static_cast<void>(wire.run(sql));
        } catch (const jet::Error& error) {
            return error.what();
        }
        return "";
    }
};
INSTANTIATE_TEST_SUITE_P(, MigrationRules, bothVersions(), versionName);

TEST_P(MigrationRules, TheFilesRulesAreTheServers) {
    const auto path = file([](jet::Database& database) {
        for (const jet::TableSpec& spec : shopTables())
            database.createTable(spec);
        setRules(database, "cheques",
                 {
                     {.column = "valor",           .rule = ">0", .message = "O valor deve ser positivo."},
                     {.column = "numero",                           .required = true,                      .allowZeroLength = false},
                     {.column = "agencia",   .defaultValue = "\"0001\""},
                     {.column = "autorizou",
                      .rule = "\"Ana\" Or Like \"J*\" Or IIf(Len([agencia])>4,True,False)"                 }
        });
        addRelationship(database, {"banco do cheque",
                                   "cheques",
                                   {"banco"},
                                   "bancos",
                                   {"codigo"},
                                   FileRelationship::kCascadeDelete});
    });
    EXPECT_THAT(there(path).notes, IsEmpty());
    const std::string add = "insert into valtrino.cheques ";
    EXPECT_THAT(refused(add + "(numero, valor) values ('1', -1)"),
                HasSubstr("O valor deve ser positivo."));
    EXPECT_THAT(refused(add + "(valor) values (1)"), HasSubstr("falta: numero"));
    EXPECT_THAT(refused(add + "(numero) values ('')"), HasSubstr("vazio: numero"));
    EXPECT_THAT(refused(add + "(numero, banco) values ('1', 7)"), HasSubstr("banco do cheque"));
    EXPECT_THAT(refused(add + "(numero, autorizou) values ('1', 'Zé')"),
                HasSubstr("regra: autorizou"));
    for (const char* good :
         {"(numero, autorizou) values ('1', 'ana')", "(numero, autorizou) values ('1', 'joão')",
          "(numero, autorizou, agencia) values ('1', 'Zé', '12345')"})
        EXPECT_EQ(refused(add + good), "");
    // Whoever's program it is: the signs are those that the rule was made with.
    const auto elsewhere = [&](const std::string& row) {
        return "do $$ begin perform set_config('search_path', 'pg_catalog', true); " + add + row +
               "; end $$";
    };
    EXPECT_EQ(refused(elsewhere("(numero, autorizou) values ('4', 'ANA')")), "");
    EXPECT_THAT(refused(elsewhere("(numero, autorizou) values ('5', 'Zé')")),
                HasSubstr("regra: autorizou"));
    EXPECT_EQ(answer("select min(agencia) from valtrino.cheques"), "0001");
    EXPECT_EQ(refused("insert into valtrino.bancos (codigo) values (7)"), "");
    EXPECT_EQ(refused(add + "(numero, banco) values ('9', 7)"), "");
    EXPECT_EQ(refused("delete from valtrino.bancos"), "");
    EXPECT_EQ(answer("select count(*) from valtrino.cheques where numero = '9'"), "0");
}

// As in the file, a row may be older than a rule.
TEST_P(MigrationRules, OlderRowsStayAndAreTold) {
    const auto path = file([](jet::Database& database) {
        jet::Table& table = database.createTable(shopTables()[1]);
        table.insert(Row{{}, std::int64_t{-5}, std::string("Velho")});
        setRules(database, "bancos",
                 {
                     {.column = "cod_banco", .rule = ">0"                          },
                     {.column = "nome",      .rule = "Format([nome],\"@@@\")=\"x\""}
        });
    });
    EXPECT_THAT(there(path).notes,
                ElementsAre(AllOf(HasSubstr("cod_banco"), HasSubstr("registros mais antigos")),
                            AllOf(HasSubstr("nome"), HasSubstr("não tem igual no servidor"))));
    expectSame(path, back());
    EXPECT_NE(refused("insert into valtrino.bancos (cod_banco) values (-1)"), "");
}

TEST_P(Migration, WhatTheServerCantHoldIsRefusedByTableRowAndField) {
    const auto path = file([](jet::Database& database) {
        jet::Table& table = database.createTable(shopTables()[1]);
        table.insert(Row{{}, {}, std::string("Certo")});
        table.insert(Row{{}, {}, std::string("me\0io", 5)});
    });
    EXPECT_THAT(refusal(path, Errc::outOfRange),
                AllOf(HasSubstr("tabela \"bancos\", registro 2"),
                      HasSubstr("campo \"nome\" tem o caractere zero"),
                      HasSubstr("nada foi mudado no servidor")));
}

TEST_P(Migration, AFileThatIsChangedMeanwhileIsNotMigrated) {
    const auto path = file([](jet::Database& database) {
        database.createTable(shopTables()[1]).insert(Row{{}, {}, std::string("Um")});
    });
    EXPECT_THAT(refusal(path, Errc::conflict,
                        [&](const std::string&, std::uint64_t, std::uint64_t) {
                            jet::Database other(path);
                            other.table("bancos").insert(Row{{}, {}, std::string("Outro")});
                        }),
                HasSubstr("alterado durante a migração"));
}

TEST_P(Migration, WhoStopsItLeavesNothing) {
    const auto path = file([](jet::Database& database) { database.createTable(shopTables()[1]); });
    static_cast<void>(
        refusal(path, Errc::cancelled, [](const std::string&, std::uint64_t, std::uint64_t) {
            throw jet::Error(Errc::cancelled, "parado");
        }));
}

// A server that stores something else than it was sent.
TEST_P(Migration, WhatIsReadBackAndDiffersIsFoundOut) {
    const auto path = file([](jet::Database& database) {
        jet::Table& table = database.createTable(shopTables()[1]);
        for (std::int64_t i = 1; i <= 3; ++i)
            table.insert(Row{{}, i, std::string("Banco")});
    });
    ado::ServerWire wire(address_);
    for (const char* step :
         {"create schema falso",
          "create function falso.muda() returns trigger language plpgsql as $b$ begin "
          "if new.cod_banco = 2 then new.nome := 'Bancu'; end if; return new; end $b$",
          "create function falso.ao_fazer() returns event_trigger language plpgsql as $b$ begin "
          "if tg_tag = 'CREATE TABLE' and to_regclass('valtrino.bancos') is not null then execute "
          "'create trigger muda before insert on "
          "valtrino.bancos for each row execute function falso.muda()'; end if; end $b$",
          "grant usage on schema falso to public",
          "create event trigger ao_fazer on ddl_command_end execute function falso.ao_fazer()"})
        static_cast<void>(wire.run(step));
    EXPECT_THAT(refusal(path, Errc::corrupt),
                AllOf(HasSubstr("tabela \"bancos\""), HasSubstr("registro 2")));
}

TEST_P(Migration, ADamagedFileOrASecondShopIsRefused) {
    const auto path = file([](jet::Database& database) { database.createTable(shopTables()[1]); });
    static_cast<void>(there(path));
    EXPECT_EQ(errorOf([&] { static_cast<void>(there(path)); }), Errc::exists);
    address_ = Cluster::instance(shopTables()).newDatabase();
    {
        std::fstream bytes(path, std::ios::in | std::ios::out | std::ios::binary);
        bytes.seekp(3 * 4096 + 1);
        bytes << "\x77\x77\x77\x77\x77\x77\x77\x77";
    }
    EXPECT_THAT(refusal(path, Errc::corrupt), HasSubstr("O arquivo tem erros"));
}

TEST_P(Migration, ATargetFileThatIsThereIsNotTouched) {
    const auto path = file([](jet::Database& database) { database.createTable(shopTables()[1]); });
    static_cast<void>(there(path));
    EXPECT_EQ(errorOf([&] {
                  static_cast<void>(ado::migrateToFile(address_, path, jet::Version::jet4, {}));
              }),
              Errc::exists);
}

// What only one program makes, and a clerk may not, is there from the beginning.
TEST_P(Migration, AShopGetsTheTableOfItsHistory) {
    const auto path = file([](jet::Database& database) {
        for (const jet::TableSpec& spec : shopTables())
            database.createTable(spec);
    });
    const jet::TableSpec wanted{"historico", {{"n", ColumnType::longInteger, 0, true}}, {}};
    static_cast<void>(ado::migrateToServer(path, address_, {}, {&wanted, 1}, {}, {}));
    EXPECT_EQ(answer("select count(*) from valtrino.historico"), "0");
}

TEST_P(Migration, IndexesOfTheServerAloneStayThere) {
    const auto path = file([](jet::Database& database) {
        for (const jet::TableSpec& spec : shopTables())
            database.createTable(spec);
    });
    const jet::TableSpec further[] = {
        {"CHEQUES", {}, {{"banco", {{"Banco"}}}, {"cliente", {{"cliente"}}}, {"x", {{"x"}}}}},
        {"outra",   {}, {{"banco", {{"banco"}}}}                                            }
    };
    const char* const indexes =
        "select count(*) || ': ' || count(*) filter (where indexdef like "
        "'%(banco %lancamento%)') from pg_indexes where tablename='cheques'";
    static_cast<void>(there(path));
    const std::string before = answer(indexes);
    address_ = Cluster::instance(shopTables()).newDatabase();
    static_cast<void>(ado::migrateToServer(path, address_, {}, {}, further, {}));
    EXPECT_EQ(before, "4: 0"); // of the client one that begins so is there already
    EXPECT_EQ(answer(indexes), "5: 1");
    expectSame(path, back());
}

// The others take longer: scripts/migrate_samples.sh.
TEST_P(Migration, RealFilesGoThereAndBack) {
    const auto samples = samplesFolder();
    if (!samples)
        GTEST_SKIP() << "no sample databases here";
    for (const char* name :
         {"charsetGBK.mdb", "delColTestV1997.mdb", "fixedNumericTestV2000.mdb",
          "fixedTextTestV2000.mdb", "indexTestV2000.mdb", "overflowTestV2000.mdb",
          "queryTestV1997.mdb", "testIndexPropertiesV2000.mdb", "testV1997.mdb"}) {
        SCOPED_TRACE(name);
        const auto path = folder_ / name;
        std::filesystem::copy_file(*samples / "samples" / name, path);
        address_ = Cluster::instance(shopTables()).newDatabase();
        static_cast<void>(there(path));
        expectSame(path, back());
    }
}

} // namespace
