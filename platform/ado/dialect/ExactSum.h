#pragma once

#include <cmath>
#include <cstdint>

namespace ado {

/// The state of one sum or avg; begins as zero bytes, as SQLite gives it. Multiples of 1/10000 are
/// added exactly.
struct ExactSum {
    std::int64_t count;
    std::int64_t wholes;         ///< of the whole numbers
    std::int64_t tenThousandths; ///< of the multiples of 1/10000
    double rest;                 ///< of all others, and of what didn't fit above
    bool fractions;              ///< whether anything but whole numbers has come

    void add(std::int64_t number) {
        ++count;
        if (!addTo(wholes, number)) {
            rest += static_cast<double>(number);
            fractions = true;
        }
    }
    void add(double number) {
        constexpr double kExact = 9007199254740992.0; // 2 to the 53rd
        ++count;
        fractions = true;
        const double scaled = number * 10000.0;
        if (std::fabs(scaled) < kExact) {
            const auto whole = static_cast<std::int64_t>(scaled + std::copysign(0.5, scaled));
            const auto rounded = static_cast<double>(whole);
            if (rounded / 10000.0 == number && addTo(tenThousandths, whole))
                return;
        }
        rest += number;
    }
    [[nodiscard]] double total() const {
        std::int64_t together = 0;
        if (!__builtin_mul_overflow(wholes, std::int64_t{10000}, &together) &&
            !__builtin_add_overflow(together, tenThousandths, &together))
            return inUnits(together) + rest;
        return static_cast<double>(wholes) + inUnits(tenThousandths) + rest;
    }

private:
    /// False, and nothing is added, if the sum doesn't fit.
    static bool addTo(std::int64_t& sum, std::int64_t number) {
        std::int64_t together = 0;
        const bool fits = !__builtin_add_overflow(sum, number, &together);
        if (fits)
            sum = together;
        return fits;
    }
    static double inUnits(std::int64_t tenThousandths) {
        return static_cast<double>(tenThousandths) / 10000.0;
    }
};

} // namespace ado
