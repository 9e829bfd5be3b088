#include "shell/Programa.h"

#include "controls/Failure.h"
#include "controls/Icons.h"
#include "controls/MessageBox.h"
#include "controls/Style.h"
#include "controls/WindowList.h"
#include "shell/MDICheques.h"
#include "shell/dbconectar.h"
#include "shell/frmSplash.h"

#include <QApplication>
#include <QTimer>

#include <chrono>
#include <cstdlib>

using namespace std::chrono_literals;

namespace {

// How often changes that wait to be written are looked at while the operator does nothing.
constexpr auto kFlushInterval = 200ms;

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

void gravarPendentes() {
    guarded([] { dbconectar::instance().Automacao.flushIfDue(); });
}

} // namespace

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
    setFailureHandler(&relatarFalha);
    MDICheques::mostrarMensagens();

    QTimer gravacao;
    QObject::connect(&gravacao, &QTimer::timeout, &gravarPendentes);
    int status = EXIT_FAILURE;
    if (frmSplash::instance().load()) {
        gravacao.start(kFlushInterval);
        status = QApplication::exec();
    }
    WindowList::instance().clear();
    dbconectar::descartar();
    return status;
}
