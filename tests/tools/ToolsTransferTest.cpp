// Whole tables out of a file and into one, as CSV; and what other programs are told in JSON.
#include "jet/Numbers.h"
#include "support/FileRules.h"
#include "tools/Tools.h"

#include <fstream>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

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

} // namespace
