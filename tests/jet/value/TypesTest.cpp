#include "jet/Types.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace jet {
namespace {

TEST(Dates, CountDaysFromTheLastDayButOneOf1899) {
    EXPECT_EQ(Date::of({1899, 12, 30}).days, 0);
    EXPECT_EQ(Date::of({1899, 12, 31}).days, 1);
    EXPECT_EQ(Date::of({1900, 3, 1}).days, 61);
    EXPECT_EQ(Date::of({2000, 1, 1, 12, 0, 0}).days, 36526.5);
    EXPECT_EQ(Date::of({9999, 12, 31}).days, 2958465);
    EXPECT_EQ(Date::of({100, 1, 1}).days, -657434);
}

TEST(Dates, BeforeTheFirstDayTheTimeStillCountsForward) {
    EXPECT_EQ(Date::of({1899, 12, 29, 6, 0, 0}).days, -1.25);
    EXPECT_EQ(Date{-1.25}.civil(), (CivilTime{1899, 12, 29, 6, 0, 0}));
    EXPECT_EQ(Date{-0.25}.civil(), (CivilTime{1899, 12, 30, 6, 0, 0}));
    EXPECT_EQ(Date{0.25}.civil(), (CivilTime{1899, 12, 30, 6, 0, 0}));
    EXPECT_EQ(Date{-657434.5}.civil(), (CivilTime{100, 1, 1, 12, 0, 0}));
}

TEST(Dates, RoundToTheSecondAndCarryIntoTheDay) {
    const double second = 1.0 / 86400;
    EXPECT_EQ(Date{10 + 0.4 * second}.civil(), (CivilTime{1900, 1, 9}));
    EXPECT_EQ(Date{10 + 0.6 * second}.civil(), (CivilTime{1900, 1, 9, 0, 0, 1}));
    EXPECT_EQ(Date{11 - 0.4 * second}.civil(), (CivilTime{1900, 1, 10}));
    EXPECT_EQ(Date{-1 - (1 - 0.4 * second)}.civil(), (CivilTime{1899, 12, 30}));
    EXPECT_EQ(Date{2958466 - 0.4 * second}.civil(), (CivilTime{9999, 12, 31, 23, 59, 59}));
}

TEST(Dates, EveryDayAndAnySecondComesBack) {
    std::mt19937 random(1);
    std::uniform_int_distribution secondOfDay(0, 86399);
    for (int day = -657434; day <= 2958465; day += 7) {
        const CivilTime date = Date{static_cast<double>(day)}.civil();
        CivilTime time = date;
        const int second = secondOfDay(random);
        time.hour = second / 3600;
        time.minute = second / 60 % 60;
        time.second = second % 60;
        ASSERT_EQ(Date::of(date).days, day);
        ASSERT_EQ(Date::of(time).civil(), time) << day << " " << second;
    }
}

TEST(Dates, LeapYearsAreThoseOfTheCalendarOfToday) {
    EXPECT_EQ(Date::of({1900, 3, 1}).days - Date::of({1900, 2, 28}).days, 1);
    EXPECT_EQ(Date::of({2000, 3, 1}).days - Date::of({2000, 2, 28}).days, 2);
    EXPECT_EQ(Date::of({1500, 3, 1}).days - Date::of({1500, 2, 28}).days, 1);
}

TEST(Dates, KnowWhatLiesOutsideTheCalendar) {
    EXPECT_TRUE(Date{-657434}.inRange());
    EXPECT_TRUE(Date{-657434.99}.inRange());
    EXPECT_TRUE(Date{2958465.99999}.inRange());
    for (const double days : {-657435.0, 2958466.0, 1e300, -1e300, std::nan(""),
                              std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(Date{days}.inRange()) << days;
        const CivilTime time = Date{days}.civil(); // shows something, whatever the bytes are
        EXPECT_TRUE(time.year >= 100 && time.year <= 9999) << days;
    }
}

TEST(Dates, OrderByMoment) {
    const CivilTime times[] = {
        {100,  1,  1,  0,  0,  0 },
        {100,  1,  1,  23, 59, 59},
        {1899, 12, 28, 18, 0,  0 },
        {1899, 12, 29, 0,  0,  0 },
        {1899, 12, 29, 6,  0,  0 },
        {1899, 12, 29, 18, 0,  0 },
        {1899, 12, 30, 0,  0,  0 },
        {1899, 12, 30, 1,  0,  0 },
        {2024, 2,  29, 10, 30, 0 },
        {9999, 12, 31, 23, 0,  0 }
    };
    for (std::size_t i = 1; i < std::size(times); ++i)
        EXPECT_LT(Date::of(times[i - 1]).moment(), Date::of(times[i]).moment()) << i;
    EXPECT_EQ(Date{-1.25}.moment(), -0.75);
    EXPECT_EQ(Date{41000.75}.moment(), 41000.75);
}

TEST(Guids, PrintTheirNumbersHighestByteFirst) {
    Guid guid;
    for (unsigned i = 0; i < 16; ++i)
        guid.bytes[i] = std::byte(0xA0 + i);
    EXPECT_EQ(guid.text(), "{A3A2A1A0-A5A4-A7A6-A8A9-AAABACADAEAF}");
    EXPECT_EQ(Guid{}.text(), "{00000000-0000-0000-0000-000000000000}");
}

TEST(Numerics, PrintAllTheirDecimals) {
    EXPECT_EQ((Numeric{
                   true, {0, 0, 0, 1250},
                    2
    })
                  .text(),
              "-12.50");
    EXPECT_EQ((Numeric{
                   false, {0, 0, 0, 5},
                    2
    })
                  .text(),
              "0.05");
    EXPECT_EQ((Numeric{
                   true, {0, 0, 0, 5},
                    0
    })
                  .text(),
              "-5");
    EXPECT_EQ((Numeric{false, {}, 0}).text(), "0");
    EXPECT_EQ((Numeric{true, {}, 3}).text(), "0.000");
    EXPECT_EQ((Numeric{
                   false, {0, 0, 1, 0},
                    0
    })
                  .text(),
              "4294967296");
    EXPECT_EQ((Numeric{
                   false, {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF},
                    28
    })
                  .text(),
              "34028236692.0938463463374607431768211455");
}

} // namespace
} // namespace jet
