#include "jet/row/RowCursor.h"

#include <algorithm>

namespace jet {

RowReader::RowReader(Pager& pager, const TableDefinition& definition)
    : pager_(&pager), definition_(&definition) {}

const DataPage* RowReader::ownPage(PageNo page, std::uint32_t ahead) {
    if (page_ && ref_.page() == page && isFresh())
        return &*page_;
    page_.reset();
    definition_->requireThere();
    if (number(page) >= pager_->pageCount())
        return nullptr; // of a transaction that was rolled back
    ref_ = pager_->readAhead(page, ahead);
    generation_ = pager_->generation();
    if (ref_.kind() == PageKind::data) {
        page_.emplace(pager_->format(), ref_.bytes(), page);
        if (page_->owner() == number(definition_->page()))
            return &*page_;
        page_.reset();
    }
    if (UsageMap(*pager_, definition_->ownedMap).contains(page))
        corrupt(page, "a página não é da tabela");
    return nullptr;
}

const DataPage& RowReader::page(PageNo page, std::uint32_t ahead) {
    if (const DataPage* own = ownPage(page, ahead))
        return *own;
    corrupt(page, "a página não é da tabela");
}

const RowView* RowReader::read(RowId id) {
    return pager_->onSnapshot([&]() -> const RowView* {
        const DataPage* own = ownPage(id.page);
        return own && id.slot < own->slotCount() ? read(id, own->slot(id.slot)) : nullptr;
    });
}

const RowView* RowReader::read(RowId id, const Slot& slot) {
    if (slot.kind == SlotKind::deleted)
        return nullptr;
    if (slot.kind != SlotKind::pointer) {
        row_.place(*pager_, *definition_, slot.bytes, id.page);
        return &row_;
    }
    const RowId target = ByteView(slot.bytes, id.page).load(kMovedTo);
    moved_ = pager_->read(target.page);
    const DataPage there(pager_->format(), moved_.bytes(), target.page);
    const Slot moved = there.slot(target.slot);
    if (there.owner() != number(definition_->page()) ||
        (moved.kind != SlotKind::relocated && moved.kind != SlotKind::row))
        corrupt(target.page, "uma linha mudada de lugar não está onde deveria");
    row_.place(*pager_, *definition_, moved.bytes, target.page);
    return &row_;
}

RowCursor::RowCursor(Pager& pager, const TableDefinition& definition)
    : pager_(&pager), owned_(pager, definition.ownedMap), reader_(pager, definition) {}

bool RowCursor::settle(const DataPage& page, RowId id) {
    const Slot slot = page.slot(id.slot);
    if (slot.kind == SlotKind::relocated)
        return false;
    row_ = reader_.read(id, slot);
    id_ = id;
    return row_ != nullptr;
}

bool RowCursor::forwardOn(PageNo page, std::size_t slot, std::uint32_t ahead) {
    const DataPage& rows = reader_.page(page, ahead);
    for (; slot < rows.slotCount(); ++slot)
        if (settle(rows, {page, static_cast<std::uint16_t>(slot)}))
            return true;
    return false;
}

bool RowCursor::backwardOn(PageNo page, std::size_t endSlot) {
    const DataPage& rows = reader_.page(page);
    for (std::size_t slot = std::min(endSlot, rows.slotCount()); slot-- > 0;)
        if (settle(rows, {page, static_cast<std::uint16_t>(slot)}))
            return true;
    return false;
}

bool RowCursor::forwardFrom(std::uint32_t page, std::size_t slot) {
    row_ = nullptr;
    reader_.definition_->requireThere();
    for (auto at = owned_.next(page); at; at = owned_.next(number(*at) + 1))
        if (forwardOn(*at, number(*at) == page ? slot : 0, fetchedWith(*at)))
            return true;
    return false;
}

/// How many pages from this one on are to be fetched with it.
std::uint32_t RowCursor::fetchedWith(PageNo page) {
    if (number(page) < fetchedUpTo_)
        return 1;
    const auto isOwned = [&](std::uint32_t next) { return owned_.next(next) == PageNo{next}; };
    fetchedUpTo_ = number(page) + 1;
    while (fetchedUpTo_ < number(page) + ahead_ && isOwned(fetchedUpTo_))
        ++fetchedUpTo_;
    ahead_ = std::min(2 * ahead_, Pager::kMostAhead);
    return fetchedUpTo_ - number(page);
}

bool RowCursor::backwardFrom(std::uint32_t page, std::size_t endSlot) {
    row_ = nullptr;
    reader_.definition_->requireThere();
    for (auto at = owned_.previous(page + 1); at; at = owned_.previous(number(*at)))
        if (backwardOn(*at, number(*at) == page ? endSlot : kMaxSlots))
            return true;
    return false;
}

bool RowCursor::begin(std::uint32_t page, std::size_t slot) {
    ahead_ = 1;
    fetchedUpTo_ = 0;
    return pager_->onSnapshot([&] { return forwardFrom(page, slot); });
}

bool RowCursor::first() { return begin(0, 0); }
bool RowCursor::last() {
    return pager_->onSnapshot([&] { return backwardFrom(pager_->pageCount(), 0); });
}
bool RowCursor::seek(RowId id) { return begin(number(id.page), id.slot); }

// While nothing has changed the page in hand is still the table's; else the map has to say so
// first.

bool RowCursor::next() {
    if (!row_)
        return false;
    return pager_->onSnapshot([this, from = id_] {
        if (!reader_.isFresh())
            return forwardFrom(number(from.page), from.slot + std::size_t{1});
        return forwardOn(from.page, from.slot + std::size_t{1}) ||
               forwardFrom(number(from.page) + 1, 0);
    });
}

bool RowCursor::previous() {
    if (!row_)
        return false;
    return pager_->onSnapshot([this, from = id_] {
        if (!reader_.isFresh())
            return backwardFrom(number(from.page), from.slot);
        return backwardOn(from.page, from.slot) || backwardFrom(number(from.page) - 1, kMaxSlots);
    });
}

} // namespace jet
