#pragma once

#include "ado/file/ListOrder.h"

#include <string>

namespace ado {

/// The statements of a query, in SQLite's words: its source, with a condition and an order.
class QuerySql {
public:
    QuerySql() = default;
    /// Of a source whose rows are computed by SQLite.
    [[nodiscard]] static QuerySql ofAnswer(Select select);
    /// Of one whose rows are rows of tables, given by their ids. `tables`: those of the select,
    /// which outlive this.
    [[nodiscard]] static QuerySql ofRows(Select select, const std::vector<jet::Table*>& tables);

    /// Whether its rows are rows of tables.
    [[nodiscard]] bool live() const noexcept { return select_.plain; }

    /// What narrows and orders the rows besides the source; empty for nothing.
    struct Restriction {
        std::string condition;
        std::vector<SortTerm> order;
    };
    [[nodiscard]] const Restriction& restriction() const noexcept { return restriction_; }
    void restrict(Restriction to) { restriction_ = std::move(to); }

    /// All rows in their order.
    [[nodiscard]] std::string all() const;
    /// Of a single table: a row if that of id ?1 is one of all().
    [[nodiscard]] std::string belongs() const;
    /// The rows that meet a condition too, in any order; of a single table it may be more than are
    /// among all().
    [[nodiscard]] std::string meeting(const std::string& condition) const;
    /// Of a single table: the first row of it that meets a condition, from that on whose key
    /// columns (of the primary key; none: the id) are bound as parameters.
    [[nodiscard]] std::string firstFrom(const std::string& condition) const;

    /// Of a single table: the order of its rows; nothing if it isn't by columns.
    [[nodiscard]] std::optional<ListOrder> order() const;
    /// Whether all() is the single table itself, in its own order.
    [[nodiscard]] bool isWholeTable() const;
    /// Whether it depends on nothing but a row itself if it is among all(), and where.
    [[nodiscard]] bool isByRow() const;

private:
    [[nodiscard]] std::string rowIds() const;
    [[nodiscard]] std::string where(const std::string& more = {}) const;
    [[nodiscard]] std::string orderBy() const;
    [[nodiscard]] const std::vector<SortTerm>& sortTerms() const;
    [[nodiscard]] bool isText(const SortTerm& term) const;
    [[nodiscard]] std::string singleTable() const;
    [[nodiscard]] std::string keyColumn(const jet::IndexColumn& key) const;
    [[nodiscard]] std::string notBefore(std::size_t place) const;

    Select select_;
    std::vector<jet::Table*> tables_; ///< none of a source whose rows are computed
    const jet::Table* single_ = nullptr;
    std::vector<jet::IndexColumn> key_; ///< primary, of the single table
    Restriction restriction_;
};

} // namespace ado
