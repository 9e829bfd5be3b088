#include "jet/index/IndexBuilder.h"

#include "jet/Error.h"
#include "jet/index/IndexPageEditor.h"

#include <algorithm>

namespace jet {

namespace {

void appendBigEndian(Bytes& bytes, std::uint32_t value) {
    for (const int shift : {24, 16, 8, 0})
        bytes.push_back(static_cast<std::byte>(value >> shift));
}

/// A page of the level below: its number, and its last entry as a leaf has it.
struct Child {
    PageNo page;
    Bytes last;
};

class Builder {
public:
    Builder(NewFile& file, PageNo owner) : file_(file), owner_(owner) {}

    BuiltIndex run(const IndexEntriesSorter& sorted) {
        std::vector<Child> level = leaves(sorted);
        for (unsigned height = 1; level.size() > 1; ++height)
            level = nodes(level, height);
        made_.root = level.front().page;
        return std::move(made_);
    }

private:
    /// An empty page of a level, to be filled and written.
    struct Page {
        Page(NewFile& file, PageNo at, PageNo owner, unsigned level)
            : bytes(emptied(file.format(), owner, level)), page(at),
              editor(file.format(), bytes, at, owner) {}
        static Bytes emptied(const Format& format, PageNo owner, unsigned level) {
            Bytes bytes(format.pageSize);
            IndexPageEditor::makeEmpty(format, bytes, owner, level);
            return bytes;
        }
        Bytes bytes;
        PageNo page;
        IndexPageEditor editor;
    };

    PageNo take() {
        made_.pages.push_back(file_.take());
        return made_.pages.back();
    }

    /// Leaves follow each other page by page: nobody else takes pages meanwhile.
    std::vector<Child> leaves(const IndexEntriesSorter& sorted) {
        std::vector<Child> level;
        std::optional<Page> leaf(std::in_place, file_, take(), owner_, 0);
        Bytes entry;
        for (std::size_t i = 0; i < sorted.size(); ++i) {
            const auto key = sorted.key(i);
            if (!fitsIndex(file_.format(), key.size()))
                throw Error(Errc::tooLong, "A chave de um índice é longa demais para o arquivo.");
            if (!sorted.repeats(i))
                ++made_.distinctKeys;
            Bytes last = std::move(entry);
            entry.assign(key.begin(), key.end());
            appendBigEndian(entry, static_cast<std::uint32_t>(packed(sorted.row(i))));
            if (!leaf->editor.page().hasRoom(leaf->editor.page().used(), entry)) {
                const PageNo previous = leaf->page;
                const PageNo next = take();
                leaf->editor.setNext(next);
                file_.write(previous, leaf->bytes);
                level.push_back({previous, std::move(last)});
                leaf.emplace(file_, next, owner_, 0);
                leaf->editor.setPrevious(previous);
            }
            (void)leaf->editor.insert(leaf->editor.page().used(), entry);
        }
        file_.write(leaf->page, leaf->bytes);
        level.push_back({leaf->page, std::move(entry)});
        return level;
    }

    /// Where the children of each node end. A node's last child stands without an entry; the last
    /// node isn't left with a single child.
    [[nodiscard]] std::vector<std::size_t> partings(const std::vector<Child>& children) const {
        std::vector<std::size_t> ends;
        for (std::size_t first = 0; first < children.size();) {
            std::size_t used = 0;
            std::size_t end = first;
            while (end < children.size() && used + children[end].last.size() + kEntryChildSize <=
                                                file_.format().indexCapacity())
                used += children[end++].last.size() + kEntryChildSize;
            end = std::min(end + 1, children.size());
            if (end + 1 == children.size())
                --end;
            ends.push_back(end);
            first = end;
        }
        return ends;
    }

    std::vector<Child> nodes(std::vector<Child>& children, unsigned height) {
        std::vector<Child> level;
        std::size_t first = 0;
        for (const std::size_t end : partings(children)) {
            Page node(file_, take(), owner_, height);
            for (std::size_t i = first; i + 1 < end; ++i) {
                Bytes& entry = children[i].last;
                appendBigEndian(entry, number(children[i].page));
                (void)node.editor.insert(node.editor.page().used(), entry);
            }
            node.editor.setTail(children[end - 1].page);
            if (height > 1)
                link(std::span(children).subspan(first, end - first));
            file_.write(node.page, node.bytes);
            level.push_back({node.page, std::move(children[end - 1].last)});
            first = end;
        }
        return level;
    }

    /// Nodes are linked with those under the same node only.
    void link(std::span<const Child> nodes) {
        const IndexPageLayout& layout = file_.format().indexPage;
        const std::size_t at = layout.previous.at;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            Bytes links(layout.next.end() - at);
            store(links.data(), Field<PageNo>{0}, i > 0 ? nodes[i - 1].page : kNoPage);
            store(links.data(), Field<PageNo>{layout.next.at - at},
                  i + 1 < nodes.size() ? nodes[i + 1].page : kNoPage);
            file_.writeInto(nodes[i].page, at, links);
        }
    }

    NewFile& file_;
    PageNo owner_;
    BuiltIndex made_;
};

} // namespace

void IndexEntriesSorter::add(std::span<const std::byte> key, RowId row) {
    entries_.push_back({keys_.size(), static_cast<std::uint32_t>(key.size()),
                        static_cast<std::uint32_t>(packed(row))});
    keys_.insert(keys_.end(), key.begin(), key.end());
}

void IndexEntriesSorter::sort() {
    const auto point = [&](const Entry& entry) {
        return IndexPoint{std::span(keys_).subspan(entry.begin, entry.length), entry.row};
    };
    std::ranges::sort(entries_, [&](const Entry& a, const Entry& b) {
        return std::is_lt(compare(point(a), point(b)));
    });
}

bool IndexEntriesSorter::repeats(std::size_t at) const noexcept {
    return at > 0 && std::ranges::equal(key(at), key(at - 1));
}

BuiltIndex buildIndex(NewFile& file, PageNo owner, const IndexEntriesSorter& sorted) {
    return Builder(file, owner).run(sorted);
}

bool fitsIndex(const Format& format, std::size_t keyLength) noexcept {
    return 2 * (keyLength + kEntryRowSize + kEntryChildSize) <= format.indexCapacity();
}

} // namespace jet
