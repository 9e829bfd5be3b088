#pragma once

#include "ado/dialect/CommandTokens.h"
#include "ado/dialect/Spelling.h"
#include "ado/dialect/Tongue.h"

namespace ado {

class SelectScopes;

/// One command of the dialect: what stands where, and how an engine spells it.
class Command {
public:
    /// @throws Error{syntax}, Error{notFound} for an unknown function, and what `spelling` throws.
    Command(std::string_view text, const Spelling& spelling, Tongue& tongue);

    [[nodiscard]] std::size_t size() const noexcept { return tokens_.size(); }
    [[nodiscard]] const jet::Token& operator[](std::size_t i) const { return tokens_[i]; }
    [[nodiscard]] std::size_t depth(std::size_t i) const { return tokens_.depth(i); }
    /// The keyword at i, or "" where none stands.
    [[nodiscard]] std::string_view keyword(std::size_t i) const { return tokens_.keyword(i); }
    [[nodiscard]] bool isName(std::size_t i) const { return i < size() && !names_[i].empty(); }
    /// The stored spelling of the name at i.
    [[nodiscard]] const std::string& name(std::size_t i) const { return names_[i]; }
    [[nodiscard]] bool isSign(std::size_t i, std::string_view sign) const {
        return tokens_.isSign(i, sign);
    }

    /// The engine's text of the tokens from begin to end.
    [[nodiscard]] std::string text(std::size_t begin, std::size_t end) const;
    [[nodiscard]] std::string text() const { return text(0, size()); }

private:
    void spell(std::size_t i, const SelectScopes& scopes);
    void spellWord(std::size_t i, const SelectScopes& scopes);
    void spellName(std::size_t i, const SelectScopes& scopes);
    [[nodiscard]] std::string spelledSign(const jet::Token& token);
    [[nodiscard]] bool opensCall() const;
    [[nodiscard]] bool isValue(std::size_t i) const;
    [[nodiscard]] bool isArithmetic(std::size_t i) const;
    void encloseOperands();

    /// Tokens from one to another.
    struct Part {
        std::size_t begin;
        std::size_t end;
    };
    [[nodiscard]] std::size_t endOfPart(std::size_t begin, std::size_t depth) const;
    [[nodiscard]] std::vector<Part> itemsBefore(std::size_t order) const;
    [[nodiscard]] std::optional<std::string> sortedText(Part term,
                                                        const std::vector<Part>& items) const;
    void sortTerms(std::size_t order);
    void chooseFromList(std::size_t in);

    CommandTokens tokens_;
    Tongue& tongue_;
    std::vector<std::string> names_;
    std::vector<std::string> spelled_;
    std::vector<bool> calls_; ///< of each open parenthesis: whether a function's
};

} // namespace ado
