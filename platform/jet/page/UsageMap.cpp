#include "jet/page/UsageMap.h"

#include "jet/page/DataPage.h"
#include "jet/page/MapLayout.h"

#include <algorithm>
#include <bit>
#include <cassert>

namespace jet {

namespace {

/// Bits of a bitmap and the page that the first of them stands for.
struct Bits {
    std::span<const std::byte> bytes;
    std::uint32_t first;
    [[nodiscard]] std::uint64_t end() const noexcept { return first + bytes.size() * 8; }
};

/// The eight bytes from `at`, or as many as there are, as one number.
std::uint64_t word(std::span<const std::byte> bytes, std::size_t at) noexcept {
    std::uint64_t value = 0;
    std::memcpy(&value, bytes.data() + at, std::min<std::size_t>(8, bytes.size() - at));
    return value;
}

std::optional<std::uint32_t> nextBit(const Bits& bits, std::uint32_t from) {
    if (from >= bits.end())
        return std::nullopt;
    std::size_t bit = from > bits.first ? from - bits.first : 0;
    std::size_t at = bit / 64 * 8;
    for (std::uint64_t skip = ~std::uint64_t{0} << (bit % 64); at < bits.bytes.size();
         at += 8, skip = ~std::uint64_t{0})
        if (const std::uint64_t set = word(bits.bytes, at) & skip)
            return bits.first + static_cast<std::uint32_t>(at * 8) +
                   static_cast<std::uint32_t>(std::countr_zero(set));
    return std::nullopt;
}

std::optional<std::uint32_t> previousBit(const Bits& bits, std::uint32_t end) {
    if (end <= bits.first || bits.bytes.empty())
        return std::nullopt;
    const std::size_t last =
        static_cast<std::size_t>(std::min<std::uint64_t>(end, bits.end()) - bits.first) - 1;
    std::size_t at = last / 64 * 8;
    for (std::uint64_t keep = ~std::uint64_t{0} >> (63 - last % 64);;
         at -= 8, keep = ~std::uint64_t{0}) {
        if (const std::uint64_t set = word(bits.bytes, at) & keep)
            return bits.first + static_cast<std::uint32_t>(at * 8) + 63 -
                   static_cast<std::uint32_t>(std::countl_zero(set));
        if (at == 0)
            return std::nullopt;
    }
}

/// The row of a map, checked.
struct MapRow {
    PageRef page;
    std::span<const std::byte> bytes;
    MapType type;

    [[nodiscard]] Bits bits() const {
        return {bytes.subspan(MapRowLayout::bitmap),
                number(load(bytes.data(), MapRowLayout::first))};
    }
    [[nodiscard]] std::size_t references() const noexcept {
        return MapRowLayout::referencesIn(bytes.size());
    }
    [[nodiscard]] std::uint32_t reference(std::size_t part) const noexcept {
        return number(load(bytes.data(), MapRowLayout::reference(part)));
    }
};

MapRow readMap(Pager& pager, RowId at) {
    PageRef page = pager.read(at.page);
    const Slot slot = DataPage(pager.format(), page.bytes(), at.page).slot(at.slot);
    if (slot.bytes.size() < MapRowLayout::bitmap || slot.kind == SlotKind::deleted)
        corrupt(at.page, "o mapa de páginas " + std::to_string(at.slot) + " está incompleto");
    const MapType type = load(slot.bytes.data(), MapRowLayout::type);
    if (type != MapType::bitmap && type != MapType::reference)
        corrupt(at.page,
                "o mapa de páginas " + std::to_string(at.slot) + " é de tipo desconhecido");
    if (type == MapType::bitmap) {
        const std::uint32_t first = number(load(slot.bytes.data(), MapRowLayout::first));
        if (first > pager.format().largestFile / pager.format().pageSize)
            corrupt(at.page,
                    "o mapa de páginas " + std::to_string(at.slot) + " começa fora do arquivo");
    }
    return {std::move(page), slot.bytes, type};
}

/// A page that is all bitmap.
PageRef readMapPage(Pager& pager, std::uint32_t page) {
    PageRef found = pager.read(static_cast<PageNo>(page));
    if (found.kind() != PageKind::usageMap)
        corrupt(found.page(), "era esperada uma página de mapa");
    return found;
}

Bits mapPageBits(const Format& format, const PageRef& page, std::size_t part) {
    return {page.bytes().subspan(MapPageLayout::bitmap),
            static_cast<std::uint32_t>(part * MapPageLayout::bits(format))};
}

} // namespace

bool UsageMap::contains(PageNo page) const { return next(number(page)) == page; }

std::optional<PageNo> UsageMap::next(std::uint32_t from) const {
    const std::uint32_t end = pager_->pageCount();
    const MapRow row = readMap(*pager_, at_);
    const std::size_t partBits = MapPageLayout::bits(pager_->format());
    std::optional<std::uint32_t> found;
    if (row.type == MapType::bitmap) {
        found = nextBit(row.bits(), from);
        // Past its bitmap the map of free pages counts every page as free.
        if (!found && kind_ == Kind::global && row.bits().end() < end)
            found = std::max<std::uint32_t>(from, static_cast<std::uint32_t>(row.bits().end()));
    } else {
        for (std::size_t part = from / partBits; part * partBits < end && !found; ++part) {
            const std::uint32_t at = part < row.references() ? row.reference(part) : 0;
            if (at != 0) {
                const PageRef page = readMapPage(*pager_, at);
                found = nextBit(mapPageBits(pager_->format(), page, part), from);
            } else if (kind_ == Kind::global) {
                found = std::max<std::uint32_t>(from, static_cast<std::uint32_t>(part * partBits));
            }
        }
    }
    if (!found || *found >= end)
        return std::nullopt;
    return static_cast<PageNo>(*found);
}

std::optional<PageNo> UsageMap::previous(std::uint32_t end) const {
    assert(kind_ == Kind::owned);
    end = std::min(end, pager_->pageCount());
    const MapRow row = readMap(*pager_, at_);
    const std::size_t partBits = MapPageLayout::bits(pager_->format());
    std::optional<std::uint32_t> found;
    if (row.type == MapType::bitmap) {
        found = previousBit(row.bits(), end);
    } else if (end > 0) {
        for (std::size_t part = std::min<std::size_t>((end - 1) / partBits + 1, row.references());
             part-- > 0 && !found;)
            if (const std::uint32_t at = row.reference(part); at != 0) {
                const PageRef page = readMapPage(*pager_, at);
                found = previousBit(mapPageBits(pager_->format(), page, part), end);
            }
    }
    return found ? std::optional(static_cast<PageNo>(*found)) : std::nullopt;
}

PageAllocator::PageAllocator(Pager& pager) noexcept
    : pager_(pager), free_(pager, kFreePagesMap, UsageMap::Kind::global) {}

PageNo PageAllocator::take() {
    if (const auto page = free_.next(0)) {
        if (number(*page) <= number(kFreePagesMap.page))
            corrupt(kFreePagesMap.page, "o mapa de páginas livres contém uma página em uso");
        remove(free_, *page);
        const std::span<std::byte> bytes = pager_.change(*page);
        std::fill(bytes.begin(), bytes.end(), std::byte{});
        return *page;
    }
    const PageNo page = pager_.append();
    // What lies beyond the end is free, unless somebody has cut the file: then others may refer to
    // the page that was there.
    if (!free_.contains(page))
        corrupt(page, "o arquivo foi cortado: as páginas além do seu fim estão em uso");
    remove(free_, page);
    return page;
}

PageNo PageAllocator::take(UsageMap& owner) {
    const PageNo page = take();
    add(owner, page);
    return page;
}

void PageAllocator::give(PageNo page) {
    // The kind goes, so that nobody takes what is left there for a page in use.
    store(pager_.change(page).data(), PageHead::all, 0);
    add(free_, page);
}

void PageAllocator::give(PageNo page, UsageMap& owner) {
    remove(owner, page);
    give(page);
}

RowId PageAllocator::createMap() {
    const Format& format = pager_.format();
    const Bytes row = emptyMap(format);
    const auto holdsMaps = [&](PageNo page) {
        const PageRef ref = pager_.read(page);
        if (ref.kind() != PageKind::data)
            return false;
        const DataPage holder(format, ref.bytes(), page);
        return holder.owner() == kMapOwner && holder.hasRoom(row.size());
    };
    if (!mapPage_ || number(*mapPage_) >= pager_.pageCount() || !holdsMaps(*mapPage_)) {
        const PageNo page = take();
        DataPageEditor::format(format, pager_.change(page), kMapOwner);
        mapPage_ = page;
    }
    DataPageEditor editor(format, pager_.change(*mapPage_), *mapPage_);
    return {*mapPage_, static_cast<std::uint16_t>(editor.add(row))};
}

void PageAllocator::add(const UsageMap& map, PageNo page) {
    const std::uint32_t at = number(page);
    {
        const MapRow row = readMap(pager_, map.at_);
        if (row.type == MapType::bitmap && (at < row.bits().first || at >= row.bits().end())) {
            if (map.kind_ == UsageMap::Kind::global && at >= row.bits().end())
                return; // free already: nothing beyond the bitmap is in use
            if (!growInline(map, at))
                makeReference(map);
        }
    }
    const MapRow row = readMap(pager_, map.at_);
    const Format& format = pager_.format();
    if (row.type == MapType::bitmap) {
        const std::size_t bit = at - row.bits().first;
        DataPageEditor editor(format, pager_.change(map.at_.page), map.at_.page);
        setBit(editor.slotBytes(map.at_.slot).subspan(MapRowLayout::bitmap), bit);
        return;
    }
    const std::size_t part = at / MapPageLayout::bits(format);
    if (part >= row.references())
        corrupt(map.at_.page, "o mapa de páginas não alcança a página " + std::to_string(at));
    std::uint32_t target = row.reference(part);
    if (target == 0) {
        if (map.kind_ == UsageMap::Kind::global)
            return; // a missing part of the map of free pages counts as free
        target = number(take());
        startPage(pager_.change(static_cast<PageNo>(target)).data(), PageKind::usageMap);
        setReference(map, part, static_cast<PageNo>(target));
    }
    flipOnMapPage(static_cast<PageNo>(target), at, true);
}

void PageAllocator::remove(const UsageMap& map, PageNo page) {
    const std::uint32_t at = number(page);
    const Format& format = pager_.format();
    const bool global = map.kind_ == UsageMap::Kind::global;
    {
        const MapRow row = readMap(pager_, map.at_);
        if (row.type == MapType::bitmap && (at < row.bits().first || at >= row.bits().end())) {
            if (!global)
                return;
            if (!growInline(map, at))
                makeReference(map);
        }
    }
    const MapRow row = readMap(pager_, map.at_);
    if (row.type == MapType::bitmap) {
        const std::size_t bit = at - row.bits().first;
        DataPageEditor editor(format, pager_.change(map.at_.page), map.at_.page);
        setBit(editor.slotBytes(map.at_.slot).subspan(MapRowLayout::bitmap), bit, false);
        return;
    }
    const std::size_t part = at / MapPageLayout::bits(format);
    std::uint32_t target = part < row.references() ? row.reference(part) : 0;
    if (target == 0) {
        if (!global)
            return;
        if (part >= row.references())
            corrupt(map.at_.page, "o mapa de páginas livres não alcança o fim do arquivo");
        // The new part describes itself as well: it comes from the file's end, not from the map.
        const PageNo fresh = pager_.append();
        target = number(fresh);
        const std::span<std::byte> bytes = pager_.change(fresh);
        std::fill(bytes.begin() + MapPageLayout::bitmap, bytes.end(), std::byte{0xFF});
        startPage(bytes.data(), PageKind::usageMap);
        setReference(map, part, fresh);
        remove(map, fresh);
    }
    flipOnMapPage(static_cast<PageNo>(target), at, false);
}

void PageAllocator::setReference(const UsageMap& map, std::size_t part, PageNo mapPage) {
    DataPageEditor editor(pager_.format(), pager_.change(map.at_.page), map.at_.page);
    store(editor.slotBytes(map.at_.slot).data(), MapRowLayout::reference(part), mapPage);
}

void PageAllocator::flipOnMapPage(PageNo mapPage, std::uint32_t page, bool on) {
    (void)readMapPage(pager_, number(mapPage));
    setBit(pager_.change(mapPage).subspan(MapPageLayout::bitmap),
           page % MapPageLayout::bits(pager_.format()), on);
}

bool PageAllocator::growInline(const UsageMap& map, std::uint32_t page) {
    const Format& format = pager_.format();
    const MapRow row = readMap(pager_, map.at_);
    const Bits bits = row.bits();
    const std::size_t length = bits.bytes.size();
    const bool global = map.kind_ == UsageMap::Kind::global;

    if (!global) {
        // Slide the window if everything in use fits into it at its present length.
        const std::uint32_t low = std::min(nextBit(bits, 0).value_or(page), page) / 8 * 8;
        const std::optional<std::uint32_t> last = previousBit(
            bits, static_cast<std::uint32_t>(std::min<std::uint64_t>(bits.end(), UINT32_MAX)));
        const std::uint64_t high = std::max(last.value_or(page), page);
        if (high < low + std::uint64_t{length} * 8) {
            std::vector<std::byte> moved(length);
            for (auto bit = nextBit(bits, 0); bit; bit = nextBit(bits, *bit + 1))
                setBit(moved, *bit - low);
            DataPageEditor editor(format, pager_.change(map.at_.page), map.at_.page);
            const std::span<std::byte> bytes = editor.slotBytes(map.at_.slot);
            store(bytes.data(), MapRowLayout::first, static_cast<PageNo>(low));
            std::copy(moved.begin(), moved.end(), bytes.begin() + MapRowLayout::bitmap);
            return true;
        }
    }
    if (page < bits.first)
        return false;
    const std::size_t needed = wholeWords((page - bits.first) / 8 + 1);
    const DataPage holder(format, row.page.bytes(), map.at_.page);
    if (needed - length > holder.freeBytes())
        return false;
    DataPageEditor editor(format, pager_.change(map.at_.page), map.at_.page);
    editor.resize(map.at_.slot, MapRowLayout::bitmap + needed);
    if (global) {
        const std::span<std::byte> bytes = editor.slotBytes(map.at_.slot);
        std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(MapRowLayout::bitmap + length),
                  bytes.end(), std::byte{0xFF});
    }
    return true;
}

void PageAllocator::makeReference(const UsageMap& map) {
    const Format& format = pager_.format();
    const bool global = map.kind_ == UsageMap::Kind::global;
    std::vector<std::uint32_t> members; // of the free map: those in use
    std::size_t slotSize = 0;
    {
        const MapRow row = readMap(pager_, map.at_);
        const Bits bits = row.bits();
        slotSize = row.bytes.size();
        if (global) {
            for (std::uint32_t at = bits.first; at < bits.end(); ++at)
                if (!hasBit(bits.bytes, at - bits.first))
                    members.push_back(at);
        } else {
            for (auto bit = nextBit(bits, 0); bit; bit = nextBit(bits, *bit + 1))
                members.push_back(*bit);
        }
    }
    {
        // Enough references for the largest file, whatever the bitmap's length was.
        const std::size_t parts =
            (format.largestFile / format.pageSize + MapPageLayout::bits(format) - 1) /
            MapPageLayout::bits(format);
        const std::size_t wanted = MapRowLayout::reference(parts).at;
        DataPageEditor editor(format, pager_.change(map.at_.page), map.at_.page);
        if (slotSize < wanted)
            slotSize = std::min(wanted, slotSize + editor.view().freeBytes());
        slotSize = MapRowLayout::reference(MapRowLayout::referencesIn(slotSize)).at;
        const std::vector<std::byte> empty(slotSize);
        editor.replace(map.at_.slot, empty, SlotKind::row);
        store(editor.slotBytes(map.at_.slot).data(), MapRowLayout::type, MapType::reference);
    }
    for (const std::uint32_t page : members)
        global ? remove(map, static_cast<PageNo>(page)) : add(map, static_cast<PageNo>(page));
}

} // namespace jet
