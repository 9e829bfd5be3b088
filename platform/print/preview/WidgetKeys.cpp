#include "print/preview/WidgetKeys.h"

#include "controls/window/Failure.h"

#include <QAction>
#include <QWidget>

void addKeys(QWidget& widget, const QList<QKeySequence>& keys, const std::function<void()>& work,
             bool inside) {
    auto* action = new QAction(&widget);
    action->setShortcuts(keys);
    action->setShortcutContext(inside ? Qt::WidgetWithChildrenShortcut : Qt::WidgetShortcut);
    QObject::connect(action, &QAction::triggered, &widget, [work] { guarded(work); });
    widget.addAction(action);
}
