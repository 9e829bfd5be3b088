#pragma once

#include "jet/Table.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

/// Which way to a table's rows is the cheapest for a statement.
namespace ado {

/// What the statement asks of one column: a comparison that a row has to stand.
struct Constraint {
    enum class Kind : std::uint8_t { equal, atLeast, atMost };
    std::optional<std::size_t> column; ///< nothing: the row's id
    Kind kind;
};

/// One term of the order that the statement wants.
struct OrderTerm {
    std::optional<std::size_t> column; ///< nothing: the row's id
    bool descending;
};

/// A way to the rows.
struct AccessPlan {
    enum class Way : std::uint8_t { scan, row, index };
    Way way = Way::scan;
    std::size_t index = 0;
    /// Places in the list of constraints: those of the index's first columns, in their order.
    std::vector<std::size_t> equal;
    /// Those of its next column. A scan may have a lower bound for the row's id.
    std::optional<std::size_t> low;
    std::optional<std::size_t> high;
    bool backwards = false; ///< of an index
    bool ordered = false;   ///< rows come as the statement wants them
    bool unique = false;    ///< one row at most
    double rows = 0;        ///< guessed
    double cost = 0;        ///< in rows of a scan
};

/// How large a part of the table, 0 to 1, lies in the stretch of its index that a plan walks;
/// nothing if that isn't known before the statement runs.
using PartOf = std::function<std::optional<double>(const AccessPlan&)>;

/// The best plan. Where `partOf` doesn't know, the guess is by shape, as there are no statistics in
/// the file: a whole unique key finds one row, an equality the square root of the table's rows, a
/// range a part of them.
[[nodiscard]] AccessPlan choosePlan(const jet::Table& table,
                                    std::span<const Constraint> constraints,
                                    std::span<const OrderTerm> order, const PartOf& partOf);

} // namespace ado
