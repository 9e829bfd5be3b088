#include "jet/DropTable.h"

#include "jet/database/DatabasePager.h"
#include "jet/database/DatabaseParts.h"
#include "jet/database/Relationships.h"
#include "jet/page/DataPage.h"
#include "jet/page/MapLayout.h"
#include "jet/row/DefinitionImage.h"
#include "jet/row/SystemTables.h"

#include <algorithm>
#include <vector>

namespace jet {

namespace {

/// The sets of pages that a table has.
struct Maps {
    std::vector<RowId> owned; ///< each page is in one of these
    std::vector<RowId> free;  ///< those of them with room
};

Maps mapsOf(const TableDefinition& table) {
    Maps maps{{table.ownedMap}, {table.freeMap}};
    for (const LongValueMaps& values : table.longValues) {
        maps.owned.push_back(values.owned);
        if (values.free)
            maps.free.push_back(*values.free);
    }
    for (const RealIndex& index : table.realIndexes)
        maps.owned.push_back(index.map);
    return maps;
}

void givePages(Pager& pager, PageAllocator& pages, RowId at) {
    UsageMap map(pager, at);
    for (auto page = map.next(0); page; page = map.next(number(*page) + 1))
        pages.give(*page, map);
}

/// Gives back the row of a map that names no pages any more, and the pages that it goes on on.
void giveMap(Pager& pager, PageAllocator& pages, RowId at) {
    std::vector<PageNo> further;
    {
        const PageRef page = pager.read(at.page);
        const Slot row = DataPage(pager.format(), page.bytes(), at.page).slot(at.slot);
        if (load(row.bytes.data(), MapRowLayout::type) == MapType::reference)
            for (std::size_t i = 0; i < MapRowLayout::referencesIn(row.bytes.size()); ++i)
                if (const PageNo part = load(row.bytes.data(), MapRowLayout::reference(i));
                    number(part) != 0)
                    further.push_back(part);
    }
    for (const PageNo page : further)
        pages.give(page);
    DataPageEditor editor(pager.format(), pager.change(at.page), at.page);
    editor.remove(at.slot);
    if (editor.view().empty())
        pages.give(at.page);
}

/// Erases the rows of a system table whose column has that number.
void eraseWhere(Table& table, const char* column, PageNo definition) {
    std::vector<RowId> rows;
    const auto place = table.findColumn(column);
    RowCursor cursor = table.scan();
    for (bool there = place && cursor.first(); there; there = cursor.next())
        if (cursor.row().integer(*place) == number(definition))
            rows.push_back(cursor.id());
    for (const RowId row : rows)
        table.erase(row);
}

} // namespace

void dropTable(const std::filesystem::path& file, std::string_view name) {
    Database database(file);
    DatabaseTransaction all(database);
    database.claim();
    Table& table = database.table(name);
    const TableDefinition definition = table.definition();
    const auto users = database.tableNames();
    if (definition.system || std::ranges::find(users, table.name()) == users.end())
        throw Error(Errc::misuse, "A tabela \"" + table.name() + "\" é do próprio banco de dados.");
    if (const auto reason = table.readOnlyReason())
        throw Error(Errc::readOnly, *reason);
    Pager& pager = DatabasePager::of(database);
    if (!DefinitionImage(pager, definition).relationshipEnds().empty() ||
        !relationshipsOf(database, table).empty()) // told of in the catalog alone
        throw Error(Errc::related,
                    "A tabela \"" + table.name() + "\" tem um relacionamento com outra.");
    auto& parts = DatabasePager::parts(database);
    parts.work.run([&] {
        const Maps maps = mapsOf(definition);
        for (const RowId map : maps.owned)
            givePages(pager, parts.pages, map);
        for (const auto* some : {&maps.owned, &maps.free})
            for (const RowId map : *some)
                giveMap(pager, parts.pages, map);
        for (const PageNo page : definition.pages)
            parts.pages.give(page);
    });
    eraseWhere(database.table("MSysObjects"), "Id", definition.page());
    eraseWhere(database.table("MSysACEs"), "ObjectId", definition.page());
    all.commit();
}

} // namespace jet
