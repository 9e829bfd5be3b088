#include "jet/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace jet {

double asWritten(float single) noexcept {
    const double widened = single;
    if (!std::isfinite(single))
        return widened;
    std::array<char, 32> digits{};
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), single).ptr;
    double number = 0;
    std::from_chars(digits.data(), end, number);
    return static_cast<float>(number) == single ? number : widened;
}

std::optional<Numeric> numericFrom(bool negative, std::string_view digits, std::uint8_t scale) {
    constexpr std::size_t kMostDigits = 28;
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    if (digits.size() > kMostDigits)
        return std::nullopt;
    Numeric number{negative && !digits.empty(), {}, scale};
    for (const char digit : digits) {
        auto carried = static_cast<std::uint64_t>(digit - '0');
        for (auto word = number.words.rbegin(); word != number.words.rend(); ++word) {
            carried += std::uint64_t{*word} * 10;
            *word = static_cast<std::uint32_t>(carried);
            carried >>= 32;
        }
    }
    return number;
}

} // namespace jet
