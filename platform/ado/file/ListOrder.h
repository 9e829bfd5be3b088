#pragma once

#include "ado/dialect/SqlDialect.h"
#include "jet/Database.h"

#include <optional>
#include <span>
#include <vector>

namespace ado {

/// The order of a list over one table: by columns of it, then by its primary key, or else by the
/// row's id.
class ListOrder {
public:
    /// Nothing if one of the terms is no column of the table. The table outlives it.
    [[nodiscard]] static std::optional<ListOrder> by(std::span<const SortTerm> terms,
                                                     const jet::Table& table);

    /// Whether that is the order in which the table itself is walked.
    [[nodiscard]] bool isTablesOwn() const;
    /// Whether the values of all columns can be compared here.
    [[nodiscard]] bool isComparable() const;

    /// What places a row in the order; nothing if there is no such row.
    [[nodiscard]] std::optional<std::vector<jet::Value>> keyOf(jet::RowReader& reader,
                                                               jet::RowId row) const;
    /// Of two such keys, as SQLite orders them: less than 0, 0, more than 0.
    [[nodiscard]] int compare(const jet::Database& database, std::span<const jet::Value> a,
                              std::span<const jet::Value> b) const;

private:
    explicit ListOrder(const jet::Table& table) : table_(&table) {}

    const jet::Table* table_;
    std::vector<jet::IndexColumn> columns_; ///< those of the key come last
    std::size_t ofKey_ = 0;                 ///< how many of them are the key's
};

} // namespace ado
