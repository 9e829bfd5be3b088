// How the steps of an expression are carried out.
#include "jet/Expression.h"
#include "jet/Like.h"
#include "jet/Operators.h"
#include "jet/Utf8.h"

#include <algorithm>
#include <cmath>

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

/// In characters as the file counts them: one beyond the first 65,536 counts twice.
Value lengthOf(const Value& value) {
    const auto text = textOf(value);
    if (!text)
        return {};
    std::int64_t length = 0;
    for (std::size_t at = 0; at < text->size();) {
        const Utf8Character c = utf8At(*text, at);
        length += c.codePoint > 0xFFFF ? 2 : 1;
        at += std::max<std::size_t>(1, c.length);
    }
    return length;
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
    const auto pop = [&] {
        Value value = std::move(stack.back());
        stack.pop_back();
        return value;
    };
    for (const Step& step : steps_) {
        switch (step.op) {
        case Op::constant:
            stack.push_back(constants_[step.operand]);
            break;
        case Op::column:
            stack.push_back(field(step.operand));
            break;
        case Op::today:
            stack.emplace_back(Date::today());
            break;
        case Op::now:
            stack.emplace_back(Date::now());
            break;
        case Op::timeOfDay:
            stack.emplace_back(Date{std::fmod(Date::now().days, 1)});
            break;
        case Op::newGuid:
            stack.emplace_back(Guid::random());
            break;
        case Op::isNull:
            stack.back() = isNull(stack.back());
            break;
        case Op::negation:
            stack.back() = denial(stack.back());
            break;
        case Op::minus:
            stack.back() = negated(stack.back());
            break;
        case Op::length:
            stack.back() = lengthOf(stack.back());
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
            stack.back() = ofTwo(step.op, stack.back(), right, *order_);
        }
        }
    }
    return pop();
}

} // namespace jet
