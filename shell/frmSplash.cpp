#include "shell/frmSplash.h"

#include "controls/look/Icons.h"
#include "controls/look/Style.h"
#include "controls/window/WindowList.h"
#include "shell/Configuracao.h"
#include "shell/DatabaseFolder.h"
#include "shell/MDICheques.h"
#include "shell/dbconectar.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QWindow>

#include <chrono>

using namespace std::chrono_literals;

frmSplash::frmSplash() {
    setupUi(this);
    QFont nome = headingFont();
    nome.setPointSizeF(nome.pointSizeF() * 1.6);
    lblProduto->setFont(nome);
    imgProduto->setPixmap(Icons::named("valtrino").pixmap({128, 128}, devicePixelRatio()));
    setWindowFlags(Qt::SplashScreen | Qt::FramelessWindowHint);
    Timer1.setInterval(10ms);
    Timer1.setSingleShot(true); // the second is waited for once
    on(&Timer1, &QTimer::timeout, &frmSplash::Timer1_Timer);
}

frmSplash& frmSplash::instance() { return WindowList::instance().one<frmSplash>(); }

void frmSplash::Form_Load() {
    centre();
    show();
    pintar();
    Mirtal::DatabaseFolder = Configuracao::pastaDosDados(Configuracao::pastaDoPrograma());
    dbconectar::instance().abrir();
    Timer1.start();
}

// The opening holds the thread: the window must be on the screen before it, not after. A screen
// that never shows it (none attached) mustn't hold up the shop.
void frmSplash::pintar() {
    const QDeadlineTimer limite(500ms);
    while (!windowHandle()->isExposed() && !limite.hasExpired())
        QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

void frmSplash::closeEvent(QCloseEvent* event) { event->ignore(); }

void frmSplash::Timer1_Timer() {
    QEventLoop segundo;
    QTimer::singleShot(1s, &segundo, &QEventLoop::quit);
    segundo.exec();
    unload();
    MDICheques::instance().show();
    MDICheques::instance().cuidarDaCopia();
    MDICheques::instance().avisar();
}

#include "shell/moc_frmSplash.cpp"
