#include "jet/row/RowStore.h"

namespace jet {

namespace {

/// Pages with room that are looked at before the table grows.
constexpr int kTries = 16;

/// With less room than this a page isn't worth trying.
std::size_t worthTrying(const Format& format) { return format.isJet3() ? 60 : 100; }

} // namespace

RowStore::RowStore(Pager& pager, PageAllocator& pages, const TableDefinition& definition)
    : pager_(pager), pages_(pages), definition_(definition), owned_(pager, definition.ownedMap),
      free_(pager, definition.freeMap) {}

std::optional<PageNo> RowStore::pageWithRoom(std::size_t size) {
    const Format& format = pager_.format();
    int tries = kTries;
    for (auto page = free_.previous(pager_.pageCount()); page && tries-- > 0;
         page = free_.previous(number(*page))) {
        const PageRef ref = pager_.read(*page);
        const DataPage candidate(format, ref.bytes(), *page);
        if (candidate.owner() != number(definition_.page()) || !owned_.contains(*page))
            corrupt(*page, "o mapa de espaço livre aponta para uma página que não é da tabela");
        if (candidate.hasRoom(size))
            return page;
        // Too full for an ordinary row: the next insert needn't look here again.
        if (candidate.freeBytes() < format.pageSize / 8 || candidate.slotCount() == kMaxSlots)
            pages_.remove(free_, *page);
    }
    return std::nullopt;
}

std::optional<PageNo> RowStore::lastPageWithRoom(std::size_t size) {
    const auto last = owned_.previous(pager_.pageCount());
    if (!last)
        return std::nullopt;
    const PageRef ref = pager_.read(*last);
    return DataPage(pager_.format(), ref.bytes(), *last).hasRoom(size) ? last : std::nullopt;
}

RowId RowStore::place(std::span<const std::byte> row, SlotKind kind, bool atEnd) {
    const Format& format = pager_.format();
    std::optional<PageNo> page = atEnd ? lastPageWithRoom(row.size()) : pageWithRoom(row.size());
    if (!page) {
        page = pages_.take(owned_);
        DataPageEditor::format(format, pager_.change(*page), number(definition_.page()));
        pages_.add(free_, *page);
    }
    DataPageEditor editor(format, pager_.change(*page), *page);
    const std::size_t slot = editor.add(row, kind);
    if (!editor.view().hasRoom(worthTrying(format)))
        pages_.remove(free_, *page);
    return {*page, static_cast<std::uint16_t>(slot)};
}

RowId RowStore::add(std::span<const std::byte> row, bool atEnd) {
    return place(row, SlotKind::row, atEnd);
}

std::optional<RowId> RowStore::movedTo(RowId id) {
    const PageRef page = pager_.read(id.page);
    const Slot slot = DataPage(pager_.format(), page.bytes(), id.page).slot(id.slot);
    if (slot.kind != SlotKind::pointer)
        return std::nullopt;
    const RowId target = ByteView(slot.bytes, id.page).load(kMovedTo);
    const PageRef targetPage = pager_.read(target.page);
    const DataPage there(pager_.format(), targetPage.bytes(), target.page);
    if (there.owner() != number(definition_.page()) ||
        there.slot(target.slot).kind != SlotKind::relocated)
        corrupt(target.page, "uma linha mudada de lugar não está onde deveria");
    return target;
}

bool RowStore::replaceInPlace(RowId id, std::span<const std::byte> row, SlotKind kind) {
    {
        const PageRef ref = pager_.read(id.page);
        const DataPage page(pager_.format(), ref.bytes(), id.page);
        if (row.size() > page.slot(id.slot).bytes.size() + page.freeBytes())
            return false;
    }
    DataPageEditor editor(pager_.format(), pager_.change(id.page), id.page);
    editor.replace(id.slot, row, kind);
    noteRoom(id.page);
    return true;
}

void RowStore::replace(RowId id, std::span<const std::byte> row) {
    const std::optional<RowId> moved = movedTo(id);
    if (moved && replaceInPlace(*moved, row, SlotKind::relocated))
        return;
    if (replaceInPlace(id, row, SlotKind::row)) {
        if (moved)
            removeSlot(*moved);
        return;
    }
    if (moved)
        removeSlot(*moved);
    Bytes pointer(kMovedTo.size);
    store(pointer.data(), kMovedTo, place(row, SlotKind::relocated));
    if (!replaceInPlace(id, pointer, SlotKind::pointer))
        throw Error(Errc::full, "O registro não pode crescer: a sua página está cheia.");
}

void RowStore::remove(RowId id) {
    const std::optional<RowId> moved = movedTo(id);
    if (moved)
        removeSlot(*moved);
    removeSlot(id);
}

void RowStore::removeSlot(RowId id) {
    DataPageEditor editor(pager_.format(), pager_.change(id.page), id.page);
    editor.remove(id.slot);
    if (editor.view().empty()) {
        pages_.remove(free_, id.page);
        pages_.give(id.page, owned_);
    } else {
        noteRoom(id.page);
    }
}

void RowStore::noteRoom(PageNo page) {
    const PageRef ref = pager_.read(page);
    const DataPage holder(pager_.format(), ref.bytes(), page);
    const bool worth = holder.hasRoom(worthTrying(pager_.format()));
    if (worth != free_.contains(page))
        worth ? pages_.add(free_, page) : pages_.remove(free_, page);
}

} // namespace jet
