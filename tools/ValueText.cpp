#include "tools/ValueText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

namespace {

struct Writer {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(bool value) const { return value ? "1" : "0"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(const std::string& value) const { return value; }
    std::string operator()(const jet::Guid& value) const { return value.text(); }
    std::string operator()(const jet::Numeric& value) const { return value.text(); }

    std::string operator()(jet::Currency value) const {
        constexpr std::uint64_t kUnit = 10'000;
        const bool negative = value.tenThousandths < 0;
        const auto bits = static_cast<std::uint64_t>(value.tenThousandths);
        const std::uint64_t magnitude = negative ? 0 - bits : bits;
        std::string decimals = std::to_string(magnitude % kUnit);
        decimals.insert(0, 4 - decimals.size(), '0');
        return (negative ? "-" : "") + std::to_string(magnitude / kUnit) + "." + decimals;
    }

    std::string operator()(double value) const {
        std::array<char, 32> text{};
        const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
        return {text.data(), end};
    }

    std::string operator()(jet::Date value) const {
        if (!value.inRange())
            return (*this)(value.days); // no day of the calendar: the bare number
        const jet::CivilTime time = value.civil();
        std::array<char, 40> text{};
        const bool hasTime = time.hour != 0 || time.minute != 0 || time.second != 0;
        const int length = std::snprintf(
            text.data(), text.size(), hasTime ? "%04d-%02d-%02dT%02d:%02d:%02d" : "%04d-%02d-%02d",
            time.year, time.month, time.day, time.hour, time.minute, time.second);
        return {text.data(), static_cast<std::size_t>(length)};
    }

    std::string operator()(const jet::Bytes& value) const {
        constexpr std::string_view kDigits = "0123456789abcdef";
        std::string text;
        for (const std::byte b : value) {
            text += kDigits[std::to_integer<std::size_t>(b >> 4)];
            text += kDigits[std::to_integer<std::size_t>(b & std::byte{0x0F})];
        }
        return text;
    }
};

} // namespace

std::string textOf(const jet::Value& value) { return std::visit(Writer{}, value); }

std::string csvOf(const jet::Value& value) {
    std::string text = textOf(value);
    const bool quotes =
        text.empty() ? !jet::isNull(value) : text.find_first_of(",\"\r\n") != std::string::npos;
    if (!quotes)
        return text;
    for (std::size_t at = text.find('"'); at != std::string::npos; at = text.find('"', at + 2))
        text.insert(at, 1, '"');
    return '"' + text + '"';
}

std::size_t widthOf(std::string_view text) noexcept {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}
