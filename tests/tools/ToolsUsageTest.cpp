// The line of a command: its help, the manual made of it, and the mistakes in it.
#include "tools/Tools.h"

#include <fstream>
#include <sstream>

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

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

} // namespace
