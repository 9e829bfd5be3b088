#include "jet/TableFollower.h"

#include "jet/Table.h"
#include "jet/database/DatabasePager.h"
#include "jet/value/Checksum.h"

#include <algorithm>

namespace jet {

namespace {

/// Read at once, if they lie side by side; what is read then still fits into a processor's cache.
constexpr std::size_t kRunBytes = std::size_t{128} << 10;

/// Whether it is the page that is at fault, and not its being read just now.
bool isOfThePage(const Error& error) {
    return error.code() != Errc::io && error.code() != Errc::locked &&
           error.code() != Errc::conflict;
}

PageNo at(PageNo first, std::size_t further) {
    return static_cast<PageNo>(number(first) + further);
}

} // namespace

TableFollower::TableFollower(Database& database, const Table& table)
    : pager_(DatabasePager::of(database)), definition_(table.definition()),
      owned_(pager_, definition_.ownedMap), buffer_(kRunBytes) {}

TableFollower::Print TableFollower::printOf(std::span<const std::byte> page) noexcept {
    return std::max(checksum(page), kStale + 1);
}

double TableFollower::progress() const noexcept {
    return complete_ || pager_.pageCount() == 0 ? 1 : double{1} * next_ / pager_.pageCount();
}

std::optional<Error> TableFollower::damage() const {
    return damaged_.empty() ? std::nullopt : std::optional(damaged_.begin()->second);
}

bool TableFollower::follow(std::chrono::microseconds time, const Take& take) {
    const auto end = std::chrono::steady_clock::now() + time;
    const Pager::Section section(pager_);
    definition_.requireThere();
    prints_.resize(std::max<std::size_t>(prints_.size(), pager_.pageCount()));
    do {
        if (!due_.empty())
            lookAt(*due_.begin(), take);
        else if (passing_)
            goOn(take);
        else if (!learn())
            return false;
    } while (std::chrono::steady_clock::now() < end);
    return true;
}

/// What there is to be looked at. False if nothing.
bool TableFollower::learn() {
    const auto changed = pager_.log().since(known_);
    passing_ = !changed;
    if (passing_)
        next_ = 0;
    else
        due_.insert(changed->begin(), changed->end());
    return passing_ || !due_.empty();
}

/// The next pages of a pass that lie side by side.
void TableFollower::goOn(const Take& take) {
    const auto first = owned_.next(next_);
    if (!first) {
        drop(next_, static_cast<std::uint32_t>(prints_.size()), take);
        passing_ = false;
        complete_ = true;
        return;
    }
    drop(next_, number(*first), take);
    const std::size_t size = pager_.format().pageSize;
    std::size_t read = size;
    while (read < buffer_.size() && owned_.contains(at(*first, read / size)))
        read += size;
    const auto bytes = std::span(buffer_).first(read);
    pager_.read(*first, bytes);
    for (std::size_t i = 0; i < read; i += size) {
        compare(at(*first, i / size), bytes.subspan(i, size), take);
        next_ = number(*first) + static_cast<std::uint32_t>(i / size) + 1;
    }
}

/// One page of the file.
void TableFollower::lookAt(PageNo page, const Take& take) {
    if (number(page) < pager_.pageCount() && owned_.contains(page)) {
        const PageRef ref = pager_.read(page);
        compare(page, ref.bytes(), take);
    } else if (number(page) < prints_.size()) {
        drop(page, take);
    }
    due_.erase(page);
}

void TableFollower::compare(PageNo page, std::span<const std::byte> bytes, const Take& take) {
    ++tally_.compared;
    const Print print = printOf(bytes);
    recallGuests(page, print);
    if (print == prints_[number(page)])
        return;
    prints_[number(page)] = kStale;
    decode(page, bytes, take);
    prints_[number(page)] = print;
}

/// Rows that lie on a page which has become another since they were taken.
void TableFollower::recallGuests(PageNo page, Print print) {
    const auto here = guests_.find(page);
    if (here == guests_.end())
        return;
    for (const auto& [home, seen] : here->second)
        if (seen != print) {
            prints_[number(home)] = kStale;
            due_.insert(home);
        }
}

void TableFollower::decode(PageNo page, std::span<const std::byte> bytes, const Take& take) {
    ++tally_.decoded;
    forgetElsewhere(page);
    damaged_.erase(page);
    std::optional<PageRows> rows;
    const auto noteElsewhere = [&] {
        for (const PageRef& there : rows->elsewhere())
            if (elsewhere_[page].insert(there.page()).second)
                guests_[there.page()][page] = printOf(there.bytes());
    };
    try {
        rows.emplace(pager_, definition_, page, bytes);
        take(page, *rows);
        noteElsewhere();
    } catch (const Error& error) {
        if (!isOfThePage(error))
            throw;
        damaged_.emplace(page, error);
        if (rows)
            noteElsewhere();
        PageRows none(pager_, definition_);
        take(page, none);
    }
}

void TableFollower::drop(PageNo page, const Take& take) {
    if (prints_[number(page)] == kUnknown)
        return;
    PageRows none(pager_, definition_);
    take(page, none);
    recallGuests(page, kUnknown);
    forgetElsewhere(page);
    damaged_.erase(page);
    prints_[number(page)] = kUnknown;
}

void TableFollower::drop(std::uint32_t from, std::uint32_t end, const Take& take) {
    for (; from < end; ++from)
        drop(static_cast<PageNo>(from), take);
}

void TableFollower::forgetElsewhere(PageNo page) noexcept {
    const auto found = elsewhere_.find(page);
    if (found == elsewhere_.end())
        return;
    for (const PageNo there : found->second)
        if (const auto guests = guests_.find(there); guests != guests_.end()) {
            guests->second.erase(page);
            if (guests->second.empty())
                guests_.erase(guests);
        }
    elsewhere_.erase(found);
}

} // namespace jet
