#pragma once

#include "jet/Types.h"

#include <optional>
#include <string_view>

/// Stored numbers as decimal ones.
namespace jet {

/// The number that a single stands for: of all that it would be stored for, the one of the fewest
/// digits. So 436.88 is read back as it was written, though no single equals it.
[[nodiscard]] double asWritten(float single) noexcept;

/// Of digits, the last `scale` of them decimals; nothing if there are more than 28, leading zeros
/// not counted.
[[nodiscard]] std::optional<Numeric> numericFrom(bool negative, std::string_view digits,
                                                 std::uint8_t scale);

} // namespace jet
