#include "controls/typing/Formato.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();

struct Shown {
    std::int64_t tenThousandths;
    const char* text;
    const char* exactly;
};

TEST(Formato, ShowsAmountsWithPointsBetweenThousandsAndTwoDecimals) {
    const Shown cases[] = {
        {0,              "0,00",                    "0,00"                     },
        {5'000,          "0,50",                    "0,50"                     },
        {12'345'600,     "1.234,56",                "1.234,56"                 },
        {1'000'000,      "100,00",                  "100,00"                   },
        {9'999'900,      "999,99",                  "999,99"                   },
        {10'000'000'000, "1.000.000,00",            "1.000.000,00"             },
        {-12'345'600,    "-1.234,56",               "-1.234,56"                },
        {12'345'678,     "1.234,57",                "1.234,5678"               },
        {12'345'650,     "1.234,57",                "1.234,5650"               },
        {12'345'649,     "1.234,56",                "1.234,5649"               },
        {-12'345'650,    "-1.234,57",               "-1.234,5650"              },
        {-49,            "0,00",                    "-0,0049"                  },
        {9'999'950,      "1.000,00",                "999,9950"                 },
        {kHighest,       "922.337.203.685.477,58",  "922.337.203.685.477,5807" },
        {kLowest,        "-922.337.203.685.477,58", "-922.337.203.685.477,5808"},
    };
    for (const Shown& each : cases) {
        EXPECT_EQ(formatMoney({each.tenThousandths}), QString(each.text));
        EXPECT_EQ(formatMoneyExactly({each.tenThousandths}), QString(each.exactly));
    }
}

TEST(Formato, ReadsAmountsAsPeopleWriteThem) {
    const std::pair<const char*, std::int64_t> cases[] = {
        {"1234,56",               12'345'600    },
        {"1.234,56",              12'345'600    },
        {"R$ 1.234,56",           12'345'600    },
        {"r$1234,56",             12'345'600    },
        {"-R$ 5,00",              -50'000       },
        {"  7 ",                  70'000        },
        {"1234.56",               12'345'600    },
        {"1,234.56",              12'345'600    },
        {"1,234,567.8",           12'345'678'000},
        {"1.234",                 12'340'000    },
        {"1.234.567",             12'345'670'000},
        {"1.23",                  12'300        },
        {"12345.678",             123'456'780   },
        {",5",                    5'000         },
        {"5,",                    50'000        },
        {"0,0001",                1             },
        {"\u2212"
         "3",            -30'000       },
        {"922337203685477,5807",  kHighest      },
        {"-922337203685477,5808", kLowest       },
    };
    for (const auto& [text, amount] : cases) {
        const auto read = parseMoney(text);
        ASSERT_TRUE(read.has_value()) << text;
        EXPECT_EQ(read->amount.tenThousandths, amount) << text;
    }
    EXPECT_EQ(parseMoney("1234,500")->decimals, 3);
}

TEST(Formato, RefusesWhatIsNoAmount) {
    for (const char* text : {"", "-", ",", ".", "R$", "abc", "12a", "1,2,3", "12.34,56", "1.2.3,4",
                             "1,23456", "--1", "1-", "1,234,56", "922337203685477,5808",
                             "-922337203685477,5809", "9999999999999999999999"})
        EXPECT_FALSE(parseMoney(text).has_value()) << text;
}

TEST(Formato, ShowsDatesAsDayMonthYear) {
    EXPECT_EQ(formatDate(QDate(2026, 2, 1)), "01/02/2026");
    EXPECT_EQ(formatDate(QDate(100, 12, 31)), "31/12/0100");
    EXPECT_EQ(formatDate({}), "");
}

TEST(Formato, ReadsDatesAsPeopleWriteThem) {
    const QDate first(2026, 2, 1);
    for (const char* text : {"01/02/2026", "1/2/2026", "01-02-2026", "1.2.2026", "01022026",
                             "010226", "1/2/26", "2026-02-01", " 01/02/2026 "})
        EXPECT_EQ(parseDate(text), first) << text;
    for (const char* text : {"1/2", "0102", "01/02/"})
        EXPECT_EQ(parseDate(text, {YearRule::Kind::nearest, QDate(2026, 3, 1)}), first) << text;
    EXPECT_EQ(parseDate("01/02/49"), QDate(2049, 2, 1));
    EXPECT_EQ(parseDate("01/02/50"), QDate(1950, 2, 1));
    EXPECT_EQ(parseDate("29/02/2028"), QDate(2028, 2, 29));
    EXPECT_EQ(parseDate("01/01/0100"), QDate(100, 1, 1));
    EXPECT_EQ(parseDate("31/12/9999"), QDate(9999, 12, 31));
}

TEST(Formato, ADateWithoutAYearIsTheOneNearestToTheDay) {
    const struct {
        QDate day;
        const char* typed;
        QDate read;
    } cases[] = {
        {{2026, 11, 22}, "1502", {2027, 2, 15} },
        {{2026, 1, 5},   "2812", {2025, 12, 28}},
        {{2026, 5, 10},  "1005", {2026, 5, 10} },
        {{2026, 11, 22}, "2902", {2028, 2, 29} },
        {{2025, 6, 1},   "2902", {2024, 2, 29} },
    };
    for (const auto& [day, typed, read] : cases) {
        EXPECT_EQ(parseDate(typed, {YearRule::Kind::nearest, day}), read) << typed;
    }
    EXPECT_EQ(parseDate("3002"), std::nullopt) << "in no year";
    EXPECT_EQ(parseDate("0107", {YearRule::Kind::nearest, QDate(2023, 12, 31)}), QDate(2024, 7, 1))
        << "183 days either way: the later one";
}

TEST(Formato, ADateWithoutAYearIsTheFirstOneNotBeforeTheDay) {
    const auto from = [](const char* text, QDate day) {
        return parseDate(text, {YearRule::Kind::notBefore, day});
    };
    EXPECT_EQ(from("1502", {2026, 11, 22}), QDate(2027, 2, 15));
    EXPECT_EQ(from("2111", {2026, 11, 22}), QDate(2027, 11, 21));
    EXPECT_EQ(from("2211", {2026, 11, 22}), QDate(2026, 11, 22));
    EXPECT_EQ(from("2902", {2096, 3, 1}), QDate(2104, 2, 29));
    EXPECT_EQ(from("22112025", {2026, 11, 22}), QDate(2025, 11, 22))
        << "a year that is typed stays";
}

TEST(Formato, RefusesWhatIsNoDate) {
    for (const char* text : {"", "1", "31/02/2026", "29/02/2027", "00/01/2026", "01/13/2026",
                             "1/2/3/4", "01/01/0099", "abc", "1022026", "01/02/20261"})
        EXPECT_FALSE(parseDate(text).has_value()) << text;
}

TEST(Formato, AddsAmountsWithinTheirRange) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(sum(Amount{10'001}, Amount{-2}), Amount{9'999});
    EXPECT_EQ(sum(Amount{kMost - 1}, Amount{1}), Amount{kMost});
    EXPECT_EQ(sum(Amount{kLeast + 1}, Amount{-1}), Amount{kLeast});
    EXPECT_EQ(sum(Amount{kMost}, Amount{kLeast}), Amount{-1});
    EXPECT_EQ(sum(Amount{kMost}, Amount{1}), std::nullopt);
    EXPECT_EQ(sum(Amount{kLeast}, Amount{-1}), std::nullopt);
}

} // namespace
