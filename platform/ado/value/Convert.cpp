#include "ado/value/Convert.h"

#include "ado/value/WrittenForm.h"
#include "jet/Error.h"
#include "jet/Numbers.h"
#include "jet/TableDefinition.h"

#include <algorithm>
#include <cmath>
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

std::optional<std::int64_t> wholePart(double number) {
    constexpr double kLimit = 9223372036854775808.0; // 2 to the 63rd
    if (!(number >= -kLimit && number < kLimit))     // nor is NaN
        return std::nullopt;
    return static_cast<std::int64_t>(number);
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
        return scaled(writtenNumber(*decimal), 0);
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
        return exactly(writtenNumber(*decimal));
    if (std::holds_alternative<double>(value)) // near an amount, and nobody can tell which
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
        return written ? nearestDouble(*written) : std::nullopt;
    }
    if (const auto* decimal = std::get_if<jet::Numeric>(&value))
        return nearestDouble(writtenNumber(*decimal));
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
        written = writtenNumber(*decimal);
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
    default:
        return "um texto";
    }
}

[[noreturn]] void notA(const char* what, const Value& value) {
    throw Error(Errc::outOfRange, "O valor lido, " + quoted(value) + ", não é " + what + ".");
}

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
        if (const auto nearest = rounded(writtenNumber(*decimal), kCurrencyDecimals))
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
