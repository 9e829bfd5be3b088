#include "jet/TableDefinition.h"

#include <algorithm>

namespace jet {

namespace {

enum ColumnFlag : std::uint8_t { fixedFlag = 0x01, autonumberFlag = 0x04, autoGuidFlag = 0x40 };
constexpr std::uint8_t kCompressedFlag = 0x01;
enum IndexFlag : std::uint8_t { uniqueFlag = 0x01, ignoreNullsFlag = 0x02, requiredFlag = 0x08 };

constexpr std::size_t kNextPageAt = 4;
constexpr std::size_t kIndexColumnSize = 3;
/// Far above what 255 columns and their indexes can need.
constexpr std::size_t kLargestDefinition = std::size_t{1} << 19;

RowId rowId(std::uint32_t pointer) { return unpacked(pointer); }

/// All bytes of a definition in one piece, and the pages they came from.
std::vector<std::byte> gather(Pager& pager, PageNo first, std::vector<PageNo>& pages) {
    std::vector<std::byte> bytes;
    for (std::uint32_t next = number(first); next != 0;) {
        const PageRef page = pager.read(static_cast<PageNo>(next));
        if (page.kind() != PageKind::definition)
            corrupt(page.page(), "era esperada a definição de uma tabela");
        if (bytes.size() > kLargestDefinition)
            corrupt(first, "a definição da tabela não termina");
        const auto part = page.view().from(pages.empty() ? 0 : kDefinitionHeader);
        bytes.insert(bytes.end(), part.begin(), part.end());
        pages.push_back(page.page());
        next = page.view().u32(kNextPageAt);
    }
    return bytes;
}

/// Reads the parts of a definition one after the other.
class Reader {
public:
    Reader(ByteView bytes, std::size_t at) : bytes_(bytes), at_(at) {}
    ByteView block(std::size_t size) {
        const ByteView part(bytes_.sub(at_, size), bytes_.page());
        at_ += size;
        return part;
    }
    std::uint16_t u16() { return block(2).u16(0); }
    std::string name(const Format& format, const TextCodec& codec) {
        const std::size_t length = format.nameLengthSize == 1 ? block(1).u8(0) : std::size_t{u16()};
        return codec.decode(block(length).bytes());
    }

private:
    ByteView bytes_;
    std::size_t at_;
};

Column parseColumn(const ByteView& block, const Format& format, const TextSettings& texts) {
    Column column;
    column.type = static_cast<ColumnType>(block.u8(0));
    column.number = block.u16(format.columnNumberAt);
    column.variableIndex = block.u16(format.columnVariableAt);
    column.fixedOffset = block.u16(format.columnFixedAt);
    column.length = block.u16(format.columnLengthAt);
    const std::uint8_t flags = block.u8(format.columnFlagsAt);
    column.fixed = (flags & fixedFlag) != 0;
    column.autonumber = (flags & autonumberFlag) != 0 && column.type == ColumnType::longInteger;
    column.autoGuid = (flags & autoGuidFlag) != 0 && column.type == ColumnType::guid;
    if (column.type == ColumnType::numeric) {
        column.precision = block.u8(format.columnSortAt + (format.isJet3() ? 2 : 0));
        column.scale = block.u8(format.columnSortAt + (format.isJet3() ? 3 : 1));
    }
    if (isText(column.type)) {
        column.order.lcid = block.u16(format.columnSortAt);
        if (format.isJet3()) {
            const std::uint16_t page = block.u16(format.columnSortAt + 2);
            column.order.codePage = texts.overridden || page == 0 ? texts.codePage : page;
        } else {
            column.order.variant = block.u8(format.columnSortAt + 2);
            column.order.version = block.u8(format.columnSortAt + 3);
            column.compressed = (block.u8(format.columnFlagsAt + 1) & kCompressedFlag) != 0;
        }
        column.codec = TextCodec(format.version, column.order.codePage);
        column.collation = Collation::find(format.version, column.order);
    }
    return column;
}

RealIndex parseRealIndex(const ByteView& block, const Format& format,
                         const TableDefinition& table) {
    RealIndex index;
    for (std::size_t i = 0; i < kMaxIndexColumns; ++i) {
        const std::size_t at = format.realIndexColumnsAt + i * kIndexColumnSize;
        const std::uint16_t columnNumber = block.u16(at);
        if (columnNumber == kNoColumn)
            continue;
        const auto column = std::find_if(table.columns.begin(), table.columns.end(),
                                         [&](const Column& c) { return c.number == columnNumber; });
        if (column == table.columns.end())
            corrupt(block.page(), "um índice usa uma coluna que não existe");
        index.columns.push_back({static_cast<std::size_t>(column - table.columns.begin()),
                                 (block.u8(at + 2) & 1) != 0});
    }
    if (index.columns.empty())
        corrupt(block.page(), "um índice não tem colunas");
    index.map = rowId(block.u32(format.realIndexMapAt));
    index.root = static_cast<PageNo>(block.u32(format.realIndexRootAt));
    const std::uint8_t flags = block.u8(format.realIndexFlagsAt);
    index.unique = (flags & uniqueFlag) != 0;
    index.ignoreNulls = (flags & ignoreNullsFlag) != 0;
    index.required = (flags & requiredFlag) != 0;
    return index;
}

/// What a writer relies on: no two columns share a place, and every place is inside the row.
void checkColumns(TableDefinition& table, const Format& format) {
    std::vector<bool> numbers(table.maxColumns);
    std::vector<bool> variables(table.maxVariables);
    std::vector<bool> bytes(format.pageSize);
    for (const Column& column : table.columns) {
        if (column.number >= table.maxColumns || numbers[column.number])
            corrupt(table.page(), "o número da coluna \"" + column.name + "\" é inválido");
        numbers[column.number] = true;
        if (column.type == ColumnType::boolean)
            continue;
        if (!column.fixed) {
            if (column.variableIndex >= table.maxVariables || variables[column.variableIndex])
                corrupt(table.page(), "o lugar da coluna \"" + column.name + "\" é inválido");
            variables[column.variableIndex] = true;
            continue;
        }
        const std::size_t end = std::size_t{column.fixedOffset} + column.length;
        if (end > format.pageSize)
            corrupt(table.page(), "a coluna \"" + column.name + "\" não cabe na linha");
        for (std::size_t i = column.fixedOffset; i < end; ++i) {
            if (bytes[i])
                corrupt(table.page(), "a coluna \"" + column.name + "\" cobre outra");
            bytes[i] = true;
        }
        table.fixedSize = std::max(table.fixedSize, end);
    }
}

} // namespace

std::size_t Column::maxCharacters() const noexcept {
    return codec.version() == Version::jet3 ? length : length / 2U;
}

const LongValueMaps* TableDefinition::longValuesOf(const Column& column) const noexcept {
    for (const LongValueMaps& maps : longValues)
        if (maps.columnNumber == column.number)
            return &maps;
    return nullptr;
}

TableDefinition parseDefinition(Pager& pager, PageNo page, const TextSettings& texts) {
    const Format& format = pager.format();
    TableDefinition table;
    table.isJet3 = format.isJet3();
    const std::vector<std::byte> all = gather(pager, page, table.pages);
    const ByteView bytes(all, page);

    const std::uint32_t length = bytes.u32(kDefinitionLengthAt);
    const ByteView body(bytes.sub(0, length), page);
    table.system = body.u8(format.tableKindAt) == kSystemTable;
    table.maxColumns = body.u16(format.maxColumnsAt);
    table.maxVariables = body.u16(format.variableColumnsAt);
    const std::size_t columns = body.u16(format.columnsAt);
    const std::size_t logical = body.u32(format.logicalIndexesAt);
    const std::size_t real = body.u32(format.realIndexesAt);
    table.ownedMap = rowId(body.u32(format.ownedMapAt));
    table.freeMap = rowId(body.u32(format.freeMapAt));
    if (table.maxColumns > kMaxColumns || columns > table.maxColumns ||
        table.maxVariables > table.maxColumns || real > kMaxColumns || logical > kMaxColumns)
        corrupt(page, "as contagens da definição da tabela são inválidas");

    Reader reader(body, format.definitionHeader);
    (void)reader.block(real * format.statisticsSize);
    for (std::size_t i = 0; i < columns; ++i)
        table.columns.push_back(parseColumn(reader.block(format.columnSize), format, texts));
    const TextCodec names(format.version, texts.codePage);
    for (Column& column : table.columns)
        column.name = reader.name(format, names);
    std::stable_sort(table.columns.begin(), table.columns.end(),
                     [](const Column& a, const Column& b) { return a.number < b.number; });
    checkColumns(table, format);

    for (std::size_t i = 0; i < real; ++i)
        table.realIndexes.push_back(
            parseRealIndex(reader.block(format.realIndexSize), format, table));
    for (std::size_t i = 0; i < logical; ++i) {
        const ByteView block = reader.block(format.logicalIndexSize);
        LogicalIndex index;
        index.number = block.u32(format.logicalIndexAt);
        index.realIndex = block.u32(format.logicalIndexAt + 4);
        index.kind = static_cast<LogicalIndex::Kind>(block.u8(format.logicalIndexAt + 19));
        if (index.kind == LogicalIndex::Kind::relationship) {
            index.side = static_cast<LogicalIndex::Side>(block.u8(format.logicalIndexAt + 8));
            index.partner = block.u32(format.logicalIndexAt + 9);
            index.partnerTable = static_cast<PageNo>(block.u32(format.logicalIndexAt + 13));
            index.cascadesUpdates = (block.u8(format.logicalIndexAt + 17) & 1) != 0;
            index.cascadesDeletes = (block.u8(format.logicalIndexAt + 18) & 1) != 0;
            index.nullsOnDelete = (block.u8(format.logicalIndexAt + 18) & 2) != 0;
        }
        if (index.realIndex >= real)
            corrupt(page, "um índice não tem árvore");
        table.logicalIndexes.push_back(std::move(index));
    }
    for (LogicalIndex& index : table.logicalIndexes)
        index.name = reader.name(format, names);

    for (std::uint16_t columnNumber = reader.u16(); columnNumber != kNoColumn;
         columnNumber = reader.u16()) {
        const ByteView maps = reader.block(8);
        const std::uint32_t free = maps.u32(4);
        table.longValues.push_back(
            {columnNumber, rowId(maps.u32(0)), free ? std::optional(rowId(free)) : std::nullopt});
    }
    return table;
}

bool arePartners(const TableDefinition& table, const LogicalIndex& index,
                 const LogicalIndex& other) noexcept {
    using Kind = LogicalIndex::Kind;
    using Side = LogicalIndex::Side;
    const bool opposite = (index.side == Side::parent && other.side == Side::child) ||
                          (index.side == Side::child && other.side == Side::parent);
    return opposite && index.kind == Kind::relationship && other.kind == Kind::relationship &&
           other.number == index.partner && other.partner == index.number &&
           other.partnerTable == table.page();
}

bool sameStructure(const TableDefinition& a, const TableDefinition& b) {
    const auto sameColumn = [](const Column& x, const Column& y) {
        return x.name == y.name && x.type == y.type && x.number == y.number &&
               x.length == y.length && x.variableIndex == y.variableIndex &&
               x.fixedOffset == y.fixedOffset && x.fixed == y.fixed &&
               x.autonumber == y.autonumber && x.scale == y.scale;
    };
    const auto sameKey = [](const RealIndex::KeyColumn& x, const RealIndex::KeyColumn& y) {
        return x.column == y.column && x.ascending == y.ascending;
    };
    const auto sameIndex = [&](const RealIndex& x, const RealIndex& y) {
        return x.root == y.root && x.map == y.map && x.unique == y.unique &&
               x.ignoreNulls == y.ignoreNulls && x.required == y.required &&
               std::ranges::equal(x.columns, y.columns, sameKey);
    };
    const auto sameMaps = [](const LongValueMaps& x, const LongValueMaps& y) {
        return x.columnNumber == y.columnNumber && x.owned == y.owned && x.free == y.free;
    };
    return a.pages == b.pages && a.maxColumns == b.maxColumns && a.maxVariables == b.maxVariables &&
           a.ownedMap == b.ownedMap && a.freeMap == b.freeMap &&
           std::ranges::equal(a.columns, b.columns, sameColumn) &&
           std::ranges::equal(a.realIndexes, b.realIndexes, sameIndex) &&
           std::ranges::equal(a.longValues, b.longValues, sameMaps);
}

} // namespace jet
