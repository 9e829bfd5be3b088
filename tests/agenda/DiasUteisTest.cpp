#include "agenda/DiasUteis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

using testing::ElementsAreArray;

/// The weekdays of a year on which banks don't work, "mm-dd".
std::vector<std::string> feriadosEmDiaDeSemana(int ano) {
    std::vector<std::string> todos;
    for (QDate dia(ano, 1, 1); dia.year() == ano; dia = dia.addDays(1))
        if (dia.dayOfWeek() < Qt::Saturday && !DiasUteis::ehUtil(dia))
            todos.push_back(dia.toString("MM-dd").toStdString());
    return todos;
}

// As the calendars of those years had them.
TEST(WorkingDays, LeaveOutTheHolidaysOfTheBanks) {
    const std::map<int, std::vector<std::string>> kAnos = {
  // Easter at its latest and, in 2008, almost at its earliest.
        {2038,
         {"01-01", "03-08", "03-09", "04-21", "04-23", "06-24", "09-07", "10-12", "11-02",
          "11-15"}                                                                              },
        {2008, {"01-01", "02-04", "02-05", "03-21", "04-21", "05-01", "05-22", "12-25"}         },
        {2023,
         {"02-20", "02-21", "04-07", "04-21", "05-01", "06-08", "09-07", "10-12", "11-02", "11-15",
          "12-25"}                                                                              },
        {2024, {"01-01", "02-12", "02-13", "03-29", "05-01", "05-30", "11-15", "11-20", "12-25"}},
        {2025, {"01-01", "03-03", "03-04", "04-18", "04-21", "05-01", "06-19", "11-20", "12-25"}},
        {2026,
         {"01-01", "02-16", "02-17", "04-03", "04-21", "05-01", "06-04", "09-07", "10-12", "11-02",
          "11-20", "12-25"}                                                                     },
        {2027,
         {"01-01", "02-08", "02-09", "03-26", "04-21", "05-27", "09-07", "10-12", "11-02",
          "11-15"}                                                                              },
    };
    for (const auto& [ano, feriados] : kAnos)
        EXPECT_THAT(feriadosEmDiaDeSemana(ano), ElementsAreArray(feriados)) << ano;
}

// Which the two rules that stand beside the moon's count are for, and the ends of its range.
TEST(WorkingDays, FindEasterInItsRarestYears) {
    for (const QDate pascoa :
         {QDate(1818, 3, 22), QDate(1943, 4, 25), QDate(1954, 4, 18), QDate(1981, 4, 19),
          QDate(2000, 4, 23), QDate(2008, 3, 23), QDate(2038, 4, 25), QDate(2049, 4, 18),
          QDate(2076, 4, 19), QDate(2285, 3, 22)}) {
        EXPECT_FALSE(DiasUteis::ehUtil(pascoa.addDays(-2))) << pascoa.year();
        EXPECT_FALSE(DiasUteis::ehUtil(pascoa.addDays(-47))) << pascoa.year();
        EXPECT_FALSE(DiasUteis::ehUtil(pascoa.addDays(60))) << pascoa.year();
        EXPECT_TRUE(DiasUteis::ehUtil(pascoa.addDays(-46))) << pascoa.year(); // Ash Wednesday
        EXPECT_TRUE(DiasUteis::ehUtil(pascoa.addDays(-3))) << pascoa.year();
        EXPECT_TRUE(DiasUteis::ehUtil(pascoa.addDays(61))) << pascoa.year();
    }
}

TEST(WorkingDays, AreNoneBeforeALawMadeTheDayAHoliday) {
    EXPECT_TRUE(DiasUteis::ehUtil({2023, 11, 20}));
    EXPECT_FALSE(DiasUteis::ehUtil({2024, 11, 20}));
    EXPECT_TRUE(DiasUteis::ehUtil({1979, 10, 12}));
}

TEST(WorkingDays, AreCountedWhereBanksAreShutToThePublicButClearCheques) {
    EXPECT_TRUE(DiasUteis::ehUtil({2025, 12, 31}));
    EXPECT_TRUE(DiasUteis::ehUtil({2025, 12, 24}));
}

TEST(WorkingDays, FollowAfterHolidaysAndWeekendsInARow) {
    const struct {
        QDate dia;
        QDate util;
    } kCasos[] = {
        {{2026, 11, 18}, {2026, 11, 18}}, // a Wednesday
        {{2026, 11, 20}, {2026, 11, 23}}, // a holiday on a Friday
        {{2026, 11, 21}, {2026, 11, 23}},
        {{2026, 2, 14},  {2026, 2, 18} }, // a Saturday, Carnival after it
        {{2026, 12, 25}, {2026, 12, 28}},
        {{2027, 1, 1},   {2027, 1, 4}  },
        {{2025, 4, 18},  {2025, 4, 22} }, // Good Friday, Easter, Tiradentes on the Monday
        {{},             {}            },
    };
    for (const auto& [dia, util] : kCasos)
        EXPECT_EQ(DiasUteis::aPartirDe(dia), util) << dia.toString().toStdString();
    EXPECT_FALSE(DiasUteis::ehUtil({}));
}

} // namespace
