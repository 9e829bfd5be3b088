#include "shell/frmSplash.h"

#include "ado/ConnectionString.h"
#include "ado/ServerShop.h"
#include "controls/look/Icons.h"
#include "controls/look/Style.h"
#include "controls/window/PasswordBox.h"
#include "controls/window/WindowList.h"
#include "jet/Error.h"
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
    abrirComSenha();
    Timer1.start();
}

// A server may ask for a password that neither ~/.pgpass nor its address has. Who doesn't know it
// is told what any other failure is told.
void frmSplash::abrirComSenha() {
    QString motivo;
    for (;;) {
        try {
            return dbconectar::instance().abrir();
        } catch (const jet::Error& recusa) {
            const QString lugar = Mirtal::DatabaseFolder;
            if (recusa.code() != jet::Errc::password || !ado::isServerAddress(lugar.toStdString()))
                throw;
            hide(); // it would stand over the question
            const auto senha =
                askPassword(motivo + "O servidor pede a senha de quem entra em\n" +
                                QString::fromStdString(ado::shownSource(
                                    "Data Source=" + ado::quotedValue(lugar.toStdString()))),
                            "Senha do servidor");
            if (!senha)
                throw;
            dbconectar::instance().setSenha(*senha);
            motivo = "O usuário ou a senha não foi aceito.\n\n";
            show();
        }
    }
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
