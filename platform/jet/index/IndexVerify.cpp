#include "jet/index/IndexTree.h"

#include <algorithm>
#include <optional>

namespace jet {

namespace {

/// A walk over all pages of a tree, in the order of the entries. In that order every entry and
/// every separator is compared with the last one met: entries grow, a separator isn't less than the
/// entry before it, and the entry after it is greater.
class Verifier {
public:
    Verifier(Pager& pager, PageNo owner, const IndexTree& tree, const IndexTree::Visitor& visitor)
        : pager_(pager), owner_(owner), tree_(tree), visitor_(visitor),
          visited_(pager.pageCount()) {}

    void run() {
        enter(tree_.root());
        while (!way_.empty()) {
            Node& node = way_.back();
            if (node.separatorDue) {
                separator(node);
                node.separatorDue = false;
            }
            if (node.at < node.page.used()) {
                node.separatorDue = true;
                EntryBuffer buffer;
                enter(node.page.entry(node.at, buffer).child);
            } else if (!node.tailDone && node.page.tail() != kNoPage) {
                node.tailDone = true;
                enter(node.page.tail());
            } else {
                way_.pop_back();
            }
        }
        for (const Neighbour& last : last_)
            if (last.next != kNoPage)
                problem(last.page, "a última página de um nível do índice aponta para outra");
        compareWithMap();
    }

private:
    struct Node {
        PageRef ref;
        IndexPage page;
        std::size_t at = 0;        ///< the entry whose child comes next
        bool separatorDue = false; ///< that child has been walked, the separator not yet
        bool tailDone = false;
    };
    /// The page met last at a depth.
    struct Neighbour {
        PageNo page{};
        PageNo next{};
    };

    void problem(PageNo page, const std::string& reason) { visitor_.problem(page, reason); }

    [[nodiscard]] bool visited(PageNo page) const {
        return number(page) < visited_.size() && visited_[number(page)];
    }

    /// The page, if it can be read and its own bytes hold together.
    std::optional<Node> open(PageNo page) {
        if (number(page) >= visited_.size()) {
            problem(page, "o índice aponta para fora do arquivo");
            return std::nullopt;
        }
        if (visited(page)) {
            problem(page, "o índice chega duas vezes à mesma página");
            return std::nullopt;
        }
        visited_[number(page)] = true;
        PageRef ref = pager_.read(page);
        if (const char* flaw = IndexPage::flaw(pager_.format(), ref.view(), owner_)) {
            problem(page, flaw);
            return std::nullopt;
        }
        const IndexPage opened = IndexPage::open(pager_.format(), ref.view(), owner_);
        if (!way_.empty() && !way_.back().page.isAbove(opened)) {
            problem(page, "o nível da página de índice não segue o da página acima");
            return std::nullopt;
        }
        if (way_.size() > IndexPage::kMaxLevel) {
            problem(page, "o índice tem níveis demais");
            return std::nullopt;
        }
        if (opened.used() + opened.freeField() != pager_.format().indexCapacity())
            problem(page, "os bytes livres da página de índice estão errados");
        if (ref.view().load(PageHead::one) != 1)
            problem(page, "o cabeçalho da página de índice está errado");
        for (std::size_t at = 0; at < opened.used();) {
            const std::size_t end = opened.after(at);
            const std::size_t prefix = at == 0 ? 0 : opened.prefix();
            if (prefix + end - at < opened.fieldsSize()) {
                problem(page, "uma entrada do índice é curta demais");
                return std::nullopt;
            }
            at = end;
        }
        return Node{std::move(ref), opened};
    }

    void enter(PageNo page) {
        std::optional<Node> node = open(page);
        if (!node) {
            last_.fill({}); // what follows a hole can't be compared with what precedes it
            holes_ = true;
            return;
        }
        links(node->page);
        if (node->page.isLeaf())
            return leaf(node->page);
        if (node->page.empty() && node->page.tail() == kNoPage)
            problem(page, "um nó do índice não tem filhos");
        way_.push_back(std::move(*node));
    }

    /// Leaves are one chain. Nodes are linked at least under one parent; across parents a link may
    /// be there or not, but leads nowhere else.
    void links(const IndexPage& page) {
        Neighbour& before = last_[way_.size()];
        const bool known = before.page != kNoPage || !holes_;
        const bool mayMiss = !page.isLeaf();
        if (known && page.previous() != before.page && !(mayMiss && page.previous() == kNoPage))
            problem(page.page(), "a ligação com a página anterior do índice está errada");
        if (before.page != kNoPage && before.next != page.page() &&
            !(mayMiss && before.next == kNoPage))
            problem(before.page, "a ligação com a próxima página do índice está errada");
        before = {page.page(), page.next()};
    }

    void leaf(const IndexPage& page) {
        if (leafDepth_ && *leafDepth_ != way_.size())
            problem(page.page(), "as folhas do índice não estão todas no mesmo nível");
        leafDepth_ = way_.size();
        EntryBuffer buffer;
        for (std::size_t at = 0; at < page.used(); at = page.after(at)) {
            const IndexEntry entry = page.entry(at, buffer);
            if (any_ && std::is_lteq(compare(entry.point, lastPoint())))
                problem(page.page(), lastIsSeparator_
                                         ? "uma entrada do índice não é maior que o separador"
                                         : "as entradas do índice estão fora de ordem");
            remember(entry.point, false);
            visitor_.entry(entry.point.key, unpacked(static_cast<std::int64_t>(entry.point.row)));
        }
    }

    void separator(Node& node) {
        EntryBuffer buffer;
        const IndexEntry entry = node.page.entry(node.at, buffer);
        // A node of another writer may have no tail: then nothing bounds its last child.
        const bool bounds =
            node.page.after(node.at) < node.page.used() || node.page.tail() != kNoPage;
        if (bounds) {
            if (any_ && std::is_lt(compare(entry.point, lastPoint())))
                problem(node.page.page(), "um separador do índice é menor que as suas entradas");
            remember(entry.point, true);
        }
        node.at = node.page.after(node.at);
    }

    void remember(const IndexPoint& point, bool isSeparator) {
        lastKey_.assign(point.key.begin(), point.key.end());
        lastRow_ = point.row;
        lastIsSeparator_ = isSeparator;
        any_ = true;
    }
    [[nodiscard]] IndexPoint lastPoint() const noexcept { return {lastKey_, lastRow_}; }

    void compareWithMap() {
        std::vector<bool> inMap(visited_.size());
        try {
            for (std::optional<PageNo> page = tree_.map().next(0); page;
                 page = tree_.map().next(number(*page) + 1)) {
                inMap[number(*page)] = true;
                if (!visited(*page) && !holes_)
                    problem(*page, "o mapa do índice contém uma página que não é dele");
            }
        } catch (const Error& error) {
            return problem(tree_.map().at().page, error.what());
        }
        for (std::size_t page = 0; page < visited_.size(); ++page)
            if (visited_[page] && !inMap[page])
                problem(static_cast<PageNo>(page), "a página falta no mapa do índice");
    }

    Pager& pager_;
    PageNo owner_;
    const IndexTree& tree_;
    const IndexTree::Visitor& visitor_;
    std::vector<bool> visited_;
    std::vector<Node> way_; ///< the nodes from the root down, kMaxLevel of them at most
    std::optional<std::size_t> leafDepth_;
    std::array<Neighbour, IndexPage::kMaxLevel + 1> last_{};
    bool holes_ = false; ///< pages were left out because of their problems
    bool any_ = false;
    bool lastIsSeparator_ = false;
    std::uint64_t lastRow_ = 0;
    Bytes lastKey_;
};

} // namespace

void IndexTree::verify(const Visitor& visitor) const {
    Verifier(*pager_, owner_, *this, visitor).run();
}

} // namespace jet
