#pragma once

#include "controls/box/ListRows.h"

#include <QAbstractTableModel>

#include <functional>
#include <vector>

/// The rows behind a ListView.
///
/// Invariant: the view knows of the first announced() rows; those after them wait for announce().
/// A view lays all its rows out anew for each insertion it is told of, so telling of each row on
/// its own would take time that grows with the square of their number.
class ListModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setColumns(std::vector<ListColumn> columns);
    [[nodiscard]] const std::vector<ListColumn>& columns() const noexcept { return columns_; }
    void setCaption(int column, const QString& caption);
    void setName(int column, const QString& name);
    void setWidth(int column, int width);
    void setCheckBoxes(bool shown);
    [[nodiscard]] bool hasCheckBoxes() const noexcept { return checkBoxes_; }

    int add(ListItem item);
    /// So many rows at the end; `make` gives each when it is first looked at.
    void addLater(int count, std::function<ListItem(int row)> make);
    void clear();
    /// Tells the view of the rows added since the last call.
    void announce();
    [[nodiscard]] int announced() const noexcept { return announced_; }

    [[nodiscard]] int count() const noexcept { return static_cast<int>(items_.size()); }
    [[nodiscard]] const ListItem& item(int row) const;
    [[nodiscard]] QString text(int row, int column) const;
    void setText(int row, int column, const QString& text);
    void setChecked(int row, bool checked);

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

signals:
    /// The operator ticked or unticked the row.
    void checkedByOperator(int row, bool checked);

private:
    void forgetRows();
    [[nodiscard]] ListItem& made(int row) const;
    void changed(int row, int column);
    /// What a column holds, and what stands there, for who hears it.
    [[nodiscard]] QString name(int column) const;
    [[nodiscard]] QString spoken(int row, int column) const;
    /// What stands in all columns but the first.
    [[nodiscard]] QString rest(int row) const;

    std::vector<ListColumn> columns_;
    mutable std::vector<ListItem> items_;
    mutable std::vector<bool> unmade_; ///< of items_; those that it is too short for are made
    std::function<ListItem(int row)> make_;
    int announced_ = 0;
    bool checkBoxes_ = false;
};
