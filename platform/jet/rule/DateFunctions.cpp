// The functions of rules that reckon with dates.
#include "jet/Tokens.h"
#include "jet/rule/FunctionBodies.h"
#include "jet/rule/Operators.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>

namespace jet::functions {

namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;

std::int64_t dividedDown(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }

std::int64_t secondOfDay(const CivilTime& time) {
    return (time.hour * 60 + time.minute) * 60 + time.second;
}

Date dateFrom(std::int64_t day, std::int64_t second) {
    const double fraction = static_cast<double>(second) / static_cast<double>(kDay);
    const auto whole = static_cast<double>(day);
    const Date date{day < 0 ? whole - fraction : whole + fraction};
    if (!date.inRange())
        refuse("o resultado de uma conta é uma data que não existe");
    return date;
}

int daysOfMonth(int year, int month) {
    const std::chrono::year_month_day_last last{
        std::chrono::year{year} /
        std::chrono::month_day_last{std::chrono::month{static_cast<unsigned>(month)}}};
    return static_cast<int>(static_cast<unsigned>(last.day()));
}

Date monthsLater(const Date& date, std::int64_t months) {
    CivilTime time = date.civil();
    const std::int64_t month = std::int64_t{time.year} * 12 + time.month - 1 + months;
    const std::int64_t year = dividedDown(month, 12);
    if (year < 100 || year > 9999)
        refuse("o resultado de uma conta é uma data que não existe");
    time.year = static_cast<int>(year);
    time.month = static_cast<int>(month - year * 12) + 1;
    time.day = std::min(time.day, daysOfMonth(time.year, time.month));
    return Date::of(time);
}

Date secondsLater(const Date& date, std::int64_t seconds) {
    const std::int64_t total = dayNumber(date) * kDay + secondOfDay(date.civil()) + seconds;
    const std::int64_t day = dividedDown(total, kDay);
    return dateFrom(day, total - day * kDay);
}

/// What the units of DateAdd and DateDiff are: so many months, or so many seconds.
struct Unit {
    std::string_view name;
    std::int64_t months;
    std::int64_t seconds;
};
constexpr Unit kUnits[] = {
    {"yyyy", 12, 0       },
    {"q",    3,  0       },
    {"m",    1,  0       },
    {"y",    0,  kDay    },
    {"d",    0,  kDay    },
    {"w",    0,  kDay    },
    {"ww",   0,  7 * kDay},
    {"h",    0,  kHour   },
    {"n",    0,  60      },
    {"s",    0,  1       }
};

const Unit& unitOf(const Value& value) {
    const std::string name = lowerAscii(neededText(value));
    for (const Unit& unit : kUnits)
        if (unit.name == name)
            return unit;
    refuse("uma função não conhece esta unidade de tempo");
}

template <int CivilTime::*Part>
Value civilPart(const Call& call) {
    return isNull(call[0]) ? Value{} : Value(std::int64_t{dateOf(call[0]).civil().*Part});
}

/// A text as a date. Month first or day first is told only by a day beyond the twelfth.
std::optional<Date> dateIn(const std::string& text) {
    const auto read = [](const std::string& written) -> std::optional<double> {
        try {
            return parseDateLiteral(written);
        } catch (const Error&) {
            return std::nullopt;
        }
    };
    const auto monthFirst = read(text);
    const std::size_t first = text.find('/');
    const std::size_t second = first == std::string::npos ? first : text.find('/', first + 1);
    if (second == std::string::npos)
        return monthFirst ? std::optional(Date{*monthFirst}) : std::nullopt;
    const auto dayFirst = read(text.substr(first + 1, second - first - 1) + "/" +
                               text.substr(0, first) + text.substr(second));
    if (monthFirst && dayFirst && *monthFirst != *dayFirst)
        refuse("não se sabe o que é o dia e o que é o mês numa data escrita como texto");
    const auto& known = monthFirst ? monthFirst : dayFirst;
    return known ? std::optional(Date{*known}) : std::nullopt;
}

} // namespace

Date dateOf(const Value& value) {
    Date date{};
    if (const auto* stored = std::get_if<Date>(&value)) {
        date = *stored;
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        const auto written = dateIn(*text);
        if (!written)
            refuse("um texto não é uma data");
        date = *written;
    } else {
        date.days = numberOf(value).value();
    }
    if (!date.inRange())
        refuse("uma data não existe");
    return date;
}

std::int64_t dayNumber(const Date& date) {
    CivilTime time = date.civil();
    time.hour = time.minute = time.second = 0;
    return static_cast<std::int64_t>(Date::of(time).days);
}

std::int64_t firstDayOfWeek(const Call& call, std::size_t i) {
    const std::int64_t day = wholeOr(call, i, 1);
    if (day < 0 || day > 7)
        refuse("uma função não conhece este dia da semana");
    return day == 0 ? 1 : day;
}

std::int64_t weekBegin(std::int64_t day, std::int64_t firstDay) {
    return dividedDown(day - firstDay, 7) * 7 + firstDay; // the day 1 is a Sunday
}

Value today(const Call& /*call*/) { return Date::today(); }
Value now(const Call& /*call*/) { return Date::now(); }
Value timeOfDay(const Call& /*call*/) { return Date{std::fmod(Date::now().days, 1)}; }

Value year(const Call& call) { return civilPart<&CivilTime::year>(call); }
Value month(const Call& call) { return civilPart<&CivilTime::month>(call); }
Value day(const Call& call) { return civilPart<&CivilTime::day>(call); }

/// DateAdd(unit, count, date): a day that the month doesn't have becomes its last.
Value dateAdd(const Call& call) {
    const Unit& unit = unitOf(call[0]);
    const std::int64_t count = wholeOf(call[1]);
    if (isNull(call[2]))
        return {};
    const Date date = dateOf(call[2]);
    return unit.months != 0 ? monthsLater(date, count * unit.months)
                            : secondsLater(date, count * unit.seconds);
}

/// DateDiff(unit, from, to[, first day of the week[, first week]]): how many borders of the unit
/// lie between; of "w" how many times seven days have passed.
Value dateDiff(const Call& call) {
    const Unit& unit = unitOf(call[0]);
    const std::int64_t firstDay = firstDayOfWeek(call, 3);
    if (isNull(call[1]) || isNull(call[2]))
        return {};
    const Date from = dateOf(call[1]);
    const Date to = dateOf(call[2]);
    if (unit.name == "w")
        return (dayNumber(to) - dayNumber(from)) / 7;
    const auto place = [&](const Date& date) {
        const CivilTime time = date.civil();
        const std::int64_t dayOf = dayNumber(date);
        if (unit.months != 0)
            return (std::int64_t{time.year} * 12 + time.month - 1) / unit.months;
        if (unit.name == "ww")
            return dividedDown(dayOf - firstDay, 7);
        return dividedDown(dayOf * kDay + secondOfDay(time), unit.seconds);
    };
    return place(to) - place(from);
}

} // namespace jet::functions
