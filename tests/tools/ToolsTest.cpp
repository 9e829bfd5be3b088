// What the technician's program makes, checks, shows and copies.
#include "tools/Tools.h"

#include "jet/Check.h"
#include "jet/Disk.h"
#include "support/FileRules.h"
#include "tools/Machine.h"

#include <fstream>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

INSTANTIATE_TEST_SUITE_P(, Tools, testing::Values("--jet3", "--jet4"),
                         [](const testing::TestParamInfo<std::string>& chosen) {
                             return chosen.param.substr(2);
                         });

TEST_P(Tools, CreateMakesTheShopsFourEmptyTables) {
    EXPECT_EQ(outputOf({"create", file(), GetParam()}),
              "Criado: " + file() + ", com 4 tabelas vazias.\n");
    jet::Database database(file());
    EXPECT_EQ(database.version(), GetParam() == "--jet3" ? jet::Version::jet3 : jet::Version::jet4);
    EXPECT_EQ(database.tableNames(), kTables);
    for (const std::string& name : kTables) {
        EXPECT_EQ(database.table(name).rowCount(), 0);
        EXPECT_FALSE(database.table(name).readOnlyReason());
    }
    EXPECT_TRUE(jet::check(file()).clean());
}

TEST_P(Tools, NamesOfFilesKeepWhatTheOperatorTyped) {
    const std::string name = (folder() / jet::Disk::pathOf("Loja Ação & Cia €.mdb")).string();
    EXPECT_THAT(outputOf({"create", name, GetParam()}), StartsWith("Criado: " + name));
    EXPECT_THAT(outputOf({"tables", name}), HasSubstr("cheques"));
}

TEST_P(Tools, CreateAndSampleRefuseAFileThatIsThere) {
    std::ofstream(file()) << "meu";
    for (const char* command : {"create", "sample"}) {
        const ProgramResult result = run({command, file(), GetParam()});
        EXPECT_EQ(result.code, 1);
        EXPECT_THAT(result.out, IsEmpty());
        EXPECT_THAT(result.err, HasSubstr("já existe"));
    }
    std::string content;
    std::ifstream(file()) >> content;
    EXPECT_EQ(content, "meu");
}

TEST_P(Tools, SampleFillsTheTablesAsAsked) {
    const std::string path = sample(
        {"--clients", "300", "--banks=40", "--cheques", "2000", "--bounced", "70", "--seed", "5"});
    EXPECT_TRUE(jet::check(path).clean());
    EXPECT_EQ(dumped(path, "cliente_fornecedor").size(), 301U);
    EXPECT_EQ(dumped(path, "bancos").size(), 41U);
    EXPECT_EQ(dumped(path, "semfundos").size(), 71U);

    jet::Database database(path);
    jet::Table& clients = database.table("cliente_fornecedor");
    const auto kind = *clients.findColumn("tipo");
    const auto document = *clients.findColumn("cgc_cpf");
    int suppliers = 0;
    jet::RowCursor row = clients.scan();
    for (bool there = row.first(); there; there = row.next()) {
        suppliers += row.row().boolean(kind) ? 0 : 1;
        std::string digits;
        row.row().text(document, digits);
        EXPECT_TRUE(digits.empty() || digits.size() == 11 || digits.size() == 14) << digits;
        EXPECT_EQ(digits.find_first_not_of("0123456789"), std::string::npos) << digits;
    }
    EXPECT_EQ(suppliers, 15);

    const Records cheques = dumped(path, "cheques");
    ASSERT_EQ(cheques.size(), 2001U);
    EXPECT_EQ(cheques[0][5], "data");
    std::size_t withoutDueDate = 0;
    for (std::size_t i = 1; i < cheques.size(); ++i) {
        const auto& cheque = cheques[i];
        EXPECT_EQ(cheque[0], std::to_string(i));
        const int client = std::stoi(cheque[1]);
        EXPECT_TRUE(client >= 1 && client <= 300);
        EXPECT_TRUE(cheque[5] >= "2003-06-01" && cheque[5] <= "2004-06-01") << cheque[5];
        EXPECT_TRUE(cheque[6].empty() || (cheque[6] >= cheque[5] && cheque[6] < "2004-12-31"));
        withoutDueDate += cheque[6].empty() ? 1U : 0U;
        EXPECT_THAT(cheque[7], FollowsPattern("[0-9]+\\.[0-9][0-9]00"));
    }
    EXPECT_GT(withoutDueDate, 0U);
    EXPECT_LT(withoutDueDate, 100U);
}

TEST_P(Tools, TheSameSeedGivesTheSameRows) {
    const std::string first = sample({"--seed", "9"}, "um.mdb");
    const std::string second = sample({"--seed", "9"}, "dois.mdb");
    const std::string other = sample({"--seed", "10"}, "tres.mdb");
    for (const std::string& table : kTables)
        EXPECT_EQ(dumped(first, table), dumped(second, table)) << table;
    EXPECT_NE(dumped(first, "cheques"), dumped(other, "cheques"));
}

TEST_P(Tools, TheIndependentReaderSeesWhatDumpShows) {
    if (!hasMdbTools())
        GTEST_SKIP() << "no independent reader here";
    const std::string path = sample();
    EXPECT_EQ(runProgram({"mdb-ver", path}).out, GetParam() == "--jet3" ? "JET3\n" : "JET4\n");
    EXPECT_EQ(runProgram({"mdb-tables", "-1", path}).out,
              "cliente_fornecedor\nbancos\ncheques\nsemfundos\n");
    EXPECT_THAT(runProgram({"mdb-schema", path}).out,
                AllOf(HasSubstr("[renuneração_mensal]"), HasSubstr("Text (255)"),
                      HasSubstr("[bompara]\t\t\tDateTime"), HasSubstr("Currency")));
    const std::string midnight = "T00:00:00";
    for (const std::string& table : kTables) {
        Records theirs = exportedByMdbTools(path, table);
        for (auto& record : theirs)
            for (std::string& field : record)
                if (field.ends_with(midnight))
                    field.erase(field.size() - midnight.size());
        Records ours = dumped(path, table);
        // Line breaks inside a text are the same to both, but for the reader of this test.
        EXPECT_EQ(ours.front(), theirs.front()) << table;
        std::ranges::sort(ours);
        std::ranges::sort(theirs);
        EXPECT_EQ(ours, theirs) << table;
    }
}

TEST_P(Tools, CheckIsContentWithAWholeFile) {
    const std::string path = sample();
    EXPECT_THAT(outputOf({"check", path}), AllOf(HasSubstr("Nenhum problema."),
                                                 HasSubstr("8 tabelas"), Not(HasSubstr("erro"))));
}

TEST_P(Tools, CheckTellsWhatIsWrongAndWhere) {
    const std::string path = sample();
    jet::PageNo definition{};
    std::size_t at = 0;
    {
        jet::Database database(path);
        definition = database.table("cheques").definition().page();
        const jet::Format& format = jet::formatOf(database.version());
        at = number(definition) * format.pageSize + format.definition.rows.at;
    }
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(at));
    file.put(7);
    file.close();
    const ProgramResult result = run({"check", path});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out, HasSubstr("erro, página " + std::to_string(number(definition)) +
                                      ": tabela \"cheques\": o número de registros está errado"));
    EXPECT_THAT(result.out, HasSubstr("Há erros."));
    EXPECT_THAT(result.out, HasSubstr("As regras do arquivo não foram conferidas"));
}

TEST_P(Tools, CheckTellsRowsThatBreakTheFilesRules) {
    const std::string path = sample();
    {
        jet::Database database(path);
        setRules(database, "cheques",
                 {
                     {.column = "valor", .rule = "<0"}
        });
    }
    const ProgramResult result = run({"check", path});
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.out,
                AllOf(StartsWith("regra, página "),
                      HasSubstr(": tabela \"cheques\": o campo \"valor\" não obedece à regra <0 "),
                      HasSubstr(": mais 950 vezes, a partir desta página\n"),
                      HasSubstr("O arquivo está inteiro, mas há registros que não obedecem"),
                      Not(HasSubstr("erro"))));
}

TEST_P(Tools, CheckTellsWarningsApartFromErrors) {
    const std::string path = sample();
    std::ofstream(path + "-journal", std::ios::binary) << "JETUNDO2";
    const ProgramResult result = run({"check", path});
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.out, AllOf(StartsWith("aviso, página 0: arquivo: ao lado do arquivo"),
                                  HasSubstr("Só avisos: sobras sem perigo.\n")));
}

TEST_P(Tools, TablesListsRowsAndColumns) {
    const std::string path = sample();
    EXPECT_THAT(outputOf({"tables", path}),
                AllOf(HasSubstr("bancos                     12       3\n"),
                      HasSubstr("cheques                  1000      11\n"),
                      HasSubstr("cliente_fornecedor        200      28\n")));
}

TEST_P(Tools, DumpAlignsColumnsAndWritesCsvByTheBook) {
    outputOf({"create", file(), GetParam()});
    {
        jet::Database database(file());
        jet::Table& table = database.createTable({
            "Tudo",
            {{"n", jet::ColumnType::longInteger},
              {"valor", jet::ColumnType::currency},
              {"quando", jet::ColumnType::date},
              {"texto", jet::ColumnType::text, 100},
              {"sim", jet::ColumnType::boolean},
              {"bytes", jet::ColumnType::binary, 4}},
            {  }
        });
        using jet::Value;
        table.insert(jet::Row{
            std::int64_t{7               },
            jet::Currency{    -1               },
            jet::Date::of({ 2004,              2, 29}
            ),
            std::string("diz \"olá\", ç"), true, jet::Bytes{                 std::byte{0}, std::byte{0xAB}}
        });
        table.insert(jet::Row{Value(), jet::Currency{12345600},
                              jet::Date::of({2004, 2, 29, 13, 5, 9}), std::string(), false,
                              Value()});
        table.insert(jet::Row{std::int64_t{-12}, Value(), Value(), Value(), false, Value()});
    }
    EXPECT_EQ(outputOf({"dump", file(), "tudo", "--csv"}),
              "n,valor,quando,texto,sim,bytes\r\n"
              "7,-0.0001,2004-02-29,\"diz \"\"olá\"\", ç\",1,00ab\r\n"
              ",1234.5600,2004-02-29T13:05:09,\"\",0,\r\n"
              "-12,,,,0,\r\n");
    EXPECT_EQ(outputOf({"dump", file(), "tudo"}),
              "  n      valor  quando               texto         sim  bytes\n"
              "---  ---------  -------------------  ------------  ---  -----\n"
              "  7    -0.0001  2004-02-29           diz \"olá\", ç  1    00ab\n"
              "     1234.5600  2004-02-29T13:05:09                0\n"
              "-12                                                0\n");
}

TEST_P(Tools, CompactMakesTheSameDatabaseSmaller) {
    const std::string path = sample();
    {
        jet::Database database(path);
        jet::Table& cheques = database.table("cheques");
        std::vector<jet::RowId> all;
        jet::RowCursor row = cheques.scan();
        for (bool there = row.first(); there; there = row.next())
            all.push_back(row.id());
        for (std::size_t i = 0; i < all.size(); ++i)
            if (i % 4 != 0)
                cheques.erase(all[i]);
    }
    EXPECT_THAT(outputOf({"compact", path, file("menor.mdb")}),
                FollowsPattern("8 tabelas, [0-9]+ registros: de [0-9]+ páginas para [0-9]+\\.\n"));
    EXPECT_LT(std::filesystem::file_size(file("menor.mdb")), std::filesystem::file_size(path));
    for (const std::string& table : kTables)
        EXPECT_EQ(dumped(file("menor.mdb"), table), dumped(path, table)) << table;

    const ProgramResult again = run({"compact", path, file("menor.mdb")});
    EXPECT_EQ(again.code, 1);
    EXPECT_THAT(again.err, HasSubstr("já existe"));
}

TEST_P(Tools, SalvageSavesWhatCanBeReadAndSaysWhatIsMissing) {
    const std::string path = sample();
    EXPECT_THAT(outputOf({"salvage", path, file("salvo.mdb")}),
                AllOf(HasSubstr("tabela \"cheques\": 1000 registros salvos; ela dizia ter "
                                "1000\n"),
                      HasSubstr("Tudo foi salvo.")));
    for (const std::string& table : kTables)
        EXPECT_EQ(dumped(file("salvo.mdb"), table), dumped(path, table)) << table;

    jet::PageNo lost{};
    std::size_t pageSize = 0;
    {
        jet::Database database(path);
        pageSize = jet::formatOf(database.version()).pageSize;
        jet::RowCursor row = database.table("cheques").scan();
        ASSERT_TRUE(row.first());
        lost = row.id().page;
    }
    std::fstream damaged(path, std::ios::binary | std::ios::in | std::ios::out);
    damaged.seekp(static_cast<std::streamoff>(number(lost) * pageSize));
    damaged << std::string(pageSize, '\0');
    damaged.close();
    const ProgramResult result = run({"salvage", path, file("resto.mdb")});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out, AllOf(HasSubstr("página perdida, página " +
                                            std::to_string(number(lost)) + ": tabela \"cheques\""),
                                  HasSubstr("O arquivo novo não tem tudo.")));
    EXPECT_TRUE(jet::check(file("resto.mdb")).clean());
}

TEST_P(Tools, RestorePutsACopyInPlace) {
    const std::string path = sample();
    const std::string copy = sample({"--cheques", "5"}, "copia.mdb");
    EXPECT_THAT(outputOf({"restore", copy, path}),
                HasSubstr("O arquivo substituído foi guardado como"));
    EXPECT_EQ(dumped(path, "cheques").size(), 6U);

    const jet::Database open(path);
    const ProgramResult result = run({"restore", copy, path});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("está aberto em outro programa"));
}

TEST_P(Tools, HistoryIsSwitchedOffAndOnAndTakenOut) {
    const std::string file = sample();
    EXPECT_EQ(outputOf({"history", file}), "Não há histórico.\nEstá ligado.\n");
    addHistory(file, 3'000);
    const Records cheques = dumped(file, "cheques");
    EXPECT_EQ(outputOf({"history", file, "--off"}),
              "Histórico: 3000 registros.\nEstá desligado: nada é gravado nele.\n");
    EXPECT_EQ(outputOf({"history", file, "--off"}), outputOf({"history", file}));
    EXPECT_EQ(outputOf({"history", file, "--on"}), "Histórico: 3000 registros.\nEstá ligado.\n");
    EXPECT_EQ(outputOf({"history", file, "--remove"}), "Não há histórico.\nEstá ligado.\n");
    EXPECT_EQ(outputOf({"history", file, "--remove", "--on"}), outputOf({"history", file}));
    EXPECT_EQ(run({"history", file, "--on", "--off"}).code, 2);
    EXPECT_THAT(outputOf({"check", file}), HasSubstr("Nenhum problema."));
    EXPECT_EQ(dumped(file, "cheques"), cheques);
    // Its pages serve the next one.
    const auto size = std::filesystem::file_size(file);
    addHistory(file, 3'000);
    EXPECT_EQ(std::filesystem::file_size(file), size);
}

TEST_P(Tools, WhatCopiesAFileKeepsItsHistory) {
    const std::string file = sample();
    addHistory(file, 300);
    const Records history = dumped(file, "valtrino_historico");
    EXPECT_EQ(history.size(), 301U);
    for (const char* command : {"compact", "salvage"}) {
        const std::string copy = (folder() / (std::string(command) + ".mdb")).string();
        static_cast<void>(outputOf({command, file, copy}));
        EXPECT_EQ(dumped(copy, "valtrino_historico"), history) << command;
        EXPECT_THAT(outputOf({"check", copy}), HasSubstr("Nenhum problema."));
    }
}

TEST_P(Tools, InfoSaysWhatTheFileIsAndWhoIsInIt) {
    const std::string path = sample();
    const std::uint64_t size = std::filesystem::file_size(path);
    EXPECT_THAT(outputOf({"info", path}),
                AllOf(HasSubstr(GetParam() == "--jet3" ? "Jet 3" : "Jet 4"),
                      HasSubstr(std::to_string(size) + " bytes, "),
                      HasSubstr("4 tabelas, 1262 registros\n"),
                      HasSubstr("Aberto por:   ninguém\n"), HasSubstr("Última cópia: nenhuma\n"),
                      Not(HasSubstr("Dano"))));
    EXPECT_THAT(filesIn(folder()), ElementsAre("automacao.mdb"));
    std::filesystem::create_directory(folder() / "backup");
    const std::filesystem::path copy = folder() / "backup" / "automacao-2026-11-22.mdb";
    std::filesystem::copy_file(path, copy);
    const jet::Database open(path);
    EXPECT_THAT(outputOf({"info", path}),
                AllOf(HasSubstr("Aberto por:   " + machineName().substr(0, 31) + "\n"),
                      HasSubstr(copy.string() + "\n")));
}

TEST_P(Tools, CreateLeavesTheFilesOfOthersAlone) {
    std::ofstream(file("automacao.mdb-new")) << "meu";
    static_cast<void>(outputOf({"create", file(), GetParam()}));
    std::ifstream other(file("automacao.mdb-new"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(other), {}), "meu");
    EXPECT_THAT(filesIn(folder()), ElementsAre("automacao.mdb", "automacao.mdb-new"));
}

TEST_P(Tools, WhatIsInterruptedLeavesNothing) {
    const std::string path = sample({"--cheques", "4000"});
    const std::string copy = sample({"--cheques", "3000"}, "copia.mdb");
    const std::vector<std::string> there = filesIn(folder());
    // clang-format off
    const std::vector<std::vector<std::string>> runs = {
        {"sample",  file("nova.mdb"), GetParam(), "--cheques", "20000"},
        {"compact", path,             file("menor.mdb")},
        {"salvage", path,             file("salvo.mdb")},
        {"restore", copy,             path},
    };
    // clang-format on
    for (const Blow blow : {Blow::key, Blow::machine})
        for (const auto& words : runs) {
            SCOPED_TRACE(words.front());
            EXPECT_TRUE(fellBy(blow, words, folder()));
            EXPECT_EQ(filesIn(folder()), there);
        }
    EXPECT_EQ(dumped(path, "cheques").size(), 4001U);
}

TEST_P(Tools, WhatAKilledCommandLeavesIsToldAndGoesWithTheNext) {
    const std::string path = sample();
    const std::string copy = sample({"--cheques", "3000"}, "copia.mdb");
    EXPECT_TRUE(fellBy(Blow::kill, {"restore", copy, path}, folder()));
    const std::string theirs = "automacao.parcial-outra-1-1.mdb";
    std::ofstream(file(theirs.c_str())) << "de outro computador";
    ASSERT_EQ(std::ranges::count_if(filesIn(folder()), isPart), 2);

    const ProgramResult told = run({"check", path});
    EXPECT_EQ(told.code, 3) << told.out;
    EXPECT_THAT(told.out, AllOf(HasSubstr("sobra de um comando que foi interrompido"),
                                HasSubstr(theirs + "\", de um comando em andamento ou")));
    EXPECT_EQ(run({"check", copy}).code, 0);

    EXPECT_EQ(run({"restore", copy, path}).code, 0);
    std::vector<std::string> left = filesIn(folder());
    std::erase_if(left, [](const std::string& name) { return !isPart(name); });
    EXPECT_THAT(left, ElementsAre(theirs));
    EXPECT_EQ(dumped(path, "cheques").size(), 3001U);
}

} // namespace
