#include "controls/box/ListView.h"

#include "controls/box/ListModel.h"
#include "controls/look/Spoken.h"
#include "controls/typing/KeyHabits.h"
#include "controls/typing/Typing.h"

#include <QHeaderView>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyleOptionViewItem>
#include <QStyledItemDelegate>
#include <QTimerEvent>
#include <QtMath>

#include <algorithm>
#include <utility>

namespace {

// Up to here a list shows each row at once; a longer one is refreshed twenty times a second, and a
// very long one, which takes longer to lay out, less often.
constexpr int kShortList = 500;
constexpr int kRefreshMs = 50;
constexpr int kRowsPerMs = 2000;

constexpr int kNarrowestColumn = 12;

/// Draws no text in a first column that is so narrow that not even the dots of a shortened text
/// have room beside check box and icon: scraps of letters would stand there.
class ItemDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        if (index.column() != 0 || option->rect.isEmpty()) // empty: asked for the wanted size
            return;
        const QStyle& style = *option->widget->style();
        const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, option, option->widget);
        const QRect room =
            style.subElementRect(QStyle::SE_ItemViewItemText, option, option->widget);
        if (room.width() - 2 * (margin + 1) < option->fontMetrics.horizontalAdvance(u'…'))
            option->text.clear();
    }
};

} // namespace

ListView::ListView(QWidget* parent) : QTreeView(parent), model_(new ListModel(this)) {
    setModel(model_);
    setItemDelegate(new ItemDelegate(this));
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setExpandsOnDoubleClick(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false);
    header()->setSectionsMovable(false);
    header()->setSectionsClickable(true);
    header()->setHighlightSections(false);
    header()->setStretchLastSection(false);
    header()->setMinimumSectionSize(kNarrowestColumn);
    header()->setSectionResizeMode(QHeaderView::Interactive);

    connect(this, &QTreeView::clicked, this, [this](const QModelIndex& index) {
        if (!std::exchange(ticked_, false))
            tellClick(index);
    });
    // However it has become the current one: what keys act on is to be seen.
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) {
                if (current.isValid())
                    selectionModel()->select(current, QItemSelectionModel::ClearAndSelect |
                                                          QItemSelectionModel::Rows);
            });
    connect(model_, &ListModel::checkedByOperator, this, &ListView::tellTick);
    connect(header(), &QHeaderView::sectionClicked, this,
            [this](int column) { emit columnClicked(column, columnCaption(column)); });
    connect(header(), &QHeaderView::sectionResized, this, [this](int column, int, int width) {
        if (!sharing_ && isVisible()) {
            // The operator dragged it: from now on the columns keep the widths they have.
            firstColumnFit_ = 0;
            dragged_ = true;
            for (int other = 0; other < model_->columnCount({}); ++other)
                model_->setWidth(other, other == column ? width : header()->sectionSize(other));
        }
    });
}

ListView::~ListView() = default;

void ListView::setColumns(std::vector<ListColumn> columns) {
    model_->setColumns(std::move(columns));
    shareWidth();
}

void ListView::setColumnCaption(int column, const QString& caption) {
    model_->setCaption(column, caption);
}

void ListView::setColumnName(int column, const QString& name) { model_->setName(column, name); }

QString ListView::columnCaption(int column) const {
    return model_->columns().at(static_cast<std::size_t>(column)).caption;
}

void ListView::setColumnWidthShare(int column, int width) {
    model_->setWidth(column, width);
    shareWidth();
}

void ListView::setFirstColumnFit(int width) {
    firstColumnFit_ = width;
    shareWidth();
}

void ListView::setCheckBoxes(bool shown) {
    model_->setCheckBoxes(shown);
    shareWidth();
}

void ListView::addLater(int count, std::function<ListItem(int row)> make) {
    model_->addLater(count, std::move(make));
    announceRows();
}

int ListView::addItem(ListItem item) {
    const int row = model_->add(std::move(item));
    if (!announceTimer_.isActive())
        announceTimer_.start(row < kShortList ? 0 : std::max(kRefreshMs, row / kRowsPerMs), this);
    return row;
}

void ListView::clear() {
    announceTimer_.stop();
    model_->clear();
}

int ListView::count() const { return model_->count(); }
const ListItem& ListView::item(int row) const { return model_->item(row); }
QString ListView::text(int row, int column) const { return model_->text(row, column); }

void ListView::setText(int row, int column, const QString& text) {
    model_->setText(row, column, text);
}

bool ListView::isChecked(int row) const { return model_->item(row).checked; }
void ListView::setChecked(int row, bool checked) { model_->setChecked(row, checked); }

int ListView::rowOf(const QString& key) const {
    for (int row = 0; row < count(); ++row)
        if (item(row).key == key)
            return row;
    return -1;
}

int ListView::currentRow() const { return currentIndex().row(); }

void ListView::setCurrentRow(int row) {
    announceRows();
    setCurrentIndex(row < 0 ? QModelIndex() : model_->index(row, 0));
}

QRect ListView::rowRect(int row) {
    announceRows();
    const QModelIndex first = model_->index(row, 0);
    scrollTo(first);
    return visualRect(first).united(visualRect(first.siblingAtColumn(model_->columnCount({}) - 1)));
}

QRect ListView::checkBoxRect(int row) {
    const QRect place = rowRect(row);
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = visualRect(model_->index(row, 0)).intersected(place);
    option.features |= QStyleOptionViewItem::HasCheckIndicator;
    return style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, this);
}

void ListView::announceRows() {
    announceTimer_.stop();
    const bool firstRows = model_->announced() == 0;
    model_->announce();
    if (!firstRows || model_->announced() == 0)
        return;
    // Filled while it has the focus: the keys begin at the first row, as when the focus comes to
    // it.
    if (hasFocus() && !currentIndex().isValid())
        selectionModel()->setCurrentIndex(model_->index(0, 0), QItemSelectionModel::NoUpdate);
}

void ListView::timerEvent(QTimerEvent* event) {
    if (event->timerId() == announceTimer_.timerId())
        announceRows();
    else
        QTreeView::timerEvent(event);
}

void ListView::focusInEvent(QFocusEvent* event) {
    announceRows();
    QTreeView::focusInEvent(event);
}

void ListView::showEvent(QShowEvent* event) {
    announceRows();
    shareWidth();
    QTreeView::showEvent(event);
}

void ListView::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    shareWidth();
}

int ListView::leastFirstWidth() const {
    const int margin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1;
    const int icon = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this) + 2 * margin;
    const int box = style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, this) + 2 * margin;
    if (firstColumnFit_ > 0)
        return (box + icon) * model_->columns().front().width / firstColumnFit_;
    return model_->hasCheckBoxes() ? box + icon : icon;
}

int ListView::leastWidth(int column) const {
    const int own = column == 0 ? leastFirstWidth() : kNarrowestColumn;
    if (dragged_)
        return own;
    const bool named = !columnCaption(column).trimmed().isEmpty();
    const QString& text = model_->columns()[static_cast<std::size_t>(column)].atLeast;
    const int margin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1;
    return std::max(
        {own, named ? header()->sectionSizeHint(column) : 0,
         text.isEmpty() ? 0 : qCeil(QFontMetricsF(font()).horizontalAdvance(text)) + 2 * margin});
}

void ListView::shareWidth() {
    const QScopedValueRollback<bool> ours(sharing_, true);
    std::int64_t shares = 0;
    for (const ListColumn& column : model_->columns())
        shares += column.width;
    if (shares <= 0)
        return;
    int width =
        std::max(0, maximumViewportSize().width() - verticalScrollBar()->sizeHint().width());
    // Those that need more than their share first; the others share what is left.
    const auto count = model_->columns().size();
    std::vector<bool> given(count, false);
    const auto share = [&](std::size_t column) { return model_->columns()[column].width; };
    for (bool found = true; found;) {
        found = false;
        for (std::size_t column = 0; column < count; ++column) {
            const int least = leastWidth(static_cast<int>(column));
            if (given[column] || width * std::int64_t{share(column)} >= least * shares)
                continue;
            header()->resizeSection(static_cast<int>(column), least);
            given[column] = found = true;
            width = std::max(0, width - least);
            shares -= share(column);
        }
    }
    // Each ends where the shares up to it end, so that roundings don't add up to a gap.
    std::int64_t passed = 0;
    int left = 0;
    for (std::size_t column = 0; column < count; ++column) {
        if (given[column])
            continue;
        passed += share(column);
        const auto end = static_cast<int>(width * passed / shares);
        header()->resizeSection(static_cast<int>(column), end - left);
        left = end;
    }
}

QModelIndex ListView::indexAt(const QPoint& point) const {
    const int end = header()->length() - header()->offset();
    return QTreeView::indexAt({std::min(point.x(), end - 1), point.y()});
}

// The strip beside the columns too, and the ring of the focus around all.
void ListView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                       const QModelIndex& index) const {
    QTreeView::drawRow(painter, option, index);
    QStyleOptionViewItem strip = option;
    const int end = header()->length() - header()->offset();
    if (end >= viewport()->width())
        return;
    const bool focused = hasFocus() && index.row() == currentRow();
    constexpr int kOverRing = 2; // where the ring around the columns ends
    strip.rect.setLeft(focused ? end - kOverRing : end);
    strip.rect.setRight(viewport()->width() - 1);
    if (selectionModel()->isSelected(index))
        strip.state |= QStyle::State_Selected;
    strip.features.setFlag(QStyleOptionViewItem::Alternate, index.row() % 2 != 0);
    painter->save();
    painter->setClipRect(strip.rect);
    style()->drawPrimitive(QStyle::PE_PanelItemViewRow, &strip, painter, this);
    style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &strip, painter, this);
    if (focused) {
        QStyleOptionFocusRect ring;
        ring.QStyleOption::operator=(option);
        ring.rect.setLeft(-header()->offset());
        ring.rect.setRight(viewport()->width() - 1);
        ring.state |= QStyle::State_KeyboardFocusChange;
        ring.backgroundColor = palette().color(QPalette::Highlight);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &ring, painter, this);
    }
    painter->restore();
}

void ListView::tellClick(const QModelIndex& index) {
    const QString key = model_->item(index.row()).key;
    emit itemClicked(key, index.row());
}

void ListView::tellTick(int row, bool checked) {
    ticked_ = true;
    setCurrentRow(row);
    if (isHeard()) {
        QAccessible::State changed;
        changed.checked = true;
        const auto* rows = QAccessible::queryAccessibleInterface(this)->tableInterface();
        QAccessibleStateChangeEvent ticked(rows->cellAt(row, 0), changed);
        tell(ticked);
    }
    emit itemChecked(row, checked);
}

void ListView::mousePressEvent(QMouseEvent* event) {
    ticked_ = false;
    QTreeView::mousePressEvent(event);
}

void ListView::mouseDoubleClickEvent(QMouseEvent* event) {
    mousePressEvent(event); // the second press of two quick clicks is a press like any other
}

void ListView::keyPressEvent(QKeyEvent* event) {
    const bool space = event->key() == Qt::Key_Space;
    if (!isEnter(*event) && !space) {
        QTreeView::keyPressEvent(event);
        return;
    }
    event->accept();
    announceRows();
    const QModelIndex current = currentIndex();
    if (!current.isValid() || KeyHabits::isHeld())
        return; // a key held down must not click or tick twice
    if (!space || !model_->hasCheckBoxes())
        tellClick(current);
    else // whichever column was clicked last
        model_->setData(current.siblingAtColumn(0),
                        isChecked(current.row()) ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

#include "controls/box/moc_ListView.cpp"
