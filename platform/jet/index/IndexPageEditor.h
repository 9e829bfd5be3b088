#pragma once

#include "jet/index/IndexPage.h"

namespace jet {

/// Entries written out whole, in order: what a page is taken apart into when its entries have to be
/// packed anew.
class IndexEntries {
public:
    explicit IndexEntries(const IndexPage& page);

    [[nodiscard]] std::size_t count() const noexcept { return ends_.size(); }
    [[nodiscard]] std::span<const std::byte> operator[](std::size_t index) const noexcept {
        return {bytes_.data() + sizeBefore(index), ends_[index] - sizeBefore(index)};
    }
    /// Bytes of all entries before `index`.
    [[nodiscard]] std::size_t sizeBefore(std::size_t index) const noexcept {
        return index == 0 ? 0 : ends_[index - 1];
    }
    void insert(std::size_t index, std::span<const std::byte> entry);

private:
    Bytes bytes_;
    std::vector<std::size_t> ends_;
};

/// Changes an index page in place. Mask, prefix and free bytes follow from the entries.
class IndexPageEditor {
public:
    /// Of bytes that are an index page already.
    /// @throws Error{corrupt} as IndexPage does.
    IndexPageEditor(const Format& format, std::span<std::byte> bytes, PageNo page, PageNo owner);
    /// Makes the bytes an empty index page without links and children.
    static void makeEmpty(const Format& format, std::span<std::byte> bytes, PageNo owner,
                          unsigned level) noexcept;

    [[nodiscard]] const IndexPage& page() const noexcept { return page_; }

    void setPrevious(PageNo page) noexcept;
    void setNext(PageNo page) noexcept;
    void setTail(PageNo page) noexcept;
    void setLevel(unsigned level) noexcept;
    /// Of the entry at `at`, or the tail child at used().
    /// @throws Error{corrupt} if the entry has no bytes of its own for it.
    void setChild(std::size_t at, PageNo child);

    /// Puts a whole entry at place `at`. A leaf without room for it is packed with a shared prefix
    /// if that makes room. Nodes aren't: no other writer of the format is known to.
    /// @return false, and nothing has changed, if there is no room.
    [[nodiscard]] bool insert(std::size_t at, std::span<const std::byte> entry);
    void erase(std::size_t at);

    /// Replaces all entries by those of `entries` from `first` to before `last`, with no prefix if
    /// they fit without; else one within the key; else, when `intoRow`, one that goes on into
    /// the row, as pages of other writers have it.
    /// @return false, and nothing has changed, if they don't fit.
    [[nodiscard]] bool assign(const IndexEntries& entries, std::size_t first, std::size_t last,
                              bool intoRow);

private:
    void setUsed(std::size_t used, std::size_t prefix) noexcept;
    [[nodiscard]] std::byte* mask() const noexcept {
        return bytes_.data() + format_.indexPage.mask.at;
    }
    [[nodiscard]] std::byte* data() const noexcept {
        return bytes_.data() + format_.indexPage.entries;
    }

    const Format& format_;
    std::span<std::byte> bytes_;
    IndexPage page_;
};

} // namespace jet
