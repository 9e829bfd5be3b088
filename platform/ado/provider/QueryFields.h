#pragma once

#include "ado/TableShape.h"
#include "ado/dialect/SqlDialect.h"

#include <map>
#include <optional>
#include <set>

namespace ado {

/// One field of a query. Of a live one `table` and `column` say where it is read; `qualifier` is
/// the name that it goes by beside the table's own ("bancos.nome").
struct QueryField {
    std::string name;
    std::string qualifier;
    std::size_t table = 0;
    std::size_t column = 0;
};

/// The fields of a query, and all the names that they may be asked for by.
class QueryFields {
public:
    QueryFields() = default;
    /// The columns that a plain select names, of its tables; nothing if one isn't theirs.
    [[nodiscard]] static std::optional<QueryFields> of(const Select& select,
                                                       std::vector<TableShape> tables);
    /// What the statement of a select computes: the name of each column, and that of the table it
    /// comes from unchanged, or "".
    struct Computed {
        std::string name;
        std::string table;
    };
    QueryFields(const Select& select, const std::vector<Computed>& columns);

    [[nodiscard]] const std::vector<QueryField>& all() const noexcept { return fields_; }
    /// Whether the select names a column that several of its tables have.
    [[nodiscard]] bool isAmbiguous() const noexcept { return ambiguous_; }

    /// The place of a table among those of the select. @throws Error{notFound}.
    [[nodiscard]] std::size_t tableNamed(std::string_view name) const;
    /// kNoField for a name that no field has but one may have: see addOptional().
    /// @throws Error{notFound} for any other name that no field has, or several have.
    [[nodiscard]] std::size_t fieldNamed(std::string_view name) const;
    static constexpr std::size_t kNoField = static_cast<std::size_t>(-1);

    /// Lets fieldNamed() be asked for a field that there may not be.
    void addOptional(std::string_view name);
    /// Where there is no field of this name, optional or not: a sentence that says so.
    [[nodiscard]] std::optional<std::string> missing(std::string_view name) const;
    /// Lets a field go by another name as well; one that has the name already keeps it.
    /// @throws Error{notFound}.
    void addAlias(const std::string& alias, std::string_view field);

    /// How the names of a condition or an order are spelled, `ofFile` where nothing is known here.
    /// Mustn't outlive this.
    [[nodiscard]] Spelling spelling(const Spelling& ofFile) const;

private:
    [[nodiscard]] bool addItem(const SelectItem& item);
    [[nodiscard]] std::vector<std::size_t> tablesOf(std::string_view qualifier) const;
    [[nodiscard]] bool has(std::string_view name) const;
    [[nodiscard]] bool isOf(const QueryField& field, const std::string& qualifier) const;
    [[nodiscard]] std::string spelledColumn(std::string_view name, std::span<const std::string> own,
                                            const Spelling& ofFile) const;
    [[nodiscard]] std::string sentenceForMissing(std::string_view name) const;

    std::vector<SelectedTable> from_;
    std::vector<TableShape> tables_; ///< that the fields are read from; none if they are computed
    std::vector<QueryField> fields_;
    bool ambiguous_ = false;
    std::map<std::string, std::string> aliases_; ///< folded, and the column that each stands for
    std::set<std::string> optional_;             ///< folded
    mutable std::map<std::string, std::size_t, std::less<>> named_; ///< names asked for so far
};

} // namespace ado
