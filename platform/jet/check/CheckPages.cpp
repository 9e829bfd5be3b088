#include "jet/check/CheckPages.h"

#include "jet/page/MapLayout.h"

#include <algorithm>
#include <bit>

namespace jet {

namespace {

constexpr const char* kFreePages = "mapa de páginas livres";

std::string both(std::uint64_t said, std::uint64_t found) {
    return "diz " + std::to_string(said) + ", são " + std::to_string(found);
}

} // namespace

std::string placeOf(RowId id) {
    return "página " + std::to_string(number(id.page)) + ", linha " + std::to_string(id.slot);
}

bool checkDataPage(const Format& format, const PageRef& page, std::uint32_t owner,
                   const std::string& where, Findings& findings, std::vector<Slot>& slots) {
    slots.clear();
    const std::size_t count = page.view().load(format.dataPage.slotCount);
    if (!isPage(page.bytes().data(), PageKind::data) || count > format.mostSlots()) {
        findings.error(page.page(), where, "a página não é uma página de dados");
        return false;
    }
    const DataPage data(format, page.bytes(), page.page());
    if (data.owner() != owner) {
        findings.error(page.page(), where, "a página diz ser de outro dono",
                       both(data.owner(), owner));
        return false;
    }
    if (count > kMaxSlots)
        findings.error(page.page(), where, "a página tem linhas demais", std::to_string(count));
    bool sound = true;
    slots.resize(count, Slot{SlotKind::deleted, 0, {}});
    for (std::size_t i = 0; i < count; ++i) {
        try {
            slots[i] = data.slot(i);
        } catch (const Error&) {
            sound = false;
            findings.error(page.page(), where, "uma linha está fora do seu lugar na página",
                           "linha " + std::to_string(i));
            continue;
        }
        if (slots[i].kind == SlotKind::deleted && !slots[i].bytes.empty())
            findings.warning(page.page(), where, "uma linha excluída ainda ocupa espaço",
                             "linha " + std::to_string(i));
    }
    if (sound && data.freeBytes() != data.recordedFreeBytes())
        findings.error(page.page(), where, "os bytes livres da página estão errados",
                       both(data.recordedFreeBytes(), data.freeBytes()));
    return true;
}

PageLedger::PageLedger(Pager& pager, Findings& findings)
    : pager_(pager), findings_(findings), names_{"ninguém"}, owners_(pager.pageCount()),
      free_(pager.pageCount()), header_(newOwner("o cabeçalho do arquivo")),
      mapPages_(newOwner("os mapas de páginas")) {
    claim(PageNo{0}, header_);
}

PageLedger::Owner PageLedger::newOwner(std::string name) {
    names_.push_back(std::move(name));
    return static_cast<Owner>(names_.size() - 1);
}

bool PageLedger::claim(PageNo page, Owner owner) {
    if (number(page) >= owners_.size()) {
        findings_.error(page, names_[owner], "a página está fora do arquivo");
        return false;
    }
    Owner& present = owners_[number(page)];
    if (present != 0) {
        findings_.error(page, names_[owner], "a página já tem outro dono",
                        present == owner ? "aparece duas vezes" : names_[present]);
        return false;
    }
    present = owner;
    return true;
}

bool PageLedger::readBitmap(std::span<const std::byte> bits, std::uint64_t first, bool isFreeMap,
                            PageNo page, const std::string& where, Pages& pages) const {
    std::uint64_t outside = 0;
    for (std::size_t i = 0; i < bits.size(); ++i)
        for (auto set = std::to_integer<unsigned>(bits[i]); set != 0; set &= set - 1) {
            const std::uint64_t member =
                first + 8 * i + static_cast<unsigned>(std::countr_zero(set));
            if (member < owners_.size())
                pages.push_back(static_cast<std::uint32_t>(member));
            else
                ++outside;
        }
    if (outside == 0 || isFreeMap) // what lies beyond the end counts as free
        return true;
    findings_.error(page, where, "o mapa contém páginas que o arquivo não tem",
                    std::to_string(outside));
    return false;
}

std::optional<PageLedger::Pages> PageLedger::readMap(RowId map, const std::string& where,
                                                     bool isFreeMap) {
    const auto fail = [&](const char* what) {
        findings_.error(map.page, where, what, placeOf(map));
        return std::nullopt;
    };
    // From a stranger's definition: it may point anywhere, also twice at one map.
    if (number(map.page) == 0 || number(map.page) >= owners_.size())
        return fail("o mapa de páginas está fora do arquivo");
    if (!maps_.insert(map).second)
        return fail("o mapa de páginas serve a dois donos");
    const PageRef page = pager_.read(map.page);
    if (owners_[number(map.page)] != mapPages_) {
        std::vector<Slot> slots;
        const std::uint32_t owner = map.page == kMapsOfFile ? number(kMapsOfFile) : kMapOwner;
        if (!checkDataPage(pager_.format(), page, owner, where, findings_, slots) ||
            !claim(map.page, mapPages_))
            return std::nullopt;
    }
    Slot slot;
    try {
        slot = DataPage(pager_.format(), page.bytes(), map.page).slot(map.slot);
    } catch (const Error&) {
        return fail("o mapa de páginas não está no seu lugar");
    }
    if (slot.kind != SlotKind::row || slot.bytes.size() < MapRowLayout::bitmap)
        return fail("o mapa de páginas está incompleto");

    Pages pages;
    const std::byte* const row = slot.bytes.data();
    const MapType type = load(row, MapRowLayout::type);
    if (type == MapType::bitmap) {
        const std::uint32_t first = number(load(row, MapRowLayout::first));
        const auto bits = slot.bytes.subspan(MapRowLayout::bitmap);
        readBitmap(bits, first, isFreeMap, map.page, where, pages);
        if (isFreeMap)
            for (std::uint64_t beyond = first + 8 * bits.size(); beyond < owners_.size(); ++beyond)
                pages.push_back(static_cast<std::uint32_t>(beyond));
        return pages;
    }
    const std::size_t parts = MapRowLayout::referencesIn(slot.bytes.size());
    if (type != MapType::reference || slot.bytes.size() != MapRowLayout::reference(parts).at)
        return fail("o mapa de páginas é de tipo desconhecido");
    const std::size_t partBits = MapPageLayout::bits(pager_.format());
    for (std::size_t part = 0; part < parts; ++part) {
        const std::uint64_t first = part * partBits;
        const PageNo at = load(row, MapRowLayout::reference(part));
        if (number(at) == 0) { // a part of the file without a page of bits: none, or all free
            for (std::uint64_t k = first;
                 isFreeMap && k < std::min<std::uint64_t>(first + partBits, owners_.size()); ++k)
                pages.push_back(static_cast<std::uint32_t>(k));
            continue;
        }
        if (!claim(at, mapPages_))
            continue;
        const PageRef bits = pager_.read(at);
        if (!isPage(bits.bytes().data(), PageKind::usageMap))
            findings_.error(at, where, "a página não é uma página de mapa");
        else
            readBitmap(bits.bytes().subspan(MapPageLayout::bitmap), first, isFreeMap, at, where,
                       pages);
    }
    return pages;
}

void PageLedger::readFreePages() {
    if (const auto pages = readMap(kFreePagesMap, kFreePages, true))
        for (const std::uint32_t page : *pages)
            free_[page] = true;
    (void)readMap(kSecondMap, "segundo mapa do arquivo", true);
}

std::uint32_t PageLedger::freePages() const noexcept {
    return static_cast<std::uint32_t>(std::count(free_.begin(), free_.end(), true));
}

std::optional<std::vector<PageNo>> PageLedger::claimMap(RowId map, Owner owner) {
    const auto pages = readMap(map, names_[owner], false);
    if (!pages)
        return std::nullopt;
    std::vector<PageNo> mine;
    for (const std::uint32_t page : *pages)
        if (claim(static_cast<PageNo>(page), owner))
            mine.push_back(static_cast<PageNo>(page));
    return mine;
}

void PageLedger::readSubset(RowId map, Owner owner) {
    if (const auto pages = readMap(map, names_[owner], false))
        for (const std::uint32_t page : *pages)
            if (owners_[page] != owner)
                findings_.error(static_cast<PageNo>(page), names_[owner],
                                "o mapa de espaço livre contém uma página que não é do dono");
}

void PageLedger::compareWithFree() {
    for (std::size_t i = 0; i < owners_.size(); ++i) {
        const auto page = static_cast<PageNo>(i);
        if (owners_[i] != 0 && free_[i])
            findings_.error(page, names_[owners_[i]], "a página está em uso e consta como livre");
        if (owners_[i] != 0 || free_[i])
            continue;
        // What programs leave of tables that were deleted; two files of the original kind have it.
        if (pager_.read(page).kind() == PageKind::definition)
            findings_.warning(page, {},
                              "uma definição de tabela não está no catálogo: sobra de uma tabela "
                              "excluída; se for de uma que falta, o salvamento a recupera");
        else
            findings_.warning(page, {}, "a página não é de ninguém, mas não consta como livre");
    }
}

} // namespace jet
