#pragma once

#include "jet/row/RowCursor.h"

#include <vector>

namespace jet {

/// The rows that have their ids on one page, as a scan meets them: one that has moved is read where
/// it lies now. From bytes of the page that are at hand.
class PageRows {
public:
    /// None.
    PageRows(Pager& pager, const TableDefinition& definition);
    /// Those of a page of the table, whose bytes outlive this object.
    /// @throws Error{corrupt} if it isn't one.
    PageRows(Pager& pager, const TableDefinition& definition, PageNo page,
             std::span<const std::byte> bytes);

    /// The next one, or null; valid until the next call. @throws Error{corrupt, io}.
    [[nodiscard]] const RowView* next();
    /// Where those lie that have moved, as far as they have been met; one that couldn't be read is
    /// among them.
    [[nodiscard]] std::span<const PageRef> elsewhere() const noexcept { return elsewhere_; }

private:
    Pager& pager_;
    std::optional<DataPage> page_;
    RowId next_{};
    RowReader reader_;
    std::vector<PageRef> elsewhere_;
};

} // namespace jet
