#include "ado/dialect/Command.h"

#include "ado/dialect/SelectScopes.h"
#include "jet/Error.h"
#include "jet/Names.h"

#include <cstdlib>
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
    for (std::size_t i = 0; i + 2 < size(); ++i)
        if (keyword(i) == "order" && keyword(i + 1) == "by")
            sortTerms(i);
    for (std::size_t i = 1; i + 2 < size() && tongue_.listsAreChoices(); ++i)
        if (keyword(i) == "in" && isSign(i + 1, "(") && keyword(i + 2) != "select")
            chooseFromList(i);
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

// ---- what rows are sorted by ------------------------------------------------------------------

/// The comma, clause or end that ends what begins there.
std::size_t Command::endOfPart(std::size_t begin, std::size_t depth) const {
    std::size_t end = begin;
    while (end < size() && tokens_.depth(end) >= depth &&
           (tokens_.depth(end) > depth || !(isSign(end, ",") || keyword(end) == "from" ||
                                            keyword(end) == "asc" || keyword(end) == "desc")))
        ++end;
    return end;
}

/// The list of the select that an "order by" belongs to; empty where it names columns of what
/// comes out, and nothing else: behind a union, and where rows are told apart.
std::vector<Command::Part> Command::itemsBefore(std::size_t order) const {
    const std::size_t depth = tokens_.depth(order);
    std::size_t select = order;
    while (select > 0 && !(tokens_.depth(select) == depth && keyword(select) == "select"))
        --select;
    const bool united =
        select > 0 && (keyword(select - 1) == "union" || keyword(select - 1) == "all");
    if (keyword(select) != "select" || united || keyword(select + 1) == "distinct")
        return {};
    std::vector<Part> items;
    for (std::size_t at = select + (keyword(select + 1) == "all" ? 1 : 0); at < order;) {
        const std::size_t end = endOfPart(at + 1, depth);
        items.push_back({at + 1, end});
        if (!isSign(end, ","))
            break;
        at = end;
    }
    return items;
}

/// An item of the list may be meant, by the name that it is given or by its number: engines know
/// it by those only where it stands alone. Nothing for the number of none.
std::optional<std::string> Command::sortedText(Part term, const std::vector<Part>& items) const {
    if (term.end - term.begin != 1)
        return text(term.begin, term.end);
    if (tokens_[term.begin].kind == Kind::number) {
        const auto number = static_cast<std::size_t>(std::atoll(tokens_[term.begin].text.c_str()));
        if (number < 1 || number > items.size())
            return std::nullopt;
        Part item = items[number - 1];
        const std::size_t last = item.end - 1;
        if (last > item.begin && isName(last) && !isSign(last - 1, "."))
            item.end = keyword(last - 1) == "as" ? last - 1 : last;
        return text(item.begin, item.end);
    }
    for (const Part item : items) {
        const std::size_t last = item.end - 1;
        if (last > item.begin && isName(last) && !isSign(last - 1, ".") && isName(term.begin) &&
            jet::foldedName(name(last)) == jet::foldedName(name(term.begin)))
            return text(item.begin, keyword(last - 1) == "as" ? last - 1 : last);
    }
    return text(term.begin, term.end);
}

void Command::sortTerms(std::size_t order) {
    const std::vector<Part> items = itemsBefore(order);
    if (items.empty())
        return;
    const std::size_t depth = tokens_.depth(order);
    for (std::size_t at = order + 2; at < size();) {
        const Part term{at, endOfPart(at, depth)};
        std::size_t end = term.end;
        const bool directed = keyword(end) == "asc" || keyword(end) == "desc";
        if (term.begin >= term.end)
            return; // the engine says what is wrong
        const auto meant = sortedText(term, items);
        if (!meant)
            return;
        if (auto sorted = tongue_.sorted(*meant, keyword(end) == "desc")) {
            for (std::size_t i = term.begin; i < end + (directed ? 1 : 0); ++i)
                spelled_[i].clear();
            spelled_[term.begin] = std::move(*sorted);
        }
        end += directed ? 1 : 0;
        if (!isSign(end, ","))
            return;
        at = end + 1;
    }
}

// ---- lists ------------------------------------------------------------------------------------

/// Of a column; what is computed stays as it stands.
void Command::chooseFromList(std::size_t in) {
    const std::size_t depth = tokens_.depth(in);
    const bool negated = keyword(in - 1) == "not";
    const std::size_t last = in - (negated ? 2 : 1);
    if (last >= in || !isName(last))
        return;
    const std::size_t first = last >= 2 && isSign(last - 1, ".") ? last - 2 : last;
    if (first > 0 && (isArithmetic(first - 1) || isSign(first - 1, "&")))
        return;
    const std::string column = text(first, last + 1);
    std::string choices;
    std::size_t at = in + 2;
    for (; at < size() && tokens_.depth(at) > depth; ++at) {
        const std::size_t begin = at;
        while (at < size() && tokens_.depth(at) > depth &&
               !(tokens_.depth(at) == depth + 1 && isSign(at, ",")))
            ++at;
        if (at == begin)
            return; // the engine says what is wrong
        choices += choices.empty() ? "" : " or ";
        choices += column;
        choices += " = ";
        choices += text(begin, at);
        if (!isSign(at, ","))
            break;
        if (isSign(at + 1, ")"))
            return;
    }
    if (choices.empty() || !isSign(at, ")"))
        return;
    for (std::size_t i = first; i <= at; ++i)
        spelled_[i].clear();
    spelled_[first] = (negated ? "( not ( " : "( ( ") + choices + " ) )";
}

} // namespace ado
