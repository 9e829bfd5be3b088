#include "controls/window/FieldNames.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>

void nameByLabels(const QWidget& window) {
    for (const auto* label : window.findChildren<QLabel*>()) {
        QWidget* control = label->buddy();
        if (!control || !control->accessibleName().isEmpty())
            continue;
        QString name = label->text().remove('&').trimmed();
        if (name.endsWith(':'))
            name.chop(1);
        control->setAccessibleName(name.trimmed());
    }
    for (auto* button : window.findChildren<QAbstractButton*>()) {
        const auto* box = qobject_cast<QLineEdit*>(button->parentWidget());
        if (box && button->accessibleName().isEmpty()) // the picture in a date box
            button->setAccessibleName("Calendário de " + box->accessibleName());
        else if (button->text().endsWith(':') && button->accessibleName().isEmpty())
            button->setAccessibleName(button->text().chopped(1).remove('&'));
    }
}
