#include "ado/engine/PackedPlan.h"

#include "ado/engine/IndexOperand.h"
#include "jet/Error.h"

namespace ado {

PackedPlan PackedPlan::of(const AccessPlan& plan) {
    return {plan.way,       plan.low.has_value(), plan.high.has_value(),
            plan.backwards, plan.equal.size(),    plan.index};
}

int PackedPlan::pack() const {
    return static_cast<int>(static_cast<unsigned>(way) | (low ? 4U : 0U) | (high ? 8U : 0U) |
                            (backwards ? 16U : 0U) | static_cast<unsigned>(equal << 8) |
                            static_cast<unsigned>(index << 16));
}

PackedPlan PackedPlan::unpack(int number) {
    const auto bits = static_cast<unsigned>(number);
    return {static_cast<AccessPlan::Way>(bits & 3U),
            (bits & 4U) != 0,
            (bits & 8U) != 0,
            (bits & 16U) != 0,
            (bits >> 8) & 0xFFU,
            (bits >> 16) & 0x7FFFU};
}

jet::KeyRange rangeOf(const jet::Table& table, const PackedPlan& plan,
                      std::span<sqlite3_value*> operands) {
    const jet::Index& index = table.indexes()[plan.index];
    const auto column = [&](std::size_t place) -> const jet::Column& {
        return table.columns()[index.columns[place].column];
    };
    std::vector<jet::Value> equal;
    for (std::size_t i = 0; i < plan.equal; ++i) {
        auto value = operandFor(column(i), operands[i], Rounding::none);
        if (!value)
            return {};
        equal.push_back(std::move(*value));
    }
    std::size_t at = plan.equal;
    std::optional<jet::Value> low;
    std::optional<jet::Value> high;
    if (plan.low)
        low = operandFor(column(plan.equal), operands[at++], Rounding::down);
    if (plan.high)
        high = operandFor(column(plan.equal), operands[at], Rounding::up);
    try {
        if (low || high)
            return table.keysBetween(plan.index, equal, low, high);
        if (!equal.empty())
            return table.keysEqual(plan.index, equal);
    } catch (const jet::Error& error) {
        // No row can hold such a value, but one may still compare as the statement wants.
        if (error.code() != jet::Errc::outOfRange) // unreached: a key is made without the disk
            throw;
    }
    return {};
}

} // namespace ado
