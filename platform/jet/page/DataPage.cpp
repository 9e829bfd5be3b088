#include "jet/page/DataPage.h"

#include <algorithm>
#include <cassert>

namespace jet {

DataPage::DataPage(const Format& format, std::span<const std::byte> bytes, PageNo page)
    : format_(&format), bytes_(bytes), page_(page),
      slots_(load(bytes.data(), format.dataPage.slotCount)) {
    if (load(bytes.data(), PageHead::kind) != PageKind::data)
        corrupt(page, "era esperada uma página de dados");
    if (slots_ > format.mostSlots())
        corrupt(page, "a tabela de linhas não cabe na página");
}

void DataPage::refuseSlot(std::size_t number) const {
    corrupt(page_, "a linha " + std::to_string(number) +
                       (number >= slots_ ? " não existe" : " está fora do seu lugar"));
}

std::size_t DataPage::freeBytes() const {
    const std::size_t heap = slots_ == 0 ? format_->pageSize : slot(slots_ - 1).offset;
    return heap - format_->dataPage.slot(slots_).at;
}

std::uint16_t DataPage::recordedFreeBytes() const noexcept {
    return load(bytes_.data(), format_->dataPage.freeBytes);
}

bool DataPage::hasRoom(std::size_t size) const {
    return slots_ < kMaxSlots && size + DataPageLayout::slotSize <= freeBytes();
}

std::uint32_t DataPage::owner() const noexcept {
    return load(bytes_.data(), format_->dataPage.owner);
}

bool DataPage::empty() const {
    for (std::size_t i = 0; i < slots_; ++i)
        if (slot(i).kind != SlotKind::deleted)
            return false;
    return true;
}

DataPageEditor::DataPageEditor(const Format& format, std::span<std::byte> bytes, PageNo page)
    : format_(format), bytes_(bytes), page_(page) {
    // Every slot once, so that what moves rows about needn't look where it writes.
    const DataPage checked = view();
    for (std::size_t i = 0; i < checked.slotCount(); ++i)
        (void)checked.slot(i);
}

void DataPageEditor::format(const Format& format, std::span<std::byte> bytes, std::uint32_t owner) {
    std::fill(bytes.begin(), bytes.end(), std::byte{});
    const DataPageLayout& layout = format.dataPage;
    startPage(bytes.data(), PageKind::data);
    store(bytes.data(), layout.freeBytes,
          static_cast<std::uint16_t>(format.pageSize - layout.slotTable));
    store(bytes.data(), layout.owner, owner);
}

void DataPageEditor::setSlot(std::size_t slot, std::size_t offset, SlotKind kind) {
    store(bytes_.data(), format_.dataPage.slot(slot),
          static_cast<std::uint16_t>(offset | static_cast<std::uint16_t>(kind)));
}

std::size_t DataPageEditor::add(std::span<const std::byte> row, SlotKind kind) {
    const DataPage page = view();
    assert(page.hasRoom(row.size()));
    const std::size_t slot = page.slotCount();
    const std::size_t free = page.freeBytes();
    const DataPageLayout& layout = format_.dataPage;
    const std::size_t offset = layout.slot(slot).at + free - row.size();
    std::copy(row.begin(), row.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
    setSlot(slot, offset, kind);
    store(bytes_.data(), layout.slotCount, static_cast<std::uint16_t>(slot + 1));
    store(bytes_.data(), layout.freeBytes,
          static_cast<std::uint16_t>(free - row.size() - DataPageLayout::slotSize));
    return slot;
}

void DataPageEditor::resize(std::size_t slot, std::size_t size) {
    const DataPage page = view();
    const Slot old = page.slot(slot);
    if (size == old.bytes.size())
        return;
    const std::size_t free = page.freeBytes();
    assert(size <= old.bytes.size() + free);
    const std::size_t heap = page.slot(page.slotCount() - 1).offset;
    const auto delta = // by how much this and all later rows move towards the page's end
        static_cast<std::ptrdiff_t>(old.bytes.size()) - static_cast<std::ptrdiff_t>(size);

    // The rows behind go along in one piece: between them there is never a gap.
    std::byte* base = bytes_.data();
    const std::size_t kept = std::min(size, old.bytes.size());
    std::memmove(base + static_cast<std::ptrdiff_t>(heap) + delta, base + heap,
                 old.offset - heap + kept);
    if (size > kept)
        std::memset(base + static_cast<std::ptrdiff_t>(old.offset) + delta +
                        static_cast<std::ptrdiff_t>(kept),
                    0, size - kept);
    for (std::size_t i = slot; i < page.slotCount(); ++i) {
        const std::uint16_t word = load(base, format_.dataPage.slot(i));
        const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(word & Slot::kOffsetMask) + delta;
        store(base, format_.dataPage.slot(i),
              static_cast<std::uint16_t>((word & ~Slot::kOffsetMask) |
                                         static_cast<std::uint16_t>(offset)));
    }
    store(base, format_.dataPage.freeBytes,
          static_cast<std::uint16_t>(static_cast<std::ptrdiff_t>(free) + delta));
}

void DataPageEditor::replace(std::size_t slot, std::span<const std::byte> row, SlotKind kind) {
    resize(slot, row.size());
    const Slot now = view().slot(slot);
    std::copy(row.begin(), row.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(now.offset));
    setSlot(slot, now.offset, kind);
}

void DataPageEditor::remove(std::size_t slot) { replace(slot, {}, SlotKind::deleted); }

std::span<std::byte> DataPageEditor::slotBytes(std::size_t slot) {
    const Slot found = view().slot(slot);
    return bytes_.subspan(found.offset, found.bytes.size());
}

} // namespace jet
