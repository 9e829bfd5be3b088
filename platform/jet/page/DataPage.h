#pragma once

#include "jet/page/ByteView.h"
#include "jet/page/Format.h"

#include <optional>

namespace jet {

/// What a slot of a data page holds.
enum class SlotKind : std::uint16_t {
    row = 0x0000,
    pointer = 0x4000,   ///< to where the row has moved
    relocated = 0x8000, ///< a row that a pointer leads to; a scan passes over it
    deleted = 0xC000,
};

/// Of a slot of kind pointer: where the row has moved.
inline constexpr Field<RowId> kMovedTo{0};

struct Slot {
    // Of an entry of the slot table; the bit between them is free.
    static constexpr std::uint16_t kOffsetMask = 0x1FFF;
    static constexpr std::uint16_t kKindMask = 0xC000;

    SlotKind kind{};
    std::size_t offset{};
    std::span<const std::byte> bytes;
};

/// A page of slots: table rows, parts of long values, or usage maps. Rows fill the page from its
/// end downwards in slot order and without holes, so a slot ends where the one before it begins.
class DataPage {
public:
    /// @throws Error{corrupt} if the page isn't a data page or its row table doesn't fit.
    DataPage(const Format& format, std::span<const std::byte> bytes, PageNo page);

    [[nodiscard]] std::size_t slotCount() const noexcept { return slots_; }
    /// @throws Error{corrupt} if there is no such slot or its bounds don't fit the page.
    [[nodiscard]] Slot slot(std::size_t number) const;
    /// Bytes between the row table and the rows, whatever the page's own field says.
    [[nodiscard]] std::size_t freeBytes() const;
    [[nodiscard]] std::uint16_t recordedFreeBytes() const noexcept;
    /// Whether a new row of `size` bytes fits.
    [[nodiscard]] bool hasRoom(std::size_t size) const;
    /// The definition page of the table, kLongValueOwner, or kMapOwner.
    [[nodiscard]] std::uint32_t owner() const noexcept;
    /// Whether no slot holds anything any more.
    [[nodiscard]] bool empty() const;

private:
    friend class DataPageEditor;
    [[noreturn]] void refuseSlot(std::size_t number) const;

    const Format* format_;
    std::span<const std::byte> bytes_;
    PageNo page_;
    std::size_t slots_;
};

inline Slot DataPage::slot(std::size_t number) const {
    if (number >= slots_)
        refuseSlot(number);
    const DataPageLayout& layout = format_->dataPage;
    const std::uint16_t word = load(bytes_.data(), layout.slot(number));
    // Rows fill the page from its end: each goes to where the one before it begins.
    const std::size_t begin = word & Slot::kOffsetMask;
    const std::size_t end = number == 0
                                ? format_->pageSize
                                : load(bytes_.data(), layout.slot(number - 1)) & Slot::kOffsetMask;
    if (begin > end || end > format_->pageSize || begin < layout.slot(slots_).at)
        refuseSlot(number);
    return {static_cast<SlotKind>(word & Slot::kKindMask), begin,
            bytes_.subspan(begin, end - begin)};
}

/// "LVAL": the owner that pages of long values name instead of a table.
inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C;
/// That of usage maps. Only the page of the maps of the whole file names itself.
inline constexpr std::uint32_t kMapOwner = 0;

/// Changes the slots of a page, keeping rows contiguous and the page's counters true.
class DataPageEditor {
public:
    /// @throws Error{corrupt} if any slot's bounds don't fit: a damaged page is never changed.
    DataPageEditor(const Format& format, std::span<std::byte> bytes, PageNo page);

    /// Makes zeros into an empty data page.
    static void format(const Format& format, std::span<std::byte> bytes, std::uint32_t owner);

    /// Requires room.
    std::size_t add(std::span<const std::byte> row, SlotKind kind = SlotKind::row);
    /// Gives the slot new bytes; requires that they fit.
    void replace(std::size_t slot, std::span<const std::byte> row, SlotKind kind);
    /// Empties the slot and closes its gap. The slot stays: its number may still be in somebody's
    /// hands.
    void remove(std::size_t slot);
    /// Makes the slot `size` bytes long, what is there kept and filled up with zeros.
    void resize(std::size_t slot, std::size_t size);
    /// A slot's bytes, to be changed in place.
    [[nodiscard]] std::span<std::byte> slotBytes(std::size_t slot);

    [[nodiscard]] DataPage view() const { return {format_, bytes_, page_}; }

private:
    void setSlot(std::size_t slot, std::size_t offset, SlotKind kind);

    const Format& format_;
    std::span<std::byte> bytes_;
    PageNo page_;
};

} // namespace jet
