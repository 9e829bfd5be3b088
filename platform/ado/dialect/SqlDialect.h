#pragma once

#include "ado/dialect/Spelling.h"
#include "ado/dialect/Tongue.h"

#include <vector>

/// The database's own SQL, as the windows write it, turned into an engine's, SQLite's unless
/// another is named: a pass over the tokens. The engine does the parsing; this only spells for it,
/// and lets nothing through but one select.
///
/// What is taken, beyond what both have in common:
///  - `#mm/dd/yyyy#`, with or without a time, and `#hh:mm:ss#`: the number of days since
///    1899-12-30;
///  - `true` and `false`: -1 and 0, the values that a yes/no column has here;
///  - 'text' and "text", a quote inside doubled; a word may follow at once ("'jo'order by NOME");
///  - `[name]`; names without regard to case and trailing blanks, accented letters included;
///  - the functions listed in SqlFunctions.h, with or without a `$` after the name ("mid$");
///  - `&` joins texts, null counting as empty, after all arithmetic and before any comparison;
///    `mod`; `/` is never a division of whole numbers.
///
/// What is not taken: any other statement, a second statement, comments, parameters. Every word is
/// a keyword of the list in CommandTokens.cpp, a listed function, or a name, which is quoted: a
/// value that breaks out of its quotes can make a statement fail or select other rows, and no more.
///
/// Texts compare by the file's own order, which SQLite knows as the collation kTextOrder. Columns
/// have it by declaration; this pass gives it to every literal and function, so that expressions
/// have it too. (To replace SQLite's own BINARY isn't enough: it sorts and groups past it.)
namespace ado {

/// A table that a select reads, and the name that its columns go by there.
struct SelectedTable {
    std::string table;
    std::string alias;
};

/// One item of a plain select list: a column, or with an empty column all of them.
struct SelectItem {
    std::string qualifier; ///< a table's alias, or empty
    std::string column;
    std::string label; ///< the name given with "as", or empty
};

/// One term of an order by that names a column.
struct SortTerm {
    std::string qualifier;
    std::string column;
    bool descending = false;
};

/// One select statement, in the engine's words.
struct Select {
    std::string text;
    /// Its rows are rows of the tables: no union, no grouping, no "distinct", and a select list of
    /// columns only. The members below are filled in only then.
    bool plain = false;
    std::vector<SelectItem> items;
    std::vector<SelectedTable> tables;
    std::string from;
    std::string where;   ///< empty: all rows
    std::string orderBy; ///< empty: any order
    /// The terms of orderBy, if all of them name columns.
    std::vector<SortTerm> sortTerms;
};

/// @throws Error{syntax}.
[[nodiscard]] Select parseSelect(std::string_view statement, const Spelling& spelling,
                                 Tongue& tongue = sqliteTongue());
/// A condition, as in a where clause. @throws Error{syntax}.
[[nodiscard]] std::string parseCondition(std::string_view condition, const Spelling& spelling,
                                         Tongue& tongue = sqliteTongue());
/// "name, table.name desc". @throws Error{syntax}.
[[nodiscard]] std::vector<SortTerm> parseSort(std::string_view fields, const Spelling& spelling);

} // namespace ado
