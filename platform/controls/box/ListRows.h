#pragma once

#include <QIcon>
#include <QStringList>

/// A column of a ListView.
struct ListColumn {
    QString caption;
    /// Its share of the list's width, in any unit that is the same for all columns of the list.
    int width = 1;
    Qt::Alignment alignment = Qt::AlignLeft;
    /// What stands in it, for who hears it; empty if the caption says so. See setColumnName().
    QString name = {};
    /// A text that there is room for, however narrow the list is; empty if the caption says how
    /// wide.
    QString atLeast = {};
};

/// A row of a ListView: what stands in the first column and, as sub-items, in the others.
struct ListItem {
    /// Names the row; never shown.
    QString key;
    QString text;
    QStringList subItems;
    QIcon icon;
    bool checked = false;
};
