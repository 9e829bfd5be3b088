#include "support/FormChecks.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMap>
#include <QTabBar>
#include <QTreeView>

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

QStringList cutHeadings(const QTreeView& list) {
    QStringList cut;
    const QHeaderView& head = *list.header();
    for (int column = 0; column < head.count(); ++column) {
        const QString text = list.model()->headerData(column, Qt::Horizontal).toString();
        if (!text.trimmed().isEmpty() && head.sectionSizeHint(column) > head.sectionSize(column))
            cut << QString("%1: \"%2\"").arg(called(list), text);
    }
    return cut;
}

bool isCut(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return !label->text().isEmpty() &&
               (label->wordWrap() ? label->heightForWidth(label->width()) > label->height()
                                  : label->sizeHint().width() > label->width() ||
                                        label->sizeHint().height() > label->height());
    const auto* button = qobject_cast<const QAbstractButton*>(&widget);
    return button && !button->text().isEmpty() && button->sizeHint().width() > button->width();
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
        if (const auto* list = qobject_cast<const QTreeView*>(control)) {
            for (const QString& heading : cutHeadings(*list))
                cut << "heading is cut: " + heading;
        }
    }
    return cut;
}

QStringList faultsOf(const QWidget& window) {
    return controlsWithoutName(window) + sharedAccessKeys(window) + cutTexts(window);
}
