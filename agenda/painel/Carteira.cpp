#include "agenda/painel/Carteira.h"

#include "agenda/painel/SomasDaCarteira.h"
#include "controls/window/Failure.h"
#include "jet/Error.h"
#include "shell/dbconectar.h"

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// Often: what one transaction has changed is known at once, while after several of another station
/// the whole file has to be compared.
constexpr auto kAcompanhamento = 250ms;
/// So long the windows and the other stations wait for a piece.
constexpr std::chrono::microseconds kPedaco = 4ms;
/// A damaged file or disk isn't read again and again.
constexpr auto kDepoisDeFalha = 1min;
constexpr int kMaisEsperas = 6;

} // namespace

Carteira::Carteira(QObject* parent) : QObject(parent) {
    relogio_.setInterval(kAcompanhamento);
    passo_.setSingleShot(true);
    for (QTimer* timer : {&relogio_, &passo_})
        connect(timer, &QTimer::timeout, this, &Carteira::olhar);
}

Carteira::~Carteira() = default;

void Carteira::acompanhar(bool sim) {
    acompanha_ = sim;
    if (sim) {
        relogio_.start();
        passo_.start(0);
    } else {
        relogio_.stop();
        passo_.stop();
    }
}

/// What goes wrong here is nobody's work: it is told by completa() alone, and tried again.
void Carteira::olhar() {
    if (!acompanha_ || isFailing() || HandlersPaused::anyLives() || !podeLer())
        return;
    ado::Connection& base = dbconectar::instance().Automacao;
    ado::Store& dados = base.store();
    const bool pendia = dados.tally().gathered > 0;
    try {
        const auto leitura = dados.hold();
        if (!somas_)
            somas_ = std::make_unique<SomasDaCarteira>(base);
        if (somas_->continuar(kPedaco))
            return passo_.start(0);
    } catch (const jet::Error& falha) {
        if (falha.code() == jet::Errc::locked) // by another station or program, for a moment
            return;
        if (falha.code() == jet::Errc::conflict && pendia && dados.tally().gathered == 0)
            return dbconectar::instance().anotarPerdido(falha.what()); // what was to be written
        somas_.reset();
        if (falha.code() == jet::Errc::corrupt || falha.code() == jet::Errc::io)
            pausa_.setRemainingTime(kDepoisDeFalha);
    } catch (const std::exception&) {
        somas_.reset();
        pausa_.setRemainingTime(kDepoisDeFalha);
    }
    falhou_ = !somas_;
    concluir();
}

bool Carteira::podeLer() {
    const dbconectar& dados = dbconectar::instance();
    if (!dados.aberto()) {
        somas_.reset();
        falhou_ = false;
        pausa_ = QDeadlineTimer();
        concluir();
        return false;
    }
    const ado::Connection& base = dados.Automacao;
    if (!pausa_.hasExpired() || base.inTransaction())
        return false;
    if (base.store().isTakenByOther() && ++esperas_ <= kMaisEsperas)
        return false;
    esperas_ = 0;
    return true;
}

/// Between the pieces the sums may be of two states of the file.
void Carteira::concluir() {
    const bool completa = somas_ && somas_->completas();
    const bool outras = somas_ && somas_->mudaram();
    if (std::exchange(completa_, completa) != completa || (completa && outras))
        emit mudou();
}

double Carteira::andamento() const { return completa_ ? 1 : somas_ ? somas_->andamento() : 0; }

Vencimentos::Soma Carteira::devidos(const Vencimentos::Dias& dias) const {
    return somas_ ? somas_->devidos(dias) : Vencimentos::Soma();
}
Vencimentos::Soma Carteira::emMaos() const {
    return somas_ ? somas_->emMaos() : Vencimentos::Soma();
}
Vencimentos::Soma Carteira::semFundos() const {
    return somas_ ? somas_->semFundos() : Vencimentos::Soma();
}
std::vector<Carteira::DeUmCliente> Carteira::maiores(std::size_t quantos) const {
    return somas_ ? somas_->maiores(quantos) : std::vector<DeUmCliente>();
}
