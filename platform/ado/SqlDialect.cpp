#include "ado/SqlDialect.h"

#include "ado/SqlFunctions.h"
#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/Tokens.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>

namespace ado {

namespace {

using jet::Errc;
using jet::Error;
using jet::lowerAscii;
using jet::Token;
using Kind = Token::Kind;

constexpr std::size_t kDeepestParentheses = 60;

/// What the dialect has besides names and functions; passed on as written.
constexpr std::array<std::string_view, 28> kKeywords{
    "select", "distinct", "all",   "from", "where", "group",   "by",    "having", "order", "asc",
    "desc",   "as",       "inner", "left", "right", "outer",   "join",  "on",     "and",   "or",
    "not",    "in",       "is",    "null", "like",  "between", "union", "exists"};

[[noreturn]] void refuse(const std::string& reason) {
    throw Error(Errc::syntax, "O comando não foi aceito: " + reason + ".");
}

bool isKeyword(std::string_view lower) {
    return std::ranges::find(kKeywords, lower) != kKeywords.end();
}

/// The tokens of one command with what each means where it stands, and their SQLite spelling.
class Command {
public:
    Command(std::string_view text, const Spelling& spelling) : tokens_(jet::tokenize(text)) {
        if (!tokens_.empty() && tokens_.back().isSign(";"))
            tokens_.pop_back();
        if (tokens_.empty())
            refuse("ele está vazio");
        measureDepths();
        findTables(spelling); // a column may stand before its table
        for (std::size_t i = 0; i < tokens_.size(); ++i)
            spell(i, spelling);
    }

    [[nodiscard]] std::size_t size() const { return tokens_.size(); }
    [[nodiscard]] const Token& operator[](std::size_t i) const { return tokens_[i]; }
    [[nodiscard]] std::size_t depth(std::size_t i) const { return depths_[i]; }
    /// The keyword at i, or "" where none stands.
    [[nodiscard]] const std::string& keyword(std::size_t i) const {
        static const std::string none;
        return i < size() ? keywords_[i] : none;
    }
    [[nodiscard]] bool isName(std::size_t i) const { return i < size() && !names_[i].empty(); }
    /// The stored spelling of the name at i.
    [[nodiscard]] const std::string& name(std::size_t i) const { return names_[i]; }
    [[nodiscard]] bool isSign(std::size_t i, std::string_view sign) const {
        return i < size() && tokens_[i].isSign(sign);
    }

    /// The SQLite text of the tokens from begin to end.
    [[nodiscard]] std::string text(std::size_t begin, std::size_t end) const {
        std::string joined;
        for (std::size_t i = begin; i < end; ++i) {
            if (i > begin)
                joined += ' ';
            joined += spelled_[i];
        }
        return joined;
    }
    [[nodiscard]] std::string text() const { return text(0, size()); }

private:
    void measureDepths() {
        std::size_t depth = 0;
        for (const Token& token : tokens_) {
            if (token.isSign(";"))
                refuse("só um comando é aceito de cada vez");
            if (token.isSign(")") && depth-- == 0)
                refuse("há um parêntese fechado que não foi aberto");
            depths_.push_back(depth);
            if (token.isSign("(") && ++depth > kDeepestParentheses)
                refuse("há parênteses demais uns dentro dos outros");
        }
        if (depth != 0)
            refuse("falta fechar um parêntese");
    }

    [[nodiscard]] bool isQualified(std::size_t i) const {
        return isSign(i + 1, ".") || (i > 0 && tokens_[i - 1].isSign("."));
    }
    /// Whether the word at i is a keyword where it stands.
    [[nodiscard]] bool isKeywordAt(std::size_t i) const {
        if (i >= size() || tokens_[i].kind != Kind::word || isQualified(i))
            return false;
        const std::string lower = lowerAscii(tokens_[i].text);
        return isKeyword(lower) && !(isSign(i + 1, "(") && engineFunction(lower) != nullptr);
    }
    [[nodiscard]] bool isNameAt(std::size_t i) const {
        return i < size() && !isKeywordAt(i) &&
               (tokens_[i].kind == Kind::word || tokens_[i].kind == Kind::bracketed);
    }

    /// The tables of one select, by the names that their columns go by.
    struct Scope {
        std::size_t outer = 0; ///< the select around it
        std::vector<std::string> tables;
        struct Qualifier {
            std::string spelling;
            std::string table;
        };
        std::map<std::string, Qualifier> qualifiers; ///< by folded name
    };

    /// One pair of parentheses, or the whole.
    struct Level {
        bool from = false;     ///< a from clause goes on
        bool expected = false; ///< a table stands here, or a parenthesis before one
        std::size_t scope = 0;
    };

    /// The tables that the command reads, in each of its selects.
    void findTables(const Spelling& spelling) {
        std::vector<Level> levels(1);
        for (std::size_t i = 0; i < size(); ++i) {
            if (tokens_[i].isSign("(")) {
                const Level& level = levels.back();
                levels.push_back({level.expected, level.expected, level.scope});
            } else if (tokens_[i].isSign(")")) {
                levels.pop_back();
                levels.back().expected = false;
            } else if (tokens_[i].isSign(",")) {
                levels.back().expected = levels.back().from;
            } else if (isKeywordAt(i)) {
                enter(levels, lowerAscii(tokens_[i].text));
            } else if (levels.back().expected && isNameAt(i)) {
                levels.back().expected = false;
                addTable(i, scopes_[levels.back().scope], spelling);
            }
            scopeAt_.push_back(levels.back().scope);
        }
    }

    void enter(std::vector<Level>& levels, const std::string& keyword) {
        static constexpr std::string_view kEnds[] = {"where", "group", "order", "having", "union"};
        Level& level = levels.back();
        if (keyword == "select") {
            const std::size_t outer = levels.size() > 1 ? levels[levels.size() - 2].scope : 0;
            level = {false, false, scopes_.size()};
            scopes_.push_back({outer, {}, {}});
        } else if (keyword == "from") {
            level.from = level.expected = true;
        } else if (keyword == "join") {
            level.expected = level.from;
        } else if (std::ranges::find(kEnds, keyword) != std::end(kEnds)) {
            level.from = level.expected = false;
        }
    }

    /// Takes the table at i, and the other name that may follow it.
    void addTable(std::size_t i, Scope& scope, const Spelling& spelling) {
        const std::string table = spelling.table(tokens_[i].text);
        const bool as = isKeywordAt(i + 1) && lowerAscii(tokens_[i + 1].text) == "as";
        const std::size_t alias = i + (as ? 2 : 1);
        const bool renamed = isNameAt(alias) && !isQualified(alias);
        const std::string& name = renamed ? tokens_[alias].text : table;
        scope.tables.push_back(table);
        scope.qualifiers[jet::foldedName(name)] = {name, table};
        spelledAt_.emplace(i, table);
        if (renamed)
            spelledAt_.emplace(alias, name);
    }

    /// What `visit` gives of the scopes of a token, the innermost first, until it is true.
    template <class Visit>
    void eachScope(std::size_t i, Visit&& visit) const {
        for (std::size_t scope = scopeAt_[i];; scope = scopes_[scope].outer)
            if (visit(scopes_[scope]) || scope == 0)
                return;
    }

    /// Null if the name at i isn't that of a table of the command.
    [[nodiscard]] const Scope::Qualifier* qualifierAt(std::size_t i) const {
        const Scope::Qualifier* found = nullptr;
        eachScope(i, [&, name = jet::foldedName(tokens_[i].text)](const Scope& scope) {
            const auto known = scope.qualifiers.find(name);
            found = known != scope.qualifiers.end() ? &known->second : nullptr;
            return found != nullptr;
        });
        return found;
    }

    [[nodiscard]] std::string nameAt(std::size_t i, const Spelling& spelling) const {
        const std::string& text = tokens_[i].text;
        if (const auto fixed = spelledAt_.find(i); fixed != spelledAt_.end())
            return fixed->second;
        if (isSign(i + 1, ".")) {
            const Scope::Qualifier* const known = qualifierAt(i);
            return known != nullptr ? known->spelling : spelling.qualifier(text);
        }
        std::vector<std::string> tables;
        const Scope::Qualifier* const qualifier =
            i > 1 && tokens_[i - 1].isSign(".") ? qualifierAt(i - 2) : nullptr;
        if (qualifier != nullptr)
            tables.push_back(qualifier->table);
        else
            eachScope(i, [&](const Scope& scope) {
                tables.insert(tables.end(), scope.tables.begin(), scope.tables.end());
                return false;
            });
        return spelling.column(text, tables);
    }

    void spell(std::size_t i, const Spelling& spelling) {
        const Token& token = tokens_[i];
        keywords_.emplace_back();
        names_.emplace_back();
        switch (token.kind) {
        case Kind::word:
            spellWord(i, spelling);
            break;
        case Kind::bracketed:
            names_.back() = nameAt(i, spelling);
            spelled_.push_back(quotedName(names_.back()));
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

    void spellWord(std::size_t i, const Spelling& spelling) {
        const Token& token = tokens_[i];
        std::string lower = lowerAscii(token.text);
        const bool qualified = isQualified(i);
        const bool called = isSign(i + 1, "(");
        if (lower.back() == '$')
            lower.pop_back();
        const char* function = called && !qualified ? engineFunction(lower) : nullptr;
        if (function != nullptr) {
            spelled_.push_back(quotedName(function));
            return;
        }
        if (!qualified && isKeyword(lower)) {
            keywords_.back() = lower;
            spelled_.push_back(lower);
            return;
        }
        if (!qualified && (lower == "true" || lower == "false")) {
            spelled_.emplace_back(lower == "true" ? "-1" : "0");
            return;
        }
        if (!qualified && lower == "mod") {
            spelled_.emplace_back("%");
            return;
        }
        if (called)
            throw Error(Errc::notFound, "A função \"" + token.text + "\" não existe.");
        names_.back() = nameAt(i, spelling);
        spelled_.push_back(quotedName(names_.back()));
    }

    std::string spelledSign(const Token& token) {
        if (token.text == "/")
            return "* 1.0 /";
        if (token.text == "&")
            return std::string("->> null collate ") + kTextOrder + " ->>"; // see SqlFunctions.h
        if (token.text == "(")
            calls_.push_back(closesCall());
        if (token.text == ")") {
            const bool call = calls_.back();
            calls_.pop_back();
            if (call)
                return std::string(") collate ") + kTextOrder;
        }
        return token.text;
    }

    /// Whether the parenthesis about to be spelled opens the arguments of a function.
    [[nodiscard]] bool closesCall() const {
        const std::size_t at = spelled_.size();
        return at > 0 && tokens_[at - 1].kind == Kind::word && keywords_[at - 1].empty() &&
               names_[at - 1].empty() && spelled_[at - 1].front() == '"';
    }

    std::vector<Token> tokens_;
    std::vector<Scope> scopes_{Scope{}};           ///< the first: what the command is about
    std::vector<std::size_t> scopeAt_;             ///< of each token
    std::map<std::size_t, std::string> spelledAt_; ///< tables and their other names, by token
    std::vector<std::size_t> depths_; ///< open parentheses, a parenthesis itself not counted
    std::vector<std::string> keywords_;
    std::vector<std::string> names_;
    std::vector<std::string> spelled_;
    std::vector<bool> calls_;
};

/// name | name.name | name.* | *, from `at` on; moves `at` behind it.
std::optional<SelectItem> columnAt(const Command& command, std::size_t& at) {
    if (command.isSign(at, "*")) {
        ++at;
        return SelectItem{};
    }
    if (!command.isName(at))
        return std::nullopt;
    SelectItem item{{}, command.name(at++), {}};
    if (!command.isSign(at, "."))
        return item;
    ++at;
    item.qualifier = std::move(item.column);
    item.column.clear();
    if (command.isName(at))
        item.column = command.name(at++);
    else if (command.isSign(at, "*"))
        ++at;
    else
        return std::nullopt;
    return item;
}

/// The select list between begin and end, if it names columns only.
std::optional<std::vector<SelectItem>> plainItems(const Command& command, std::size_t begin,
                                                  std::size_t end) {
    std::vector<SelectItem> items;
    for (std::size_t at = begin;; ++at) {
        auto item = columnAt(command, at);
        if (!item)
            return std::nullopt;
        const bool as = command.keyword(at) == "as";
        if (as)
            ++at;
        if (as || (at < end && command.isName(at))) {
            if (!command.isName(at) || item->column.empty())
                return std::nullopt;
            item->label = command.name(at++);
        }
        items.push_back(std::move(*item));
        if (at >= end)
            return items;
        if (!command.isSign(at, ","))
            return std::nullopt;
    }
}

/// The tables between begin and end, if there are no subqueries among them.
std::optional<std::vector<SourceTable>> plainTables(const Command& command, std::size_t begin,
                                                    std::size_t end) {
    std::vector<SourceTable> tables;
    bool expected = true;    // a table stands here, or a parenthesis before one
    std::vector<bool> joins; // of each open parenthesis: whether tables stand in it
    for (std::size_t at = begin; at < end; ++at) {
        if (command.isSign(at, "(")) {
            joins.push_back(expected);
        } else if (command.isSign(at, ")")) {
            if (!joins.empty())
                joins.pop_back();
        } else if (expected) {
            if (!command.isName(at))
                return std::nullopt;
            SourceTable table{command.name(at), command.name(at)};
            if (command.keyword(at + 1) == "as")
                ++at;
            if (at + 1 < end && command.isName(at + 1))
                table.alias = command.name(++at);
            tables.push_back(std::move(table));
            expected = false;
        } else {
            const bool amongTables = joins.empty() || joins.back();
            expected = amongTables && (command.isSign(at, ",") || command.keyword(at) == "join");
        }
    }
    return tables;
}

/// The terms between begin and end, if all of them are columns.
std::optional<std::vector<SortTerm>> plainTerms(const Command& command, std::size_t begin,
                                                std::size_t end) {
    std::vector<SortTerm> terms;
    for (std::size_t at = begin;; ++at) {
        const auto column = columnAt(command, at);
        if (!column || column->column.empty())
            return std::nullopt;
        SortTerm term{column->qualifier, column->column};
        if (command.keyword(at) == "asc" || command.keyword(at) == "desc")
            term.descending = command.keyword(at++) == "desc";
        terms.push_back(std::move(term));
        if (at >= end)
            return terms;
        if (!command.isSign(at, ","))
            return std::nullopt;
    }
}

/// Where the clauses of the outermost select begin; npos for one that isn't there.
struct Clauses {
    std::size_t from = std::string::npos;
    std::size_t where = std::string::npos;
    std::size_t orderBy = std::string::npos;
    bool grouped = false; ///< or joined with another select
};

Clauses findClauses(const Command& command) {
    Clauses clauses;
    for (std::size_t i = 1; i < command.size(); ++i) {
        if (command.depth(i) > 0)
            continue;
        const std::string& word = command.keyword(i);
        if (word == "select")
            clauses.grouped = true;
        if (word == "from")
            clauses.from = std::min(clauses.from, i);
        else if (word == "where")
            clauses.where = std::min(clauses.where, i);
        else if (word == "order" && command.keyword(i + 1) == "by")
            clauses.orderBy = std::min(clauses.orderBy, i);
        else if (word == "group" || word == "having" || word == "union")
            clauses.grouped = true;
    }
    return clauses;
}

} // namespace

std::string quotedName(std::string_view name) {
    std::string quoted = "\"";
    for (const char c : name) {
        if (c == '"')
            quoted += c;
        quoted += c;
    }
    return quoted + '"';
}

std::string quotedText(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'')
            quoted += c;
        quoted += c;
    }
    return quoted + "' collate " + kTextOrder;
}

Select parseSelect(std::string_view statement, const Spelling& spelling) {
    const Command command(statement, spelling);
    if (command.keyword(0) != "select")
        refuse("só se aceita o nome de uma tabela ou um select, e ele começa com \"" +
               command[0].text + "\"");
    Select select;
    select.text = command.text();

    const Clauses clauses = findClauses(command);
    const std::size_t end = command.size();
    const std::size_t fromEnd = std::min({clauses.where, clauses.orderBy, end});
    const std::size_t whereEnd = std::min(clauses.orderBy, end);
    const bool unfinished = (clauses.where < end && clauses.where + 1 >= whereEnd) ||
                            (clauses.orderBy < end && clauses.orderBy + 2 >= end);
    if (clauses.grouped || clauses.from >= fromEnd || unfinished)
        return select;
    std::size_t list = 1;
    if (command.keyword(list) == "all")
        ++list;
    auto items = plainItems(command, list, clauses.from);
    auto tables = plainTables(command, clauses.from + 1, fromEnd);
    if (!items || !tables || tables->empty())
        return select;

    select.plain = true;
    select.items = std::move(*items);
    select.tables = std::move(*tables);
    select.from = command.text(clauses.from + 1, fromEnd);
    if (clauses.where < whereEnd)
        select.where = command.text(clauses.where + 1, whereEnd);
    if (clauses.orderBy < end) {
        select.orderBy = command.text(clauses.orderBy + 2, end);
        if (auto terms = plainTerms(command, clauses.orderBy + 2, end))
            select.sortTerms = std::move(*terms);
    }
    return select;
}

std::string parseCondition(std::string_view condition, const Spelling& spelling) {
    const Command command(condition, spelling);
    for (std::size_t i = 0; i < command.size(); ++i) {
        static constexpr std::string_view kClauses[] = {"select", "from",  "where", "group",
                                                        "order",  "union", "having"};
        if (command.depth(i) == 0 &&
            std::ranges::find(kClauses, command.keyword(i)) != std::end(kClauses))
            refuse("\"" + command[i].text + "\" não tem lugar numa condição");
    }
    return command.text();
}

std::vector<SortTerm> parseSort(std::string_view fields, const Spelling& spelling) {
    const Command command(fields, spelling);
    auto terms = plainTerms(command, 0, command.size());
    if (!terms)
        refuse("a ordem pede nomes de campos separados por vírgulas, e não " + std::string(fields));
    return std::move(*terms);
}

} // namespace ado
