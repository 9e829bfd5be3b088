#include "jet/TextParts.h"

#include "jet/Utf8.h"

#include <algorithm>

namespace jet {

namespace {

/// What the character at `at` counts as.
std::int64_t unitsAt(std::string_view text, std::size_t at) {
    return utf8At(text, at).codePoint > 0xFFFF ? 2 : 1;
}

/// Letters whose other case isn't 32 places away.
struct CasePair {
    char32_t small;
    char32_t capital;
};
constexpr CasePair kPairs[] = {
    {0x00FF, 0x0178},
    {0x0153, 0x0152},
    {0x0161, 0x0160},
    {0x017E, 0x017D}
};

template <class Change>
std::string changed(std::string_view text, Change&& change) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Character c = utf8At(text, at);
        if (c.length == 0)
            result += text[at++];
        else
            appendUtf8(result, change(c.codePoint));
        at += c.length;
    }
    return result;
}

} // namespace

std::size_t bytesAt(std::string_view text, std::size_t at) {
    return std::max<std::size_t>(1, utf8At(text, at).length);
}

std::int64_t lengthOf(std::string_view text) {
    std::int64_t length = 0;
    for (std::size_t at = 0; at < text.size(); at += bytesAt(text, at))
        length += unitsAt(text, at);
    return length;
}

std::size_t placeOf(std::string_view text, std::int64_t count) {
    std::size_t at = 0;
    for (; at < text.size() && count >= unitsAt(text, at); at += bytesAt(text, at))
        count -= unitsAt(text, at);
    return at;
}

std::string_view leftOf(std::string_view text, std::int64_t count) {
    return text.substr(0, placeOf(text, count));
}

std::string_view rightOf(std::string_view text, std::int64_t count) {
    const std::int64_t skipped = std::max<std::int64_t>(0, lengthOf(text) - count);
    std::size_t at = placeOf(text, skipped);
    if (at < text.size() && lengthOf(text.substr(at)) > count) // it stands in the middle of one
        at += bytesAt(text, at);
    return text.substr(at);
}

std::string_view middleOf(std::string_view text, std::int64_t from) {
    return text.substr(placeOf(text, from - 1));
}

std::string_view trimmed(std::string_view text, Side side) {
    const auto has = [&](Side one) {
        return (static_cast<unsigned>(side) & static_cast<unsigned>(one)) != 0;
    };
    while (has(Side::left) && !text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (has(Side::right) && !text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

char32_t upperCase(char32_t c) noexcept {
    if ((c >= U'a' && c <= U'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7))
        return c - 0x20;
    for (const CasePair& pair : kPairs)
        if (pair.small == c)
            return pair.capital;
    return c;
}

char32_t lowerCase(char32_t c) noexcept {
    if ((c >= U'A' && c <= U'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7))
        return c + 0x20;
    for (const CasePair& pair : kPairs)
        if (pair.capital == c)
            return pair.small;
    return c;
}

std::string upperCase(std::string_view text) {
    return changed(text, [](char32_t c) { return upperCase(c); });
}

std::string lowerCase(std::string_view text) {
    return changed(text, [](char32_t c) { return lowerCase(c); });
}

} // namespace jet
