#include "jet/index/IndexPageEditor.h"

#include <algorithm>

namespace jet {

namespace {

std::uint64_t below(std::size_t bit) noexcept { return (std::uint64_t{1} << bit) - 1; }

/// The mask of a page, taken out of it to be shifted as one long number.
class Mask {
public:
    Mask(std::byte* at, std::size_t size) noexcept : at_(at), size_(size), count_((size + 7) / 8) {
        words_[count_ - 1] = 0;
        std::memcpy(words_.data(), at, size);
    }
    void store() const noexcept { std::memcpy(at_, words_.data(), size_); }

    void set(std::size_t bit) noexcept { words_[bit / 64] |= std::uint64_t{1} << (bit % 64); }
    void clear(std::size_t bit) noexcept { words_[bit / 64] &= ~(std::uint64_t{1} << (bit % 64)); }

    /// The bits from `from` on move up by `by`, and zeros come in behind them.
    void moveUp(std::size_t from, std::size_t by) noexcept {
        const std::size_t first = from / 64;
        const std::size_t words = by / 64;
        const std::size_t bits = by % 64;
        const std::uint64_t kept = words_[first] & below(from % 64);
        words_[first] &= ~below(from % 64);
        for (std::size_t i = count_; i-- > first;) {
            std::uint64_t word = i >= first + words ? words_[i - words] << bits : 0;
            if (bits != 0 && i > first + words)
                word |= words_[i - words - 1] >> (64 - bits);
            words_[i] = word;
        }
        words_[first] |= kept;
    }

    /// The bits from `from` on move down by `by`, over the ones that were there.
    void moveDown(std::size_t from, std::size_t by) noexcept {
        const std::size_t to = from - by;
        const std::size_t words = by / 64;
        const std::size_t bits = by % 64;
        const std::uint64_t kept = words_[to / 64] & below(to % 64);
        for (std::size_t i = to / 64; i < count_; ++i) {
            std::uint64_t word = i + words < count_ ? words_[i + words] >> bits : 0;
            if (bits != 0 && i + words + 1 < count_)
                word |= words_[i + words + 1] << (64 - bits);
            words_[i] = word;
        }
        words_[to / 64] = (words_[to / 64] & ~below(to % 64)) | kept;
    }

private:
    std::byte* at_;
    std::size_t size_;
    std::size_t count_;
    std::array<std::uint64_t, 64> words_;
};

std::size_t commonLength(std::span<const std::byte> a, std::span<const std::byte> b) noexcept {
    const auto end = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first;
    return static_cast<std::size_t>(end - a.begin());
}

} // namespace

IndexEntries::IndexEntries(const IndexPage& page) {
    EntryBuffer buffer;
    for (std::size_t at = 0; at < page.used();) {
        const std::size_t end = page.after(at);
        const std::span<const std::byte> entry = page.bytesOf(at, end, buffer);
        static_cast<void>(page.fields(entry)); // refuses an entry that is too short for them
        bytes_.insert(bytes_.end(), entry.begin(), entry.end());
        ends_.push_back(bytes_.size());
        at = end;
    }
}

void IndexEntries::insert(std::size_t index, std::span<const std::byte> entry) {
    const std::size_t at = sizeBefore(index);
    bytes_.insert(bytes_.begin() + static_cast<std::ptrdiff_t>(at), entry.begin(), entry.end());
    ends_.insert(ends_.begin() + static_cast<std::ptrdiff_t>(index), at);
    for (std::size_t i = index; i < ends_.size(); ++i)
        ends_[i] += entry.size();
}

IndexPageEditor::IndexPageEditor(const Format& format, std::span<std::byte> bytes, PageNo page,
                                 PageNo owner)
    : format_(format), bytes_(bytes), page_(IndexPage::open(format, {bytes, page}, owner)) {}

void IndexPageEditor::makeEmpty(const Format& format, std::span<std::byte> bytes, PageNo owner,
                                unsigned level) noexcept {
    std::fill(bytes.begin(), bytes.end(), std::byte{});
    const PageKind kind = level == 0 ? PageKind::indexLeaf : PageKind::indexNode;
    const IndexPageLayout& layout = format.indexPage;
    startPage(bytes.data(), kind);
    store(bytes.data(), layout.freeBytes, static_cast<std::uint16_t>(format.indexCapacity()));
    store(bytes.data(), layout.owner, owner);
    store(bytes.data(), layout.level, static_cast<std::uint8_t>(level));
}

void IndexPageEditor::setPrevious(PageNo page) noexcept {
    store(bytes_.data(), format_.indexPage.previous, page);
}

void IndexPageEditor::setNext(PageNo page) noexcept {
    store(bytes_.data(), format_.indexPage.next, page);
}

void IndexPageEditor::setTail(PageNo page) noexcept {
    store(bytes_.data(), format_.indexPage.tail, page);
}

void IndexPageEditor::setLevel(unsigned level) noexcept {
    store(bytes_.data(), format_.indexPage.level, static_cast<std::uint8_t>(level));
}

void IndexPageEditor::setChild(std::size_t at, PageNo child) {
    if (at == page_.used())
        return setTail(child);
    const std::size_t end = page_.after(at);
    if (end - at < kEntryChildSize)
        corrupt(page_.page(), "o prefixo do índice entra no ponteiro de um filho");
    for (std::size_t i = 0; i < kEntryChildSize; ++i)
        data()[end - 1 - i] = static_cast<std::byte>(number(child) >> (8 * i));
}

void IndexPageEditor::setUsed(std::size_t used, std::size_t prefix) noexcept {
    page_.used_ = static_cast<std::uint16_t>(used);
    page_.prefix_ = static_cast<std::uint16_t>(prefix);
    store(bytes_.data(), format_.indexPage.freeBytes,
          static_cast<std::uint16_t>(format_.indexCapacity() - used));
    store(bytes_.data(), format_.indexPage.prefix, prefix);
}

bool IndexPageEditor::insert(std::size_t at, std::span<const std::byte> entry) {
    if (!page_.hasRoom(at, entry)) {
        if (!page_.isLeaf())
            return false;
        IndexEntries entries(page_);
        entries.insert(page_.indexOf(at), entry);
        return assign(entries, 0, entries.count(), false);
    }

    // A new first entry stands whole and takes over the prefix bytes of the one that was first.
    const std::size_t used = page_.used();
    const std::size_t prefix = page_.prefix();
    const std::size_t grown = entry.size() - prefix;
    const std::span<const std::byte> own = at == 0 ? entry : entry.subspan(prefix);
    const std::size_t behind = at == 0 ? prefix : at;
    std::memmove(data() + behind + grown, data() + behind, used - behind);
    std::memcpy(data() + at, own.data(), own.size());
    if (at == used) {
        const std::size_t end = used + grown;
        mask()[end / 8] |= static_cast<std::byte>(1U << (end % 8));
    } else {
        Mask ends(mask(), format_.indexPage.mask.size);
        ends.moveUp(at + 1, grown);
        ends.set(at + own.size());
        ends.store();
    }
    setUsed(used + grown, prefix);
    return true;
}

void IndexPageEditor::erase(std::size_t at) {
    // The entry after the first becomes the first: the prefix stays, as the start of that one.
    const std::size_t used = page_.used();
    const std::size_t end = page_.after(at);
    const std::size_t from = at == 0 && end < used ? page_.prefix() : at;
    std::memmove(data() + from, data() + end, used - end);
    Mask ends(mask(), format_.indexPage.mask.size);
    ends.clear(end);
    ends.moveDown(end + 1, end - from);
    ends.store();
    const std::size_t left = used - (end - from);
    setUsed(left, left == 0 ? 0 : page_.prefix());
}

bool IndexPageEditor::assign(const IndexEntries& entries, std::size_t first, std::size_t last,
                             bool intoRow) {
    const std::size_t whole = entries.sizeBefore(last) - entries.sizeBefore(first);
    const std::size_t count = last - first;
    const auto fits = [&](std::size_t prefix) {
        return count == 0 || whole - prefix * (count - 1) <= format_.indexCapacity();
    };
    std::size_t prefix = 0;
    if (!fits(prefix)) {
        const std::span<const std::byte> model = entries[first];
        std::size_t common = model.size();
        std::size_t withinKey = model.size() - page_.fieldsSize();
        for (std::size_t i = first + 1; i < last; ++i) {
            const std::span<const std::byte> entry = entries[i];
            common = std::min({common, commonLength(model, entry), entry.size() - 1});
            withinKey = std::min(withinKey, entry.size() - page_.fieldsSize());
        }
        const std::size_t most = format_.indexPage.prefix.size == 1 ? 0xFF : 0xFFFF;
        prefix = std::min({common, withinKey, most});
        if (!fits(prefix) && intoRow)
            prefix = std::min(common, most);
        if (!fits(prefix))
            return false;
    }

    std::memset(mask(), 0, format_.indexPage.mask.size);
    std::size_t at = 0;
    for (std::size_t i = first; i < last; ++i) {
        const std::span<const std::byte> entry = entries[i];
        const std::span<const std::byte> own = i == first ? entry : entry.subspan(prefix);
        std::memcpy(data() + at, own.data(), own.size());
        at += own.size();
        mask()[at / 8] |= static_cast<std::byte>(1U << (at % 8));
    }
    setUsed(at, prefix);
    return true;
}

} // namespace jet
