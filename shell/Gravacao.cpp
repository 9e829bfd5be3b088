#include "shell/Gravacao.h"

#include "controls/window/Failure.h"
#include "controls/window/MessageBox.h"
#include "jet/Error.h"
#include "shell/dbconectar.h"

#include <utility>

namespace {

constexpr char kEspera[] =
    " As últimas alterações ainda não foram gravadas: o programa continua tentando sozinho.";

} // namespace

Gravacao::Gravacao(std::chrono::milliseconds intervalo) {
    connect(&relogio_, &QTimer::timeout, this, [this] { tentar(); });
    relogio_.start(intervalo);
}

void Gravacao::tentar() {
    dbconectar& dados = dbconectar::instance();
    ado::Connection& base = dados.Automacao;
    if (HandlersPaused::anyLives() || base.State() == ado::State::Closed)
        return;
    try {
        base.flushIfDue();
        if (base.store().tally().gathered == 0)
            falhou_ = false;
    } catch (const std::exception& erro) {
        const bool espera = base.store().tally().gathered > 0;
        // What is undone is news, whatever has been said before.
        if (!std::exchange(falhou_, espera) || !espera)
            naoDita_ = QString(erro.what()) + (espera ? kEspera : "");
    }
    if (const QString perdido = dados.perdido(); !perdido.isEmpty())
        naoDita_ = perdido;
    // Not from here: a clock stands still until what it has called returns.
    if (!naoDita_.isEmpty())
        QTimer::singleShot(0, this, [this] { dizer(); });
}

void Gravacao::dizer() {
    if (naoDita_.isEmpty() || isFailing() || isMessageOnShow() || HandlersPaused::anyLives())
        return; // the next time
    showMessage(std::exchange(naoDita_, QString()), "Mensagem", MessageIcon::exclamation);
}
