#include "tools/ValueText.h"

#include "jet/Numbers.h"

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

std::string jsonText(std::string_view utf8) {
    std::string text = "\"";
    for (const char c : utf8) {
        if (c == '"' || c == '\\') {
            text += '\\';
            text += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(c));
            text += code.data();
        } else {
            text += c;
        }
    }
    return text + '"';
}

std::string jsonOf(const jet::Value& value) {
    if (jet::isNull(value))
        return "null";
    if (const bool* yes = std::get_if<bool>(&value))
        return *yes ? "true" : "false";
    std::string text = textOf(value);
    return std::holds_alternative<std::int64_t>(value) ? text : jsonText(text);
}

namespace {

/// A whole text as a number of that type.
template <class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

/// "-12.5": sign, digits, and up to `most` decimals behind a point, filled up with zeros.
struct DecimalDigits {
    bool negative = false;
    std::string digits;
};
std::optional<DecimalDigits> decimalIn(std::string_view text, std::size_t most) {
    DecimalDigits decimal;
    if (text.starts_with('-')) {
        decimal.negative = true;
        text.remove_prefix(1);
    }
    const std::size_t point = std::min(text.find('.'), text.size());
    const std::string_view whole = text.substr(0, point);
    const std::string_view decimals = text.substr(std::min(point + 1, text.size()));
    decimal.digits = std::string(whole) + std::string(decimals);
    if (whole.empty() || (point < text.size() && decimals.empty()) || decimals.size() > most ||
        decimal.digits.find_first_not_of("0123456789") != std::string::npos)
        return std::nullopt;
    decimal.digits.append(most - decimals.size(), '0');
    return decimal;
}

std::optional<jet::Value> currencyIn(std::string_view text) {
    const auto decimal = decimalIn(text, 4);
    if (!decimal)
        return std::nullopt;
    const auto amount = numberIn<std::int64_t>((decimal->negative ? "-" : "") + decimal->digits);
    return amount ? std::optional<jet::Value>(jet::Currency{*amount}) : std::nullopt;
}

std::optional<jet::Value> numericIn(std::string_view text, std::uint8_t scale) {
    const auto decimal = decimalIn(text, scale);
    const auto number =
        decimal ? jet::numericFrom(decimal->negative, decimal->digits, scale) : std::nullopt;
    return number ? std::optional<jet::Value>(*number) : std::nullopt;
}

std::optional<jet::Value> dateIn(const std::string& text) {
    jet::CivilTime time;
    int end = 0;
    const int fields =
        std::sscanf(text.c_str(), "%4d-%2d-%2d%nT%2d:%2d:%2d%n", &time.year, &time.month, &time.day,
                    &end, &time.hour, &time.minute, &time.second, &end);
    const jet::Date date = jet::Date::of(time);
    // Written again it has to be the same: no 30th of February, nothing left over.
    const bool whole = (fields == 3 || fields == 6) && end == static_cast<int>(text.size());
    return whole && date.inRange() && date.civil() == time ? std::optional<jet::Value>(date)
                                                           : std::nullopt;
}

std::optional<jet::Value> bytesIn(std::string_view text) {
    if (text.size() % 2 != 0 ||
        text.find_first_not_of("0123456789abcdefABCDEF") != std::string_view::npos)
        return std::nullopt;
    jet::Bytes bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t at = 0; at < text.size(); at += 2) {
        unsigned value = 0;
        std::from_chars(text.data() + at, text.data() + at + 2, value, 16);
        bytes.push_back(static_cast<std::byte>(value));
    }
    return bytes;
}

std::optional<jet::Value> guidIn(std::string_view text) {
    // "{03020100-0504-0706-0809-...}": the first three groups are numbers, least byte first.
    constexpr std::array<std::size_t, 16> kPlaces = {7,  5,  3,  1,  12, 10, 17, 15,
                                                     20, 22, 25, 27, 29, 31, 33, 35};
    jet::Guid guid;
    if (text.size() != 38)
        return std::nullopt;
    for (std::size_t i = 0; i < kPlaces.size(); ++i) {
        const auto byte = bytesIn(text.substr(kPlaces[i], 2));
        if (!byte)
            return std::nullopt;
        guid.bytes[i] = std::get<jet::Bytes>(*byte).front();
    }
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(), [](char c) {
        return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return guid.text() == upper ? std::optional<jet::Value>(guid) : std::nullopt;
}

template <class Number>
std::optional<jet::Value> plain(const std::optional<Number>& number) {
    return number ? std::optional<jet::Value>(*number) : std::nullopt;
}

} // namespace

std::optional<jet::Value> valueFrom(const jet::Column& column, const std::string& text) {
    switch (column.type) {
    case jet::ColumnType::boolean:
        return text == "1" || text == "0" ? std::optional<jet::Value>(text == "1") : std::nullopt;
    case jet::ColumnType::byte:
    case jet::ColumnType::integer:
    case jet::ColumnType::longInteger:
        return plain(numberIn<std::int64_t>(text));
    case jet::ColumnType::currency:
        return currencyIn(text);
    case jet::ColumnType::single:
    case jet::ColumnType::real:
        return plain(numberIn<double>(text));
    case jet::ColumnType::date:
        return dateIn(text);
    case jet::ColumnType::text:
    case jet::ColumnType::memo:
        return text;
    case jet::ColumnType::guid:
        return guidIn(text);
    case jet::ColumnType::numeric:
        return numericIn(text, column.scale);
    case jet::ColumnType::binary:
    case jet::ColumnType::ole:
        break;
    }
    return bytesIn(text);
}

std::size_t widthOf(std::string_view text) noexcept {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}
