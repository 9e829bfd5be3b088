#include "jet/index/IndexTree.h"

#include "jet/index/IndexPageEditor.h"

#include <algorithm>

namespace jet {

namespace {

IndexPoint pointOf(std::span<const std::byte> key, RowId row) noexcept {
    return {key, static_cast<std::uint64_t>(packed(row))};
}

std::byte* putBigEndian(std::byte* at, std::uint32_t value) noexcept {
    for (const int shift : {24, 16, 8, 0})
        *at++ = static_cast<std::byte>(value >> shift);
    return at;
}

/// The bytes of a leaf's entry.
std::span<const std::byte> leafEntry(const IndexPoint& point, EntryBuffer& buffer) noexcept {
    std::copy(point.key.begin(), point.key.end(), buffer.begin());
    putBigEndian(buffer.data() + point.key.size(), static_cast<std::uint32_t>(point.row));
    return std::span(buffer).first(point.key.size() + kEntryRowSize);
}

/// The bytes of a node's entry.
Bytes separatorOf(const IndexPoint& point, PageNo child) {
    Bytes entry(point.key.size() + kEntryRowSize + kEntryChildSize);
    std::copy(point.key.begin(), point.key.end(), entry.begin());
    std::byte* row =
        putBigEndian(entry.data() + point.key.size(), static_cast<std::uint32_t>(point.row));
    putBigEndian(row, number(child));
    return entry;
}

/// Whether two entries of this size fit on a page, so that every page can be split.
bool twoFit(const Format& format, std::size_t separatorSize) noexcept {
    return 2 * separatorSize <= format.indexCapacity();
}

/// The entry from which the second half of the bytes begins; leaves one on each side.
std::size_t middleOf(const IndexEntries& entries) noexcept {
    const std::size_t half = entries.sizeBefore(entries.count()) / 2;
    std::size_t middle = 1;
    while (middle + 1 < entries.count() && entries.sizeBefore(middle) < half)
        ++middle;
    return middle;
}

} // namespace

/// How a full page is to be parted.
struct IndexTree::Split {
    IndexEntries entries;
    std::size_t leftEnd;    ///< entries before this one stay
    std::size_t rightBegin; ///< this one and those after it go to the new page
    Bytes separator;        ///< what the parent gets, with the page itself as the child
    PageNo leftTail;        ///< of a node: the child of the entry that moves up
};

PageNo IndexTree::create(Pager& pager, PageAllocator& pages, PageNo owner, RowId map) {
    UsageMap members(pager, map);
    const PageNo root = pages.take(members);
    IndexPageEditor::makeEmpty(pager.format(), pager.change(root), owner, 0);
    return root;
}

IndexTree::Place IndexTree::open(PageNo page) const {
    if (lost_)
        throw *lost_;
    PageRef ref = pager_->read(page);
    const IndexPage opened = IndexPage::open(pager_->format(), ref.view(), owner_);
    return {std::move(ref), opened};
}

IndexTree::Place IndexTree::openLeaf(PageNo page) const {
    Place place = open(page);
    if (!place.page.isLeaf())
        corrupt(page, "era esperada uma folha do índice");
    return place;
}

/// `depth` is the child's, the root's being 0.
IndexTree::Place IndexTree::openChild(const Place& parent, std::size_t at,
                                      std::size_t depth) const {
    Place child = open(parent.page.child(at));
    if (!parent.page.isAbove(child.page))
        corrupt(child.page.page(), "o nível da página de índice não segue o da página acima");
    if (depth > IndexPage::kMaxLevel)
        corrupt(child.page.page(), "o índice tem níveis demais");
    return child;
}

IndexTree::Place IndexTree::lowerBound(const IndexPoint& point) const {
    Place place = open(root_);
    for (std::size_t depth = 1; !place.page.isLeaf(); ++depth)
        place = openChild(place, place.page.lowerBound(point), depth);
    place.at = place.page.lowerBound(point);
    // The separator may be larger than what its leaf holds now, and leaves may be empty.
    std::uint32_t passed = 0;
    while (place.at == place.page.used() && toNextLeaf(place, passed))
        place.at = place.page.lowerBound(point);
    return place;
}

IndexTree::Place IndexTree::end() const {
    Place place = open(root_);
    for (std::size_t depth = 1; !place.page.isLeaf(); ++depth)
        place = openChild(place, place.page.used(), depth);
    for (std::uint32_t passed = 0; toNextLeaf(place, passed);) {
    }
    place.at = place.page.used();
    return place;
}

bool IndexTree::toNextLeaf(Place& place) const {
    std::uint32_t passed = 0;
    return toNextLeaf(place, passed);
}

bool IndexTree::toNextLeaf(Place& place, std::uint32_t& passed) const {
    for (PageNo next = place.page.next(); next != kNoPage;) {
        Place found = openLeaf(next);
        checkChain(next, passed);
        if (!found.page.empty()) {
            place = std::move(found);
            return true;
        }
        next = found.page.next();
    }
    return false;
}

bool IndexTree::toPreviousLeaf(Place& place) const {
    std::uint32_t passed = 0;
    for (PageNo previous = place.page.previous(); previous != kNoPage;) {
        Place found = openLeaf(previous);
        checkChain(previous, passed);
        if (!found.page.empty()) {
            place = std::move(found);
            place.at = place.page.used();
            return true;
        }
        previous = found.page.previous();
    }
    return false;
}

void IndexTree::checkChain(PageNo leaf, std::uint32_t& passed) const {
    if (++passed > pager_->pageCount())
        corrupt(leaf, "as folhas do índice estão ligadas em círculo");
}

bool IndexTree::contains(std::span<const std::byte> key, RowId row) const {
    const IndexPoint point = pointOf(key, row);
    const Place place = lowerBound(point);
    EntryBuffer buffer;
    return place.at < place.page.used() &&
           std::is_eq(compare(place.page.entry(place.at, buffer).point, point));
}

bool IndexTree::hasKey(std::span<const std::byte> key, std::optional<RowId> except) const {
    Place place = lowerBound({key, 0});
    EntryBuffer buffer;
    for (bool excepted = false;; excepted = true) {
        if (place.at == place.page.used() && !toNextLeaf(place))
            return false;
        const IndexPoint found = place.page.entry(place.at, buffer).point;
        if (!std::ranges::equal(found.key, key))
            return false;
        if (!except || found.row != static_cast<std::uint64_t>(packed(*except)))
            return true;
        if (excepted)
            corrupt(place.page.page(), "uma linha está duas vezes no índice");
        place.at = place.page.after(place.at);
    }
}

IndexPageEditor IndexTree::edit(PageNo page) const {
    return {pager_->format(), pager_->change(page), page, owner_};
}

IndexTree::Path IndexTree::descend(const IndexPoint& point) const {
    Path path;
    Place place = open(root_);
    bool last = true;
    for (;;) {
        place.at = place.page.lowerBound(point);
        path.steps[path.count++] = {place.page.page(), place.at};
        if (place.page.isLeaf())
            break;
        last = last && place.at == place.page.used();
        path.incomplete =
            path.incomplete || place.page.tail() == kNoPage || place.page.level() == 0;
        place = openChild(place, place.at, path.count);
    }
    if (place.at < place.page.used()) {
        EntryBuffer buffer;
        path.found = std::is_eq(compare(place.page.entry(place.at, buffer).point, point));
    } else if (last && place.page.next() != kNoPage) {
        corrupt(place.page.page(),
                "depois da última folha do índice há outra, que nenhum nó conhece");
    }
    return path;
}

double IndexTree::partBefore(std::span<const std::byte> key) const {
    return pager_->onSnapshot([&] {
        const Path path = descend({key, 0});
        double before = 0;
        double width = 1;
        for (std::size_t i = 0; i < path.count; ++i) {
            const Place place = open(path.steps[i].page);
            const IndexPage& page = place.page;
            const bool hasTail = !page.isLeaf() && page.tail() != kNoPage;
            width /= static_cast<double>(
                std::max<std::size_t>(1, page.indexOf(page.used()) + (hasTail ? 1 : 0)));
            before += width * static_cast<double>(page.indexOf(path.steps[i].at));
        }
        return std::min(before, 1.0);
    });
}

void IndexTree::insert(PageAllocator& pages, std::span<const std::byte> key, RowId row) {
    if (!twoFit(pager_->format(), key.size() + kEntryRowSize + kEntryChildSize))
        throw Error(Errc::tooLong,
                    "O valor é longo demais para um campo pelo qual a tabela é ordenada.");
    const IndexPoint point = pointOf(key, row);
    EntryBuffer buffer;
    const std::span<const std::byte> entry = leafEntry(point, buffer);
    // Each turn either finds room or changes the shape of the tree by one step that leaves it
    // whole: a page parted, or one level more. So nothing needs to be remembered from turn to turn.
    for (;;) {
        const Path path = descend(point);
        if (path.found)
            corrupt(path.leaf().page, "uma linha nova já está no índice");
        if (path.incomplete)
            complete(path);
        else if (edit(path.leaf().page).insert(path.leaf().at, entry))
            return;
        else
            makeRoom(pages, path, point);
    }
}

/// Gives every node on the path its level, and as tail child, if it has none, the child of its last
/// entry: what lies beyond all separators has to have its place.
void IndexTree::complete(const Path& path) const {
    for (std::size_t depth = 0; depth + 1 < path.count; ++depth) {
        IndexPageEditor node = edit(path.steps[depth].page);
        const IndexPage& page = node.page();
        node.setLevel(static_cast<unsigned>(path.count - 1 - depth));
        if (page.tail() != kNoPage)
            continue;
        node.setTail(page.child(page.used()));
        node.erase(page.before(page.used()));
    }
}

void IndexTree::makeRoom(PageAllocator& pages, const Path& path, const IndexPoint& point) {
    for (std::size_t depth = path.count - 1; depth > 0; --depth) {
        const Split plan = planSplit(path.steps[depth], point);
        const Step& parent = path.steps[depth - 1];
        if (open(parent.page).page.hasRoom(parent.at, plan.separator))
            return split(pages, parent, path.steps[depth].page, plan);
    }
    growRoot(pages);
}

IndexTree::Split IndexTree::planSplit(const Step& step, const IndexPoint& point) const {
    const Place place = open(step.page);
    const IndexPage& page = place.page;
    Split plan{IndexEntries(page), 0, 0, {}, kNoPage};
    const std::size_t count = plan.entries.count();
    if (page.isLeaf()) {
        const bool atEnd = step.at == page.used();
        if (atEnd && (count == 1 || page.next() == kNoPage))
            plan.leftEnd = count; // keys that only grow leave full pages behind
        else if (count > 1)
            plan.leftEnd = middleOf(plan.entries);
        plan.rightBegin = plan.leftEnd;
        const IndexPoint last =
            plan.leftEnd == 0 ? point : page.fields(plan.entries[plan.leftEnd - 1]).point;
        plan.separator = separatorOf(last, step.page);
    } else {
        plan.leftEnd = count > 1 ? middleOf(plan.entries) : 0;
        plan.rightBegin = plan.leftEnd + 1;
        const IndexEntry middle = page.fields(plan.entries[plan.leftEnd]);
        plan.separator = separatorOf(middle.point, step.page);
        plan.leftTail = middle.child;
    }
    if (!twoFit(pager_->format(), plan.separator.size()))
        corrupt(step.page, "uma entrada do índice é longa demais");
    return plan;
}

void IndexTree::split(PageAllocator& pages, const Step& parent, PageNo page, const Split& plan) {
    const PageNo fresh = pages.take(map_);
    PageNo next{};
    unsigned level = 0;
    PageNo firstRightChild{};
    {
        IndexPageEditor left = edit(page);
        next = left.page().next();
        level = left.page().level();
        const PageNo tail = left.page().tail();
        left.setNext(fresh);
        left.setTail(plan.leftTail);
        bool fits = left.assign(plan.entries, 0, plan.leftEnd, true);

        IndexPageEditor::makeEmpty(pager_->format(), pager_->change(fresh), owner_, level);
        IndexPageEditor right = edit(fresh);
        right.setPrevious(page);
        right.setNext(next);
        right.setTail(tail);
        fits = right.assign(plan.entries, plan.rightBegin, plan.entries.count(), true) && fits;
        if (!fits)
            corrupt(page, "a página de índice não pode ser dividida");
        if (level > 1)
            firstRightChild = right.page().child(0);
    }
    if (next != kNoPage) {
        if (open(next).page.previous() == page)
            edit(next).setPrevious(fresh);
        else if (level == 0)
            corrupt(next, "a ligação entre duas folhas do índice está desfeita");
    }
    // Leaves are one chain, nodes are linked under one parent only.
    if (firstRightChild != kNoPage) {
        if (open(plan.leftTail).page.next() == firstRightChild)
            edit(plan.leftTail).setNext(kNoPage);
        if (open(firstRightChild).page.previous() == plan.leftTail)
            edit(firstRightChild).setPrevious(kNoPage);
    }
    IndexPageEditor above = edit(parent.page);
    above.setChild(parent.at, fresh);
    if (!above.insert(parent.at, plan.separator))
        corrupt(parent.page, "a página de índice não pode ser dividida");
}

void IndexTree::growRoot(PageAllocator& pages) {
    const Place root = open(root_);
    const unsigned level = root.page.level();
    if (level >= IndexPage::kMaxLevel)
        corrupt(root_, "o índice tem níveis demais");
    const PageNo fresh = pages.take(map_);
    std::ranges::copy(root.ref.bytes(), pager_->change(fresh).begin());
    IndexPageEditor copy = edit(fresh);
    copy.setPrevious(kNoPage);
    copy.setNext(kNoPage);
    IndexPageEditor::makeEmpty(pager_->format(), pager_->change(root_), owner_, level + 1);
    edit(root_).setTail(fresh);
}

void IndexTree::erase(PageAllocator& pages, std::span<const std::byte> key, RowId row) {
    const Path path = descend(pointOf(key, row));
    if (!path.found)
        corrupt(path.leaf().page, "uma linha da tabela falta no índice");
    IndexPageEditor leaf = edit(path.leaf().page);
    leaf.erase(path.leaf().at);
    if (leaf.page().empty())
        removePage(pages, path);
}

void IndexTree::removePage(PageAllocator& pages, const Path& path) {
    for (std::size_t depth = path.count - 1; depth > 0; --depth) {
        const PageNo page = path.steps[depth].page;
        if (!map_.contains(page))
            corrupt(page, "a página falta no mapa do índice");
        unlink(page);
        pages.give(page, map_);
        if (removeChild(path.steps[depth - 1]))
            return;
    }
    IndexPageEditor::makeEmpty(pager_->format(), pager_->change(root_), owner_, 0);
}

/// @return whether the node has children still.
bool IndexTree::removeChild(const Step& parent) const {
    IndexPageEditor node = edit(parent.page);
    const IndexPage& page = node.page();
    if (parent.at < page.used()) {
        node.erase(parent.at);
    } else if (page.empty()) {
        node.setTail(kNoPage);
    } else {
        const std::size_t last = page.before(page.used());
        EntryBuffer buffer;
        if (page.tail() != kNoPage)
            node.setTail(page.entry(last, buffer).child);
        node.erase(last);
    }
    return !page.empty() || page.tail() != kNoPage;
}

void IndexTree::unlink(PageNo page) const {
    const Place place = open(page);
    const PageNo previous = place.page.previous();
    const PageNo next = place.page.next();
    // How other writers link nodes isn't known for certain, and nothing depends on it.
    const auto linked = [&](PageNo neighbour, PageNo back) {
        if (back != page && place.page.isLeaf())
            corrupt(neighbour, "a ligação entre duas folhas do índice está desfeita");
        return back == page;
    };
    if (previous != kNoPage && linked(previous, open(previous).page.next()))
        edit(previous).setNext(next);
    if (next != kNoPage && linked(next, open(next).page.previous()))
        edit(next).setPrevious(previous);
}

} // namespace jet
