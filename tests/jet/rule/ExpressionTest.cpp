// Rules as the file keeps them, understood and evaluated.
#include "jet/rule/Expression.h"

#include "jet/Error.h"
#include "jet/rule/Operators.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

using namespace jet;
using namespace std::string_literals;

namespace {

const Collation& order() { return Collation::general(Version::jet4); }

Column named(const char* name) {
    Column column;
    column.name = name;
    return column;
}

/// Columns "a", "b", "texto", "dia do mês"; the rule's own is `own`.
const std::vector<Column>& columns() {
    static const std::vector<Column> all{named("a"), named("b"), named("texto"),
                                         named("dia do mês")};
    return all;
}

Value evaluated(const std::string& text, const Row& row = {}, std::optional<std::size_t> own = {}) {
    return Expression(text, {"tabela", columns(), own}, order()).evaluate([&](std::size_t column) {
        return column < row.size() ? row[column] : Value{};
    });
}

/// What a condition says: "sim", "não", or "nulo".
std::string said(const std::string& text, const Row& row = {},
                 std::optional<std::size_t> own = {}) {
    const auto truth = truthOf(evaluated(text, row, own));
    return !truth ? "nulo" : *truth ? "sim" : "não";
}

bool isRefused(const std::string& text, std::optional<std::size_t> own = {}) {
    try {
        const Expression expression(text, {"tabela", columns(), own}, order());
        return false;
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::syntax) << text;
        return true;
    }
}

Value whole(std::int64_t number) { return number; }

TEST(Expression, ComparesNumbersTextsAndDates) {
    for (const char* yes : {"1=1",
                            "1<>2",
                            "1<2",
                            "2>1",
                            "2>=2",
                            "2<=2",
                            "1.5>1",
                            "1e2=100",
                            ".5<1",
                            "-1<0",
                            "'a'='A'",
                            "\"abc\"<\"abd\"",
                            "'a''b'=\"a'b\"",
                            "'ação'='AÇÃO'",
                            "'acao'<>'ação'",
                            "#1/31/2026#>#12/31/2025#",
                            "#2026-01-31 08:30:00#=#1/31/2026 8:30 AM#",
                            "#1/31/2026 8:30 PM#=#1/31/2026 20:30#",
                            "#12/31/1899#=1",
                            "True=-1",
                            "Yes=True",
                            "No=False",
                            "On And Not Off",
                            "'10'=10",
                            "10='10.0'",
                            "'1/31/2026'=#1/31/2026#"})
        EXPECT_EQ(said(yes), "sim") << yes;
    for (const char* no : {"1=2", "1<>1", "'a'<'A'", "#1/1/2026#>#1/1/2026#", "True=1", "False"})
        EXPECT_EQ(said(no), "não") << no;
    for (const char* null : {"Null=Null", "1=Null", "Null<>1", "Null", "Null+1>0"})
        EXPECT_EQ(said(null), "nulo") << null;
}

TEST(Expression, ConditionsHaveThreeOutcomes) {
    const struct {
        const char* text;
        const char* outcome;
    } cases[] = {
        {"True And True",         "sim" },
        {"True And False",        "não"},
        {"Null And False",        "não"},
        {"Null And True",         "nulo"},
        {"Null Or True",          "sim" },
        {"Null Or False",         "nulo"},
        {"False Or False",        "não"},
        {"Not Null",              "nulo"},
        {"Not False",             "sim" },
        {"Not Not True",          "sim" },
        {"True Xor True",         "não"},
        {"True Xor False",        "sim" },
        {"True Xor Null",         "nulo"},
        {"Null Is Null",          "sim" },
        {"1 Is Not Null",         "sim" },
        {"1 Is Null",             "não"},
        {"IsNull(Null)",          "sim" },
        {"1 In (3,2,1)",          "sim" },
        {"1 Not In (3,2)",        "sim" },
        {"'b' In ('A','B')",      "sim" },
        {"1 In (2,Null)",         "nulo"},
        {"1 In (1,Null)",         "sim" },
        {"Null In (1)",           "nulo"},
        {"5 Between 1 And 5",     "sim" },
        {"5 Between 9 And 1",     "sim" },
        {"5 Not Between 1 And 4", "sim" },
        {"5 Between 6 And 9",     "não"},
        {"Null Between 1 And 4",  "nulo"},
        {"5 Between Null And 4",  "nulo"},
        {"'Ana' Like 'a*'",       "sim" },
        {"'Ana' Not Like 'b*'",   "sim" },
        {"Null Like '*'",         "nulo"},
        {"123 Like '1#3'",        "sim" },
        {"123 Like 123",          "sim" },
        {"'a' Like Null",         "nulo"},
        {"1+Null>0",              "nulo"},
        {"1/Null>0",              "nulo"},
        {"Null/1>0",              "nulo"},
    };
    for (const auto& [text, outcome] : cases)
        EXPECT_EQ(said(text), outcome) << text;
}

TEST(Expression, OperatorsBindAsTheyShould) {
    // clang-format off
    const struct {
        const char* text;
        const char* outcome;
    } cases[] = {
        {"True Or False And False",          "sim"},
        {"(True Or False) And False",        "não"},
        {"Not False And False",              "não"},
        {"Not (False And False)",            "sim"},
        {"True Xor True Or True",            "não"},
        {"Not 1=2",                          "sim"},
        {"1+2*3=7",                          "sim"},
        {"(1+2)*3=9",                        "sim"},
        {"10-4-3=3",                         "sim"},
        {"12/3/2=2",                         "sim"},
        {"-2*-3=6",                          "sim"},
        {"1 & 2 = '12'",                     "sim"},
        {"1+1 & 'x' = '2x'",                 "sim"},
        {"'a' + 'b' = 'ab'",                 "sim"},
        {"'a' & Null = 'a'",                 "sim"},
        {"'1' + 1 = 2",                      "sim"},
        {"5 Between 2+2 And 3*2 And 1=1",    "sim"},
        {"Len('ação')=4",                    "sim"},
        {"Len('')=0",                        "sim"},
        {"#1/1/2026#+1=#1/2/2026#",          "sim"},
        {"#1/2/2026#-#1/1/2026#=1",          "sim"},
        {"Date()<=Now() And Date()+1>Now()", "sim"},
        {"Time()<1",                         "sim"},
        {"GenGUID()<>GenGUID()",             "sim"},
    };
    // clang-format on
    for (const auto& [text, outcome] : cases)
        EXPECT_EQ(said(text), outcome) << text;
}

TEST(Expression, AmountsAreExact) {
    const Row row{Currency{1000}, Currency{9'223'372'036'854'775'807}};
    EXPECT_EQ(said("a=0.1", row), "sim"); // as written, though no binary fraction is a tenth
    EXPECT_EQ(said("a*3=0.3", {Currency{1000}}), "sim");
    EXPECT_EQ(std::get<Currency>(evaluated("a+2", row)), Currency{21000});
    EXPECT_EQ(std::get<Currency>(evaluated("3*a", row)), Currency{3000});
    EXPECT_EQ(said("b>922337203685477", row), "sim");
    EXPECT_EQ(said("b<922337203685478", row), "sim");
    EXPECT_EQ(said("b-1<b", row), "sim");
    EXPECT_EQ(std::get<Currency>(evaluated("-a", row)), Currency{-1000});
    EXPECT_THROW((void)evaluated("b+1", row), Error);
    EXPECT_EQ(std::get<std::int64_t>(evaluated("a+b", {whole(2), whole(3)})), 5);
    EXPECT_TRUE(std::holds_alternative<double>(
        evaluated("a+a", {whole(std::numeric_limits<std::int64_t>::max())})));
}

TEST(Expression, ColumnsAreNamedWithOrWithoutBrackets) {
    const Row row{whole(5), whole(7), "x"s, whole(31)};
    for (const char* yes : {"a<b", "[A]<[B]", "[tabela].[a]=5", "tabela.b=7", "[dia do mês]=31",
                            "[DIA DO MÊS]>30", "texto='X'"})
        EXPECT_EQ(said(yes, row), "sim") << yes;
    for (const char* unknown : {"c=1", "[outra].[a]=1", "tabela.=1", "dia do mês=31"})
        EXPECT_TRUE(isRefused(unknown)) << unknown;
    EXPECT_TRUE(Expression("a>1", {"tabela", columns(), {}}, order()).reads(0));
    EXPECT_FALSE(Expression("a>1", {"tabela", columns(), {}}, order()).reads(1));
}

TEST(Expression, AColumnsRuleMayBeginWithItsOperator) {
    // clang-format off
    const struct {
        const char* text;
        Value value;
        const char* outcome;
    } cases[] = {
        {">0",                    whole(1),  "sim"},
        {">0",                    whole(0),  "não"},
        {">0",                    {},        "nulo"},
        {">=0 And <100",          whole(99), "sim"},
        {">=0 And <100",          whole(-1), "não"},
        {"<0 Or >100 Or Is Null", {},        "sim"},
        {"Is Not Null",           {},        "não"},
        {"Not Null",              {},        "não"},
        {"Not Null",              whole(0),  "sim"},
        {"Null",                  {},        "sim"},
        {"In (1,3)",              whole(3),  "sim"},
        {"Not In (1,3)",          whole(3),  "não"},
        {"Between 1 And 3",       whole(2),  "sim"},
        {"Not Between 1 And 3",   whole(2),  "não"},
        {"Like 'a?c'",            "ABC"s,    "sim"},
        {"Not Like 'a?c'",        "ABC"s,    "não"},
        {"'M' Or 'F'",            "f"s,      "sim"},
        {"'M' Or 'F'",            "x"s,      "não"},
        {"('M' Or 'F')",          "f"s,      "sim"},
        {"='M' Or ='F'",          "f"s,      "sim"},
        {"= ('M')",               "m"s,      "sim"},
        {"5",                     whole(5),  "sim"},
        {"-5",                    whole(5),  "não"},
        {"True",                  true,      "sim"},
        {"True",                  false,     "não"},
        {"Not 5",                 whole(5),  "não"},
        {"[a]>3 And a<9",         whole(5),  "sim"},
        {"<=Date()",              Date{1.},  "sim"},
        {"Len([a])=4",            "ação"s,   "sim"},
    };
    // clang-format on
    for (const auto& [text, value, outcome] : cases)
        EXPECT_EQ(said(text, {value}, 0), outcome) << text;
    EXPECT_TRUE(isRefused(">0")) << "a table's rule has no column of its own";
}

TEST(Expression, WhatIsNoExpressionIsRefused) {
    for (const char* wrong : {"",
                              " ",
                              "1=",
                              "=1",
                              "(1",
                              "1)",
                              "()",
                              "1 1",
                              "And 1",
                              "1 And",
                              "Not",
                              "1 In 2",
                              "1 In ()",
                              "1 In (2",
                              "1 In (2,)",
                              "1 Between 2",
                              "1 Between 2 And",
                              "1 Between 2 Or 3",
                              "1 Is",
                              "1 Is Not",
                              "1 Is 2",
                              "Null Is True",
                              "'a",
                              "\"a",
                              "[a",
                              "#13/40/2026#",
                              "#",
                              "1 Like",
                              "'a' Like '[a'",
                              "Foo(1)",
                              "Date(",
                              "Date(1)",
                              "Len()",
                              "Len(1,2)",
                              "IIf(1,2)",
                              "IIf(1,2,3,4)",
                              "Left('a')",
                              "Mid('a',1,2,3)",
                              "Len$('a')",
                              "StrReverse('a')",
                              "Date$()",
                              "1..2",
                              "1 ! 2",
                              "1 -- 2",
                              "a b",
                              "[]=1",
                              "Forms.x=1",
                              "1;2",
                              "1e400",
                              "tabela.",
                              "\xFF=1"})
        EXPECT_TRUE(isRefused(wrong)) << wrong;
}

TEST(Expression, ValuesThatDontGoTogetherAreAnError) {
    for (const char* wrong : {"'x'>1", "1/0", "1+'x'", "#1/1/2026#='x'", "True & 'x'", "'x' And 1",
                              "#1/1/9999#+999999", "Len(True)=1", "'nan'=1", "'inf'>1"}) {
        try {
            (void)evaluated(wrong);
            ADD_FAILURE() << wrong;
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::outOfRange) << wrong;
        }
    }
    EXPECT_THROW((void)evaluated("a=1", {Bytes{std::byte{1}}}), Error);
    EXPECT_EQ(said("a Is Null", {Bytes{std::byte{1}}}), "não");
}

TEST(Expression, HostileTextsEndSoon) {
    const auto repeated = [](const std::string& part, std::size_t count) {
        std::string text;
        for (std::size_t i = 0; i < count; ++i)
            text += part;
        return text;
    };
    EXPECT_TRUE(isRefused(repeated("(", 100'000)));
    EXPECT_TRUE(isRefused(repeated("(", 30'000) + "1" + repeated(")", 30'000)));
    EXPECT_TRUE(isRefused(repeated("(", 500) + "1" + repeated(")", 500)));
    EXPECT_TRUE(isRefused(repeated("Len(", 10'000)));
    EXPECT_TRUE(isRefused(repeated("1 In (", 10'000)));
    EXPECT_FALSE(isRefused(repeated("(", 100) + "1" + repeated(")", 100)));
    EXPECT_EQ(said(repeated("Not ", 15'000) + "True"), "sim");
    EXPECT_EQ(said(repeated("- ", 15'001) + "1<0"), "sim");
    EXPECT_EQ(said("0 In (" + repeated("1,", 30'000) + "0)"), "sim");
    EXPECT_EQ(said(repeated("True And ", 6'000) + "False"), "não");
    EXPECT_EQ(std::get<std::int64_t>(evaluated(repeated("1+", 30'000) + "1")), 30'001);
    EXPECT_TRUE(isRefused("0 In (" + repeated("1,", 100'000) + "0)")) << "longer than any rule";
}

// ---- against a plain reference ----------------------------------------------------------------

/// A random condition over the columns a and b, as text and as what it means.
struct Condition {
    std::string text;
    std::function<std::optional<bool>(const Row&)> meaning;
};

std::optional<std::int64_t> integer(const Value& value) {
    const auto* number = std::get_if<std::int64_t>(&value);
    return number ? std::optional(*number) : std::nullopt;
}

class RandomConditions {
public:
    Condition condition(int depth) {
        if (depth == 0 || random_() % 4 == 0)
            return comparison();
        if (random_() % 4 == 0) {
            const Condition inner = condition(depth - 1);
            return {"Not (" + inner.text + ")", [inner](const Row& row) -> std::optional<bool> {
                        const auto truth = inner.meaning(row);
                        return truth ? std::optional(!*truth) : std::nullopt;
                    }};
        }
        const Condition a = condition(depth - 1);
        const Condition b = condition(depth - 1);
        const bool all = random_() % 2 == 0; // what decides an And is a false, an Or a true
        return {"(" + a.text + ")" + (all ? " And " : " Or ") + "(" + b.text + ")",
                [a, b, all](const Row& row) -> std::optional<bool> {
                    const auto left = a.meaning(row);
                    const auto right = b.meaning(row);
                    if ((left && *left != all) || (right && *right != all))
                        return !all;
                    return left && right ? std::optional(all) : std::nullopt;
                }};
    }

private:
    Condition comparison() {
        const std::size_t column = random_() % 2;
        const auto bound = static_cast<std::int64_t>(random_() % 5);
        const std::string name = column == 0 ? "a" : "[B]";
        const auto compared = [&](const std::string& text, auto&& holds) {
            return Condition{text, [column, holds](const Row& row) -> std::optional<bool> {
                                 const auto number = integer(row[column]);
                                 return number ? std::optional<bool>(holds(*number)) : std::nullopt;
                             }};
        };
        const std::string number = std::to_string(bound);
        switch (random_() % 6) {
        case 0:
            return compared(name + "=" + number, [bound](auto n) { return n == bound; });
        case 1:
            return compared(name + " < " + number, [bound](auto n) { return n < bound; });
        case 2:
            return compared(name + ">=" + number + "-1",
                            [bound](auto n) { return n >= bound - 1; });
        case 3:
            return compared(name + " In (1," + number + ")",
                            [bound](auto n) { return n == 1 || n == bound; });
        case 4:
            return compared(name + " Not Between 1 And " + number, [bound](auto n) {
                return n < std::min<std::int64_t>(1, bound) || n > std::max<std::int64_t>(1, bound);
            });
        default:
            return {name + " Is Null", [column](const Row& row) -> std::optional<bool> {
                        return isNull(row[column]);
                    }};
        }
    }

    std::mt19937 random_{11};
};

TEST(Expression, AgreesWithAPlainReference) {
    RandomConditions source;
    const Value values[] = {{}, whole(0), whole(1), whole(2), whole(3), whole(4)};
    for (int i = 0; i < 1'000; ++i) {
        const Condition condition = source.condition(4);
        const Expression expression(condition.text, {"tabela", columns(), {}}, order());
        for (const Value& a : values)
            for (const Value& b : values) {
                const Row row{a, b};
                ASSERT_EQ(truthOf(expression.evaluate([&](std::size_t c) { return row[c]; })),
                          condition.meaning(row))
                    << condition.text;
            }
    }
}

} // namespace
