#pragma once

#include "ado/engine/AccessPlan.h"

struct sqlite3_value;

namespace ado {

/// A plan as the number that SQLite carries from the planning to the search.
struct PackedPlan {
    AccessPlan::Way way;
    bool low;
    bool high;
    bool backwards;
    std::size_t equal; ///< how many of the index's first columns
    std::size_t index;

    [[nodiscard]] static PackedPlan of(const AccessPlan& plan);
    [[nodiscard]] static PackedPlan unpack(int number);
    [[nodiscard]] int pack() const;
};

/// The stretch of the plan's index in which all rows lie that meet the comparisons with these
/// operands: those of the equal columns, then the lower and the upper bound. All of the index where
/// an operand can't be put as a key.
[[nodiscard]] jet::KeyRange rangeOf(const jet::Table& table, const PackedPlan& plan,
                                    std::span<sqlite3_value*> operands);

} // namespace ado
