// The rules that the back-office keeps in the file: kept by this engine too.
#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/Properties.h"
#include "support/FileRules.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace jet;
using namespace std::string_literals;

namespace {

enum Place : std::size_t { kId, kNome, kIdade, kValor, kData, kAtivo, kObs, kPeso };

class Rules : public testing::TestWithParam<Version> {
protected:
    Rules() {
        Database::create(path(), GetParam());
        database_.emplace(path());
        database_->createTable({
            "pessoas",
            {{"id", ColumnType::longInteger, 0, true},
              {"nome", ColumnType::text, 40},
              {"idade", ColumnType::integer},
              {"valor", ColumnType::currency},
              {"data", ColumnType::date},
              {"ativo", ColumnType::boolean},
              {"obs", ColumnType::memo},
              {"peso", ColumnType::real}},
            {{"PrimaryKey", {{"id"}}, true}          }
        });
    }
    /// Whatever a test does leaves a sound file.
    void TearDown() override {
        database_.reset();
        EXPECT_TRUE(check(path()).clean());
    }

    [[nodiscard]] std::filesystem::path path() const { return folder_ / "dados.mdb"; }
    [[nodiscard]] Table& table() { return database_->table("pessoas"); }
    void keep(const std::vector<FileRule>& rules) { setRules(*database_, "pessoas", rules); }

    RowId add(const std::vector<Assignment>& given) { return table().insert(given); }
    void change(RowId row, const std::vector<Assignment>& changes) { table().update(row, changes); }
    [[nodiscard]] Value value(RowId row, std::size_t column) {
        return table().read(row).value()[column];
    }

    /// The Error that `body` throws; the table is left as it was.
    template <class Body>
    Error refusal(Body&& body) {
        const auto before = contents();
        try {
            body();
        } catch (const Error& error) {
            EXPECT_EQ(contents(), before);
            return error;
        }
        ADD_FAILURE() << "nothing was refused";
        return {Errc::misuse, ""};
    }
    [[nodiscard]] std::vector<std::pair<RowId, Row>> contents() {
        std::vector<std::pair<RowId, Row>> rows;
        RowCursor row = table().scan();
        for (bool there = row.first(); there; there = row.next())
            rows.emplace_back(row.id(), row.row().values());
        return rows;
    }

    TemporaryFolder folder_;
    std::optional<Database> database_;
};
INSTANTIATE_TEST_SUITE_P(Versions, Rules, testing::Values(Version::jet3, Version::jet4));

Value whole(std::int64_t number) { return number; }

TEST_P(Rules, ARequiredColumnIsNeverLeftEmpty) {
    keep({
        {.column = "NOME",  .required = true },
        {.column = "idade", .required = false}
    });
    const Error error = refusal([&] { add({}); });
    EXPECT_EQ(error.code(), Errc::nullValue);
    EXPECT_STREQ(error.what(), "O campo \"nome\" deve ser preenchido.");
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

TEST_P(Rules, DefaultsFillWhatIsNotGiven) {
    keep({
        {.column = "nome",  .defaultValue = "\"SP\""        },
        {.column = "idade", .defaultValue = "=18"           },
        {.column = "valor", .defaultValue = "0.05"          },
        {.column = "data",  .defaultValue = "Date()"        },
        {.column = "ativo", .defaultValue = "Yes"           },
        {.column = "obs",   .defaultValue = "= 1 & 'ª via'"},
        {.column = "peso",  .defaultValue = "-1.5"          },
        {.column = "id",    .defaultValue = "99"            }
    });
    const Date today = Date::today();
    const RowId row = add({});
    const Row found = table().read(row).value();
    EXPECT_EQ(std::get<Date>(found[kData]).days, today.days) << "or midnight has just passed";
    EXPECT_EQ(found, (Row{whole(1), "SP"s, whole(18), Currency{500}, found[kData], true, "1ª via"s,
                          -1.5}));
    const RowId given = add({
        {kNome,  {}   },
        {kIdade, {}   },
        {kAtivo, false},
        {kObs,   ""s  }
    });
    EXPECT_TRUE(isNull(value(given, kNome))) << "a null that is given stays one";
    EXPECT_TRUE(isNull(value(given, kIdade)));
    EXPECT_EQ(value(given, kAtivo), Value(false));
    EXPECT_EQ(value(given, kObs), Value(""s));
    EXPECT_EQ(value(given, kValor), Value(Currency{500}));
    const RowId whole = table().insert(Row(8));
    EXPECT_TRUE(isNull(value(whole, kIdade))) << "a whole row gives every value";
}

TEST_P(Rules, DefaultsOfEveryTypeSuitTheirColumns) {
    const struct {
        const char* column;
        std::size_t place;
        const char* text;
        Value value;
    } cases[] = {
        {"nome",  kNome,  "'a''b'",                "a'b"s          },
        {"nome",  kNome,  "5",                     "5"s            },
        {"nome",  kNome,  "Null",                  {}              },
        {"idade", kIdade, "'12'",                  whole(12)       },
        {"idade", kIdade, "True",                  whole(-1)       },
        {"idade", kIdade, "2.5",                   whole(2)        },
        {"valor", kValor, "10",                    Currency{100000}},
        {"valor", kValor, "1/4",                   Currency{2500}  },
        {"data",  kData,  "#12/31/2025 18:00:00#", Date{46022.75}  },
        {"data",  kData,  "#6:00:00 AM#",          Date{0.25}      },
        {"data",  kData,  "1",                     Date{1}         },
        {"data",  kData,  "=#2/29/2024#",          Date{45351}     },
        {"data",  kData,  "#2024-02-29 06:00:00#", Date{45351.25}  },
        {"data",  kData,  "'3/1/2024'",            Date{45352}     },
        {"nome",  kNome,  "\"a\"\"b\"",            "a\"b"s         },
        {"nome",  kNome,  "\"\"",                  ""s             },
        {"nome",  kNome,  "= \"x\" & 1+1",         "x2"s           },
        {"obs",   kObs,   "\"it's\"",              "it's"s         },
        {"idade", kIdade, "-7",                    whole(-7)       },
        {"idade", kIdade, "False",                 whole(0)        },
        {"idade", kIdade, "Null",                  {}              },
        {"valor", kValor, "-0.0001",               Currency{-1}    },
        {"valor", kValor, "'12.34'",               Currency{123400}},
        {"valor", kValor, "Yes",                   Currency{-10000}},
        {"ativo", kAtivo, "0",                     false           },
        {"ativo", kAtivo, "-1",                    true            },
        {"ativo", kAtivo, "On",                    true            },
        {"ativo", kAtivo, "=False",                false           },
        {"ativo", kAtivo, "No",                    false           },
        {"ativo", kAtivo, "Null",                  false           },
        {"ativo", kAtivo, "2",                     true            },
        {"peso",  kPeso,  "1e3",                   1000.0          },
        {"peso",  kPeso,  ".5",                    0.5             },
    };
    for (const auto& [column, place, text, expected] : cases) {
        keep({
            {.column = column, .defaultValue = text}
        });
        EXPECT_EQ(value(add({}), place), expected) << text;
    }
}

TEST_P(Rules, DefaultsOfTheClockAreThoseOfTheMoment) {
    for (const char* text : {"Now()", "=Now()", "=NOW( )", "Date()+30", "=Date()", "Time()"}) {
        keep({
            {.column = "data", .defaultValue = text}
        });
        const auto expected = [&] {
            const double now = Date::now().days;
            const std::string_view name = text;
            if (name.ends_with("+30"))
                return std::floor(now) + 30;
            return name == "=Date()"  ? std::floor(now)
                   : name == "Time()" ? now - std::floor(now)
                                      : now;
        };
        const double before = expected();
        const double given = std::get<Date>(value(add({}), kData)).days;
        const double after = expected();
        if (before > after)
            continue; // midnight has just passed
        EXPECT_GE(given, before) << text;
        EXPECT_LE(given, after) << text;
    }
}

TEST_P(Rules, DefaultsOfTheRarerTypes) {
    std::vector<ColumnSpec> columns{
        {"n",      ColumnType::longInteger},
        {"byte",   ColumnType::byte       },
        {"single", ColumnType::single     },
        {"guid",   ColumnType::guid       }
    };
    std::vector<FileRule> rules{
        {.column = "byte",   .defaultValue = "255"      },
        {.column = "single", .defaultValue = "-0.5"     },
        {.column = "guid",   .defaultValue = "GenGUID()"}
    };
    if (GetParam() == Version::jet4) { // the older format has no decimals
        columns.push_back({"decimal", ColumnType::numeric, 0, false, 10, 2});
        rules.push_back({.column = "decimal", .defaultValue = "-1.25"});
    }
    Table& rare = database_->createTable({"raros", columns, {}});
    setRules(*database_, "raros", rules);
    const Row row = *rare.read(rare.insert(std::vector<Assignment>{
        {0, whole(1)}
    }));
    EXPECT_EQ(row[1], whole(255));
    EXPECT_EQ(row[2], Value(-0.5));
    EXPECT_TRUE(std::holds_alternative<Guid>(row[3]));
    EXPECT_TRUE(GetParam() == Version::jet3 || std::get<Numeric>(row[4]).text() == "-1.25");
    setRules(*database_, "raros",
             {
                 {.column = "byte", .defaultValue = "256"}
    });
    EXPECT_THROW(rare.insert(std::vector<Assignment>{
                     {0, whole(2)}
    }),
                 Error);
}

TEST_P(Rules, ADefaultThatCannotBeUsedStopsOnlyRowsThatNeedIt) {
    for (const char* text : {"DLookup('x','y')", "SP", "[nome]", "99999", "'x'", "1/0"}) {
        keep({
            {.column = "idade", .defaultValue = text}
        });
        EXPECT_FALSE(table().readOnlyReason()) << text;
        const Error error = refusal([&] { add({}); });
        EXPECT_NE(std::string(error.what()).find("\"idade\""), std::string::npos) << error.what();
        if (text != "99999"s) { // that one is a number, if too large a one
            EXPECT_EQ(error.code(), Errc::rule) << text;
            EXPECT_NE(std::string(error.what()).find(text), std::string::npos) << error.what();
        }
        const RowId row = add({
            {kIdade, whole(1)}
        });
        change(row, {
                        {kIdade, whole(2)}
        });
        table().erase(row);
    }
}

TEST_P(Rules, AColumnsRuleIsKeptOnInsertAndUpdate) {
    keep({
        {.column = "idade", .rule = ">=0 And <150", .message = "A idade vai de 0 a 149 anos."},
        {.column = "nome",                 .rule = "Like '[a-z]*'"                       },
        {.column = "data",                 .rule = "<=Date() Or Is Null"}
    });
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
    for (const FileRule& rule : {
             FileRule{.column = "idade",             .rule = "DMax('x','y')>1"},
             FileRule{                               .rule = "[outro]>1"                            },
             FileRule{ .column = "nome",             .rule = "Left([nome],1)='A'"          },
             FileRule{                           .column = "idade", .rule = std::string(100,               '(')}
    }) {
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

TEST_P(Rules, PropertiesReadAsWritten) {
    const TextCodec codec(GetParam());
    const auto groups =
        parseProperties(propertyBytes(GetParam(),
                                      {
                                          {.column = "ação", .required = true, .rule = ">0"},
                                          {            }
    }),
                        codec, PageNo{9});
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0].column, "ação");
    ASSERT_NE(groups[0].find("REQUIRED"), nullptr);
    EXPECT_TRUE(groups[0].find("Required")->yes());
    EXPECT_EQ(groups[0].find("ValidationRule")->text(codec), ">0");
    EXPECT_EQ(groups[0].find("Caption"), nullptr);
    EXPECT_EQ(groups[1].column, "");
    EXPECT_TRUE(groups[1].properties.empty());
    EXPECT_TRUE(parseProperties({}, codec, PageNo{9}).empty());
}

TEST_P(Rules, DamagedPropertiesNeverDoMoreThanFail) {
    const TextCodec codec(GetParam());
    const Bytes sound = propertyBytes(
        GetParam(), {
                        {.column = "nome", .required = true, .defaultValue = "'x'", .rule = "<>''"},
                        {.rule = "[nome]>'a'",  .message = "não"                 }
    });
    const auto parses = [&](const Bytes& bytes) {
        try {
            (void)parseProperties(bytes, codec, PageNo{9});
            return true;
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::corrupt);
            return false;
        }
    };
    EXPECT_TRUE(parses(sound));
    std::size_t refused = 0;
    for (std::size_t size = 1; size < sound.size(); ++size)
        refused +=
            parses({sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(size)}) ? 0 : 1;
    EXPECT_GT(refused, sound.size() - 6) << "only at the borders of blocks";
    std::mt19937 random(3);
    for (int i = 0; i < 20'000; ++i) {
        Bytes bytes = sound;
        for (auto flips = 1 + random() % 3; flips > 0; --flips)
            bytes[random() % bytes.size()] = static_cast<std::byte>(random() & 0xFF);
        (void)parses(bytes);
    }
}

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
