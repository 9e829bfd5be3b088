// The functions of rules that take texts apart and compare them.
#include "jet/TextParts.h"
#include "jet/rule/FunctionBodies.h"
#include "jet/rule/Operators.h"

#include <algorithm>
#include <optional>

namespace jet::functions {

namespace {

std::int64_t countFrom(const Call& call, std::size_t i, std::int64_t least) {
    const std::int64_t count = wholeOf(call[i]);
    if (count < least)
        refuse("uma posição ou um tamanho de texto não é possível");
    return count;
}

/// The text of the first argument as `part` leaves it; null for null.
template <class Part>
Value partOf(const Call& call, Part&& part) {
    const auto text = textOf(call[0]);
    return text ? Value(std::string(part(std::string_view(*text)))) : Value{};
}

/// How two texts are compared: as the file does, or character by character.
enum class TextComparison { ofFile, exact };

TextComparison comparisonOf(const Call& call, std::size_t i) {
    switch (wholeOr(call, i, -1)) {
    case 0:
        return TextComparison::exact;
    case -1: // as the surroundings say, and a rule has those of its file
    case 1:
    case 2:
        return TextComparison::ofFile;
    default:
        refuse("uma função não conhece este modo de comparar textos");
    }
}

/// Where `part` begins in `text` from the byte `at` on; nothing if nowhere.
std::optional<std::size_t> found(std::string_view text, std::string_view part, std::size_t at,
                                 const Call& call) {
    const std::int64_t length = lengthOf(part);
    const std::string_view first = leftOf(part, 1);
    for (; at < text.size(); at += bytesAt(text, at)) {
        call.effort.spend(1);
        const std::string_view rest = text.substr(at);
        if (!first.empty() && call.order.compare(leftOf(rest, 1), first) != 0)
            continue;
        const std::string_view here = leftOf(rest, length);
        call.effort.spend(4 * here.size()); // a comparison costs more than a copy
        if (call.order.compare(here, part) == 0)
            return at;
    }
    return std::nullopt;
}

} // namespace

Value left(const Call& call) {
    return partOf(call, [&](std::string_view text) { return leftOf(text, countFrom(call, 1, 0)); });
}

Value right(const Call& call) {
    return partOf(call,
                  [&](std::string_view text) { return rightOf(text, countFrom(call, 1, 0)); });
}

Value mid(const Call& call) {
    return partOf(call, [&](std::string_view text) {
        const std::string_view rest = middleOf(text, countFrom(call, 1, 1));
        return call.has(2) ? leftOf(rest, countFrom(call, 2, 0)) : rest;
    });
}

Value len(const Call& call) {
    const auto text = textOf(call[0]);
    return text ? Value(lengthOf(*text)) : Value{};
}

/// InStr([start,] text, part[, comparison]): the place of the part, from 1; 0 if it isn't there.
Value inStr(const Call& call) {
    const std::size_t first = call.arguments.size() > 2 ? 1 : 0;
    const std::int64_t start = first == 0 ? 1 : countFrom(call, 0, 1);
    const TextComparison comparison = comparisonOf(call, 3);
    const auto text = textOf(call[first]);
    const auto part = textOf(call[first + 1]);
    if (!text || !part)
        return {};
    if (start > lengthOf(*text))
        return std::int64_t{0};
    if (part->empty())
        return start;
    const std::size_t from = placeOf(*text, start - 1);
    std::optional<std::size_t> at;
    if (comparison == TextComparison::ofFile)
        at = found(*text, *part, from, call);
    else if (const std::size_t exact = text->find(*part, from); exact != std::string::npos)
        at = exact;
    return at ? Value(lengthOf(std::string_view(*text).substr(0, *at)) + 1)
              : Value(std::int64_t{0});
}

/// -1, 0 or 1.
Value strComp(const Call& call) {
    const TextComparison comparison = comparisonOf(call, 2);
    const auto a = textOf(call[0]);
    const auto b = textOf(call[1]);
    if (!a || !b)
        return {};
    const int order =
        comparison == TextComparison::exact ? a->compare(*b) : call.order.compare(*a, *b);
    return std::int64_t{(order > 0) - (order < 0)};
}

Value uCase(const Call& call) {
    return partOf(call, [](std::string_view text) { return upperCase(text); });
}

Value lCase(const Call& call) {
    return partOf(call, [](std::string_view text) { return lowerCase(text); });
}

Value trim(const Call& call) {
    return partOf(call, [](std::string_view text) { return trimmed(text, Side::both); });
}

Value lTrim(const Call& call) {
    return partOf(call, [](std::string_view text) { return trimmed(text, Side::left); });
}

Value rTrim(const Call& call) {
    return partOf(call, [](std::string_view text) { return trimmed(text, Side::right); });
}

} // namespace jet::functions
