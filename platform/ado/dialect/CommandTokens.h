#pragma once

#include "jet/Tokens.h"

#include <string>
#include <string_view>
#include <vector>

namespace ado {

/// @throws Error{syntax}: a sentence that begins with what can't be done, and this reason.
[[noreturn]] void refuseCommand(const std::string& reason);

/// The tokens of one command, and what kind of word stands where: a keyword of the dialect, or a
/// name. Its parentheses are closed, and it is the only one.
class CommandTokens {
public:
    /// A semicolon at the end is left out. @throws Error{syntax}.
    explicit CommandTokens(std::string_view text);

    [[nodiscard]] std::size_t size() const noexcept { return tokens_.size(); }
    [[nodiscard]] const jet::Token& operator[](std::size_t i) const { return tokens_[i]; }
    /// Open parentheses at i, a parenthesis itself not counted.
    [[nodiscard]] std::size_t depth(std::size_t i) const { return depths_[i]; }

    [[nodiscard]] bool isSign(std::size_t i, std::string_view sign) const {
        return i < size() && tokens_[i].isSign(sign);
    }
    /// Whether the word at i stands before or behind a point.
    [[nodiscard]] bool isQualified(std::size_t i) const {
        return isSign(i + 1, ".") || (i > 0 && tokens_[i - 1].isSign("."));
    }
    /// The keyword at i in lower case, or "" where none stands.
    [[nodiscard]] std::string_view keyword(std::size_t i) const {
        return i < size() ? keywords_[i] : std::string_view();
    }
    /// Whether the word at i, or what stands there in brackets, isn't a keyword.
    [[nodiscard]] bool isNameOrFunction(std::size_t i) const {
        using Kind = jet::Token::Kind;
        return i < size() && keywords_[i].empty() &&
               (tokens_[i].kind == Kind::word || tokens_[i].kind == Kind::bracketed);
    }

private:
    void measureDepths();
    [[nodiscard]] std::string_view findKeyword(std::size_t i) const;

    std::vector<jet::Token> tokens_;
    std::vector<std::size_t> depths_;
    std::vector<std::string_view> keywords_;
};

} // namespace ado
