// The rules that the back-office keeps in the file: kept by this engine too.
#include "jet/People.h"
#include "jet/rule/Properties.h"
#include "support/Versions.h"

#include <gtest/gtest.h>

using namespace jet;
using namespace std::string_literals;

namespace {

class Rules : public People {};
INSTANTIATE_TEST_SUITE_P(, Rules, bothVersions(), versionName);

TEST_P(Rules, ARequiredColumnIsNeverLeftEmpty) {
    keep({
        {.column = "NOME",  .required = true },
        {.column = "idade", .required = false}
    });
    const Error error = refusal([&] { add({}); });
    EXPECT_EQ(error.code(), Errc::nullValue);
    EXPECT_STREQ(error.what(),
                 "O registro não foi gravado: a tabela \"pessoas\" exige o campo \"nome\", que "
                 "ficou vazio. Preencha-o ou, se a janela não o mostra, peça a quem cuida da base "
                 "de dados que deixe de exigi-lo ou lhe dê um valor inicial.");
    EXPECT_EQ(refusal([&] { table().insert(Row(8)); }).code(), Errc::nullValue);
    const RowId row = add({
        {kNome, "Ana"s}
    });
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kNome, {}}
                  });
              }).code(),
              Errc::nullValue);
    change(row, {
                    {kIdade, whole(3)}
    });
    change(row, {
                    {kNome, ""s}
    });
    table().erase(row);
    EXPECT_EQ(table().rowCount(), 0);
}

TEST_P(Rules, EmptyTextIsRefusedWhereItIsNotAllowed) {
    keep({
        {.column = "nome",  .allowZeroLength = false},
        {.column = "obs",   .allowZeroLength = true },
        {.column = "idade", .allowZeroLength = false}
    });
    const Error error = refusal([&] {
        add({
            {kNome, ""s}
        });
    });
    EXPECT_EQ(error.code(), Errc::rule);
    EXPECT_STREQ(error.what(), "O campo \"nome\" da tabela \"pessoas\" não aceita um texto vazio: "
                               "preencha-o.");
    EXPECT_EQ(table().refusal(kNome, ""s), error.what());
    EXPECT_EQ(table().refusal(kNome, "x"s), std::nullopt);
    EXPECT_EQ(table().refusal(kObs, ""s), std::nullopt);
    const RowId row = add({
        {kNome,  {}      },
        {kObs,   ""s     },
        {kIdade, whole(0)}
    });
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kNome, ""s}
                  });
              }).code(),
              Errc::rule);
    change(row, {
                    {kNome, " "s}
    });
}

TEST_P(Rules, AColumnsRuleIsKeptOnInsertAndUpdate) {
    // clang-format off
    keep({
        {.column = "idade", .rule = ">=0 And <150", .message = "A idade vai de 0 a 149 anos."},
        {.column = "nome",  .rule = "Like '[a-z]*'"},
        {.column = "data",  .rule = "<=Date() Or Is Null"}
    });
    // clang-format on
    Error error = refusal([&] {
        add({
            {kIdade, whole(150)}
        });
    });
    EXPECT_EQ(error.code(), Errc::rule);
    EXPECT_STREQ(error.what(), "A idade vai de 0 a 149 anos.");
    error = refusal([&] {
        add({
            {kNome, "9x"s}
        });
    });
    EXPECT_EQ(error.code(), Errc::rule);
    EXPECT_STREQ(error.what(), "O valor do campo \"nome\" da tabela \"pessoas\" não obedece à "
                               "regra do banco de dados: Like '[a-z]*'. Corrija-o e grave outra "
                               "vez.");
    EXPECT_EQ(refusal([&] {
                  add({
                      {kData, Date{80000}}
                  });
              }).code(),
              Errc::rule);
    EXPECT_EQ(table().refusal(kIdade, whole(150)), "A idade vai de 0 a 149 anos.");
    EXPECT_EQ(table().refusal(kIdade, whole(149)), std::nullopt);
    EXPECT_EQ(table().refusal(kNome, std::string(50, 'a')).value().substr(0, 8), "O campo ");

    const RowId row = add({
        {kIdade, {}           },
        {kNome,  "Zé"s       },
        {kData,  Date::today()}
    });
    change(row, {
                    {kIdade, whole(149)},
                    {kData,  Date{-1}  }
    });
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kIdade, whole(-1)}
                  });
              }).code(),
              Errc::rule);
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kIdade, whole(1)},
                                  {kNome,  "?"s    }
                  });
              }).code(),
              Errc::rule);
    change(row, {
                    {kIdade, {}}
    });
    table().erase(row);
}

TEST_P(Rules, EveryConditionIsKeptAsWritten) {
    const struct {
        const char* column;
        std::size_t place;
        const char* rule;
        Value accepted;
        Value refused;
    } cases[] = {
        {"idade", kIdade, "<>0",                                 whole(1),                 whole(0)                    },
        {"idade", kIdade, "In (1,3,5)",                          whole(3),                 whole(4)                    },
        {"idade", kIdade, "Not In (1,3,5)",                      whole(4),                 whole(3)                    },
        {"idade", kIdade, "Between 18 And 65",                   whole(65),                whole(66)                   },
        {"idade", kIdade, "Is Not Null",                         whole(0),                 {}                          },
        {"idade", kIdade, ">5",                                  {},                       whole(5)                    },
        {"idade", kIdade, "1 Or 2",                              whole(2),                 whole(3)                    },
        {"idade", kIdade, ">0 And Not 13",                       whole(12),                whole(13)                   },
        {"idade", kIdade, "[idade] Is Null Xor [idade]<9",       {},                       whole(9)                    },
        {"nome",  kNome,  "=\"SIM\" Or =\"NÃO\"",               "não"s,                  "nao"s                      },
        {"nome",  kNome,  "In ('SP','RJ')",                      "sp"s,                    "MG"s                       },
        {"nome",  kNome,  ">='B' And <'D'",                      "casa"s,                  "dado"s                     },
        {"nome",  kNome,  "Like \"#####-###\"",                  "14800-123"s,             "14800123"s                 },
        {"nome",  kNome,  "Like \"[A-C]*\"",                     "bia"s,                   "eva"s                      },
        {"nome",  kNome,  "Like \"[!0-9]*\"",                    "rua 7"s,                 "7 rua"s                    },
        {"nome",  kNome,  "Like \"?a\"",                         "pA"s,                    "papa"s                     },
        {"nome",  kNome,  "Not Like \"*teste*\"",                "Ana"s,                   "um Teste"s                 },
        {"nome",  kNome,  "Len([nome])<=3",                      "Zé"s,                   "José"s                    },
        {"nome",  kNome,  "<>\"\"",                              {},                       ""s                         },
        {"obs",   kObs,   "Is Null Or Like 'x*'",                "Xis"s,                   "y"s                        },
        {"valor", kValor, ">=0.01",                              Currency{100},            Currency{99}                },
        {"valor", kValor, "Between -1 And 1",                    Currency{-10'000},        Currency{-10'001}           },
        {"ativo", kAtivo, "=True",                               true,                     false                       },
        {"peso",  kPeso,  "<1e3",                                999.5,                    1000.0                      },
        {"data",  kData,  ">=#01/31/1990#",                      Date::of({1990, 1, 31}),  Date::of({1990, 1, 30})     },
        {"data",  kData,  "Between #1/1/2000# And #12/31/2000#", Date::of({2000, 12, 31}),
         Date::of({2001, 1, 1})                                                                                        },
        {"data",  kData,  "<=Now()",                             Date::today(),            Date{Date::today().days + 2}},
    };
    for (const auto& [column, place, rule, accepted, refused] : cases) {
        SCOPED_TRACE(rule);
        keep({
            {.column = column, .rule = rule}
        });
        EXPECT_FALSE(table().readOnlyReason());
        const RowId row = add({
            {place, accepted}
        });
        const Assignment wrong{place, refused};
        EXPECT_EQ(refusal([&] { add({wrong}); }).code(), Errc::rule);
        EXPECT_EQ(refusal([&] { change(row, {wrong}); }).code(), Errc::rule);
        table().erase(row);
    }
}

TEST_P(Rules, ARowFromBeforeTheRuleCanBeCorrectedFieldByField) {
    const RowId row = add({
        {kIdade, whole(200)},
        {kNome,  "Ana"s    }
    });
    keep({
        {.column = "idade", .required = true, .rule = "<150"}
    });
    change(row, {
                    {kNome, "Bia"s}
    });
    change(row, {
                    {kIdade, whole(200)},
                    {kNome,  "Cida"s   }
    }); // the same value again
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kIdade, whole(201)}
                  });
              }).code(),
              Errc::rule);
    change(row, {
                    {kIdade, whole(100)}
    });
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kIdade, whole(200)}
                  });
              }).code(),
              Errc::rule);
}

TEST_P(Rules, AColumnsRuleIsKeptWhenAnotherThatItReadsChanges) {
    const RowId row = add({
        {kIdade, whole(70)},
        {kPeso,  80.0     }
    });
    keep({
        {.column = "idade", .rule = "<[peso]"}
    });
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kPeso, 60.0}
                  });
              }).code(),
              Errc::rule);
    change(row, {
                    {kPeso, 75.0}
    });
    keep({
        {.column = "idade", .rule = "<[peso]-10"}
    });
    change(row, {
                    {kNome, "Ana"s}
    }); // no part of it
}

TEST_P(Rules, AMessageThatShowsNothingIsNone) {
    const std::string own =
        "O valor do campo \"idade\" da tabela \"pessoas\" não obedece à regra do "
        "banco de dados: >=0. Corrija-o e grave outra vez.";
    const std::pair<std::string, std::string> written[] = {
        {"\0sem idade"s,     own     },
        {" \0sem idade"s,    own     },
        {"Idade?\0ou não"s, "Idade?"}
    };
    for (const auto& [message, says] : written) {
        keep({
            {.column = "idade", .rule = ">=0", .message = message}
        });
        EXPECT_EQ(table().refusal(kIdade, whole(-1)), says);
    }
}

TEST_P(Rules, ATablesRuleSpansColumns) {
    keep({
        {.rule = "[valor]>=0 And (Not [ativo] Or [peso]>[idade]*0.5)",
         .message = "Peso e idade não combinam."}
    });
    EXPECT_STREQ(refusal([&] {
                     add({
                         {kValor, Currency{0}},
                         {kAtivo, true       },
                         {kPeso,  1.0        },
                         {kIdade, whole(8)   }
                     });
                 }).what(),
                 "Peso e idade não combinam.");
    const RowId row = add({
        {kValor, Currency{1}},
        {kPeso,  1.0        },
        {kIdade, whole(8)   }
    });
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kAtivo, true}
                  });
              }).code(),
              Errc::rule);
    change(row, {
                    {kAtivo, true},
                    {kPeso,  4.5 }
    });
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kNome,  "x"s    },
                                  {kIdade, whole(9)}
                  });
              }).code(),
              Errc::rule);
    change(row, {
                    {kIdade, {}}
    }); // neither true nor false: let through
    EXPECT_EQ(refusal([&] {
                  change(row, {
                                  {kValor, Currency{-1}}
                  });
              }).code(),
              Errc::rule);
    keep({{.rule = "[pessoas].[nome] Is Not Null"}});
    const Error error = refusal([&] {
        change(row, {
                        {kIdade, whole(1)}
        });
    });
    EXPECT_STREQ(error.what(), "O registro da tabela \"pessoas\" não obedece à regra do banco de "
                               "dados: [pessoas].[nome] Is Not Null. Corrija-o e grave outra vez.");
    table().erase(row);
}

TEST_P(Rules, ARuleThatTheValuesDontSuitRefusesTheRow) {
    keep({
        {.column = "nome", .rule = ">5"}
    });
    const Error error = refusal([&] {
        add({
            {kNome, "dez"s}
        });
    });
    EXPECT_EQ(error.code(), Errc::rule);
    EXPECT_NE(std::string(error.what()).find(">5"), std::string::npos);
    add({
        {kNome, "6"s}
    });
}

TEST_P(Rules, ARuleThatCannotBeUnderstoodMakesTheTableReadOnly) {
    const RowId row = add({
        {kIdade, whole(1)}
    });
    const std::string deep(100, '(');
    const std::pair<std::string, std::string> rules[] = {
        {"idade", "DMax('x','y')>1"       },
        {"",      "[outro]>1"             },
        {"nome",  "StrReverse([nome])='A'"},
        {"idade", deep                    },
    };
    for (const auto& [column, text] : rules) {
        FileRule rule;
        rule.column = column;
        rule.rule = text;
        keep({rule});
        for (const Error& error : {refusal([&] { add({}); }), refusal([&] {
                                       change(row, {
                                                       {kIdade, whole(2)}
                                       });
                                   }),
                                   refusal([&] { table().erase(row); })}) {
            EXPECT_EQ(error.code(), Errc::readOnly);
            EXPECT_NE(std::string(error.what()).find(rule.rule), std::string::npos) << error.what();
        }
        EXPECT_EQ(value(row, kIdade), whole(1));
    }
    keep({
        {.column = "idade", .rule = "Primeira()>1"},
        {.column = "nome",  .rule = "Segunda()>1" }
    });
    EXPECT_NE(table().readOnlyReason().value_or("").find("Primeira()"), std::string::npos);
    keep({
        {.column = "outro", .required = true, .rule = "DMax('x','y')>1"}
    }); // no such column
    change(row, {
                    {kIdade, whole(2)}
    });
}

TEST_P(Rules, ARefusalLeavesAnOpenTransactionAsItWas) {
    keep({
        {.column = "idade", .rule = ">0"}
    });
    database_->begin();
    const RowId row = add({
        {kIdade,            whole(1)},
        { kObs, std::string(5000,     'x')}
    });
    EXPECT_THROW(change(row,
                        {
                            {kIdade, whole(0)},
                            {kObs,   "y"s    }
    }),
                 Error);
    EXPECT_THROW(add({
                     {kIdade,            whole(0)},
                     { kObs, std::string(5000,     'z')}
    }),
                 Error);
    EXPECT_EQ(value(row, kObs), Value(std::string(5000, 'x')));
    database_->commit();
    EXPECT_EQ(table().rowCount(), 1);
    EXPECT_EQ(value(add({
                        {kIdade, whole(1)}
    }),
                    kId),
              whole(2))
        << "no number was lost";
}

TEST_P(Rules, RulesAreReadAgainWhenTheyChange) {
    add({
        {kIdade, whole(0)}
    });
    keep({
        {.column = "idade", .rule = ">0"}
    });
    EXPECT_THROW(add({
                     {kIdade, whole(0)}
    }),
                 Error);
    setProperties(*database_, "pessoas", {});
    add({
        {kIdade, whole(0)}
    });
    keep({
        {.column = "idade", .rule = ">0"}
    });
    database_.reset();
    database_.emplace(path());
    EXPECT_THROW(add({
                     {kIdade, whole(0)}
    }),
                 Error);
}

TEST_P(Rules, WhatAnotherStationMakesARuleIsOneHereAtOnce) {
    add({
        {kIdade, whole(0)}
    });
    Database other(path());
    database_->flush();
    setRules(other, "pessoas",
             {
                 {.column = "idade", .rule = ">0"}
    });
    other.flush();
    EXPECT_THROW(add({
                     {kIdade, whole(0)}
    }),
                 Error);
}

TEST_P(Rules, RulesOfATransactionGoWithIt) {
    for (const bool keeps : {false, true}) {
        database_->begin();
        keep({
            {.column = "idade", .rule = ">0"}
        });
        EXPECT_THROW(add({
                         {kIdade, whole(0)}
        }),
                     Error);
        keeps ? database_->commit() : database_->rollback();
        if (keeps)
            EXPECT_THROW(add({
                             {kIdade, whole(0)}
            }),
                         Error);
        else
            add({
                {kIdade, whole(0)}
            });
    }
}

// ---- the properties' own bytes ----------------------------------------------------------------

TEST_P(Rules, ATableWithDamagedPropertiesIsReadOnly) {
    const RowId row = add({
        {kNome, "Ana"s}
    });
    Bytes bytes = propertyBytes(GetParam(), {
                                                {.column = "nome", .required = true}
    });
    bytes.resize(bytes.size() - 3);
    setProperties(*database_, "pessoas", bytes);
    EXPECT_EQ(refusal([&] { table().erase(row); }).code(), Errc::readOnly);
    EXPECT_EQ(value(row, kNome), Value("Ana"s));
    ASSERT_TRUE(table().readOnlyReason());
    EXPECT_NE(table().readOnlyReason()->find("regras"), std::string::npos);
    database_->flush();
    EXPECT_FALSE(check(path()).sound());
    setProperties(*database_, "pessoas", {});
}

} // namespace
