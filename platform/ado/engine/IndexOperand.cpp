#include "ado/engine/IndexOperand.h"

#include "jet/Numbers.h"
#include "jet/TableDefinition.h"

#include <sqlite3.h>

#include <cmath>
#include <limits>

namespace ado {

namespace {

using jet::Column;
using jet::ColumnType;
using jet::Value;

constexpr double kExactDoubles = 9007199254740992.0; // 2 to the 53rd

/// Nothing if no whole number, rounded as said, stands for it. A bound rounded outwards includes
/// more rows, never fewer.
std::optional<std::int64_t> wholeOperand(sqlite3_value* operand, double scale, Rounding rounding) {
    if (sqlite3_value_type(operand) == SQLITE_INTEGER && scale == 1)
        return sqlite3_value_int64(operand);
    const double exact = sqlite3_value_double(operand) * scale;
    if (!(std::fabs(exact) < kExactDoubles))
        return std::nullopt;
    double whole = std::nearbyint(exact);
    if (whole / scale != sqlite3_value_double(operand)) {
        if (rounding == Rounding::none)
            return std::nullopt;
        whole = rounding == Rounding::down ? std::floor(exact) - 1 : std::ceil(exact) + 1;
    }
    return static_cast<std::int64_t>(whole);
}

template <class T>
std::optional<Value> within(std::optional<std::int64_t> number) {
    if (!number || *number < std::numeric_limits<T>::min() ||
        *number > std::numeric_limits<T>::max())
        return std::nullopt;
    return Value{*number};
}

} // namespace

std::optional<Value> operandFor(const Column& column, sqlite3_value* operand, Rounding rounding) {
    if (column.type == ColumnType::text) {
        // A number compares with a text as a number, which the index doesn't order by.
        if (sqlite3_value_type(operand) != SQLITE_TEXT)
            return std::nullopt;
        return std::string(reinterpret_cast<const char*>(sqlite3_value_text(operand)),
                           static_cast<std::size_t>(sqlite3_value_bytes(operand)));
    }
    const int type = sqlite3_value_numeric_type(operand);
    if (type != SQLITE_INTEGER && type != SQLITE_FLOAT)
        return std::nullopt;
    switch (column.type) {
    case ColumnType::boolean:
        if (const auto yes = wholeOperand(operand, 1, Rounding::none))
            return *yes == 0 || *yes == -1 ? std::optional<Value>(*yes != 0) : std::nullopt;
        return std::nullopt;
    case ColumnType::byte:
        return within<std::uint8_t>(wholeOperand(operand, 1, rounding));
    case ColumnType::integer:
        return within<std::int16_t>(wholeOperand(operand, 1, rounding));
    case ColumnType::longInteger:
        return within<std::int32_t>(wholeOperand(operand, 1, rounding));
    case ColumnType::currency:
        if (const auto amount = wholeOperand(operand, 10000, rounding))
            return jet::Currency{*amount};
        return std::nullopt;
    case ColumnType::single: {
        const auto nearest = static_cast<float>(sqlite3_value_double(operand));
        const bool exact = jet::asWritten(nearest) == sqlite3_value_double(operand);
        if (!std::isfinite(nearest) || (!exact && rounding == Rounding::none))
            return std::nullopt;
        return static_cast<double>(nearest);
    }
    case ColumnType::real:
        return sqlite3_value_double(operand);
    case ColumnType::date: {
        const jet::Date date{sqlite3_value_double(operand)};
        return date.inRange() ? std::optional<Value>(date) : std::nullopt;
    }
    default: // unreached: columns of other types aren't searched
        return std::nullopt;
    }
}

} // namespace ado
