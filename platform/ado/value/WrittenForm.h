#pragma once

#include "jet/Types.h"

#include <optional>
#include <string>
#include <string_view>

/// Values as texts, as the operator writes and reads them in Brazil.
namespace ado {

/// A number as it is written: its digits before and after the decimal sign.
struct WrittenNumber {
    bool negative = false;
    std::string whole;
    std::string decimals; ///< no zeros at the end
};

/// Digits, a sign before, blanks around. A comma begins the decimals and points stand between
/// thousands ("1.234,56"); without a comma, points that stand between groups of three are thousands
/// ("1.234" is 1234), and any other single point begins the decimals ("1234.5", "0.5").
[[nodiscard]] std::optional<WrittenNumber> writtenNumber(std::string_view text);
[[nodiscard]] WrittenNumber writtenNumber(const jet::Numeric& number);

/// The number times 10 to the power of `places`, if that is whole and fits.
[[nodiscard]] std::optional<std::int64_t> scaled(const WrittenNumber& number, std::size_t places);
/// The number as `places` decimals show it, halves away from zero, times 10 to that power.
[[nodiscard]] std::optional<std::int64_t> rounded(WrittenNumber number, std::size_t places);
[[nodiscard]] std::optional<double> nearestDouble(const WrittenNumber& number);

/// "31/12/2024", "31/12/2024 08:30", "31/12/2024 08:30:00".
[[nodiscard]] std::optional<jet::Date> writtenDate(std::string_view text);
/// "Verdadeiro", "sim", "true", "-1", "1" and "Falso", "não", "false", "0", in any case.
[[nodiscard]] std::optional<bool> writtenYesNo(std::string_view text);

/// What FieldValue::text() promises. @throws Error{outOfRange} for bytes, which have no text.
[[nodiscard]] std::string asText(const jet::Value& value);

} // namespace ado
