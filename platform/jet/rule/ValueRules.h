#pragma once

#include "jet/row/RowView.h"
#include "jet/rule/Expression.h"
#include "jet/rule/Properties.h"

namespace jet {

/// The error of a row that leaves a field empty which the file wants filled in. Who asks has no box
/// for the field, or would have asked for its value: so it says whose field it is and what helps.
[[nodiscard]] Error leftEmpty(const std::string& table, const std::string& column);

/// What the file asks of the values of one table's rows: columns that must be filled in or take no
/// empty text, defaults, and the validation rules of columns and of the table.
class ValueRules {
public:
    /// What is asked of a column, or of the whole row.
    struct Rule {
        std::optional<std::size_t> column; ///< nothing: the table's
        bool required = false;
        bool refusesEmptyText = false;
        std::string defaultText; ///< empty: none
        std::optional<Expression> defaultValue;
        std::string text; ///< of the validation rule; empty: none
        std::optional<Expression> condition;
        std::string message; ///< the rule's own; empty: none
    };

    /// `columns` are the table's and `order` is how the file compares texts; both outlive this.
    ValueRules(std::string table, std::span<const Column> columns, const Collation& order)
        : table_(std::move(table)), columns_(columns), order_(&order) {}

    /// Takes over what a table's properties say. Properties of columns that the table doesn't have,
    /// and those that aren't rules, are passed over.
    void read(const std::vector<PropertyGroup>& groups, const TextCodec& codec);

    [[nodiscard]] bool empty() const noexcept { return rules_.empty(); }
    [[nodiscard]] std::span<const Rule> rules() const noexcept { return rules_; }
    /// The first rule that can't be understood, as a part of a sentence that shows it.
    [[nodiscard]] const std::optional<std::string>& unknown() const noexcept { return unknown_; }

    /// Puts the default of each column that isn't `given` into `values`. Numbered columns have
    /// none.
    /// @throws Error{rule} for a default that can't be evaluated or doesn't suit its column.
    void fillIn(Row& values, const std::vector<bool>& given) const;

    /// Holds a row against the rules of the columns that are `changed`, and against the table's.
    /// @throws Error{nullValue} for a column that must be filled in; Error{rule}.
    void check(const RowView& row, const std::vector<bool>& changed) const;
    /// Holds a value against the rules of its column alone.
    /// @throws as the other check().
    void check(std::size_t column, const Value& value) const;
    /// Whether a column may hold an empty text.
    [[nodiscard]] bool takesEmptyText(std::size_t column) const;
    /// What a row that is stored already, perhaps since before the rules were made, does against
    /// them: a phrase for each rule it breaks, which is the same for all rows that break it so.
    [[nodiscard]] std::vector<std::string> broken(const RowView& row) const;

private:
    /// How values break a rule.
    struct Breach {
        enum class Kind : std::uint8_t { missing, emptyText, condition, cannotTell };
        Kind kind;
        std::string reason{}; ///< of cannotTell
    };

    void note(Rule rule);
    [[nodiscard]] std::optional<Breach> breachOf(const Rule& rule,
                                                 const Expression::Field& field) const;
    void check(const Rule& rule, const Expression::Field& field) const;
    [[noreturn]] void refuse(const Rule& rule, const Breach& breach) const;
    [[nodiscard]] Value defaultOf(const Rule& rule) const;
    /// "do campo X da tabela Y", or "da tabela Y".
    [[nodiscard]] std::string place(const Rule& rule) const;

    std::string table_;
    std::span<const Column> columns_;
    const Collation* order_;
    std::vector<Rule> rules_;
    std::optional<std::string> unknown_;
};

} // namespace jet
