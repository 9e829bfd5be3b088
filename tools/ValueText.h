#pragma once

#include "jet/TableDefinition.h"

#include <optional>
#include <string>
#include <string_view>

/// A field as `dump` writes it: dates as yyyy-mm-dd with Thh:mm:ss if there is a time of day,
/// amounts with a point and four decimals, yes/no as 1 or 0, bytes in hexadecimal, text as it is.
/// Null is nothing.
[[nodiscard]] std::string textOf(const jet::Value& value);

/// A field of a CSV record: quoted where RFC 4180 asks for it, and where it is an empty text, which
/// an unquoted one can't tell from null.
[[nodiscard]] std::string csvOf(const jet::Value& value);

/// The same for JSON: null, true and false; whole numbers as numbers; all else, exact, as dump
/// writes it, in quotes.
[[nodiscard]] std::string jsonOf(const jet::Value& value);
/// A text in quotes, as JSON has it.
[[nodiscard]] std::string jsonText(std::string_view utf8);

/// What textOf() has written, as a value of that column; nothing if it can't be one.
[[nodiscard]] std::optional<jet::Value> valueFrom(const jet::Column& column,
                                                  const std::string& text);

/// Places that UTF-8 text takes in a line of a terminal.
[[nodiscard]] std::size_t widthOf(std::string_view text) noexcept;
