#include "shell/Programa.h"

#include "ado/ServerShop.h"
#include "controls/look/Icons.h"
#include "controls/look/Style.h"
#include "controls/system/EndOfSession.h"
#include "controls/window/Failure.h"
#include "controls/window/MessageBox.h"
#include "controls/window/PasswordBox.h"
#include "controls/window/WindowList.h"
#include "jet/Backup.h"
#include "jet/Error.h"
#include "jet/Waiting.h"
#include "shell/DatabaseFolder.h"
#include "shell/Gravacao.h"
#include "shell/MDICheques.h"
#include "shell/OutraVersao.h"
#include "shell/dbconectar.h"
#include "shell/frmSplash.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QStatusBar>
#include <QThread>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

using namespace std::chrono_literals;

namespace {

// How often changes that wait to be written are looked at while the operator does nothing.
constexpr auto kFlushInterval = 100ms;
// What another station has stored shows by so much later at most, which nobody notices; in return a
// list of many rows doesn't ask for it at each field.
constexpr auto kSnapshotHold = 5ms;

QString descricao(const std::exception_ptr& falha) {
    try {
        std::rethrow_exception(falha);
    } catch (const std::bad_alloc&) {
        return "Não há memória suficiente.";
    } catch (const std::exception& erro) {
        return QString::fromUtf8(erro.what());
    } catch (...) {
        return "Ocorreu um erro não previsto.";
    }
}

/// Whether the operator can try again: another station or a foreign program has the file, the disk
/// is full, the line to the server has broken, what was typed breaks a rule that the file declares
/// or doesn't fit, or the file lacks a table or field that this one operation needs. Nothing was
/// saved then.
bool podeRepetir(const std::exception_ptr& falha) {
    try {
        std::rethrow_exception(falha);
    } catch (const jet::Error& erro) {
        switch (erro.code()) {
        case jet::Errc::locked:
        case jet::Errc::conflict:
        case jet::Errc::gone:
        case jet::Errc::readOnly:
        case jet::Errc::full:
        case jet::Errc::rule:
        case jet::Errc::related:
        case jet::Errc::nullValue:
        case jet::Errc::duplicate:
        case jet::Errc::outOfRange:
        case jet::Errc::tooLong:
        case jet::Errc::notFound:
        case jet::Errc::offline:
        case jet::Errc::password:
            return dbconectar::instance().aberto();
        default:
            return false;
        }
    } catch (...) {
        return false;
    }
}

/// Whether the failure was told as one of a record that another has changed or deleted.
bool mostrarOutraVersao(const std::exception_ptr& falha) {
    try {
        std::rethrow_exception(falha);
    } catch (const jet::Error& erro) {
        if (erro.code() == jet::Errc::conflict)
            return mostrarOutraVersao(QString(erro.what()));
        if (erro.code() != jet::Errc::gone)
            return false;
        showMessage(erro.what() + QString(" O que foi digitado continua na tela."), "Mensagem",
                    MessageIcon::exclamation);
        return true;
    } catch (...) {
        return false;
    }
}

/// Whether it was that the server wants another password than it did in the morning, which has been
/// asked for then: with the new one what has failed can be done again.
bool pedirSenha(const std::exception_ptr& falha) {
    try {
        std::rethrow_exception(falha);
    } catch (const jet::Error& erro) {
        if (erro.code() != jet::Errc::password)
            return false;
        const auto senha = askPassword(
            erro.what() + QString("\n\nO que foi digitado continua na tela."), "Senha do servidor");
        if (senha)
            dbconectar::instance().setSenha(*senha);
        return true;
    } catch (...) {
        return false;
    }
}

/// The main window, if there is one yet.
MDICheques* principal() {
    for (QWidget* janela : QApplication::topLevelWidgets())
        if (auto* achada = qobject_cast<MDICheques*>(janela))
            return achada;
    return nullptr;
}

/// That the file is damaged is known then at the next start, and in the other stations.
/// @return what is damaged; nothing if that isn't what has failed.
std::optional<QString> anotarDano(const std::exception_ptr& falha) {
    if (!dbconectar::instance().aberto())
        return std::nullopt;
    const jet::Database* const arquivo = dbconectar::instance().Automacao.store().file();
    if (!arquivo)
        return std::nullopt;
    try {
        std::rethrow_exception(falha);
    } catch (const jet::Error& erro) {
        if (erro.code() != jet::Errc::corrupt && arquivo->damage() != erro.what())
            return std::nullopt;
        jet::Backup(arquivo->path()).noteDamage(erro.what());
        return erro.what();
    } catch (...) {
        return std::nullopt; // nothing of the file's
    }
}

/// Whether the same, tried again, may go well: it was the machine that failed, not what was asked.
bool podeDarCerto(const std::exception_ptr& falha) {
    try {
        std::rethrow_exception(falha);
    } catch (const jet::Error& erro) {
        return erro.code() == jet::Errc::io || erro.code() == jet::Errc::full;
    } catch (const std::bad_alloc&) {
        return true;
    } catch (...) {
        return false;
    }
}

/// What has become of that which the failure has met in the middle; nothing if there was nothing.
QString desfecho() {
    dbconectar& dados = dbconectar::instance();
    QString texto;
    try {
        if (dados.desfazer())
            texto += dados.Automacao.store().isBroken()
                         ? "O que estava sendo gravado será desfeito quando a base de dados for "
                           "aberta de novo. "
                         : "O que estava sendo gravado foi desfeito. ";
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch)
        // The file can't be used any more, and says so itself.
    }
    if (!dados.gravarPendentes())
        texto += "As últimas alterações não puderam ser gravadas. ";
    return texto;
}

/// While the engine waits for another station, or for the server, the windows stay painted, the
/// hourglass is on show and, when it takes longer, the status bar says what is waited for. Nothing
/// else happens.
class EsperaPorOutros {
public:
    EsperaPorOutros() {
        fim_.setSingleShot(true);
        fim_.setInterval(kDepois);
        QObject::connect(&fim_, &QTimer::timeout, [this] { terminar(); });
    }
    /// Called again and again until the wait is over.
    void mostrar() {
        if (QThread::currentThread() != fim_.thread())
            return;
        if (!fim_.isActive()) {
            QGuiApplication::setOverrideCursor(Qt::WaitCursor);
            inicio_.start();
        }
        if (!dita_ && inicio_.hasExpired(kCalada))
            dita_ = dizer(ado::isServerAddress(Mirtal::DatabaseFolder.toStdString())
                              ? "Esperando pelo servidor..."
                              : "Esperando por outra estação...");
        fim_.start();
        const HandlersPaused pausa;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }

private:
    static constexpr auto kDepois = 200ms;
    static constexpr int kCalada = 800; ///< ms

    void terminar() {
        QGuiApplication::restoreOverrideCursor();
        if (std::exchange(dita_, false))
            dizer("");
    }
    /// Over the prompt of the status bar, if there is one yet; nothing gives the prompt back.
    static bool dizer(const QString& texto) {
        for (const QWidget* janela : QApplication::topLevelWidgets())
            if (auto* barra = janela->findChild<QStatusBar*>("StatusBar1"))
                return barra->showMessage(texto), true;
        return false;
    }

    QTimer fim_; ///< starts anew as long as the wait goes on
    QElapsedTimer inicio_;
    bool dita_ = false;
};

bool encerrado = false; ///< in good order, or on the way there

/// The end from outside, wherever the program stands then: Qt calls exit() when the screen is taken
/// away (its server has ended, the session was closed), and the system asks for it when it is
/// switched off. No window can be taken down any more, nor tell anything; the data is closed as at
/// the end of the day.
void fecharSemTela() {
    if (std::exchange(encerrado, true))
        return;
    jet::setWaitHook({});
    if (MDICheques* const janela = principal())
        janela->largarCopia();
    dbconectar::descartar();
    std::_Exit(EXIT_FAILURE);
}

} // namespace

void atenderFalha(const std::exception_ptr& falha) {
    if (!podeRepetir(falha))
        relatarFalha(falha);
    const auto dano = anotarDano(falha);
    if (MDICheques* const janela = principal(); janela && dano)
        janela->conferirArquivo(*dano);
    dbconectar::instance().desfazer();
    if (!mostrarOutraVersao(falha) && !pedirSenha(falha))
        showMessage(descricao(falha), "Mensagem", MessageIcon::exclamation);
}

void relatarFalha(const std::exception_ptr& falha) {
    static_cast<void>(anotarDano(falha));
    QString texto = descricao(falha) + "\n\n";
    const bool trabalhava = dbconectar::instance().aberto(); // else there is nothing to repeat
    if (trabalhava)
        texto += desfecho();
    dbconectar::descartar(); // before the message: no lock is held while it waits for an answer
    texto += "O programa será encerrado";
    texto +=
        trabalhava && podeDarCerto(falha) ? ": abra-o de novo e repita a última operação." : ".";
    for (QWidget* janela : QApplication::topLevelWidgets())
        if (janela->windowType() == Qt::SplashScreen)
            janela->hide(); // it would stand over the message
    showMessage(texto, "Valtrino", MessageIcon::critical);
    // Not by leaving the event loop: handlers still on the stack would go on with half-done work.
    std::_Exit(EXIT_FAILURE);
}

int executarPrograma(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--version") {
        std::puts("Valtrino " VALTRINO_VERSION);
        return EXIT_SUCCESS;
    }
    QApplication aplicacao(argc, argv);
    if (argc == 2 && std::string_view(argv[1]) == "--screen") // for ./run: is there one?
        return EXIT_SUCCESS;
    QApplication::setApplicationName("Valtrino");
    QApplication::setDesktopFileName("org.valtrino.Valtrino"); // its entry in the menu of programs
    QApplication::setQuitOnLastWindowClosed(false); // between splash and main window there is none
    aplicarEstilo(aplicacao);
    QApplication::setWindowIcon(Icons::named("valtrino"));
    setFailureHandler(&atenderFalha);
    EsperaPorOutros espera;
    jet::setWaitHook([&espera] { espera.mostrar(); });
    MDICheques::mostrarMensagens();

    std::optional<Gravacao> gravacao;
    int status = EXIT_FAILURE;
    if (frmSplash::instance().load()) {
        // Only now: what is static and made later than this is gone when it runs.
        std::atexit(&fecharSemTela);
        const EndOfSession fim(&fecharSemTela);
        gravacao.emplace(kFlushInterval);
        if (jet::Database* const arquivo = dbconectar::instance().Automacao.store().file())
            arquivo->setSnapshotHold(kSnapshotHold);
        status = QApplication::exec();
    }
    gravacao.reset();
    WindowList::instance().clear();
    dbconectar::descartar();
    jet::setWaitHook({});
    encerrado = true;
    return status;
}
