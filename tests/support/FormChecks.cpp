#include "support/FormChecks.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMap>
#include <QPlainTextEdit>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QStyleOptionFrame>
#include <QTabBar>
#include <QToolButton>
#include <QTreeView>

#include <utility>

namespace {

/// The widget's own name and its kind: "txtNome (QLineEdit)".
QString called(const QWidget& widget) {
    return QString("%1 (%2)").arg(widget.objectName(), widget.metaObject()->className());
}

/// The controls on show that are controls of their own, not parts of others.
QList<QWidget*> controlsOf(const QWidget& window) {
    QList<QWidget*> controls;
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        const QWidget* parent = widget->parentWidget();
        const bool part = qobject_cast<const QComboBox*>(parent) ||
                          qobject_cast<const QAbstractSpinBox*>(parent) ||
                          qobject_cast<const QLineEdit*>(parent) || widget->window() != &window;
        if (!part && widget->isVisibleTo(&window))
            controls << widget;
    }
    return controls;
}

/// The captions of a widget that can have an access key.
QStringList captionsOf(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return label->buddy() ? QStringList(label->text()) : QStringList();
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        return {button->text()};
    if (const auto* group = qobject_cast<const QGroupBox*>(&widget))
        return {group->title()};
    QStringList captions;
    if (const auto* tabs = qobject_cast<const QTabBar*>(&widget))
        for (int i = 0; i < tabs->count(); ++i)
            captions << tabs->tabText(i);
    return captions;
}

/// Whether it takes what room there is and says elsewhere what it can't show.
bool givesWay(const QWidget& widget) {
    return widget.sizePolicy().horizontalPolicy() == QSizePolicy::Ignored;
}

bool isLabelCut(const QLabel& label) {
    if (label.text().isEmpty() || givesWay(label))
        return false;
    if (label.wordWrap())
        return label.heightForWidth(label.width()) > label.height();
    const QSize wanted = label.sizeHint();
    return wanted.width() > label.width() || wanted.height() > label.height();
}

/// The room for text, the buttons in the box taken off.
int roomIn(const QLineEdit& box) {
    QStyleOptionFrame option;
    option.initFrom(&box);
    option.lineWidth = box.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, &box);
    const QRect inside = box.style()->subElementRect(QStyle::SE_LineEditContents, &option, &box);
    int buttons = 0;
    for (const auto* button : box.findChildren<QToolButton*>())
        if (button->isVisible())
            buttons += button->width();
    constexpr int kMargins = 4; // Qt's own, both sides
    return inside.width() - buttons - kMargins;
}

/// Words may go on beyond a field's end: the caret goes there. A number, a date or an entry of a
/// list that can't be typed into is read whole or wrongly.
bool isValueCut(const QWidget& widget) {
    if (const auto* box = qobject_cast<const QLineEdit*>(&widget)) {
        const QFontMetrics metrics = box->fontMetrics();
        const bool isShort = box->maxLength() <= 20;
        const QString widest = isShort ? QString(box->maxLength(), '0') : QString();
        return metrics.horizontalAdvance(box->displayText()) > roomIn(*box) ||
               metrics.horizontalAdvance(widest) > roomIn(*box) ||
               box->sizeHint().height() > box->height();
    }
    const auto* list = qobject_cast<const QComboBox*>(&widget);
    if (!list)
        return false;
    QStyleOptionComboBox option;
    option.initFrom(list);
    option.editable = list->isEditable();
    const QRect inside = list->style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                       QStyle::SC_ComboBoxEditField, list);
    return list->fontMetrics().horizontalAdvance(list->currentText()) > inside.width() ||
           list->sizeHint().height() > list->height();
}

bool isCut(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return isLabelCut(*label);
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        return !button->text().isEmpty() && (button->sizeHint().width() > button->width() ||
                                             button->sizeHint().height() > button->height());
    if (const auto* frame = qobject_cast<const QGroupBox*>(&widget))
        return frame->minimumSizeHint().width() > frame->width();
    if (const auto* tabs = qobject_cast<const QTabBar*>(&widget))
        return tabs->sizeHint().width() > tabs->width() ||
               tabs->sizeHint().height() > tabs->height();
    return isValueCut(widget);
}

/// Headings, and the values that stand at the right or in the middle: amounts, codes and dates.
QStringList cutColumns(const QTreeView& list) {
    QStringList cut;
    const QHeaderView& head = *list.header();
    if (head.isHidden())
        return cut;
    if (!list.indexAt({0, 0}).isValid() && list.model()->rowCount() > 0 && list.isVisible())
        cut << "no row is in sight: " + called(list);
    for (int column = 0; column < head.count(); ++column) {
        const QString text = list.model()->headerData(column, Qt::Horizontal).toString();
        if (!text.trimmed().isEmpty() && head.sectionSizeHint(column) > head.sectionSize(column))
            cut << QString("heading is cut: %1: \"%2\"").arg(called(list), text);
        const QModelIndex first = list.model()->index(0, column);
        const auto alignment = first.data(Qt::TextAlignmentRole).value<Qt::Alignment>();
        if (first.isValid() && (alignment & (Qt::AlignRight | Qt::AlignHCenter)) &&
            list.sizeHintForIndex(first).width() > head.sectionSize(column))
            cut << QString("value is cut: %1: \"%2\"").arg(called(list), first.data().toString());
    }
    return cut;
}

/// What is seen as one thing and holds no others.
bool isLeaf(const QWidget& widget) {
    return qobject_cast<const QLabel*>(&widget) || qobject_cast<const QAbstractButton*>(&widget) ||
           qobject_cast<const QLineEdit*>(&widget) || qobject_cast<const QComboBox*>(&widget) ||
           qobject_cast<const QAbstractItemView*>(&widget) ||
           qobject_cast<const QPlainTextEdit*>(&widget) || qobject_cast<const QTabBar*>(&widget);
}

/// Whether it is a part of something that scrolls, where it may lie out of sight.
bool scrolls(const QWidget& widget) {
    const QWidget* area = widget.parentWidget() ? widget.parentWidget()->parentWidget() : nullptr;
    return qobject_cast<const QAbstractScrollArea*>(area) != nullptr;
}

} // namespace

QStringList controlsWithoutName(const QWidget& window) {
    QStringList nameless;
    for (QWidget* control : controlsOf(window)) {
        if (control->focusPolicy() == Qt::NoFocus || qobject_cast<QTabBar*>(control))
            continue;
        const auto* accessible = QAccessible::queryAccessibleInterface(control);
        if (!accessible || accessible->text(QAccessible::Name).isEmpty())
            nameless << "no accessible name: " + called(*control);
    }
    return nameless;
}

QStringList sharedAccessKeys(const QWidget& window) {
    QMap<QString, QStringList> owners;
    for (const QWidget* control : controlsOf(window)) {
        for (const QString& caption : captionsOf(*control)) {
            const QKeySequence key = QKeySequence::mnemonic(caption);
            if (!key.isEmpty())
                owners[key.toString()] << called(*control);
        }
    }
    QStringList shared;
    for (auto it = owners.cbegin(); it != owners.cend(); ++it) {
        if (it->size() > 1)
            shared << QString("%1 is shared: %2").arg(it.key(), it->join(", "));
    }
    return shared;
}

QStringList cutTexts(const QWidget& window) {
    QStringList cut;
    for (const QWidget* control : controlsOf(window)) {
        if (isCut(*control))
            cut << "text is cut: " + called(*control);
        if (const auto* list = qobject_cast<const QTreeView*>(control))
            cut << cutColumns(*list);
    }
    return cut;
}

QRect seenOf(const QWidget& control) {
    QRect seen = control.rect();
    for (const QWidget* within = &control; !within->isWindow(); within = within->parentWidget())
        seen = seen.translated(within->pos()) & within->parentWidget()->rect();
    return seen;
}

QStringList overlaps(const QWidget& window) {
    QStringList found;
    QList<std::pair<const QWidget*, QRect>> leaves;
    for (const QWidget* control : controlsOf(window)) {
        if (control->objectName().startsWith("qt_") || control->size().isEmpty())
            continue;
        if (!scrolls(*control) && !control->parentWidget()->rect().contains(control->geometry()))
            found << "reaches out: " + called(*control);
        if (isLeaf(*control))
            leaves.append({control, seenOf(*control)});
    }
    for (qsizetype i = 0; i < leaves.size(); ++i)
        for (qsizetype j = 0; j < i; ++j)
            if (leaves[i].second.intersects(leaves[j].second) &&
                !leaves[i].first->isAncestorOf(leaves[j].first) &&
                !leaves[j].first->isAncestorOf(leaves[i].first))
                found << called(*leaves[j].first) + " stands over " + called(*leaves[i].first);
    return found;
}

QStringList faultsOf(const QWidget& window) {
    return controlsWithoutName(window) + sharedAccessKeys(window) + cutTexts(window) +
           overlaps(window);
}
