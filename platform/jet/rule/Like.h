#pragma once

#include "jet/text/Collation.h"

#include <string_view>

namespace jet {

/// Whether `text` fits `pattern`: * any characters, ? one, # a digit, [a-z_] one of these, [!a-z]
/// one that isn't, [*] a sign that would mean something else. Upper and lower case are the same,
/// and a range goes as in `order`. Takes a bounded number of steps, whatever it is given.
/// @throws Error{outOfRange}, its what() a phrase, beyond that number or if a bracket isn't closed.
[[nodiscard]] bool isLike(std::string_view text, std::string_view pattern, const Collation& order);

/// Whether every bracket of a pattern is closed.
[[nodiscard]] bool isPattern(std::string_view pattern);

} // namespace jet
