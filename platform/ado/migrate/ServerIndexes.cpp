#include "ado/migrate/ServerIndexes.h"

#include "ado/dialect/Spelling.h"
#include "ado/server/ServerSchema.h"
#include "ado/server/ServerValue.h"
#include "jet/Names.h"

#include <algorithm>

namespace ado {

namespace {

bool isThere(ServerWire& wire, const MissingIndex& wanted) {
    const jet::TableSpec& table = *wanted.table;
    const std::size_t first = table.placeOf(wanted.index->columns.front().name);
    std::string besides;
    for (const std::string& name : includable(table, *wanted.index))
        besides += (besides.empty() ? "" : ",") + quotedName(name);
    return wire.run("select 1 from pg_catalog.pg_index i join pg_catalog.pg_attribute a on "
                    "a.attrelid = i.indrelid and a.attname = $2 "
                    "where i.indrelid = format('valtrino.%I', $1)::regclass and "
                    "(a.attnum = i.indkey[0] or pg_get_indexdef(i.indexrelid, 1, true) "
                    "operator(pg_catalog.=) any (array[format('jet_chave(%I::text)', a.attname), "
                    "format('jet_chave(%I)', a.attname)])) and not exists (select 1 from "
                    "pg_catalog.pg_attribute b where b.attrelid = i.indrelid and b.attname = any "
                    "($3::name[]) and b.attnum <> all (i.indkey::int2[]))",
                    {parameterOf(table.name), parameterOf(table.columns[first].name),
                     parameterOf("{" + besides + "}")})
               .rows() > 0;
}

} // namespace

std::vector<MissingIndex> missingIndexes(ServerWire& wire,
                                         const std::vector<jet::TableSpec>& tables,
                                         std::span<const jet::TableSpec> further) {
    std::vector<MissingIndex> missing;
    for (const jet::TableSpec& more : further)
        for (const jet::TableSpec& table : tables)
            for (const jet::IndexSpec& index : more.indexes) {
                const MissingIndex one{&table, &index};
                if (jet::foldedName(table.name) == jet::foldedName(more.name) &&
                    table.placeOf(index.columns.front().name) < table.columns.size() &&
                    !isThere(wire, one))
                    missing.push_back(one);
            }
    return missing;
}

void makeIndex(ServerWire& wire, const MissingIndex& missing) {
    const jet::TableSpec& table = *missing.table;
    const auto place = [&](const jet::IndexSpec& index) {
        return table.placeOf(index.columns.front().name);
    };
    for (jet::IndexSpec own : table.indexes) {
        if (own.unique || own.primary || own.columns.size() != 1 ||
            place(own) != place(*missing.index))
            continue;
        const ServerRows former =
            wire.run("select i.indexrelid::regclass::text from pg_catalog.pg_index i where "
                     "i.indrelid = format('valtrino.%I', $1)::regclass and "
                     "obj_description(i.indexrelid) operator(pg_catalog.=) $2",
                     {parameterOf(table.name), parameterOf(noteOf(own))});
        if (former.rows() == 0)
            continue;
        own.included = missing.index->included;
        createIndex(wire, table, own);
        static_cast<void>(wire.run("drop index " + former.field(0, 0).value_or("")));
        return;
    }
    createOwnIndex(wire, table, *missing.index);
}

} // namespace ado
