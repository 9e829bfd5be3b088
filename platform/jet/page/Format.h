#pragma once

#include "jet/page/Field.h"

/// The layout of the file, every structure by its fields: `at(Jet 3, Jet 4)` is the place of a
/// field in the two versions, in bytes from the beginning of its structure. What is in them is told
/// in docs/format. That the fields fill their structures is asserted in Format.cpp.
///
/// Beside their classes are told: usage maps (MapLayout.h), long values (LongValues.h), stored
/// numerics (StoredNumeric.h), properties (Properties.cpp), and the files beside the database.
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

/// How every page begins.
struct PageHead {
    static constexpr Field<PageKind> kind{0};
    static constexpr Field<std::uint8_t> one{1};  ///< 1
    static constexpr Field<std::uint32_t> all{0}; ///< of a page that was given back: 0
};

inline void startPage(std::byte* page, PageKind kind) noexcept {
    store(page, PageHead::kind, kind);
    store(page, PageHead::one, 1);
}
[[nodiscard]] inline bool isPage(const std::byte* page, PageKind kind) noexcept {
    return load(page, PageHead::kind) == kind && load(page, PageHead::one) == 1;
}

// The pages and rows that are at the same place in every file.
inline constexpr PageNo kMapsOfFile{1};
inline constexpr RowId kFreePagesMap{kMapsOfFile, 0};
inline constexpr RowId kSecondMap{kMapsOfFile, 1}; ///< empty in all files
inline constexpr PageNo kObjectsPage{2};           ///< definition of MSysObjects, the catalog
inline constexpr PageNo kRightsPage{3};            ///< of MSysACEs
inline constexpr PageNo kQueriesPage{4};           ///< of MSysQueries
inline constexpr PageNo kRelationshipsPage{5};     ///< of MSysRelationships
inline constexpr std::uint32_t kFirstDefinition = number(kObjectsPage);
inline constexpr std::uint32_t kFirstUserDefinition = number(kRelationshipsPage) + 1;

/// What the layout of a structure begins with.
struct Structure {
    Version version;
    static constexpr std::size_t none = kNowhere;
    [[nodiscard]] constexpr std::size_t at(std::size_t jet3, std::size_t jet4) const noexcept {
        return version == Version::jet3 ? jet3 : jet4;
    }
};

/// Page 0.
struct HeaderLayout : Structure {
    Field<std::uint16_t> zero{0x02};
    Stretch name{0x04, 16};
    Field<std::uint8_t> versionByte{0x14};
    Stretch zeros{0x15, 3};
    // The masked part:
    Stretch masked{0x18, at(126, 128)};
    Field<RowId> freePages{0x18};
    Field<RowId> secondMap{0x1C};
    Field<PageNo> objects{0x20};
    Field<PageNo> rights{0x24};
    Field<PageNo> queries{0x28};
    Field<PageNo> relationships{0x2C};
    Stretch unknown{0x30, 8};
    Field<std::uint16_t> columnMark{0x38}; ///< Jet 3 repeats it in every column
    Field<std::uint16_t> language{at(0x3A, 0x6E)};
    Field<std::uint16_t> codePage{0x3C};
    Field<std::uint32_t> key{0x3E}; ///< of an encoded file; 0: it isn't
    Stretch password{0x42, at(20, 40)};
    Field<std::uint16_t> build{at(0x56, 0x6A)};
    MaybeField<std::uint8_t> variant{at(none, 0x70)};
    MaybeField<std::uint8_t> orderVersion{at(none, 0x71)};
    MaybeField<double> created{at(none, 0x72)};
    // In the clear again:
    MaybeField<std::uint32_t> clearMark{at(none, 0x98)};
    MaybeField<std::uint32_t> clearName{at(none, 0x9C)};
    Stretch commitPairs{at(0x600, 0xE00), 512};

    /// Where the maps and the system tables are: alike in all files.
    [[nodiscard]] constexpr Stretch places() const noexcept {
        return {freePages.at, relationships.end() - freePages.at};
    }
};

/// A page of slots: rows, parts of long values, or usage maps.
struct DataPageLayout : Structure {
    Field<std::uint16_t> freeBytes{2};
    Field<std::uint32_t> owner{4};
    MaybeField<std::uint32_t> stamp{at(none, 8)};
    Field<std::uint16_t> slotCount{at(8, 12)};
    std::size_t slotTable{at(10, 14)};
    static constexpr std::size_t slotSize = Field<std::uint16_t>::size;

    [[nodiscard]] constexpr Field<std::uint16_t> slot(std::size_t number) const noexcept {
        return {slotTable + slotSize * number};
    }
};

/// What the pages of a definition have ahead of their parts of it; the first one's is in the place
/// of the definition's own first bytes.
struct DefinitionPageLayout {
    static constexpr Field<std::uint16_t> freeBytes{2}; ///< less `size`; Jet 3: kDefinitionPageMark
    static constexpr Field<PageNo> next{4};             ///< 0: none
    static constexpr std::size_t size = 8;
};
inline constexpr std::uint16_t kDefinitionPageMark = 0x4356; ///< "VC"

/// The header of a table's definition.
struct DefinitionLayout : Structure {
    Field<std::uint32_t> length{0x08};
    MaybeField<std::uint32_t> mark{at(none, 0x0C)}; ///< kDefinitionMark
    Field<std::uint32_t> rows{at(0x0C, 0x10)};
    Field<std::int32_t> lastNumber{at(0x10, 0x14)};
    MaybeField<std::uint32_t> one{at(none, 0x18)}; ///< 1
    Stretch unknown{at(none, 0x1C), 12};
    Field<std::uint8_t> kind{at(0x14, 0x28)}; ///< kUserTable or kSystemTable
    Field<std::uint16_t> maxColumns{at(0x15, 0x29)};
    Field<std::uint16_t> maxVariables{at(0x17, 0x2B)};
    Field<std::uint16_t> columns{at(0x19, 0x2D)};
    Field<std::uint32_t> logicalIndexes{at(0x1B, 0x2F)};
    Field<std::uint32_t> realIndexes{at(0x1F, 0x33)};
    Field<RowId> ownedMap{at(0x23, 0x37)};
    Field<RowId> freeMap{at(0x27, 0x3B)};
    std::size_t size{at(0x2B, 0x3F)};
};
inline constexpr std::uint32_t kDefinitionMark = 0x659; ///< begins every block but a real index's
inline constexpr std::uint32_t kIndexMark = 0x783;
inline constexpr std::uint8_t kUserTable = 0x4E;
inline constexpr std::uint8_t kSystemTable = 0x53;
inline constexpr std::uint16_t kNoColumn = 0xFFFF;

// The blocks of a definition, in the order in which they follow the header.

/// Of a real index.
struct StatisticsLayout : Structure {
    Field<std::uint32_t> entries{0};
    Field<std::uint32_t> distinctKeys{4};
    MaybeField<std::uint32_t> zero{at(none, 8)};
    std::size_t size{at(8, 12)};
};

struct ColumnLayout : Structure {
    Field<std::uint8_t> type{0};
    MaybeField<std::uint32_t> mark{at(none, 1)}; ///< kDefinitionMark
    Field<std::uint16_t> number{at(1, 5)};
    Field<std::uint16_t> variable{at(3, 7)};
    Field<std::uint16_t> ordinal{at(5, 9)};
    MaybeField<std::uint16_t> headerMark{at(7, none)};
    Field<std::uint16_t> language{at(9, 11)};
    MaybeField<std::uint16_t> codePage{at(11, none)};
    MaybeField<std::uint8_t> variant{at(none, 13)};
    MaybeField<std::uint8_t> orderVersion{at(none, 14)};
    Field<std::uint8_t> flags{at(13, 15)};
    MaybeField<std::uint8_t> textFlags{at(none, 16)};
    MaybeField<std::uint32_t> zero{at(none, 17)};
    Field<std::uint16_t> fixed{at(14, 21)};
    Field<std::uint16_t> length{at(16, 23)};
    std::size_t size{at(18, 25)};
    // A numeric has them where others have their order.
    Field<std::uint8_t> precision{11};
    Field<std::uint8_t> scale{12};
};
struct ColumnFlags {
    static constexpr std::uint8_t fixed = 0x01;
    static constexpr std::uint8_t always = 0x02;
    static constexpr std::uint8_t autonumber = 0x04;
    static constexpr std::uint8_t system = 0x10;
    static constexpr std::uint8_t account = 0x20;
    static constexpr std::uint8_t autoGuid = 0x40;
};
inline constexpr std::uint8_t kMayCompress = 0x01; ///< of a text

struct KeyColumnLayout {
    static constexpr Field<std::uint16_t> column{0};   ///< kNoColumn: unused
    static constexpr Field<std::uint8_t> direction{2}; ///< kAscending, or 0
    static constexpr std::size_t size = 3;
};
inline constexpr std::uint8_t kAscending = 0x01;

struct RealIndexLayout : Structure {
    MaybeField<std::uint32_t> mark{at(none, 0)}; ///< kIndexMark
    Stretch keys{at(0, 4), 30};                  ///< kMaxIndexColumns of KeyColumnLayout
    Field<RowId> map{at(30, 34)};
    Field<PageNo> root{at(34, 38)};
    MaybeField<std::uint32_t> unknown{at(none, 42)};
    Field<std::uint8_t> flags{at(38, 46)};
    Stretch zero{at(none, 47), 5};
    std::size_t size{at(39, 52)};

    /// Where the i-th of the keys is.
    [[nodiscard]] constexpr std::size_t key(std::size_t i) const noexcept {
        return keys.at + i * KeyColumnLayout::size;
    }
};
struct IndexFlags {
    static constexpr std::uint8_t unique = 0x01;
    static constexpr std::uint8_t ignoreNulls = 0x02;
    static constexpr std::uint8_t required = 0x08;
    static constexpr std::uint8_t jet4 = 0x80; ///< always set there, never in Jet 3
};

struct LogicalIndexLayout : Structure {
    MaybeField<std::uint32_t> mark{at(none, 0)}; ///< kDefinitionMark
    Field<std::uint32_t> number{at(0, 4)};
    Field<std::uint32_t> realIndex{at(4, 8)};
    Field<std::uint8_t> side{at(8, 12)};
    Field<std::uint32_t> partner{at(9, 13)}; ///< kNoPartner: none
    Field<PageNo> otherTable{at(13, 17)};
    Field<std::uint8_t> cascadesUpdates{at(17, 21)};
    Field<std::uint8_t> cascadesDeletes{at(18, 22)};
    Field<std::uint8_t> kind{at(19, 23)};
    MaybeField<std::uint32_t> zero{at(none, 24)};
    std::size_t size{at(20, 28)};
};
inline constexpr std::uint32_t kNoPartner = 0xFFFFFFFF;
struct CascadeFlags {
    static constexpr std::uint8_t cascades = 0x01;
    static constexpr std::uint8_t nulls = 0x02; ///< of deletes
    static constexpr std::uint8_t none = 0x04;  ///< no relationship
};

/// Of a memo or OLE column; a column number of kNoColumn ends the list.
struct LongValueMapsLayout {
    static constexpr Field<std::uint16_t> column{0};
    static constexpr Field<RowId> owned{2};
    static constexpr Field<RowId> free{6}; ///< 0: none
    static constexpr std::size_t size = 10;
};

struct RowLayout : Structure {
    std::size_t countSize{at(1, 2)}; ///< of its counts and offsets
    /// Of columns, at its beginning.
    [[nodiscard]] constexpr ShortField count() const noexcept { return {0, countSize}; }
    /// Of the null mask, at its end.
    [[nodiscard]] static constexpr std::size_t maskSize(std::size_t columns) noexcept {
        return (columns + 7) / 8;
    }
    std::size_t largest{at(2012, 4060)}; ///< the engine's own limit, below what a page could hold
};

/// See IndexPage.
struct IndexPageLayout : Structure {
    Field<std::uint16_t> freeBytes{2};
    Field<PageNo> owner{4}; ///< definition page of the table
    MaybeField<std::uint32_t> zero{at(none, 8)};
    Field<PageNo> previous{at(8, 12)};
    Field<PageNo> next{at(12, 16)};
    Field<PageNo> tail{at(16, 20)};
    ShortField prefix{at(20, 24), at(1, 2)};
    Field<std::uint8_t> level{at(21, 26)};
    Stretch mask{at(22, 27), at(226, 453)};
    std::size_t entries{at(248, 480)};
};

/// A version's layout, and its measures in bytes.
struct Format : Structure {
    std::size_t pageSize{at(2048, 4096)};
    std::uint64_t largestFile{at(std::size_t{1} << 30, std::size_t{1} << 31)};
    HeaderLayout header{{version}};
    DataPageLayout dataPage{{version}};
    DefinitionLayout definition{{version}};
    StatisticsLayout statistics{{version}};
    ColumnLayout column{{version}};
    ShortField nameLength{0, at(1, 2)}; ///< ahead of the name of a column or index
    RealIndexLayout realIndex{{version}};
    LogicalIndexLayout logicalIndex{{version}};
    RowLayout row{{version}};
    IndexPageLayout indexPage{{version}};
    std::size_t mapBitmap{at(128, 64)};        ///< bitmap bytes of a new usage map
    std::size_t inlineLongValue{at(32, 64)};   ///< the longest that stays in the row
    std::size_t longValuePart{at(2036, 4076)}; ///< the longest that one part holds

    [[nodiscard]] constexpr std::size_t mostSlots() const noexcept {
        return (pageSize - dataPage.slotTable) / DataPageLayout::slotSize;
    }
    /// Where in a definition the statistics of that real index are. They are followed by the
    /// columns.
    [[nodiscard]] constexpr std::size_t statisticsAt(std::size_t index) const noexcept {
        return definition.size + index * statistics.size;
    }
    [[nodiscard]] constexpr std::size_t indexCapacity() const noexcept {
        return pageSize - indexPage.entries;
    }
    [[nodiscard]] constexpr bool isJet3() const noexcept { return version == Version::jet3; }
};

/// Rows are numbered by one byte everywhere outside their own page.
inline constexpr std::size_t kMaxSlots = 255;
inline constexpr std::size_t kMaxColumns = 255;
inline constexpr std::size_t kMaxIndexes = 32;
inline constexpr std::size_t kMaxIndexColumns = 10;
inline constexpr std::size_t kMaxNameLength = 64;

inline constexpr Format kJet3Format{{Version::jet3}};
inline constexpr Format kJet4Format{{Version::jet4}};

[[nodiscard]] constexpr const Format& formatOf(Version version) noexcept {
    return version == Version::jet3 ? kJet3Format : kJet4Format;
}

/// Bytes of a value of that type in the fixed area of a row; 0 for those that vary or take none.
[[nodiscard]] std::uint16_t fixedLength(ColumnType type) noexcept;

} // namespace jet
