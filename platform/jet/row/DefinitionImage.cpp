#include "jet/row/DefinitionImage.h"

#include "jet/Names.h"
#include "jet/row/DefinitionReader.h"
#include "jet/row/SystemTables.h"

#include <algorithm>
#include <set>

namespace jet {

namespace {

constexpr std::size_t kHead = DefinitionPageLayout::size;

} // namespace

std::size_t definitionPageCount(const Format& format, std::size_t size) noexcept {
    const std::size_t further = format.pageSize - kHead;
    return size <= format.pageSize ? 1 : 1 + (size - format.pageSize + further - 1) / further;
}

Bytes definitionPage(const Format& format, std::span<const std::byte> bytes, std::size_t before,
                     PageNo next) {
    // The first page holds the head of the definition's own bytes where the others have a header.
    const std::size_t from = before == 0 ? 0 : kHead;
    const std::size_t begin =
        before == 0 ? 0 : format.pageSize + (before - 1) * (format.pageSize - kHead);
    const std::size_t part = std::min(bytes.size() - begin, format.pageSize - from);
    Bytes page(format.pageSize);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(begin), part,
                page.begin() + static_cast<std::ptrdiff_t>(from));
    startPage(page.data(), PageKind::definition);
    const std::size_t used = from + part + kHead;
    const std::size_t free = used < format.pageSize ? format.pageSize - used : 0;
    store(page.data(), DefinitionPageLayout::freeBytes,
          format.isJet3() ? kDefinitionPageMark : static_cast<std::uint16_t>(free));
    store(page.data(), DefinitionPageLayout::next, next);
    return page;
}

void makePlain(std::byte* block, const LogicalIndexLayout& layout) noexcept {
    store(block, layout.side, static_cast<std::uint8_t>(LogicalIndex::Side::none));
    store(block, layout.partner, kNoPartner);
    store(block, layout.otherTable, PageNo{});
    store(block, layout.cascadesUpdates, CascadeFlags::none);
    store(block, layout.cascadesDeletes, CascadeFlags::none);
    store(block, layout.kind, static_cast<std::uint8_t>(LogicalIndex::Kind::plain));
}

DefinitionImage::DefinitionImage(Pager& pager, const TableDefinition& table)
    : format_(&pager.format()) {
    for (const PageNo page : table.pages) {
        const PageRef ref = pager.read(page);
        const auto part = ref.view().from(bytes_.empty() ? 0 : kHead);
        bytes_.insert(bytes_.end(), part.begin(), part.end());
    }
    bytes_.resize(ByteView(bytes_, table.page()).load(format_->definition.length));
    study();
}

DefinitionImage::DefinitionImage(const Format& format, Bytes bytes)
    : format_(&format), bytes_(std::move(bytes)) {
    study();
}

void DefinitionImage::study() {
    const ByteView view(bytes_, PageNo{});
    const DefinitionLayout& layout = format_->definition;
    const std::size_t real = view.load(layout.realIndexes);
    columns_ = view.load(layout.columns);
    logicalIndexes_ = view.load(layout.logicalIndexes);
    DefinitionReader reader(*format_, view);
    reader.skip(real, format_->statistics.size);
    columnsAt_ = reader.at();
    reader.skip(columns_, format_->column.size);
    reader.skipNames(columns_);
    realIndexesAt_ = reader.at();
    reader.skip(real, format_->realIndex.size);
    logicalIndexesAt_ = reader.at();
    reader.skip(logicalIndexes_, format_->logicalIndex.size);
    reader.skipNames(logicalIndexes_);
    longValuesAt_ = reader.at();
    (void)view.sub(longValuesAt_, LongValueMapsLayout::column.size);
}

std::byte* DefinitionImage::column(std::size_t place) noexcept {
    return at(columnsAt_ + place * format_->column.size);
}

std::byte* DefinitionImage::logicalIndex(std::size_t place) noexcept {
    return at(logicalIndexesAt_ + place * format_->logicalIndex.size);
}

std::int32_t DefinitionImage::lastNumber() const noexcept {
    return load(bytes_.data(), format_->definition.lastNumber);
}

void DefinitionImage::setLastNumber(std::int32_t number) noexcept {
    store(bytes_.data(), format_->definition.lastNumber, number);
}

std::uint32_t DefinitionImage::rowCount() const noexcept {
    return load(bytes_.data(), format_->definition.rows);
}

void DefinitionImage::setRowCount(std::uint32_t rows) noexcept {
    store(bytes_.data(), format_->definition.rows, rows);
}

void DefinitionImage::setMaps(RowId owned, RowId free) noexcept {
    store(bytes_.data(), format_->definition.ownedMap, owned);
    store(bytes_.data(), format_->definition.freeMap, free);
}

void DefinitionImage::setIndex(std::size_t index, RowId map, PageNo root, std::uint32_t entries,
                               std::uint32_t distinctKeys) noexcept {
    std::byte* statistics = at(format_->statisticsAt(index));
    store(statistics, format_->statistics.entries, entries);
    store(statistics, format_->statistics.distinctKeys, distinctKeys);
    std::byte* block = at(realIndexesAt_ + index * format_->realIndex.size);
    store(block, format_->realIndex.map, map);
    store(block, format_->realIndex.root, root);
}

void DefinitionImage::setLongValueMaps(std::size_t place, RowId owned, RowId free) noexcept {
    using Maps = LongValueMapsLayout;
    std::byte* block = at(longValuesAt_ + place * Maps::size);
    store(block, Maps::owned, owned);
    if (load(block, Maps::free) != RowId{})
        store(block, Maps::free, free);
}

std::vector<DefinitionImage::End> DefinitionImage::relationshipEnds() const {
    const LogicalIndexLayout& layout = format_->logicalIndex;
    std::vector<End> ends;
    for (std::size_t i = 0; i < logicalIndexes_; ++i) {
        const std::byte* block = bytes_.data() + logicalIndexesAt_ + i * layout.size;
        if (const PageNo other = load(block, layout.otherTable); other != PageNo{})
            ends.push_back({i, other, load(block, layout.partner)});
    }
    return ends;
}

void DefinitionImage::setOtherTable(std::size_t logical, PageNo table) noexcept {
    store(logicalIndex(logical), format_->logicalIndex.otherTable, table);
}

void DefinitionImage::dissolve(std::size_t logical) noexcept {
    makePlain(logicalIndex(logical), format_->logicalIndex);
}

/// The last characters, two where there are, of a name that is there already become others.
void DefinitionImage::makeNamesDiffer(std::size_t from, std::size_t count) {
    const std::size_t character = format_->isJet3() ? 1 : 2;
    const TextCodec codec(format_->version);
    std::vector<std::span<std::byte>> names;
    std::multiset<std::string> all;
    const auto folded = [&](std::span<const std::byte> name) {
        return foldedName(codec.decode(name.first(name.size() / character * character)));
    };
    DefinitionReader reader(*format_, {bytes_, PageNo{}}, from);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t size = reader.name().size();
        names.push_back(std::span(bytes_).subspan(reader.at() - size, size));
        all.insert(folded(names.back()));
    }
    for (const std::span<std::byte> name : names) {
        const std::string before = folded(name);
        const bool isLong = name.size() >= 2 * character;
        if (all.count(before) < 2 || name.size() < character)
            continue;
        // In place, since a longer name would move all that follows it in the definition.
        for (unsigned i = 0; i < (isLong ? 256U : '~' - '0'); ++i) {
            if (isLong)
                name[name.size() - 2 * character] = static_cast<std::byte>('0' + i / 16);
            name[name.size() - character] = static_cast<std::byte>('0' + (isLong ? i % 16 : i));
            if (const std::string now = folded(name); !all.contains(now)) {
                all.erase(all.find(before));
                all.insert(now);
                break;
            }
        }
    }
}

void DefinitionImage::repairIndexes() {
    const LogicalIndexLayout& layout = format_->logicalIndex;
    std::set<std::uint32_t> numbers;
    std::uint32_t next = 0;
    for (std::size_t i = 0; i < logicalIndexes_; ++i) {
        std::byte* block = logicalIndex(i);
        // Relationships name their partners by it.
        while (!numbers.insert(load(block, layout.number)).second)
            store(block, layout.number, next++);
        if (load(block, layout.kind) > static_cast<std::uint8_t>(LogicalIndex::Kind::relationship))
            store(block, layout.kind, static_cast<std::uint8_t>(LogicalIndex::Kind::plain));
    }
}

void DefinitionImage::listLongValues(TableDefinition& table) {
    using Maps = LongValueMapsLayout;
    table.longValues.clear();
    bytes_.resize(longValuesAt_);
    for (const Column& column : table.columns)
        if (isLongValue(column.type)) {
            table.longValues.push_back({column.number, {}, RowId()});
            const std::size_t block = bytes_.size();
            bytes_.resize(block + Maps::size);
            store(at(block), Maps::column, column.number);
            store(at(block), Maps::free, {PageNo{}, 1}); // there is one: see setLongValueMaps()
        }
    const std::size_t end = bytes_.size();
    bytes_.resize(end + Maps::column.size);
    store(at(end), Maps::column, kNoColumn);
    store(bytes_.data(), format_->definition.length, static_cast<std::uint32_t>(bytes_.size()));
}

void DefinitionImage::repair(TableDefinition& table) {
    makeNamesDiffer(columnsAt_ + columns_ * format_->column.size, columns_);
    makeNamesDiffer(logicalIndexesAt_ + logicalIndexes_ * format_->logicalIndex.size,
                    logicalIndexes_);
    repairIndexes();
    listLongValues(table);
    store(bytes_.data(), format_->definition.kind,
          number(table.page()) < kFirstUserDefinition ? kSystemTable : kUserTable);
    store(bytes_.data(), format_->definition.mark, kDefinitionMark);
    for (std::size_t i = 0; i < columns_; ++i)
        store(column(i), format_->column.mark, kDefinitionMark);
    for (std::size_t i = realIndexesAt_; i < logicalIndexesAt_; i += format_->realIndex.size)
        store(at(i), format_->realIndex.mark, kIndexMark);
    for (std::size_t i = 0; i < logicalIndexes_; ++i)
        store(logicalIndex(i), format_->logicalIndex.mark, kDefinitionMark);
}

DefinitionImage DefinitionImage::withoutIndexes() const {
    const DefinitionLayout& layout = format_->definition;
    const auto place = [&](std::size_t offset) {
        return bytes_.begin() + static_cast<std::ptrdiff_t>(offset);
    };
    Bytes bytes(bytes_.begin(), place(layout.size));
    bytes.insert(bytes.end(), place(columnsAt_), place(realIndexesAt_));
    bytes.insert(bytes.end(), place(longValuesAt_), bytes_.end());
    store(bytes.data(), layout.length, static_cast<std::uint32_t>(bytes.size()));
    store(bytes.data(), layout.logicalIndexes, 0);
    store(bytes.data(), layout.realIndexes, 0);
    store(bytes.data(), layout.kind, kUserTable);
    return {*format_, std::move(bytes)};
}

} // namespace jet
