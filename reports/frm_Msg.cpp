#include "reports/frm_Msg.h"

#include "controls/look/Icons.h"
#include "controls/look/Style.h"
#include "controls/window/WindowList.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QWindow>

#include <chrono>

using namespace std::chrono_literals;

frm_Msg::frm_Msg() {
    setupUi(this);
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    lblMsg->setFont(headingFont());
    imgMsg->setPixmap(Icons::named("print").pixmap({48, 48}, devicePixelRatio()));
}

frm_Msg& frm_Msg::instance() { return WindowList::instance().one<frm_Msg>(); }

void frm_Msg::setMensagem(const QString& texto) {
    lblMsg->setText(texto);
    lblMsg->repaint();
}

// What is waited for holds the thread: the window must be on the screen before it. A screen that
// never shows it mustn't hold up the shop.
Espera::Espera(const QString& texto) {
    frm_Msg& janela = frm_Msg::instance();
    janela.setMensagem(texto);
    janela.showModeless();
    const QDeadlineTimer limite(300ms);
    const auto pintar = [] { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); };
    while (!janela.windowHandle()->isExposed() && !limite.hasExpired())
        pintar();
    pintar();
}

#include "reports/moc_frm_Msg.cpp"
