#include "jet/row/DefinitionImage.h"

#include "jet/Names.h"
#include "jet/row/SystemTables.h"

#include <algorithm>
#include <set>

namespace jet {

namespace {

constexpr std::size_t kLongValueBlock = 10; // column number, two maps
constexpr std::size_t kOwnedMapAt = 2;
constexpr std::size_t kFreeMapAt = 6;

// Inside a logical index, from its number on.
constexpr std::size_t kRoleAt = 8;
constexpr std::size_t kPartnerAt = 9;
constexpr std::size_t kOtherTableAt = 13;
constexpr std::size_t kCascadeUpdateAt = 17;
constexpr std::size_t kCascadeDeleteAt = 18;
constexpr std::size_t kKindAt = 19;

constexpr std::size_t kMarkAt = 0x0C; // Jet 4, and again in every block

void storePointer(std::byte* at, RowId id) noexcept {
    store<std::uint32_t>(at, static_cast<std::uint32_t>(packed(id)));
}

} // namespace

std::size_t definitionPageCount(const Format& format, std::size_t size) noexcept {
    const std::size_t further = format.pageSize - kDefinitionHeader;
    return size <= format.pageSize ? 1 : 1 + (size - format.pageSize + further - 1) / further;
}

Bytes definitionPage(const Format& format, std::span<const std::byte> bytes, std::size_t before,
                     PageNo next) {
    // The first page holds the head of the definition's own bytes where the others have a header.
    const std::size_t from = before == 0 ? 0 : kDefinitionHeader;
    const std::size_t begin =
        before == 0 ? 0 : format.pageSize + (before - 1) * (format.pageSize - kDefinitionHeader);
    const std::size_t part = std::min(bytes.size() - begin, format.pageSize - from);
    Bytes page(format.pageSize);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(begin), part,
                page.begin() + static_cast<std::ptrdiff_t>(from));
    page[0] = std::byte{static_cast<std::uint8_t>(PageKind::definition)};
    page[1] = std::byte{1};
    const std::size_t used = from + part + kDefinitionHeader;
    if (format.isJet3())
        std::memcpy(page.data() + 2, "VC", 2);
    else
        store<std::uint16_t>(
            page.data() + 2,
            static_cast<std::uint16_t>(used < format.pageSize ? format.pageSize - used : 0));
    store<std::uint32_t>(page.data() + 4, number(next));
    return page;
}

DefinitionImage::DefinitionImage(Pager& pager, const TableDefinition& table)
    : format_(&pager.format()) {
    for (const PageNo page : table.pages) {
        const PageRef ref = pager.read(page);
        const auto part = ref.view().from(bytes_.empty() ? 0 : kDefinitionHeader);
        bytes_.insert(bytes_.end(), part.begin(), part.end());
    }
    bytes_.resize(ByteView(bytes_, table.page()).u32(kDefinitionLengthAt));
    study();
}

DefinitionImage::DefinitionImage(const Format& format, Bytes bytes)
    : format_(&format), bytes_(std::move(bytes)) {
    study();
}

std::size_t DefinitionImage::behindNames(std::size_t from, std::size_t count) const {
    const ByteView view(bytes_, PageNo{});
    for (std::size_t i = 0; i < count; ++i)
        from += format_->nameLengthSize +
                (format_->nameLengthSize == 1 ? view.u8(from) : std::size_t{view.u16(from)});
    return from;
}

void DefinitionImage::study() {
    const ByteView view(bytes_, PageNo{});
    const std::size_t columns = view.u16(format_->columnsAt);
    const std::size_t real = view.u32(format_->realIndexesAt);
    logicalIndexes_ = view.u32(format_->logicalIndexesAt);
    columnsAt_ = format_->definitionHeader + real * format_->statisticsSize;
    realIndexesAt_ = behindNames(columnsAt_ + columns * format_->columnSize, columns);
    logicalIndexesAt_ = realIndexesAt_ + real * format_->realIndexSize;
    longValuesAt_ = behindNames(logicalIndexesAt_ + logicalIndexes_ * format_->logicalIndexSize,
                                logicalIndexes_);
    (void)view.sub(longValuesAt_, 2);
}

std::size_t DefinitionImage::logicalOffset(std::size_t logical) const noexcept {
    return logicalIndexesAt_ + logical * format_->logicalIndexSize + format_->logicalIndexAt;
}

std::int32_t DefinitionImage::lastNumber() const noexcept {
    return load<std::int32_t>(bytes_.data() + format_->autonumberAt);
}

void DefinitionImage::setLastNumber(std::int32_t number) noexcept {
    store<std::int32_t>(at(format_->autonumberAt), number);
}

std::uint32_t DefinitionImage::rowCount() const noexcept {
    return load<std::uint32_t>(bytes_.data() + format_->rowCountAt);
}

void DefinitionImage::setRowCount(std::uint32_t rows) noexcept {
    store<std::uint32_t>(at(format_->rowCountAt), rows);
}

void DefinitionImage::setMaps(RowId owned, RowId free) noexcept {
    storePointer(at(format_->ownedMapAt), owned);
    storePointer(at(format_->freeMapAt), free);
}

void DefinitionImage::setIndex(std::size_t index, RowId map, PageNo root, std::uint32_t entries,
                               std::uint32_t distinctKeys) noexcept {
    std::byte* statistics = at(format_->definitionHeader + index * format_->statisticsSize);
    store<std::uint32_t>(statistics, entries);
    store<std::uint32_t>(statistics + 4, distinctKeys);
    std::byte* block = at(realIndexesAt_ + index * format_->realIndexSize);
    storePointer(block + format_->realIndexMapAt, map);
    store<std::uint32_t>(block + format_->realIndexRootAt, number(root));
}

void DefinitionImage::setLongValueMaps(std::size_t place, RowId owned, RowId free) noexcept {
    std::byte* block = at(longValuesAt_ + place * kLongValueBlock);
    storePointer(block + kOwnedMapAt, owned);
    if (load<std::uint32_t>(block + kFreeMapAt) != 0)
        storePointer(block + kFreeMapAt, free);
}

std::vector<DefinitionImage::End> DefinitionImage::relationshipEnds() const {
    std::vector<End> ends;
    for (std::size_t i = 0; i < logicalIndexes_; ++i) {
        const std::byte* block = bytes_.data() + logicalOffset(i);
        if (const auto other = load<std::uint32_t>(block + kOtherTableAt); other != 0)
            ends.push_back({i, static_cast<PageNo>(other), load<std::int32_t>(block + kPartnerAt)});
    }
    return ends;
}

void DefinitionImage::setOtherTable(std::size_t logical, PageNo table) noexcept {
    store<std::uint32_t>(at(logicalOffset(logical)) + kOtherTableAt, number(table));
}

void DefinitionImage::dissolve(std::size_t logical) noexcept {
    std::byte* block = at(logicalOffset(logical));
    store<std::uint8_t>(block + kRoleAt, 0);
    store<std::int32_t>(block + kPartnerAt, -1);
    store<std::uint32_t>(block + kOtherTableAt, 0);
    store<std::uint8_t>(block + kCascadeUpdateAt, kNoCascade);
    store<std::uint8_t>(block + kCascadeDeleteAt, kNoCascade);
    store<std::uint8_t>(block + kKindAt, 0);
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
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t end = behindNames(from, 1);
        names.push_back(
            std::span(bytes_).subspan(from, end - from).subspan(format_->nameLengthSize));
        all.insert(folded(names.back()));
        from = end;
    }
    for (const std::span<std::byte> name : names) {
        const std::string before = folded(name);
        const bool isLong = name.size() >= 2 * character;
        if (all.count(before) < 2 || name.size() < character)
            continue;
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
    constexpr std::uint8_t kRelationship = 2;
    std::set<std::uint32_t> numbers;
    std::uint32_t next = 0;
    for (std::size_t i = 0; i < logicalIndexes_; ++i) {
        std::byte* block = at(logicalOffset(i));
        while (!numbers.insert(load<std::uint32_t>(block)).second)
            store<std::uint32_t>(block, next++);
        if (load<std::uint8_t>(block + kKindAt) > kRelationship)
            store<std::uint8_t>(block + kKindAt, 0);
    }
}

void DefinitionImage::listLongValues(TableDefinition& table) {
    table.longValues.clear();
    bytes_.resize(longValuesAt_);
    for (const Column& column : table.columns)
        if (isLongValue(column.type)) {
            table.longValues.push_back({column.number, {}, RowId()});
            const std::size_t block = bytes_.size();
            bytes_.resize(block + kLongValueBlock);
            store<std::uint16_t>(at(block), column.number);
            store<std::uint32_t>(at(block + kFreeMapAt), 1); // there is one: see setLongValueMaps()
        }
    bytes_.resize(bytes_.size() + 2, std::byte{0xFF});
    store<std::uint32_t>(at(kDefinitionLengthAt), static_cast<std::uint32_t>(bytes_.size()));
}

void DefinitionImage::repair(TableDefinition& table) {
    const std::size_t columns = load<std::uint16_t>(at(format_->columnsAt));
    makeNamesDiffer(columnsAt_ + columns * format_->columnSize, columns);
    makeNamesDiffer(logicalIndexesAt_ + logicalIndexes_ * format_->logicalIndexSize,
                    logicalIndexes_);
    repairIndexes();
    listLongValues(table);
    store<std::uint8_t>(at(format_->tableKindAt),
                        number(table.page()) < kFirstUserDefinition ? kSystemTable : kUserTable);
    if (format_->isJet3())
        return;
    store<std::uint32_t>(at(kMarkAt), kDefinitionMark);
    for (std::size_t i = 0; i < columns; ++i)
        store<std::uint32_t>(at(columnsAt_ + i * format_->columnSize + 1), kDefinitionMark);
    for (std::size_t i = realIndexesAt_; i < logicalIndexesAt_; i += format_->realIndexSize)
        store<std::uint32_t>(at(i), kIndexMark);
    for (std::size_t i = 0; i < logicalIndexes_; ++i)
        store<std::uint32_t>(at(logicalIndexesAt_ + i * format_->logicalIndexSize),
                             kDefinitionMark);
}

DefinitionImage DefinitionImage::withoutIndexes() const {
    const auto place = [&](std::size_t offset) {
        return bytes_.begin() + static_cast<std::ptrdiff_t>(offset);
    };
    Bytes bytes(bytes_.begin(), place(format_->definitionHeader));
    bytes.insert(bytes.end(), place(columnsAt_), place(realIndexesAt_));
    bytes.insert(bytes.end(), place(longValuesAt_), bytes_.end());
    store<std::uint32_t>(bytes.data() + kDefinitionLengthAt,
                         static_cast<std::uint32_t>(bytes.size()));
    store<std::uint32_t>(bytes.data() + format_->logicalIndexesAt, 0);
    store<std::uint32_t>(bytes.data() + format_->realIndexesAt, 0);
    store<std::uint8_t>(bytes.data() + format_->tableKindAt, kUserTable);
    return {*format_, std::move(bytes)};
}

} // namespace jet
