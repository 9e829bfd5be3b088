#include "ado/dialect/SelectScopes.h"

#include "jet/Names.h"

#include <algorithm>

namespace ado {

SelectScopes::SelectScopes(const CommandTokens& tokens, const Spelling& spelling)
    : tokens_(tokens), spelling_(spelling) {
    std::vector<Level> levels(1);
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (tokens.isSign(i, "(")) {
            const Level& level = levels.back();
            levels.push_back({level.expected, level.expected, level.scope});
        } else if (tokens.isSign(i, ")")) {
            levels.pop_back();
            levels.back().expected = false;
        } else if (tokens.isSign(i, ",")) {
            levels.back().expected = levels.back().from;
        } else if (!tokens.keyword(i).empty()) {
            enter(levels, tokens.keyword(i));
        } else if (levels.back().expected && tokens.isNameOrFunction(i)) {
            levels.back().expected = false;
            addTable(i, scopes_[levels.back().scope]);
        }
        scopeAt_.push_back(levels.back().scope);
    }
}

void SelectScopes::enter(std::vector<Level>& levels, std::string_view keyword) {
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
void SelectScopes::addTable(std::size_t i, Scope& scope) {
    const std::string table = spelling_.table(tokens_[i].text);
    const std::size_t alias = i + (tokens_.keyword(i + 1) == "as" ? 2 : 1);
    const bool renamed = tokens_.isNameOrFunction(alias) && !tokens_.isQualified(alias);
    const std::string& name = renamed ? tokens_[alias].text : table;
    scope.tables.push_back(table);
    scope.qualifiers[jet::foldedName(name)] = {name, table};
    spelledAt_.emplace(i, table);
    if (renamed)
        spelledAt_.emplace(alias, name);
}

/// What `visit` gives of the scopes of a token, the innermost first, until it is true.
template <class Visit>
void SelectScopes::eachScope(std::size_t i, Visit&& visit) const {
    for (std::size_t scope = scopeAt_[i];; scope = scopes_[scope].outer)
        if (visit(scopes_[scope]) || scope == 0)
            return;
}

/// Null if the name at i isn't that of a table of the command.
const SelectScopes::Scope::Qualifier* SelectScopes::qualifierAt(std::size_t i) const {
    const Scope::Qualifier* found = nullptr;
    eachScope(i, [&, name = jet::foldedName(tokens_[i].text)](const Scope& scope) {
        const auto known = scope.qualifiers.find(name);
        found = known != scope.qualifiers.end() ? &known->second : nullptr;
        return found != nullptr;
    });
    return found;
}

std::string SelectScopes::nameAt(std::size_t i) const {
    const std::string& text = tokens_[i].text;
    if (const auto fixed = spelledAt_.find(i); fixed != spelledAt_.end())
        return fixed->second;
    if (tokens_.isSign(i + 1, ".")) {
        const Scope::Qualifier* const known = qualifierAt(i);
        return known != nullptr ? known->spelling : spelling_.qualifier(text);
    }
    std::vector<std::string> tables;
    const Scope::Qualifier* const qualifier =
        i > 1 && tokens_.isSign(i - 1, ".") ? qualifierAt(i - 2) : nullptr;
    if (qualifier != nullptr)
        tables.push_back(qualifier->table);
    else
        eachScope(i, [&](const Scope& scope) {
            tables.insert(tables.end(), scope.tables.begin(), scope.tables.end());
            return false;
        });
    return spelling_.column(text, tables);
}

} // namespace ado
