#include "jet/TableDefinition.h"

#include "jet/row/DefinitionReader.h"

#include <algorithm>

namespace jet {

namespace {

/// Far above what 255 columns and their indexes can need.
constexpr std::size_t kLargestDefinition = std::size_t{1} << 19;

/// All bytes of a definition in one piece, and the pages they came from.
std::vector<std::byte> gather(Pager& pager, PageNo first, std::vector<PageNo>& pages) {
    std::vector<std::byte> bytes;
    for (std::uint32_t next = number(first); next != 0;) {
        const PageRef page = pager.read(static_cast<PageNo>(next));
        if (page.kind() != PageKind::definition)
            corrupt(page.page(), "era esperada a definição de uma tabela");
        if (bytes.size() > kLargestDefinition)
            corrupt(first, "a definição da tabela não termina");
        const auto part = page.view().from(pages.empty() ? 0 : DefinitionPageLayout::size);
        bytes.insert(bytes.end(), part.begin(), part.end());
        pages.push_back(page.page());
        next = number(page.view().load(DefinitionPageLayout::next));
    }
    return bytes;
}

Column parseColumn(const ByteView& block, const Format& format, const TextSettings& texts) {
    const ColumnLayout& layout = format.column;
    Column column;
    column.type = static_cast<ColumnType>(block.load(layout.type));
    column.number = block.load(layout.number);
    column.variableIndex = block.load(layout.variable);
    column.fixedOffset = block.load(layout.fixed);
    column.length = block.load(layout.length);
    const std::uint8_t flags = block.load(layout.flags);
    column.fixed = (flags & ColumnFlags::fixed) != 0;
    column.autonumber =
        (flags & ColumnFlags::autonumber) != 0 && column.type == ColumnType::longInteger;
    column.autoGuid = (flags & ColumnFlags::autoGuid) != 0 && column.type == ColumnType::guid;
    if (column.type == ColumnType::numeric) {
        column.precision = block.load(layout.precision);
        column.scale = block.load(layout.scale);
    }
    if (isText(column.type)) {
        column.order.lcid = block.load(layout.language);
        if (format.isJet3()) {
            const std::uint16_t page = block.load(*layout.codePage);
            column.order.codePage = texts.overridden || page == 0 ? texts.codePage : page;
        } else {
            column.order.variant = block.load(*layout.variant);
            column.order.version = block.load(*layout.orderVersion);
            column.compressed = (block.load(*layout.textFlags) & kMayCompress) != 0;
        }
        column.codec = TextCodec(format.version, column.order.codePage);
        column.collation = Collation::find(format.version, column.order);
    }
    return column;
}

RealIndex parseRealIndex(const ByteView& block, const Format& format,
                         const TableDefinition& table) {
    const RealIndexLayout& layout = format.realIndex;
    RealIndex index;
    for (std::size_t i = 0; i < kMaxIndexColumns; ++i) {
        const ByteView key(block.sub(layout.key(i), KeyColumnLayout::size), block.page());
        const std::uint16_t columnNumber = key.load(KeyColumnLayout::column);
        if (columnNumber == kNoColumn)
            continue;
        const auto column = std::find_if(table.columns.begin(), table.columns.end(),
                                         [&](const Column& c) { return c.number == columnNumber; });
        if (column == table.columns.end())
            corrupt(block.page(), "um índice usa uma coluna que não existe");
        index.columns.push_back({static_cast<std::size_t>(column - table.columns.begin()),
                                 (key.load(KeyColumnLayout::direction) & kAscending) != 0});
    }
    if (index.columns.empty())
        corrupt(block.page(), "um índice não tem colunas");
    index.map = block.load(layout.map);
    index.root = block.load(layout.root);
    const std::uint8_t flags = block.load(layout.flags);
    index.unique = (flags & IndexFlags::unique) != 0;
    index.ignoreNulls = (flags & IndexFlags::ignoreNulls) != 0;
    index.required = (flags & IndexFlags::required) != 0;
    return index;
}

LogicalIndex parseLogicalIndex(const ByteView& block, const LogicalIndexLayout& layout) {
    LogicalIndex index;
    index.number = block.load(layout.number);
    index.realIndex = block.load(layout.realIndex);
    index.kind = static_cast<LogicalIndex::Kind>(block.load(layout.kind));
    if (index.kind == LogicalIndex::Kind::relationship) {
        index.side = static_cast<LogicalIndex::Side>(block.load(layout.side));
        index.partner = block.load(layout.partner);
        index.partnerTable = block.load(layout.otherTable);
        index.cascadesUpdates = (block.load(layout.cascadesUpdates) & CascadeFlags::cascades) != 0;
        const std::uint8_t deletes = block.load(layout.cascadesDeletes);
        index.cascadesDeletes = (deletes & CascadeFlags::cascades) != 0;
        index.nullsOnDelete = (deletes & CascadeFlags::nulls) != 0;
    }
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

    const DefinitionLayout& layout = format.definition;
    const ByteView body(bytes.sub(0, bytes.load(layout.length)), page);
    table.system = body.load(layout.kind) == kSystemTable;
    table.maxColumns = body.load(layout.maxColumns);
    table.maxVariables = body.load(layout.maxVariables);
    const std::size_t columns = body.load(layout.columns);
    const std::size_t logical = body.load(layout.logicalIndexes);
    const std::size_t real = body.load(layout.realIndexes);
    table.ownedMap = body.load(layout.ownedMap);
    table.freeMap = body.load(layout.freeMap);
    // Before anything is made as large as they say.
    if (table.maxColumns > kMaxColumns || columns > table.maxColumns ||
        table.maxVariables > table.maxColumns || real > kMaxColumns || logical > kMaxColumns)
        corrupt(page, "as contagens da definição da tabela são inválidas");

    DefinitionReader reader(format, body);
    reader.skip(real, format.statistics.size);
    for (std::size_t i = 0; i < columns; ++i)
        table.columns.push_back(parseColumn(reader.block(format.column.size), format, texts));
    const TextCodec names(format.version, texts.codePage);
    for (Column& column : table.columns)
        column.name = names.decode(reader.name().bytes());
    std::stable_sort(table.columns.begin(), table.columns.end(),
                     [](const Column& a, const Column& b) { return a.number < b.number; });
    checkColumns(table, format);

    for (std::size_t i = 0; i < real; ++i)
        table.realIndexes.push_back(
            parseRealIndex(reader.block(format.realIndex.size), format, table));
    for (std::size_t i = 0; i < logical; ++i) {
        table.logicalIndexes.push_back(
            parseLogicalIndex(reader.block(format.logicalIndex.size), format.logicalIndex));
        if (table.logicalIndexes.back().realIndex >= real)
            corrupt(page, "um índice não tem árvore");
    }
    for (LogicalIndex& index : table.logicalIndexes)
        index.name = names.decode(reader.name().bytes());

    while (const auto maps = reader.longValueMaps()) {
        const RowId free = maps->load(LongValueMapsLayout::free);
        table.longValues.push_back({maps->load(LongValueMapsLayout::column),
                                    maps->load(LongValueMapsLayout::owned),
                                    free == RowId{} ? std::nullopt : std::optional(free)});
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
    const auto sameIndex = [](const RealIndex& x, const RealIndex& y) {
        return x.root == y.root && x.map == y.map && x.unique == y.unique &&
               x.ignoreNulls == y.ignoreNulls && x.required == y.required && x.columns == y.columns;
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
