#pragma once

#include <QKeySequence>
#include <QList>

#include <functional>

class QWidget;

/// Keys that do `work`, guarded, while the widget has the focus; so that no window around it gets
/// them.
/// @param inside also while what is inside it has the focus, and doesn't take them itself
void addKeys(QWidget& widget, const QList<QKeySequence>& keys, const std::function<void()>& work,
             bool inside = false);
