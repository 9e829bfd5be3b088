#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Parts and forms of texts, as rules of the file and statements ask for them.
///
/// Characters count as the file counts them: one beyond the first 65,536 counts twice, and no part
/// has half of it. A byte that isn't UTF-8 is a character of its own.
namespace jet {

/// Bytes of the character at `at`, which must lie inside the text.
[[nodiscard]] std::size_t bytesAt(std::string_view text, std::size_t at);
[[nodiscard]] std::int64_t lengthOf(std::string_view text);
/// Where the character number `count`, from 0, begins, in bytes; the end if there are fewer.
[[nodiscard]] std::size_t placeOf(std::string_view text, std::int64_t count);

/// At most so many characters. `count` is 0 at least.
[[nodiscard]] std::string_view leftOf(std::string_view text, std::int64_t count);
[[nodiscard]] std::string_view rightOf(std::string_view text, std::int64_t count);
/// What begins at the character number `from`, from 1.
[[nodiscard]] std::string_view middleOf(std::string_view text, std::int64_t from);

enum class Side : std::uint8_t { left = 1, right = 2, both = 3 };
[[nodiscard]] std::string_view trimmed(std::string_view text, Side side);

/// Letters of the western code page; others stay as they are.
[[nodiscard]] char32_t upperCase(char32_t c) noexcept;
[[nodiscard]] char32_t lowerCase(char32_t c) noexcept;
[[nodiscard]] std::string upperCase(std::string_view text);
[[nodiscard]] std::string lowerCase(std::string_view text);

} // namespace jet
