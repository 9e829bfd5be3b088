#include "shell/AreaDeTrabalho.h"

#include "agenda/painel/PainelDoDia.h"
#include "controls/look/Icons.h"

#include <QEvent>
#include <QMdiSubWindow>
#include <QPainter>
#include <QToolButton>

#include <algorithm>

namespace {

constexpr int kMarkSize = 160; // logical pixels
constexpr qreal kMarkOpacity = 0.14;
constexpr int kCorner = 8; // pixels between the button and the area's corner

} // namespace

AreaDeTrabalho::AreaDeTrabalho(QWidget* parent)
    : QMdiArea(parent), painel_(new PainelDoDia(&QDate::currentDate, viewport())),
      cmdpainel(new QToolButton(viewport())) {
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setAccessibleName("Área de trabalho");
    setFocusPolicy(Qt::NoFocus);
    vestir();
    cmdpainel->setObjectName("cmdpainel");
    cmdpainel->setText("Mostrar painel");
    cmdpainel->setIcon(Icons::named("calendar"));
    cmdpainel->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    cmdpainel->setAutoRaise(true);
    connect(cmdpainel, &QToolButton::clicked, this, [this] { trocar(true); });
    connect(painel_, &PainelDoDia::ocultado, this, [this] { trocar(false); });
    arrumar();
}

void AreaDeTrabalho::ligarPainel(bool sim) {
    ligado_ = sim;
    arrumar();
}

void AreaDeTrabalho::trocar(bool sim) {
    ligarPainel(sim);
    emit painelTrocado(sim);
}

void AreaDeTrabalho::arrumar() {
    const auto janelas = subWindowList();
    const bool livre = std::ranges::all_of(janelas, &QMdiSubWindow::isHidden);
    painel_->setGeometry(viewport()->rect());
    painel_->setVisible(livre && ligado_);
    QRect canto({}, cmdpainel->sizeHint());
    canto.moveBottomRight(viewport()->rect().bottomRight() - QPoint(kCorner, kCorner));
    cmdpainel->setGeometry(canto);
    cmdpainel->setVisible(livre && !ligado_);
    viewport()->update();
}

bool AreaDeTrabalho::eventFilter(QObject* watched, QEvent* event) {
    const bool taken = QMdiArea::eventFilter(watched, event);
    if ((event->type() == QEvent::Show || event->type() == QEvent::Hide) &&
        qobject_cast<QMdiSubWindow*>(watched))
        arrumar();
    return taken;
}

void AreaDeTrabalho::resizeEvent(QResizeEvent* event) {
    QMdiArea::resizeEvent(event);
    arrumar();
}

void AreaDeTrabalho::vestir() { setBackground(palette().color(QPalette::Window)); }

void AreaDeTrabalho::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange)
        vestir();
    QMdiArea::changeEvent(event);
}

void AreaDeTrabalho::paintEvent(QPaintEvent* event) {
    QMdiArea::paintEvent(event);
    if (!painel_->isHidden())
        return;
    QPainter painter(viewport());
    painter.setOpacity(kMarkOpacity);
    QRect mark(0, 0, kMarkSize, kMarkSize);
    mark.moveCenter(viewport()->rect().center());
    Icons::named("valtrino").paint(&painter, mark);
}

#include "shell/moc_AreaDeTrabalho.cpp"
