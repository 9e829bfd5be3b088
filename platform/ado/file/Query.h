#pragma once

#include "ado/RecordsetTypes.h"
#include "ado/file/QuerySql.h"
#include "ado/file/Rows.h"
#include "ado/provider/QueryFields.h"

namespace ado {

class Engine;

/// A table of a file as recordsets know it.
[[nodiscard]] inline TableShape shapeOf(const jet::Table& table) {
    return {table.name(), table.columns()};
}

/// What a cursor asks the file: its source with filter and sort, the fields it has, and the rows
/// that come of it.
class Query {
public:
    /// @throws Error{syntax, notFound}.
    Query(jet::Database& database, Engine& engine, const std::string& source, CommandType command);

    /// Whether its rows are rows of tables, read live; else they are computed by SQLite.
    [[nodiscard]] bool live() const noexcept { return sql_.live(); }
    /// Whether rows can be changed: they are those of one table.
    [[nodiscard]] bool updatable() const noexcept { return live() && tables().size() == 1; }
    /// Of a live query.
    [[nodiscard]] const std::vector<jet::Table*>& tables() const noexcept { return tables_; }
    [[nodiscard]] QueryFields& fields() noexcept { return fields_; }
    [[nodiscard]] const QueryFields& fields() const noexcept { return fields_; }

    [[nodiscard]] const std::string& filter() const noexcept { return filter_; }
    [[nodiscard]] const std::string& sort() const noexcept { return sort_; }
    /// "" takes it away. @throws Error{syntax, notFound}: the old one stays.
    void setFilter(const std::string& condition);
    void setSort(const std::string& fields);

    /// The rows, before the first: LiveRows if live(), TableRows if updatable(), else ComputedRows.
    /// Those of a join or computed ones may be asked for to be walked forward only.
    [[nodiscard]] std::unique_ptr<Rows> rows(bool forwardOnly);
    /// What LiveRows::find() asks for: the first row of a whole table that meets a criterion, from
    /// the one whose key is bound on; of all others the ids of the rows that meet it.
    /// @throws Error{syntax, notFound}, Error{misuse} if not live.
    [[nodiscard]] PreparedStatement finder(const std::string& criterion);

private:
    [[nodiscard]] bool describeLive(const Select& select);
    void restrict(QuerySql::Restriction to);
    [[nodiscard]] PreparedStatement takeStatement();

    jet::Database& database_;
    Engine& engine_;
    std::vector<jet::Table*> tables_; ///< of a live query
    QueryFields fields_;
    QuerySql sql_;
    std::string filter_;
    std::string sort_;
    std::optional<PreparedStatement> tried_; ///< of sql_, found to be right; waits for rows()
};

} // namespace ado
