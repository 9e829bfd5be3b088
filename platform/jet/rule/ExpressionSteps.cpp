// How the steps of an expression are carried out.
#include "jet/rule/Expression.h"
#include "jet/rule/Functions.h"
#include "jet/rule/Like.h"
#include "jet/rule/Operators.h"

namespace jet {

namespace {

using Op = Expression::Op;
using Ordering = std::optional<std::partial_ordering>;

/// What a comparison by `op` says of how two values stand to each other.
Value outcome(Op op, const Ordering& order) {
    if (!order || *order == std::partial_ordering::unordered)
        return {};
    switch (op) {
    case Op::equal:
        return *order == 0;
    case Op::notEqual:
        return *order != 0;
    case Op::less:
        return *order < 0;
    case Op::lessOrEqual:
        return *order <= 0;
    case Op::greater:
        return *order > 0;
    default:
        return *order >= 0;
    }
}

Value both(const Value& a, const Value& b) {
    const auto left = truthOf(a);
    const auto right = truthOf(b);
    if ((left && !*left) || (right && !*right))
        return false;
    return left && right ? Value(true) : Value{};
}

Value denial(const Value& value) {
    const auto known = truthOf(value);
    return known ? Value(!*known) : Value{};
}

Value either(const Value& a, const Value& b) { return denial(both(denial(a), denial(b))); }

Value exclusion(const Value& a, const Value& b) {
    const auto left = truthOf(a);
    const auto right = truthOf(b);
    return left && right ? Value(*left != *right) : Value{};
}

Value isOneOf(const Value& value, std::span<const Value> list, const Collation& order) {
    Value found = false;
    for (const Value& entry : list)
        found = either(found, outcome(Op::equal, compareValues(value, entry, order)));
    return found;
}

/// The bounds may come in any order.
Value isBetween(const Value& value, const Value& a, const Value& b, const Collation& order) {
    const auto inside = [&](const Value& low, const Value& high) {
        return both(outcome(Op::greaterOrEqual, compareValues(value, low, order)),
                    outcome(Op::lessOrEqual, compareValues(value, high, order)));
    };
    return either(inside(a, b), inside(b, a));
}

Value likeness(const Value& value, const Value& pattern, const Collation& order) {
    const auto text = textOf(value);
    const auto model = textOf(pattern);
    return text && model ? Value(isLike(*text, *model, order)) : Value{};
}

/// What a value costs to have: the bytes of texts.
std::size_t weightOf(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value))
        return text->size();
    const auto* bytes = std::get_if<Bytes>(&value);
    return bytes != nullptr ? bytes->size() : 0;
}

Value ofTwo(Op op, const Value& a, const Value& b, const Collation& order) {
    switch (op) {
    case Op::conjunction:
        return both(a, b);
    case Op::disjunction:
        return either(a, b);
    case Op::exclusion:
        return exclusion(a, b);
    case Op::like:
        return likeness(a, b, order);
    case Op::add:
        return added(a, b);
    case Op::subtract:
        return subtracted(a, b);
    case Op::multiply:
        return multiplied(a, b);
    case Op::divide:
        return divided(a, b);
    case Op::join:
        return joined(a, b);
    default:
        return outcome(op, compareValues(a, b, order));
    }
}

} // namespace

Value Expression::evaluate(const Field& field) const {
    std::vector<Value> stack;
    Effort effort;
    const auto push = [&](Value value) {
        effort.spend(weightOf(value));
        stack.push_back(std::move(value));
    };
    const auto pop = [&] {
        Value value = std::move(stack.back());
        stack.pop_back();
        return value;
    };
    for (std::size_t at = 0; at < steps_.size(); ++at) {
        const Step& step = steps_[at];
        switch (step.op) {
        case Op::constant:
            push(constants_[step.operand]);
            break;
        case Op::column:
            push(field(step.operand));
            break;
        case Op::jump:
            at = step.operand - 1;
            break;
        case Op::jumpUnless:
            if (!truthOf(pop()).value_or(false))
                at = step.operand - 1;
            break;
        case Op::call: {
            const std::size_t first = stack.size() - step.count;
            Value result = knownFunctions()[step.operand].body(
                {std::span<const Value>(stack).subspan(first), *order_, effort});
            stack.resize(first);
            push(std::move(result));
            break;
        }
        case Op::isNull:
            stack.back() = isNull(stack.back());
            break;
        case Op::negation:
            stack.back() = denial(stack.back());
            break;
        case Op::minus:
            stack.back() = negated(stack.back());
            break;
        case Op::in: {
            const std::size_t first = stack.size() - step.operand;
            Value found =
                isOneOf(stack[first - 1], std::span<const Value>(stack).subspan(first), *order_);
            stack.resize(first);
            stack.back() = std::move(found);
            break;
        }
        case Op::between: {
            const Value b = pop();
            const Value a = pop();
            stack.back() = isBetween(stack.back(), a, b, *order_);
            break;
        }
        default: {
            const Value right = pop();
            const Value left = pop();
            push(ofTwo(step.op, left, right, *order_));
        }
        }
    }
    return pop();
}

} // namespace jet
