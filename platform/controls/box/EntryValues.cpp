#include "controls/box/EntryValues.h"

#include "controls/box/ClearControls.h"
#include "controls/box/DatePicker.h"
#include "controls/box/DropDownList.h"
#include "controls/box/MemoEdit.h"
#include "controls/box/MoneyEdit.h"

#include <QCheckBox>

#include <algorithm>
#include <utility>

namespace {

/// The text of a control and what puts its value back.
struct Restorable {
    QString text;
    bool changeable = true;
    std::function<void()> restore;
};

// The special boxes before the text box that they are as well.
Restorable restorable(QWidget& widget) {
    if (auto* money = qobject_cast<MoneyEdit*>(&widget))
        return {formatMoneyExactly(money->valor()), !money->isReadOnly(),
                [money, valor = money->valor()] { money->setValor(valor); }};
    if (auto* date = qobject_cast<DatePicker*>(&widget))
        return {date->text(), !date->isReadOnly(),
                [date, value = date->value()] { date->setValue(value); }};
    if (auto* list = qobject_cast<DropDownList*>(&widget))
        return {list->text(), true, [list, text = list->text(), chosen = list->listIndex()] {
                    chosen < 0 ? list->setText(text) : list->setListIndex(chosen);
                }};
    if (auto* box = qobject_cast<QCheckBox*>(&widget))
        return {box->isChecked() ? "Sim" : "Não", true,
                [box, ticked = box->isChecked()] { box->setChecked(ticked); }};
    if (auto* memo = qobject_cast<MemoEdit*>(&widget))
        return {memo->text(), !memo->isReadOnly(),
                [memo, text = memo->text()] { memo->setText(text); }};
    if (auto* box = qobject_cast<QLineEdit*>(&widget))
        return {box->text(), !box->isReadOnly(), [box, text = box->text()] {
                    box->setText(text);
                    box->setCursorPosition(0);
                }};
    return {};
}

QString nameOf(const QWidget& widget) {
    if (const auto* box = qobject_cast<const QCheckBox*>(&widget))
        return box->text().remove('&');
    return widget.accessibleName();
}

} // namespace

// By the order of Tab: the order of the children changes with the tab that is in front.
EntryValues::EntryValues(const QWidget& window) {
    for (QWidget* widget = window.nextInFocusChain(); widget != &window;
         widget = widget->nextInFocusChain()) {
        if (isPartOfControl(*widget))
            continue;
        Restorable now = restorable(*widget);
        if (now.restore)
            entries_.push_back(
                {widget, nameOf(*widget), now.text, now.changeable, std::move(now.restore)});
    }
}

void EntryValues::restore() const {
    for (const Entry& entry : entries_)
        if (entry.changeable)
            entry.restore();
}

std::vector<EntryValues::Difference> EntryValues::differencesTo(const EntryValues& other) const {
    std::vector<Difference> differences;
    for (const Entry& here : entries_) {
        const auto there = std::ranges::find(other.entries_, here.control, &Entry::control);
        if (there != other.entries_.end() && !here.name.isEmpty() && here.text != there->text)
            differences.push_back(
                {here.control, here.name, here.text, there->text, here.changeable});
    }
    return differences;
}
