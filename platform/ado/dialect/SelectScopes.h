#pragma once

#include "ado/dialect/CommandTokens.h"
#include "ado/dialect/Spelling.h"

#include <map>

namespace ado {

/// The tables that a command reads, in each of its selects, and so whose columns its names are.
class SelectScopes {
public:
    /// Asks `spelling` for the tables, and for nothing else yet. Both outlive it.
    SelectScopes(const CommandTokens& tokens, const Spelling& spelling);

    /// How the name at i is stored: a table, its other name, what stands before a point, a column.
    [[nodiscard]] std::string nameAt(std::size_t i) const;

private:
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

    void enter(std::vector<Level>& levels, std::string_view keyword);
    void addTable(std::size_t i, Scope& scope);
    template <class Visit>
    void eachScope(std::size_t i, Visit&& visit) const;
    [[nodiscard]] const Scope::Qualifier* qualifierAt(std::size_t i) const;

    const CommandTokens& tokens_;
    const Spelling& spelling_;
    std::vector<Scope> scopes_{Scope{}};           ///< the first: what the command is about
    std::vector<std::size_t> scopeAt_;             ///< of each token
    std::map<std::size_t, std::string> spelledAt_; ///< tables and their other names, by token
};

} // namespace ado
