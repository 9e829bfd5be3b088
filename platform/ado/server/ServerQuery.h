#pragma once

#include "ado/RecordsetTypes.h"
#include "ado/provider/QueryFields.h"
#include "ado/server/ServerCatalog.h"
#include "ado/server/ServerWire.h"
#include "jet/Table.h"

#include <optional>

namespace ado {

/// A row of one table, and what its statement's order goes by.
struct ServerRow {
    /// Of all columns of the table; of one asked for by its query for its fields only, see there.
    std::vector<std::optional<std::string>> values;
    std::int64_t fingerprint = 0; ///< of all that is stored of it
    /// By the columns of the order, where that isn't what its values say by now; else empty.
    std::vector<std::optional<std::string>> place;
};

/// The statements of an open recordset: its source, with a condition and an order.
///
/// Rows of one table with a key are asked for in ranges of the order, which ends with the key, so
/// that each row has a place of its own and any of them can be gone on from.
class ServerQuery {
public:
    /// @throws Error{syntax, notFound}.
    ServerQuery(const ServerCatalog& catalog, const std::string& source, CommandType command);

    /// The table whose rows these are, if they go by its key; else null.
    [[nodiscard]] const ServerTable* keyed() const noexcept { return keyed_; }
    /// Whether its rows are rows of tables.
    [[nodiscard]] bool live() const noexcept { return !tables_.empty(); }
    [[nodiscard]] const std::vector<const ServerTable*>& tables() const noexcept { return tables_; }
    [[nodiscard]] QueryFields& fields() noexcept { return fields_; }
    /// Of one that isn't live: what its statement gives.
    void setFields(const std::vector<QueryFields::Computed>& columns) {
        fields_ = QueryFields(select_, columns);
    }
    /// Whether it is a whole table in the order of its key.
    [[nodiscard]] bool isWholeTable() const;
    /// Whether rows of other tables say which these are.
    [[nodiscard]] bool dependsOnOthers() const noexcept { return dependsOnOthers_; }
    /// Of a keyed one: the key's value, if the condition says that it is a certain number.
    [[nodiscard]] std::optional<std::string> keyIn(std::string_view condition) const;
    [[nodiscard]] bool hasKey(const ServerRow& row, const std::string& value) const {
        return valueIn(row, keyed_->key.front()) == value;
    }
    [[nodiscard]] bool areSame(const ServerRow& a, const ServerRow& b) const;

    /// Of each row nothing is asked for but its fields and its place, until it is to be changed or
    /// compared: what an index has needn't be looked for elsewhere, nor is a fingerprint made.
    void askForFieldsOnly();
    void askForAll();
    [[nodiscard]] bool asksForAll() const noexcept { return all_; }
    /// A column of a row as this asks for it.
    [[nodiscard]] const std::optional<std::string>& valueIn(const ServerRow& row,
                                                            std::size_t column) const {
        return row.values[places_[column]];
    }
    /// The row with a place for each column of the table, as one that is asked for all has it.
    [[nodiscard]] ServerRow spread(ServerRow row) const;

    /// In the words of the dialect; "" takes it away. @throws Error{syntax, notFound}.
    void setFilter(const std::string& condition, const Spelling& spelling);
    void setSort(const std::string& fields, const Spelling& spelling);

    // ---- of any
    /// All rows: of a live one the fields, then a fingerprint for each table.
    [[nodiscard]] ServerStatement all() const;

    // ---- of keyed() ones
    [[nodiscard]] ServerStatement count() const;
    enum class From : std::uint8_t { end, after, at };
    /// `most` rows from an end, or from a place on, forwards or backwards; `more` is a condition of
    /// the dialect, or empty.
    [[nodiscard]] ServerStatement range(From from, bool forwards, const ServerRow* place,
                                        std::size_t most, const std::string& more,
                                        const Spelling& spelling) const;
    /// The row with the key of that one, whether or not it belongs to the rows.
    [[nodiscard]] ServerStatement same(const ServerRow& row) const;
    /// By the columns of the order.
    [[nodiscard]] std::vector<std::optional<std::string>> placeOf(const ServerRow& row) const;
    /// That one row.
    [[nodiscard]] ServerRow rowOf(const ServerRows& rows, int row) const;

    // ---- changes of the table; each gives the row as it is then
    [[nodiscard]] ServerStatement insert(std::span<const jet::Assignment> given) const;
    [[nodiscard]] ServerStatement update(const ServerRow& row,
                                         std::span<const jet::Assignment> given,
                                         std::int64_t fingerprint) const;
    [[nodiscard]] ServerStatement erase(const ServerRow& row, std::int64_t fingerprint) const;

private:
    struct OrderColumn {
        std::size_t column;
        bool descending;
    };
    [[nodiscard]] std::vector<OrderColumn> orderBy(const std::vector<SortTerm>& terms) const;
    [[nodiscard]] std::string alias() const;
    [[nodiscard]] std::string column(std::size_t place, const std::string& table) const;
    [[nodiscard]] std::string ordered(std::size_t place) const;
    [[nodiscard]] std::string rowOfTable(const std::string& table) const;
    void ask();
    void lookForOthers();
    [[nodiscard]] std::string where(const std::string& more) const;
    [[nodiscard]] std::string sourceOrder() const;
    [[nodiscard]] bool isKey(std::size_t column) const;
    [[nodiscard]] bool endsAlike(std::size_t term) const;
    [[nodiscard]] const std::optional<std::string>& placeAt(const ServerRow& row,
                                                            std::size_t term) const;
    [[nodiscard]] std::string valueAt(const ServerRow& place, std::size_t term,
                                      std::vector<Parameter>& parameters) const;
    [[nodiscard]] std::string beyond(const ServerRow& place, std::size_t term, bool forwards,
                                     bool inclusive, std::vector<Parameter>& parameters) const;
    [[nodiscard]] std::string isKeyOf(const ServerRow& row, const std::string& table,
                                      std::vector<Parameter>& parameters) const;
    [[nodiscard]] Parameter stored(const jet::Assignment& given) const;

    Select select_;
    QueryFields fields_;
    std::vector<const ServerTable*> tables_;
    const ServerTable* keyed_ = nullptr;
    std::vector<OrderColumn> order_;  ///< of keyed(): the key's columns come last
    std::vector<std::size_t> asked_;  ///< of keyed(): the columns that a row is asked for with
    std::vector<std::size_t> places_; ///< and where, by the table's columns, a row has them
    bool dependsOnOthers_ = false;
    bool all_ = true; ///< which are all, and so is its fingerprint
    std::vector<SortTerm> sort_;
    std::string condition_; ///< in the server's words
    std::vector<Parameter> ofSource_;
    std::vector<Parameter> parameters_; ///< of the source and the condition
};

} // namespace ado
