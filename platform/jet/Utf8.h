#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// UTF-8 one character at a time. A lone half of a surrogate pair is taken as a character of three
/// bytes: Jet 4 files hold such halves, and they must come back as they were.
namespace jet {

/// What stands at one place of a UTF-8 text; `length` 0 means that no character does.
struct Utf8Character {
    char32_t codePoint{};
    std::uint8_t length{};
};

/// The character that begins at `at`, which must lie inside `text`.
[[nodiscard]] inline Utf8Character utf8At(std::string_view text, std::size_t at) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
    const unsigned first = byte(0);
    if (first < 0x80)
        return {first, 1};
    const std::size_t left = text.size() - at;
    const auto follows = [&](std::size_t i) { return i < left && (byte(i) & 0xC0U) == 0x80U; };
    const auto bits = [&](std::size_t i) -> char32_t { return byte(i) & 0x3FU; };
    if (first >= 0xC2 && first < 0xE0 && follows(1))
        return {((first & 0x1FU) << 6) | bits(1), 2};
    if (first >= 0xE0 && first < 0xF0 && follows(1) && follows(2)) {
        const char32_t codePoint = ((first & 0x0FU) << 12) | (bits(1) << 6) | bits(2);
        if (codePoint >= 0x800)
            return {codePoint, 3};
    }
    if (first >= 0xF0 && first < 0xF5 && follows(1) && follows(2) && follows(3)) {
        const char32_t codePoint =
            ((first & 0x07U) << 18) | (bits(1) << 12) | (bits(2) << 6) | bits(3);
        if (codePoint >= 0x10000 && codePoint <= 0x10FFFF)
            return {codePoint, 4};
    }
    return {};
}

inline void appendUtf8(std::string& text, char32_t codePoint) {
    const auto put = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (codePoint < 0x80)
        return put(codePoint);
    if (codePoint < 0x800) {
        put(0xC0U | (codePoint >> 6));
    } else {
        if (codePoint < 0x10000) {
            put(0xE0U | (codePoint >> 12));
        } else {
            put(0xF0U | (codePoint >> 18));
            put(0x80U | ((codePoint >> 12) & 0x3FU));
        }
        put(0x80U | ((codePoint >> 6) & 0x3FU));
    }
    put(0x80U | (codePoint & 0x3FU));
}

[[nodiscard]] constexpr bool isHighSurrogate(char32_t unit) noexcept {
    return unit >= 0xD800 && unit < 0xDC00;
}
[[nodiscard]] constexpr bool isLowSurrogate(char32_t unit) noexcept {
    return unit >= 0xDC00 && unit < 0xE000;
}
[[nodiscard]] constexpr char32_t joined(char32_t high, char32_t low) noexcept {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}
/// The UTF-16 units of a character beyond the first 65,536.
[[nodiscard]] constexpr char16_t highHalf(char32_t codePoint) noexcept {
    return static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
}
[[nodiscard]] constexpr char16_t lowHalf(char32_t codePoint) noexcept {
    return static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
}

} // namespace jet
