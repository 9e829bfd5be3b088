#include "shell/AreaDeTrabalho.h"

#include "controls/look/Icons.h"

#include <QEvent>
#include <QPainter>

namespace {

constexpr int kMarkSize = 160; // logical pixels
constexpr qreal kMarkOpacity = 0.14;

} // namespace

AreaDeTrabalho::AreaDeTrabalho(QWidget* parent) : QMdiArea(parent) {
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setAccessibleName("Área de trabalho");
    setFocusPolicy(Qt::NoFocus);
    vestir();
}

void AreaDeTrabalho::vestir() { setBackground(palette().color(QPalette::Window)); }

void AreaDeTrabalho::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange)
        vestir();
    QMdiArea::changeEvent(event);
}

void AreaDeTrabalho::paintEvent(QPaintEvent* event) {
    QMdiArea::paintEvent(event);
    QPainter painter(viewport());
    painter.setOpacity(kMarkOpacity);
    QRect mark(0, 0, kMarkSize, kMarkSize);
    mark.moveCenter(viewport()->rect().center());
    Icons::named("valtrino").paint(&painter, mark);
}

#include "shell/moc_AreaDeTrabalho.cpp"
