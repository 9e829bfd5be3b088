#pragma once

#include "controls/box/ListRows.h"

#include <QBasicTimer>
#include <QTreeView>

#include <functional>
#include <vector>

class ListModel;

/// A list of rows in columns, with keys, an icon and a check box if wanted in the first column.
///
/// Rows may be added one by one and in any number: they are shown soon after, many at a time, so
/// 100,000 rows cost a fraction of a second even if the program handles events between them. Rows
/// are counted from 0, and so are columns.
///
/// A click on a row, or Enter on the current one, is told by itemClicked(), a double click as two;
/// so is Space where there are no check boxes. With check boxes, a click on one or Space ticks, and
/// is told by itemChecked() only; the row is the current one then. Arrows move the current row and
/// tell nothing. When the focus comes by keyboard the first row is the current one if none was. The
/// current row is always shown as the selected one.
///
/// Columns share the width in proportion to their widths, also when the window grows, until the
/// operator drags one wider: then in proportion to what he made of them. None is narrower than its
/// heading and what it must have room for, and the first never too narrow for its check box and an
/// icon; without room for more, it shows no text. What is listed moves no column: there is always
/// room for an icon, and for the scroll bar; as long as that doesn't show, rows and headings go on
/// to the edge all the same.
class ListView final : public QTreeView {
    Q_OBJECT
public:
    explicit ListView(QWidget* parent = nullptr);
    ~ListView() override;

    /// Sets the columns and empties the list.
    void setColumns(std::vector<ListColumn> columns);
    void setColumnCaption(int column, const QString& caption);
    [[nodiscard]] QString columnCaption(int column) const;
    /// Says to who hears the list what stands in a column without a caption.
    void setColumnName(int column, const QString& name);
    /// Sets a column's share of the width; see ListColumn.
    void setColumnWidthShare(int column, int width);
    /// For a list with check boxes at times only: the share at which the first column just holds
    /// check box and icon. At any other it is never narrower than in proportion to that, check
    /// boxes shown or not.
    void setFirstColumnFit(int width);
    /// Shows or hides the check boxes; hidden at first.
    void setCheckBoxes(bool shown);

    /// Adds a row at the end.
    /// @return its number.
    int addItem(ListItem item);
    /// Adds so many at the end; `make` gives each when it is first looked at, as few ever are of a
    /// long list. It mustn't be asked any more when what it makes them of changes: clear() first.
    void addLater(int count, std::function<ListItem(int row)> make);
    void clear();

    [[nodiscard]] int count() const;
    /// `row` from 0 to count() - 1 in all that follow.
    [[nodiscard]] const ListItem& item(int row) const;
    /// The first row of this key, or -1. Looks at one after the other.
    [[nodiscard]] int rowOf(const QString& key) const;
    /// The row's text in a column; column 0 is the row's own text.
    [[nodiscard]] QString text(int row, int column) const;
    void setText(int row, int column, const QString& text);
    [[nodiscard]] bool isChecked(int row) const;
    /// Ticks or unticks without telling itemChecked().
    void setChecked(int row, bool checked);

    /// The current row, or -1.
    [[nodiscard]] int currentRow() const;
    /// Makes a row the current one and brings it into sight; -1 for none. Tells nothing.
    void setCurrentRow(int row);
    /// Where a row stands in viewport(), brought into sight first.
    [[nodiscard]] QRect rowRect(int row);
    /// Where a row's check box stands in viewport(), the row brought into sight first.
    [[nodiscard]] QRect checkBoxRect(int row);

    [[nodiscard]] QModelIndex indexAt(const QPoint& point) const override;

signals:
    void itemClicked(const QString& key, int row);
    /// The operator ticked or unticked the row's check box.
    void itemChecked(int row, bool checked);
    void columnClicked(int column, const QString& caption);

protected:
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                 const QModelIndex& index) const override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void announceRows();
    /// What the first column must have.
    [[nodiscard]] int leastFirstWidth() const;
    [[nodiscard]] int leastWidth(int column) const;
    void shareWidth();
    void tellClick(const QModelIndex& index);
    void tellTick(int row, bool checked);

    ListModel* model_;
    QBasicTimer announceTimer_;
    int firstColumnFit_ = 0; ///< 0: the column just holds what it shows
    bool dragged_ = false;   ///< by the operator: he may make them as narrow as he likes
    bool sharing_ = false;
    bool ticked_ = false; ///< by the click at work
};
