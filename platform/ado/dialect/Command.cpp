#include "ado/dialect/Command.h"

#include "ado/dialect/SelectScopes.h"
#include "jet/Error.h"

#include <utility>

namespace ado {

using Kind = jet::Token::Kind;

namespace {

constexpr const char* kRemainder = "%"; ///< `mod`, in every engine

} // namespace

Command::Command(std::string_view text, const Spelling& spelling, Tongue& tongue)
    : tokens_(text), tongue_(tongue) {
    const SelectScopes scopes(tokens_, spelling); // first: a column may stand before its table
    for (std::size_t i = 0; i < tokens_.size(); ++i)
        spell(i, scopes);
    encloseOperands();
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
        spelled_.push_back(tongue_.text(token.text));
        break;
    case Kind::number:
        spelled_.push_back(token.text);
        break;
    case Kind::date:
        spelled_.push_back(tongue_.date(token.text));
        break;
    case Kind::sign:
        spelled_.push_back(spelledSign(token));
        break;
    }
}

void Command::spellWord(std::size_t i, const SelectScopes& scopes) {
    if (const std::string_view keyword = tokens_.keyword(i); !keyword.empty()) {
        const bool negated = i > 0 && tokens_.keyword(i - 1) == "not";
        if (keyword == "not" && tokens_.keyword(i + 1) == "like")
            spelled_.emplace_back(); // said with the other
        else if (keyword == "like")
            spelled_.push_back(negated ? tongue_.notLike() : tongue_.like());
        else
            spelled_.emplace_back(keyword);
        return;
    }
    std::string lower = jet::lowerAscii(tokens_[i].text);
    const bool called = tokens_.isSign(i + 1, "(");
    if (!tokens_.isQualified(i)) {
        if (lower == "true" || lower == "false") {
            spelled_.push_back(tongue_.truth(lower == "true"));
            return;
        }
        if (lower == "mod") {
            spelled_.emplace_back(kRemainder);
            return;
        }
        if (lower.back() == '$')
            lower.pop_back();
        if (auto function = called ? tongue_.function(lower) : std::nullopt) {
            spelled_.push_back(std::move(*function));
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
        return tongue_.join();
    if (token.text == "(")
        calls_.push_back(opensCall());
    if (token.text == ")") {
        const bool call = calls_.back();
        calls_.pop_back();
        if (call)
            return tongue_.endOfCall();
    }
    return token.text;
}

/// Whether the parenthesis about to be spelled opens the arguments of a function.
bool Command::opensCall() const {
    const std::size_t at = spelled_.size();
    return at > 0 && tokens_[at - 1].kind == Kind::word && tokens_.keyword(at - 1).empty() &&
           spelled_[at - 1].front() == '"';
}

// ---- what `&` joins ---------------------------------------------------------------------------

bool Command::isValue(std::size_t i) const {
    const std::string_view keyword = tokens_.keyword(i);
    return tokens_[i].kind != Kind::sign && !isArithmetic(i) &&
           (keyword.empty() || keyword == "null");
}

bool Command::isArithmetic(std::size_t i) const {
    return tokens_[i].kind == Kind::sign
               ? std::string_view("+-*/").find(tokens_[i].text) != std::string_view::npos
               : spelled_[i] == kRemainder;
}

/// SQLite's word for it binds tighter than all arithmetic, `&` less: what is computed on either
/// side of it gets parentheses.
void Command::encloseOperands() {
    struct Operand {
        std::size_t begin;
        bool computed = false; ///< more than one value
        bool joined = false;   ///< by a `&` before it
    };
    std::vector<Operand> open{{0}}; // of each open parenthesis the last one
    const auto end = [&](std::size_t i, std::size_t next, bool joins) {
        Operand& operand = open.back();
        if (operand.computed && (operand.joined || joins)) {
            spelled_[operand.begin].insert(0, "( ");
            spelled_[i - 1] += " )";
        }
        operand = {next, false, joins};
    };
    for (std::size_t i = 0; i < size(); ++i) {
        if (isSign(i, "(")) {
            open.push_back({i + 1});
        } else if (isSign(i, ")")) {
            end(i, i + 1, false);
            open.pop_back();
        } else if (isArithmetic(i)) {
            open.back().computed = true;
        } else if (isValue(i)) {
            if (i > 0 && (isValue(i - 1) || isSign(i - 1, ")"))) // the name that a column is given
                end(i, i, false);
        } else if (!isSign(i, ".")) {
            end(i, i + 1, isSign(i, "&"));
        }
    }
    end(size(), size(), false);
}

} // namespace ado
