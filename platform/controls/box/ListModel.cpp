#include "controls/box/ListModel.h"

#include <utility>

void ListModel::setColumns(std::vector<ListColumn> columns) {
    beginResetModel();
    columns_ = std::move(columns);
    forgetRows();
    endResetModel();
}

void ListModel::setCaption(int column, const QString& caption) {
    columns_.at(static_cast<std::size_t>(column)).caption = caption;
    emit headerDataChanged(Qt::Horizontal, column, column);
}

void ListModel::setName(int column, const QString& name) {
    columns_.at(static_cast<std::size_t>(column)).name = name;
}

void ListModel::setWidth(int column, int width) {
    columns_.at(static_cast<std::size_t>(column)).width = width;
}

// The first column grows or shrinks by the box, in every row.
void ListModel::setCheckBoxes(bool shown) {
    if (checkBoxes_ == shown)
        return;
    emit layoutAboutToBeChanged();
    checkBoxes_ = shown;
    emit layoutChanged();
}

// Told to the view in one piece, by announce(): of a list of thousands it would take each for news.
int ListModel::add(ListItem item) {
    items_.push_back(std::move(item));
    return count() - 1;
}

void ListModel::clear() {
    beginResetModel();
    forgetRows();
    endResetModel();
}

void ListModel::forgetRows() {
    items_.clear();
    unmade_.clear();
    make_ = {};
    announced_ = 0;
}

void ListModel::addLater(int count, std::function<ListItem(int row)> make) {
    for (int row = 0; row < this->count(); ++row)
        static_cast<void>(made(row)); // of whoever makes those
    unmade_.assign(items_.size(), false);
    items_.resize(items_.size() + static_cast<std::size_t>(count));
    unmade_.resize(items_.size(), true);
    make_ = std::move(make);
}

ListItem& ListModel::made(int row) const {
    const auto place = static_cast<std::size_t>(row);
    ListItem& it = items_.at(place);
    if (place < unmade_.size() && unmade_[place]) {
        it = make_(row);
        unmade_[place] = false;
    }
    return it;
}

void ListModel::announce() {
    if (announced_ == count())
        return;
    beginInsertRows({}, announced_, count() - 1);
    announced_ = count();
    endInsertRows();
}

const ListItem& ListModel::item(int row) const { return made(row); }

QString ListModel::text(int row, int column) const {
    const ListItem& it = item(row);
    return column == 0 ? it.text : it.subItems.value(column - 1);
}

void ListModel::setText(int row, int column, const QString& text) {
    ListItem& it = made(row);
    if (column == 0) {
        it.text = text;
    } else {
        if (it.subItems.size() < column)
            it.subItems.resize(column);
        it.subItems[column - 1] = text;
    }
    changed(row, column);
}

void ListModel::setChecked(int row, bool checked) {
    made(row).checked = checked;
    changed(row, 0);
}

QString ListModel::name(int column) const {
    const ListColumn& it = columns_[static_cast<std::size_t>(column)];
    return (it.name.isEmpty() ? it.caption : it.name).simplified();
}

QString ListModel::spoken(int row, int column) const {
    const QString said = text(row, column);
    return said.isEmpty() ? said : name(column) + ' ' + said;
}

QString ListModel::rest(int row) const {
    QStringList parts;
    for (int column = 1; column < columnCount({}); ++column)
        if (const QString said = spoken(row, column); !said.isEmpty())
            parts += said;
    return parts.join(", ");
}

void ListModel::changed(int row, int column) {
    if (row < announced_)
        emit dataChanged(index(row, column), index(row, column));
}

int ListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : announced_;
}

int ListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant ListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid())
        return {};
    const bool first = index.column() == 0;
    switch (role) {
    case Qt::DisplayRole:
        return text(index.row(), index.column());
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(columns_[static_cast<std::size_t>(index.column())].alignment |
                                   Qt::AlignVCenter);
    case Qt::DecorationRole:
        return first && !item(index.row()).icon.isNull() ? item(index.row()).icon : QVariant();
    case Qt::AccessibleTextRole: // the first speaks for its row
        return first ? spoken(index.row(), 0) : QString();
    case Qt::AccessibleDescriptionRole:
        return first ? rest(index.row()) : QString();
    case Qt::CheckStateRole:
        if (!first || !checkBoxes_)
            return {};
        return item(index.row()).checked ? Qt::Checked : Qt::Unchecked;
    default:
        return {};
    }
}

bool ListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole || index.column() != 0)
        return false;
    const bool checked = value.toInt() == Qt::Checked; // only the operator's click comes this way
    setChecked(index.row(), checked);
    emit checkedByOperator(index.row(), checked);
    return true;
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount({}))
        return {};
    const ListColumn& column = columns_[static_cast<std::size_t>(section)];
    if (role == Qt::DisplayRole)
        return column.caption;
    if (role == Qt::AccessibleTextRole)
        return name(section);
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(column.alignment | Qt::AlignVCenter);
    return {};
}

Qt::ItemFlags ListModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() == 0 && checkBoxes_)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

#include "controls/box/moc_ListModel.cpp"
