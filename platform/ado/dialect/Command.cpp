#include "ado/dialect/Command.h"

#include "ado/dialect/SelectScopes.h"
#include "ado/dialect/SqlFunctions.h"
#include "jet/Error.h"

namespace ado {

using Kind = jet::Token::Kind;

Command::Command(std::string_view text, const Spelling& spelling) : tokens_(text) {
    const SelectScopes scopes(tokens_, spelling); // first: a column may stand before its table
    for (std::size_t i = 0; i < tokens_.size(); ++i)
        spell(i, scopes);
}

std::string Command::text(std::size_t begin, std::size_t end) const {
    std::string joined;
    for (std::size_t i = begin; i < end; ++i) {
        if (i > begin)
            joined += ' ';
        joined += spelled_[i];
    }
    return joined;
}

void Command::spell(std::size_t i, const SelectScopes& scopes) {
    const jet::Token& token = tokens_[i];
    names_.emplace_back();
    switch (token.kind) {
    case Kind::word:
        spellWord(i, scopes);
        break;
    case Kind::bracketed:
        spellName(i, scopes);
        break;
    case Kind::text:
        spelled_.push_back(quotedText(token.text));
        break;
    case Kind::number:
    case Kind::date:
        spelled_.push_back(token.text);
        break;
    case Kind::sign:
        spelled_.push_back(spelledSign(token));
        break;
    }
}

void Command::spellWord(std::size_t i, const SelectScopes& scopes) {
    static constexpr struct {
        std::string_view word;
        const char* sql;
    } kWords[] = {
        {"true",  "-1"},
        {"false", "0" },
        {"mod",   "%" }
    };

    if (const std::string_view keyword = tokens_.keyword(i); !keyword.empty()) {
        spelled_.emplace_back(keyword);
        return;
    }
    std::string lower = jet::lowerAscii(tokens_[i].text);
    const bool called = tokens_.isSign(i + 1, "(");
    if (!tokens_.isQualified(i)) {
        for (const auto& known : kWords) {
            if (lower == known.word) {
                spelled_.emplace_back(known.sql);
                return;
            }
        }
        if (lower.back() == '$')
            lower.pop_back();
        if (const char* function = called ? engineFunction(lower) : nullptr) {
            spelled_.push_back(quotedName(function));
            return;
        }
    }
    if (called)
        throw jet::Error(jet::Errc::notFound, "A função \"" + tokens_[i].text + "\" não existe.");
    spellName(i, scopes);
}

void Command::spellName(std::size_t i, const SelectScopes& scopes) {
    names_.back() = scopes.nameAt(i);
    spelled_.push_back(quotedName(names_.back()));
}

std::string Command::spelledSign(const jet::Token& token) {
    if (token.text == "/")
        return "* 1.0 /";
    if (token.text == "&")
        return std::string("->> null collate ") + kTextOrder + " ->>"; // see SqlFunctions.h
    if (token.text == "(")
        calls_.push_back(opensCall());
    if (token.text == ")") {
        const bool call = calls_.back();
        calls_.pop_back();
        if (call)
            return std::string(") collate ") + kTextOrder;
    }
    return token.text;
}

/// Whether the parenthesis about to be spelled opens the arguments of a function.
bool Command::opensCall() const {
    const std::size_t at = spelled_.size();
    return at > 0 && tokens_[at - 1].kind == Kind::word && tokens_.keyword(at - 1).empty() &&
           names_[at - 1].empty() && spelled_[at - 1].front() == '"';
}

} // namespace ado
