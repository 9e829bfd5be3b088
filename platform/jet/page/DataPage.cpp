#include "jet/page/DataPage.h"

#include <algorithm>
#include <cassert>

namespace jet {

namespace {

constexpr std::uint16_t kOffsetMask = 0x1FFF;
constexpr std::uint16_t kKindMask = 0xC000;
constexpr std::size_t kFreeBytesAt = 2;
constexpr std::size_t kOwnerAt = 4;
constexpr std::size_t kSlotSize = 2;

} // namespace

DataPage::DataPage(const Format& format, std::span<const std::byte> bytes, PageNo page)
    : format_(&format), bytes_(bytes), page_(page),
      slots_(load<std::uint16_t>(bytes.data() + format.slotCountAt)) {
    if (static_cast<PageKind>(bytes[0]) != PageKind::data)
        corrupt(page, "era esperada uma página de dados");
    if (slots_ > (format.pageSize - format.rowTableAt) / kSlotSize)
        corrupt(page, "a tabela de linhas não cabe na página");
}

Slot DataPage::slot(std::size_t number) const {
    if (number >= slots_)
        corrupt(page_, "a linha " + std::to_string(number) + " não existe");
    const std::byte* entry = bytes_.data() + format_->rowTableAt + kSlotSize * number;
    const auto word = load<std::uint16_t>(entry);
    const std::size_t begin = word & kOffsetMask;
    const std::size_t end =
        number == 0 ? format_->pageSize : load<std::uint16_t>(entry - kSlotSize) & kOffsetMask;
    if (begin > end || end > format_->pageSize || begin < format_->rowTableAt + kSlotSize * slots_)
        corrupt(page_, "a linha " + std::to_string(number) + " está fora do seu lugar");
    return {static_cast<SlotKind>(word & kKindMask), begin, bytes_.subspan(begin, end - begin)};
}

std::size_t DataPage::freeBytes() const {
    const std::size_t heap = slots_ == 0 ? format_->pageSize : slot(slots_ - 1).offset;
    return heap - (format_->rowTableAt + kSlotSize * slots_);
}

std::uint16_t DataPage::recordedFreeBytes() const noexcept {
    return load<std::uint16_t>(bytes_.data() + kFreeBytesAt);
}

bool DataPage::hasRoom(std::size_t size) const {
    return slots_ < kMaxSlots && size + kSlotSize <= freeBytes();
}

std::uint32_t DataPage::owner() const noexcept {
    return load<std::uint32_t>(bytes_.data() + kOwnerAt);
}

bool DataPage::empty() const {
    for (std::size_t i = 0; i < slots_; ++i)
        if (slot(i).kind != SlotKind::deleted)
            return false;
    return true;
}

DataPageEditor::DataPageEditor(const Format& format, std::span<std::byte> bytes, PageNo page)
    : format_(format), bytes_(bytes), page_(page) {
    const DataPage checked = view();
    for (std::size_t i = 0; i < checked.slotCount(); ++i)
        (void)checked.slot(i);
}

void DataPageEditor::format(const Format& format, std::span<std::byte> bytes, std::uint32_t owner) {
    std::fill(bytes.begin(), bytes.end(), std::byte{});
    bytes[0] = std::byte{static_cast<std::uint8_t>(PageKind::data)};
    bytes[1] = std::byte{1};
    store<std::uint16_t>(bytes.data() + kFreeBytesAt,
                         static_cast<std::uint16_t>(format.pageSize - format.rowTableAt));
    store<std::uint32_t>(bytes.data() + kOwnerAt, owner);
}

void DataPageEditor::setSlot(std::size_t slot, std::size_t offset, SlotKind kind) {
    store<std::uint16_t>(bytes_.data() + format_.rowTableAt + kSlotSize * slot,
                         static_cast<std::uint16_t>(offset | static_cast<std::uint16_t>(kind)));
}

std::size_t DataPageEditor::add(std::span<const std::byte> row, SlotKind kind) {
    const DataPage page = view();
    assert(page.hasRoom(row.size()));
    const std::size_t slot = page.slotCount();
    const std::size_t free = page.freeBytes();
    const std::size_t offset = format_.rowTableAt + kSlotSize * slot + free - row.size();
    std::copy(row.begin(), row.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
    setSlot(slot, offset, kind);
    store<std::uint16_t>(bytes_.data() + format_.slotCountAt, static_cast<std::uint16_t>(slot + 1));
    store<std::uint16_t>(bytes_.data() + kFreeBytesAt,
                         static_cast<std::uint16_t>(free - row.size() - kSlotSize));
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

    std::byte* base = bytes_.data();
    const std::size_t kept = std::min(size, old.bytes.size());
    std::memmove(base + static_cast<std::ptrdiff_t>(heap) + delta, base + heap,
                 old.offset - heap + kept);
    if (size > kept)
        std::memset(base + static_cast<std::ptrdiff_t>(old.offset) + delta +
                        static_cast<std::ptrdiff_t>(kept),
                    0, size - kept);
    for (std::size_t i = slot; i < page.slotCount(); ++i) {
        std::byte* entry = base + format_.rowTableAt + kSlotSize * i;
        const auto word = load<std::uint16_t>(entry);
        const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(word & kOffsetMask) + delta;
        store<std::uint16_t>(entry, static_cast<std::uint16_t>((word & ~kOffsetMask) |
                                                               static_cast<std::uint16_t>(offset)));
    }
    store<std::uint16_t>(base + kFreeBytesAt,
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
