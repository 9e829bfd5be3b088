#include "jet/index/TableBuilder.h"

#include "jet/Names.h"
#include "jet/row/DefinitionImage.h"

#include <algorithm>
#include <numeric>

namespace jet {

namespace {

/// The logical bytes of a definition, block after block.
class Writer {
public:
    explicit Writer(const Format& format) : format_(format) {}

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

Places takePlaces(Pager& pager, PageAllocator& pages, PageNo page, const NewTable& table) {
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

void writeHeader(std::byte* head, const Format& format, const NewTable& table,
                 const Places& places) {
    const auto variables =
        std::count_if(table.columns.begin(), table.columns.end(),
                      [](const NewColumn& c) { return (c.flags & ColumnFlags::fixed) == 0; });
    const auto columns = static_cast<std::uint16_t>(table.columns.size());
    const DefinitionLayout& layout = format.definition;
    const auto indexes = static_cast<std::uint32_t>(table.indexes.size());
    store(head, layout.mark, kDefinitionMark);
    store(head, layout.one, 1);
    store(head, layout.kind, table.system ? kSystemTable : kUserTable);
    store(head, layout.maxColumns, columns);
    store(head, layout.maxVariables, static_cast<std::uint16_t>(variables));
    store(head, layout.columns, columns);
    store(head, layout.logicalIndexes, indexes);
    store(head, layout.realIndexes, indexes);
    store(head, layout.ownedMap, places.owned);
    store(head, layout.freeMap, places.free);
}

void writeColumns(Writer& out, const Format& format, const NewTable& table, const SortOrder& order,
                  std::uint16_t columnMark) {
    const ColumnLayout& layout = format.column;
    std::uint16_t fixedAt = 0;
    std::uint16_t variable = 0;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const NewColumn& column = table.columns[i];
        const bool fixed = (column.flags & ColumnFlags::fixed) != 0;
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
        store(at, layout.flags, column.flags);
        store(at, layout.textFlags, column.compressed ? kMayCompress : 0);
        store(at, layout.length, column.length);
        if (!fixed)
            ++variable;
        else if (column.type != ColumnType::boolean) {
            store(at, layout.fixed, fixedAt);
            fixedAt = static_cast<std::uint16_t>(fixedAt + column.length);
        }
    }
}

void writeIndexes(Writer& out, const Format& format, const NewTable& table, const Places& places,
                  const TextCodec& names) {
    const RealIndexLayout& layout = format.realIndex;
    const LogicalIndexLayout& logical = format.logicalIndex;
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
        const NewIndex& index = table.indexes[i];
        std::byte* at = out.block(layout.size);
        store(at, layout.mark, kIndexMark);
        for (std::size_t k = 0; k < kMaxIndexColumns; ++k) {
            std::byte* key = at + layout.key(k);
            const bool used = k < index.columns.size();
            store(key, KeyColumnLayout::column,
                  used ? static_cast<std::uint16_t>(index.columns[k].column) : kNoColumn);
            store(key, KeyColumnLayout::direction,
                  used && index.columns[k].ascending ? kAscending : 0);
        }
        store(at, layout.map, places.indexMaps[i]);
        store(at, layout.root, places.roots[i]);
        const std::uint8_t always = format.isJet3() ? 0 : IndexFlags::jet4;
        store(at, layout.flags, static_cast<std::uint8_t>(index.flags | always));
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

void writeLongValueMaps(Writer& out, const std::vector<LongValueMaps>& list) {
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

} // namespace

void buildTable(Pager& pager, PageAllocator& pages, PageNo page, const NewTable& table,
                const SortOrder& order, std::uint16_t columnMark) {
    const Format& format = pager.format();
    const TextCodec names(format.version, order.codePage);
    const Places places = takePlaces(pager, pages, page, table);

    Writer out(format);
    writeHeader(out.block(format.definition.size), format, table, places);
    (void)out.block(table.indexes.size() * format.statistics.size);
    writeColumns(out, format, table, order, columnMark);
    for (const NewColumn& column : table.columns)
        out.name(column.name, names);
    writeIndexes(out, format, table, places, names);
    writeLongValueMaps(out, places.longValues);
    store(out.bytes().data(), format.definition.length,
          static_cast<std::uint32_t>(out.bytes().size()));
    writePages(pager, pages, page, out.bytes());
}

std::vector<SystemTable> systemTables(Version version) {
    using enum ColumnType;
    constexpr std::uint8_t kVariable = ColumnFlags::always | ColumnFlags::system;
    constexpr std::uint8_t kFixed = kVariable | ColumnFlags::fixed;
    constexpr std::uint8_t kAccount = kVariable | ColumnFlags::account;
    const bool isJet3 = version == Version::jet3;
    const auto column = [&](const char* name, ColumnType type, std::uint8_t flags) {
        const bool sized = type == text || type == binary;
        const std::uint16_t width = isJet3 ? 255 : 510;
        return NewColumn{name, type, flags,
                         sized             ? width
                         : type == boolean ? std::uint16_t{1}
                                           : fixedLength(type)};
    };
    const auto index = [](const char* name, const std::vector<std::size_t>& columns,
                          std::uint8_t flags, bool primary = false) {
        NewIndex made{name, {}, flags, primary};
        for (const std::size_t c : columns)
            made.columns.push_back({c, true});
        return made;
    };

    std::vector<SystemTable> tables(4);
    tables[0] = {
        kObjectsPage,
        "MSysObjects",
        {{column("Id", longInteger, kFixed), column("ParentId", longInteger, kFixed),
          column("Name", text, kVariable), column("Type", integer, kFixed),
          column("DateCreate", date, kFixed), column("DateUpdate", date, kFixed),
          column("Owner", binary, kAccount), column("Flags", longInteger, kFixed),
          column("Database", memo, kVariable), column("Connect", memo, kVariable),
          column("ForeignName", text, kVariable), column("RmtInfoShort", binary, kVariable),
          column("RmtInfoLong", ole, kVariable), column("Lv", ole, kVariable),
          column("LvProp", ole, kVariable), column("LvModule", ole, kVariable),
          column("LvExtra", ole, kVariable)},
          {index("ParentIdName", {1, 2}, IndexFlags::unique),
          index("Id", {0}, IndexFlags::unique, true)},
          true}
    };
    tables[1] = {
        kRightsPage,
        "MSysACEs",
        {{column("ObjectId", longInteger, kFixed), column("SID", binary, kAccount),
          column("ACM", longInteger, kFixed), column("FInheritable", boolean, kFixed)},
          {index("ObjectId", {0}, IndexFlags::required)},
          true}
    };
    tables[2] = {
        kQueriesPage,
        "MSysQueries",
        {{column("ObjectId", longInteger, kFixed), column("Attribute", byte, kFixed),
          column("Order", binary, kVariable), column("Name1", text, kVariable),
          column("Name2", text, kVariable), column("Expression", memo, kVariable),
          column("Flag", integer, kFixed)},
          {index("ObjectIdAttribute", {0, 1, 2}, IndexFlags::unique, true)},
          true}
    };
    if (!isJet3)
        tables[2].table.columns.push_back(column("LvExtra", longInteger, kFixed));
    tables[3] = {
        kRelationshipsPage,
        "MSysRelationships",
        {{column("szRelationship", text, kVariable), column("grbit", longInteger, kFixed),
          column("ccolumn", longInteger, kFixed), column("icolumn", longInteger, kFixed),
          column("szObject", text, kVariable), column("szColumn", text, kVariable),
          column("szReferencedObject", text, kVariable),
          column("szReferencedColumn", text, kVariable)},
          {index("szRelationship", {0}, IndexFlags::ignoreNulls),
          index("szObject", {4}, IndexFlags::ignoreNulls),
          index("szReferencedObject", {6}, IndexFlags::ignoreNulls)},
          true}
    };
    return tables;
}

} // namespace jet
