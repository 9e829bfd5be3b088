#pragma once

#include "jet/Types.h"

#include <string>
#include <string_view>

namespace jet {
struct Column;
}

/// Values turned from one type into another, nothing lost on the way; texts as the operator writes
/// and reads them in Brazil. Everything throws Error{outOfRange} with a sentence that quotes the
/// value and, where there is one, names the field.
namespace ado {

/// A value as a column stores it.
///
/// Text to a number: digits, a sign before, blanks around. A comma begins the decimals and points
/// stand between thousands ("1.234,56"); without a comma, points that stand between groups of
/// three are thousands ("1.234" is 1234), and any other single point begins the decimals
/// ("1234.5", "0.5"). Text to a date: "31/12/2024", "31/12/2024 08:30", "31/12/2024 08:30:00".
/// Text to yes/no: "Verdadeiro", "sim", "true", "-1", "1" and "Falso", "não", "false", "0", in any
/// case. Numbers: to a whole number only what is whole; to an amount or a decimal never a double,
/// because money doesn't pass through binary fractions; an amount to a single or double only if it
/// is read back as it is. A yes is -1. Null stays null.
[[nodiscard]] jet::Value converted(const jet::Value& value, const jet::Column& column);

/// What FieldValue::text() promises. Bytes have no text.
[[nodiscard]] std::string asText(const jet::Value& value);
[[nodiscard]] std::int64_t asInteger(const jet::Value& value);
[[nodiscard]] jet::Currency asCurrency(const jet::Value& value);
[[nodiscard]] double asNumber(const jet::Value& value);
[[nodiscard]] jet::Date asDate(const jet::Value& value);
[[nodiscard]] bool asBoolean(const jet::Value& value);

} // namespace ado
