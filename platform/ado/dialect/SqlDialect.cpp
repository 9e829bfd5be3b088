#include "ado/dialect/SqlDialect.h"

#include "ado/dialect/Command.h"

#include <algorithm>
#include <optional>

namespace ado {

namespace {

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
std::optional<std::vector<SelectedTable>> plainTables(const Command& command, std::size_t begin,
                                                      std::size_t end) {
    std::vector<SelectedTable> tables;
    bool expected = true;    // a table stands here, or a parenthesis before one
    std::vector<bool> joins; // of each open parenthesis: whether tables stand in it
    for (std::size_t at = begin; at < end; ++at) {
        if (command.isSign(at, "(")) {
            joins.push_back(expected);
        } else if (command.isSign(at, ")")) {
            joins.pop_back();
        } else if (expected) {
            if (!command.isName(at))
                return std::nullopt;
            SelectedTable table{command.name(at), command.name(at)};
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
        const std::string_view word = command.keyword(i);
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

Select parseSelect(std::string_view statement, const Spelling& spelling, Tongue& tongue) {
    const Command command(statement, spelling, tongue);
    if (command.keyword(0) != "select")
        refuseCommand("só se aceita o nome de uma tabela ou um select, e ele começa com \"" +
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

std::string parseCondition(std::string_view condition, const Spelling& spelling, Tongue& tongue) {
    const Command command(condition, spelling, tongue);
    for (std::size_t i = 0; i < command.size(); ++i) {
        static constexpr std::string_view kClauses[] = {"select", "from",  "where", "group",
                                                        "order",  "union", "having"};
        if (command.depth(i) == 0 &&
            std::ranges::find(kClauses, command.keyword(i)) != std::end(kClauses))
            refuseCommand("\"" + command[i].text + "\" não tem lugar numa condição");
    }
    return command.text();
}

std::vector<SortTerm> parseSort(std::string_view fields, const Spelling& spelling) {
    const Command command(fields, spelling, sqliteTongue()); // names only, which all spell alike
    auto terms = plainTerms(command, 0, command.size());
    if (!terms)
        refuseCommand("a ordem pede nomes de campos separados por vírgulas, e não " +
                      std::string(fields));
    return std::move(*terms);
}

} // namespace ado
