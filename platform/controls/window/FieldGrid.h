#pragma once

class QWidget;

/// How the fields of a window stand when it is made larger. In a .ui a field is short where its
/// item is aligned to the left or its size is fixed; a column that is to grow is stretched there.

/// Short fields of one column are as wide as the widest of them, so that they end at one line; no
/// field gives its width to others of its row; rows stay together at the top where nothing in the
/// grid takes the height.
void arrangeFields(const QWidget& window);
