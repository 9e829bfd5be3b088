#pragma once

#include "jet/page/ByteView.h"
#include "jet/page/Format.h"

#include <array>

namespace jet {

/// A point in the order of an index: key bytes as unsigned numbers, a proper prefix first; then the
/// row. `row` is the row as the one number that packed() makes of it: one more than a row's number
/// is the point right after that row.
struct IndexPoint {
    std::span<const std::byte> key;
    std::uint64_t row{};
};

[[nodiscard]] std::strong_ordering compare(const IndexPoint& a, const IndexPoint& b) noexcept;

/// Bytes of an entry behind its key: the row and, in a node, the child page.
inline constexpr std::size_t kEntryRowSize = 4;
inline constexpr std::size_t kEntryChildSize = 4;
inline constexpr PageNo kNoPage{};

/// An entry of a page, rebuilt whole and cut into its fields.
struct IndexEntry {
    IndexPoint point;
    PageNo child{}; ///< of a node's entry
};

/// Where an entry is put together when it doesn't stand in the page whole.
using EntryBuffer = std::array<std::byte, kJet4Format.pageSize>;

/// One page of an index, read where it stands: nothing is copied or decoded ahead of need. The
/// bytes must outlive it.
///
/// Its fields are told in IndexPageLayout. The level is 0 for leaves, 1 above them, ...; some
/// writers leave it 0 everywhere. The shared prefix are the bytes of the first entry that all the
/// others lack. Bit k of the mask is set when an entry ends at offset k of the entries, which have
/// no gaps; the tail child of a node is the child after all entries.
///
/// An entry is key bytes, page (3) and slot (1) of the row, and in a node the child page (4), all
/// big-endian. Entries are known by their place: the offset in the data where they begin, from 0 to
/// used(), which is the place after the last one.
class IndexPage {
public:
    /// More than a file of the largest size can fill.
    static constexpr unsigned kMaxLevel = 31;

    IndexPage() = default;
    /// @throws Error{corrupt} if flaw() finds one.
    [[nodiscard]] static IndexPage open(const Format& format, ByteView page, PageNo owner);
    /// What is wrong with kind, owner, level, mask or prefix, in Portuguese; null if nothing is.
    [[nodiscard]] static const char* flaw(const Format& format, ByteView page,
                                          PageNo owner) noexcept;

    [[nodiscard]] PageNo page() const noexcept { return page_; }
    [[nodiscard]] bool isLeaf() const noexcept {
        return load(bytes_, PageHead::kind) == PageKind::indexLeaf;
    }
    /// 0 for leaves, and for nodes of a writer that left the field out.
    [[nodiscard]] unsigned level() const noexcept { return load(bytes_, layout().level); }
    /// 0 for none.
    [[nodiscard]] PageNo previous() const noexcept { return load(bytes_, layout().previous); }
    [[nodiscard]] PageNo next() const noexcept { return load(bytes_, layout().next); }
    [[nodiscard]] PageNo tail() const noexcept { return load(bytes_, layout().tail); }
    [[nodiscard]] std::size_t used() const noexcept { return used_; }
    [[nodiscard]] bool empty() const noexcept { return used_ == 0; }
    [[nodiscard]] std::size_t prefix() const noexcept { return prefix_; }
    [[nodiscard]] std::size_t freeField() const noexcept;

    /// The place after the entry at `at`, which must be less than used().
    [[nodiscard]] std::size_t after(std::size_t at) const noexcept;
    /// The place of the entry that ends at `at`, which must be more than 0.
    [[nodiscard]] std::size_t before(std::size_t at) const noexcept;

    /// How many entries stand before the place `at`.
    [[nodiscard]] std::size_t indexOf(std::size_t at) const noexcept;

    /// The bytes of the entry from `at` to `end`: in the page, or in `buffer` if it lacks the
    /// prefix.
    [[nodiscard]] std::span<const std::byte> bytesOf(std::size_t at, std::size_t end,
                                                     EntryBuffer& buffer) const noexcept;
    /// The same bytes, copied.
    void copy(std::size_t at, std::size_t end, Bytes& into) const;
    /// The entry at `at`. It lives as long as the page and `buffer`.
    /// @throws Error{corrupt} if it is too short for its fields.
    [[nodiscard]] IndexEntry entry(std::size_t at, EntryBuffer& buffer) const;
    /// The same for an entry's bytes.
    [[nodiscard]] IndexEntry fields(std::span<const std::byte> bytes) const;
    /// Whether this node may be the parent of `child` by what the level fields of the two say.
    [[nodiscard]] bool isAbove(const IndexPage& child) const noexcept;
    /// What every entry holds beside its key, in bytes.
    [[nodiscard]] std::size_t fieldsSize() const noexcept {
        return isLeaf() ? kEntryRowSize : kEntryRowSize + kEntryChildSize;
    }

    /// The first place whose entry is not before `point`; used() if there is none.
    [[nodiscard]] std::size_t lowerBound(const IndexPoint& point) const;
    /// The child of the entry at `at`, or the tail child at used(). A node without a tail child
    /// stands for one whose last entry has no upper end.
    /// @throws Error{corrupt} if there is none.
    [[nodiscard]] PageNo child(std::size_t at) const;
    /// Whether a whole entry fits at place `at` as the page is packed now.
    [[nodiscard]] bool hasRoom(std::size_t at, std::span<const std::byte> entry) const noexcept;

private:
    friend class IndexPageEditor;
    /// Looks at mask and prefix, and trusts them.
    IndexPage(const Format& format, ByteView page) noexcept;
    [[nodiscard]] const char* flaw(PageNo owner) const noexcept;
    [[nodiscard]] const IndexPageLayout& layout() const noexcept { return format_->indexPage; }
    [[nodiscard]] const std::byte* mask() const noexcept { return bytes_ + layout().mask.at; }
    [[nodiscard]] const std::byte* entries() const noexcept { return bytes_ + layout().entries; }
    [[nodiscard]] std::size_t placeAtOrBefore(std::size_t at) const noexcept;

    const Format* format_ = nullptr;
    const std::byte* bytes_ = nullptr;
    PageNo page_{};
    std::uint16_t used_ = 0;
    std::uint16_t prefix_ = 0;
};

} // namespace jet
