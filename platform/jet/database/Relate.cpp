#include "jet/Error.h"
#include "jet/ExtendTable.h"
#include "jet/Extras.h"
#include "jet/Names.h"
#include "jet/database/Catalog.h"
#include "jet/database/DatabasePager.h"
#include "jet/database/DatabaseParts.h"
#include "jet/index/TableBuilder.h"
#include "jet/row/SystemTables.h"

#include <algorithm>

namespace jet {

namespace {

using Places = std::vector<std::size_t>;

std::size_t placeOf(const Table& table, const std::string& column) {
    if (const auto found = table.findColumn(column))
        return *found;
    throw Error(Errc::notFound,
                "A tabela \"" + table.name() + "\" não tem o campo \"" + column + "\".");
}

bool isOver(const Index& index, const Places& columns) {
    return std::ranges::equal(index.columns, columns, {}, &IndexColumn::column);
}

/// The two indexes that tell of it: the parent's has each key once, the child's the same columns
/// in the same order.
struct Ends {
    std::size_t parent = 0; ///< among its indexes
    Places child;           ///< columns
};
std::optional<Ends> endsOf(const Table& child, const Table& parent,
                           const RelationshipSpec& relationship) {
    for (std::size_t i = 0; i < parent.indexes().size(); ++i) {
        const Index& index = parent.indexes()[i];
        if (!index.unique || index.columns.size() != relationship.columns.size())
            continue;
        Ends ends{i, {}};
        for (const IndexColumn& key : index.columns)
            for (const auto& [of, to] : relationship.columns)
                if (placeOf(parent, to) == key.column)
                    ends.child.push_back(placeOf(child, of));
        if (ends.child.size() == index.columns.size())
            return ends;
    }
    return std::nullopt;
}

/// The child's rows are found by these columns, as parents that go or change ask for.
std::optional<std::size_t> childIndex(const Table& child, const Places& columns) {
    for (std::size_t i = 0; i < child.indexes().size(); ++i)
        if (isOver(child.indexes()[i], columns))
            return i;
    return std::nullopt;
}

void addChildIndex(Database& database, const std::string& child, const Places& columns,
                   const std::string& name) {
    TableSpec more{child, {}, {{.name = name, .columns = {}}}};
    for (const std::size_t column : columns)
        more.indexes[0].columns.push_back({database.table(child).columns()[column].name});
    extendTable(database, child, more);
}

bool hasName(const TableDefinition& table, const std::string& name) {
    return std::ranges::any_of(table.logicalIndexes, [&](const LogicalIndex& other) {
        return foldedName(other.name) == foldedName(name);
    });
}

/// As such ends are called: ".rB", ".rC", ... ".rZ", ".rBA".
std::string generatedName(const TableDefinition& table) {
    constexpr unsigned kLetters = 26;
    for (unsigned i = 1;; ++i) {
        std::string name;
        for (unsigned rest = i; rest > 0; rest /= kLetters)
            name.insert(name.begin(), static_cast<char>('A' + rest % kLetters));
        if (name.insert(0, ".r"); !hasName(table, name))
            return name;
    }
}

std::uint32_t nextNumber(const TableDefinition& table) {
    std::uint32_t next = 0;
    for (const LogicalIndex& index : table.logicalIndexes)
        next = std::max(next, index.number + 1);
    return next;
}

/// A logical index for the child's end: the plain one that has the relationship's name, or another.
LogicalIndex childEnd(const TableDefinition& child, std::size_t real, const std::string& name) {
    LogicalIndex end;
    for (const LogicalIndex& index : child.logicalIndexes)
        if (index.realIndex == real && index.kind == LogicalIndex::Kind::plain &&
            foldedName(index.name) == foldedName(name))
            end = index;
    if (end.name.empty()) {
        end.name = hasName(child, name) ? generatedName(child) : name;
        end.number = nextNumber(child);
        end.realIndex = static_cast<std::uint32_t>(real);
    }
    return end;
}

void link(Database& database, const RelationshipSpec& relationship, const Ends& ends) {
    auto& parts = DatabasePager::parts(database);
    const Table& childTable = database.table(relationship.child);
    const Table& parentTable = database.table(relationship.parent);
    const auto real = childIndex(childTable, ends.child);
    const TableDefinition parent = parentTable.definition();
    if (!real || parent.logicalIndexes.size() + 1 >= kMaxIndexes ||
        childTable.definition().logicalIndexes.size() + 1 >= kMaxIndexes)
        return; // the rows of MSysRelationships are enough for this program
    LogicalIndex one = childEnd(childTable.definition(), *real, relationship.name);
    LogicalIndex other;
    other.number = nextNumber(parent);
    if (&childTable == &parentTable && other.number <= one.number)
        other.number = one.number + 1;
    other.realIndex = static_cast<std::uint32_t>(ends.parent);
    other.side = LogicalIndex::Side::parent;
    one.side = LogicalIndex::Side::child;
    one.partner = other.number;
    other.partner = one.number;
    one.partnerTable = parent.page();
    other.partnerTable = childTable.definition().page();
    for (LogicalIndex* const end : {&one, &other}) {
        end->kind = LogicalIndex::Kind::relationship;
        end->cascadesUpdates = (relationship.flags & RelationshipFlags::cascadeUpdate) != 0;
        end->cascadesDeletes = (relationship.flags & RelationshipFlags::cascadeDelete) != 0;
        end->nullsOnDelete = (relationship.flags & RelationshipFlags::cascadeNull) != 0;
    }
    const auto put = [&](PageNo page, LogicalIndex& index) {
        const TableDefinition now = parseDefinition(parts.pager, page, parts.texts);
        if (index.name.empty())
            index.name = generatedName(now);
        putLogicalIndex(parts.pager, parts.pages, now, index, parts.header.order);
    };
    parts.work.run([&] {
        put(other.partnerTable, one);
        put(one.partnerTable, other);
    });
}

void requireNew(Database& database, const std::string& name) {
    const Table& table = database.table("MSysRelationships");
    RowCursor row = table.scan();
    std::string known;
    for (bool there = row.first(); there; there = row.next()) {
        row.row().text(placeOf(table, "szRelationship"), known);
        if (foldedName(known) == foldedName(name))
            throw Error(Errc::exists, "O relacionamento \"" + name + "\" já existe.");
    }
}

void declare(Database& database, const RelationshipSpec& relationship) {
    Table& table = database.table("MSysRelationships");
    const auto at = [&](const char* column) { return placeOf(table, column); };
    for (std::size_t i = 0; i < relationship.columns.size(); ++i)
        table.insert(std::vector<Assignment>{
            {at("szRelationship"),     relationship.name                                     },
            {at("grbit"),              relationship.flags                                    },
            {at("ccolumn"),            static_cast<std::int64_t>(relationship.columns.size())},
            {at("icolumn"),            static_cast<std::int64_t>(i)                          },
            {at("szObject"),           relationship.child                                    },
            {at("szColumn"),           relationship.columns[i].first                         },
            {at("szReferencedObject"), relationship.parent                                   },
            {at("szReferencedColumn"), relationship.columns[i].second                        }
        });
    addToCatalog(database.table("MSysObjects"), database.table("MSysACEs"), relationship.name,
                 relationshipObject, kRelationshipsObject, 0);
}

/// Whoever has the table open has another form of it.
void renew(Database& database, const std::string& name) {
    auto& parts = DatabasePager::parts(database);
    const auto entry = parts.catalog.find(foldedName(name));
    if (entry != parts.catalog.end() && entry->second.table)
        parts.lose(
            entry->second,
            Error(Errc::conflict,
                  "A tabela \"" + name + "\" recebeu campos ou índices enquanto estava em uso."));
}

} // namespace

void relate(Database& database, const RelationshipSpec& relationship) {
    std::optional<Ends> ends;
    requireNew(database, relationship.name);
    {
        const Table& child = database.table(relationship.child);
        const Table& parent = database.table(relationship.parent);
        for (const auto& [of, to] : relationship.columns) {
            static_cast<void>(placeOf(child, of));
            static_cast<void>(placeOf(parent, to));
        }
        if ((relationship.flags & RelationshipFlags::notEnforced) == 0)
            ends = endsOf(child, parent, relationship);
        if (ends && !childIndex(child, ends->child) &&
            child.definition().logicalIndexes.size() + 1 < kMaxIndexes &&
            !hasName(child.definition(), relationship.name))
            addChildIndex(database, child.name(), ends->child, relationship.name);
    }
    {
        DatabaseTransaction all(database);
        database.claim();
        declare(database, relationship);
        if (ends)
            link(database, relationship, *ends);
        all.commit();
    }
    renew(database, relationship.child);
    renew(database, relationship.parent);
}

} // namespace jet
