#pragma once

#include "jet/Types.h"
#include "jet/text/Collation.h"

#include <compare>
#include <optional>
#include <string>
#include <string_view>

/// What the operators of rules and defaults do with values.
///
/// Yes/no, whole numbers, amounts, reals, decimals and dates are numbers (yes is -1, a date its
/// days); a text beside a number or a date counts as what is written in it. Amounts and whole
/// numbers are compared, added and subtracted exactly. Null beside anything gives null. Everything
/// throws Error{outOfRange}, its what() a phrase in Portuguese, for values that don't go together
/// and for results that no number can hold.
namespace jet {

/// Nothing if either is null.
[[nodiscard]] std::optional<std::partial_ordering> compareValues(const Value& a, const Value& b,
                                                                 const Collation& order);

[[nodiscard]] Value added(const Value& a, const Value& b); ///< of two texts: joined
[[nodiscard]] Value subtracted(const Value& a, const Value& b);
[[nodiscard]] Value multiplied(const Value& a, const Value& b);
[[nodiscard]] Value divided(const Value& a, const Value& b);
[[nodiscard]] Value negated(const Value& value);
/// As texts, null being an empty one unless both are.
[[nodiscard]] Value joined(const Value& a, const Value& b);

/// What a condition says: nothing for null.
[[nodiscard]] std::optional<bool> truthOf(const Value& value);
/// The number that a value counts as; nothing for null.
[[nodiscard]] std::optional<double> numberOf(const Value& value);
/// A text, a number as the file's rules write it ("12.5"), a date as one writes it in Brazil
/// ("31/12/2026 08:30:00"); nothing for null.
[[nodiscard]] std::optional<std::string> textOf(const Value& value);

} // namespace jet
