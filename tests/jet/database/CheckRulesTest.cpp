// Rows that break the rules of their file: old ones, which no station would take today.
#include "jet/CheckRules.h"

#include "jet/RuleFile.h"
#include "support/Samples.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

using namespace jet;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// A shop's file with rows first, and rules made afterwards.
class RuleCheck : public RuleFile {
protected:
    RuleCheck() {
        database_->createTable({
            "clientes",
            {{"codigo", ColumnType::longInteger},
              {"nome", ColumnType::text, 40},
              {"uf", ColumnType::text, 2},
              {"limite", ColumnType::currency}},
            {{"PrimaryKey", {{"codigo"}}, true}        }
        });
        database_->createTable({
            "cheques", {{"cliente", ColumnType::longInteger}, {"uf", ColumnType::text, 2}},
             {                                    }
        });
        database_->createTable(
            {"estados", {{"uf", ColumnType::text, 2}}, {{"PrimaryKey", {{"uf"}}, true}}});
    }

    [[nodiscard]] std::vector<Finding> found() {
        database_->flush();
        std::vector<Finding> findings = checkRules(path());
        for (const Finding& finding : findings)
            EXPECT_EQ(finding.severity, Finding::Severity::rule) << finding.sentence;
        return findings;
    }
    [[nodiscard]] std::vector<std::string> sentences() {
        std::vector<std::string> all;
        for (Finding& finding : found())
            all.push_back(std::move(finding.sentence));
        return all;
    }
};
INSTANTIATE_TEST_SUITE_P(, RuleCheck, bothVersions(), versionName);

TEST_P(RuleCheck, TellsTheRowAndTheRuleOfEachKind) {
    add("clientes", {whole(1), "Ana"s, "SP"s, Currency{10000}});
    const RowId empty = add("clientes", {whole(2), {}, "SP"s, {}});
    add("clientes", {whole(3), ""s, {}, Currency{-1}});
    add("clientes", {whole(4), "x"s, "XX"s, Currency{20000}});
    EXPECT_THAT(found(), IsEmpty());
    // clang-format off
    keep("clientes", {
        {.column = "nome",   .required = true, .allowZeroLength = false},
        {.column = "limite", .rule = ">=0",    .message = "Sem limite."},
        {.rule = "[uf]<>'XX' Or [limite]<2"}
    });
    // clang-format on
    const std::vector<Finding> findings = found();
    ASSERT_EQ(findings.size(), 4U);
    EXPECT_EQ(findings[0].page, empty.page);
    EXPECT_THAT(
        sentences(),
        ElementsAre("tabela \"clientes\": o campo \"nome\" deve ser preenchido e está vazio "
                    "(\"codigo\" 2, linha 1)",
                    "tabela \"clientes\": o campo \"nome\" tem um texto vazio, que não "
                    "aceita (\"codigo\" 3, linha 2)",
                    "tabela \"clientes\": o campo \"limite\" não obedece à regra >=0 "
                    "(\"codigo\" 3, linha 2)",
                    "tabela \"clientes\": o registro não obedece à regra [uf]<>'XX' Or "
                    "[limite]<2 (\"codigo\" 4, linha 3)"));
}

TEST_P(RuleCheck, ARowWithoutAKeyIsToldByItsPlace) {
    add("cheques", {{}, {}});
    keep("cheques", {
                        {.column = "uf", .required = true}
    });
    EXPECT_THAT(sentences(), ElementsAre("tabela \"cheques\": o campo \"uf\" deve ser preenchido e "
                                         "está vazio (linha 0)"));
}

TEST_P(RuleCheck, TellsRulesThatCantBeEvaluated) {
    add("clientes", {whole(1), "dez"s, {}, {}});
    keep("clientes", {
                         {.column = "nome", .rule = ">5"}
    });
    EXPECT_THAT(sentences(), ElementsAre("tabela \"clientes\": o campo \"nome\" não se deixa "
                                         "avaliar pela regra >5 (\"codigo\" 1, linha 0)"));
    keep("clientes",
         {
             {.column = "nome", .rule = "DMax('x','y')>1"},
             {.column = "uf",   .required = true         }
    });
    EXPECT_THAT(sentences(),
                ElementsAre(testing::AllOf(HasSubstr("pode ser consultada mas não alterada"),
                                           HasSubstr("DMax('x','y')>1")),
                            HasSubstr("\"uf\" deve ser preenchido")));
}

TEST_P(RuleCheck, TellsChildrenWithoutTheirParent) {
    add("estados", {"SP"s});
    add("clientes", {whole(1), {}, "sp"s, {}});
    add("clientes", {whole(2), {}, "RJ"s, {}});
    add("cheques", {whole(1), "RJ"s});
    add("cheques", {whole(7), "SP"s});
    add("cheques", {{}, {}});
    addRelationship(*database_, {"daqui", "cheques", {"cliente"}, "clientes", {"codigo"}});
    addRelationship(*database_, {"mora", "clientes", {"uf"}, "estados", {"uf"}});
    EXPECT_THAT(sentences(),
                ElementsAre("tabela \"cheques\": o valor de \"cliente\" não existe em \"codigo\", "
                            "como quer o relacionamento \"daqui\" com a tabela \"clientes\" "
                            "(linha 1)",
                            "tabela \"clientes\": o valor de \"uf\" não existe em \"uf\", como "
                            "quer o relacionamento \"mora\" com a tabela \"estados\" "
                            "(\"codigo\" 2, linha 1)"));
}

TEST_P(RuleCheck, LeavesAloneWhatIsNotToBeEnforced) {
    add("cheques", {whole(7), {}});
    addRelationship(
        *database_,
        {"livre", "cheques", {"cliente"}, "clientes", {"codigo"}, FileRelationship::kNotEnforced});
    EXPECT_THAT(sentences(), IsEmpty());
}

TEST_P(RuleCheck, ARelationshipWithoutAnIndexOfItsParentIsNotLookedAtRowByRow) {
    for (std::int64_t i = 0; i < 10; ++i)
        add("cheques", {whole(i), "SP"s});
    addRelationship(*database_, {"lento", "cheques", {"uf"}, "clientes", {"uf"}});
    EXPECT_THAT(sentences(),
                ElementsAre("tabela \"cheques\": o relacionamento \"lento\" com a tabela "
                            "\"clientes\" não foi conferido: falta nela um índice de \"uf\""));
}

TEST_P(RuleCheck, TellsFiftyRowsOfEachRuleAndCountsTheRest) {
    for (std::int64_t i = 0; i < 60; ++i) {
        add("clientes", {whole(i), {}, {}, {}});
        add("cheques", {{}, {}});
    }
    keep("clientes", {
                         {.column = "nome", .required = true},
                         {.column = "uf",   .required = true}
    });
    keep("cheques", {
                        {.column = "uf", .required = true}
    });
    std::map<std::string, int> told;
    for (const std::string& sentence : sentences())
        ++told[sentence.substr(0, sentence.find(" (\""))];
    EXPECT_EQ(told["tabela \"clientes\": o campo \"nome\" deve ser preenchido e está vazio"], 50);
    EXPECT_EQ(told["tabela \"clientes\": o campo \"nome\" deve ser preenchido e está vazio: mais "
                   "10 vezes, a partir desta página"],
              1);
    EXPECT_EQ(told["tabela \"clientes\": o campo \"uf\" deve ser preenchido e está vazio"], 50);
    EXPECT_EQ(found().size(), 3 * 51U);
}

TEST_P(RuleCheck, AskedAgainAfterTheRowIsMendedItIsContent) {
    const RowId row = add("clientes", {whole(1), {}, {}, {}});
    keep("clientes", {
                         {.column = "nome", .required = true}
    });
    EXPECT_EQ(found().size(), 1U);
    database_->table("clientes")
        .update(row, std::vector<Assignment>{
                         {1, "Ana"s}
    });
    EXPECT_THAT(found(), IsEmpty());
}

TEST(RuleCheckOfSamples, FindsNothingInRealFiles) {
    const auto samples = samplesFolder();
    if (!samples)
        GTEST_SKIP() << "no sample databases here";
    for (const auto& entry : std::filesystem::directory_iterator(*samples / "samples")) {
        if (entry.path().extension() != ".mdb")
            continue;
        for (const Finding& finding : checkRules(entry.path()))
            ADD_FAILURE() << entry.path().filename() << ": " << finding.sentence;
    }
}

TEST(RuleCheckOfSamples, WhatIsNoDatabaseIsSaidAndNotThrown) {
    const TemporaryFolder folder;
    const auto path = folder / "texto.mdb";
    std::ofstream(path) << std::string(9000, 'x');
    const auto findings = checkRules(path);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_NE(findings[0].sentence.find("as regras não puderam ser conferidas"), std::string::npos);
}

TEST(RuleCheckOfSamples, AMissingFileIsAnErrorOfItsOwn) {
    const TemporaryFolder folder;
    EXPECT_THROW((void)checkRules(folder / "nada.mdb"), Error);
}

} // namespace
