#include "jet/rule/Operators.h"

#include "jet/Error.h"
#include "jet/Tokens.h"
#include "jet/rule/FormatParts.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace jet {

namespace {

constexpr std::int64_t kScale = 10000;
using Limits = std::numeric_limits<std::int64_t>;

[[noreturn]] void refuse(const char* phrase) { throw Error(Errc::outOfRange, phrase); }
[[noreturn]] void mismatch() { refuse("os tipos dos valores não combinam"); }
[[noreturn]] void tooLarge() { refuse("o resultado de uma conta é grande demais"); }

std::optional<double> realFrom(std::string_view digits) {
    double number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc{} || stop != end || !std::isfinite(number))
        return std::nullopt;
    return number;
}

/// What counts as a number in the form it is reckoned with: int64_t, Currency or double.
/// Anything else, null included, comes back as nothing.
std::optional<Value> plainNumber(const Value& value) {
    if (const auto* yes = std::get_if<bool>(&value))
        return Value(std::int64_t{*yes ? -1 : 0});
    if (const auto* date = std::get_if<Date>(&value))
        return Value(date->moment());
    if (const auto* decimal = std::get_if<Numeric>(&value))
        return Value(*realFrom(decimal->text()));
    if (std::holds_alternative<std::int64_t>(value) || std::holds_alternative<Currency>(value) ||
        std::holds_alternative<double>(value))
        return value;
    return std::nullopt;
}

/// The number in a text that stands beside a number or, as `beside` tells, a date.
Value numberIn(const std::string& text, const Value& beside) {
    if (const auto number = realFrom(text))
        return *number;
    if (!std::holds_alternative<Date>(beside))
        mismatch();
    try {
        return Date{parseDateLiteral(text)}.moment();
    } catch (const Error&) {
        mismatch();
    }
}

double asReal(const Value& number) {
    if (const auto* whole = std::get_if<std::int64_t>(&number))
        return static_cast<double>(*whole);
    if (const auto* amount = std::get_if<Currency>(&number))
        return static_cast<double>(amount->tenThousandths) / static_cast<double>(kScale);
    return std::get<double>(number);
}

bool isReal(const Value& number) { return std::holds_alternative<double>(number); }

/// A whole number or an amount in 1/10000, which a real isn't; nothing if it doesn't fit.
std::optional<std::int64_t> tenThousandths(const Value& number) {
    if (const auto* amount = std::get_if<Currency>(&number))
        return amount->tenThousandths;
    const auto whole = std::get<std::int64_t>(number);
    if (whole > Limits::max() / kScale || whole < Limits::min() / kScale)
        return std::nullopt;
    return whole * kScale;
}

struct Pair {
    Value a;
    Value b;
};

/// Both as numbers; nothing if either is null.
std::optional<Pair> numbers(const Value& a, const Value& b) {
    if (isNull(a) || isNull(b))
        return std::nullopt;
    const auto numeric = [](const Value& value, const Value& beside) {
        if (const auto* text = std::get_if<std::string>(&value))
            return numberIn(*text, beside);
        if (const auto number = plainNumber(value))
            return *number;
        mismatch();
    };
    return Pair{numeric(a, b), numeric(b, a)};
}

std::partial_ordering compareNumbers(const Value& a, const Value& b) {
    const auto* wholeA = std::get_if<std::int64_t>(&a);
    const auto* wholeB = std::get_if<std::int64_t>(&b);
    if (wholeA && wholeB)
        return *wholeA <=> *wholeB;
    if (!isReal(a) && !isReal(b)) {
        const auto exactA = tenThousandths(a);
        const auto exactB = tenThousandths(b);
        if (exactA && exactB)
            return *exactA <=> *exactB;
    }
    return asReal(a) <=> asReal(b);
}

/// A sum: exact where it can be, of a date and a number a date.
Value sum(const Value& a, const Value& b, int sign) {
    const auto pair = numbers(a, b);
    if (!pair)
        return {};
    const double estimate = asReal(pair->a) + sign * asReal(pair->b);
    const bool dateA = std::holds_alternative<Date>(a);
    const bool dateB = std::holds_alternative<Date>(b);
    if (dateA != dateB && (dateA || sign > 0)) {
        // Before the first day the fraction counts forward from midnight all the same.
        const Date date{estimate < 0 ? 2 * std::floor(estimate) - estimate : estimate};
        if (!date.inRange())
            tooLarge();
        return date;
    }
    if (isReal(pair->a) || isReal(pair->b))
        return estimate;
    std::int64_t exact = 0;
    const auto fits = [&](std::int64_t left, std::int64_t right) {
        return sign > 0 ? !__builtin_add_overflow(left, right, &exact)
                        : !__builtin_sub_overflow(left, right, &exact);
    };
    const auto* wholeA = std::get_if<std::int64_t>(&pair->a);
    const auto* wholeB = std::get_if<std::int64_t>(&pair->b);
    if (wholeA && wholeB)
        return fits(*wholeA, *wholeB) ? Value(exact) : Value(estimate);
    const auto amountA = tenThousandths(pair->a);
    const auto amountB = tenThousandths(pair->b);
    if (!amountA || !amountB || !fits(*amountA, *amountB))
        tooLarge();
    return Currency{exact};
}

std::string digitsOf(double number) {
    std::array<char, 400> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return {buffer.data(), end.ptr};
}

} // namespace

std::optional<std::partial_ordering> compareValues(const Value& a, const Value& b,
                                                   const Collation& order) {
    if (isNull(a) || isNull(b))
        return std::nullopt;
    const auto* bytesA = std::get_if<Bytes>(&a);
    const auto* bytesB = std::get_if<Bytes>(&b);
    if (bytesA && bytesB)
        return *bytesA <=> *bytesB;
    const auto isWord = [](const Value& value) {
        return std::holds_alternative<std::string>(value) || std::holds_alternative<Guid>(value);
    };
    if (isWord(a) && isWord(b))
        return order.compare(*textOf(a), *textOf(b)) <=> 0;
    const auto pair = numbers(a, b);
    return compareNumbers(pair->a, pair->b);
}

Value added(const Value& a, const Value& b) {
    const auto* textA = std::get_if<std::string>(&a);
    const auto* textB = std::get_if<std::string>(&b);
    if (textA && textB)
        return *textA + *textB;
    return sum(a, b, 1);
}

Value subtracted(const Value& a, const Value& b) { return sum(a, b, -1); }

Value multiplied(const Value& a, const Value& b) {
    const auto pair = numbers(a, b);
    if (!pair)
        return {};
    std::int64_t exact = 0;
    const auto* wholeA = std::get_if<std::int64_t>(&pair->a);
    const auto* wholeB = std::get_if<std::int64_t>(&pair->b);
    if (wholeA && wholeB && !__builtin_mul_overflow(*wholeA, *wholeB, &exact))
        return exact;
    const auto* amountA = std::get_if<Currency>(&pair->a);
    const auto* amountB = std::get_if<Currency>(&pair->b);
    if (amountA && wholeB && !__builtin_mul_overflow(amountA->tenThousandths, *wholeB, &exact))
        return Currency{exact};
    if (amountB && wholeA && !__builtin_mul_overflow(amountB->tenThousandths, *wholeA, &exact))
        return Currency{exact};
    return asReal(pair->a) * asReal(pair->b);
}

Value divided(const Value& a, const Value& b) {
    const auto pair = numbers(a, b);
    if (!pair)
        return {};
    if (asReal(pair->b) == 0)
        refuse("há uma divisão por zero");
    return asReal(pair->a) / asReal(pair->b);
}

Value negated(const Value& value) { return sum(std::int64_t{0}, value, -1); }

Value joined(const Value& a, const Value& b) {
    const auto textA = textOf(a);
    const auto textB = textOf(b);
    if (!textA && !textB)
        return {};
    return textA.value_or("") + textB.value_or("");
}

std::optional<bool> truthOf(const Value& value) {
    if (const auto* yes = std::get_if<bool>(&value))
        return *yes;
    const auto number = numberOf(value);
    return number ? std::optional(*number != 0) : std::nullopt;
}

std::optional<double> numberOf(const Value& value) {
    const auto pair = numbers(value, std::int64_t{0});
    return pair ? std::optional(asReal(pair->a)) : std::nullopt;
}

std::optional<std::string> textOf(const Value& value) {
    if (isNull(value))
        return std::nullopt;
    if (const auto* text = std::get_if<std::string>(&value))
        return *text;
    if (const auto* id = std::get_if<Guid>(&value))
        return id->text();
    if (const auto* whole = std::get_if<std::int64_t>(&value))
        return std::to_string(*whole);
    if (std::holds_alternative<bool>(value))
        mismatch();
    if (const auto* date = std::get_if<Date>(&value))
        return functions::formattedDate(*date, functions::signsOf("c"), {});
    if (const auto number = plainNumber(value))
        return digitsOf(asReal(*number));
    mismatch();
}

} // namespace jet
