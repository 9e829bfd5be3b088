// A rule of a file in the server's words, or in none.
#include "ado/migrate/RuleSql.h"

#include "ado/migrate/CopyText.h"

#include <gmock/gmock.h>

#include <cmath>

namespace {

using testing::HasSubstr;

std::string inSql(const char* rule) {
    std::vector<jet::Column> columns(2);
    columns[0].name = "a";
    columns[1].name = "b";
    const jet::Expression expression(rule, {"t", columns, 0},
                                     jet::Collation::general(jet::Version::jet4));
    return ado::ruleSql(expression, columns).value_or("none");
}

TEST(RuleSql, SaysWhatTheServerHasWordsFor) {
    const std::pair<const char*, const char*> rules[] = {
        {">0",                                R"(("a" > 0))"                                     },
        {"-1 Or -2.5",                        R"((((-1) = "a") or ((-2.5) = "a")))"              },
        {"In (1, 2)",                         R"(("a" in (1, 2)))"                               },
        {"Not Between 1 And [b]",             R"((not ("a" between 1 and "b")))"                 },
        {"Is Not Null",                       R"((not ("a" is null)))"                           },
        {"Not ([b] Is Null)",                 R"((not ("b" is null)))"                           },
        {"=-[b]",                             R"(("a" = (-"b")))"                                },
        {"<>Null",                            R"(("a" <> null))"                                 },
        {"True",                              R"((true = "a"))"                                  },
        {">=#5/31/2001#",                     R"(("a" >= timestamp '2001-05-31 00:00:00'))"      },
        {"Like \"A?c*\"",                     R"(("a" ~% 'A_c%'))"                               },
        {"Mid([b], 2)=Mid([b], 1, 3)",        R"((jet_mid("b", 2) = jet_mid("b", 1, 3)))"        },
        {"IIf([a]>1, IIf([b]>1, 1, 2), 3)=3",
         R"(((case when ("a" > 1) then (case when ("b" > 1) then 1 else 2 end) else 3 end) = 3))"},
    };
    for (const auto& [rule, sql] : rules)
        EXPECT_EQ(inSql(rule), sql) << rule;
}

// Half of a pattern would let in what the file refuses.
TEST(RuleSql, IsNoneForWhatTheServerCantSay) {
    for (const char* const rule : {"Like \"A#\"", "Like \"10%\"", "Like [b]", "Like \"A\" & \"*\"",
                                   "Like IIf([b]=1, \"A*\", \"*\")", "[b]=\"*\" And [a] Like [b]",
                                   "Like 5", "Format([b], \"@\")=\"x\"", "Nz([b])=1"})
        EXPECT_EQ(inSql(rule), "none") << rule;
}

// Of values that a file has, and that a server refuses or would take for others.
TEST(CopyText, SaysWhatTheServerCantHold) {
    const jet::ColumnSpec text{"c", jet::ColumnType::text, 3};
    const jet::ColumnSpec exact{"c", jet::ColumnType::numeric, 0, false, 3, 2};
    const auto why = [](const jet::ColumnSpec& column, const jet::Value& value) {
        return ado::refusal(column, value).value_or("");
    };
    EXPECT_EQ(why(text, std::string("açã")), "");
    EXPECT_THAT(why(text, std::string("ação")), HasSubstr("mais caracteres"));
    for (const char* half : {"\xED\xA0\x80", "\xED\xB0\x80", "\xFF"})
        EXPECT_THAT(why(text, std::string(half)), HasSubstr("metade de um caractere"));
    EXPECT_THAT(why({"c", jet::ColumnType::date}, jet::Date{4e6}), HasSubstr("não existe"));
    const auto number = [](std::uint32_t digits, std::uint8_t scale) {
        return jet::Numeric{
            true, {0, 0, 0, digits},
             scale
        };
    };
    EXPECT_EQ(why(exact, number(999, 2)), "");
    EXPECT_EQ(why(exact, number(5, 2)), "");
    EXPECT_THAT(why(exact, number(1000, 2)), HasSubstr("mais algarismos"));
    EXPECT_EQ(why({"c", jet::ColumnType::numeric, 0, false, 3, 0}, number(999, 0)), "");

    std::string line;
    ado::appendCopyLine(line, {std::nan(""), {}, std::string("a\tb")});
    EXPECT_EQ(line, "NaN\t\\N\ta\\tb\n");
    EXPECT_TRUE(ado::losesFraction(jet::Date{36892.000001}));
    EXPECT_FALSE(ado::losesFraction(jet::Date{36892.5}));
}

} // namespace
