#include "tools/Tools.h"

#include "jet/Check.h"
#include "jet/Disk.h"
#include "jet/Numbers.h"
#include "support/FileRules.h"
#include "tools/Machine.h"

#include <fstream>
#include <sstream>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

const std::vector<std::string> kTables = {"bancos", "cheques", "cliente_fornecedor", "semfundos"};

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

TEST(ToolsUsage, HelpNamesEveryCommandAndEachCommandHasItsOwn) {
    const std::string help = outputOf({"--help"});
    for (const std::string command : {"create", "sample", "check", "dump", "tables"}) {
        EXPECT_THAT(help, HasSubstr("\n  " + command + " "));
        EXPECT_THAT(outputOf({command, "--help"}),
                    StartsWith("Uso: valtrino-mdb " + command + " ARQUIVO"));
    }
    EXPECT_THAT(outputOf({"sample", "-h"}),
                AllOf(HasSubstr("--cheques N"), HasSubstr("--today AAAA-MM-DD")));
}

TEST(ToolsUsage, AMistakeInACommandsLineLeadsToThatCommandsHelp) {
    EXPECT_THAT(run({"dump", "a.mdb"}).err, HasSubstr("Veja \"valtrino-mdb dump --help\"."));
    EXPECT_THAT(run({"apagar"}).err, HasSubstr("Veja \"valtrino-mdb --help\"."));
}

TEST(ToolsUsage, TheManualSaysWhatTheHelpSays) {
    EXPECT_THAT(outputOf({"--version"}), FollowsPattern("valtrino-mdb [0-9.]+\n"));
    std::string manual = outputOf({"--man"});
    EXPECT_THAT(manual, AllOf(StartsWith(".TH "), HasSubstr("\n.SH \"ESTADO DE SAÍDA\"\n")));
    for (std::size_t at = 0; (at = manual.find('\\', at)) != std::string::npos;)
        manual.erase(at, manual[at + 1] == '&' ? 2 : 1);
    const std::string completion = outputOf({"--completion"});
    std::istringstream help(outputOf({"--help"}));
    std::string line;
    while (std::getline(help, line) && line != "Comandos:")
        continue;
    int commands = 0;
    for (; std::getline(help, line) && !line.empty(); ++commands) {
        const std::string name = line.substr(2, line.find(' ', 2) - 2);
        SCOPED_TRACE(name);
        EXPECT_THAT(manual, HasSubstr("\n.SS " + name + " "));
        EXPECT_THAT(completion, HasSubstr("    *:" + name + ") words="));
        std::istringstream own(outputOf({name, "--help"}));
        for (std::string words; std::getline(own, words);) {
            const bool told = manual.find(words) != std::string::npos;
            EXPECT_TRUE(told || words == "Opções:" || words.starts_with("Uso:") ||
                        words.starts_with("  "))
                << words;
        }
    }
    EXPECT_GE(commands, 10);
}

/// The words of a line, "A" standing for the file's path.
std::vector<std::string> wordsOf(const char* line, const std::string& path) {
    std::vector<std::string> words;
    std::istringstream text(line);
    for (std::string word; text >> word;)
        words.push_back(word == "A" ? path : word);
    return words;
}

void expectUsageError(const std::vector<std::string>& words, const char* reason) {
    const ProgramResult result = run(words);
    EXPECT_EQ(result.code, 2);
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(result.err, HasSubstr(reason));
    EXPECT_THAT(result.err, FollowsPattern(".*\\. Veja \"valtrino-mdb( [a-z]+)? --help\"\\.\n"));
}

TEST(ToolsUsage, AWrongLineIsRefusedWithAReason) {
    const TemporaryFolder folder;
    const std::string path = (folder / "novo.mdb").string();
    const std::pair<const char*, const char*> cases[] = {
        {"",                                        "Falta o comando."                      },
        {"apagar A",                                "O comando \"apagar\" não existe."     },
        {"create",                                  "Falta dizer: ARQUIVO."                 },
        {"create A B",                              "Não se esperava \"B\"."               },
        {"create A --csv",                          "não tem a opção \"--csv\""          },
        {"create A --jet3=sim",                     "não leva valor"                       },
        {"create A --jet3 --jet3",                  "aparece duas vezes"                    },
        {"create A --jet3 --jet4",                  "Só um dos formatos"                   },
        {"sample A --cheques",                      "Falta o valor da opção \"--cheques\""},
        {"sample A --cheques -1",                   "pede um número inteiro"               },
        {"sample A --cheques muitos",               "pede um número inteiro"               },
        {"sample A --cheques 99999999999999999999", "pede um número inteiro"               },
        {"sample A --clients 0",                    "Cheques pedem ao menos um cliente"     },
        {"sample A --today 2004-02-30",             "pede uma data"                         },
        {"sample A --today 30/01/2004",             "pede uma data"                         },
        {"dump A",                                  "Falta dizer: ARQUIVO TABELA."          },
    };
    for (const auto& [line, reason] : cases) {
        SCOPED_TRACE(line);
        expectUsageError(wordsOf(line, path), reason);
        EXPECT_FALSE(std::filesystem::exists(path));
    }
    expectUsageError({"create", ""}, "O nome do arquivo está vazio.");
}

TEST(ToolsUsage, WhatCantBeReadFailsWithASentence) {
    const TemporaryFolder folder;
    const std::string missing = (folder / "nada.mdb").string();
    const std::string text = (folder / "texto.mdb").string();
    std::ofstream(text) << std::string(5000, 'x');
    for (const auto& [line, path] : {std::pair("check A", missing), std::pair("tables A", missing),
                                     std::pair("dump A x", missing), std::pair("tables A", text),
                                     std::pair("dump A x", text)}) {
        SCOPED_TRACE(line);
        const ProgramResult result = run(wordsOf(line, path));
        EXPECT_EQ(result.code, 1);
        EXPECT_THAT(result.out, IsEmpty());
        EXPECT_THAT(result.err, FollowsPattern("valtrino-mdb: .*\\.\n"));
    }
    EXPECT_EQ(run({"check", text}).code, 1);

    outputOf({"create", (folder / "loja.mdb").string()});
    EXPECT_THAT(run({"dump", (folder / "loja.mdb").string(), "nada"}).err,
                HasSubstr("não tem a tabela \"nada\""));
    EXPECT_EQ(run({"create", (folder / "pasta/que/falta.mdb").string()}).code, 1);
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

// ---- whole tables, in and out

/// Writes a file and says where.
std::string written(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
}

TEST_P(Tools, WhatIsExportedIsImportedAsItWas) {
    const std::string path = sample();
    outputOf({"create", file("tudo.mdb"), GetParam()});
    {
        jet::Database database(file("tudo.mdb"));
        using enum jet::ColumnType;
        const bool jet4 = GetParam() == "--jet4"; // decimal numbers are of that format
        // clang-format off
        jet::Table& table = database.createTable({
            "Tudo",
            {{"sim", boolean}, {"b", byte}, {"i", integer}, {"n", longInteger}, {"valor", currency},
             {"s", single}, {"r", real}, {"quando", date}, {"bytes", binary, 8},
             {"texto", text, 100}, {"longo", memo}, {"id", guid},
             {"dec", jet4 ? numeric : real, 0, false, 18, 3}},
            {}});
        using jet::Value;
        table.insert(jet::Row{true, std::int64_t{255}, std::int64_t{-32768}, std::int64_t{-1},
                              jet::Currency{-1}, 0.5, -1.25e300,
                              jet::Date::of({1899, 12, 29, 6, 7, 8}),
                              jet::Bytes{std::byte{0}, std::byte{0xFF}},
                              std::string("a, \"b\"\r\nç"), std::string(9000, 'm'),
                              jet::Guid::random(),
                              jet4 ? Value(*jet::numericFrom(true, "12345", 3)) : Value(-12.345)});
        // clang-format on
        table.insert(jet::Row{false, Value(), Value(), Value(), Value(), Value(), Value(), Value(),
                              Value(), std::string(), Value(), Value(), Value()});
    }
    const std::filesystem::path out = folder() / "saida";
    std::filesystem::create_directory(out);
    EXPECT_THAT(outputOf({"export", file("tudo.mdb"), out.string()}),
                HasSubstr("Tudo: 2 registros em " + (out / "Tudo.csv").string() + "\n"));
    std::filesystem::remove(out / "bancos.csv");
    for (const char* table : {"cheques", "cliente_fornecedor", "semfundos"})
        std::filesystem::remove(out / (std::string(table) + ".csv"));
    const Records all = dumped(file("tudo.mdb"), "Tudo");
    const std::string twice =
        outputOf({"import", file("tudo.mdb"), "Tudo", (out / "Tudo.csv").string()});
    EXPECT_EQ(twice, "2 registros gravados na tabela \"Tudo\", 0 recusados.\n");
    Records expected = all;
    expected.insert(expected.end(), all.begin() + 1, all.end());
    EXPECT_EQ(dumped(file("tudo.mdb"), "Tudo"), expected);
    EXPECT_THAT(outputOf({"check", file("tudo.mdb")}), HasSubstr("Nenhum problema."));

    outputOf({"export", path, out.string()});
    outputOf({"create", file("nova.mdb"), GetParam()});
    for (const std::string& table : kTables) {
        outputOf({"import", file("nova.mdb"), table, (out / (table + ".csv")).string()});
        EXPECT_EQ(dumped(file("nova.mdb"), table), dumped(path, table)) << table;
    }
    EXPECT_THAT(filesIn(out), ElementsAre("Tudo.csv", "bancos.csv", "cheques.csv",
                                          "cliente_fornecedor.csv", "semfundos.csv"));
}

TEST_P(Tools, ATableOfOneFieldComesBackWithItsNulls) {
    using enum jet::ColumnType;
    for (const char* name : {"uma.mdb", "outra.mdb"}) {
        outputOf({"create", file(name), GetParam()});
        jet::Database(file(name)).createTable({"Nota", {{"texto", text, 20}}, {}});
    }
    {
        jet::Database database(file("uma.mdb"));
        jet::Table& notes = database.table("Nota");
        for (const jet::Value& value :
             {jet::Value(), jet::Value("a"), jet::Value(), jet::Value(""), jet::Value()})
            notes.insert(jet::Row{value});
    }
    const std::filesystem::path out = folder() / "saida";
    std::filesystem::create_directory(out);
    outputOf({"export", file("uma.mdb"), out.string()});
    EXPECT_EQ(outputOf({"import", file("outra.mdb"), "Nota", (out / "Nota.csv").string()}),
              "5 registros gravados na tabela \"Nota\", 0 recusados.\n");
    const std::string all = "[\n{\"texto\": null},\n{\"texto\": \"a\"},\n{\"texto\": null},\n"
                            "{\"texto\": \"\"},\n{\"texto\": null}\n]\n";
    EXPECT_EQ(outputOf({"dump", file("uma.mdb"), "Nota", "--json"}), all);
    EXPECT_EQ(outputOf({"dump", file("outra.mdb"), "Nota", "--json"}), all);
}

TEST_P(Tools, ExportReplacesNothingAndLeavesNothingHalfDone) {
    const std::string path = sample({"--cheques", "5"});
    const std::filesystem::path out = folder() / "saida";
    std::filesystem::create_directory(out);
    written(out / "semfundos.csv", "meu"); // the last one
    const ProgramResult result = run({"export", path, out.string()});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr((out / "semfundos.csv").string() + "\" já existe"));
    EXPECT_THAT(filesIn(out), ElementsAre("semfundos.csv"));
    EXPECT_THAT(run({"export", path, file("nada")}).err,
                HasSubstr("A pasta \"" + file("nada") + "\" não existe."));
}

TEST_P(Tools, ImportSaysWhichRowsAreRefusedAndKeepsNone) {
    outputOf({"create", file(), GetParam()});
    const std::string csv = written(folder() / "bancos.csv", "\xEF\xBB\xBFNome,cod_banco,codigo\n"
                                                             "Banco Um,1,\n"
                                                             "Banco Dois,dois,\n"
                                                             "\"Banco\nTrês\",3,7\n"
                                                             "Banco Sete,7,7\n"
                                                             "sobra,1,2,3\n"
                                                             "\"" +
                                                                 std::string(60, 'x') +
                                                                 "\",8,\n"
                                                                 "\xFF,9,\n");
    ProgramResult result = run({"import", file(), "bancos", csv});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out,
                AllOf(StartsWith("linha 3: o campo \"cod_banco\" não pode ter \"dois\".\n"
                                 "linha 6: Já existe um registro com o mesmo valor em \"codigo\".\n"
                                 "linha 7: tem 4 campos, e a primeira linha tem 3.\n"
                                 "linha 8: "),
                      HasSubstr("\nlinha 9: o campo \"nome\" não está em UTF-8.\n"),
                      HasSubstr("\nNada foi gravado: 5 de 7 registros não são aceitos.\n")));
    EXPECT_EQ(dumped(file(), "bancos").size(), 1U);

    result = run({"import", file(), "bancos", csv, "--skip"});
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.out, HasSubstr("2 registros gravados na tabela \"bancos\", 5 recusados.\n"));
    EXPECT_THAT(dumped(file(), "bancos"), ElementsAre(testing::_, ElementsAre("1", "1", "Banco Um"),
                                                      ElementsAre("7", "3", "Banco\nTrês")));
}

TEST_P(Tools, ImportObeysTheFilesRules) {
    const std::string path = sample({"--cheques", "0"});
    {
        jet::Database database(path);
        setRules(database, "cheques",
                 {
                     {.column = "valor", .rule = ">0"}
        });
    }
    const std::string csv = written(folder() / "c.csv", "numero,valor\n1,10.5\n2,-1\n");
    const ProgramResult result = run({"import", path, "cheques", csv});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.out, StartsWith("linha 3: "));
    EXPECT_EQ(dumped(path, "cheques").size(), 1U);
}

TEST_P(Tools, ImportRefusesWhatIsNoCsvOfTheTable) {
    outputOf({"create", file(), GetParam()});
    // clang-format off
    const std::pair<std::string, const char*> cases[] = {
        {"",                              "está vazio"                              },
        {"nome,apelido\nx,y\n",           "não tem o campo \"apelido\""           },
        {"nome,NOME\nx,y\n",              "está duas vezes"                         },
        {"nome\n\"aberto\n",              "falta a aspa que fecha"                  },
        {"nome\nx\"y\n",                  "Linha 2: há uma aspa no meio"            },
        {"nome\n\"x\"y\n",                "só pode vir uma vírgula"                },
        {std::string("\xFF\xFE\0n", 4),   "A primeira linha não tem nomes de campos"},
    };
    // clang-format on
    for (const auto& [text, reason] : cases) {
        const ProgramResult result =
            run({"import", file(), "bancos", written(folder() / "x.csv", text)});
        EXPECT_EQ(result.code, 1) << text;
        EXPECT_THAT(result.err, HasSubstr(reason));
        EXPECT_EQ(dumped(file(), "bancos").size(), 1U) << text;
    }
}

// ---- for other programs, and about the file

TEST_P(Tools, JsonSaysWhatTheTextSays) {
    outputOf({"create", file(), GetParam()});
    EXPECT_EQ(outputOf({"dump", file(), "bancos", "--json"}), "[\n]\n");
    const std::string csv =
        written(folder() / "b.csv", "cod_banco,nome\n1,\"a \"\"b\"\" \\\n\tç\"\n,\n");
    outputOf({"import", file(), "bancos", csv});
    EXPECT_EQ(
        outputOf({"dump", file(), "bancos", "--json"}),
        "[\n{\"codigo\": 1, \"cod_banco\": 1, \"nome\": \"a \\\"b\\\" \\\\\\u000a\\u0009ç\"},\n"
        "{\"codigo\": 2, \"cod_banco\": null, \"nome\": null}\n]\n");
    EXPECT_THAT(outputOf({"tables", file(), "--json"}),
                StartsWith("[\n{\"tabela\": \"bancos\", \"registros\": 2, \"campos\": 3, "
                           "\"so_para_consulta\": null},\n{\"tabela\": \"cheques\""));
    EXPECT_THAT(
        outputOf({"check", file(), "--json"}),
        AllOf(StartsWith("{\"conclusao\": \"Nenhum problema.\", \"regras_conferidas\": true, "),
              HasSubstr("\"tabelas\": 8, "), testing::EndsWith("\"achados\": []}\n")));
    std::ofstream(file() + "-journal", std::ios::binary) << "JETUNDO2";
    const ProgramResult warned = run({"check", file(), "--json"});
    EXPECT_EQ(warned.code, 3);
    EXPECT_THAT(warned.out,
                HasSubstr("\"achados\": [\n{\"tipo\": \"aviso\", \"pagina\": 0, \"frase\": \""));
    expectUsageError({"dump", file(), "bancos", "--json", "--csv"}, "Só uma das formas");
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

TEST(ToolsUsage, ErrorsNameTheFilesThatWereGiven) {
    const TemporaryFolder folder;
    const std::string path = (folder / "a.mdb").string();
    const std::string nowhere = (folder / "nada").string();
    outputOf({"sample", path});
    const std::string noFolder = "A pasta \"" + nowhere + "\" não existe.";
    const std::string isFolder = "é uma pasta";
    // clang-format off
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"check", folder.path().string()},                               isFolder},
        {{"restore", folder.path().string(), path},                       isFolder},
        {{"create", nowhere + "/b.mdb"},                                  noFolder},
        {{"compact", path, nowhere + "/b.mdb"},                           noFolder},
        {{"move", path, nowhere},                                         noFolder},
        {{"create", (folder.path() / (std::string(250, 'x') + ".mdb")).string()}, "o nome é longo demais"},
    };
    // clang-format on
    for (const auto& [words, reason] : cases) {
        const ProgramResult result = run(words);
        EXPECT_EQ(result.code, 1) << words[0];
        EXPECT_THAT(result.err, AllOf(HasSubstr(reason), Not(HasSubstr("parcial"))));
    }
    EXPECT_THAT(filesIn(folder.path()), ElementsAre("a.mdb"));
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
