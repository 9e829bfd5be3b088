#include "ado/Convert.h"

#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/Numbers.h"
#include "jet/TableDefinition.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>

namespace ado {

namespace {

using jet::ColumnType;
using jet::Currency;
using jet::Date;
using jet::Errc;
using jet::Error;
using jet::Value;

constexpr std::int64_t kOneReal = 10000;
constexpr std::size_t kCurrencyDecimals = 4;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view unpadded(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

// ---- text as a number -------------------------------------------------------------------------

/// A number as it is written: its digits before and after the decimal sign.
struct WrittenNumber {
    bool negative = false;
    std::string whole;
    std::string decimals;
};

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

/// The number times 10 to the power of `places`, if that is whole and fits.
std::optional<std::int64_t> scaled(const WrittenNumber& number, std::size_t places) {
    if (number.decimals.size() > places)
        return std::nullopt;
    std::string digits = (number.negative ? "-" : "") + number.whole + number.decimals;
    digits.append(places - number.decimals.size(), '0');
    std::int64_t result = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, result);
    if (error != std::errc{} || stop != end)
        return std::nullopt;
    return result;
}

/// The number as `decimals` places show it, halves away from zero.
std::optional<std::int64_t> rounded(WrittenNumber number, std::size_t places) {
    const bool up = number.decimals.size() > places && number.decimals[places] >= '5';
    number.decimals.resize(std::min(number.decimals.size(), places));
    const auto down = scaled(number, places);
    std::int64_t nearest = 0;
    if (!down || __builtin_add_overflow(*down, up ? (number.negative ? -1 : 1) : 0, &nearest))
        return std::nullopt;
    return nearest;
}

std::optional<double> real(const WrittenNumber& number) {
    const std::string digits =
        (number.negative ? "-0" : "0") + number.whole + "." + number.decimals + "0";
    double result = 0;
    const auto [stop, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), result);
    if (error != std::errc{})
        return std::nullopt;
    return result;
}

// ---- text as a date, a yes/no -----------------------------------------------------------------

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
    if (!complete || time.year < 100)
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

// ---- one type to another ----------------------------------------------------------------------

std::optional<std::int64_t> wholePart(double number) {
    constexpr double kLimit = 9223372036854775808.0; // 2 to the 63rd
    if (!(number >= -kLimit && number < kLimit))
        return std::nullopt;
    return static_cast<std::int64_t>(number);
}

std::string digitsOf(const jet::Numeric& number) {
    std::string digits = number.text();
    std::ranges::replace(digits, '.', ',');
    return digits;
}

std::optional<std::int64_t> exactInteger(const Value& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value))
        return *number;
    if (const auto* yes = std::get_if<bool>(&value))
        return *yes ? -1 : 0;
    if (const auto* amount = std::get_if<Currency>(&value)) {
        if (amount->tenThousandths % kOneReal == 0)
            return amount->tenThousandths / kOneReal;
    } else if (const auto* number = std::get_if<double>(&value)) {
        if (*number == std::trunc(*number))
            return wholePart(*number);
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        if (const auto written = writtenNumber(*text))
            return scaled(*written, 0);
    } else if (const auto* decimal = std::get_if<jet::Numeric>(&value)) {
        return scaled(*writtenNumber(digitsOf(*decimal)), 0);
    }
    return std::nullopt;
}

std::optional<Currency> exactCurrency(const Value& value) {
    if (const auto* amount = std::get_if<Currency>(&value))
        return *amount;
    const auto exactly = [](const std::optional<WrittenNumber>& written) {
        const auto amount = written ? scaled(*written, kCurrencyDecimals) : std::nullopt;
        return amount ? std::optional(Currency{*amount}) : std::nullopt;
    };
    if (const auto* text = std::get_if<std::string>(&value))
        return exactly(writtenNumber(*text));
    if (const auto* decimal = std::get_if<jet::Numeric>(&value))
        return exactly(writtenNumber(digitsOf(*decimal)));
    if (std::holds_alternative<double>(value))
        return std::nullopt;
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / kOneReal;
    const auto whole = exactInteger(value);
    if (!whole || *whole > kMost || *whole < -kMost)
        return std::nullopt;
    return Currency{*whole * kOneReal};
}

std::optional<double> anyNumber(const Value& value) {
    if (const auto* number = std::get_if<double>(&value))
        return *number;
    if (const auto* amount = std::get_if<Currency>(&value))
        return static_cast<double>(amount->tenThousandths) / static_cast<double>(kOneReal);
    if (const auto* date = std::get_if<Date>(&value))
        return date->days;
    if (const auto* text = std::get_if<std::string>(&value)) {
        const auto written = writtenNumber(*text);
        return written ? real(*written) : std::nullopt;
    }
    if (const auto* numeric = std::get_if<jet::Numeric>(&value)) {
        const auto written = writtenNumber(digitsOf(*numeric));
        return written ? real(*written) : std::nullopt;
    }
    const auto whole = exactInteger(value);
    return whole ? std::optional(static_cast<double>(*whole)) : std::nullopt;
}

std::optional<Date> anyDate(const Value& value) {
    std::optional<Date> date;
    if (const auto* moment = std::get_if<Date>(&value))
        date = *moment;
    else if (const auto* text = std::get_if<std::string>(&value))
        date = writtenDate(*text);
    else if (const auto days = anyNumber(value))
        date = Date{*days};
    return date && date->inRange() ? date : std::nullopt;
}

std::optional<bool> anyBoolean(const Value& value) {
    if (const auto* yes = std::get_if<bool>(&value))
        return *yes;
    if (const auto* text = std::get_if<std::string>(&value))
        return writtenYesNo(*text);
    if (const auto number = anyNumber(value))
        return *number != 0;
    return std::nullopt;
}

/// Of a single or double; nothing for an amount that wouldn't be read back as it is.
std::optional<double> fractionFor(const Value& value, ColumnType type) {
    const auto number = anyNumber(value);
    const auto* const amount = std::get_if<Currency>(&value);
    if (!number || amount == nullptr)
        return number;
    const double stored =
        type == ColumnType::single ? jet::asWritten(static_cast<float>(*number)) : *number;
    const auto read = wholePart(std::round(stored * static_cast<double>(kOneReal)));
    return read == amount->tenThousandths ? number : std::nullopt;
}

std::optional<jet::Numeric> exactDecimal(const Value& value, const jet::Column& column) {
    std::optional<WrittenNumber> written;
    if (const auto* text = std::get_if<std::string>(&value))
        written = writtenNumber(*text);
    else if (const auto* decimal = std::get_if<jet::Numeric>(&value))
        written = writtenNumber(digitsOf(*decimal));
    else if (const auto amount = exactCurrency(value))
        written = writtenNumber(asText(*amount));
    if (!written || written->decimals.size() > column.scale)
        return std::nullopt;
    written->decimals.resize(column.scale, '0');
    const std::string digits = written->whole + written->decimals;
    const std::size_t first = std::min(digits.find_first_not_of('0'), digits.size());
    if (digits.size() - first > column.precision)
        return std::nullopt;
    return jet::numericFrom(written->negative, digits, column.scale);
}

template <class T>
Value orNothing(std::optional<T> value) {
    return value ? Value(*value) : Value{};
}

/// How the messages show a value.
std::string quoted(const Value& value) {
    if (std::holds_alternative<jet::Bytes>(value))
        return "um valor binário";
    return "\"" + asText(value) + "\"";
}

std::string nameOf(const jet::Column& column) {
    switch (column.type) {
    case ColumnType::boolean:
        return "sim ou não";
    case ColumnType::byte:
    case ColumnType::integer:
    case ColumnType::longInteger:
        return "um número inteiro";
    case ColumnType::currency:
        return "um valor em dinheiro, com até quatro casas decimais";
    case ColumnType::single:
        return "um número de até sete algarismos";
    case ColumnType::real:
        return "um número de até quinze algarismos";
    case ColumnType::numeric:
        return "um número de até " + std::to_string(column.precision) + " algarismos, " +
               std::to_string(column.scale) + " deles depois da vírgula";
    case ColumnType::date:
        return "uma data (dia/mês/ano)";
    case ColumnType::text:
    case ColumnType::memo:
        return "um texto";
    default:
        return "um valor de outro tipo";
    }
}

[[noreturn]] void notA(const char* what, const Value& value) {
    throw Error(Errc::outOfRange, "O valor lido, " + quoted(value) + ", não é " + what + ".");
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
    std::string decimals = std::to_string(magnitude % kOneReal + kOneReal).substr(1);
    while (decimals.size() > 2 && decimals.back() == '0')
        decimals.pop_back();
    return (negative ? "-" : "") + std::to_string(magnitude / kOneReal) + "," + decimals;
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

struct Writer {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(bool yes) const { return yes ? "Verdadeiro" : "Falso"; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(Currency amount) const { return digitsOf(amount); }
    std::string operator()(double number) const { return digitsOf(number); }
    std::string operator()(Date date) const { return writtenOut(date); }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(const jet::Bytes&) const {
        throw Error(Errc::outOfRange, "O valor lido é binário e não tem texto.");
    }
    std::string operator()(const jet::Guid& id) const { return id.text(); }
    std::string operator()(const jet::Numeric& number) const { return digitsOf(number); }
};

} // namespace

Value converted(const Value& value, const jet::Column& column) {
    if (jet::isNull(value))
        return value;
    Value result;
    switch (column.type) {
    case ColumnType::boolean:
        result = orNothing(anyBoolean(value));
        break;
    case ColumnType::byte:
    case ColumnType::integer:
    case ColumnType::longInteger:
        result = orNothing(exactInteger(value));
        break;
    case ColumnType::currency:
        result = orNothing(exactCurrency(value));
        break;
    case ColumnType::single:
    case ColumnType::real:
        result = orNothing(fractionFor(value, column.type));
        break;
    case ColumnType::numeric:
        result = orNothing(exactDecimal(value, column));
        break;
    case ColumnType::date:
        result = orNothing(anyDate(value));
        break;
    case ColumnType::text:
    case ColumnType::memo:
        if (!std::holds_alternative<jet::Bytes>(value))
            result = asText(value);
        break;
    default:
        return value; // taken as it is, or refused by the table
    }
    if (jet::isNull(result))
        throw Error(Errc::outOfRange, "O campo \"" + column.name + "\" pede " + nameOf(column) +
                                          ", e recebeu " + quoted(value) + ".");
    return result;
}

std::string asText(const Value& value) { return std::visit(Writer{}, value); }

std::int64_t asInteger(const Value& value) {
    if (jet::isNull(value))
        return 0;
    if (const auto exact = exactInteger(value))
        return *exact;
    const auto number = anyNumber(value);
    const auto nearest = number ? wholePart(std::round(*number)) : std::nullopt;
    if (!nearest)
        notA("um número inteiro", value);
    return *nearest;
}

Currency asCurrency(const Value& value) {
    if (jet::isNull(value))
        return {};
    if (const auto exact = exactCurrency(value))
        return *exact;
    if (const auto* decimal = std::get_if<jet::Numeric>(&value)) {
        if (const auto nearest = rounded(*writtenNumber(digitsOf(*decimal)), kCurrencyDecimals))
            return {*nearest};
        notA("um valor em dinheiro", value);
    }
    const auto number = anyNumber(value);
    const auto nearest =
        number ? wholePart(std::round(*number * static_cast<double>(kOneReal))) : std::nullopt;
    if (!nearest)
        notA("um valor em dinheiro", value);
    return {*nearest};
}

double asNumber(const Value& value) {
    if (jet::isNull(value))
        return 0;
    const auto number = anyNumber(value);
    if (!number)
        notA("um número", value);
    return *number;
}

Date asDate(const Value& value) {
    if (jet::isNull(value))
        return {};
    const auto date = anyDate(value);
    if (!date)
        notA("uma data", value);
    return *date;
}

bool asBoolean(const Value& value) {
    if (jet::isNull(value))
        return false;
    const auto yes = anyBoolean(value);
    if (!yes)
        notA("sim ou não", value);
    return *yes;
}

} // namespace ado
