#pragma once

#include "jet/Types.h"

#include <cstdint>
#include <optional>

namespace jet {
struct Column;
}
struct sqlite3_value;

namespace ado {

/// Which way a bound of a range goes where no value of the column is exactly it: outwards, so that
/// the range holds more rows, never fewer. `none`: the operand must be met exactly.
enum class Rounding : std::uint8_t { none, down, up };

/// What a statement compares with a column, as a value by which an index on that column is
/// searched; nothing if the index can't be asked for it, as of a fraction in a column of whole
/// numbers. The operand isn't null.
[[nodiscard]] std::optional<jet::Value> operandFor(const jet::Column& column,
                                                   sqlite3_value* operand, Rounding rounding);

} // namespace ado
