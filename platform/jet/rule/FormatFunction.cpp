// Format(value[, pattern[, first day of the week[, first week of the year]]])
#include "jet/TextParts.h"
#include "jet/Tokens.h"
#include "jet/rule/FormatParts.h"
#include "jet/rule/FunctionBodies.h"
#include "jet/rule/Operators.h"

#include <algorithm>
#include <utility>

namespace jet::functions {

namespace {

/// Patterns that go by a name.
struct NamedPattern {
    std::string_view name;
    std::string_view pattern;
};
constexpr NamedPattern kNamed[] = {
    {"currency",     "\"R$ \"#,##0.00"                     },
    {"fixed",        "0.00"                                },
    {"standard",     "#,##0.00"                            },
    {"percent",      "0.00%"                               },
    {"scientific",   "0.00E+00"                            },
    {"yes/no",       R"("Sim";"Sim";"Não")"               },
    {"true/false",   R"("Verdadeiro";"Verdadeiro";"Falso")"},
    {"on/off",       R"("Ativado";"Ativado";"Desativado")" },
    {"general date", "c"                                   },
    {"long date",    "dddddd"                              },
    {"medium date",  "dd-mmm-yy"                           },
    {"short date",   "ddddd"                               },
    {"long time",    "ttttt"                               },
    {"medium time",  "hh:nn AM/PM"                         },
    {"short time",   "hh:nn"                               }
};
constexpr std::string_view kGeneralNumber = "general number";

/// What a pattern is made for.
enum class Purpose { number, text, date, nothing };

Purpose purposeOf(Signs signs) {
    const auto any = [&](std::string_view set) {
        return std::ranges::any_of(signs, [&](const Sign& sign) { return sign.isOneOf(set); });
    };
    if (any("0#"))
        return Purpose::number;
    if (any("@&<>"))
        return Purpose::text;
    return any(kDateLetters) ? Purpose::date : Purpose::nothing;
}

std::vector<Signs> sectionsOf(Signs signs) {
    std::vector<Signs> sections;
    for (std::size_t begin = 0;;) {
        std::size_t end = begin;
        while (end < signs.size() && !signs[end].is(';'))
            ++end;
        sections.push_back(signs.subspan(begin, end - begin));
        if (end == signs.size())
            return sections;
        begin = end + 1;
    }
}

/// @ a character or a blank, & a character or nothing, < > small and capital letters, ! from the
/// left on. Characters that there are too many of stand where filling begins.
std::string formattedText(std::string_view text, Signs signs) {
    const auto any = [&](char c) {
        return std::ranges::any_of(signs, [&](const Sign& sign) { return sign.is(c); });
    };
    const std::string cased = any('<')   ? lowerCase(text)
                              : any('>') ? upperCase(text)
                                         : std::string(text);
    const bool fromLeft = any('!');
    const auto places =
        std::ranges::count_if(signs, [](const Sign& sign) { return sign.is('@') || sign.is('&'); });
    const std::int64_t length = lengthOf(cased);
    std::int64_t blanks = fromLeft ? 0 : std::max<std::int64_t>(0, places - length);
    std::string_view rest = cased;
    const auto take = [&](std::int64_t count) {
        const std::string_view part = leftOf(rest, count);
        rest.remove_prefix(part.size());
        return part;
    };
    std::string out;
    if (places == 0)
        out += take(length);
    std::int64_t extra = fromLeft ? 0 : std::max<std::int64_t>(0, length - places);
    for (const Sign& sign : signs) {
        if (sign.is('@') || sign.is('&')) {
            const bool blank = blanks > 0 || rest.empty();
            if (!blank)
                out += take(1 + std::exchange(extra, 0));
            else if (sign.is('@'))
                out += ' ';
            blanks -= blanks > 0 ? 1 : 0;
        } else if (!sign.isOneOf("<>!")) {
            out += sign.text;
        }
    }
    return out += rest;
}

std::string plainText(const Value& value) {
    if (const auto* yes = std::get_if<bool>(&value))
        return *yes ? "Verdadeiro" : "Falso";
    if (std::holds_alternative<std::string>(value) || std::holds_alternative<Guid>(value) ||
        std::holds_alternative<Date>(value))
        return textOf(value).value();
    return plainNumber(decimalOf(value));
}

bool isText(const Value& value) { return std::holds_alternative<std::string>(value); }

/// The text as the number or the date that it says; itself if it says none.
template <class Read>
Value unless(const Value& value, Read&& read) {
    if (!isText(value))
        return read(value);
    try {
        return read(value);
    } catch (const Error&) {
        return value;
    }
}

std::string formatted(const Value& value, std::string_view pattern, const Weeks& weeks) {
    const std::vector<Sign> signs = signsOf(pattern);
    const std::vector<Signs> sections = sectionsOf(signs);
    switch (purposeOf(signs)) {
    case Purpose::text: {
        const std::string text = plainText(value);
        const bool second = text.empty() && sections.size() > 1 && !sections[1].empty();
        return formattedText(text, sections[second ? 1 : 0]);
    }
    case Purpose::date: {
        const Value date = unless(value, [](const Value& v) { return Value(dateOf(v)); });
        return isText(date) ? std::get<std::string>(date)
                            : formattedDate(std::get<Date>(date), sections[0], weeks);
    }
    default: {
        const Value number =
            unless(value, [](const Value& v) { return isText(v) ? Value(*numberOf(v)) : v; });
        return isText(number) ? std::get<std::string>(number)
                              : formattedNumber(decimalOf(number), sections);
    }
    }
}

} // namespace

std::vector<Sign> signsOf(std::string_view pattern) {
    std::vector<Sign> signs;
    for (std::size_t at = 0; at < pattern.size();) {
        if (pattern[at] == '"') {
            const std::size_t end = std::min(pattern.find('"', at + 1), pattern.size());
            signs.push_back({pattern.substr(at + 1, end - at - 1), true});
            at = std::min(end + 1, pattern.size());
            continue;
        }
        const bool literal = pattern[at] == '\\' && at + 1 < pattern.size();
        at += literal ? 1 : 0;
        const std::size_t length = bytesAt(pattern, at);
        signs.push_back({pattern.substr(at, length), literal});
        at += length;
    }
    return signs;
}

Value format(const Call& call) {
    const std::string pattern =
        call.has(1) && !isNull(call[1]) ? textOf(call[1]).value() : std::string();
    const Weeks weeks{firstDayOfWeek(call, 2), std::max<std::int64_t>(1, wholeOr(call, 3, 1))};
    if (weeks.firstWeek > 3)
        refuse("uma função não conhece este modo de contar as semanas");
    const std::string name = lowerAscii(pattern);
    const auto* const named = std::ranges::find(kNamed, name, &NamedPattern::name);
    const std::string_view known =
        named != std::end(kNamed) ? named->pattern : std::string_view(pattern);
    call.effort.spend(40 * known.size()); // more than anything that a sign of it can become
    if (isNull(call[0])) {
        const std::vector<Sign> signs = signsOf(known);
        const std::vector<Signs> sections = sectionsOf(signs);
        std::string text; // of the section for null, which has no digits
        for (const Sign& sign : sections.size() > 3 ? sections[3] : Signs())
            text += sign.text;
        return text;
    }
    if (known.empty())
        return plainText(call[0]);
    if (name == kGeneralNumber)
        return isText(call[0]) ? call[0] : Value(plainNumber(decimalOf(call[0])));
    return formatted(call[0], known, weeks);
}

} // namespace jet::functions
