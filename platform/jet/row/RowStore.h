#pragma once

#include "jet/page/DataPage.h"
#include "jet/row/RowView.h"

namespace jet {

/// Puts the bytes of a table's rows on its pages: finds room, moves rows that outgrow their page,
/// gives emptied pages back. Knows nothing of indexes and counters. Requires an open transaction.
class RowStore {
public:
    RowStore(Pager& pager, PageAllocator& pages, const TableDefinition& definition);

    /// Where there is room, or behind all other rows.
    [[nodiscard]] RowId add(std::span<const std::byte> row, bool atEnd = false);
    /// The row keeps its id even if its bytes move.
    void replace(RowId id, std::span<const std::byte> row);
    void remove(RowId id);

private:
    RowId place(std::span<const std::byte> row, SlotKind kind, bool atEnd = false);
    [[nodiscard]] std::optional<PageNo> pageWithRoom(std::size_t size);
    [[nodiscard]] std::optional<PageNo> lastPageWithRoom(std::size_t size);
    void removeSlot(RowId id);
    [[nodiscard]] bool replaceInPlace(RowId id, std::span<const std::byte> row, SlotKind kind);
    void noteRoom(PageNo page);
    /// Where the bytes of a moved row are; nothing if it hasn't moved.
    [[nodiscard]] std::optional<RowId> movedTo(RowId id);

    Pager& pager_;
    PageAllocator& pages_;
    const TableDefinition& definition_;
    UsageMap owned_;
    UsageMap free_;
};

} // namespace jet
