#include "ado/Session.h"

#include <algorithm>
#include <iterator>

namespace ado {

namespace {

/// News kept at most. A recordset that has missed more than half of them reads everything again,
/// which then costs about the same.
constexpr std::size_t kMostNews = 8192;

} // namespace

Session::Session(const std::filesystem::path& path)
    : database_(path), engine_(database_), generation_(database_.generation()) {}

void Session::lookForStrangers() {
    if (database_.generation() == generation_)
        return;
    generation_ = database_.generation();
    ++epoch_;
    dropped_ += news_.size();
    news_.clear();
}

void Session::note(const Change& change) {
    if (news_.size() == kMostNews) {
        dropped_ += kMostNews / 2;
        news_.erase(news_.begin(), news_.begin() + kMostNews / 2);
    }
    news_.push_back(change);
    if (database_.inTransaction())
        undo_.push_back(change);
    generation_ = database_.generation();
}

void Session::note(const std::vector<jet::Cascaded>& others) {
    for (const jet::Cascaded& other : others)
        note({other.table, other.row, other.erased ? Change::Kind::erased : Change::Kind::changed});
}

jet::RowId Session::insert(jet::Table& table, std::span<const jet::Assignment> given) {
    lookForStrangers();
    const jet::RowId row = table.insert(given);
    note({&table, row, Change::Kind::added});
    return row;
}

void Session::update(jet::Table& table, jet::RowId row, std::span<const jet::Assignment> changes) {
    lookForStrangers();
    const auto others = table.update(row, changes);
    note({&table, row, Change::Kind::changed});
    note(others);
}

void Session::erase(jet::Table& table, jet::RowId row) {
    lookForStrangers();
    const auto others = table.erase(row);
    note({&table, row, Change::Kind::erased});
    note(others);
}

void Session::begin() {
    lookForStrangers();
    database_.begin();
    undo_.clear();
    generation_ = database_.generation();
}

void Session::commit() {
    lookForStrangers();
    database_.commit();
    generation_ = database_.generation();
}

void Session::rollback() {
    lookForStrangers();
    database_.rollback();
    for (auto change = undo_.rbegin(); change != undo_.rend(); ++change) {
        Change opposite = *change;
        if (change->kind == Change::Kind::added)
            opposite.kind = Change::Kind::erased;
        else if (change->kind == Change::Kind::erased)
            opposite.kind = Change::Kind::added;
        note(opposite);
    }
    generation_ = database_.generation();
}

void Session::flushIfDue() {
    lookForStrangers();
    database_.flushIfDue();
    generation_ = database_.generation();
}

NewsPlace Session::now() {
    lookForStrangers();
    return {epoch_, dropped_ + news_.size()};
}

std::optional<std::vector<Change>> Session::since(NewsPlace& place) {
    const NewsPlace from = std::exchange(place, now());
    if (from.epoch != place.epoch || from.number < dropped_)
        return std::nullopt;
    return std::vector(news_.begin() + static_cast<std::ptrdiff_t>(from.number - dropped_),
                       news_.end());
}

} // namespace ado
