#pragma once

#include "jet/page/Pager.h"

namespace jet {

/// A set of pages: which ones a table, an index or a long-value column owns, which have room, which
/// are free. Stored as a row on a map page: a bitmap (from a first page on), or, when it has grown
/// large, a list of pages that are all bitmap.
///
/// Nothing is remembered between calls but where the row is, so a map follows every change and
/// every rollback of the pager. next() costs what the distance to the page costs, 64 pages a step.
class UsageMap {
public:
    /// What a missing part of the bitmap means, and whether the first page of an inline bitmap may
    /// be moved.
    enum class Kind { owned, global };

    UsageMap(Pager& pager, RowId at, Kind kind = Kind::owned) noexcept
        : pager_(&pager), at_(at), kind_(kind) {}

    [[nodiscard]] RowId at() const noexcept { return at_; }
    [[nodiscard]] bool contains(PageNo page) const;
    /// The lowest page of the set that is not below `from` and inside the file.
    [[nodiscard]] std::optional<PageNo> next(std::uint32_t from) const;
    /// The highest page of the set that is below `end`.
    [[nodiscard]] std::optional<PageNo> previous(std::uint32_t end) const;

private:
    friend class PageAllocator;
    Pager* pager_;
    RowId at_;
    Kind kind_;
};

/// Takes pages for their users and gives them back, keeping the file's map of free pages and the
/// owner's map true together. Every function that changes something requires an open transaction.
class PageAllocator {
public:
    explicit PageAllocator(Pager& pager) noexcept;

    /// A page of zeros, the lowest free one or one more at the end of the file, in nobody's map
    /// yet.
    [[nodiscard]] PageNo take();
    /// The same, and a member of `owner`.
    [[nodiscard]] PageNo take(UsageMap& owner);
    /// Gives back a page of nobody's map.
    void give(PageNo page);
    /// Takes the page out of `owner` and gives it back.
    void give(PageNo page, UsageMap& owner);

    void add(const UsageMap& map, PageNo page);
    void remove(const UsageMap& map, PageNo page);

    /// A new empty map, on a map page with room or on a new one.
    [[nodiscard]] RowId createMap();

private:
    bool growInline(const UsageMap& map, std::uint32_t page);
    void makeReference(const UsageMap& map);
    void setReference(const UsageMap& map, std::size_t part, PageNo mapPage);
    void flipOnMapPage(PageNo mapPage, std::uint32_t page, bool on);

    Pager& pager_;
    UsageMap free_;
    /// Where the last new map went; a hint that saves looking for a map page with room.
    std::optional<PageNo> mapPage_;
};

} // namespace jet
