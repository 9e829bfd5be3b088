#include "jet/Extras.h"

#include "jet/Names.h"
#include "jet/database/Catalog.h"
#include "jet/database/DatabasePager.h"
#include "jet/database/DatabaseParts.h"
#include "jet/database/Relationships.h"
#include "jet/row/SystemTables.h"
#include "jet/rule/Properties.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace jet {

namespace {

constexpr std::int64_t kFolderTypes[] = {containerObject, relationshipObject, -32758};
constexpr const char* kLinkColumns[] = {"Database", "Connect", "ForeignName"};
constexpr const char* kStepColumns[] = {"Attribute",  "Order", "Name1",  "Name2",
                                        "Expression", "Flag",  "LvExtra"};
const TextCodec kNeutral(Version::jet4);

std::size_t at(const Table& table, const char* column) {
    if (const auto found = table.findColumn(column))
        return *found;
    corrupt(table.definition().page(),
            "a tabela de sistema \"" + table.name() + "\" não tem a coluna " + column);
}

const TextCodec& namesCodec(const Table& objects) {
    return objects.columns()[at(objects, "Name")].codec;
}

/// Those that can't be read are nobody's to change; of an older file they stay behind, and who asks
/// for the rules in them is told.
Bytes neutral(const Bytes& stored, const TextCodec& names) {
    const bool same = names.version() == Version::jet4;
    try {
        Bytes made = recodedProperties(stored, names, kNeutral);
        return same && !made.empty() ? stored : made;
    } catch (const Error&) {
        return same ? stored : Bytes();
    }
}

std::map<std::int64_t, std::vector<Row>> stepsOf(Database& database) {
    std::map<std::int64_t, std::vector<Row>> steps;
    if (!database.hasTable("MSysQueries"))
        return steps;
    const Table& table = database.table("MSysQueries");
    const std::size_t object = at(table, "ObjectId");
    RowCursor cursor = table.scan();
    for (bool there = cursor.first(); there; there = cursor.next()) {
        Row step;
        for (const char* const name : kStepColumns) {
            const auto column = table.findColumn(name);
            step.push_back(column ? cursor.row().value(*column) : Value{});
        }
        steps[cursor.row().integer(object)].push_back(std::move(step));
    }
    return steps;
}

void readObjects(Database& database, Extras& extras) {
    auto steps = stepsOf(database);
    const Table& table = database.table("MSysObjects");
    const std::size_t id = at(table, "Id");
    const std::size_t type = at(table, "Type");
    const std::size_t name = at(table, "Name");
    const std::size_t flags = at(table, "Flags");
    const std::size_t properties = at(table, "LvProp");
    RowCursor cursor = table.scan();
    for (bool there = cursor.first(); there; there = cursor.next()) {
        const RowView& row = cursor.row();
        ExtraObject object{row.integer(type), "", row.integer(flags), {}};
        row.text(name, object.name);
        const Value stored = row.value(properties);
        if (const auto* bytes = std::get_if<Bytes>(&stored))
            object.properties = neutral(*bytes, namesCodec(table));
        switch (object.type) {
        case ExtraObject::kTable:
        case ExtraObject::kDatabase:
        case ExtraObject::kDocument:
            if (object.properties.empty() ||
                (object.type == ExtraObject::kTable &&
                 !isUserTable(static_cast<std::uint32_t>(object.flags), object.name)))
                continue;
            break;
        case ExtraObject::kQuery:
            object.steps = std::move(steps[row.integer(id)]);
            break;
        case ExtraObject::kLink:
        case ExtraObject::kServerLink:
            for (std::size_t i = 0; i < object.link.size(); ++i)
                object.link[i] = row.value(at(table, kLinkColumns[i]));
            break;
        default:
            if (std::ranges::find(kFolderTypes, object.type) == std::end(kFolderTypes))
                extras.others.push_back(object.name);
            continue;
        }
        extras.objects.push_back(std::move(object));
    }
}

void readDeclared(Database& database, Extras& extras) {
    if (!database.hasTable("MSysRelationships"))
        return;
    const Table& table = database.table("MSysRelationships");
    const auto text = [&](const RowView& row, const char* column) {
        std::string buffer;
        return std::string(row.text(at(table, column), buffer));
    };
    std::map<std::string, std::map<std::int64_t, std::pair<std::string, std::string>>> columns;
    RowCursor cursor = table.scan();
    for (bool there = cursor.first(); there; there = cursor.next()) {
        const RowView& row = cursor.row();
        const std::string name = text(row, "szRelationship");
        auto& pairs = columns[foldedName(name)];
        if (pairs.empty())
            extras.relationships.push_back({name,
                                            text(row, "szObject"),
                                            text(row, "szReferencedObject"),
                                            {},
                                            row.integer(at(table, "grbit"))});
        pairs.try_emplace(row.integer(at(table, "icolumn")), text(row, "szColumn"),
                          text(row, "szReferencedColumn"));
    }
    for (RelationshipSpec& one : extras.relationships)
        for (auto& [place, pair] : columns[foldedName(one.name)])
            one.columns.push_back(std::move(pair));
}

/// Those that only the tables' own indexes tell of.
void readUndeclared(Database& database, Extras& extras) {
    for (const std::string& name : database.tableNames()) {
        const Table& table = database.table(name);
        for (const Relationship& bond : relationshipsOf(database, table)) {
            RelationshipSpec made{
                bond.name,
                bond.child.table,
                bond.parent.table,
                {},
                (bond.cascadesUpdates ? RelationshipFlags::cascadeUpdate : 0) |
                    (bond.cascadesDeletes ? RelationshipFlags::cascadeDelete : 0) |
                    (bond.nullsOnDelete ? RelationshipFlags::cascadeNull : 0)};
            const Table& parent = database.table(bond.parent.table);
            const Table& child = database.table(bond.child.table);
            for (std::size_t i = 0; i < bond.child.columns.size(); ++i)
                made.columns.emplace_back(child.columns()[bond.child.columns[i]].name,
                                          parent.columns()[bond.parent.columns[i]].name);
            // Both its tables tell of it.
            const auto known = [&](const RelationshipSpec& other) {
                return foldedName(other.name) == foldedName(made.name) ||
                       (foldedName(other.child) == foldedName(made.child) &&
                        foldedName(other.parent) == foldedName(made.parent) &&
                        other.columns == made.columns);
            };
            if (std::ranges::none_of(extras.relationships, known))
                extras.relationships.push_back(std::move(made));
        }
    }
}

RowId rowOf(Database& database, const ExtraObject& object) {
    const Table& objects = database.table("MSysObjects");
    const std::int64_t wanted = object.type == ExtraObject::kDatabase
                                    ? kDatabaseObject
                                    : number(database.table(object.name).definition().page());
    RowCursor row = objects.scan();
    for (bool there = row.first(); there; there = row.next())
        if (row.row().integer(at(objects, "Type")) == object.type &&
            (object.type == ExtraObject::kDatabase
                 ? row.row().integer(at(objects, "Id"))
                 : row.row().integer(at(objects, "Id")) & kObjectPageMask) == wanted)
            return row.id();
    throw std::logic_error("unreached");
}

RowId entered(Database& database, const ExtraObject& object) {
    Table& objects = database.table("MSysObjects");
    const std::int64_t id = addToCatalog(
        objects, database.table("MSysACEs"), object.name, object.type,
        object.type == ExtraObject::kDocument ? kDatabasesObject : kTablesObject, object.flags);
    if (!object.steps.empty()) {
        Table& queries = database.table("MSysQueries");
        for (const Row& step : object.steps) {
            std::vector<Assignment> given{
                {at(queries, "ObjectId"), id}
            };
            for (std::size_t i = 0; i < std::min(step.size(), std::size(kStepColumns)); ++i)
                if (const auto column = queries.findColumn(kStepColumns[i]);
                    column && !isNull(step[i]))
                    given.push_back({*column, step[i]});
            queries.insert(given);
        }
    }
    RowCursor row = objects.scan();
    for (bool there = row.first(); there; there = row.next())
        if (row.row().integer(at(objects, "Id")) == id)
            return row.id();
    throw std::logic_error("unreached");
}

} // namespace

Extras extrasOf(Database& database) {
    return database.onSnapshot([&] {
        Extras extras;
        readObjects(database, extras);
        readDeclared(database, extras);
        readUndeclared(database, extras);
        return extras;
    });
}

void addExtra(Database& database, const ExtraObject& object) {
    const bool isThere =
        object.type == ExtraObject::kTable || object.type == ExtraObject::kDatabase;
    const auto all = std::make_unique<DatabaseTransaction>(database);
    const RowId row = isThere ? rowOf(database, object) : entered(database, object);
    Table& objects = database.table("MSysObjects");
    const TextCodec& names = namesCodec(objects);
    std::vector<Assignment> changes;
    if (!object.properties.empty())
        changes.push_back(
            {at(objects, "LvProp"), names.version() == Version::jet4
                                        ? object.properties
                                        : recodedProperties(object.properties, kNeutral, names)});
    for (std::size_t i = 0; i < object.link.size(); ++i)
        if (!isNull(object.link[i]))
            changes.push_back({at(objects, kLinkColumns[i]), object.link[i]});
    if (!changes.empty())
        objects.update(row, changes);
    all->commit();
}

} // namespace jet
