#include "ado/value/WrittenForm.h"

#include "jet/Error.h"
#include "jet/Names.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <iterator>

namespace ado {

namespace {

using jet::Currency;
using jet::Date;

constexpr std::uint64_t kUnitsOfReal = 10000; // of Currency

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view unpadded(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

// ---- text as a number -------------------------------------------------------------------------

bool allDigits(std::string_view text) { return std::ranges::all_of(text, isDigit); }

/// "1.234.567": one to three digits, the first not 0, then groups of three.
bool hasThousands(std::string_view text) {
    std::size_t point = text.find('.');
    if (point == 0 || point > 3 || text.front() == '0')
        return false;
    for (; point != std::string_view::npos; point = text.find('.', point + 1)) {
        const std::string_view group =
            text.substr(point + 1, text.find('.', point + 1) - point - 1);
        if (group.size() != 3)
            return false;
    }
    return true;
}

std::string digitsOf(const jet::Numeric& number) {
    std::string digits = number.text();
    std::ranges::replace(digits, '.', ',');
    return digits;
}

std::string digitsOf(double number) {
    std::array<char, 400> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    std::string digits(buffer.data(), end.ptr);
    std::ranges::replace(digits, '.', ',');
    return digits;
}

std::string digitsOf(Currency amount) {
    const bool negative = amount.tenThousandths < 0;
    // As an unsigned number, so that the smallest amount has an opposite too.
    const auto bits = static_cast<std::uint64_t>(amount.tenThousandths);
    const std::uint64_t magnitude = negative ? ~bits + 1 : bits;
    std::string decimals = std::to_string(magnitude % kUnitsOfReal + kUnitsOfReal).substr(1);
    while (decimals.size() > 2 && decimals.back() == '0')
        decimals.pop_back();
    return (negative ? "-" : "") + std::to_string(magnitude / kUnitsOfReal) + "," + decimals;
}

std::string writtenOut(Date date) {
    const jet::CivilTime time = date.civil();
    std::array<char, 64> buffer{};
    const bool midnight = time.hour == 0 && time.minute == 0 && time.second == 0;
    const int length =
        midnight
            ? std::snprintf(buffer.data(), buffer.size(), "%02d/%02d/%04d", time.day, time.month,
                            time.year)
            : std::snprintf(buffer.data(), buffer.size(), "%02d/%02d/%04d %02d:%02d:%02d", time.day,
                            time.month, time.year, time.hour, time.minute, time.second);
    return {buffer.data(), static_cast<std::size_t>(length)};
}

struct TextWriter {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(bool yes) const { return yes ? "Verdadeiro" : "Falso"; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(Currency amount) const { return digitsOf(amount); }
    std::string operator()(double number) const { return digitsOf(number); }
    std::string operator()(Date date) const { return writtenOut(date); }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(const jet::Bytes&) const {
        throw jet::Error(jet::Errc::outOfRange, "O valor lido é binário e não tem texto.");
    }
    std::string operator()(const jet::Guid& id) const { return id.text(); }
    std::string operator()(const jet::Numeric& number) const { return digitsOf(number); }
};

} // namespace

std::optional<WrittenNumber> writtenNumber(std::string_view text) {
    text = unpadded(text);
    WrittenNumber number;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        number.negative = text.front() == '-';
        text.remove_prefix(1);
    }
    std::size_t decimalSign = text.find(',');
    std::string_view whole = text.substr(0, decimalSign);
    const bool pointed = whole.find('.') != std::string_view::npos;
    const bool thousands = pointed && hasThousands(whole);
    if (decimalSign == std::string_view::npos && pointed && !thousands)
        decimalSign = text.find('.');
    else if (pointed && !thousands)
        return std::nullopt;
    whole = text.substr(0, decimalSign);
    if (decimalSign != std::string_view::npos)
        number.decimals = text.substr(decimalSign + 1);
    std::ranges::copy_if(whole, std::back_inserter(number.whole),
                         [&](char c) { return !(thousands && c == '.'); });
    if (number.whole.empty() && number.decimals.empty())
        return std::nullopt;
    if (!allDigits(number.whole) || !allDigits(number.decimals))
        return std::nullopt;
    while (!number.decimals.empty() && number.decimals.back() == '0')
        number.decimals.pop_back();
    return number;
}

std::optional<std::int64_t> scaled(const WrittenNumber& number, std::size_t places) {
    if (number.decimals.size() > places)
        return std::nullopt;
    std::string digits = (number.negative ? "-" : "") + number.whole + number.decimals;
    digits.append(places - number.decimals.size(), '0');
    std::int64_t result = 0;
    const auto [stop, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), result);
    if (error != std::errc{})
        return std::nullopt;
    return result;
}

std::optional<std::int64_t> rounded(WrittenNumber number, std::size_t places) {
    const bool up = number.decimals.size() > places && number.decimals[places] >= '5';
    number.decimals.resize(std::min(number.decimals.size(), places));
    const auto down = scaled(number, places);
    std::int64_t nearest = 0;
    if (!down || __builtin_add_overflow(*down, up ? (number.negative ? -1 : 1) : 0, &nearest))
        return std::nullopt;
    return nearest;
}

std::optional<double> nearestDouble(const WrittenNumber& number) {
    const std::string digits =
        (number.negative ? "-0" : "0") + number.whole + "." + number.decimals + "0";
    double result = 0;
    const auto [stop, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), result);
    if (error != std::errc{})
        return std::nullopt;
    return result;
}

WrittenNumber writtenNumber(const jet::Numeric& number) { return *writtenNumber(digitsOf(number)); }

std::optional<Date> writtenDate(std::string_view text) {
    const std::string terminated(unpadded(text));
    jet::CivilTime time;
    int end = 0;
    int timeEnd = 0;
    // NOLINTNEXTLINE(cert-err34-c): widths bound every number
    const int found =
        std::sscanf(terminated.c_str(), "%2d/%2d/%4d%n %2d:%2d%n:%2d%n", &time.day, &time.month,
                    &time.year, &end, &time.hour, &time.minute, &timeEnd, &time.second, &timeEnd);
    const auto length = static_cast<int>(terminated.size());
    const bool complete = (found == 3 && end == length) || (found >= 5 && timeEnd == length);
    if (!complete)
        return std::nullopt;
    const std::chrono::year_month_day calendar(
        std::chrono::year{time.year}, std::chrono::month{static_cast<unsigned>(time.month)},
        std::chrono::day{static_cast<unsigned>(time.day)});
    if (!calendar.ok() || time.hour < 0 || time.hour > 23 || time.minute < 0 || time.minute > 59 ||
        time.second < 0 || time.second > 59)
        return std::nullopt;
    return Date::of(time);
}

std::optional<bool> writtenYesNo(std::string_view text) {
    const std::string word = jet::foldedName(unpadded(text));
    for (const char* const yes : {"verdadeiro", "sim", "true", "-1", "1"}) {
        if (word == yes)
            return true;
    }
    for (const char* const no : {"falso", "não", "nao", "false", "0"}) {
        if (word == no)
            return false;
    }
    return std::nullopt;
}

std::string asText(const jet::Value& value) { return std::visit(TextWriter{}, value); }

} // namespace ado
