#pragma once

#include "jet/rule/Call.h"

#include <span>
#include <string_view>

/// The functions that rules and defaults may call.
///
/// A null in the place of what a function works on gives null; where it needs a number, a place or
/// a unit it is an error. Everything throws Error{outOfRange}, its what() a phrase in Portuguese,
/// for values that a function has no answer to.
namespace jet {

struct Function {
    std::string_view name; ///< in lower case
    std::size_t least;     ///< arguments
    std::size_t most;
    Value (*body)(const Call& call);
    bool givesText = false; ///< may be written with a $ behind its name
};

[[nodiscard]] std::span<const Function> knownFunctions() noexcept;

} // namespace jet
