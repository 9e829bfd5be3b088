#include "ado/provider/QueryFields.h"

#include "jet/Error.h"
#include "jet/Names.h"

#include <algorithm>

namespace ado {

using jet::Errc;
using jet::Error;

std::optional<QueryFields> QueryFields::of(const Select& select, std::vector<TableShape> tables) {
    QueryFields fields;
    fields.from_ = select.tables;
    fields.tables_ = std::move(tables);
    const bool found = std::ranges::all_of(
        select.items, [&](const SelectItem& item) { return fields.addItem(item); });
    return found ? std::optional(std::move(fields)) : std::nullopt;
}

QueryFields::QueryFields(const Select& select, const std::vector<Computed>& columns)
    : from_(select.tables) {
    fields_.reserve(columns.size());
    for (const Computed& column : columns)
        fields_.push_back({column.name, column.table, 0, fields_.size()});
}

bool QueryFields::addItem(const SelectItem& item) {
    const std::size_t before = fields_.size();
    for (const std::size_t table : tablesOf(item.qualifier)) {
        const auto columns = tables_[table].columns();
        const auto add = [&](std::size_t column) {
            fields_.push_back({item.label.empty() ? columns[column].name : item.label,
                               from_[table].alias, table, column});
        };
        if (item.column.empty()) {
            for (std::size_t i = 0; i < columns.size(); ++i)
                add(i);
        } else if (const auto column = tables_[table].findColumn(item.column)) {
            add(*column);
        }
    }
    ambiguous_ = ambiguous_ || (!item.column.empty() && fields_.size() > before + 1);
    return fields_.size() > before;
}

// ---- names ------------------------------------------------------------------------------------

/// All of them for an empty qualifier.
std::vector<std::size_t> QueryFields::tablesOf(std::string_view qualifier) const {
    const std::string wanted = jet::foldedName(qualifier);
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        if (qualifier.empty() || jet::foldedName(from_[i].alias) == wanted)
            found.push_back(i);
    }
    return found;
}

std::size_t QueryFields::tableNamed(std::string_view name) const {
    const std::vector<std::size_t> found = tablesOf(name);
    if (found.size() != 1)
        throw Error(Errc::notFound,
                    "Não existe a tabela \"" + std::string(name) + "\" neste conjunto.");
    return found.front();
}

/// By the name that its table has in the statement, or in the file. Folded, or empty for any.
bool QueryFields::isOf(const QueryField& field, const std::string& qualifier) const {
    return qualifier.empty() || jet::foldedName(field.qualifier) == qualifier ||
           (!tables_.empty() && jet::foldedName(tables_[field.table].name()) == qualifier);
}

std::size_t QueryFields::fieldNamed(std::string_view name) const {
    if (const auto known = named_.find(name); known != named_.end())
        return known->second;
    const std::string wanted = jet::foldedName(name);
    const std::size_t point = wanted.rfind('.');
    const std::string qualifier = wanted.substr(0, point == std::string::npos ? 0 : point);
    std::string column = wanted.substr(point == std::string::npos ? 0 : point + 1);
    if (const auto alias = aliases_.find(column); alias != aliases_.end())
        column = jet::foldedName(alias->second);
    std::vector<std::size_t> found;
    std::string candidates;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        const QueryField& field = fields_[i];
        if (!isOf(field, qualifier) || jet::foldedName(field.name) != column)
            continue;
        found.push_back(i);
        candidates += (found.size() > 1 ? ", " : "") + field.qualifier + "." + field.name;
    }
    if (found.empty() && optional_.contains(column))
        return named_.emplace(std::string(name), kNoField).first->second;
    if (found.empty())
        throw Error(Errc::notFound, sentenceForMissing(name));
    if (found.size() > 1)
        throw Error(
            Errc::notFound,
            "O campo \"" + std::string(name) +
                "\" existe mais de uma vez neste conjunto; escreva um destes: " + candidates + ".");
    return named_.emplace(std::string(name), found.front()).first->second;
}

bool QueryFields::has(std::string_view name) const {
    const std::string wanted = jet::foldedName(name);
    return std::ranges::any_of(
        fields_, [&](const QueryField& field) { return jet::foldedName(field.name) == wanted; });
}

std::string QueryFields::sentenceForMissing(std::string_view name) const {
    const std::string field = "o campo \"" + std::string(name) + "\"";
    if (tables_.size() != 1)
        return "Não existe " + field + " neste conjunto.";
    return "Falta " + field + " na tabela \"" + tables_.front().name() +
           "\" da base de dados. Peça a quem cuida dela que o acrescente.";
}

std::optional<std::string> QueryFields::missing(std::string_view name) const {
    return has(name) ? std::nullopt : std::optional(sentenceForMissing(name));
}

void QueryFields::addOptional(std::string_view name) { optional_.insert(jet::foldedName(name)); }

void QueryFields::addAlias(const std::string& alias, std::string_view field) {
    const std::string& column = fields_[fieldNamed(field)].name;
    if (!has(alias))
        aliases_.emplace(jet::foldedName(alias), column);
}

// ---- spelling ---------------------------------------------------------------------------------

Spelling QueryFields::spelling(const Spelling& ofFile) const {
    return {ofFile.table,
            [this, ofFile](std::string_view name, std::span<const std::string> own) {
                return spelledColumn(name, own, ofFile);
            },
            [this](std::string_view name) {
                const auto tables = tablesOf(name);
                return tables.empty() ? std::string(name) : from_[tables.front()].alias;
            }};
}

std::string QueryFields::spelledColumn(std::string_view name, std::span<const std::string> own,
                                       const Spelling& ofFile) const {
    const std::string wanted = jet::foldedName(name);
    if (const auto alias = aliases_.find(wanted); alias != aliases_.end())
        return alias->second;
    if (tables_.empty()) {
        const auto field = std::ranges::find_if(fields_, [&](const QueryField& candidate) {
            return jet::foldedName(candidate.name) == wanted;
        });
        if (field != fields_.end())
            return field->name;
    }
    std::vector<std::string> tables(own.begin(), own.end());
    for (const SelectedTable& table : from_)
        tables.push_back(table.table);
    return ofFile.column(name, tables);
}

} // namespace ado
