#include "ado/Rows.h"

#include <algorithm>
#include <unordered_map>

namespace ado {

// ---- TableWalk --------------------------------------------------------------------------------

TableWalk::TableWalk(const jet::Table& table) : table_(table) {
    if (const auto key = table.primaryKey())
        walk_.emplace(table.walk(*key));
    else
        scan_.emplace(table.scan());
}

bool TableWalk::first() {
    const bool found = walk_ ? walk_->first() : scan_->first();
    if (found)
        row_ = walk_ ? walk_->row() : scan_->id();
    return found;
}

bool TableWalk::last() {
    const bool found = walk_ ? walk_->last() : scan_->last();
    if (found)
        row_ = walk_ ? walk_->row() : scan_->id();
    return found;
}

bool TableWalk::next() {
    const bool found = walk_ ? walk_->next() : scan_->next();
    if (found)
        row_ = walk_ ? walk_->row() : scan_->id();
    return found;
}

bool TableWalk::previous() {
    const bool found = walk_ ? walk_->previous() : scan_->previous();
    if (found)
        row_ = walk_ ? walk_->row() : scan_->id();
    return found;
}

bool TableWalk::empty() {
    return walk_ ? !table_.walk(*table_.primaryKey()).first() : !table_.scan().first();
}

bool TableWalk::erased(std::size_t /*table*/, const std::unordered_set<std::int64_t>& ids) {
    return ids.contains(jet::packed(row_));
}

jet::RowId TableWalk::row(std::size_t /*table*/) const { return row_; }

void TableWalk::goTo(jet::RowId row) {
    if (walk_) {
        const auto key = table_.keyOf(*table_.primaryKey(), row);
        static_cast<void>(walk_->seek(key.value_or(jet::Bytes{}), row));
    } else {
        static_cast<void>(scan_->seek(row));
    }
    row_ = row;
}

bool TableWalk::isSame() const {
    if (!walk_)
        return table_.reader().read(row_) != nullptr;
    if (!walk_->valid())
        return false;
    const auto key = table_.keyOf(*table_.primaryKey(), row_);
    return key && std::ranges::equal(*key, walk_->key());
}

// ---- RowList ----------------------------------------------------------------------------------

bool RowList::first() {
    gone_ = false;
    at_ = 0;
    return !rows_.empty();
}

bool RowList::last() {
    gone_ = false;
    at_ = rows_.empty() ? 0 : rows_.size() - 1;
    return !rows_.empty();
}

bool RowList::next() {
    if (!gone_ && at_ < rows_.size())
        ++at_;
    gone_ = false;
    return at_ < rows_.size();
}

bool RowList::previous() {
    gone_ = false;
    if (at_ == 0)
        return false;
    --at_;
    return true;
}

bool RowList::erased(std::size_t /*table*/, const std::unordered_set<std::int64_t>& ids) {
    const auto isErased = [&](std::int64_t id) { return ids.contains(id); };
    const bool here = !gone_ && at_ < rows_.size() && isErased(rows_[at_]);
    const auto stood = rows_.begin() + static_cast<std::ptrdiff_t>(std::min(at_, rows_.size()));
    if (here && ids.size() == 1) { // nearly always: the list isn't walked then
        rows_.erase(stood);
    } else {
        at_ -= static_cast<std::size_t>(std::count_if(rows_.begin(), stood, isErased));
        std::erase_if(rows_, isErased);
    }
    gone_ = gone_ || here;
    return here;
}

jet::RowId RowList::row(std::size_t /*table*/) const { return jet::unpacked(rows_[at_]); }

void RowList::goTo(std::size_t place) {
    gone_ = false;
    at_ = place;
}

void RowList::insert(std::size_t place, jet::RowId row) {
    rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(place), jet::packed(row));
    if (place <= at_)
        ++at_;
}

bool RowList::renew(RowList&& newer, bool same) {
    const auto stood = rows_.begin() + static_cast<std::ptrdiff_t>(std::min(at_, rows_.size()));
    auto place = newer.rows_.end();
    if (stood != rows_.end() && !gone_ && same)
        place = std::ranges::find(newer.rows_, *stood);
    const bool stays = place != newer.rows_.end();
    if (!stays && stood != rows_.end()) { // behind the nearest of those before it that is there
        std::unordered_map<std::int64_t, std::size_t> places;
        for (std::size_t i = 0; i < newer.rows_.size(); ++i)
            places.emplace(newer.rows_[i], i);
        place = newer.rows_.begin();
        for (auto before = stood; before != rows_.begin();) {
            if (const auto found = places.find(*--before); found != places.end()) {
                place += static_cast<std::ptrdiff_t>(found->second) + 1;
                break;
            }
        }
        gone_ = true;
    }
    at_ = static_cast<std::size_t>(place - newer.rows_.begin());
    rows_ = std::move(newer.rows_);
    return stays;
}

// ---- JoinRows ---------------------------------------------------------------------------------

bool JoinRows::erased(std::size_t table, const std::unordered_set<std::int64_t>& ids) {
    bool here = false;
    auto& all = cells();
    for (std::size_t i = table; i < all.size(); i += width()) {
        if (ids.contains(all[i])) {
            all[i] = kErased;
            here = here || i / width() == place();
        }
    }
    return here;
}

std::vector<std::int64_t> JoinRows::ids() const {
    std::vector<std::int64_t> result;
    for (std::size_t i = 0; i < width(); ++i)
        result.push_back(cell(i));
    return result;
}

} // namespace ado
