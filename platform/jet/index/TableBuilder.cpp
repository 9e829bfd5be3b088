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
    void u16(std::uint16_t value) { store<std::uint16_t>(block(2), value); }
    void u32(std::uint32_t value) { store<std::uint32_t>(block(4), value); }
    void name(const std::string& name, const TextCodec& codec) {
        const Bytes text = codec.encode(name, false, false);
        if (format_.nameLengthSize == 1)
            store<std::uint8_t>(block(1), static_cast<std::uint8_t>(text.size()));
        else
            u16(static_cast<std::uint16_t>(text.size()));
        bytes_.insert(bytes_.end(), text.begin(), text.end());
    }
    Bytes& bytes() { return bytes_; }

private:
    const Format& format_;
    Bytes bytes_;
};

std::uint32_t pointer(RowId id) { return static_cast<std::uint32_t>(packed(id)); }

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
    if (!format.isJet3()) {
        store<std::uint32_t>(head + 0x0C, kDefinitionMark);
        store<std::uint32_t>(head + 0x18, 1);
    }
    store<std::uint8_t>(head + format.tableKindAt, table.system ? kSystemTable : kUserTable);
    store<std::uint16_t>(head + format.maxColumnsAt, columns);
    store<std::uint16_t>(head + format.variableColumnsAt, static_cast<std::uint16_t>(variables));
    store<std::uint16_t>(head + format.columnsAt, columns);
    store<std::uint32_t>(head + format.logicalIndexesAt,
                         static_cast<std::uint32_t>(table.indexes.size()));
    store<std::uint32_t>(head + format.realIndexesAt,
                         static_cast<std::uint32_t>(table.indexes.size()));
    store<std::uint32_t>(head + format.ownedMapAt, pointer(places.owned));
    store<std::uint32_t>(head + format.freeMapAt, pointer(places.free));
}

void writeColumns(Writer& out, const Format& format, const NewTable& table, const SortOrder& order,
                  std::uint16_t columnMark) {
    std::uint16_t fixedAt = 0;
    std::uint16_t variable = 0;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const NewColumn& column = table.columns[i];
        const bool fixed = (column.flags & ColumnFlags::fixed) != 0;
        std::byte* at = out.block(format.columnSize);
        store<std::uint8_t>(at, static_cast<std::uint8_t>(column.type));
        store<std::uint16_t>(at + format.columnNumberAt, static_cast<std::uint16_t>(i));
        store<std::uint16_t>(at + format.columnVariableAt, variable);
        store<std::uint16_t>(at + format.columnOrdinalAt, static_cast<std::uint16_t>(i));
        if (format.isJet3()) {
            store<std::uint16_t>(at + format.columnSortAt - 2, columnMark);
            store<std::uint16_t>(at + format.columnSortAt, order.lcid);
            store<std::uint16_t>(at + format.columnSortAt + 2, order.codePage);
        } else {
            store<std::uint32_t>(at + 1, kDefinitionMark);
            store<std::uint8_t>(at + format.columnFlagsAt + 1, column.compressed ? 1 : 0);
            if (column.type == ColumnType::numeric) {
                store<std::uint8_t>(at + format.columnSortAt, column.precision);
                store<std::uint8_t>(at + format.columnSortAt + 1, column.scale);
            } else {
                store<std::uint16_t>(at + format.columnSortAt, order.lcid);
                store<std::uint8_t>(at + format.columnSortAt + 2, order.variant);
                store<std::uint8_t>(at + format.columnSortAt + 3, order.version);
            }
        }
        store<std::uint8_t>(at + format.columnFlagsAt, column.flags);
        store<std::uint16_t>(at + format.columnLengthAt, column.length);
        if (!fixed)
            ++variable;
        else if (column.type != ColumnType::boolean) {
            store<std::uint16_t>(at + format.columnFixedAt, fixedAt);
            fixedAt = static_cast<std::uint16_t>(fixedAt + column.length);
        }
    }
}

void writeIndexes(Writer& out, const Format& format, const NewTable& table, const Places& places,
                  const TextCodec& names) {
    for (std::size_t i = 0; i < table.indexes.size(); ++i) {
        const NewIndex& index = table.indexes[i];
        std::byte* at = out.block(format.realIndexSize);
        if (!format.isJet3())
            store<std::uint32_t>(at, kIndexMark);
        for (std::size_t k = 0; k < kMaxIndexColumns; ++k) {
            std::byte* slot = at + format.realIndexColumnsAt + 3 * k;
            const bool used = k < index.columns.size();
            store<std::uint16_t>(slot, used ? static_cast<std::uint16_t>(index.columns[k].column)
                                            : kNoColumn);
            store<std::uint8_t>(slot + 2, used && index.columns[k].ascending ? 1 : 0);
        }
        store<std::uint32_t>(at + format.realIndexMapAt, pointer(places.indexMaps[i]));
        store<std::uint32_t>(at + format.realIndexRootAt, number(places.roots[i]));
        const std::uint8_t always = format.isJet3() ? 0 : IndexFlags::jet4;
        store<std::uint8_t>(at + format.realIndexFlagsAt,
                            static_cast<std::uint8_t>(index.flags | always));
    }

    // Blocks and names of the logical ones stand in the order of the names.
    std::vector<std::size_t> order(table.indexes.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return foldedName(table.indexes[a].name) < foldedName(table.indexes[b].name);
    });
    for (const std::size_t i : order) {
        std::byte* at = out.block(format.logicalIndexSize);
        if (!format.isJet3())
            store<std::uint32_t>(at, kDefinitionMark);
        at += format.logicalIndexAt;
        store<std::uint32_t>(at, static_cast<std::uint32_t>(i));
        store<std::uint32_t>(at + 4, static_cast<std::uint32_t>(i));
        store<std::int32_t>(at + 9, -1);
        store<std::uint8_t>(at + 17, kNoCascade);
        store<std::uint8_t>(at + 18, kNoCascade);
        store<std::uint8_t>(at + 19, table.indexes[i].primary ? 1 : 0);
    }
    for (const std::size_t i : order)
        out.name(table.indexes[i].name, names);
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

std::uint16_t fixedLength(ColumnType type) noexcept {
    switch (type) {
    case ColumnType::byte:
        return 1;
    case ColumnType::integer:
        return 2;
    case ColumnType::longInteger:
    case ColumnType::single:
        return 4;
    case ColumnType::currency:
    case ColumnType::real:
    case ColumnType::date:
        return 8;
    case ColumnType::guid:
        return 16;
    case ColumnType::numeric:
        return 17;
    default:
        return 0;
    }
}

void buildTable(Pager& pager, PageAllocator& pages, PageNo page, const NewTable& table,
                const SortOrder& order, std::uint16_t columnMark) {
    const Format& format = pager.format();
    const TextCodec names(format.version, order.codePage);
    const Places places = takePlaces(pager, pages, page, table);

    Writer out(format);
    writeHeader(out.block(format.definitionHeader), format, table, places);
    (void)out.block(table.indexes.size() * format.statisticsSize);
    writeColumns(out, format, table, order, columnMark);
    for (const NewColumn& column : table.columns)
        out.name(column.name, names);
    writeIndexes(out, format, table, places, names);
    for (const LongValueMaps& maps : places.longValues) {
        out.u16(maps.columnNumber);
        out.u32(pointer(maps.owned));
        out.u32(pointer(*maps.free));
    }
    out.u16(kNoColumn);
    store<std::uint32_t>(out.bytes().data() + 8, static_cast<std::uint32_t>(out.bytes().size()));
    writePages(pager, pages, page, out.bytes());
}

std::vector<SystemTable> systemTables(Version version) {
    using enum ColumnType;
    constexpr std::uint8_t kFixed = 0x13;
    constexpr std::uint8_t kVariable = 0x12;
    constexpr std::uint8_t kAccount = 0x32;
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
        PageNo{2   },
        "MSysObjects",
        { {column("Id", longInteger, kFixed), column("ParentId", longInteger, kFixed),
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
        PageNo{3   },
        "MSysACEs",
        { {column("ObjectId", longInteger, kFixed), column("SID", binary, kAccount),
          column("ACM", longInteger, kFixed), column("FInheritable", boolean, kFixed)},
               {index("ObjectId", {0}, IndexFlags::required)},
               true}
    };
    tables[2] = {
        PageNo{4   },
        "MSysQueries",
        { {column("ObjectId", longInteger, kFixed), column("Attribute", byte, kFixed),
          column("Order", binary, kVariable), column("Name1", text, kVariable),
          column("Name2", text, kVariable), column("Expression", memo, kVariable),
          column("Flag", integer, kFixed)},
               {index("ObjectIdAttribute", {0, 1, 2}, IndexFlags::unique, true)},
               true}
    };
    if (!isJet3)
        tables[2].table.columns.push_back(column("LvExtra", longInteger, kFixed));
    tables[3] = {
        PageNo{5   },
        "MSysRelationships",
        { {column("szRelationship", text, kVariable), column("grbit", longInteger, kFixed),
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
