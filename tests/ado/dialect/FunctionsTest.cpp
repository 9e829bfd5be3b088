// What statements can call, function by function.
#include "ado/Shop.h"
#include "support/Versions.h"

namespace {

using jet::Currency;
using jet::Errc;
using namespace std::string_literals;
using Strings = std::vector<std::string>;

class SqlFunctionsTest : public Shop {
protected:
    SqlFunctionsTest() {
        add("bancos", {
                          {"cod_banco", std::int64_t{-7}},
                          {"nome",      "  ação  "s   }
        });
        add("cheques", {
                           {"valor", Currency{-75'000}},
                           {"data",  jet::Date{-1.25} }
        });
    }
    /// Of the only bank: its name is "  ação  ", its number -7.
    std::string of(const std::string& expression) {
        return column("select " + expression + " as r from bancos", "r").at(0);
    }
    /// Of the only cheque: -7.5 reais, at six on the day before the first, no number.
    std::string ofCheque(const std::string& expression) {
        return column("select " + expression + " as r from cheques", "r").at(0);
    }
};
INSTANTIATE_TEST_SUITE_P(, SqlFunctionsTest, everywhere(), keptName);

TEST_P(SqlFunctionsTest, WorkOnTexts) {
    if (onServer())
        GTEST_SKIP() << kTyped;
    const struct {
        const char* expression;
        const char* value;
    } cases[] = {
        {"mid(nome,3,2)",            "aç"       },
        {"mid(nome,3)",              "ação  "  },
        {"mid(nome,99,2)",           ""          },
        {"left(nome,4)",             "  aç"     },
        {"left(nome,0)",             ""          },
        {"right(nome,4)",            "ão  "     },
        {"right(nome,99)",           "  ação  "},
        {"len(nome)",                "8"         },
        {"len(cod_banco)",           "2"         },
        {"instr(nome,'ão')",        "5"         },
        {"instr(nome,'x')",          "0"         },
        {"instr(nome,'')",           "1"         },
        {"ucase(nome)",              "  AÇÃO  "},
        {"lcase('ÉA')",             "éa"       },
        {"trim(nome)",               "ação"    },
        {"ltrim(nome)",              "ação  "  },
        {"rtrim(nome)",              "  ação"  },
        {"trim(nome) & cod_banco",   "ação-7"  },
        {"iif(len(nome)>3,'s','n')", "s"         },
        {"abs(cod_banco)",           "7"         },
        {"codigo & (cod_banco/2.0)", "1-3.5"     },
        {"10.0 & ''",                "10"        },
    };
    for (const auto& [expression, value] : cases)
        EXPECT_EQ(of(expression), value) << expression;
}

TEST_P(SqlFunctionsTest, JoinTextsAfterAllArithmeticAndBeforeComparisons) {
    if (onServer())
        GTEST_SKIP() << kTyped;
    const std::pair<const char*, const char*> cases[] = {
        {"'a' & 1+1",                              "a2"   },
        {"1+1 & 'a'",                              "2a"   },
        {"1 & 2+3 & 4*5",                          "1520" },
        {"9-2 & 7 mod 4 & 10/4",                   "732.5"},
        {"-cod_banco & -1",                        "7-1"  },
        {"bancos.codigo+1 & bancos.[codigo]*3",    "23"   },
        {"null & 1+1 & null",                      "2"    },
        {"1 & (2 & 3+4) & (5-4)*2",                "1272" },
        {"17 mod (2+3)",                           "2"    },
        {"2*(1+1 & 1)",                            "42"   },
        {"len(10+5 & 'x') & abs(cod_banco)+1",     "38"   },
        {"iif('a' & 1+1='a2','s','n') & 1+1",      "s2"   },
        {"iif('A2'='a' & 1+1,'s','n')",            "s"    },
        {"iif(1+1 & 'a' like '2' & '_','s','n')",  "s"    },
        {"iif('a' & 1+1 in ('a1','a' & 3-1),1,0)", "1"    },
        {"iif(not 1-1 & '' = '0','s','n')",        "n"    },
    };
    for (const auto& [expression, value] : cases) {
        EXPECT_EQ(of(expression), value) << expression;
        EXPECT_EQ(column(std::string("select distinct ") + expression + " r from bancos", "r"),
                  Strings{value})
            << expression;
    }
    EXPECT_EQ(
        column("select nome from bancos where 'c' & cod_banco-1='C-8' order by 'c' & codigo+1",
               "nome"),
        Strings{"  ação  "});
}

TEST_P(SqlFunctionsTest, OfNullAreNull) {
    if (onServer())
        GTEST_SKIP() << kTyped;
    for (const char* expression :
         {"mid(numero,1,2)",     "mid(numero,1)",   "mid('abc',cliente)", "left(numero,1)",
          "left('abc',cliente)", "right(numero,1)", "len(numero)",        "instr(numero,'a')",
          "instr('a',numero)",   "ucase(numero)",   "lcase(numero)",      "trim(numero)",
          "ltrim(numero)",       "rtrim(numero)",   "int(cliente)",       "fix(cliente)",
          "year(bompara)",       "month(bompara)",  "day(bompara)",       "numero & cliente",
          "nz(numero,cliente)",  "sum(cliente)",    "avg(cliente)",       "numero like '%'"}) {
        ado::Recordset rows;
        rows.Open("select "s + expression + " as r from cheques", connection);
        EXPECT_TRUE(rows["r"].isNull()) << expression;
    }
}

TEST_P(SqlFunctionsTest, TakeNullForNothing) {
    if (onServer())
        GTEST_SKIP() << kTyped;
    const std::pair<const char*, const char*> cases[] = {
        {"nz(numero,'sem')",   "sem"},
        {"nz('com','sem')",    "com"},
        {"isnull(numero)",     "-1" },
        {"isnull(lancamento)", "0"  },
        {"'a' & numero",       "a"  },
        {"numero & 'a'",       "a"  },
    };
    for (const auto& [expression, value] : cases)
        EXPECT_EQ(ofCheque(expression), value) << expression;
}

TEST_P(SqlFunctionsTest, WorkOnNumbersAndDates) {
    if (onServer())
        GTEST_SKIP() << kTyped;
    const std::pair<const char*, const char*> cases[] = {
        {"int(valor)",        "-8"  },
        {"fix(valor)",        "-7"  },
        {"int(lancamento)",   "1"   },
        {"fix(lancamento)",   "1"   },
        {"int('7.9')",        "7"   },
        {"year(data)",        "1899"},
        {"month(data)",       "12"  },
        {"day(data)",         "29"  },
        {"date()-int(now())", "0"   },
        {"now()>=date()",     "1"   },
        {"now()<date()+1",    "1"   },
    };
    for (const auto& [expression, value] : cases)
        EXPECT_EQ(ofCheque(expression), value) << expression;
}

TEST_P(SqlFunctionsTest, RefuseLengthsAndPlacesThatCantBe) {
    for (const char* expression :
         {"left(nome,-1)", "right(nome,-1)", "mid(nome,0)", "mid(nome,-1,2)", "mid(nome,1,-1)"})
        EXPECT_EQ(errorOf([&] { of(expression); }), Errc::syntax) << expression;
}

TEST_P(SqlFunctionsTest, SumWholesAndAmountsExactly) {
    add("cheques", {
                       {"valor",   Currency{1}    },
                       {"cliente", std::int64_t{4}}
    });
    add("cheques", {
                       {"valor",   Currency{2}     },
                       {"cliente", std::int64_t{-1}}
    });
    ado::Recordset rows;
    rows.Open("select sum(valor) as v, avg(valor) as m, sum(cliente) as c, avg(cliente) as a, "
              "sum(lancamento) as l from cheques",
              connection);
    EXPECT_EQ(rows["v"].currency(), Currency{-74'997});
    EXPECT_EQ(rows["m"].number(), -7.4997 / 3);
    EXPECT_EQ(rows["c"].value(), jet::Value(std::int64_t{3})) << "a whole number stays one";
    EXPECT_EQ(rows["a"].number(), 1.5) << "nulls don't count";
    EXPECT_EQ(rows["l"].value(), jet::Value(std::int64_t{6}));
    rows.Close();
    rows.Open("select sum(valor) as v, avg(valor) as m from cheques where valor>5", connection);
    EXPECT_TRUE(rows["v"].isNull());
    EXPECT_TRUE(rows["m"].isNull());
}

} // namespace
