#pragma once

#include "jet/check/CheckFindings.h"
#include "jet/page/DataPage.h"
#include "jet/page/Pager.h"

#include <optional>
#include <set>

namespace jet {

/// "página 12, linha 3": how findings name a slot of another page.
[[nodiscard]] std::string placeOf(RowId id);

/// For a check: who has each page of the file, and the maps that say so.
///
/// Every page belongs to one owner, or is free, or is lost. Claiming a page that somebody has
/// already is told as an error and refused, so what follows from claims never looks at a page
/// twice.
class PageLedger {
public:
    using Owner = std::uint32_t;

    PageLedger(Pager& pager, Findings& findings);

    /// `name` is what findings call it.
    [[nodiscard]] Owner newOwner(std::string name);
    [[nodiscard]] const std::string& name(Owner owner) const { return names_[owner]; }
    bool claim(PageNo page, Owner owner);
    [[nodiscard]] bool has(Owner owner, PageNo page) const noexcept {
        return number(page) < owners_.size() && owners_[number(page)] == owner;
    }

    /// The map of free pages.
    void readFreePages();
    [[nodiscard]] bool isFree(PageNo page) const noexcept {
        return number(page) < free_.size() && free_[number(page)];
    }
    [[nodiscard]] std::uint32_t freePages() const noexcept;

    /// Claims the pages of the map at `map` for `owner`; those that it got, ascending. Nothing if
    /// the map can't be read.
    std::optional<std::vector<PageNo>> claimMap(RowId map, Owner owner);
    /// A map that must have none but pages of `owner`.
    void readSubset(RowId map, Owner owner);

    /// After all claims: pages both owned and free, pages that nobody has.
    void compareWithFree();

private:
    using Pages = std::vector<std::uint32_t>;

    std::optional<Pages> readMap(RowId map, const std::string& where, bool isFreeMap);
    bool readBitmap(std::span<const std::byte> bits, std::uint64_t first, bool isFreeMap,
                    PageNo page, const std::string& where, Pages& pages) const;

    Pager& pager_;
    Findings& findings_;
    std::vector<std::string> names_;
    std::vector<Owner> owners_; ///< of each page; 0 is nobody
    std::vector<bool> free_;
    std::set<RowId> maps_; ///< those read so far
    Owner header_;
    Owner mapPages_; ///< pages with rows that are maps, whoever's
};

/// Looks at a page of slots of `owner` (as the page's own field names it), and fills `slots` with
/// what can be read; a slot that lies outside is told and counts as deleted. False if it isn't such
/// a page.
bool checkDataPage(const Format& format, const PageRef& page, std::uint32_t owner,
                   const std::string& where, Findings& findings, std::vector<Slot>& slots);

} // namespace jet
