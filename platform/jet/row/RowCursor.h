#pragma once

#include "jet/page/DataPage.h"
#include "jet/row/RowView.h"

namespace jet {

/// Goes to rows by their id. Keeps the page of the last one, so neighbours cost no search.
class RowReader {
public:
    RowReader(Pager& pager, const TableDefinition& definition);

    /// The row, or null if it has been erased, whatever has become of its page since. Valid until
    /// the next call.
    /// @throws Error{corrupt} if the row doesn't parse.
    [[nodiscard]] const RowView* read(RowId id);

private:
    friend class PageRows;
    friend class RowCursor;
    /// The page, or null if it isn't one of this table's (any more).
    [[nodiscard]] const DataPage* ownPage(PageNo page, std::uint32_t ahead = 1);
    /// The page, which must be one of this table's. As Pager::readAhead().
    [[nodiscard]] const DataPage& page(PageNo page, std::uint32_t ahead = 1);
    [[nodiscard]] bool isFresh() const noexcept { return generation_ == pager_->generation(); }
    [[nodiscard]] const RowView* read(RowId id, const Slot& slot);

    Pager* pager_;
    const TableDefinition* definition_;
    PageRef ref_;
    std::optional<DataPage> page_; ///< of ref_
    PageRef moved_;                ///< the page a moved row's bytes lie on
    std::uint64_t generation_ = 0;
    RowView row_;
};

/// Walks all rows of a table in RowId order, both ways. What is changed behind it is seen; a row
/// added before the place it has reached is not met.
class RowCursor {
public:
    RowCursor(Pager& pager, const TableDefinition& definition);

    /// Each moves and says whether there is a row there.
    bool first();
    bool last();
    bool next();
    bool previous();
    /// To the first row that is not before `id`.
    bool seek(RowId id);

    [[nodiscard]] bool valid() const noexcept { return row_ != nullptr; }
    /// Of the row it stands on; requires valid().
    [[nodiscard]] RowId id() const noexcept { return id_; }
    [[nodiscard]] const RowView& row() const noexcept { return *row_; }

private:
    bool forwardFrom(std::uint32_t page, std::size_t slot);
    bool backwardFrom(std::uint32_t page, std::size_t endSlot);
    bool forwardOn(PageNo page, std::size_t slot, std::uint32_t ahead = 1);
    bool backwardOn(PageNo page, std::size_t endSlot);
    bool settle(const DataPage& page, RowId id);
    [[nodiscard]] std::uint32_t fetchedWith(PageNo page);
    bool begin(std::uint32_t page, std::size_t slot);

    Pager* pager_;
    UsageMap owned_;
    RowReader reader_;
    const RowView* row_ = nullptr;
    RowId id_{};
    // A walk on and on fetches more pages each time; one that only looks for a row fetches few.
    std::uint32_t ahead_ = 1;       ///< pages to fetch at once, the next time
    std::uint32_t fetchedUpTo_ = 0; ///< the page after those of the last time
};

} // namespace jet
