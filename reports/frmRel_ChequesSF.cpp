#include "reports/frmRel_ChequesSF.h"

#include "controls/look/BusyCursor.h"
#include "controls/look/Icons.h"
#include "controls/window/Failure.h"
#include "controls/window/WindowList.h"
#include "jet/Error.h"
#include "print/ReportPreview.h"
#include "reports/FonteDeCheques.h"
#include "reports/LayoutDoRelatorio.h"
#include "reports/frm_Msg.h"
#include "shell/Mirtal.h"
#include "shell/dbconectar.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMdiSubWindow>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include <utility>

namespace {

std::function<void(QWidget&)>& mostrarEm() {
    static std::function<void(QWidget&)> mostrar;
    return mostrar;
}

} // namespace

frmRel_ChequesSF::frmRel_ChequesSF() : previsao_(std::make_unique<ReportPreview>(relatorio_)) {
    setObjectName("frmRel_ChequesSF");
    relatorio_.setObjectName("Relatorio");
    setWindowIcon(Icons::named("relcheque"));
    relatorio_.setLayout(LayoutDoRelatorio::leiaute());
    relatorio_.setComputedField(
        [this](const QString& nome, ReportValue& valor) { Relatorio_Campo(nome, valor); });
    connectGuarded(&relatorio_, &Relatorio::detail, this, &frmRel_ChequesSF::Relatorio_Detalhe);
    connectGuarded(&relatorio_, &Relatorio::startedOver, this,
                   &frmRel_ChequesSF::Relatorio_Recomeco);
    connectGuarded(&relatorio_, &Relatorio::error, this, &frmRel_ChequesSF::Relatorio_Erro);
    connectGuarded(previsao_.get(), &ReportPreview::againAsked, this, &frmRel_ChequesSF::repetir);
    connectGuarded(previsao_.get(), &ReportPreview::closeAsked, this, &frmRel_ChequesSF::sair);

    auto* janela = new QVBoxLayout(this);
    janela->setContentsMargins(0, 0, 0, 0);
    janela->addWidget(previsao_.get());
    setFocusProxy(previsao_.get());
}

frmRel_ChequesSF::~frmRel_ChequesSF() = default;

frmRel_ChequesSF& frmRel_ChequesSF::instance() {
    return WindowList::instance().one<frmRel_ChequesSF>();
}

void frmRel_ChequesSF::aoMostrar(std::function<void(QWidget&)> mostrar) {
    mostrarEm() = std::move(mostrar);
}

void frmRel_ChequesSF::imprimir(const Relatorios::Escolha& escolha) {
    // Before the wait window comes and goes.
    if (QWidget* foco = QApplication::focusWidget(); foco && !isAncestorOf(foco))
        antes_ = foco;
    if (!iniciar(escolha)) {
        // Said when the wait window has gone.
        if (erro_)
            Mirtal::erroDeRelatorio(*erro_, "");
        return;
    }
    if (mostrarEm())
        mostrarEm()(*this);
    else
        show();
}

bool frmRel_ChequesSF::iniciar(const Relatorios::Escolha& escolha) {
    const BusyCursor ocupado;
    const Espera espera("Aguarde enquanto o relatório é processado...");
    const QString titulo = Relatorios::titulo(escolha.modo);
    // A report that can't begin, for whatever reason, leaves the one on show as it is.
    QScopedValueRollback andamento(andamento_, {.escolha = escolha, .total = {}});
    const QScopedValueRollback iniciando(iniciando_, true);
    erro_.reset();
    relatorio_.setTitle(titulo);
    if (!relatorio_.begin(
            std::make_unique<FonteDeCheques>(escolha, dbconectar::instance().Automacao)))
        return false;
    andamento.commit();
    setWindowTitle(titulo);
    return true;
}

void frmRel_ChequesSF::repetir() {
    imprimir(Relatorios::Escolha(andamento_.escolha)); // a copy: that of the report on show changes
}

void frmRel_ChequesSF::Relatorio_Campo(const QString& nome, ReportValue& valor) {
    if (nome == "Pagina") {
        valor = qint64{relatorio_.currentPage()};
    } else if (nome == "Data") {
        valor = QDate::currentDate();
    } else if (nome == "DTInicial") {
        valor = andamento_.escolha.inicio;
    } else if (nome == "DTFinal") {
        valor = andamento_.escolha.fim;
    } else if (nome == "Total") {
        const QLineF linha = LayoutDoRelatorio::linhaDoTotal();
        relatorio_.setLine(LayoutDoRelatorio::kLinhaDoTotal, linha.p1(), linha.p2());
        valor = andamento_.total;
    }
}

void frmRel_ChequesSF::Relatorio_Detalhe(const ReportRow& linha) {
    const auto* valor = std::get_if<Amount>(&linha["valor"]);
    if (!valor)
        return;
    const auto total = sum(andamento_.total, *valor);
    if (!total)
        throw jet::Error(jet::Errc::outOfRange,
                         "O total do relatório passa do maior valor possível.");
    andamento_.total = *total;
}

void frmRel_ChequesSF::Relatorio_Recomeco() { andamento_.total = {}; }

void frmRel_ChequesSF::Relatorio_Erro(qint32 codigo) {
    if (iniciando_)
        erro_ = codigo;
    else
        Mirtal::erroDeRelatorio(codigo, "");
}

void frmRel_ChequesSF::sair() {
    QWidget* quadro = qobject_cast<QMdiSubWindow*>(parentWidget());
    (quadro ? quadro : this)->close();
}

// The rows of a large report aren't kept for a window that nobody sees.
void frmRel_ChequesSF::closeEvent(QCloseEvent* event) {
    event->accept();
    if (WindowList::instance().retire(*this))
        deleteLater();
    if (antes_ && antes_->isVisible() && antes_->isEnabled()) {
        antes_->window()->activateWindow();
        antes_->setFocus();
    }
}

#include "reports/moc_frmRel_ChequesSF.cpp"
