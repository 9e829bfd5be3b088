#include "jet/database/Relationships.h"

#include "jet/Database.h"
#include "jet/Names.h"
#include "jet/database/Catalog.h"
#include "jet/database/DatabasePager.h"
#include "jet/row/RelationshipPairs.h"
#include "jet/rule/Operators.h"

#include <algorithm>

namespace jet {

namespace {

/// One row of MSysRelationships: a pair of columns.
struct ColumnPair {
    std::int64_t flags;
    std::int64_t count;
    std::int64_t place;
    std::string childTable, childColumn, parentTable, parentColumn;
};

/// The pairs that name `table`, by relationship.
std::map<std::string, std::vector<ColumnPair>> pairsOf(Database& database, const Table& table) {
    std::map<std::string, std::vector<ColumnPair>> relationships;
    if (!database.hasTable("MSysRelationships"))
        return relationships;
    const Table& source = database.table("MSysRelationships");
    const auto at = [&](const char* column) {
        if (const auto found = source.findColumn(column))
            return *found;
        corrupt(source.definition().page(),
                std::string("a tabela de relações não tem a coluna ") + column);
    };
    const std::size_t name = at("szRelationship");
    const std::size_t flags = at("grbit");
    const std::size_t count = at("ccolumn");
    const std::size_t place = at("icolumn");
    const std::size_t texts[] = {at("szObject"), at("szColumn"), at("szReferencedObject"),
                                 at("szReferencedColumn")};
    const std::string wanted = foldedName(table.name());
    RowCursor cursor = source.scan();
    for (bool there = cursor.first(); there; there = cursor.next()) {
        const RowView& row = cursor.row();
        std::string buffer;
        const auto text = [&](std::size_t column) { return std::string(row.text(column, buffer)); };
        ColumnPair pair{row.integer(flags), row.integer(count), row.integer(place), text(texts[0]),
                        text(texts[1]),     text(texts[2]),     text(texts[3])};
        if (foldedName(pair.childTable) == wanted || foldedName(pair.parentTable) == wanted)
            relationships[text(name)].push_back(std::move(pair));
    }
    return relationships;
}

/// Nothing if a table or column isn't there.
std::optional<Relationship> declared(Database& database, const std::string& name,
                                     std::vector<ColumnPair>& pairs, PageNo source) {
    RelationshipPairs told;
    for (const ColumnPair& pair : pairs)
        told.add({foldedName(pair.childTable), foldedName(pair.parentTable)}, pair.count,
                 pair.place);
    if (!told.whole())
        corrupt(source, "a relação \"" + name + "\" não está completa");
    std::ranges::sort(pairs, {}, &ColumnPair::place);
    const ColumnPair& first = pairs.front();
    if (!database.hasTable(first.parentTable) || !database.hasTable(first.childTable))
        return std::nullopt;
    const Table& parent = database.table(first.parentTable);
    const Table& child = database.table(first.childTable);
    Relationship made{
        name,
        {parent.name(), parent.definition().page(), {}},
        {child.name(),  child.definition().page(),  {}},
        (first.flags & RelationshipFlags::cascadeUpdate) != 0,
        (first.flags & RelationshipFlags::cascadeDelete) != 0,
        (first.flags & RelationshipFlags::cascadeNull) != 0
    };
    for (const ColumnPair& pair : pairs) {
        const auto parentColumn = parent.findColumn(pair.parentColumn);
        const auto childColumn = child.findColumn(pair.childColumn);
        if (!parentColumn || !childColumn)
            return std::nullopt;
        made.parent.columns.push_back(*parentColumn);
        made.child.columns.push_back(*childColumn);
    }
    return made;
}

RelationshipEnd endOf(const Table& table, const LogicalIndex& index) {
    RelationshipEnd end{table.name(), table.definition().page(), {}};
    for (const IndexColumn& key : table.indexes()[index.realIndex].columns)
        end.columns.push_back(key.column);
    return end;
}

/// What an index block says of a relationship; nothing if its partner isn't there.
std::optional<Relationship> ofBlock(const Table& table, const LogicalIndex& index,
                                    const Table& other) {
    const auto& partners = other.definition().logicalIndexes;
    const auto partner =
        std::find_if(partners.begin(), partners.end(), [&](const LogicalIndex& candidate) {
            return arePartners(table.definition(), index, candidate);
        });
    if (partner == partners.end())
        return std::nullopt;
    // The parent's end has a name that was made up.
    Relationship made{index.side == LogicalIndex::Side::child ? index.name : partner->name,
                      endOf(table, index),
                      endOf(other, *partner),
                      index.cascadesUpdates,
                      index.cascadesDeletes,
                      index.nullsOnDelete};
    if (index.side == LogicalIndex::Side::child)
        std::swap(made.parent, made.child);
    // The child's index may go on with columns of its own.
    if (made.child.columns.size() < made.parent.columns.size())
        return std::nullopt;
    made.child.columns.resize(made.parent.columns.size());
    return made;
}

std::vector<std::pair<std::size_t, std::size_t>> columnPairs(const Relationship& relationship) {
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    for (std::size_t i = 0; i < relationship.parent.columns.size(); ++i)
        pairs.emplace_back(relationship.parent.columns[i], relationship.child.columns[i]);
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

bool isSameBond(const Relationship& a, const Relationship& b) {
    return a.parent.definition == b.parent.definition && a.child.definition == b.child.definition &&
           columnPairs(a) == columnPairs(b);
}

/// The index that serves to find rows by these columns: it begins with them, in whatever order.
std::optional<std::size_t> indexOver(const Table& table, std::span<const std::size_t> columns) {
    for (std::size_t i = 0; i < table.indexes().size(); ++i) {
        const auto& keys = table.indexes()[i].columns;
        if (keys.size() >= columns.size() &&
            std::all_of(keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(columns.size()),
                        [&](const IndexColumn& key) {
                            return std::find(columns.begin(), columns.end(), key.column) !=
                                   columns.end();
                        }))
            return i;
    }
    return std::nullopt;
}

/// Goes to the rows with the values; `visit` says whether to go on.
template <class Visit>
void visitRows(const Table& table, std::span<const std::size_t> columns,
               std::span<const Value> values, const Collation& order, Visit&& visit) {
    const auto index = indexOver(table, columns);
    if (!index) {
        RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next()) {
            bool same = true;
            for (std::size_t i = 0; i < columns.size() && same; ++i)
                same = compareValues(row.row().value(columns[i]), values[i], order) ==
                       std::partial_ordering::equivalent;
            if (same && !visit(row.id()))
                return;
        }
        return;
    }
    std::vector<Value> key;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::size_t column = table.indexes()[*index].columns[i].column;
        key.push_back(values[static_cast<std::size_t>(
            std::find(columns.begin(), columns.end(), column) - columns.begin())]);
    }
    KeyRange range;
    try {
        range = table.keysEqual(*index, key);
    } catch (const Error& error) {
        if (error.code() != Errc::outOfRange)
            throw;
        return; // a value that the column can't hold is in none of its rows
    }
    IndexTree::Cursor entry = table.walk(*index);
    for (bool there = entry.seek(range.lower); there; there = entry.next()) {
        if (range.upper && !std::lexicographical_compare(entry.key().begin(), entry.key().end(),
                                                         range.upper->begin(), range.upper->end()))
            return;
        if (!visit(entry.row()))
            return;
    }
}

} // namespace

std::vector<Relationship> relationshipsOf(Database& database, const Table& table) {
    std::vector<Relationship> found;
    std::vector<Relationship> ignored;
    for (auto& [name, pairs] : pairsOf(database, table)) {
        const bool enforced = (pairs.front().flags & RelationshipFlags::notEnforced) == 0;
        if (auto made = declared(database, name, pairs, table.definition().page()))
            (enforced ? found : ignored).push_back(std::move(*made));
    }
    std::vector<CatalogEntry> tables;
    for (const LogicalIndex& index : table.definition().logicalIndexes) {
        if (index.kind != LogicalIndex::Kind::relationship)
            continue;
        if (tables.empty())
            tables =
                readCatalog(database.table("MSysObjects"), DatabasePager::of(database).pageCount());
        for (const CatalogEntry& entry : tables) {
            if (entry.definition != index.partnerTable)
                continue;
            auto made = ofBlock(table, index, database.table(entry.name));
            const auto same = [&](const Relationship& other) { return isSameBond(other, *made); };
            if (made && std::none_of(found.begin(), found.end(), same) &&
                std::none_of(ignored.begin(), ignored.end(), same))
                found.push_back(std::move(*made));
            break;
        }
    }
    return found;
}

std::string columnNames(const Table& table, std::span<const std::size_t> columns) {
    std::string names;
    for (const std::size_t column : columns)
        names += (names.empty() ? "\"" : ", \"") + table.columns()[column].name + "\"";
    return names;
}

Row valuesOf(const RowView& row, std::span<const std::size_t> columns) {
    Row values;
    for (const std::size_t column : columns)
        values.push_back(row.value(column));
    return values;
}

std::string shownKey(const Row& key) {
    std::string values;
    for (const Value& value : key) {
        const auto* whole = std::get_if<std::int64_t>(&value);
        const auto* text = std::get_if<std::string>(&value);
        if (!whole && !text)
            return {};
        values +=
            (values.empty() ? "" : ", ") + (whole ? std::to_string(*whole) : "\"" + *text + "\"");
    }
    return values;
}

bool hasNull(const Row& key) {
    return std::any_of(key.begin(), key.end(), [](const Value& value) { return isNull(value); });
}

bool hasIndexOver(const Table& table, std::span<const std::size_t> columns) {
    return indexOver(table, columns).has_value();
}

std::vector<RowId> rowsWith(const Table& table, std::span<const std::size_t> columns,
                            std::span<const Value> values, const Collation& order) {
    std::vector<RowId> rows;
    visitRows(table, columns, values, order, [&](RowId row) {
        rows.push_back(row);
        return true;
    });
    return rows;
}

bool hasRowWith(const Table& table, std::span<const std::size_t> columns,
                std::span<const Value> values, const Collation& order) {
    bool found = false;
    visitRows(table, columns, values, order, [&](RowId) {
        found = true;
        return false;
    });
    return found;
}

} // namespace jet
