#include "jet/index/IndexPage.h"

#include <algorithm>

namespace jet {

namespace {

std::uint32_t bigEndian(const std::byte* at) noexcept {
    return (std::to_integer<std::uint32_t>(at[0]) << 24) |
           (std::to_integer<std::uint32_t>(at[1]) << 16) |
           (std::to_integer<std::uint32_t>(at[2]) << 8) | std::to_integer<std::uint32_t>(at[3]);
}

/// The lowest set bit from `from` on; one must be set there. Words may reach past the mask, into
/// the data that follows it.
std::size_t bitAtOrAfter(const std::byte* mask, std::size_t from) noexcept {
    std::uint64_t word = load<std::uint64_t>(mask + from / 8) >> (from % 8);
    if (word != 0)
        return from + static_cast<std::size_t>(std::countr_zero(word));
    std::size_t at = from / 8 + 8;
    while ((word = load<std::uint64_t>(mask + at)) == 0)
        at += 8;
    return at * 8 + static_cast<std::size_t>(std::countr_zero(word));
}

/// The highest set bit up to `from`, or 0. Words may reach up to seven bytes before the mask, into
/// the header, which is longer than that.
std::size_t bitAtOrBefore(const std::byte* mask, std::size_t from) noexcept {
    auto at = static_cast<std::ptrdiff_t>(from / 8);
    auto top = static_cast<std::ptrdiff_t>(from); // the bit that the word's highest stands for
    std::uint64_t word = load<std::uint64_t>(mask + at - 7) << (7 - from % 8);
    while (word == 0) {
        at -= 8;
        top = at * 8 + 7;
        if (top < 0)
            return 0;
        word = load<std::uint64_t>(mask + at - 7);
    }
    return static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, top - std::countl_zero(word)));
}

} // namespace

std::strong_ordering compare(const IndexPoint& a, const IndexPoint& b) noexcept {
    const std::size_t common = std::min(a.key.size(), b.key.size());
    if (common != 0)
        if (const int order = std::memcmp(a.key.data(), b.key.data(), common); order != 0)
            return order <=> 0;
    if (a.key.size() != b.key.size())
        return a.key.size() <=> b.key.size();
    return a.row <=> b.row;
}

IndexPage::IndexPage(const Format& format, ByteView page) noexcept
    : format_(&format), bytes_(page.bytes().data()), page_(page.page()) {
    used_ = static_cast<std::uint16_t>(placeAtOrBefore(layout().mask.size * 8 - 1));
    if (used_ != 0)
        prefix_ = static_cast<std::uint16_t>(load(bytes_, layout().prefix));
}

const char* IndexPage::flaw(PageNo owner) const noexcept {
    const PageKind kind = load(bytes_, PageHead::kind);
    if (kind != PageKind::indexLeaf && kind != PageKind::indexNode)
        return "era esperada uma página de índice";
    if (load(bytes_, layout().owner) != owner)
        return "a página de índice é de outra tabela";
    if (isLeaf() ? level() != 0 : level() > kMaxLevel)
        return "o nível da página de índice não combina com o seu tipo";
    if (used_ > format_->indexCapacity() || hasBit({mask(), 1}, 0))
        return "a máscara de entradas do índice é inválida";
    if (used_ != 0 && prefix_ > after(0))
        return "o prefixo do índice é maior que a primeira entrada";
    return nullptr;
}

const char* IndexPage::flaw(const Format& format, ByteView page, PageNo owner) noexcept {
    return IndexPage(format, page).flaw(owner);
}

IndexPage IndexPage::open(const Format& format, ByteView page, PageNo owner) {
    const IndexPage found(format, page);
    if (const char* reason = found.flaw(owner))
        corrupt(page.page(), reason);
    return found;
}

std::size_t IndexPage::freeField() const noexcept { return load(bytes_, layout().freeBytes); }

std::size_t IndexPage::after(std::size_t at) const noexcept { return bitAtOrAfter(mask(), at + 1); }

std::size_t IndexPage::placeAtOrBefore(std::size_t at) const noexcept {
    return bitAtOrBefore(mask(), at);
}

std::size_t IndexPage::before(std::size_t at) const noexcept { return placeAtOrBefore(at - 1); }

bool IndexPage::isAbove(const IndexPage& child) const noexcept {
    if (level() == 0)
        return true;
    const bool childKnown = child.isLeaf() || child.level() != 0;
    return childKnown ? level() == child.level() + 1 : level() > 1;
}

std::size_t IndexPage::indexOf(std::size_t at) const noexcept {
    std::size_t index = 0;
    for (std::size_t place = 0; place < at; place = after(place))
        ++index;
    return index;
}

std::span<const std::byte> IndexPage::bytesOf(std::size_t at, std::size_t end,
                                              EntryBuffer& buffer) const noexcept {
    const std::byte* data = entries();
    if (at == 0 || prefix_ == 0)
        return {data + at, end - at};
    std::memcpy(buffer.data(), data, prefix_);
    std::memcpy(buffer.data() + prefix_, data + at, end - at);
    return {buffer.data(), prefix_ + (end - at)};
}

void IndexPage::copy(std::size_t at, std::size_t end, Bytes& into) const {
    const std::byte* data = entries();
    const std::size_t prefix = at == 0 ? 0 : prefix_;
    into.resize(prefix + (end - at));
    std::memcpy(into.data(), data, prefix);
    std::memcpy(into.data() + prefix, data + at, end - at);
}

IndexEntry IndexPage::fields(std::span<const std::byte> bytes) const {
    if (bytes.size() < fieldsSize())
        corrupt(page_, "uma entrada do índice é curta demais");
    const std::size_t keySize = bytes.size() - fieldsSize();
    const std::byte* row = bytes.data() + keySize;
    return {
        {bytes.first(keySize), bigEndian(row)},
        static_cast<PageNo>(isLeaf() ? 0 : bigEndian(row + kEntryRowSize))
    };
}

IndexEntry IndexPage::entry(std::size_t at, EntryBuffer& buffer) const {
    return fields(bytesOf(at, after(at), buffer));
}

std::size_t IndexPage::lowerBound(const IndexPoint& point) const {
    // What the entries share is compared once.
    const std::size_t common = std::min<std::size_t>(prefix_, point.key.size());
    const int ofPrefix = common == 0 ? 0 : std::memcmp(entries(), point.key.data(), common);
    const IndexPoint rest{point.key.subspan(common), point.row};
    const auto isBefore = [&](std::size_t at, std::size_t end) {
        EntryBuffer buffer;
        // Where the prefix reaches beyond the key sought, or into an entry's fields, all counts.
        if (at == 0 || common < prefix_ || end - at < fieldsSize())
            return std::is_lt(compare(fields(bytesOf(at, end, buffer)).point, point));
        return ofPrefix != 0 ? ofPrefix < 0
                             : std::is_lt(compare(fields({entries() + at, end - at}).point, rest));
    };
    // Halves the bytes, not the entries: any offset leads to the entry it lies in by the mask
    // alone.
    std::size_t low = 0;
    std::size_t high = used_;
    while (low < high) {
        const std::size_t at = placeAtOrBefore(low + (high - low) / 2);
        const std::size_t end = after(at);
        if (isBefore(at, end))
            low = end;
        else
            high = at;
    }
    return low;
}

PageNo IndexPage::child(std::size_t at) const {
    if (at == used_ && tail() != PageNo{})
        return tail();
    if (used_ == 0)
        corrupt(page_, "um nó do índice não tem filhos");
    EntryBuffer buffer;
    return entry(at == used_ ? before(at) : at, buffer).child;
}

bool IndexPage::hasRoom(std::size_t at, std::span<const std::byte> entry) const noexcept {
    const std::size_t room = format_->indexCapacity() - used_;
    if (prefix_ == 0)
        return entry.size() <= room;
    // Whoever isn't the first must keep a byte of its own beside the prefix.
    const bool shares =
        at == 0 ? entry.size() >= prefix_ && after(0) > prefix_ : entry.size() > prefix_;
    return shares && entry.size() - prefix_ <= room &&
           std::memcmp(entry.data(), entries(), prefix_) == 0;
}

} // namespace jet
