// The words and signs that statements and rules consist of.
#include "jet/Tokens.h"

#include "jet/Error.h"
#include "jet/Types.h"

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
    for (const char* wrong :
         {"",          "31/12/2024", "02/30/2024",     "1/2",        "1/2/3/4",
          "a/b/c",     "1/2/2024 x", "1/2/2024 24:00", "12:60",      "1/2/20244",
          "-1/2/2024", "1//2024",    "00/01/2024",     "01/00/2024", "1/2/2024  06:00 x",
          ":",         "13:00 PM",   "0:00 AM",        "6:00 XM",    "PM"})
        try {
            (void)parseDateLiteral(wrong);
            ADD_FAILURE() << wrong;
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::syntax) << wrong;
        }
}

} // namespace
