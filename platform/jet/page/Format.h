#pragma once

#include "jet/Types.h"

#include <cstddef>
#include <cstdint>

namespace jet {

/// The first byte of a page. Only usage maps tell whether a page is in use: a freed page keeps its
/// kind and content.
enum class PageKind : std::uint8_t {
    header = 0x00,
    data = 0x01,
    definition = 0x02,
    indexNode = 0x03,
    indexLeaf = 0x04,
    usageMap = 0x05,
};

/// The measures in which the two layouts differ. Offsets and sizes in bytes.
struct Format {
    Version version;
    std::size_t pageSize;
    std::uint64_t largestFile;

    // Data pages: owner and slot count in the header, then the row table of two-byte entries.
    std::size_t slotCountAt;
    std::size_t rowTableAt;
    std::size_t largestRow;      ///< the engine's own limit, somewhat below what a page could hold
    std::size_t columnCountSize; ///< of the count that a row starts with
    std::size_t mapBitmap;       ///< bitmap bytes of a new usage map

    // Table definition: header fields.
    std::size_t definitionHeader;
    std::size_t rowCountAt;
    std::size_t autonumberAt;
    std::size_t tableKindAt;
    std::size_t maxColumnsAt;
    std::size_t variableColumnsAt;
    std::size_t columnsAt;
    std::size_t logicalIndexesAt;
    std::size_t realIndexesAt;
    std::size_t ownedMapAt;
    std::size_t freeMapAt;

    // Table definition: sizes of the blocks that follow, and fields inside them.
    std::size_t statisticsSize;
    std::size_t columnSize;
    std::size_t columnNumberAt;
    std::size_t columnVariableAt;
    std::size_t columnOrdinalAt;
    std::size_t columnSortAt;
    std::size_t columnFlagsAt;
    std::size_t columnFixedAt;
    std::size_t columnLengthAt;
    std::size_t realIndexSize;
    std::size_t realIndexColumnsAt;
    std::size_t realIndexMapAt;
    std::size_t realIndexRootAt;
    std::size_t realIndexFlagsAt;
    std::size_t logicalIndexSize;
    std::size_t logicalIndexAt; ///< of the logical number; the other fields follow in one order
    std::size_t nameLengthSize;

    // Index pages.
    std::size_t indexPreviousAt;
    std::size_t indexNextAt;
    std::size_t indexTailAt;
    std::size_t indexPrefixAt;
    std::size_t indexPrefixSize;
    std::size_t indexLevelAt;
    std::size_t indexMaskAt;
    std::size_t indexDataAt;

    // Long values: the longest that stays in the row, and the longest that one part holds.
    std::size_t inlineLongValue;
    std::size_t longValuePart;

    // Page 0.
    std::size_t commitPairsAt;

    [[nodiscard]] std::size_t indexCapacity() const noexcept { return pageSize - indexDataAt; }
    [[nodiscard]] std::size_t mapPageBits() const noexcept { return (pageSize - 4) * 8; }
    [[nodiscard]] bool isJet3() const noexcept { return version == Version::jet3; }
};

/// Rows are numbered by one byte everywhere outside their own page.
inline constexpr std::size_t kMaxSlots = 255;
inline constexpr std::size_t kMaxColumns = 255;
inline constexpr std::size_t kMaxIndexes = 32;
inline constexpr std::size_t kMaxIndexColumns = 10;
inline constexpr std::size_t kMaxNameLength = 64;

[[nodiscard]] const Format& formatOf(Version version) noexcept;

} // namespace jet
