#include "jet/row/PageRows.h"

namespace jet {

PageRows::PageRows(Pager& pager, const TableDefinition& definition)
    : pager_(pager), reader_(pager, definition) {}

PageRows::PageRows(Pager& pager, const TableDefinition& definition, PageNo page,
                   std::span<const std::byte> bytes)
    : PageRows(pager, definition) {
    page_.emplace(pager.format(), bytes, page);
    next_.page = page;
    if (page_->owner() != number(definition.page()))
        corrupt(page, "a página não é da tabela");
}

const RowView* PageRows::next() {
    while (page_ && next_.slot < page_->slotCount()) {
        const RowId id = next_;
        ++next_.slot;
        const Slot slot = page_->slot(id.slot);
        if (slot.kind == SlotKind::relocated || slot.kind == SlotKind::deleted)
            continue;
        if (slot.kind == SlotKind::pointer)
            elsewhere_.push_back(pager_.read(ByteView(slot.bytes, id.page).load(kMovedTo).page));
        return reader_.read(id, slot);
    }
    return nullptr;
}

} // namespace jet
