#pragma once

#include "ado/Recordset.h"
#include "ado/Rows.h"

#include <map>
#include <set>

namespace ado {

/// What a recordset asks the file: its source with filter and sort, as SQL, and the fields it has.
class Query {
public:
    /// One field. Of a live query `table` and `column` say where it is read; `qualifier` is the
    /// name that it goes by beside the table's own ("bancos.nome").
    struct QueryField {
        std::string name;
        std::string qualifier;
        std::size_t table = 0;
        std::size_t column = 0;
    };

    /// @throws Error{syntax, notFound}.
    Query(jet::Database& database, Engine& engine, const std::string& source, CommandType command);

    /// Whether its rows are rows of tables, read live; else they are computed by SQLite.
    [[nodiscard]] bool live() const noexcept { return select_.plain; }
    /// Whether rows can be changed: they are those of one table.
    [[nodiscard]] bool updatable() const noexcept { return live() && tables_.size() == 1; }
    /// Of a live query.
    [[nodiscard]] const std::vector<jet::Table*>& tables() const noexcept { return tables_; }
    [[nodiscard]] const std::vector<QueryField>& fields() const noexcept { return fields_; }
    /// The place of a table among tables(). @throws Error{notFound}.
    [[nodiscard]] std::size_t tableNamed(std::string_view name) const;
    /// kNoField for a name that no field has but one may have: see addOptional().
    /// @throws Error{notFound} for any other name that no field has, or several have.
    [[nodiscard]] std::size_t fieldNamed(std::string_view name) const;
    static constexpr std::size_t kNoField = static_cast<std::size_t>(-1);
    /// Lets fieldNamed() be asked for a field that there may not be.
    void addOptional(std::string_view name);
    /// A sentence that says that there is no field of this name.
    [[nodiscard]] std::string missing(std::string_view name) const;
    /// Lets a field go by another name as well, in fieldNamed(), criteria, filter and sort; a field
    /// that has the name already keeps it. @throws Error{notFound}.
    void addAlias(const std::string& alias, std::string_view field);

    [[nodiscard]] const std::string& filter() const noexcept { return filter_; }
    [[nodiscard]] const std::string& sort() const noexcept { return sort_; }
    /// "" takes it away. @throws Error{syntax, notFound}: the old one stays.
    void setFilter(const std::string& condition);
    void setSort(const std::string& fields);

    /// The rows, before the first.
    [[nodiscard]] std::unique_ptr<Rows> rows();

    /// The ids of the rows that meet a criterion as well: one for each table, in any order.
    /// @throws Error{syntax, notFound}, Error{misuse} if not live.
    [[nodiscard]] Statement candidates(const std::string& criterion);
    /// Of a whole table: the id of the first row that meets a criterion, from the one whose key
    /// columns are bound as parameters on. What is bound is named by walkKey().
    [[nodiscard]] Statement firstFrom(const std::string& criterion);
    /// The columns whose values place a row in a walk over the whole table; none: its id does.
    [[nodiscard]] const std::vector<jet::IndexColumn>& walkKey() const noexcept { return key_; }

    /// Puts changed rows of a list, from which erased ones have gone already, in or out and at
    /// their places; false if that can't be told row by row, or costs more than asking anew: the
    /// list is as it was or half changed then, and of no use.
    [[nodiscard]] bool replace(RowList& list, const std::vector<jet::RowId>& changed);

private:
    struct ColumnOrder {
        std::size_t column;
        bool descending;
    };

    /// The file's spelling of a name, aliases included.
    [[nodiscard]] Spelling spelling();
    void describeLive();
    void describeComputed();
    void addField(const SelectItem& item, std::size_t table, std::size_t column);
    [[nodiscard]] std::vector<std::size_t> tablesOf(const std::string& qualifier) const;
    [[nodiscard]] bool isWholeTable() const;
    [[nodiscard]] std::string rowIds() const;
    [[nodiscard]] std::string statement() const;
    /// @throws what Engine::prepare() throws, if statement() isn't right.
    void tryStatement();
    [[nodiscard]] Statement takeStatement();
    [[nodiscard]] std::string where(const std::string& more) const;
    [[nodiscard]] std::string order() const;
    /// That a row isn't before the one whose key columns are bound, its first `place` columns
    /// equal.
    [[nodiscard]] std::string fromKey(std::size_t place) const;
    [[nodiscard]] std::string orderOf(const std::vector<SortTerm>& terms) const;
    void findColumnOrder();
    [[nodiscard]] int compare(std::span<const jet::Value> a, std::span<const jet::Value> b) const;
    [[nodiscard]] std::optional<std::vector<jet::Value>> orderValues(jet::RowReader& reader,
                                                                     jet::RowId row) const;

    jet::Database& database_;
    Engine& engine_;
    Select select_;
    std::vector<jet::Table*> tables_;
    std::vector<jet::IndexColumn> key_;
    std::vector<QueryField> fields_;
    std::map<std::string, std::string> aliases_; ///< folded, and the column that each stands for
    std::set<std::string> optional_;             ///< folded
    mutable std::map<std::string, std::size_t, std::less<>> named_; ///< names asked for so far
    struct Tried {
        std::string sql;
        Statement statement;
    };
    std::optional<Tried> tried_; ///< what was found to be right and waits for rows()

    std::string filter_;
    std::string filterSql_;
    std::string sort_;
    std::vector<SortTerm> sortTerms_;
    /// The order of a list by columns, its key's included; nothing if it isn't by columns.
    std::optional<std::vector<ColumnOrder>> columnOrder_;
};

} // namespace ado
