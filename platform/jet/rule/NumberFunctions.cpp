// The functions of rules that look for numbers in texts.
#include "jet/TextParts.h"
#include "jet/rule/FunctionBodies.h"
#include "jet/rule/Operators.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <utility>

namespace jet::functions {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// How many of the first characters are digits.
std::size_t digitsAt(std::string_view text, std::size_t at) {
    const auto end =
        std::find_if_not(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), isDigit);
    return static_cast<std::size_t>(end - text.begin()) - at;
}

/// "&H1F", "&O17", from the sign on: the number that a machine word of the fewest digits holds,
/// which may be a negative one. Nothing if it isn't one; `text` loses what was read.
std::optional<std::int64_t> takeBased(std::string_view& text) {
    if (text.size() < 3 || text[0] != '&')
        return std::nullopt;
    const char kind = static_cast<char>(text[1] | 0x20);
    const int base = kind == 'h' ? 16 : kind == 'o' ? 8 : 0;
    if (base == 0)
        return std::nullopt;
    std::uint32_t number = 0;
    const auto [stop, error] =
        std::from_chars(text.data() + 2, text.data() + text.size(), number, base);
    if (error != std::errc{})
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
    return number <= 0xFFFF ? std::int64_t{static_cast<std::int16_t>(number)}
                            : std::int64_t{static_cast<std::int32_t>(number)};
}

/// Takes an exponent, which may be written with e or d; false if a broken one stands there.
bool takeExponent(std::string_view& text) {
    if (text.empty() || ((text[0] | 0x20) != 'e' && (text[0] | 0x20) != 'd'))
        return true;
    const std::size_t sign = text.size() > 1 && (text[1] == '+' || text[1] == '-') ? 1 : 0;
    const std::size_t digits = digitsAt(text, std::min(text.size(), 1 + sign));
    text.remove_prefix(std::min(text.size(), 1 + sign + digits));
    return digits > 0;
}

/// Whether a text is a number as one writes it in Portuguese: "-1.234,50", "R$ 12,5", "(7)", "1e3".
/// Points may stand between digits of the whole part, or one of them where the comma would.
bool readsAsNumber(std::string_view text) {
    const auto skip = [&](std::string_view sign) {
        const bool there = text.starts_with(sign);
        text.remove_prefix(there ? sign.size() : 0);
        return there;
    };
    const auto blanks = [&] { text = trimmed(text, Side::left); };
    text = trimmed(text, Side::both);
    if (takeBased(text))
        return text.empty();
    const bool enclosed = text.size() > 1 && text.front() == '(' && text.back() == ')';
    if (enclosed)
        text = text.substr(1, text.size() - 2);
    bool isSigned = enclosed;
    bool hasSymbol = false;
    for (bool more = true; more; more = !text.empty() && !isDigit(text[0])) {
        blanks();
        if (!isSigned && (skip("-") || skip("+")))
            isSigned = true;
        else if (!hasSymbol && (skip("R$") || skip("$")))
            hasSymbol = true;
        else
            break;
    }
    std::size_t digits = 0;
    bool fraction = false;
    for (; !text.empty() && (isDigit(text[0]) || text[0] == '.' || text[0] == ',');
         text.remove_prefix(1)) {
        if (text[0] == ',' && std::exchange(fraction, true))
            return false;
        if (text[0] == '.' && fraction)
            return false;
        digits += isDigit(text[0]) ? 1 : 0;
    }
    if (digits == 0 || !takeExponent(text))
        return false;
    blanks();
    if (!isSigned && (skip("-") || skip("+")))
        blanks();
    return text.empty();
}

} // namespace

/// The number that a text begins with; blanks don't count, wherever they stand.
Value val(const Call& call) {
    std::string text = neededText(call[0]);
    std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
    std::string_view rest = text;
    if (const auto based = takeBased(rest))
        return static_cast<double>(*based);
    if (rest.starts_with('+'))
        rest.remove_prefix(1);
    std::size_t end = rest.starts_with('-') ? 1 : 0;
    end += digitsAt(rest, end);
    if (end < rest.size() && rest[end] == '.')
        end += 1 + digitsAt(rest, end + 1);
    std::string number(rest.substr(0, end));
    const std::string_view behind = rest.substr(end);
    std::string_view left = behind;
    if (takeExponent(left) && left.size() < behind.size())
        number += "e" + std::string(behind.substr(1, behind.size() - left.size() - 1));
    double result = 0;
    const auto error = std::from_chars(number.data(), number.data() + number.size(), result).ec;
    if (error == std::errc::result_out_of_range)
        refuse("um número é grande demais para uma função");
    return error == std::errc{} ? result : 0.0;
}

Value isNumeric(const Call& call) {
    if (const auto* text = std::get_if<std::string>(&call[0]))
        return readsAsNumber(*text);
    const Value& value = call[0];
    return std::holds_alternative<bool>(value) || std::holds_alternative<std::int64_t>(value) ||
           std::holds_alternative<Currency>(value) || std::holds_alternative<double>(value) ||
           std::holds_alternative<Numeric>(value);
}

} // namespace jet::functions
