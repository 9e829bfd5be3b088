#include "controls/look/Spoken.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QTextDocumentFragment>
#include <QVariant>

#include <algorithm>
#include <utility>

namespace {

constexpr char kTold[] = "toldText";
constexpr char kAtOnce[] = "toldAtOnce";

Listener& listener() {
    static Listener function;
    return function;
}

QString plain(const QLabel& label) {
    QString text = label.text();
    if (label.textFormat() == Qt::RichText ||
        (label.textFormat() == Qt::AutoText && Qt::mightBeRichText(text)))
        text = QTextDocumentFragment::fromHtml(text).toPlainText();
    return label.buddy() ? text.remove('&') : text;
}

class SpokenLabel final : public SpokenText {
public:
    explicit SpokenLabel(QLabel& label)
        : SpokenText(&label, QAccessible::StaticText), label_(label) {}

    [[nodiscard]] QString text(QAccessible::Text which) const override {
        return which == QAccessible::Name && !isStatus() ? plain(label_) : SpokenText::text(which);
    }
    using SpokenText::text;
    [[nodiscard]] QAccessible::Role role() const override {
        if (label_.property(kAtOnce).toBool())
            return QAccessible::Notification;
        return label_.text().isEmpty() && !isStatus() ? QAccessible::Graphic
                                                      : QAccessible::StaticText;
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        const bool unread = type == QAccessible::TextInterface && !isStatus(); // its name says all
        return unread ? nullptr : SpokenText::interface_cast(type);
    }
    [[nodiscard]] QList<std::pair<QAccessibleInterface*, QAccessible::Relation>>
    relations(QAccessible::Relation match) const override {
        auto all = QAccessibleWidget::relations(match);
        if ((match & QAccessible::Labelled) && label_.buddy())
            all.append(
                {QAccessible::queryAccessibleInterface(label_.buddy()), QAccessible::Labelled});
        return all;
    }

protected:
    [[nodiscard]] QString shown() const override {
        if (!isStatus())
            return {};
        const QVariant told = label_.property(kTold);
        return told.isValid() ? told.toString() : plain(label_);
    }

private:
    [[nodiscard]] bool isStatus() const { return !label_.accessibleName().isEmpty(); }

    QLabel& label_;
};

class SpokenComboBox final : public SpokenText {
public:
    explicit SpokenComboBox(QComboBox& list)
        : SpokenText(&list, QAccessible::ComboBox), list_(list) {}

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
        return SpokenText::interface_cast(type);
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

protected:
    [[nodiscard]] QString shown() const override { return list_.currentText(); }

private:
    QComboBox& list_;
};

// Qt's own account would turn the mark without a click, and the windows wouldn't know.
class SpokenCheckBox final : public QAccessibleWidget {
public:
    explicit SpokenCheckBox(QCheckBox& box)
        : QAccessibleWidget(&box, QAccessible::CheckBox), box_(box) {}

    [[nodiscard]] QString text(QAccessible::Text which) const override {
        const QString own = QAccessibleWidget::text(which);
        if (which == QAccessible::Name && own.isEmpty())
            return box_.text().remove('&');
        return which == QAccessible::Accelerator ? box_.shortcut().toString() : own;
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = box_.isChecked();
        return state;
    }
    [[nodiscard]] QStringList actionNames() const override {
        const QStringList all = QAccessibleWidget::actionNames();
        return box_.isEnabled() ? QStringList(toggleAction()) + all : all;
    }
    void doAction(const QString& name) override {
        if (name == toggleAction())
            box_.click();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    QCheckBox& box_;
};

} // namespace

QString SpokenText::text(QAccessible::Text which) const {
    return which == QAccessible::Value ? shown() : QAccessibleWidget::text(which);
}

void* SpokenText::interface_cast(QAccessible::InterfaceType type) {
    return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface*>(this)
                                              : QAccessibleWidget::interface_cast(type);
}

void SpokenText::selection(int, int* start, int* end) const { *start = *end = 0; }

QString SpokenText::text(int start, int end) const {
    const QString all = shown();
    const qsizetype from = std::clamp<qsizetype>(start, 0, all.size());
    const qsizetype to = end < 0 ? all.size() : std::clamp<qsizetype>(end, from, all.size());
    return all.sliced(from, to - from);
}

int SpokenText::characterCount() const { return static_cast<int>(shown().size()); }

QString SpokenText::attributes(int, int* start, int* end) const {
    *start = 0;
    *end = characterCount();
    return {};
}

void showStatus(QLabel& label, const QString& text) { showStatus(label, text, text); }

void showStatus(QLabel& label, const QString& text, const QString& shown) {
    label.setText(shown);
    tellText(label, text);
    if (label.property(kAtOnce).toBool())
        label.setVisible(!text.isEmpty()); // Qt tells of one that comes up
}

void tellAtOnce(QLabel& label) { label.setProperty(kAtOnce, true); }

void tellText(QWidget& widget, const QString& text) {
    const QString before = widget.property(kTold).toString();
    if (text == before)
        return;
    widget.setProperty(kTold, text);
    if (!widget.isVisible())
        return;
    QAccessibleTextUpdateEvent changed(&widget, 0, before, text);
    tell(changed);
    if (!widget.property(kAtOnce).toBool() || text.isEmpty())
        return;
    QAccessibleEvent news(&widget, QAccessible::ObjectShow);
    tell(news);
}

void describe(QWidget& widget, const QString& words) {
    if (words != widget.accessibleDescription())
        widget.setAccessibleDescription(words);
}

void tell(QAccessibleEvent& change) {
    if (listener())
        listener()(change);
    else
        QAccessible::updateAccessibility(&change);
}

bool isHeard() { return listener() || QAccessible::isActive(); }

Listener setListener(Listener function) { return std::exchange(listener(), std::move(function)); }

void installSpoken() {
    installAccount<SpokenLabel, QLabel>();
    installAccount<SpokenComboBox, QComboBox>();
    installAccount<SpokenCheckBox, QCheckBox>();
}
