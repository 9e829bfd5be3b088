#include "collections/Juros.h"

#include "jet/Error.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

/// In ten-thousandths.
Amount amount(std::int64_t value) { return {value}; }
Amount reais(std::int64_t value) { return {value * 10'000}; }

jet::Date date(int day, int month, int hour = 0) {
    return jet::Date::of({.year = 2026, .month = month, .day = day, .hour = hour});
}

/// The interest at a rate in ten-thousandths of a percent.
std::int64_t interest(Amount value, std::int64_t rate, float days) {
    return Juros::juros(value, Juros::fator(amount(rate), days)).tenThousandths;
}

TEST(Interest, TheDaysAreThoseBetweenTheDates) {
    EXPECT_EQ(Juros::dias(date(1, 3), date(31, 3)), 30);
    EXPECT_EQ(Juros::dias(date(31, 3), date(1, 3)), -30);
    EXPECT_EQ(Juros::dias(date(1, 3), date(1, 3)), 0);
    EXPECT_EQ(Juros::dias(date(1, 3, 12), date(2, 3)), 0.5F) << "a time of day is part of one";
}

// Over 270 years a second is no longer told.
TEST(Interest, TheDaysAreKeptInSinglePrecision) {
    const jet::Date early{.days = 0};
    const jet::Date late{.days = 100'000.0 + 1.0 / 86'400};
    EXPECT_EQ(Juros::dias(early, late), 100'000.0F);
}

TEST(Interest, TheRateCountsForEachDay) {
    EXPECT_EQ(Juros::fator(amount(20'000), 30), 0.6F);
    EXPECT_EQ(Juros::fator(amount(20'000), -30), -0.6F);
    EXPECT_EQ(Juros::fator(amount(0), 30), 0);
    EXPECT_EQ(Juros::fator(amount(333), 7), static_cast<float>(0.0333 * 7 / 100));
}

// 16.777.217 has one bit too many: doubled and halved it would stay, kept in between it doesn't.
TEST(Interest, TheFactorIsKeptInSinglePrecision) {
    EXPECT_EQ(Juros::fator(reais(16'777'217), 100), 16'777'216.0F);
    EXPECT_EQ(interest(reais(1), 16'777'217 * std::int64_t{10'000}, 100),
              16'777'216 * std::int64_t{10'000});
}

TEST(Interest, OfAThousandAtTwoPerCentOverThirtyDaysIsSixHundred) {
    EXPECT_EQ(interest(reais(1'000), 20'000, 30), 6'000'000);
    EXPECT_EQ(Juros::novoValor(reais(1'000), amount(6'000'000)), reais(1'600));
    EXPECT_EQ(interest(reais(1'000), 20'000, 0), 0);
    EXPECT_EQ(interest(reais(1'000), 20'000, -30), -6'000'000);
    EXPECT_EQ(Juros::novoValor(reais(1'000), amount(-6'000'000)), reais(400));
}

// A factor of one half or a quarter is exact, so these are true halves of the last decimal.
TEST(Interest, HalvesGoToTheEvenNeighbour) {
    const struct {
        std::int64_t value;
        float factor;
        std::int64_t interest;
    } halves[] = {
        {1,           0.5F,  0         },
        {3,           0.5F,  2         },
        {5,           0.5F,  2         },
        {7,           0.5F,  4         },
        {10'001,      0.5F,  5'000     },
        {10'003,      0.5F,  5'002     },
        {2,           0.25F, 0         },
        {6,           0.25F, 2         },
        {123'456'781, 0.5F,  61'728'390},
        {123'456'783, 0.5F,  61'728'392},
        {-1,          0.5F,  0         },
        {-3,          0.5F,  -2        },
        {-5,          0.5F,  -2        },
        {1,           -0.5F, 0         },
        {3,           -0.5F, -2        },
        {-3,          -0.5F, 2         },
        {1,           -1.5F, -2        },
        {1,           -2.5F, -2        },
    };
    for (const auto& [value, factor, expected] : halves)
        EXPECT_EQ(Juros::juros(amount(value), factor).tenThousandths, expected)
            << value << " x " << factor;
}

// Every odd number of ten-thousandths up to ten reais, halved.
TEST(Interest, HalvesStayHalvesWhateverTheAmount) {
    for (std::int64_t value = 1; value < 100'000; value += 2) {
        const std::int64_t lower = value / 2;
        ASSERT_EQ(Juros::juros(amount(value), 0.5F).tenThousandths, lower + lower % 2) << value;
    }
}

TEST(Interest, WhatIsNoHalfGoesToTheNearest) {
    EXPECT_EQ(Juros::juros(amount(10'001), 0.4996F).tenThousandths, 4'996);
    EXPECT_EQ(Juros::juros(amount(10'001), 0.50001F).tenThousandths, 5'001);
    EXPECT_EQ(Juros::juros(amount(-10'001), 0.50001F).tenThousandths, -5'001);
}

TEST(Interest, OfTheLargestAmountsIsExactOrRefused) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(Juros::juros(amount(kLeast), 0.5F).tenThousandths, kLeast / 2);
    EXPECT_THROW((void)Juros::juros(amount(kMost), 1.5F), jet::Error);
    EXPECT_THROW((void)Juros::juros(amount(kLeast), 1.5F), jet::Error);
    EXPECT_THROW((void)Juros::juros(amount(kLeast), -1.0F), jet::Error);
    EXPECT_EQ(Juros::novoValor(amount(kMost - 5), amount(5)), amount(kMost));
    EXPECT_THROW((void)Juros::novoValor(amount(kMost), amount(1)), jet::Error);
    EXPECT_THROW((void)Juros::novoValor(amount(kLeast), amount(-1)), jet::Error);
}

} // namespace
