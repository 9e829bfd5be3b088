#include "jet/ExtendTable.h"

#include "jet/Names.h"
#include "jet/database/DatabasePager.h"
#include "jet/database/DatabaseParts.h"
#include "jet/index/TableBuilder.h"
#include "jet/row/SystemTables.h"

#include <algorithm>

namespace jet {

namespace {

/// That the table can be so, with what it has.
void requireMakeable(const Table& table, const TableSpec& more, const TextCodec& names) {
    TableSpec whole{table.name(), {}, more.indexes};
    const TableDefinition& definition = table.definition();
    for (const Column& column : definition.columns)
        whole.columns.push_back({.name = column.name, .type = column.type, .width = 1});
    // Of those that are there no more than their names is looked at.
    for (ColumnSpec& column : whole.columns)
        if (column.type == ColumnType::numeric || fixedLength(column.type) == 0)
            column.type = isLongValue(column.type) ? column.type : ColumnType::text;
    whole.columns.insert(whole.columns.end(), more.columns.begin(), more.columns.end());
    whole.requireMakeable(names);
    const bool full = definition.maxColumns + more.columns.size() > kMaxColumns ||
                      definition.logicalIndexes.size() + more.indexes.size() > kMaxIndexes ||
                      definition.realIndexes.size() + more.indexes.size() > kMaxIndexes;
    if (full)
        throw Error(Errc::full, "Na tabela \"" + table.name() +
                                    "\" não há lugar para mais campos ou índices. Compacte o banco "
                                    "de dados e tente de novo.");
    for (const IndexSpec& index : more.indexes)
        for (const LogicalIndex& other : definition.logicalIndexes)
            if (foldedName(other.name) == foldedName(index.name))
                throw Error(Errc::exists, "A tabela \"" + table.name() + "\" já tem o índice \"" +
                                              index.name + "\".");
}

/// The day of the table's form, as the catalog keeps it for people; one that can't be changed goes
/// without.
void noteForm(Table& objects, PageNo definition) {
    if (objects.readOnlyReason())
        return;
    const auto id = objects.findColumn("Id");
    const auto type = objects.findColumn("Type");
    const auto updated = objects.findColumn("DateUpdate");
    RowCursor row = objects.scan();
    for (bool there = id && type && updated && row.first(); there; there = row.next())
        if (row.row().integer(*type) == tableObject &&
            (row.row().integer(*id) & kObjectPageMask) == number(definition)) {
            objects.update(row.id(), std::vector<Assignment>{
                                         {*updated, Date::now()}
            });
            return;
        }
}

} // namespace

void extendTable(Database& database, std::string_view name, const TableSpec& more) {
    DatabaseTransaction all(database);
    database.claim();
    Table& table = database.table(name);
    const TableDefinition& definition = table.definition();
    if (definition.system)
        throw Error(Errc::misuse, "A tabela \"" + table.name() + "\" é do próprio banco de dados.");
    if (const auto reason = table.readOnlyReason())
        throw Error(Errc::readOnly, *reason);
    auto& parts = DatabasePager::parts(database);
    requireMakeable(table, more, TextCodec(database.version(), parts.header.codePage));
    const PageNo page = definition.page();
    const std::size_t indexes = definition.realIndexes.size();
    parts.work.run([&] {
        extendTable(parts.pager, parts.pages, definition, more, parts.header.order,
                    parts.header.columnMark);
        Table extended(database, table.name(), page);
        for (std::size_t i = indexes; i < extended.indexes().size(); ++i)
            extended.fillIndex(i);
    });
    noteForm(database.table("MSysObjects"), page);
    all.commit();
    const auto entry = std::ranges::find_if(
        parts.catalog, [&](const auto& known) { return known.second.table.get() == &table; });
    parts.lose(entry->second,
               Error(Errc::conflict, "A tabela \"" + table.name() +
                                         "\" recebeu campos ou índices enquanto estava em uso."));
}

} // namespace jet
