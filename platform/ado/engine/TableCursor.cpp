#include "ado/engine/TableCursor.h"

#include "ado/engine/SqlValue.h"

#include <algorithm>
#include <cstring>

namespace ado {

void TableCursor::search(const PackedPlan& plan, std::span<sqlite3_value*> operands) {
    way_ = plan.way;
    backwards_ = plan.backwards;
    row_ = nullptr;
    for (sqlite3_value* operand : operands) {
        if (sqlite3_value_type(operand) == SQLITE_NULL)
            return; // nothing equals null, or lies beyond it
    }
    switch (way_) {
    case AccessPlan::Way::scan:
        beginScan(operands);
        break;
    case AccessPlan::Way::row:
        id_ = jet::unpacked(sqlite3_value_int64(operands[0]));
        if (jet::packed(id_) == sqlite3_value_int64(operands[0]) && exists(id_))
            row_ = reader_.read(id_);
        break;
    case AccessPlan::Way::index:
        beginWalk(plan, operands);
        break;
    }
}

void TableCursor::next() {
    switch (way_) {
    case AccessPlan::Way::scan:
        settleScan(scan_->next());
        break;
    case AccessPlan::Way::row:
        row_ = nullptr;
        break;
    case AccessPlan::Way::index:
        settleWalk(backwards_ ? walk_->previous() : walk_->next());
        break;
    }
}

void TableCursor::give(sqlite3_context* context, std::size_t column) {
    giveField(context, table_.columns()[column], *row_, column, buffer_);
}

/// A row's id from a statement may be any number: only the scan knows which pages hold rows.
bool TableCursor::exists(jet::RowId id) {
    scan_.emplace(table_.scan());
    return scan_->seek(id) && scan_->id() == id;
}

void TableCursor::beginScan(std::span<sqlite3_value*> operands) {
    scan_.emplace(table_.scan());
    if (operands.empty() || sqlite3_value_type(operands[0]) != SQLITE_INTEGER)
        return settleScan(scan_->first());
    const std::int64_t low = sqlite3_value_int64(operands[0]);
    const jet::RowId id = jet::unpacked(low);
    settleScan(jet::packed(id) == low ? scan_->seek(id) : scan_->first());
}

void TableCursor::settleScan(bool found) {
    row_ = nullptr;
    if (found) {
        row_ = &scan_->row();
        id_ = scan_->id();
    }
}

void TableCursor::beginWalk(const PackedPlan& plan, std::span<sqlite3_value*> operands) {
    range_ = rangeOf(table_, plan, operands);
    // A join comes here for every row of the other table, always for the same index.
    if (!walk_ || index_ != plan.index)
        walk_.emplace(table_.walk(plan.index));
    index_ = plan.index;
    if (!backwards_)
        settleWalk(range_.lower.empty() ? walk_->first() : walk_->seek(range_.lower));
    else
        settleWalk(range_.upper ? walk_->seekBefore(*range_.upper) : walk_->last());
}

void TableCursor::settleWalk(bool found) {
    for (; found; found = backwards_ ? walk_->previous() : walk_->next()) {
        if (!insideRange())
            break;
        id_ = walk_->row();
        row_ = reader_.read(id_);
        if (row_ != nullptr) // else erased while this walk stood on it
            return;
    }
    row_ = nullptr;
}

bool TableCursor::insideRange() const {
    const auto key = walk_->key();
    const auto before = [](std::span<const std::byte> a, std::span<const std::byte> b) {
        const int order =
            b.empty() ? 0 : std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
        return order < 0 || (order == 0 && a.size() < b.size());
    };
    if (backwards_)
        return !before(key, range_.lower);
    return !range_.upper || before(key, *range_.upper);
}

} // namespace ado
