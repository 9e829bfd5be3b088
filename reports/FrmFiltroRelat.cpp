#include "reports/FrmFiltroRelat.h"

#include "controls/window/WindowList.h"
#include "reports/frmRel_ChequesSF.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/dbconectar.h"

#include <QScreen>

namespace {

constexpr int kAlturaNaTela = 13;  ///< 200 twips
constexpr int kBarraDeStatus = 30; ///< of the main window, about

std::optional<std::int64_t> codigoEscolhido(const DropDownList& lista) {
    if (lista.listIndex() < 0)
        return std::nullopt;
    return lista.itemData(lista.listIndex());
}

} // namespace

FrmFiltroRelat::FrmFiltroRelat() {
    setupUi(this);
    prompts({
        {txtcliente,   "Informe nome do cliente a listar"},
        {txtbanco,     "Informe nome do banco"           },
        {txtdtinicial, "Informe data inicial"            },
        {txtdtfinal,   "Informe data final"              },
    });
    enterAsTab({txtcliente, txtbanco, txtdtinicial, txtdtfinal, cmbordem});
    txtcliente->signUnlisted("Este nome não está na lista: saem os cheques de todos os clientes.");
    txtbanco->signUnlisted("Este nome não está na lista: saem os cheques de todos os bancos.");
    closesWith(cmdsair);
    on(CmdImprimir, &QPushButton::clicked, &FrmFiltroRelat::CmdImprimir_Click);
    on(cmdsair, &QPushButton::clicked, &FrmFiltroRelat::cmdsair_Click);
}

FrmFiltroRelat& FrmFiltroRelat::instance() { return WindowList::instance().one<FrmFiltroRelat>(); }

void FrmFiltroRelat::mostrar() { instance().showModeless(); }

void FrmFiltroRelat::Form_Load() {
    dbconectar& dados = dbconectar::instance();
    const bool recebidos = Relatorios::temVencimento(Mirtal::modo);
    const ado::Recordset& cheques = recebidos ? dados.rsCheques : dados.rsSemFundos;
    Estrutura::exigir(cheques, {"cliente", "banco", "numero", "data", "valor"});
    if (recebidos)
        Estrutura::exigir(cheques, {"bompara"});
    Estrutura::exigir(dados.rsCliente, {"codigo", "nome"});
    Estrutura::exigir(dados.rsBancos, {"codigo", "nome"});
    centre(kAlturaNaTela);
    modo_ = Mirtal::modo;
    setWindowTitle(Relatorios::legenda(modo_));
    Titulo->setText(Relatorios::legenda(modo_));
    for (const Relatorios::Ordem& ordem : Relatorios::ordens(modo_))
        cmbordem->addItem(ordem.nome);
    txtdtinicial->setValue(QDate::currentDate());
    txtdtfinal->setValue(QDate::currentDate());
    Mirtal::preencherLista(*txtbanco, dbconectar::instance().rsBancos, "nome", "codigo");
    Mirtal::preencherLista(*txtcliente, dbconectar::instance().rsCliente, "nome", "codigo");
}

Relatorios::Escolha FrmFiltroRelat::escolha() const {
    return {.modo = modo_,
            .cliente = codigoEscolhido(*txtcliente),
            .banco = codigoEscolhido(*txtbanco),
            .inicio = txtdtinicial->value(),
            .fim = txtdtfinal->value(),
            .ordem = cmbordem->listIndex()};
}

void FrmFiltroRelat::CmdImprimir_Click() {
    frmRel_ChequesSF::instance().imprimir(escolha());
    if (frmRel_ChequesSF::instance().isVisible())
        darVista();
}

// The report comes up behind this window: its tools and first rows aren't to be under it. Where the
// operator has put the window himself it stays.
void FrmFiltroRelat::darVista() {
    const QRect tela = screen()->availableGeometry();
    if (y() == tela.top() + kAlturaNaTela)
        move(tela.right() - frameGeometry().width(),
             tela.bottom() - frameGeometry().height() - kBarraDeStatus);
}

void FrmFiltroRelat::cmdsair_Click() { unload(); }

#include "reports/moc_FrmFiltroRelat.cpp"
