#include "ado/engine/AccessPlan.h"

#include <algorithm>
#include <cmath>

namespace ado {

namespace {

using jet::ColumnType;

constexpr double kRowByIndex = 4; ///< an entry and a row somewhere, against the next row of a scan
constexpr double kHalfOpenPart = 4;
constexpr double kBetweenPart = 16;

/// Whether equal and ordered keys are found by the values that SQL compares.
bool canSearch(const jet::Column& column) {
    switch (column.type) {
    case ColumnType::boolean:
    case ColumnType::byte:
    case ColumnType::integer:
    case ColumnType::longInteger:
    case ColumnType::currency:
    case ColumnType::single:
    case ColumnType::real:
    case ColumnType::date:
        return true;
    case ColumnType::text:
        return column.collation != nullptr;
    default:
        return false;
    }
}

/// Whether the index holds rows in the very order in which SQL has them.
bool ordersExactly(const jet::Column& column) {
    return canSearch(column) && column.type != ColumnType::text &&
           column.type != ColumnType::boolean;
}

class Planner {
public:
    Planner(const jet::Table& table, std::span<const Constraint> constraints,
            std::span<const OrderTerm> order, const PartOf& partOf)
        : table_(table), constraints_(constraints), order_(order), partOf_(partOf),
          rows_(std::max(1.0, static_cast<double>(table.rowCount()))) {}

    [[nodiscard]] AccessPlan best() const {
        AccessPlan best = scan();
        consider(best, oneRow());
        for (std::size_t i = 0; i < table_.indexes().size(); ++i)
            consider(best, byIndex(i));
        return best;
    }

private:
    [[nodiscard]] std::optional<std::size_t> find(std::optional<std::size_t> column,
                                                  Constraint::Kind kind) const {
        const auto found = std::ranges::find_if(constraints_, [&](const Constraint& constraint) {
            return constraint.column == column && constraint.kind == kind;
        });
        if (found == constraints_.end())
            return std::nullopt;
        return static_cast<std::size_t>(found - constraints_.begin());
    }

    /// The cost with what sorting the rows afterwards adds.
    [[nodiscard]] double total(const AccessPlan& plan) const {
        const bool sorted = order_.empty() || plan.ordered || plan.unique;
        return plan.cost + (sorted ? 0 : plan.rows * std::log2(plan.rows + 2));
    }

    void consider(AccessPlan& best, const std::optional<AccessPlan>& other) const {
        if (other && total(*other) < total(best))
            best = *other;
    }

    [[nodiscard]] AccessPlan scan() const {
        AccessPlan plan;
        plan.rows = plan.cost = rows_;
        plan.ordered = order_.size() == 1 && !order_[0].column && !order_[0].descending;
        plan.low = find(std::nullopt, Constraint::Kind::atLeast);
        if (plan.low)
            plan.cost = plan.rows = rows_ / kHalfOpenPart;
        return plan;
    }

    [[nodiscard]] std::optional<AccessPlan> oneRow() const {
        const auto row = find(std::nullopt, Constraint::Kind::equal);
        if (!row)
            return std::nullopt;
        AccessPlan plan;
        plan.way = AccessPlan::Way::row;
        plan.equal = {*row};
        plan.unique = true;
        plan.rows = plan.cost = 1;
        return plan;
    }

    [[nodiscard]] std::optional<AccessPlan> byIndex(std::size_t number) const {
        const jet::Index& index = table_.indexes()[number];
        const auto columns = table_.columns();
        AccessPlan plan;
        plan.way = AccessPlan::Way::index;
        plan.index = number;
        for (const jet::IndexColumn& key : index.columns) {
            if (!canSearch(columns[key.column]))
                break;
            if (const auto equal = find(key.column, Constraint::Kind::equal)) {
                plan.equal.push_back(*equal);
                continue;
            }
            plan.low = find(key.column, Constraint::Kind::atLeast);
            plan.high = find(key.column, Constraint::Kind::atMost);
            break;
        }
        const bool narrowed = !plan.equal.empty() || plan.low || plan.high;
        // Rows whose key columns are all null may be missing from the index; a comparison with the
        // first column leaves them out anyway.
        if (!narrowed && index.ignoreNulls)
            return std::nullopt;
        plan.unique = index.unique && plan.equal.size() == index.columns.size();
        order(plan, index);
        if (!narrowed && !plan.ordered)
            return std::nullopt;

        plan.rows = std::max(1.0, rowsOf(plan, narrowed));
        plan.cost = std::log2(rows_ + 1) + plan.rows * kRowByIndex;
        return plan;
    }

    [[nodiscard]] double rowsOf(const AccessPlan& plan, bool narrowed) const {
        if (plan.unique)
            return 1;
        if (const auto part = narrowed ? partOf_(plan) : std::nullopt)
            return rows_ * *part;
        const double rows = rows_ / std::pow(std::sqrt(rows_), plan.equal.size());
        if (plan.low && plan.high)
            return rows / kBetweenPart;
        return plan.low || plan.high ? rows / kHalfOpenPart : rows;
    }

    /// Whether the index gives the wanted order, and which way.
    void order(AccessPlan& plan, const jet::Index& index) const {
        if (order_.empty())
            return;
        const auto fixed = [&](const OrderTerm& term) {
            return std::ranges::any_of(
                plan.equal, [&](std::size_t i) { return constraints_[i].column == term.column; });
        };
        std::optional<bool> backwards;
        std::size_t at = plan.equal.size();
        for (const OrderTerm& term : order_) {
            if (fixed(term))
                continue;
            if (at == index.columns.size() && index.unique)
                break; // the terms that follow find no equal rows to order
            if (at == index.columns.size() || term.column != index.columns[at].column ||
                !ordersExactly(table_.columns()[*term.column]))
                return;
            const bool against = term.descending == index.columns[at].ascending;
            if (backwards.value_or(against) != against)
                return;
            backwards = against;
            ++at;
        }
        plan.ordered = true;
        plan.backwards = backwards.value_or(false);
    }

    const jet::Table& table_;
    std::span<const Constraint> constraints_;
    std::span<const OrderTerm> order_;
    const PartOf& partOf_;
    double rows_;
};

} // namespace

AccessPlan choosePlan(const jet::Table& table, std::span<const Constraint> constraints,
                      std::span<const OrderTerm> order, const PartOf& partOf) {
    return Planner(table, constraints, order, partOf).best();
}

} // namespace ado
