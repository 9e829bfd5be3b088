#include "controls/window/FieldGrid.h"

#include <QComboBox>
#include <QGridLayout>
#include <QLineEdit>

#include <algorithm>
#include <map>
#include <vector>

namespace {

bool isField(const QWidget& widget) {
    return qobject_cast<const QLineEdit*>(&widget) != nullptr ||
           qobject_cast<const QComboBox*>(&widget) != nullptr;
}

bool isShort(const QLayoutItem& item, const QWidget& widget) {
    return (item.alignment() & Qt::AlignLeft) ||
           widget.sizePolicy().horizontalPolicy() == QSizePolicy::Fixed;
}

/// A box for so few characters holds all of them in sight, digits as most of them are.
int widthOf(const QWidget& field) {
    constexpr int kFew = 20;
    constexpr int kEdges = 2; // characters: frame, margins and caret
    const auto* box = qobject_cast<const QLineEdit*>(&field);
    const int digits = box && box->maxLength() <= kFew
                           ? box->fontMetrics().horizontalAdvance('0') * (box->maxLength() + kEdges)
                           : 0;
    return std::max(digits, field.sizeHint().width());
}

void alignEnds(const QGridLayout& grid) {
    std::map<int, std::vector<QWidget*>> columns;
    for (int i = 0; i < grid.count(); ++i) {
        int row = 0, column = 0, rows = 0, width = 0;
        grid.getItemPosition(i, &row, &column, &rows, &width);
        QWidget* widget = grid.itemAt(i)->widget();
        if (!widget || !isField(*widget) || (width != 1 && !isShort(*grid.itemAt(i), *widget)))
            continue;
        // Beside others in its row a field gives way to them, to nothing at last.
        widget->setMinimumWidth(std::max(widget->minimumWidth(), widthOf(*widget)));
        if (isShort(*grid.itemAt(i), *widget))
            columns[column].push_back(widget);
    }
    for (const auto& [column, fields] : columns) {
        int widest = 0;
        for (const QWidget* field : fields)
            widest = std::max(widest, widthOf(*field));
        for (QWidget* field : fields)
            field->setMinimumWidth(widest);
    }
}

} // namespace

void arrangeFields(const QWidget& window) {
    for (auto* grid : window.findChildren<QGridLayout*>()) {
        alignEnds(*grid);
        if (!(grid->expandingDirections() & Qt::Vertical))
            grid->setRowStretch(grid->rowCount(), 1);
    }
}
