#pragma once

#include "jet/copy/SourceFile.h"
#include "jet/row/LongValueWalk.h"
#include "jet/row/RowParts.h"

#include <functional>
#include <map>
#include <set>

namespace jet {

/// A row as it is to be written anew. Valid during the visit.
struct SourceRow {
    /// A long value that lies outside its row.
    struct Content {
        std::size_t column; ///< place in TableDefinition::columns
        std::size_t at;     ///< where in `bytes` its definition begins
        Bytes bytes;
    };
    RowId id; ///< in the source
    std::span<const std::byte> bytes;
    const RowParts& parts; ///< of `bytes`
    std::vector<Content> contents;

    /// The content of a memo of this row.
    [[nodiscard]] Bytes memo(const Column& column, std::span<const std::byte> stored,
                             const TableDefinition& table) const;
};

/// The rows of a table of the source, in the order of their places. What can't be read is told; a
/// value that can't be read leaves its row with an empty field.
class SourceTable {
public:
    SourceTable(SourceFile& file, std::string name, TableDefinition definition);
    SourceTable(const SourceTable&) = delete;
    SourceTable& operator=(const SourceTable&) = delete;

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    void rename(std::string name) { name_ = std::move(name); }
    [[nodiscard]] const TableDefinition& definition() const noexcept { return definition_; }
    /// The pages that hold rows.
    [[nodiscard]] const std::vector<PageNo>& pages() const noexcept { return pages_; }

    using Visit = std::function<void(const SourceRow&)>;
    /// Each call visits the same rows. Only one that `tells` says what is missing.
    /// `step` is called after each page with the number of those done.
    void eachRow(bool tells, const Visit& visit,
                 const std::function<void(std::uint64_t)>& step = {});

private:
    void findPages();
    void visitPage(PageNo page);
    void visitPointer(RowId id, std::span<const std::byte> pointer);
    void visitOrphans();
    void visitRow(RowId id, std::span<const std::byte> bytes);
    [[nodiscard]] const char* flawOf(const Column& column, std::span<const std::byte> stored,
                                     RowId id);
    [[nodiscard]] Bytes withoutColumns(const std::vector<bool>& empty) const;
    void tell(Loss::What what, PageNo page, std::optional<std::uint16_t> slot, std::string reason);

    SourceFile& file_;
    std::string name_;
    TableDefinition definition_;
    std::vector<PageNo> pages_;
    std::vector<PageNo> lost_; ///< pages that should hold rows and can't be read as such

    // Of the visit under way.
    RowParts parts_;
    bool tells_ = false;
    const Visit* visit_ = nullptr;
    std::map<std::uint16_t, LongValueWalk> longValues_; ///< by column number
    std::map<std::size_t, Bytes> contents_;             ///< by place of the column, of one row
    std::vector<RowId> moved_;                          ///< relocated rows met
    std::set<RowId> targets_;                           ///< where pointer rows led
    std::string text_;
};

} // namespace jet
