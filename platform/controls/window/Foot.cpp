#include "controls/window/Foot.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>

#include <algorithm>

Foot::Foot(QWidget* parent) : QFrame(parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void Foot::showEvent(QShowEvent* event) {
    alignButtons();
    QFrame::showEvent(event);
}

void Foot::alignButtons() {
    const auto buttons = findChildren<QPushButton*>();
    QSize size;
    for (const auto* button : buttons)
        size = size.expandedTo(button->sizeHint());
    for (auto* button : buttons)
        button->setMinimumSize(size);
}

void Foot::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(0, 0, width(), 0);
}

#include "controls/window/moc_Foot.cpp"
