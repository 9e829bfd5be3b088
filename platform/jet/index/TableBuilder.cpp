#include "jet/index/TableBuilder.h"

#include "jet/Names.h"
#include "jet/row/DefinitionImage.h"

#include <algorithm>
#include <numeric>

namespace jet {

namespace {

/// The logical bytes of a definition, block after block.
class DefinitionWriter {
public:
    explicit DefinitionWriter(const Format& format) : format_(format) {}

    /// `size` zeros at the end; `at()` is where they begin.
    std::byte* block(std::size_t size) {
        bytes_.insert(bytes_.end(), size, std::byte{});
        return bytes_.data() + bytes_.size() - size;
    }
    void name(const std::string& name, const TextCodec& codec) {
        const Bytes text = codec.encode(name, false, false);
        store(block(format_.nameLength.size), format_.nameLength, text.size());
        bytes_.insert(bytes_.end(), text.begin(), text.end());
    }
    Bytes& bytes() { return bytes_; }

private:
    const Format& format_;
    Bytes bytes_;
};

struct Places {
    RowId owned;
    RowId free;
    std::vector<LongValueMaps> longValues;
    std::vector<RowId> indexMaps;
    std::vector<PageNo> roots;
};

Places takePlaces(Pager& pager, PageAllocator& pages, PageNo page, const TableSpec& table) {
    Places places;
    places.owned = pages.createMap();
    places.free = pages.createMap();
    for (std::size_t i = 0; i < table.columns.size(); ++i)
        if (isLongValue(table.columns[i].type)) {
            const RowId owned = pages.createMap();
            places.longValues.push_back({static_cast<std::uint16_t>(i), owned, pages.createMap()});
        }
    for (std::size_t i = 0; i < table.indexes.size(); ++i)
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

void writeHeader(std::byte* head, const Format& format, const TableSpec& table, bool system,
                 const Places& places) {
    const auto fixed = std::ranges::count_if(table.columns, isFixed);
    const auto columns = static_cast<std::uint16_t>(table.columns.size());
    const auto indexes = static_cast<std::uint32_t>(table.indexes.size());
    const DefinitionLayout& layout = format.definition;
    store(head, layout.mark, kDefinitionMark);
    store(head, layout.one, 1);
    store(head, layout.kind, system ? kSystemTable : kUserTable);
    store(head, layout.maxColumns, columns);
    store(head, layout.maxVariables, static_cast<std::uint16_t>(columns - fixed));
    store(head, layout.columns, columns);
    store(head, layout.logicalIndexes, indexes);
    store(head, layout.realIndexes, indexes);
    store(head, layout.ownedMap, places.owned);
    store(head, layout.freeMap, places.free);
}

void writeColumns(DefinitionWriter& out, const Format& format, const TableSpec& table,
                  const SystemTable* system, const SortOrder& order, std::uint16_t columnMark) {
    const ColumnLayout& layout = format.column;
    std::uint16_t fixedAt = 0;
    std::uint16_t variable = 0;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const ColumnSpec& column = table.columns[i];
        const std::uint16_t length = lengthOf(column, format.version);
        std::byte* at = out.block(layout.size);
        store(at, layout.type, static_cast<std::uint8_t>(column.type));
        store(at, layout.mark, kDefinitionMark);
        store(at, layout.number, static_cast<std::uint16_t>(i));
        store(at, layout.variable, variable);
        store(at, layout.ordinal, static_cast<std::uint16_t>(i));
        store(at, layout.headerMark, columnMark);
        if (column.type == ColumnType::numeric) {
            store(at, layout.precision, column.precision);
            store(at, layout.scale, column.scale);
        } else {
            store(at, layout.language, order.lcid);
            store(at, layout.codePage, order.codePage);
            store(at, layout.variant, order.variant);
            store(at, layout.orderVersion, order.version);
        }
        store(at, layout.flags, flagsOf(column, system));
        store(at, layout.textFlags, column.compressed && isText(column.type) ? kMayCompress : 0);
        store(at, layout.length, length);
        if (!isFixed(column))
            ++variable;
        else if (column.type != ColumnType::boolean) {
            store(at, layout.fixed, fixedAt);
            fixedAt = static_cast<std::uint16_t>(fixedAt + length);
        }
    }
}

void writeIndexes(DefinitionWriter& out, const Format& format, const TableSpec& table,
                  const SystemTable* system, const Places& places, const TextCodec& names) {
    const RealIndexLayout& layout = format.realIndex;
    const LogicalIndexLayout& logical = format.logicalIndex;
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
        const IndexSpec& index = table.indexes[i];
        std::byte* at = out.block(layout.size);
        store(at, layout.mark, kIndexMark);
        for (std::size_t k = 0; k < kMaxIndexColumns; ++k) {
            const bool used = k < index.columns.size();
            std::byte* key = at + layout.key(k);
            store(key, KeyColumnLayout::column,
                  used ? static_cast<std::uint16_t>(table.placeOf(index.columns[k].name))
                       : kNoColumn);
            store(key, KeyColumnLayout::direction,
                  used && index.columns[k].ascending ? kAscending : 0);
        }
        store(at, layout.map, places.indexMaps[i]);
        store(at, layout.root, places.roots[i]);
        store(at, layout.flags, flagsOf(index, system, format.version));
    }

    // Blocks and names of the logical ones stand in the order of the names.
    std::vector<std::size_t> order(table.indexes.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return foldedName(table.indexes[a].name) < foldedName(table.indexes[b].name);
    });
    for (const std::size_t i : order) {
        std::byte* at = out.block(logical.size);
        makePlain(at, logical);
        store(at, logical.mark, kDefinitionMark);
        store(at, logical.number, static_cast<std::uint32_t>(i));
        store(at, logical.realIndex, static_cast<std::uint32_t>(i));
        if (table.indexes[i].primary)
            store(at, logical.kind, static_cast<std::uint8_t>(LogicalIndex::Kind::primary));
    }
    for (const std::size_t i : order)
        out.name(table.indexes[i].name, names);
}

void writeLongValueMaps(DefinitionWriter& out, const std::vector<LongValueMaps>& list) {
    using Maps = LongValueMapsLayout;
    for (const LongValueMaps& maps : list) {
        std::byte* at = out.block(Maps::size);
        store(at, Maps::column, maps.columnNumber);
        store(at, Maps::owned, maps.owned);
        store(at, Maps::free, *maps.free);
    }
    store(out.block(Maps::column.size), Maps::column, kNoColumn);
}

/// Spreads the logical bytes over as many pages as they need.
void writePages(Pager& pager, PageAllocator& pages, PageNo first, const Bytes& bytes) {
    const Format& format = pager.format();
    const std::size_t count = definitionPageCount(format, bytes.size());
    PageNo page = first;
    for (std::size_t i = 0; i < count; ++i) {
        const PageNo next = i + 1 < count ? pages.take() : PageNo{};
        std::ranges::copy(definitionPage(format, bytes, i, next), pager.change(page).begin());
        page = next;
    }
}

/// `system` is null for a table of the user.
void build(Pager& pager, PageAllocator& pages, PageNo page, const TableSpec& table,
           const SystemTable* system, const SortOrder& order, std::uint16_t columnMark) {
    const Format& format = pager.format();
    const TextCodec names(format.version, order.codePage);
    const Places places = takePlaces(pager, pages, page, table);

    DefinitionWriter out(format);
    writeHeader(out.block(format.definition.size), format, table, system != nullptr, places);
    (void)out.block(table.indexes.size() * format.statistics.size);
    writeColumns(out, format, table, system, order, columnMark);
    for (const ColumnSpec& column : table.columns)
        out.name(column.name, names);
    writeIndexes(out, format, table, system, places, names);
    writeLongValueMaps(out, places.longValues);
    store(out.bytes().data(), format.definition.length,
          static_cast<std::uint32_t>(out.bytes().size()));
    writePages(pager, pages, page, out.bytes());
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
