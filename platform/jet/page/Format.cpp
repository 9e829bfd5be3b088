#include "jet/page/Format.h"

namespace jet {

namespace {

constexpr std::size_t kHead = Stretch(PageHead::one).end();

consteval bool isWhole(const HeaderLayout& h) {
    // What is between the names and the end of the masked part hasn't got a meaning.
    const std::size_t between = h.version == Version::jet3 ? h.build.end() : (*h.created).end();
    const Stretch rest{between, h.masked.end() - between};
    const Stretch noLanguage{h.at(Structure::none, h.columnMark.end()), 2};
    const Stretch behindBuild{h.at(Structure::none, h.build.end()), 2};
    return fill(kHead, h.masked.at, {h.zero, h.name, h.versionByte, h.zeros}) &&
           fill(h.masked.at, h.masked.end(),
                {h.freePages, h.secondMap, h.objects, h.rights, h.queries, h.relationships,
                 h.unknown, h.columnMark, noLanguage, h.language, h.codePage, h.key, h.password,
                 h.build, behindBuild, h.variant, h.orderVersion, h.created, rest});
}

consteval bool isWhole(const DataPageLayout& p) {
    return fill(kHead, p.slotTable, {p.freeBytes, p.owner, p.stamp, p.slotCount});
}

consteval bool isWhole(const DefinitionLayout& d) {
    return fill(DefinitionPageLayout::size, d.size,
                {d.length, d.mark, d.rows, d.lastNumber, d.one, d.unknown, d.kind, d.maxColumns,
                 d.maxVariables, d.columns, d.logicalIndexes, d.realIndexes, d.ownedMap,
                 d.freeMap});
}

consteval bool isWhole(const StatisticsLayout& s) {
    return fill(0, s.size, {s.entries, s.distinctKeys, s.zero});
}

consteval bool isWhole(const ColumnLayout& c) {
    return fill(0, c.size,
                {c.type, c.mark, c.number, c.variable, c.ordinal, c.headerMark, c.language,
                 c.codePage, c.variant, c.orderVersion, c.flags, c.textFlags, c.zero, c.fixed,
                 c.length});
}

consteval bool isWhole(const RealIndexLayout& r) {
    return r.keys.size == kMaxIndexColumns * KeyColumnLayout::size &&
           fill(0, r.size, {r.mark, r.keys, r.map, r.root, r.unknown, r.flags, r.zero});
}

consteval bool isWhole(const LogicalIndexLayout& l) {
    return fill(0, l.size,
                {l.mark, l.number, l.realIndex, l.side, l.partner, l.otherTable, l.cascadesUpdates,
                 l.cascadesDeletes, l.kind, l.zero});
}

consteval bool isWhole(const IndexPageLayout& p) {
    return fill(
        kHead, p.entries,
        {p.freeBytes, p.owner, p.zero, p.previous, p.next, p.tail, p.prefix, p.level, p.mask});
}

consteval bool isWhole(const Format& f) {
    return isWhole(f.header) && f.header.commitPairs.end() <= f.pageSize && isWhole(f.dataPage) &&
           isWhole(f.definition) && isWhole(f.statistics) && isWhole(f.column) &&
           isWhole(f.realIndex) && isWhole(f.logicalIndex) && isWhole(f.indexPage) &&
           f.indexPage.mask.size * 8 > f.indexCapacity(); // a bit for the end of the last entry
}
static_assert(isWhole(kJet3Format));
static_assert(isWhole(kJet4Format));

static_assert(fill(kHead, DefinitionPageLayout::size,
                   {DefinitionPageLayout::freeBytes, DefinitionPageLayout::next}));
static_assert(fill(0, KeyColumnLayout::size,
                   {KeyColumnLayout::column, KeyColumnLayout::direction}));
static_assert(fill(0, LongValueMapsLayout::size,
                   {LongValueMapsLayout::column, LongValueMapsLayout::owned,
                    LongValueMapsLayout::free}));

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

} // namespace jet
