#include "controls/box/ClearControls.h"

#include "controls/box/ActiveText.h"
#include "controls/box/DatePicker.h"
#include "controls/box/DropDownList.h"
#include "controls/box/MoneyEdit.h"

#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWidget>

namespace {

/// Does `clear` and says yes if the widget is a Control.
template <class Control, class Clear>
bool is(QWidget* widget, Clear clear) {
    auto* control = qobject_cast<Control*>(widget);
    if (control)
        clear(*control);
    return control != nullptr;
}

// The special boxes first: they are text boxes too.
void clearControl(QWidget* widget) {
    const bool done =
        isPartOfControl(*widget) ||
        is<MoneyEdit>(widget, [](MoneyEdit& money) { money.setValor({}); }) ||
        is<DatePicker>(widget, [](DatePicker& date) { date.setValue(QDate::currentDate()); }) ||
        is<DropDownList>(widget, [](DropDownList& list) { list.setListIndex(-1); }) ||
        is<QCheckBox>(widget, [](QCheckBox& box) { box.setChecked(false); }) ||
        is<QLineEdit>(widget, [](QLineEdit& box) { box.clear(); }) ||
        is<QPlainTextEdit>(widget, [](QPlainTextEdit& box) { box.clear(); }) ||
        is<QTextEdit>(widget, [](QTextEdit& box) { box.clear(); });
    Q_UNUSED(done);
}

} // namespace

bool isPartOfControl(const QWidget& widget) {
    const QWidget* parent = widget.parentWidget();
    return qobject_cast<const QComboBox*>(parent) || qobject_cast<const QAbstractSpinBox*>(parent);
}

void limparControles(QWidget& window) {
    for (QWidget* widget : window.findChildren<QWidget*>())
        clearControl(widget);
}
