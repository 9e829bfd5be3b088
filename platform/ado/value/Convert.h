#pragma once

#include "jet/Types.h"

namespace jet {
struct Column;
}

/// Values turned from one type into another, nothing lost on the way. Everything throws
/// Error{outOfRange} with a sentence that quotes the value and, where there is one, names the
/// field.
namespace ado {

/// A value as a column stores it. Texts are read as WrittenForm.h says.
///
/// Numbers: to a whole number only what is whole; to an amount or a decimal never a double, because
/// money doesn't pass through binary fractions; an amount to a single or double only if it is read
/// back as it is. A yes is -1. Null stays null.
[[nodiscard]] jet::Value converted(const jet::Value& value, const jet::Column& column);

/// What the questions of FieldValue promise.
[[nodiscard]] std::int64_t asInteger(const jet::Value& value);
[[nodiscard]] jet::Currency asCurrency(const jet::Value& value);
[[nodiscard]] double asNumber(const jet::Value& value);
[[nodiscard]] jet::Date asDate(const jet::Value& value);
[[nodiscard]] bool asBoolean(const jet::Value& value);

} // namespace ado
