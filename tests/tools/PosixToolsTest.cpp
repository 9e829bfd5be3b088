// What only such a system has: a terminal, by the program "script", and folders that take no files.
#include "support/FileRules.h"
#include "tools/Tools.h"

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

namespace {

TEST_P(Tools, OnATerminalTheResultStandsOnALineOfItsOwn) {
    const std::string path = sample();
    const ProgramResult result = runProgram(
        {"script", "-qec", std::string(VALTRINO_MDB) + " compact " + path + " " + file("menor.mdb"),
         "/dev/null"});
    EXPECT_EQ(result.code, 0);
    const std::string clear = "\r\033[K";
    EXPECT_THAT(result.out, HasSubstr(clear + "cheques: 100%" + clear));
    EXPECT_THAT(result.out, HasSubstr(clear + "8 tabelas, "));
}

TEST_P(Tools, OnATerminalLongWorkTellsHowFarItIs) {
    const auto shown = [](const std::string& words) {
        const ProgramResult result =
            runProgram({"script", "-qec", std::string(VALTRINO_MDB) + " " + words, "/dev/null"});
        EXPECT_EQ(result.code, 0) << result.out;
        return result.out;
    };
    const std::string clear = "\r\033[K";
    EXPECT_THAT(shown("sample " + file() + " " + GetParam() + " --cheques 2000"),
                AllOf(HasSubstr(clear + "cheques: 51%"), HasSubstr(clear + "Criado: ")));
    EXPECT_THAT(shown("check " + file()),
                AllOf(HasSubstr(clear + "tabela \"cheques\": 0%"),
                      HasSubstr(clear + "tabela \"cheques\", índices: 76%"),
                      HasSubstr(clear + "tabela \"cheques\", índice \"numero\": 76%"),
                      ContainsRegex("\033.K[0-9]+ páginas")));
    {
        jet::Database database(file());
        setRules(database, "cheques",
                 {
                     {.column = "valor", .rule = ">0"}
        });
    }
    EXPECT_THAT(shown("check " + file()), HasSubstr(clear + "tabela \"cheques\", regras: 51%"));
}

TEST(ToolsUsage, AFolderThatTakesNoFilesIsNamed) {
    const ProgramResult result = run({"create", "/proc/b.mdb"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, AllOf(HasSubstr("\"/proc/b.mdb\""), Not(HasSubstr("parcial"))));
}

} // namespace
