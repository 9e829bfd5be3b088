#pragma once

#include "jet/disk/File.h"
#include "jet/page/ByPage.h"
#include "jet/page/ByteView.h"
#include "jet/page/Format.h"
#include "jet/page/PageLog.h"
#include "jet/page/Turns.h"

#include <memory>
#include <memory_resource>
#include <optional>

namespace jet {

using PageImage = std::pmr::vector<std::byte>;

/// A page as it was when it was read. Later changes of the page don't reach it, and it outlives its
/// place in the cache: that is why the image is shared.
class PageRef {
public:
    PageRef() = default;
    PageRef(PageNo page, std::shared_ptr<const PageImage> image) noexcept
        : page_(page), image_(std::move(image)) {}

    [[nodiscard]] PageNo page() const noexcept { return page_; }
    [[nodiscard]] std::span<const std::byte> bytes() const noexcept { return *image_; }
    [[nodiscard]] ByteView view() const noexcept { return {*image_, page_}; }
    [[nodiscard]] PageKind kind() const noexcept { return static_cast<PageKind>((*image_)[0]); }
    explicit operator bool() const noexcept { return image_ != nullptr; }

private:
    PageNo page_{};
    std::shared_ptr<const PageImage> image_;
};

/// The pages of one file, and the changes to them that nobody else has seen yet.
///
/// Invariants, between any two calls:
///  1. A page is in changed_ exactly when the open transaction has called change() or append() on
///  it.
///  2. Only commit() writes to the file.
///  3. cache_ holds pages as they are in the file, at most kCacheBytes of them. Somebody who heeds
///     no lock may have made that untrue: so no change is ever made from a cached page that hasn't
///     been compared with the file's since claim(), and none is written over a page that has become
///     another since the change began.
class Pager {
public:
    /// Takes over an open file whose first page has been checked. `writable` is whether change() is
    /// allowed at all.
    Pager(File file, const Format& format, bool writable);
    /// From now on the file is read and written as agreed with the other stations; without that
    /// pages are written in place at once, as suits a file that nobody knows yet.
    void share(Turns& turns) noexcept { turns_ = &turns; }
    [[nodiscard]] File& file() noexcept { return file_; }

    [[nodiscard]] const Format& format() const noexcept { return format_; }
    [[nodiscard]] bool writable() const noexcept { return writable_; }
    /// Pages of the file, those appended by the open transaction included.
    [[nodiscard]] std::uint32_t pageCount() const noexcept { return pageCount_; }
    /// Grows whenever the content of any page may have become another: cursors compare it to know
    /// that what they remember of a page has to be read again.
    [[nodiscard]] std::uint64_t generation() const noexcept { return generation_; }

    /// The file has been changed by another, in these pages at most if they are given: all that is
    /// remembered of it goes. Not inside a transaction that has changed something.
    void refresh(const std::optional<std::vector<PageNo>>& changed = std::nullopt);

    /// How often refresh() was called.
    [[nodiscard]] std::uint64_t refreshes() const noexcept { return refreshes_; }

    /// While one lives nothing in the file changes but by us: what is read inside fits together.
    /// They nest; the outermost costs a look at the lock file.
    /// @throws as Turns::beginReading().
    class Section {
    public:
        enum class Kind : std::uint8_t { once, repeatable };
        explicit Section(Pager& pager, Kind kind = Kind::once);
        Section(const Section&) = delete;
        Section& operator=(const Section&) = delete;
        ~Section();

    private:
        Turns* turns_;
    };
    /// What `body` finds in the file, all of one state. It may be called again, if a foreign
    /// program has written meanwhile; so it must begin anew each time.
    template <class Body>
    decltype(auto) onSnapshot(Body&& body) {
        if (!opensSection())
            return body();
        for (int attempt = 1;; ++attempt) {
            try {
                const Section section(*this, Section::Kind::repeatable);
                mayBreathe_ = attempt <= kBreathingAttempts;
                return body();
            } catch (const Error&) {
                if (!disturbed(attempt))
                    throw;
            }
        }
    }

    /// In the middle of an onSnapshot() that takes long: lets other stations write that wait for it
    /// to end. If one does, it begins anew; after some times it holds the file to its end.
    void breathe() noexcept;
    /// Whether what has failed in an onSnapshot() is begun anew by it.
    [[nodiscard]] bool isDisturbed() const { return turns_ && turns_->disturbed(); }
    /// Whether another station waits for a section to end. @throws Error{io}.
    [[nodiscard]] bool keepsWriterWaiting() { return turns_ && turns_->keepsWriterWaiting(); }

    /// @throws Error{corrupt} if the file has no such page, Error{io} if it can't be read.
    [[nodiscard]] PageRef read(PageNo page);
    /// The same of the first of `count` pages that will all be asked for, in this order: so that
    /// one call of the system fetches many. `count` is at most kMostAhead.
    [[nodiscard]] PageRef readAhead(PageNo first, std::uint32_t count);
    static constexpr std::uint32_t kMostAhead = 4; ///< what the processor's own cache has room for

    /// So many pages from `first` on as `into` has room for, all of the file; what the cache has
    /// and lacks stays as it is. @throws as the other read().
    void read(PageNo first, std::span<std::byte> into);
    /// What has become another of all that read() gives.
    [[nodiscard]] PageLog& log() noexcept { return log_; }

    /// The page's bytes, to be changed in place until the next call of any function of the pager.
    /// Requires an open transaction.
    [[nodiscard]] std::span<std::byte> change(PageNo page);
    /// A new page of zeros at the end of the file. Requires an open transaction.
    /// @throws Error{full} at the largest size the format allows.
    [[nodiscard]] PageNo append();

    [[nodiscard]] bool inTransaction() const noexcept { return inTransaction_; }
    void begin();
    /// Nobody of us changes the file from here on but us: see Turns::beginWriting(), whose errors
    /// it throws. Requires that nothing has been changed yet, unless it has been called before.
    /// @throws also Error{conflict} if the file has got another length, told to nobody.
    void claim();
    /// Writes every changed page and returns when the disk has them.
    /// @throws Error{full, io, locked, conflict}: nothing has been written, and the transaction is
    ///         still open.
    void commit();
    /// No effect outside a transaction.
    void rollback() noexcept;

    /// Undoes what has been changed while it lived, if it isn't kept: a transaction goes on after a
    /// statement that failed as if that statement had never begun. They nest: what an inner one
    /// keeps the outer may still undo. The transaction's end ends all of them.
    class Statement {
    public:
        explicit Statement(Pager& pager);
        Statement(const Statement&) = delete;
        Statement& operator=(const Statement&) = delete;
        ~Statement();
        void keep();

    private:
        Pager& pager_;
        std::size_t depth_; ///< of those outside it
    };
    /// Whether the open transaction has changed anything.
    [[nodiscard]] bool hasChanges() const noexcept { return !changed_.empty(); }

private:
    /// Since a page came into the cache, or was last spared.
    enum class Use : std::uint8_t {
        ahead, ///< nobody has asked for it yet
        once,
        again
    };
    struct Cached {
        PageNo page;
        std::shared_ptr<PageImage> image;
        std::uint64_t claim; ///< during which it was last known to be the file's
        Use use;
    };
    struct Changed {
        PageNo page;
        std::shared_ptr<PageImage> image;
        std::uint64_t origin;  ///< checksum of what it was made from; of an appended one nothing
        std::uint64_t keptFor; ///< the last statement, by number, that can put back what was before
    };
    struct Before {
        PageNo page;
        std::shared_ptr<PageImage> image; ///< null: not changed before
        std::uint64_t keptFor;
    };
    struct Undo {
        std::uint64_t statement; ///< its number: they are counted from 1
        std::uint32_t pageCount;
        std::vector<Before> before; ///< each page changed since, as it was
    };
    static constexpr int kBreathingAttempts = 3;

    [[nodiscard]] PageRef readCommitted(PageNo page);
    [[nodiscard]] std::shared_ptr<PageImage> newImage() const;
    [[nodiscard]] std::shared_ptr<PageImage> image();
    [[nodiscard]] std::shared_ptr<PageImage> copyOf(std::span<const std::byte> page);
    void giveBack(std::shared_ptr<PageImage> image) noexcept;
    void remember(PageNo page, std::shared_ptr<PageImage> image, Use use = Use::once);
    void fetchAhead(PageNo first, std::uint32_t count);
    [[nodiscard]] Cached& leastWanted() noexcept;
    [[nodiscard]] Cached& passedBy(PageNo page) noexcept;
    [[nodiscard]] std::uint64_t keepBefore(Before before);
    void requireStored(Cached& known);
    void requireUsable() const;
    [[nodiscard]] bool opensSection() const noexcept {
        return turns_ && !turns_->inSection() && !turns_->isWriting();
    }
    [[nodiscard]] bool disturbed(int attempt) const;
    [[nodiscard]] ChangedPages changedPages();

    File file_;
    Turns* turns_ = nullptr;
    const Format& format_;
    bool writable_;
    bool inTransaction_ = false;
    bool mayBreathe_ = true; ///< in the onSnapshot() at work
    std::uint32_t pageCount_;
    std::uint32_t committedPageCount_;
    PageLog log_;
    std::uint64_t generation_ = 1;
    std::uint64_t refreshes_ = 0;
    std::uint64_t claims_ = 0;

    ByPage<Changed> changed_;
    std::vector<Undo> undo_; ///< of the statements at work, the innermost last
    std::uint64_t statements_ = 0;

    ByPage<Cached> cache_;
    std::uint32_t hand_ = 0; ///< the place where the next one to go is looked for
    /// Images that nobody looks at any more, for the next pages: a scan passes thousands, and a
    /// purge changes some pages with each row.
    std::vector<std::shared_ptr<PageImage>> spares_;
    std::vector<std::byte> ahead_; ///< what readAhead() reads into
    /// The last pages that it has fetched into a full cache, and where the next one's number goes.
    std::vector<PageNo> passing_;
    std::size_t passingAt_ = 0;
};

} // namespace jet
