#pragma once

#include "ado/engine/PackedPlan.h"

#include <sqlite3.h>

#include <string>
#include <unordered_map>

namespace ado {

/// One walk of a statement over a table: through all rows, to one row, or along a stretch of an
/// index.
class TableCursor : public sqlite3_vtab_cursor {
public:
    explicit TableCursor(const jet::Table& table)
        : sqlite3_vtab_cursor{}, table_(table), columns_(table.columns()), reader_(table.reader()) {
    }

    /// Begins the walk that the plan says; operands as rangeOf() takes them, of a scan or for one
    /// row the id that it begins at or has.
    void search(const PackedPlan& plan, std::span<sqlite3_value*> operands);
    void next();
    [[nodiscard]] bool atEnd() const { return row_ == nullptr; }

    /// Of the row stood on.
    [[nodiscard]] jet::RowId id() const {
        return way_ == AccessPlan::Way::scan ? scan_->id() : id_;
    }
    void give(sqlite3_context* context, std::size_t column);

private:
    [[nodiscard]] bool exists(jet::RowId id);
    void beginScan(std::span<sqlite3_value*> operands);
    void settleScan(bool found);
    void beginWalk(const PackedPlan& plan, std::span<sqlite3_value*> operands);
    void settleWalk(bool found);
    [[nodiscard]] bool insideRange() const;

    [[nodiscard]] std::optional<std::size_t> numbered(const PackedPlan& plan,
                                                      std::span<sqlite3_value*> operands) const;
    void findNumbered(std::size_t column, const PackedPlan& plan,
                      std::span<sqlite3_value*> operands);

    const jet::Table& table_;
    std::span<const jet::Column> columns_;
    AccessPlan::Way way_ = AccessPlan::Way::scan;
    bool backwards_ = false;
    std::optional<jet::RowCursor> scan_;
    std::optional<jet::IndexTree::Cursor> walk_;
    std::size_t index_ = 0; ///< that walk_ is over
    jet::KeyRange range_;
    /// Where findNumbered() has found rows: a join asks for the same ones again and again.
    std::unordered_map<std::int64_t, jet::RowId> found_;
    jet::RowReader reader_;
    const jet::RowView* row_ = nullptr;
    jet::RowId id_; ///< of row_, except in a scan, which knows it
    std::string buffer_;
};

} // namespace ado
