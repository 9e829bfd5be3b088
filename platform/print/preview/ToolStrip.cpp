#include "print/preview/ToolStrip.h"

#include "controls/look/Icons.h"
#include "controls/window/Failure.h"
#include "print/preview/ToolRows.h"
#include "print/preview/WidgetKeys.h"

#include <QAction>
#include <QToolBar>
#include <QToolButton>

namespace {

constexpr QSize kIconSize(20, 20);

} // namespace

ToolStrip::ToolStrip(QWidget& window, QWidget& shown)
    : QWidget(&window), window_(window), shown_(shown) {
    setLayout(new ToolRows(this));
}

QToolBar& ToolStrip::addGroup(const char* name) {
    auto* bar = new QToolBar(this);
    bar->setIconSize(kIconSize);
    bar->setAccessibleName(QString::fromUtf8(name));
    layout()->addWidget(bar);
    return *bar;
}

void ToolStrip::add(QToolBar& group, const Tool& tool) {
    const QString tip = QString::fromUtf8(tool.tip);
    auto* action = new QAction(Icons::named(tool.name), tip, &window_);
    action->setShortcut(QKeySequence(tool.key));
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    const QString key = tool.toldKey ? tool.toldKey : tool.key;
    action->setToolTip(QString("%1 (%2)").arg(tip, QString(key).replace("PgDown", "PgDn")));
    connect(action, &QAction::triggered, this, [work = tool.work] { guarded(work); });
    window_.addAction(action);
    group.addAction(action);
    auto* button = qobject_cast<QToolButton*>(group.widgetForAction(action));
    button->setObjectName(tool.name);
    button->setAccessibleName(tip);
    button->setFocusPolicy(Qt::TabFocus);
    if (*tool.text) {
        action->setIconText(QString::fromUtf8(tool.text));
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    }
    actions_[tool.name] = action;
}

void ToolStrip::addKey(const QKeySequence& key, const Work& work) {
    addKeys(window_, {key}, work, true);
}

void ToolStrip::setToolEnabled(const QString& name, bool enabled) {
    if (const auto* button = findChild<QToolButton*>(name); !enabled && button->hasFocus())
        shown_.setFocus();
    actions_[name]->setEnabled(enabled);
}

// What is shown under the rows gives way to them.
void ToolStrip::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    setMinimumHeight(layout()->heightForWidth(width()));
}

#include "print/preview/moc_ToolStrip.cpp"
