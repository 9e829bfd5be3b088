#include "shell/Programa.h"

#include "controls/Failure.h"
#include "controls/Icons.h"
#include "controls/MessageBox.h"
#include "controls/Style.h"
#include "controls/WindowList.h"
#include "jet/Error.h"
#include "jet/Waiting.h"
#include "shell/MDICheques.h"
#include "shell/dbconectar.h"
#include "shell/frmSplash.h"

#include <QApplication>
#include <QThread>
#include <QTimer>

#include <chrono>
#include <cstdlib>
#include <utility>

using namespace std::chrono_literals;

namespace {

// How often changes that wait to be written are looked at while the operator does nothing.
constexpr auto kFlushInterval = 200ms;
// What another station has stored shows by so much later at most, which nobody notices; in return a
// list of many rows doesn't ask for it at each field.
constexpr auto kNewsHold = 5ms;

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
/// is full, what was typed breaks a rule that the file declares. Nothing was saved then.
bool podeRepetir(const std::exception_ptr& falha) {
    try {
        std::rethrow_exception(falha);
    } catch (const jet::Error& erro) {
        switch (erro.code()) {
        case jet::Errc::locked:
        case jet::Errc::conflict:
        case jet::Errc::readOnly:
        case jet::Errc::full:
        case jet::Errc::rule:
        case jet::Errc::related:
        case jet::Errc::nullValue:
        case jet::Errc::duplicate:
            return dbconectar::instance().aberto();
        default:
            return false;
        }
    } catch (...) {
        return false;
    }
}

/// What waits to be written is tried again each time; that it can't be is said once.
class Gravacao {
public:
    void operator()() {
        if (HandlersPaused::anyLives())
            return;
        try {
            dbconectar::instance().Automacao.flushIfDue();
            falhou_ = false;
        } catch (const jet::Error&) {
            if (!std::exchange(falhou_, true))
                naoDita_ = std::current_exception();
        }
        // With another failure on show it is said after that one.
        if (naoDita_ && !isFailing())
            guarded([this] { std::rethrow_exception(std::exchange(naoDita_, nullptr)); });
    }

private:
    bool falhou_ = false;
    std::exception_ptr naoDita_;
};

/// While the engine waits for another station the windows stay painted, and nothing else happens.
void pintarJanelas() {
    if (QThread::currentThread() != QCoreApplication::instance()->thread())
        return;
    const HandlersPaused pausa;
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

bool encerrado = false; ///< in good order, or on the way there

/// Qt calls exit() when the screen is taken away (its server has ended, the session was closed),
/// wherever the program stands then. No window can be taken down any more, nor tell anything; the
/// data is closed as at the end of the day.
void fecharSemTela() {
    if (std::exchange(encerrado, true))
        return;
    jet::setWaitHook({});
    dbconectar::descartar();
    std::_Exit(EXIT_FAILURE);
}

} // namespace

void atenderFalha(const std::exception_ptr& falha) {
    if (!podeRepetir(falha))
        relatarFalha(falha);
    dbconectar::instance().desfazer();
    showMessage(descricao(falha), "Mensagem", MessageIcon::exclamation);
}

void relatarFalha(const std::exception_ptr& falha) {
    const char* conselho =
        dbconectar::instance().aberto()
            ? "O que estava sendo gravado foi desfeito. O programa será encerrado: "
              "abra-o de novo e repita a última operação."
            : "O programa será encerrado.";
    dbconectar::descartar(); // before the message: no lock is held while it waits for an answer
    for (QWidget* janela : QApplication::topLevelWidgets())
        if (janela->windowType() == Qt::SplashScreen)
            janela->hide(); // it would stand over the message
    showMessage(descricao(falha) + "\n\n" + conselho, "Valtrino", MessageIcon::critical);
    // Not by leaving the event loop: handlers still on the stack would go on with half-done work.
    std::_Exit(EXIT_FAILURE);
}

int executarPrograma(int argc, char** argv) {
    QApplication aplicacao(argc, argv);
    QApplication::setApplicationName("Valtrino");
    QApplication::setQuitOnLastWindowClosed(false); // between splash and main window there is none
    aplicarEstilo(aplicacao);
    QApplication::setWindowIcon(Icons::named("valtrino"));
    setFailureHandler(&atenderFalha);
    jet::setWaitHook(&pintarJanelas);
    MDICheques::mostrarMensagens();

    QTimer gravacao;
    QObject::connect(&gravacao, &QTimer::timeout, Gravacao());
    int status = EXIT_FAILURE;
    if (frmSplash::instance().load()) {
        // Only now: what is static and made later than this is gone when it runs.
        std::atexit(&fecharSemTela);
        gravacao.start(kFlushInterval);
        dbconectar::instance().Automacao.database().setNewsHold(kNewsHold);
        status = QApplication::exec();
    }
    WindowList::instance().clear();
    dbconectar::descartar();
    encerrado = true;
    return status;
}
