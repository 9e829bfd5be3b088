#include "print/preview/ToolRows.h"

#include <algorithm>

namespace {

constexpr int kBetweenGroups = 8;

} // namespace

ToolRows::ToolRows(QWidget* parent) : QLayout(parent) { setContentsMargins(4, 2, 4, 2); }

ToolRows::~ToolRows() = default;

void ToolRows::addItem(QLayoutItem* item) { groups_.emplace_back(item); }

int ToolRows::count() const { return static_cast<int>(groups_.size()); }

QLayoutItem* ToolRows::itemAt(int index) const {
    return index >= 0 && index < count() ? groups_[static_cast<std::size_t>(index)].get() : nullptr;
}

QLayoutItem* ToolRows::takeAt(int index) {
    if (!itemAt(index))
        return nullptr;
    QLayoutItem* const item = groups_[static_cast<std::size_t>(index)].release();
    groups_.erase(groups_.begin() + index);
    return item;
}

QSize ToolRows::sizeHint() const {
    QSize size;
    for (const auto& group : groups_)
        size = {size.width() + group->sizeHint().width() + kBetweenGroups,
                std::max(size.height(), group->sizeHint().height())};
    return size.grownBy(contentsMargins());
}

QSize ToolRows::minimumSize() const {
    QSize size;
    for (const auto& group : groups_)
        size = size.expandedTo(group->sizeHint());
    return size.grownBy(contentsMargins());
}

int ToolRows::heightForWidth(int width) const { return arrange({0, 0, width, 0}, false); }

void ToolRows::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    [[maybe_unused]] const int height = arrange(rect, true);
}

int ToolRows::arrange(const QRect& rect, bool move) const {
    const QRect room = rect.marginsRemoved(contentsMargins());
    QPoint at = room.topLeft();
    int high = 0; ///< the row begun
    for (const auto& group : groups_) {
        const QSize size = group->sizeHint();
        if (at.x() > room.left() && at.x() + size.width() > room.right() + 1) {
            at = {room.left(), at.y() + high};
            high = 0;
        }
        if (move)
            group->setGeometry({at, size});
        at.rx() += size.width() + kBetweenGroups;
        high = std::max(high, size.height());
    }
    return at.y() + high - rect.top() + contentsMargins().bottom();
}

#include "print/preview/moc_ToolRows.cpp"
