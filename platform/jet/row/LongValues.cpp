#include "jet/row/LongValues.h"

#include "jet/page/DataPage.h"

#include <algorithm>

namespace jet {

namespace {

constexpr std::uint32_t kLengthMask = 0x3FFFFFFF;
constexpr unsigned kKindShift = 30;
constexpr std::size_t kNextPointer = LongValueDefinition::kNext.size;
/// Below this a long-value page isn't worth trying for another value.
constexpr std::size_t kWorthTrying = 128;

Bytes definition(LongValueDefinition::Kind kind, std::size_t length, RowId first) {
    Bytes bytes(LongValueDefinition::kSize);
    store(bytes.data(), LongValueDefinition::kHead,
          static_cast<std::uint32_t>(length) | std::uint32_t{static_cast<std::uint8_t>(kind)}
                                                   << kKindShift);
    store(bytes.data(), LongValueDefinition::kFirst, first);
    return bytes;
}

/// One slot of a long-value page.
std::span<const std::byte> part(const Format& format, const PageRef& page, RowId id) {
    const DataPage holder(format, page.bytes(), id.page);
    const Slot slot = holder.slot(id.slot);
    if (holder.owner() != kLongValueOwner || slot.kind == SlotKind::deleted)
        corrupt(id.page, "um valor longo aponta para uma página que não é sua");
    return slot.bytes;
}

/// Calls visit(id, content) for every part outside the row.
template <class Visit>
void eachPart(Pager& pager, const LongValueDefinition& value, PageNo page, Visit&& visit) {
    const Format& format = pager.format();
    if (value.length > std::uint64_t{pager.pageCount()} * format.pageSize)
        corrupt(page, "um valor longo diz ser maior que o arquivo");
    std::size_t left = value.length;
    RowId id = value.first;
    while (true) {
        const PageRef ref = pager.read(id.page);
        std::span<const std::byte> bytes = part(format, ref, id);
        RowId next{};
        if (value.kind == LongValueDefinition::Kind::chain) {
            next = ByteView(bytes, id.page).load(LongValueDefinition::kNext);
            bytes = bytes.subspan(kNextPointer);
        }
        if (bytes.size() > left)
            bytes = bytes.first(left);
        left -= bytes.size();
        visit(id, bytes);
        if (left == 0)
            return;
        if (next == RowId{} || bytes.empty())
            corrupt(id.page, "um valor longo termina antes do seu tamanho");
        id = next;
    }
}

} // namespace

LongValueDefinition LongValueDefinition::parse(std::span<const std::byte> stored, PageNo page) {
    const ByteView view(stored, page);
    const std::uint32_t head = view.load(kHead);
    const std::uint32_t kind = head >> kKindShift;
    (void)view.sub(0, kSize);
    if (kind > static_cast<std::uint32_t>(Kind::inRow))
        corrupt(page, "um valor longo é de tipo desconhecido");
    LongValueDefinition value{static_cast<Kind>(kind), head & kLengthMask, view.load(kFirst)};
    if (value.kind == Kind::inRow && value.length > stored.size() - kSize)
        corrupt(page, "um valor longo diz ser maior que a sua linha");
    return value;
}

Bytes readLongValue(Pager& pager, std::span<const std::byte> stored, PageNo page) {
    const LongValueDefinition value = LongValueDefinition::parse(stored, page);
    if (value.kind == LongValueDefinition::Kind::inRow) {
        const auto content = stored.subspan(LongValueDefinition::kSize, value.length);
        return {content.begin(), content.end()};
    }
    Bytes content;
    if (value.length > 0)
        eachPart(pager, value, page, [&](RowId, std::span<const std::byte> bytes) {
            content.insert(content.end(), bytes.begin(), bytes.end());
        });
    return content;
}

std::vector<RowId> longValueParts(Pager& pager, std::span<const std::byte> stored, PageNo page) {
    const LongValueDefinition value = LongValueDefinition::parse(stored, page);
    std::vector<RowId> parts;
    if (value.kind != LongValueDefinition::Kind::inRow && value.first != RowId{})
        eachPart(pager, value, page,
                 [&](RowId id, std::span<const std::byte>) { parts.push_back(id); });
    return parts;
}

LongValueStore::LongValueStore(Pager& pager, PageAllocator& pages, const LongValueMaps& maps)
    : pager_(pager), pages_(pages), owned_(pager, maps.owned) {
    if (maps.free)
        free_.emplace(pager, *maps.free);
}

Bytes writeLongValue(const Format& format, std::span<const std::byte> content, bool mayStay,
                     const std::function<RowId(std::span<const std::byte> part)>& place) {
    using Kind = LongValueDefinition::Kind;
    if (content.size() > kLengthMask)
        throw Error(Errc::tooLong, "O texto é longo demais para ser guardado.");
    if (content.empty() || (mayStay && content.size() <= format.inlineLongValue)) {
        Bytes bytes = definition(Kind::inRow, content.size(), {});
        bytes.insert(bytes.end(), content.begin(), content.end());
        return bytes;
    }
    if (content.size() <= format.longValuePart)
        return definition(Kind::single, content.size(), place(content));

    // From the last part to the first, each naming the one behind it.
    const std::size_t step = format.longValuePart - kNextPointer;
    RowId next{};
    for (std::size_t at = (content.size() - 1) / step * step;; at -= step) {
        const auto piece = content.subspan(at, std::min(step, content.size() - at));
        Bytes bytes(kNextPointer);
        store(bytes.data(), LongValueDefinition::kNext, next);
        bytes.insert(bytes.end(), piece.begin(), piece.end());
        next = place(bytes);
        if (at == 0)
            return definition(Kind::chain, content.size(), next);
    }
}

Bytes LongValueStore::write(std::span<const std::byte> content, bool mayStay) {
    return writeLongValue(pager_.format(), content, mayStay,
                          [this](std::span<const std::byte> part) { return place(part); });
}

RowId LongValueStore::place(std::span<const std::byte> bytes) {
    const Format& format = pager_.format();
    std::optional<PageNo> target;
    if (free_) {
        target = free_->previous(pager_.pageCount());
        if (target &&
            !DataPage(format, pager_.read(*target).bytes(), *target).hasRoom(bytes.size()))
            target.reset();
    }
    if (!target) {
        target = pages_.take(owned_);
        DataPageEditor::format(format, pager_.change(*target), kLongValueOwner);
        if (free_)
            pages_.add(*free_, *target);
    }
    DataPageEditor editor(format, pager_.change(*target), *target);
    const std::size_t slot = editor.add(bytes);
    if (free_ && !editor.view().hasRoom(kWorthTrying))
        pages_.remove(*free_, *target);
    return {*target, static_cast<std::uint16_t>(slot)};
}

void LongValueStore::release(std::span<const std::byte> stored, PageNo page) {
    for (const RowId id : longValueParts(pager_, stored, page)) {
        if (!owned_.contains(id.page))
            corrupt(id.page, "um valor longo usa uma página que não é da sua coluna");
        DataPageEditor editor(pager_.format(), pager_.change(id.page), id.page);
        editor.remove(id.slot);
        if (editor.view().empty()) {
            if (free_)
                pages_.remove(*free_, id.page);
            pages_.give(id.page, owned_);
        } else if (free_ && editor.view().hasRoom(kWorthTrying)) {
            pages_.add(*free_, id.page);
        }
    }
}

} // namespace jet
