#pragma once

#include "jet/check/CheckLongValues.h"
#include "jet/row/RowParts.h"

#include <map>
#include <memory>

namespace jet {

/// For a check: one table, in three steps that follow each other: its pages (on construction), its
/// rows, its indexes.
class TableCheck {
public:
    /// Claims all pages that the definition's maps name. `user`: not one of the system's own
    /// tables, whose counters the format's own engine doesn't keep.
    TableCheck(const CheckContext& context, std::string name, TableDefinition definition,
               bool user);

    /// Every data page and row, long values included, and the counters.
    void checkRows();
    /// Every index against the rows that checkRows() has found. Returns the number of entries.
    std::uint64_t checkIndexes();

    [[nodiscard]] const TableDefinition& definition() const noexcept { return definition_; }
    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    /// The rows that checkRows() has found, ascending.
    [[nodiscard]] std::uint64_t rowCount() const noexcept { return rows_.size(); }
    [[nodiscard]] RowId row(std::size_t at) const noexcept { return unpacked(rows_[at]); }

private:
    using PackedRow = std::uint32_t; ///< packed() of a RowId: there may be many millions
    /// What an index must hold for a row: the checksum of its key, or one of these.
    enum : std::uint64_t { kNoEntry, kAnyKey, kUnknown, kLeastSum };

    void checkPage(PageNo page);
    void checkRow(std::span<const std::byte> row, RowId id);
    void checkValue(const Column& column, std::span<const std::byte> stored, RowId id);
    void checkText(const Column& column, std::span<const std::byte> text, RowId id);
    std::optional<std::span<const std::byte>> target(std::span<const std::byte> pointer,
                                                     PageRef& page);
    void compareMoved();
    void checkCounters();

    [[nodiscard]] bool claimsRoot(std::size_t index) const;
    [[nodiscard]] std::uint64_t expectedEntry(std::size_t index, RowId id);
    void computeEntries(std::size_t first, std::size_t count,
                        std::vector<std::vector<std::uint64_t>>& expected);
    std::uint64_t checkIndex(std::size_t index, const std::vector<std::uint64_t>& expected);
    [[nodiscard]] std::string indexName(std::size_t index) const;

    void error(PageNo page, const std::string& what, const std::string& detail = {}) {
        context_.findings.error(page, where_, what, detail);
    }

    const CheckContext& context_;
    std::string name_;
    std::string where_; ///< as findings call the table
    TableDefinition definition_;
    bool user_;
    PageLedger::Owner owner_;
    std::vector<PageNo> pages_;
    std::vector<PageLedger::Owner> indexOwners_;
    std::map<std::uint16_t, LongValueCheck> longValues_; ///< by column number
    RowParts parts_;

    std::vector<PackedRow> rows_;    ///< ascending
    std::vector<PackedRow> damaged_; ///< those of them that can't be read, ascending
    std::vector<PackedRow> moved_;   ///< relocated rows met
    std::vector<PackedRow> targets_; ///< where pointer rows lead
    std::int64_t largestNumber_ = 0;
    std::string text_; ///< reused from value to value
};

} // namespace jet
