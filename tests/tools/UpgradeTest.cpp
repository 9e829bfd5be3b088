// A file of an earlier version gets what this one asks for.
#include "jet/Check.h"
#include "schema/ShopSchema.h"
#include "tools/Machine.h"
#include "tools/Tools.h"

#include <filesystem>
#include <fstream>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Rows that have moved are read in another order.
Records sorted(Records records) {
    std::ranges::sort(records);
    return records;
}

class Upgrade : public Tools {
protected:
    using Change = std::function<void(jet::TableSpec&)>;

    static void drop(jet::TableSpec& table, const std::string& column) {
        std::erase_if(table.columns, [&](const auto& spec) { return spec.name == column; });
        dropIndex(table, column);
    }
    static void dropIndex(jet::TableSpec& table, const std::string& column) {
        std::erase_if(table.indexes,
                      [&](const auto& index) { return index.columns.front().name == column; });
    }

    /// The shop's file as `change` wants its tables (one without columns is left out), with rows.
    [[nodiscard]] std::string older(const Change& change) const {
        std::string path = file();
        jet::Database::create(path,
                              GetParam() == "--jet3" ? jet::Version::jet3 : jet::Version::jet4);
        jet::Database database(path);
        for (jet::TableSpec table : shop::tables()) {
            change(table);
            if (table.columns.empty())
                continue;
            jet::Table& made = database.createTable(table);
            for (std::int64_t i = 1; i <= 120; ++i)
                insert(made, i);
        }
        return path;
    }
    static void insert(jet::Table& table, std::int64_t number) {
        std::vector<jet::Assignment> given;
        for (const char* field : {"codigo", "lancamento", "cliente", "banco"})
            if (const auto place = table.findColumn(field))
                given.push_back({*place, number});
        for (const char* field : {"nome", "numero"})
            if (const auto place = table.findColumn(field))
                given.push_back({*place, "n" + std::to_string(number)});
        table.insert(given);
    }
    [[nodiscard]] std::vector<std::string> kept() const {
        std::vector<std::string> names = filesIn(folder());
        std::erase_if(names,
                      [](const auto& name) { return !name.starts_with("automacao-substituido-"); });
        return names;
    }
    void expectUntouched(const std::string& path, const std::string& before) const {
        EXPECT_TRUE(contentOf(path) == before);
        EXPECT_THAT(filesIn(folder()), ElementsAre("automacao.mdb"));
    }
};

INSTANTIATE_TEST_SUITE_P(, Upgrade, testing::Values("--jet3", "--jet4"),
                         [](const testing::TestParamInfo<std::string>& chosen) {
                             return chosen.param.substr(2);
                         });

TEST_P(Upgrade, AnOlderFileGetsWhatItLacksAndKeepsWhatItHas) {
    const std::string path = older([](jet::TableSpec& table) {
        if (table.name == "cliente_fornecedor")
            for (const char* field : {"tipo", "emailcli", "observacao", "limite_credito"})
                drop(table, field);
        if (table.name == "cheques") {
            drop(table, "bompara");
            drop(table, "descontar");
            dropIndex(table, "cliente");
        }
        if (table.name == "semfundos")
            table.columns.clear();
    });
    const std::string before = contentOf(path);
    const Records clients = dumped(path, "cliente_fornecedor");
    const std::string told = outputOf({"upgrade", path});
    ASSERT_EQ(kept().size(), 1U);
    EXPECT_EQ(told, "Tabela cliente_fornecedor:\n"
                    "  campos: tipo, limite_credito, emailcli, observacao\n"
                    "Tabela cheques:\n"
                    "  campos: bompara, descontar\n"
                    "  índices: cliente, bompara\n"
                    "Tabela semfundos: nova\n"
                    "O arquivo como era foi guardado como \"" +
                        file(kept().front().c_str()) + "\".\n");
    EXPECT_TRUE(contentOf(folder() / kept().front()) == before);
    EXPECT_TRUE(jet::check(path).clean());

    Records expected = clients;
    for (std::size_t i = 0; i < expected.size(); ++i)
        for (const auto& [name, value] : {
                 std::pair("tipo", "1"),
                 {"limite_credito", ""},
                 {"emailcli",       ""},
                 {"observacao",     ""}
        })
            expected[i].emplace_back(i == 0 ? name : value);
    EXPECT_EQ(dumped(path, "cliente_fornecedor"), expected);
    for (const auto& row : dumped(path, "cheques"))
        EXPECT_THAT(row.back(), testing::AnyOf("descontar", "1"));
    if (hasMdbTools()) {
        for (const char* table : {"cliente_fornecedor", "cheques", "bancos", "semfundos"})
            EXPECT_TRUE(sorted(exportedByMdbTools(path, table)) == sorted(dumped(path, table)))
                << table;
        EXPECT_THAT(runProgram({"mdb-schema", path}).out,
                    AllOf(HasSubstr("[limite_credito]"), HasSubstr("[bompara]")));
    }
    EXPECT_EQ(outputOf({"upgrade", path}),
              "Nada a fazer: não falta nenhuma tabela, campo ou índice desta versão.\n");
    EXPECT_EQ(kept().size(), 1U);
    EXPECT_THAT(outputOf({"check", path}), HasSubstr("Nenhum problema."));
}

TEST_P(Upgrade, WhatHasBeenUpgradedIsWorkedInAsAnyOther) {
    const std::string path = older([](jet::TableSpec& table) {
        if (table.name == "cheques")
            for (const char* field : {"agencia", "bompara", "valor", "observacao", "descontar"})
                drop(table, field);
    });
    outputOf({"upgrade", path});
    const std::string csv = file("cheques.csv");
    std::ofstream(csv, std::ios::binary)
        << "cliente,banco,numero,bompara,valor,descontar,observacao\r\n"
        << "7,3,000777,2026-12-05,12.5000,0,à vista\r\n";
    outputOf({"import", path, "cheques", csv});
    const Records rows = dumped(path, "cheques");
    EXPECT_THAT(rows.back(), ElementsAre("121", "7", "3", "000777", "", "", "", "2026-12-05",
                                         "12.5000", "à vista", "0"));
    EXPECT_THAT(outputOf({"check", path}), HasSubstr("Nenhum problema."));
    outputOf({"compact", path, file("menor.mdb")});
    EXPECT_EQ(dumped(file("menor.mdb"), "cheques"), rows);
}

TEST_P(Upgrade, AFileOfThisVersionIsLeftAlone) {
    const std::string path = sample();
    const std::string before = contentOf(path);
    EXPECT_THAT(outputOf({"upgrade", path}), StartsWith("Nada a fazer"));
    expectUntouched(path, before);
}

TEST_P(Upgrade, NothingIsDoneWhileAnotherHasTheFile) {
    const std::string path = older([](jet::TableSpec& table) { drop(table, "agencia"); });
    {
        const jet::Database clerk(path);
        const ProgramResult result = run({"upgrade", path});
        EXPECT_EQ(result.code, 1);
        EXPECT_THAT(result.err, HasSubstr("está aberto em outro programa ou estação: "));
    }
    EXPECT_THAT(kept(), IsEmpty());
    EXPECT_THAT(outputOf({"upgrade", path}), HasSubstr("campos: agencia\n"));
}

TEST_P(Upgrade, AFileThatMayOnlyBeReadStaysAsItIs) {
    const std::string path = older([](jet::TableSpec& table) { drop(table, "agencia"); });
    const std::string before = contentOf(path);
    std::filesystem::permissions(path, std::filesystem::perms(0444));
    std::filesystem::permissions(folder(), std::filesystem::perms(0777));
    const ProgramResult result = runProgram(asOrdinaryUser({VALTRINO_MDB, "upgrade", path}));
    if (result.code == 127)
        GTEST_SKIP() << "another account can't start the program: " << result.err;
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, AllOf(StartsWith("valtrino-mdb: "), HasSubstr(path)));
    expectUntouched(path, before);
}

TEST_P(Upgrade, WhatTheRowsDontAllowLeavesTheFileAsItWas) {
    const std::string path = older([](jet::TableSpec& table) {
        if (table.name != "bancos")
            return drop(table, "agencia");
        dropIndex(table, "codigo");
        table.columns.front().autonumber = false;
    });
    {
        jet::Database database(path);
        insert(database.table("bancos"), 7); // the second of that code
    }
    const std::string before = contentOf(path);
    const ProgramResult result = run({"upgrade", path});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, HasSubstr("Já existe um registro com o mesmo valor em \"codigo\"."));
    EXPECT_THAT(result.out, IsEmpty());
    expectUntouched(path, before);
}

TEST_P(Upgrade, KeysAreNotMadeUp) {
    const std::string path = older([](jet::TableSpec& table) {
        if (table.name == "bancos")
            drop(table, "codigo");
    });
    const std::string before = contentOf(path);
    const ProgramResult result = run({"upgrade", path});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err,
                HasSubstr("A tabela \"bancos\" não tem o campo \"codigo\", que numera"));
    expectUntouched(path, before);
}

} // namespace
