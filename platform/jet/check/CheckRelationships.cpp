// What binds tables to each other: the rows of MSysRelationships, and indexes of the tables.
#include "jet/Names.h"
#include "jet/check/CheckCatalog.h"
#include "jet/row/RelationshipPairs.h"
#include "jet/row/SystemTables.h"

#include <algorithm>

namespace jet {

namespace {

/// A relationship, and the first of its rows.
struct Told {
    std::string name;
    RowId row;
    RelationshipPairs pairs{};
};

} // namespace

void CatalogCheck::checkRelationships(const TableCheck& relationships, const Tables& tables) const {
    const auto name = columnOf(relationships, "szRelationship");
    const auto count = columnOf(relationships, "ccolumn");
    const auto place = columnOf(relationships, "icolumn");
    const auto table = columnOf(relationships, "szObject");
    const auto column = columnOf(relationships, "szColumn");
    const auto otherTable = columnOf(relationships, "szReferencedObject");
    const auto otherColumn = columnOf(relationships, "szReferencedColumn");
    if (!name || !count || !place || !table || !column || !otherTable || !otherColumn)
        return;
    std::map<std::string, Told> all;
    forEachRow(relationships, [&](RowId id, const RowView& row) {
        const auto text = [&](std::optional<std::size_t> at) {
            std::string buffer;
            row.text(*at, buffer);
            return buffer;
        };
        requireColumn(tables, text(table), text(column), id);
        requireColumn(tables, text(otherTable), text(otherColumn), id);
        all.try_emplace(foldedName(text(name)), Told{text(name), id})
            .first->second.pairs.add({foldedName(text(table)), foldedName(text(otherTable))},
                                     row.integer(*count), row.integer(*place));
    });
    for (const auto& [folded, told] : all)
        if (!told.pairs.whole())
            context_.findings.error(told.row.page, kWhere, "um relacionamento não está completo",
                                    inQuotes(told.name));
    for (const Object& object : objects_)
        if (object.type == relationshipObject && !all.contains(foldedName(object.name)))
            context_.findings.warning(object.row.page, kWhere, "um relacionamento não tem campos",
                                      inQuotes(object.name));
}

void CatalogCheck::requireColumn(const Tables& tables, const std::string& table,
                                 const std::string& column, RowId row) const {
    if (linked_.contains(foldedName(table)))
        return;
    const auto found = std::ranges::find(tables, foldedName(table), [](const auto& candidate) {
        return foldedName(candidate->name());
    });
    if (found == tables.end() ||
        std::ranges::none_of((*found)->definition().columns, [&](const Column& candidate) {
            return foldedName(candidate.name) == foldedName(column);
        }))
        context_.findings.error(row.page, kWhere, "um relacionamento usa um campo que não existe",
                                inQuotes(std::string(table).append(".").append(column)));
}

void CatalogCheck::checkPartners(const Tables& tables) const {
    std::map<PageNo, const TableDefinition*> definitions;
    for (const auto& table : tables)
        definitions.emplace(table->definition().page(), &table->definition());
    for (const auto& table : tables)
        for (const LogicalIndex& index : table->definition().logicalIndexes) {
            if (index.kind != LogicalIndex::Kind::relationship)
                continue;
            const auto other = definitions.find(index.partnerTable);
            if (other == definitions.end() ||
                std::ranges::none_of(other->second->logicalIndexes, [&](const LogicalIndex& one) {
                    return arePartners(table->definition(), index, one);
                }))
                context_.findings.error(table->definition().page(),
                                        "tabela " + inQuotes(table->name()),
                                        "o índice de um relacionamento não tem par na outra tabela",
                                        inQuotes(index.name));
        }
}

} // namespace jet
