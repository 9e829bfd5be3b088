#pragma once

#include "jet/page/NewFile.h"

namespace jet {

/// The entries of one index, gathered in any order and put in the order of an index. Holds them in
/// memory: about the length of the key and 20 bytes for each row.
class IndexEntriesSorter {
public:
    void add(std::span<const std::byte> key, RowId row);
    void sort();

    [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }
    [[nodiscard]] std::span<const std::byte> key(std::size_t at) const noexcept {
        return {keys_.data() + entries_[at].begin, entries_[at].length};
    }
    [[nodiscard]] RowId row(std::size_t at) const noexcept { return unpacked(entries_[at].row); }
    /// Whether the entry has the same key as the one before it.
    [[nodiscard]] bool repeats(std::size_t at) const noexcept;

private:
    struct Entry {
        std::uint64_t begin;
        std::uint32_t length;
        std::uint32_t row; ///< packed() of it
    };
    Bytes keys_;
    std::vector<Entry> entries_;
};

/// What buildIndex() has made.
struct BuiltIndex {
    PageNo root{};
    std::vector<PageNo> pages; ///< ascending
    std::uint32_t distinctKeys = 0;
};

/// Writes the tree of sorted entries, leaves first, each page as full as it gets without a shared
/// prefix: that leaves the leaves room for what the next days bring.
/// @throws Error{tooLong} for a key that two of which don't fit on a page; Error{full, io}.
[[nodiscard]] BuiltIndex buildIndex(NewFile& file, PageNo owner, const IndexEntriesSorter& sorted);

/// Whether buildIndex() can take an entry with a key of this length.
[[nodiscard]] bool fitsIndex(const Format& format, std::size_t keyLength) noexcept;

} // namespace jet
