#pragma once

#include "jet/Types.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What Format() makes of numbers, dates and texts by a pattern. Written as in Brazil, whatever the
/// machine's settings: comma and points, day/month/year, names of months in Portuguese.
namespace jet::functions {

/// One sign of a pattern: a character that may mean something, or text that stands for itself
/// because it is quoted or has a backslash before it. Looks into the pattern.
struct Sign {
    std::string_view text;
    bool literal = false;

    [[nodiscard]] bool is(char c) const noexcept {
        return !literal && text.size() == 1 && text[0] == c;
    }
    [[nodiscard]] bool isOneOf(std::string_view set) const noexcept {
        return !literal && text.size() == 1 && set.find(text[0]) != std::string_view::npos;
    }
};
using Signs = std::span<const Sign>;

[[nodiscard]] std::vector<Sign> signsOf(std::string_view pattern);

/// A number in decimal digits: 0.digits x 10^point. No digits: zero.
struct Decimal {
    bool negative = false;
    std::string digits; ///< without zeros at either end
    int point = 0;

    /// To so many places behind the point; half is rounded away from zero.
    void round(int places);
    [[nodiscard]] bool isZero() const noexcept { return digits.empty(); }
};

/// The digits of what counts as a number, exact where it is. @throws Error{outOfRange}.
[[nodiscard]] Decimal decimalOf(const Value& value);
/// As many digits as it takes.
[[nodiscard]] std::string plainNumber(const Decimal& number);
/// By the pattern's section for numbers of that sign.
[[nodiscard]] std::string formattedNumber(Decimal number, const std::vector<Signs>& sections);

/// How weeks are counted; see DateDiff.
struct Weeks {
    std::int64_t firstDay = 1;
    std::int64_t firstWeek = 1; ///< with the first of January, 2: with four days, 3: whole
};
/// The letters that mean something in it.
inline constexpr std::string_view kDateLetters = "cdwmqyhnstCDWMQYHNST";
[[nodiscard]] std::string formattedDate(const Date& date, Signs signs, const Weeks& weeks);

} // namespace jet::functions
