#pragma once

#include "jet/Types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

/// What the bytes of a Jet 3 text mean: one of the Windows code pages 874, 932, 936, 949, 950 and
/// 1250 to 1258. A byte that the page leaves undefined still has a character of its own, so that a
/// text read and written again keeps it: U+0080 to U+009F for the bytes 80 to 9F of a page of
/// single bytes, else U+F700 + the byte. No page uses the characters U+F780 to U+F7FF otherwise.
class CodePage {
public:
    /// The page of that number; 0 counts as 1252. Made at first use, lives to the end.
    /// @throws Error{unsupported} for any other page, or if the system can't convert a double-byte
    /// page.
    [[nodiscard]] static const CodePage& of(std::uint16_t number);

    CodePage(const CodePage&) = delete;

    [[nodiscard]] std::uint16_t number() const noexcept { return number_; }

    /// The characters of `bytes`, appended. Any bytes have some.
    void appendText(std::string& text, std::span<const std::byte> bytes) const;

    /// The one or two bytes of a character; a value above 0xFF is two, first one high. -1 if the
    /// page doesn't have the character.
    [[nodiscard]] int bytesOf(char32_t codePoint) const noexcept {
        if (codePoint == 0)
            return 0;
        const int bytes = codePoint < bytes_.size() ? bytes_[codePoint] : 0;
        return bytes == 0 ? -1 : bytes;
    }

private:
    /// The UTF-8 of a single byte; length 0 if the byte is the first of two.
    struct Single {
        std::array<char, 3> utf8{};
        std::uint8_t length{};
    };

    explicit CodePage(std::uint16_t number);
    void setSingle(unsigned byte, char16_t character);
    void readDoubleBytes();

    std::uint16_t number_;
    std::array<Single, 256> singles_{};
    std::vector<char16_t> pairs_;      ///< by both bytes, 0 = undefined; empty: no such page
    std::vector<std::uint16_t> bytes_; ///< by character; 0 = none, but for the character 0
};

} // namespace jet
