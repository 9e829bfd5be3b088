#include "ado/engine/TableCursor.h"

#include "ado/engine/SqlValue.h"

#include <algorithm>
#include <cstring>

namespace ado {

namespace {

/// Rows remembered of one cursor, at most: of all clients of a shop, and some megabytes.
constexpr std::size_t kMostFound = 50'000;

} // namespace

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
        if (const auto column = numbered(plan, operands))
            findNumbered(*column, plan, operands);
        else
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
    giveField(context, columns_[column], *row_, column, buffer_);
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

void TableCursor::settleScan(bool found) { row_ = found ? &scan_->row() : nullptr; }

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

/// The column, if the plan looks for the one row that has a whole number there.
std::optional<std::size_t> TableCursor::numbered(const PackedPlan& plan,
                                                 std::span<sqlite3_value*> operands) const {
    const jet::Index& index = table_.indexes()[plan.index];
    if (!index.unique || index.columns.size() != 1 || plan.equal != 1 ||
        sqlite3_value_type(operands[0]) != SQLITE_INTEGER)
        return std::nullopt;
    const std::size_t column = index.columns[0].column;
    const jet::ColumnType type = columns_[column].type;
    const bool whole = type == jet::ColumnType::byte || type == jet::ColumnType::integer ||
                       type == jet::ColumnType::longInteger;
    return whole ? std::optional(column) : std::nullopt;
}

void TableCursor::findNumbered(std::size_t column, const PackedPlan& plan,
                               std::span<sqlite3_value*> operands) {
    const std::int64_t wanted = sqlite3_value_int64(operands[0]);
    if (const auto known = found_.find(wanted); known != found_.end()) {
        id_ = known->second;
        row_ = reader_.read(id_);
    }
    // Where it was found another row may be by now.
    if (row_ == nullptr || row_->isNull(column) || row_->integer(column) != wanted) {
        beginWalk(plan, operands);
        if (row_ != nullptr && found_.size() < kMostFound)
            found_.insert_or_assign(wanted, id_);
    }
    way_ = AccessPlan::Way::row; // there is no other
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
