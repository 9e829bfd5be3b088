#include "print/preview/FocusReturn.h"

#include <QApplication>
#include <QScopedValueRollback>
#include <QWidget>

FocusReturn::FocusReturn(QWidget& within, QWidget& otherwise)
    : QObject(&within), within_(within), otherwise_(otherwise) {
    connect(qApp, &QApplication::focusChanged, this, &FocusReturn::moved);
}

void FocusReturn::watch(QWidget& box) { before_[&box]; }

void FocusReturn::leave(QWidget& box) {
    if (!box.hasFocus())
        return;
    QWidget* const before = before_.value(&box);
    // Back in the other box one isn't on the way to this one again.
    const QScopedValueRollback leaving(leaving_, true);
    const bool takesIt = before && before->isVisible() && before->isEnabled();
    (takesIt ? before : &otherwise_)->setFocus(Qt::OtherFocusReason);
}

void FocusReturn::moved(QWidget* from, QWidget* to) {
    const auto box = before_.find(to);
    // From nowhere it comes when the window is active again: it has been in the box before.
    if (box != before_.end() && from && !leaving_)
        *box = within_.isAncestorOf(from) ? from : nullptr;
}

#include "print/preview/moc_FocusReturn.cpp"
