#pragma once

#include "jet/Types.h"

#include <utility>
#include <vector>

namespace jet {

/// Entries with a `page`, at most one for each, found at once by that: by far the most frequent
/// question in the engine. Their places change only when some are added or removed.
template <class Entry>
class ByPage {
public:
    [[nodiscard]] Entry* find(PageNo page) noexcept {
        const std::uint32_t place = number(page) < places_.size() ? places_[number(page)] : 0;
        return place != 0 ? &entries_[place - 1] : nullptr;
    }
    /// Requires that there is none of that page.
    Entry& add(Entry entry) {
        makeRoom(entry.page);
        entries_.push_back(std::move(entry));
        places_[number(entries_.back().page)] = static_cast<std::uint32_t>(entries_.size());
        return entries_.back();
    }
    /// Puts an entry of another page, of which there is none, in the place of this one.
    void replace(Entry& old, Entry entry) {
        makeRoom(entry.page);
        places_[number(entry.page)] = std::exchange(places_[number(old.page)], 0);
        old = std::move(entry);
    }
    /// If there is one.
    void remove(PageNo page) noexcept {
        Entry* const entry = find(page);
        if (entry == nullptr)
            return;
        places_[number(entries_.back().page)] = places_[number(page)];
        places_[number(page)] = 0;
        std::swap(*entry, entries_.back());
        entries_.pop_back();
    }
    /// Costs what the entries cost, however many pages the file has.
    void clear() noexcept {
        for (const Entry& entry : entries_)
            places_[number(entry.page)] = 0;
        entries_.clear();
    }

    [[nodiscard]] bool empty() const noexcept { return entries_.empty(); }
    [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }
    [[nodiscard]] Entry& operator[](std::size_t place) noexcept { return entries_[place]; }
    [[nodiscard]] auto begin() noexcept { return entries_.begin(); }
    [[nodiscard]] auto end() noexcept { return entries_.end(); }

private:
    void makeRoom(PageNo page) {
        if (number(page) >= places_.size())
            places_.resize(number(page) + std::size_t{1});
    }

    std::vector<Entry> entries_;
    /// By page: its place among them and one more, 0 if there is none.
    std::vector<std::uint32_t> places_;
};

} // namespace jet
