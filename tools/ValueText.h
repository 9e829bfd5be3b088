#pragma once

#include "jet/Types.h"

#include <string>
#include <string_view>

/// A field as `dump` writes it: dates as yyyy-mm-dd with Thh:mm:ss if there is a time of day,
/// amounts with a point and four decimals, yes/no as 1 or 0, bytes in hexadecimal, text as it is.
/// Null is nothing.
[[nodiscard]] std::string textOf(const jet::Value& value);

/// A field of a CSV record: quoted where RFC 4180 asks for it, and where it is an empty text, which
/// an unquoted one can't tell from null.
[[nodiscard]] std::string csvOf(const jet::Value& value);

/// Places that UTF-8 text takes in a line of a terminal.
[[nodiscard]] std::size_t widthOf(std::string_view text) noexcept;
