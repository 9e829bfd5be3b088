#pragma once

#include "jet/Collation.h"
#include "jet/Error.h"
#include "jet/Types.h"

#include <span>
#include <string_view>

/// The functions that rules and defaults may call.
///
/// A null in the place of what a function works on gives null; where it needs a number, a place or
/// a unit it is an error. Everything throws Error{outOfRange}, its what() a phrase in Portuguese,
/// for values that a function has no answer to.
namespace jet {

/// What one evaluation may still do: bytes of texts made, and of texts looked through. However the
/// calls are nested, a rule takes a bounded time and memory.
class Effort {
public:
    void spend(std::size_t bytes) {
        if (bytes > left_)
            throw Error(Errc::outOfRange, "a conta trabalha com texto demais");
        left_ -= bytes;
    }

private:
    std::size_t left_ = std::size_t{64} << 20;
};

/// The values that a function is called with.
struct Call {
    std::span<const Value> arguments;
    const Collation& order; ///< how the file compares texts
    Effort& effort;

    const Value& operator[](std::size_t i) const { return arguments[i]; }
    [[nodiscard]] bool has(std::size_t i) const noexcept { return i < arguments.size(); }
};

struct Function {
    std::string_view name; ///< in lower case
    std::size_t least;     ///< arguments
    std::size_t most;
    Value (*body)(const Call& call);
    bool givesText = false; ///< may be written with a $ behind its name
};

[[nodiscard]] std::span<const Function> knownFunctions() noexcept;

} // namespace jet
