#include "ado/file/RowList.h"

#include "ado/engine/Engine.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace ado {

namespace {

/// Changed rows beyond which a list is asked for anew.
constexpr std::size_t kMostReplaced = 1000;

} // namespace

RowList::RowList(ListSource source, PreparedStatement all)
    : source_(std::move(source)), rows_(fetch(std::move(all))) {}

RowList::Ids RowList::fetch(PreparedStatement all) {
    Ids rows;
    all.all([&] { rows.clear(); }, [&] { rows.push_back(static_cast<RowNumber>(all.integer(0))); });
    return rows;
}

// ---- walking ----------------------------------------------------------------------------------

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

jet::RowId RowList::row(std::size_t /*table*/) const { return jet::unpacked(rows_[at_]); }

/// The end if it stands behind the last.
RowList::Ids::const_iterator RowList::stood() const {
    return rows_.begin() + static_cast<std::ptrdiff_t>(std::min(at_, rows_.size()));
}

bool RowList::find(PreparedStatement statement,
                   const std::function<const jet::RowView*()>& /*current*/) {
    std::unordered_set<std::int64_t> meet;
    statement.all([&] { meet.clear(); }, [&] { meet.insert(statement.integer(0)); });
    const auto found = meet.size() == 1 ? std::find(stood(), rows_.cend(), *meet.begin())
                                        : std::find_if(stood(), rows_.cend(), [&](std::int64_t id) {
                                              return meet.contains(id);
                                          });
    if (found == rows_.cend())
        return false;
    gone_ = false;
    at_ = static_cast<std::size_t>(found - rows_.cbegin());
    return true;
}

bool RowList::isSame(jet::RowReader& reader, std::span<const jet::Value> key) const {
    const jet::RowView* const row = reader.read(this->row(0));
    if (row == nullptr || key.empty())
        return row != nullptr;
    const auto& columns = source_.table.indexes()[*source_.table.primaryKey()].columns;
    return std::ranges::equal(columns, key,
                              [&](const jet::IndexColumn& column, const jet::Value& value) {
                                  return row->value(column.column) == value;
                              });
}

// ---- changes ----------------------------------------------------------------------------------

bool RowList::erased(std::size_t /*table*/, const std::unordered_set<std::int64_t>& ids) {
    const auto isErased = [&](std::int64_t id) { return ids.contains(id); };
    const bool here = !gone_ && at_ < rows_.size() && isErased(rows_[at_]);
    if (here && ids.size() == 1) { // nearly always: the list isn't walked then
        rows_.erase(stood());
    } else {
        at_ -= static_cast<std::size_t>(std::count_if(rows_.cbegin(), stood(), isErased));
        std::erase_if(rows_, isErased);
    }
    gone_ = gone_ || here;
    return here;
}

void RowList::add(jet::RowId row) {
    rows_.push_back(static_cast<RowNumber>(jet::packed(row)));
    gone_ = false;
    at_ = rows_.size() - 1;
}

bool RowList::refresh(const std::vector<jet::RowId>* changed) {
    if (changed == nullptr || !source_.byRow)
        return false;
    if (changed->empty())
        return true;
    if (!source_.order || changed->size() > kMostReplaced || !source_.order->isComparable())
        return false;
    std::unordered_set<std::int64_t> ids;
    for (const jet::RowId row : *changed)
        ids.insert(jet::packed(row));
    static_cast<void>(erased(0, ids));

    PreparedStatement belongs = source_.engine.prepare(source_.belongs);
    jet::RowReader reader = source_.table.reader();
    return std::ranges::all_of(ids, [&](std::int64_t id) {
        belongs.reset();
        belongs.bind(1, id);
        return !belongs.step() || putIn(id, reader);
    });
}

/// At its place in the order; false if rows have gone meanwhile.
bool RowList::putIn(std::int64_t id, jet::RowReader& reader) {
    const ListOrder& order = *source_.order;
    const auto key = order.keyOf(reader, jet::unpacked(id));
    if (!key)
        return false;
    std::size_t low = 0;
    std::size_t high = rows_.size();
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        const auto other = order.keyOf(reader, jet::unpacked(rows_[middle]));
        if (!other)
            return false;
        if (order.compare(source_.database, *other, *key) < 0)
            low = middle + 1;
        else
            high = middle;
    }
    rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(low), static_cast<RowNumber>(id));
    return true;
}

bool RowList::renew(bool same) {
    Ids newer = fetch(source_.engine.prepare(source_.all));
    const bool onRow = stood() != rows_.cend();
    auto place = newer.cend();
    if (onRow && same)
        place = std::ranges::find(std::as_const(newer), *stood());
    const bool stays = place != newer.cend();
    if (!stays && onRow) { // behind the nearest of those before it that is there
        std::unordered_map<RowNumber, std::size_t> places;
        for (std::size_t i = 0; i < newer.size(); ++i)
            places.emplace(newer[i], i);
        place = newer.cbegin();
        for (auto before = stood(); before != rows_.cbegin();) {
            if (const auto found = places.find(*--before); found != places.end()) {
                place += static_cast<std::ptrdiff_t>(found->second) + 1;
                break;
            }
        }
        gone_ = true;
    }
    at_ = static_cast<std::size_t>(place - newer.cbegin());
    rows_ = std::move(newer);
    return stays;
}

} // namespace ado
