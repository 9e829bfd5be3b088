// The words and signs that statements and rules consist of.
#include "jet/Tokens.h"

#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/Types.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace jet;

namespace {

using Strings = std::vector<std::string>;

double day(int year, int month, int dayOfMonth) { return Date::of({year, month, dayOfMonth}).days; }

TEST(Tokens, AWordMayFollowATextOrANumberAtOnce) {
    const auto tokens = tokenize("'jo'order by NOME where a=5and b=1e3x");
    Strings texts;
    for (const auto& token : tokens)
        texts.push_back(token.text);
    EXPECT_EQ(texts, (Strings{"jo", "order", "by", "NOME", "where", "a", "=", "5", "and", "b", "=",
                              "1e3", "x"}));
}

Strings textsOf(std::string_view statement) {
    Strings texts;
    for (const auto& token : tokenize(statement))
        texts.push_back(token.text);
    return texts;
}

TEST(Tokens, EndWhereTheyCantGoOn) {
    const struct {
        const char* statement;
        Strings tokens;
    } cases[] = {
        {"a\tb\r\nc",     {"a", "b", "c"}         },
        {"_a_1Z",         {"_a_1Z"}               },
        {"1.5E+3-2e-1",   {"1.5E+3", "-", "2e-1"} },
        {"1e+x",          {"1", "e", "+", "x"}    },
        {".5.",           {".5", "."}             },
        {"a.5",           {"a", ".5"}             },
        {"ça<>'d''e'",   {"ça", "<>", "d'e"}    },
        {"Left$(a)",      {"Left$", "(", "a", ")"}},
        {"[dia do mês]", {"dia do mês"}         },
    };
    for (const auto& [statement, tokens] : cases)
        EXPECT_EQ(textsOf(statement), tokens) << statement;
}

/// What is told of a statement that isn't accepted.
std::string refusalOf(std::string_view statement) {
    try {
        (void)tokenize(statement);
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::syntax);
        return error.what();
    }
    ADD_FAILURE() << "accepted: " << statement;
    return {};
}

TEST(Tokens, WhatIsNoneIsRefusedAndShown) {
    using namespace std::string_literals;
    using testing::HasSubstr;
    EXPECT_THAT(refusalOf("a -- b"), HasSubstr("comentários"));
    EXPECT_THAT(refusalOf("a /* b"), HasSubstr("comentários"));
    EXPECT_THAT(refusalOf("a{b"), HasSubstr("o sinal { "));
    EXPECT_THAT(refusalOf("a@b"), HasSubstr("o sinal @ "));
    EXPECT_THAT(refusalOf("a ? b"), HasSubstr("o sinal ? "));
    EXPECT_THAT(refusalOf("a \x01 b"), HasSubstr("o sinal ? "));
    EXPECT_THAT(refusalOf("a\0b"s), HasSubstr("não são texto"));
    EXPECT_THAT(refusalOf("a\xFF"), HasSubstr("não são texto"));
    EXPECT_THAT(refusalOf("[]"), HasSubstr("falta o que deveria estar"));
    EXPECT_EQ(textsOf(std::string(64'000, 'a')).size(), 1U) << "as long as may be";
    EXPECT_THAT(refusalOf(std::string(64'001, 'a')), HasSubstr("mais de 64000 caracteres"));
    // Of a long one its beginning, cut between two characters.
    for (const std::size_t blanks : {0U, 1U}) {
        std::string text = "'" + std::string(blanks, ' ');
        for (int i = 0; i < 200; ++i)
            text += "ç";
        const std::string told = refusalOf(text);
        EXPECT_THAT(told, HasSubstr("ç…"));
        EXPECT_THAT(told, Not(HasSubstr("\xC3…")));
        EXPECT_LT(told.size(), 200U);
    }
}

TEST(Names, AreTheSameInCapitalsAndWithBlanksBehind) {
    EXPECT_EQ(foldedName("AÇÃO  "), foldedName("ação"));
    EXPECT_EQ(foldedName(" a"), " a");
    for (const char* same : {"×", "÷", "a\xC3", "\xC3(", "ÿ"}) // what is no capital, or no text
        EXPECT_EQ(foldedName(same), same);
}

TEST(Tokens, DatesHaveTheMonthFirst) {
    EXPECT_EQ(parseDateLiteral("12/31/2024"), day(2024, 12, 31));
    EXPECT_EQ(parseDateLiteral(" 1/2/2024 "), day(2024, 1, 2));
    EXPECT_EQ(parseDateLiteral("2024-01-02"), day(2024, 1, 2));
    EXPECT_EQ(parseDateLiteral("01/02/29"), day(2029, 1, 2));
    EXPECT_EQ(parseDateLiteral("01/02/30"), day(1930, 1, 2));
    EXPECT_EQ(parseDateLiteral("01/02/2024 06:00"), day(2024, 1, 2) + 0.25);
    EXPECT_EQ(parseDateLiteral("06:00:00"), 0.25);
    EXPECT_EQ(parseDateLiteral("1/2/2024 6:00:00 AM"), day(2024, 1, 2) + 0.25);
    EXPECT_EQ(parseDateLiteral("6:00 pm"), 0.75);
    EXPECT_EQ(parseDateLiteral("12:00 AM"), 0);
    EXPECT_EQ(parseDateLiteral("12:00 PM"), 0.5);
    EXPECT_EQ(parseDateLiteral("12/29/1899 12:00"), -1.5);
    for (const char* wrong : {"",           "31/12/2024",     "02/30/2024",
                              "1/2",        "1/2/3/4",        "a/b/c",
                              "1/2/2024 x", "1/2/2024 24:00", "12:60",
                              "1/2/20244",  "-1/2/2024",      "1//2024",
                              "00/01/2024", "01/00/2024",     "1/2/2024  06:00 x",
                              "12:30:60",   "1:2:3:4",        "12",
                              "1/-2/2024",  "12345:00",       ":",
                              "13:00 PM",   "0:00 AM",        "6:00 XM",
                              "10:-5",      "1/2/2024 10",    "PM"})
        try {
            (void)parseDateLiteral(wrong);
            ADD_FAILURE() << wrong;
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::syntax) << wrong;
        }
}

} // namespace
