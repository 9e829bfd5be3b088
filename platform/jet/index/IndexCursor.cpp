#include "jet/index/IndexTree.h"

namespace jet {

bool IndexTree::Cursor::first() {
    return tree_->pager_->onSnapshot([&] {
        place_ = tree_->lowerBound({});
        return forward(Order::any);
    });
}

bool IndexTree::Cursor::last() {
    return tree_->pager_->onSnapshot([&] {
        place_ = tree_->end();
        return backward(Order::any);
    });
}

bool IndexTree::Cursor::seek(std::span<const std::byte> key, RowId row) {
    return tree_->pager_->onSnapshot([&] {
        place_ = tree_->lowerBound({key, static_cast<std::uint64_t>(packed(row))});
        return forward(Order::any);
    });
}

bool IndexTree::Cursor::seekBefore(std::span<const std::byte> key, RowId row) {
    return tree_->pager_->onSnapshot([&] {
        place_ = tree_->lowerBound({key, static_cast<std::uint64_t>(packed(row))});
        return backward(Order::any);
    });
}

bool IndexTree::Cursor::next() {
    switch (stands_) {
    case Stands::before:
        return first();
    case Stands::after:
        return false;
    case Stands::on:
        break;
    }
    return tree_->pager_->onSnapshot([&] {
        if (current()) {
            place_.at = end_;
        } else {
            IndexPoint behind = point();
            ++behind.row;
            place_ = tree_->lowerBound(behind);
        }
        return forward(Order::greater);
    });
}

bool IndexTree::Cursor::previous() {
    switch (stands_) {
    case Stands::before:
        return false;
    case Stands::after:
        return last();
    case Stands::on:
        break;
    }
    return tree_->pager_->onSnapshot([&] {
        if (!current())
            place_ = tree_->lowerBound(point());
        return backward(Order::less);
    });
}

/// To the entry at the place, or the first of the leaves that follow.
bool IndexTree::Cursor::forward(Order order) {
    if (place_.at == place_.page.used() && !tree_->toNextLeaf(place_)) {
        stands_ = Stands::after;
        return false;
    }
    return arrive(order);
}

/// To the entry that ends at the place, or the last of the leaves before.
bool IndexTree::Cursor::backward(Order order) {
    if (place_.at == 0 && !tree_->toPreviousLeaf(place_)) {
        stands_ = Stands::before;
        return false;
    }
    place_.at = place_.page.before(place_.at);
    return arrive(order);
}

bool IndexTree::Cursor::arrive(Order order) {
    end_ = place_.page.after(place_.at);
    place_.page.copy(place_.at, end_, spare_);
    const IndexPoint found = place_.page.fields(spare_).point;
    // Entries in order are also what keeps a chain of leaves linked in a circle from going on
    // forever.
    if (order != Order::any) {
        const std::strong_ordering moved = compare(found, point());
        if (order == Order::greater ? std::is_lteq(moved) : std::is_gteq(moved))
            corrupt(place_.page.page(), "as entradas do índice estão fora de ordem");
    }
    keySize_ = found.key.size();
    row_ = unpacked(static_cast<std::int64_t>(found.row));
    entry_.swap(spare_);
    stands_ = Stands::on;
    generation_ = tree_->pager_->generation();
    return true;
}

/// Whether the leaf is still as it was when the cursor came there. It is if its image is the same:
/// a page that changes, or leaves the tree, gets another as long as somebody holds this one.
bool IndexTree::Cursor::current() {
    Pager& pager = *tree_->pager_;
    if (generation_ == pager.generation())
        return true;
    const PageNo leaf = place_.ref.page();
    if (number(leaf) >= pager.pageCount() ||
        pager.read(leaf).bytes().data() != place_.ref.bytes().data())
        return false;
    generation_ = pager.generation();
    return true;
}

} // namespace jet
