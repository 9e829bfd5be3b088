#include "jet/Types.h"

#include "jet/system/System.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <random>

namespace jet {

namespace {

constexpr double kFirstDay = -657434; // 0100-01-01
constexpr double kLastDay = 2958465;  // 9999-12-31
constexpr int kSecondsOfDay = 86400;

constexpr std::chrono::sys_days kEpoch =
    std::chrono::year{1899} / std::chrono::December / std::chrono::day{30};

} // namespace

Date Date::of(const CivilTime& time) noexcept {
    const std::chrono::year_month_day calendar(
        std::chrono::year{time.year}, std::chrono::month{static_cast<unsigned>(time.month)},
        std::chrono::day{static_cast<unsigned>(time.day)});
    const double day = static_cast<double>((std::chrono::sys_days{calendar} - kEpoch).count());
    const double fraction =
        static_cast<double>((time.hour * 60 + time.minute) * 60 + time.second) / kSecondsOfDay;
    return {day < 0 ? day - fraction : day + fraction};
}

Date Date::now() {
    const std::tm local = sys::localTime(std::time(nullptr));
    return of({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
               std::min(local.tm_sec, 59)}); // a leap second is no time of its own
}

Date Date::today() { return {std::trunc(now().days)}; }

CivilTime Date::civil() const noexcept {
    // What lies outside the calendar shows as the nearest day that it has; no number as the epoch.
    const double value = std::isnan(days) ? 0 : std::clamp(days, kFirstDay - 1, kLastDay + 1);
    double day = std::clamp(std::trunc(value), kFirstDay, kLastDay);
    auto second =
        static_cast<int>(std::lround(std::abs(value - std::trunc(value)) * kSecondsOfDay));
    if (second == kSecondsOfDay) {
        second = day < kLastDay ? 0 : kSecondsOfDay - 1;
        day = std::min(day + 1, kLastDay);
    }
    const std::chrono::year_month_day calendar(kEpoch + std::chrono::days(static_cast<int>(day)));
    return {static_cast<int>(calendar.year()),
            static_cast<int>(static_cast<unsigned>(calendar.month())),
            static_cast<int>(static_cast<unsigned>(calendar.day())),
            second / 3600,
            second / 60 % 60,
            second % 60};
}

bool Date::inRange() const noexcept { return days > kFirstDay - 1 && days < kLastDay + 1; }

double Date::moment() const noexcept { return days < 0 ? 2 * std::trunc(days) - days : days; }

Guid Guid::random() {
    std::random_device source;
    Guid id;
    for (std::byte& b : id.bytes)
        b = static_cast<std::byte>(source() & 0xFF);
    id.bytes[7] = (id.bytes[7] & std::byte{0x0F}) | std::byte{0x40}; // version 4: random
    id.bytes[8] = (id.bytes[8] & std::byte{0x3F}) | std::byte{0x80};
    return id;
}

std::string Guid::text() const {
    // The first three groups are numbers, stored lowest byte first.
    constexpr std::size_t kPrinted[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "{";
    for (const std::size_t at : kPrinted) {
        if (text.size() == 9 || text.size() == 14 || text.size() == 19 || text.size() == 24)
            text += '-';
        const auto byte = std::to_integer<unsigned>(bytes[at]);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text + "}";
}

std::string Numeric::text() const {
    auto left = words;
    std::string digits; // lowest first
    while (std::ranges::any_of(left, [](std::uint32_t word) { return word != 0; })) {
        std::uint64_t rest = 0;
        for (std::uint32_t& word : left) {
            rest = rest << 32 | word;
            word = static_cast<std::uint32_t>(rest / 10);
            rest %= 10;
        }
        digits += static_cast<char>('0' + rest);
    }
    const bool isZero = digits.empty();
    digits.resize(std::max(digits.size(), std::size_t{scale} + 1), '0');
    std::ranges::reverse(digits);
    if (scale > 0)
        digits.insert(digits.size() - scale, 1, '.');
    return negative && !isZero ? "-" + digits : digits;
}

} // namespace jet
