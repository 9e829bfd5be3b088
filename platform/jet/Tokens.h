#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace jet {

/// One word or sign of a statement, or of a rule that the file keeps.
struct Token {
    enum class Kind { word, bracketed, text, number, date, sign };
    Kind kind;
    /// Word: as written. Bracketed and text: what stands between the quotes, doubled ones single.
    /// Number and sign: as written. Date: the number of days.
    std::string text;

    [[nodiscard]] bool isSign(std::string_view sign) const {
        return kind == Kind::sign && text == sign;
    }
};

/// The tokens of a statement. @throws Error{syntax} for what has no place in one.
[[nodiscard]] std::vector<Token> tokenize(std::string_view statement);

/// An ASCII word in lower case; other letters stay.
[[nodiscard]] std::string lowerAscii(std::string_view word);

/// The number of days that the inside of a date literal means: "12/31/2024", "12/31/2024
/// 08:30:00", "2024-12-31", "08:30", "8:30 PM". Month first, whatever the machine's settings.
/// @throws Error{syntax}.
[[nodiscard]] double parseDateLiteral(std::string_view inside);

} // namespace jet
