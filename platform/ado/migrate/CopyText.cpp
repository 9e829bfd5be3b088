#include "ado/migrate/CopyText.h"

#include "ado/server/ServerValue.h"
#include "jet/Utf8.h"

#include <algorithm>
#include <cmath>

namespace ado {

namespace {

void appendField(std::string& text, const jet::Value& value) {
    if (jet::isNull(value)) {
        text += "\\N";
        return;
    }
    if (const auto* const number = std::get_if<double>(&value); number && std::isnan(*number)) {
        text += "NaN";
        return;
    }
    const Parameter parameter = parameterOf(value);
    for (const char c : *parameter.text) {
        switch (c) {
        case '\\':
            text += "\\\\";
            break;
        case '\n':
            text += "\\n";
            break;
        case '\r':
            text += "\\r";
            break;
        case '\t':
            text += "\\t";
            break;
        default:
            text += c;
        }
    }
}

/// The characters of a text, as the server counts them, or nothing if it isn't one.
std::optional<std::size_t> lengthOf(std::string_view text) {
    std::size_t length = 0;
    for (std::size_t at = 0; at < text.size(); ++length) {
        const jet::Utf8Character c = jet::utf8At(text, at);
        if (c.length == 0 || jet::isHighSurrogate(c.codePoint) || jet::isLowSurrogate(c.codePoint))
            return std::nullopt;
        at += c.length;
    }
    return length;
}

std::optional<std::string> refusalOfText(const jet::ColumnSpec& column, const std::string& text) {
    if (text.find('\0') != std::string::npos)
        return "tem o caractere zero, que o servidor não guarda em textos";
    const auto length = lengthOf(text);
    if (!length)
        return "tem a metade de um caractere, que o servidor não guarda em textos";
    if (column.type == jet::ColumnType::text && *length > column.width)
        return "tem mais caracteres do que o campo diz ter";
    return std::nullopt;
}

} // namespace

void appendCopyLine(std::string& text, const jet::Row& row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (i > 0)
            text += '\t';
        appendField(text, row[i]);
    }
    text += '\n';
}

std::optional<std::string> refusal(const jet::ColumnSpec& column, const jet::Value& value) {
    if (const auto* const text = std::get_if<std::string>(&value))
        return refusalOfText(column, *text);
    if (const auto* const date = std::get_if<jet::Date>(&value); date && !date->inRange())
        return "tem uma data que não existe no calendário";
    if (const auto* const number = std::get_if<jet::Numeric>(&value)) {
        const std::string digits = number->text();
        const auto count = static_cast<std::size_t>(
            std::ranges::count_if(digits, [](char c) { return c >= '0' && c <= '9'; }));
        const bool leadingZero =
            digits.find_first_of("0123456789") == digits.find("0.") && number->scale > 0;
        if (count - (leadingZero ? 1 : 0) > std::max(column.precision, column.scale))
            return "tem mais algarismos do que o campo diz ter";
    }
    return std::nullopt;
}

bool losesFraction(const jet::Value& value) {
    const auto* const date = std::get_if<jet::Date>(&value);
    constexpr double kMillisecond = 1.0 / 86'400'000;
    return date != nullptr &&
           std::fabs(jet::Date::of(date->civil()).moment() - date->moment()) > kMillisecond;
}

} // namespace ado
