#include "jet/rule/Functions.h"

#include "jet/rule/FunctionBodies.h"
#include "jet/rule/Operators.h"

#include <cmath>

namespace jet {

namespace functions {

std::int64_t wholeOf(const Value& value) {
    constexpr double kLargest = 2147483647;
    const auto number = numberOf(value);
    if (!number)
        refuse("falta um valor de que uma função precisa");
    if (!(std::fabs(*number) <= kLargest))
        refuse("um número é grande demais para uma função");
    return static_cast<std::int64_t>(std::nearbyint(*number));
}

std::int64_t wholeOr(const Call& call, std::size_t i, std::int64_t otherwise) {
    return call.has(i) ? wholeOf(call[i]) : otherwise;
}

std::string neededText(const Value& value) {
    auto text = textOf(value);
    if (!text)
        refuse("falta um valor de que uma função precisa");
    return std::move(*text);
}

namespace {

Value isNullFunction(const Call& call) { return isNull(call[0]); }
Value newGuid(const Call& /*call*/) { return Guid::random(); }

/// Without a second value an empty text stands for null.
Value nz(const Call& call) {
    if (!isNull(call[0]))
        return call[0];
    return call.has(1) ? call[1] : Value(std::string());
}

// Rows of several lengths, which it would push apart.
// clang-format off
constexpr Function kFunctions[] = {
    {"date",      0, 0, today},
    {"dateadd",   3, 3, dateAdd},
    {"datediff",  3, 5, dateDiff},
    {"day",       1, 1, day},
    {"format",    1, 4, format, true},
    {"genguid",   0, 0, newGuid},
    {"instr",     2, 4, inStr},
    {"isnull",    1, 1, isNullFunction},
    {"isnumeric", 1, 1, isNumeric},
    {"lcase",     1, 1, lCase,  true},
    {"left",      2, 2, left,   true},
    {"len",       1, 1, len},
    {"ltrim",     1, 1, lTrim,  true},
    {"mid",       2, 3, mid,    true},
    {"month",     1, 1, month},
    {"now",       0, 0, now},
    {"nz",        1, 2, nz},
    {"right",     2, 2, right,  true},
    {"rtrim",     1, 1, rTrim,  true},
    {"strcomp",   2, 3, strComp},
    {"time",      0, 0, timeOfDay},
    {"trim",      1, 1, trim,   true},
    {"ucase",     1, 1, uCase,  true},
    {"val",       1, 1, val},
    {"year",      1, 1, year}
};
// clang-format on

} // namespace

} // namespace functions

std::span<const Function> knownFunctions() noexcept { return functions::kFunctions; }

} // namespace jet
