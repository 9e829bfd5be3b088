#pragma once

#include "jet/TableDefinition.h"

namespace jet {

/// How many pages the logical bytes of a definition take.
[[nodiscard]] std::size_t definitionPageCount(const Format& format, std::size_t size) noexcept;
/// The page of a definition of `bytes` that comes after `before` others; `next` follows it, none is
/// page 0.
[[nodiscard]] Bytes definitionPage(const Format& format, std::span<const std::byte> bytes,
                                   std::size_t before, PageNo next);

/// Makes the block of a logical index one that stands for no relationship, and isn't primary.
void makePlain(std::byte* block, const LogicalIndexLayout& layout) noexcept;

/// The logical bytes of a table's definition, to be written into another file: everything in it
/// stays as it is, known or not, but for the places that name pages, and the counters.
class DefinitionImage {
public:
    /// `table` as parseDefinition() has read it from `pager`.
    /// @throws Error{corrupt} as that does.
    DefinitionImage(Pager& pager, const TableDefinition& table);

    [[nodiscard]] const Bytes& bytes() const noexcept { return bytes_; }

    [[nodiscard]] std::int32_t lastNumber() const noexcept;
    void setLastNumber(std::int32_t number) noexcept;
    [[nodiscard]] std::uint32_t rowCount() const noexcept;
    void setRowCount(std::uint32_t rows) noexcept;
    void setMaps(RowId owned, RowId free) noexcept;
    /// Of the real index at place `index`.
    void setIndex(std::size_t index, RowId map, PageNo root, std::uint32_t entries,
                  std::uint32_t distinctKeys) noexcept;
    /// Of the column at place `at` in TableDefinition::longValues. A map that wasn't there stays
    /// away.
    void setLongValueMaps(std::size_t at, RowId owned, RowId free) noexcept;

    /// The logical indexes that stand for one end of a relationship.
    struct End {
        std::size_t logical;   ///< place in TableDefinition::logicalIndexes
        PageNo otherTable;     ///< the definition of the other end's table
        std::uint32_t partner; ///< number of the logical index there
    };
    [[nodiscard]] std::vector<End> relationshipEnds() const;
    void setOtherTable(std::size_t logical, PageNo table) noexcept;
    /// Makes the end of a relationship that no longer exists a plain index.
    void dissolve(std::size_t logical) noexcept;

    /// Makes a definition that can be parsed one that a check has nothing against: constants,
    /// names and numbers that must differ, the list of long-value columns. `table` is the same
    /// parsed; its list of these becomes that of the image.
    void repair(TableDefinition& table);
    /// The same columns without any index, as a table of the user.
    [[nodiscard]] DefinitionImage withoutIndexes() const;

private:
    DefinitionImage(const Format& format, Bytes bytes);
    void study();
    void makeNamesDiffer(std::size_t from, std::size_t count);
    void repairIndexes();
    void listLongValues(TableDefinition& table);
    [[nodiscard]] std::byte* at(std::size_t offset) noexcept { return bytes_.data() + offset; }
    [[nodiscard]] std::byte* column(std::size_t place) noexcept;
    [[nodiscard]] std::byte* logicalIndex(std::size_t place) noexcept;

    const Format* format_;
    Bytes bytes_;
    std::size_t columns_ = 0;
    std::size_t columnsAt_ = 0;
    std::size_t realIndexesAt_ = 0;
    std::size_t logicalIndexesAt_ = 0;
    std::size_t logicalIndexes_ = 0;
    std::size_t longValuesAt_ = 0;
};

} // namespace jet
