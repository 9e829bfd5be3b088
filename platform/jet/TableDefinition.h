#pragma once

#include "jet/page/Pager.h"
#include "jet/text/Collation.h"
#include "jet/text/TextCodec.h"

#include <optional>
#include <string>

namespace jet {

/// One column of a table, as the file describes it.
struct Column {
    std::string name;
    ColumnType type{};
    std::uint16_t number{};        ///< its bit in a row's null mask; never used again after removal
    std::uint16_t variableIndex{}; ///< its place in a row's offset table, if not fixed
    std::uint16_t fixedOffset{};   ///< from the first byte after a row's column count, if fixed
    std::uint16_t length{};        ///< bytes; of text the most that its plain form may have
    bool fixed{};
    bool autonumber{};
    bool autoGuid{};
    bool compressed{};
    std::uint8_t precision{};
    std::uint8_t scale{};
    SortOrder order;              ///< of text and memo
    const Collation* collation{}; ///< null when this engine doesn't know the order
    TextCodec codec{Version::jet4};

    /// Text: most characters it may hold.
    [[nodiscard]] std::size_t maxCharacters() const noexcept;
};

/// One column of an index, in key order.
struct IndexColumn {
    std::size_t column; ///< place in TableDefinition::columns
    bool ascending;
    friend bool operator==(const IndexColumn&, const IndexColumn&) = default;
};

/// One tree of keys.
struct RealIndex {
    std::vector<IndexColumn> columns;
    RowId map;
    PageNo root{};
    bool unique{};
    bool ignoreNulls{};
    bool required{};
};

/// A name for a tree of keys, and what it is there for.
struct LogicalIndex {
    enum class Kind : std::uint8_t { plain = 0, primary = 1, relationship = 2 };
    std::string name;
    std::uint32_t number{};
    std::uint32_t realIndex{};
    Kind kind{};
    /// Of a relationship: this table's side, the index of the other one, and what it cascades.
    enum class Side : std::uint8_t { none = 0, parent = 1, child = 2 };
    Side side{};
    std::uint32_t partner{};
    PageNo partnerTable{};
    bool cascadesUpdates{};
    bool cascadesDeletes{};
    bool nullsOnDelete{};
};

/// The maps of a memo or OLE column.
struct LongValueMaps {
    std::uint16_t columnNumber{};
    RowId owned;
    std::optional<RowId> free;
};

/// A table's definition, parsed and checked. Counters that every change moves (rows, autonumber,
/// distinct keys) aren't kept here: they are read and written where they stand, on the first page.
struct TableDefinition {
    std::vector<PageNo> pages; ///< of the definition itself; the first is the table's identity
    bool system{};
    std::uint16_t maxColumns{};   ///< columns ever numbered
    std::uint16_t maxVariables{}; ///< variable columns ever numbered
    RowId ownedMap;
    RowId freeMap;
    std::vector<Column> columns; ///< in the order they were defined in (by number)
    std::vector<RealIndex> realIndexes;
    std::vector<LogicalIndex> logicalIndexes;
    std::vector<LongValueMaps> longValues;
    std::size_t fixedSize{}; ///< bytes of a new row's fixed area
    bool isJet3{};
    /// Why nothing of the table can be read any more: another program has taken it away, or given
    /// it another form, while it was open. Nothing as long as the file has it.
    std::optional<Error> lost;

    [[nodiscard]] PageNo page() const noexcept { return pages.front(); }
    /// @throws what it was lost by.
    void requireThere() const {
        if (lost)
            throw *lost;
    }
    [[nodiscard]] const LongValueMaps* longValuesOf(const Column& column) const noexcept;
};

/// Whether two indexes are the two ends of one relationship: `index` of `table`, and one of the
/// table that it names as its partner's.
[[nodiscard]] bool arePartners(const TableDefinition& table, const LogicalIndex& index,
                               const LogicalIndex& other) noexcept;

/// Whether rows and indexes are to be read in the same way.
[[nodiscard]] bool sameStructure(const TableDefinition& a, const TableDefinition& b);

/// What the texts of a file mean where its definitions don't say it, or say it wrongly.
struct TextSettings {
    std::uint16_t codePage = 1252; ///< of names, and of a Jet 3 column that names none
    bool overridden = false;       ///< then of every column too
};

/// Reads the definition that starts on `page`.
/// @throws Error{corrupt}; Error{unsupported} for a code page this engine doesn't know.
[[nodiscard]] TableDefinition parseDefinition(Pager& pager, PageNo page, const TextSettings& texts);

} // namespace jet
