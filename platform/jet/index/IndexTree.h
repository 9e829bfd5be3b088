#pragma once

#include "jet/index/IndexPage.h"
#include "jet/page/UsageMap.h"

#include <functional>

namespace jet {

class IndexPageEditor;

/// The pages of one index: a tree of entries (key bytes, row), ordered by key bytes as unsigned
/// numbers (a proper prefix first) and then by row.
///
/// The root page never changes during the life of an index. Leaves are linked both ways. A
/// separator in a node is never smaller than any entry of its child, but may be larger.
///
/// What is read is checked on the way (kind, owner, level, page inside the file, no page met twice,
/// entries inside the page): Error{corrupt} naming the page. A change that throws may have been
/// done in part: it has to be inside a Pager::Statement or a transaction that is then undone.
class IndexTree {
    /// A leaf, and a place on it.
    struct Place {
        PageRef ref;
        IndexPage page;
        std::size_t at = 0;
    };

public:
    /// `owner` is the definition page of the table, `map` the set of pages of this tree.
    IndexTree(Pager& pager, PageNo owner, PageNo root, RowId map) noexcept
        : pager_(&pager), owner_(owner), root_(root), map_(pager, map) {}

    /// Takes a page for the root of a new, empty tree and puts it into `map`.
    [[nodiscard]] static PageNo create(Pager& pager, PageAllocator& pages, PageNo owner, RowId map);

    [[nodiscard]] PageNo root() const noexcept { return root_; }
    [[nodiscard]] const UsageMap& map() const noexcept { return map_; }
    /// The tree is the table's no more: from now on whoever walks it is told so.
    void lose(const Error& why) noexcept { lost_ = why; }

    /// Requires an open transaction.
    /// @throws Error{corrupt} if the entry is there already, Error{tooLong} if the key leaves no
    ///         room for two entries on a page.
    void insert(PageAllocator& pages, std::span<const std::byte> key, RowId row);
    /// Requires an open transaction.
    /// @throws Error{corrupt} if there is no such entry: the index doesn't agree with the rows.
    void erase(PageAllocator& pages, std::span<const std::byte> key, RowId row);
    /// Whether an entry with exactly this key is there, one of row `except` not counted.
    [[nodiscard]] bool hasKey(std::span<const std::byte> key,
                              std::optional<RowId> except = std::nullopt) const;
    [[nodiscard]] bool contains(std::span<const std::byte> key, RowId row) const;
    /// About how large a part of all entries, 0 to 1, comes before a key: as the pages on the way
    /// to it tell, taking all the others for equally full.
    [[nodiscard]] double partBefore(std::span<const std::byte> key) const;

    /// Walks the entries in order, both ways. Remembers the entry it stands on, so it goes on from
    /// there when the tree has changed meanwhile, even if that very entry has gone.
    class Cursor {
    public:
        /// Stands before the first entry.
        explicit Cursor(const IndexTree& tree) : tree_(&tree) {}

        /// Each moves and says whether there is an entry. Past either end there is none: next()
        /// after the end, or previous() before the beginning, stays there; previous() after the end
        /// goes to the last entry, next() before the beginning to the first.
        bool first();
        bool last();
        bool next();
        bool previous();
        /// To the first entry that is not before (key, row).
        bool seek(std::span<const std::byte> key, RowId row = {});
        /// To the last entry that is before (key, row).
        bool seekBefore(std::span<const std::byte> key, RowId row = {});

        [[nodiscard]] bool valid() const noexcept { return stands_ == Stands::on; }
        /// Of the entry it stands on; requires valid(). Until the next move.
        [[nodiscard]] std::span<const std::byte> key() const noexcept { return point().key; }
        [[nodiscard]] RowId row() const noexcept { return row_; }

    private:
        enum class Stands : std::uint8_t { before, on, after };
        /// How the entry arrived at must compare with the one the cursor comes from.
        enum class Order : std::uint8_t { any, greater, less };

        bool forward(Order order);
        bool backward(Order order);
        bool arrive(Order order);
        [[nodiscard]] bool current();
        [[nodiscard]] IndexPoint point() const noexcept {
            return {std::span(entry_).first(keySize_), static_cast<std::uint64_t>(packed(row_))};
        }

        const IndexTree* tree_;
        Stands stands_ = Stands::before;
        // The entry, and the memory of the one before, which serves the next.
        Bytes entry_;
        Bytes spare_;
        std::size_t keySize_ = 0;
        RowId row_{};
        // Where the entry was found and where it ends, true while current() says so.
        Place place_;
        std::size_t end_ = 0;
        std::uint64_t generation_ = 0;
    };

    /// What a complete walk over the tree finds; for `check`. `problem(page, reason)` is called for
    /// every violation of the layout, of the order, of the links, levels, separators, free-byte
    /// fields and of the map; `entry(key, row)` for every entry in order. Never throws for damage.
    struct Visitor {
        std::function<void(PageNo, const std::string&)> problem;
        std::function<void(std::span<const std::byte>, RowId)> entry;
    };
    void verify(const Visitor& visitor) const;

private:
    /// The pages from the root down to a leaf, each with the place where the way goes on.
    struct Step {
        PageNo page{};
        std::size_t at = 0;
    };
    struct Path {
        std::array<Step, IndexPage::kMaxLevel + 1> steps;
        std::size_t count = 0;
        bool incomplete = false; ///< a node lacks level or tail child, as other writers leave them
        bool found = false;      ///< the leaf's place holds the very entry
        [[nodiscard]] const Step& leaf() const noexcept { return steps[count - 1]; }
    };
    struct Split;

    [[nodiscard]] Place open(PageNo page) const;
    [[nodiscard]] Place openLeaf(PageNo page) const;
    [[nodiscard]] Place openChild(const Place& parent, std::size_t at, std::size_t depth) const;
    [[nodiscard]] Place lowerBound(const IndexPoint& point) const;
    [[nodiscard]] Place end() const;
    // To the neighbour, over empty leaves. `passed` counts the leaves of a walk over several.
    bool toNextLeaf(Place& place) const;
    bool toNextLeaf(Place& place, std::uint32_t& passed) const;
    bool toPreviousLeaf(Place& place) const;
    void checkChain(PageNo leaf, std::uint32_t& passed) const;

    [[nodiscard]] IndexPageEditor edit(PageNo page) const;
    [[nodiscard]] Path descend(const IndexPoint& point) const;
    void complete(const Path& path) const;
    void makeRoom(PageAllocator& pages, const Path& path, const IndexPoint& point);
    [[nodiscard]] Split planSplit(const Step& step, const IndexPoint& point) const;
    void split(PageAllocator& pages, const Step& parent, PageNo page, const Split& plan);
    void growRoot(PageAllocator& pages);
    void removePage(PageAllocator& pages, const Path& path);
    [[nodiscard]] bool removeChild(const Step& parent) const;
    void unlink(PageNo page) const;

    Pager* pager_;
    PageNo owner_;
    PageNo root_;
    UsageMap map_;
    std::optional<Error> lost_;
};

} // namespace jet
