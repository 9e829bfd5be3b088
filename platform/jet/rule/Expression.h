#pragma once

#include "jet/TableDefinition.h"

#include <functional>
#include <span>
#include <string_view>
#include <vector>

namespace jet {

/// A validation rule or a default value as the file keeps it, understood once and then evaluated
/// for one row after the other.
///
/// Known are = <> < <= > >=, In (...), Between ... And ..., Like, Is [Not] Null, And, Or, Xor, Not,
/// + - * / &, parentheses, texts, numbers, #dates#, True, False, Yes, No, On, Off, Null, columns by
/// name, IIf(), of which only the branch is evaluated that counts, and the functions of
/// Functions.h. In a column's rule a comparison that begins with its operator is one of the column,
/// and so is a constant where a condition should be: "M" Or "F". A condition has three outcomes:
/// with a null it is neither true nor false.
class Expression {
public:
    /// What the names in an expression stand for.
    struct Names {
        std::string_view table;
        std::span<const Column> columns;
        std::optional<std::size_t> own; ///< of a column's rule: the column
    };
    /// The value of a column of the row asked about.
    using Field = std::function<Value(std::size_t)>;

    /// `order` is how the file compares texts; it outlives the expression.
    /// @throws Error{syntax} for what isn't one or has parts that aren't known here.
    Expression(std::string_view text, const Names& names, const Collation& order);

    /// Takes a bounded time and memory, whatever the expression and the values.
    /// @throws Error{outOfRange}, its what() a phrase, if the values don't suit the operators and
    /// functions, or are too long for that bound.
    [[nodiscard]] Value evaluate(const Field& field) const;

    /// Whether it looks at a column at all.
    [[nodiscard]] bool reads(std::size_t column) const;

    enum class Op : std::uint8_t {
        constant, ///< operand: which
        column,   ///< operand: which
        equal,
        notEqual,
        less,
        lessOrEqual,
        greater,
        greaterOrEqual,
        like,
        in, ///< operand: how many values
        between,
        isNull,
        conjunction,
        disjunction,
        exclusion,
        negation,
        add,
        subtract,
        multiply,
        divide,
        join,
        minus,
        call,       ///< operand: which function; count: of values
        jump,       ///< operand: the step that comes next
        jumpUnless, ///< the same, but only if the value, which goes, isn't true
    };
    /// One step of a reckoning on a stack: a nesting however deep needs no recursion.
    struct Step {
        Op op;
        std::uint8_t count = 0;
        std::uint32_t operand = 0;
    };

    /// For who writes it in another tongue.
    [[nodiscard]] std::span<const Step> steps() const noexcept { return steps_; }
    [[nodiscard]] std::span<const Value> constants() const noexcept { return constants_; }

private:
    class Parser;

    std::vector<Step> steps_;
    std::vector<Value> constants_;
    const Collation* order_;
};

} // namespace jet
