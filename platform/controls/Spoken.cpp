#include "controls/Spoken.h"

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTextDocumentFragment>

namespace {

QString plain(const QLabel& label) {
    QString text = label.text();
    if (label.textFormat() == Qt::RichText ||
        (label.textFormat() == Qt::AutoText && Qt::mightBeRichText(text)))
        text = QTextDocumentFragment::fromHtml(text).toPlainText();
    return label.buddy() ? text.remove('&') : text;
}

class SpokenLabel final : public QAccessibleWidget {
public:
    explicit SpokenLabel(QLabel& label)
        : QAccessibleWidget(&label, QAccessible::StaticText), label_(label) {}

    [[nodiscard]] QString text(QAccessible::Text which) const override {
        const bool named = !label_.accessibleName().isEmpty();
        if (which == QAccessible::Name)
            return named ? label_.accessibleName() : plain(label_);
        if (which == QAccessible::Value)
            return named ? plain(label_) : QString();
        return QAccessibleWidget::text(which);
    }
    [[nodiscard]] QAccessible::Role role() const override {
        return label_.text().isEmpty() && label_.accessibleName().isEmpty()
                   ? QAccessible::Graphic
                   : QAccessible::StaticText;
    }
    [[nodiscard]] QList<std::pair<QAccessibleInterface*, QAccessible::Relation>>
    relations(QAccessible::Relation match) const override {
        auto all = QAccessibleWidget::relations(match);
        if ((match & QAccessible::Labelled) && label_.buddy())
            all.append(
                {QAccessible::queryAccessibleInterface(label_.buddy()), QAccessible::Labelled});
        return all;
    }

private:
    QLabel& label_;
};

class SpokenComboBox final : public QAccessibleWidget {
public:
    explicit SpokenComboBox(QComboBox& list)
        : QAccessibleWidget(&list, QAccessible::ComboBox), list_(list) {}

    [[nodiscard]] QString text(QAccessible::Text which) const override {
        return which == QAccessible::Value ? list_.currentText() : QAccessibleWidget::text(which);
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.editable = list_.isEditable();
        state.expandable = true;
        state.expanded = list_.view()->isVisible();
        state.collapsed = !state.expanded;
        return state;
    }
    // Its line of text is no control of its own; the entries are those of the open list.
    [[nodiscard]] int childCount() const override { return 1; }
    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        return index == 0 ? QAccessible::queryAccessibleInterface(list_.view()) : nullptr;
    }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
        return child && child->object() == list_.view() ? 0 : -1;
    }
    // Caret and marks are those of its line of text.
    void* interface_cast(QAccessible::InterfaceType type) override {
        if (list_.isEditable() &&
            (type == QAccessible::TextInterface || type == QAccessible::EditableTextInterface))
            return QAccessible::queryAccessibleInterface(list_.lineEdit())->interface_cast(type);
        return QAccessibleWidget::interface_cast(type);
    }
    [[nodiscard]] QStringList actionNames() const override {
        return QStringList(showMenuAction()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name == showMenuAction())
            list_.showPopup();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    QComboBox& list_;
};

QAccessibleInterface* spoken(const QString& className, QObject* object) {
    if (className == "QLabel")
        if (auto* label = qobject_cast<QLabel*>(object))
            return new SpokenLabel(*label);
    if (className == "QComboBox")
        if (auto* list = qobject_cast<QComboBox*>(object))
            return new SpokenComboBox(*list);
    return nullptr;
}

} // namespace

void installSpoken() {
    [[maybe_unused]] static const bool once = [] {
        QAccessible::installFactory(&spoken);
        return true;
    }();
}
