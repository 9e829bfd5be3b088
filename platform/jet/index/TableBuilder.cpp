#include "jet/index/TableBuilder.h"

#include "jet/Names.h"
#include "jet/row/DefinitionImage.h"
#include "jet/row/DefinitionParts.h"

#include <algorithm>
#include <functional>

namespace jet {

namespace {

/// What a table takes next: 0 throughout for a new one.
struct Next {
    std::uint16_t number = 0;   ///< of its columns
    std::uint16_t variable = 0; ///< of their places among the variable ones
    std::uint16_t fixed = 0;    ///< byte of the fixed area
    std::uint32_t real = 0;     ///< of its real indexes
    std::uint32_t logical = 0;  ///< number of its logical ones
};

struct Places {
    std::vector<LongValueMaps> longValues;
    std::vector<RowId> indexMaps;
    std::vector<PageNo> roots;
};

Places takePlaces(Pager& pager, PageAllocator& pages, PageNo page, const TableSpec& more,
                  const Next& next) {
    Places places;
    for (std::size_t i = 0; i < more.columns.size(); ++i)
        if (isLongValue(more.columns[i].type)) {
            const RowId owned = pages.createMap();
            places.longValues.push_back(
                {static_cast<std::uint16_t>(next.number + i), owned, pages.createMap()});
        }
    for (std::size_t i = 0; i < more.indexes.size(); ++i)
        places.indexMaps.push_back(pages.createMap());
    for (const RowId map : places.indexMaps)
        places.roots.push_back(IndexTree::create(pager, pages, page, map));
    return places;
}

bool isFixed(const ColumnSpec& column) {
    return column.type == ColumnType::boolean || fixedLength(column.type) != 0;
}

/// In bytes, as the file counts it.
std::uint16_t lengthOf(const ColumnSpec& column, Version version) {
    if (column.type == ColumnType::boolean)
        return 1;
    if (column.type == ColumnType::text && version == Version::jet4)
        return static_cast<std::uint16_t>(2 * column.width);
    return isFixed(column) ? fixedLength(column.type) : column.width;
}

std::uint8_t flagsOf(const ColumnSpec& column, const SystemTable* system) {
    unsigned flags = ColumnFlags::always;
    if (isFixed(column))
        flags |= ColumnFlags::fixed;
    if (column.autonumber)
        flags |= ColumnFlags::autonumber;
    if (system != nullptr)
        flags |= ColumnFlags::system;
    if (system != nullptr && system->account != nullptr && column.name == system->account)
        flags |= ColumnFlags::account;
    return static_cast<std::uint8_t>(flags);
}

/// The format's own tables don't have their primary keys marked as required.
std::uint8_t flagsOf(const IndexSpec& index, const SystemTable* system, Version version) {
    unsigned flags = version == Version::jet4 ? IndexFlags::jet4 : 0U;
    if (index.unique || index.primary)
        flags |= IndexFlags::unique;
    if (index.ignoreNulls)
        flags |= IndexFlags::ignoreNulls;
    if (index.required || (index.primary && system == nullptr))
        flags |= IndexFlags::required;
    return static_cast<std::uint8_t>(flags);
}

Bytes storedName(const std::string& name, const Format& format, const TextCodec& codec) {
    const Bytes text = codec.encode(name, false, false);
    Bytes stored;
    store(addBlock(stored, format.nameLength.size), format.nameLength, text.size());
    stored.insert(stored.end(), text.begin(), text.end());
    return stored;
}

template <class T>
void addTo(Bytes& header, Field<T> counter, std::size_t more) {
    store(header.data(), counter, static_cast<T>(load(header.data(), counter) + more));
}

void countIn(DefinitionParts& parts, const Format& format, const TableSpec& more) {
    const DefinitionLayout& layout = format.definition;
    const auto variable = static_cast<std::size_t>(
        std::ranges::count_if(more.columns, [](const auto& column) { return !isFixed(column); }));
    addTo(parts.header, layout.maxColumns, more.columns.size());
    addTo(parts.header, layout.maxVariables, variable);
    addTo(parts.header, layout.columns, more.columns.size());
    addTo(parts.header, layout.logicalIndexes, more.indexes.size());
    addTo(parts.header, layout.realIndexes, more.indexes.size());
}

/// What new columns and indexes are made with.
struct Making {
    const Format& format;
    const SystemTable* system; ///< null for a table of the user
    const SortOrder& order;
    std::uint16_t columnMark;
    TextCodec names;
};

void addColumns(DefinitionParts& parts, const Making& making, const TableSpec& more, Next next) {
    const ColumnLayout& layout = making.format.column;
    for (const ColumnSpec& column : more.columns) {
        const std::uint16_t length = lengthOf(column, making.format.version);
        std::byte* at = addBlock(parts.columns, layout.size);
        store(at, layout.type, static_cast<std::uint8_t>(column.type));
        store(at, layout.mark, kDefinitionMark);
        store(at, layout.number, next.number);
        store(at, layout.variable, next.variable);
        store(at, layout.ordinal, next.number++);
        store(at, layout.headerMark, making.columnMark);
        if (column.type == ColumnType::numeric) {
            store(at, layout.precision, column.precision);
            store(at, layout.scale, column.scale);
        } else {
            store(at, layout.language, making.order.lcid);
            store(at, layout.codePage, making.order.codePage);
            store(at, layout.variant, making.order.variant);
            store(at, layout.orderVersion, making.order.version);
        }
        store(at, layout.flags, flagsOf(column, making.system));
        store(at, layout.textFlags, column.compressed && isText(column.type) ? kMayCompress : 0);
        store(at, layout.length, length);
        if (!isFixed(column))
            ++next.variable;
        else if (column.type != ColumnType::boolean) {
            store(at, layout.fixed, next.fixed);
            next.fixed = static_cast<std::uint16_t>(next.fixed + length);
        }
        const Bytes name = storedName(column.name, making.format, making.names);
        parts.columnNames.insert(parts.columnNames.end(), name.begin(), name.end());
    }
}

/// They stand in the order of their names.
std::byte* addLogical(DefinitionParts& parts, DefinitionParts::Logical made) {
    const auto behind =
        std::ranges::find_if(parts.logicalIndexes, [&](const DefinitionParts::Logical& other) {
            return other.folded > made.folded;
        });
    return parts.logicalIndexes.insert(behind, std::move(made))->block.data();
}

/// The number of the column of that name, as whoever asked for the index has made sure there is.
using NumberOf = std::function<std::uint16_t(const std::string&)>;

void addIndexes(DefinitionParts& parts, const Making& making, const TableSpec& more,
                const Places& places, const Next& next, const NumberOf& numberOf) {
    const RealIndexLayout& layout = making.format.realIndex;
    const LogicalIndexLayout& logical = making.format.logicalIndex;
    (void)addBlock(parts.statistics, more.indexes.size() * making.format.statistics.size);
    for (std::size_t i = 0; i < more.indexes.size(); ++i) {
        const IndexSpec& index = more.indexes[i];
        std::byte* at = addBlock(parts.realIndexes, layout.size);
        store(at, layout.mark, kIndexMark);
        for (std::size_t k = 0; k < kMaxIndexColumns; ++k) {
            const bool used = k < index.columns.size();
            std::byte* key = at + layout.key(k);
            store(key, KeyColumnLayout::column, used ? numberOf(index.columns[k].name) : kNoColumn);
            store(key, KeyColumnLayout::direction,
                  used && index.columns[k].ascending ? kAscending : 0);
        }
        store(at, layout.map, places.indexMaps[i]);
        store(at, layout.root, places.roots[i]);
        store(at, layout.flags, flagsOf(index, making.system, making.format.version));

        at = addLogical(parts,
                        {Bytes(logical.size), storedName(index.name, making.format, making.names),
                         foldedName(index.name)});
        const auto place = static_cast<std::uint32_t>(i);
        makePlain(at, logical);
        store(at, logical.mark, kDefinitionMark);
        store(at, logical.number, next.logical + place);
        store(at, logical.realIndex, next.real + place);
        if (index.primary)
            store(at, logical.kind, static_cast<std::uint8_t>(LogicalIndex::Kind::primary));
    }
}

void addLongValueMaps(DefinitionParts& parts, const std::vector<LongValueMaps>& list) {
    using Maps = LongValueMapsLayout;
    for (const LongValueMaps& maps : list) {
        std::byte* at = addBlock(parts.longValues, Maps::size);
        store(at, Maps::column, maps.columnNumber);
        store(at, Maps::owned, maps.owned);
        store(at, Maps::free, *maps.free);
    }
}

/// Spreads the logical bytes over as many pages as they need: those given, then new ones.
void writePages(Pager& pager, PageAllocator& pages, std::vector<PageNo> on, const Bytes& bytes) {
    const Format& format = pager.format();
    const std::size_t count = definitionPageCount(format, bytes.size());
    for (std::size_t i = 0; i < count; ++i) {
        if (i + 1 == on.size() && i + 1 < count)
            on.push_back(pages.take());
        const PageNo next = i + 1 < count ? on[i + 1] : PageNo{};
        std::ranges::copy(definitionPage(format, bytes, i, next), pager.change(on[i]).begin());
    }
}

/// `system` is null for a table of the user.
void build(Pager& pager, PageAllocator& pages, PageNo page, const TableSpec& table,
           const SystemTable* system, const SortOrder& order, std::uint16_t columnMark) {
    const Format& format = pager.format();
    const Making making{format, system, order, columnMark,
                        TextCodec(format.version, order.codePage)};
    DefinitionParts parts(format);
    std::byte* head = parts.header.data();
    store(head, format.definition.mark, kDefinitionMark);
    store(head, format.definition.one, 1);
    store(head, format.definition.kind, system != nullptr ? kSystemTable : kUserTable);
    store(head, format.definition.ownedMap, pages.createMap());
    store(head, format.definition.freeMap, pages.createMap());
    countIn(parts, format, table);
    const Places places = takePlaces(pager, pages, page, table, {});
    addColumns(parts, making, table, {});
    addIndexes(parts, making, table, places, {}, [&](const std::string& column) {
        return static_cast<std::uint16_t>(table.placeOf(column));
    });
    addLongValueMaps(parts, places.longValues);
    writePages(pager, pages, {page}, parts.joined(format));
}

} // namespace

void buildTable(Pager& pager, PageAllocator& pages, PageNo page, const TableSpec& table,
                const SortOrder& order, std::uint16_t columnMark) {
    build(pager, pages, page, table, nullptr, order, columnMark);
}

void buildTable(Pager& pager, PageAllocator& pages, const SystemTable& table,
                const SortOrder& order, std::uint16_t columnMark) {
    build(pager, pages, table.page, table.table, &table, order, columnMark);
}

void extendTable(Pager& pager, PageAllocator& pages, const TableDefinition& table,
                 const TableSpec& more, const SortOrder& order, std::uint16_t columnMark) {
    const Format& format = pager.format();
    const Making making{format, nullptr, order, columnMark,
                        TextCodec(format.version, order.codePage)};
    Next next{.number = table.maxColumns,
              .variable = table.maxVariables,
              .fixed = static_cast<std::uint16_t>(table.fixedSize),
              .real = static_cast<std::uint32_t>(table.realIndexes.size())};
    for (const LogicalIndex& logical : table.logicalIndexes)
        next.logical = std::max(next.logical, logical.number + 1);
    DefinitionParts parts(format, {DefinitionImage(pager, table).bytes(), table.page()});
    countIn(parts, format, more);
    const Places places = takePlaces(pager, pages, table.page(), more, next);
    addColumns(parts, making, more, next);
    addIndexes(parts, making, more, places, next, [&](const std::string& name) {
        const auto old =
            std::ranges::find(table.columns, foldedName(name),
                              [](const Column& column) { return foldedName(column.name); });
        return old != table.columns.end()
                   ? old->number
                   : static_cast<std::uint16_t>(next.number + more.placeOf(name));
    });
    addLongValueMaps(parts, places.longValues);
    writePages(pager, pages, table.pages, parts.joined(format));
}

void putLogicalIndex(Pager& pager, PageAllocator& pages, const TableDefinition& table,
                     const LogicalIndex& index, const SortOrder& order) {
    const Format& format = pager.format();
    const LogicalIndexLayout& layout = format.logicalIndex;
    DefinitionParts parts(format, {DefinitionImage(pager, table).bytes(), table.page()});
    const auto known =
        std::ranges::find_if(parts.logicalIndexes, [&](const DefinitionParts::Logical& logical) {
            return load(logical.block.data(), layout.number) == index.number;
        });
    std::byte* at = nullptr;
    if (known != parts.logicalIndexes.end()) {
        at = known->block.data();
    } else {
        const TextCodec names(format.version, order.codePage);
        at = addLogical(parts, {Bytes(layout.size), storedName(index.name, format, names),
                                foldedName(index.name)});
        store(at, layout.mark, kDefinitionMark);
        store(at, layout.number, index.number);
        addTo(parts.header, format.definition.logicalIndexes, 1);
    }
    store(at, layout.realIndex, index.realIndex);
    store(at, layout.kind, static_cast<std::uint8_t>(index.kind));
    store(at, layout.side, static_cast<std::uint8_t>(index.side));
    store(at, layout.partner, index.partner);
    store(at, layout.otherTable, index.partnerTable);
    store(at, layout.cascadesUpdates,
          static_cast<std::uint8_t>(index.cascadesUpdates ? CascadeFlags::cascades : 0U));
    store(at, layout.cascadesDeletes,
          static_cast<std::uint8_t>((index.cascadesDeletes ? CascadeFlags::cascades : 0U) |
                                    (index.nullsOnDelete ? CascadeFlags::nulls : 0U)));
    writePages(pager, pages, table.pages, parts.joined(format));
}

std::vector<SystemTable> systemTables(Version version) {
    using enum ColumnType;
    const bool isJet3 = version == Version::jet3;
    const auto column = [&](const char* name, ColumnType type) {
        ColumnSpec made{.name = name, .type = type, .compressed = false};
        if (type == text || type == binary)
            made.width = isJet3 || type == text ? 255 : 510;
        return made;
    };
    // clang-format off
    std::vector<SystemTable> tables{
        {.page = kObjectsPage,
         .table = {"MSysObjects",
                   {column("Id", longInteger), column("ParentId", longInteger),
                    column("Name", text), column("Type", integer), column("DateCreate", date),
                    column("DateUpdate", date), column("Owner", binary),
                    column("Flags", longInteger), column("Database", memo), column("Connect", memo),
                    column("ForeignName", text), column("RmtInfoShort", binary),
                    column("RmtInfoLong", ole), column("Lv", ole), column("LvProp", ole),
                    column("LvModule", ole), column("LvExtra", ole)},
                   {{.name = "ParentIdName", .columns = {{"ParentId"}, {"Name"}}, .unique = true},
                    {.name = "Id", .columns = {{"Id"}}, .primary = true}}},
         .account = "Owner"},
        {.page = kRightsPage,
         .table = {"MSysACEs",
                   {column("ObjectId", longInteger), column("SID", binary),
                    column("ACM", longInteger), column("FInheritable", boolean)},
                   {{.name = "ObjectId", .columns = {{"ObjectId"}}, .required = true}}},
         .account = "SID"},
        {.page = kQueriesPage,
         .table = {"MSysQueries",
                   {column("ObjectId", longInteger), column("Attribute", byte),
                    column("Order", binary), column("Name1", text), column("Name2", text),
                    column("Expression", memo), column("Flag", integer)},
                   {{.name = "ObjectIdAttribute",
                     .columns = {{"ObjectId"}, {"Attribute"}, {"Order"}},
                     .primary = true}}}},
        {.page = kRelationshipsPage,
         .table = {
             "MSysRelationships",
             {column("szRelationship", text), column("grbit", longInteger),
              column("ccolumn", longInteger), column("icolumn", longInteger),
              column("szObject", text), column("szColumn", text),
              column("szReferencedObject", text), column("szReferencedColumn", text)},
             {{.name = "szRelationship", .columns = {{"szRelationship"}}, .ignoreNulls = true},
              {.name = "szObject", .columns = {{"szObject"}}, .ignoreNulls = true},
              {.name = "szReferencedObject",
               .columns = {{"szReferencedObject"}},
               .ignoreNulls = true}}}}
    };
    // clang-format on
    if (!isJet3)
        tables[2].table.columns.push_back(column("LvExtra", longInteger));
    return tables;
}

} // namespace jet
