#pragma once

#include "jet/Error.h"
#include "jet/Types.h"
#include "jet/text/Collation.h"

#include <span>

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

} // namespace jet
