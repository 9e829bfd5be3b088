#include "cheques/FrmConsultaCH.h"

#include "collections/FrmLancasSFundos.h"
#include "controls/box/ShowOnly.h"
#include "controls/look/BusyCursor.h"
#include "controls/look/Icons.h"
#include "controls/look/Style.h"
#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"
#include "jet/Error.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <QScopedValueRollback>

#include <limits>
#include <utility>

namespace {

using Valores::texto;
using Valores::valor;

ado::Recordset& semFundos() { return dbconectar::instance().rsSemFundos; }

QString criterio(const char* campo, std::int64_t codigo) { return campo + QString::number(codigo); }

QString nomeDoBanco(std::int64_t codigo) {
    ado::Recordset& bancos = dbconectar::instance().rsBancos;
    return Mirtal::localizar(bancos, criterio("codigo=", codigo)) ? texto(bancos["nome"]) : "";
}

} // namespace

FrmConsultaCH::FrmConsultaCH() {
    setupUi(this);
    // The entry number stands before the cheque's own, in a column as narrow as its picture.
    Lstcheques->setColumns({
        {"",              300,  Qt::AlignLeft },
        {"Cheque",        1411, Qt::AlignLeft },
        {"Nome do Banco", 2999, Qt::AlignLeft },
        {"Valor ",        1587, Qt::AlignRight},
        {"Empresa",       3175, Qt::AlignLeft }
    });
    Lstcheques->setColumnName(0, "Lançamento");
    Label5->setFont(headingFont());
    showOnly({txtCpf, txtcheques, txttotal});
    enterAsTab({txtNome});
    closesWith(CmdSair);
    lostFocus(txtNome, &FrmConsultaCH::txtNome_LostFocus);
    on(Lstcheques, &ListView::itemClicked, &FrmConsultaCH::Lstcheques_ItemClick);
    on(CmdNovo, &QPushButton::clicked, &FrmConsultaCH::CmdNovo_Click);
    on(CmdSair, &QPushButton::clicked, &FrmConsultaCH::CmdSair_Click);
}

FrmConsultaCH& FrmConsultaCH::instance() { return WindowList::instance().one<FrmConsultaCH>(); }

std::optional<std::int64_t> FrmConsultaCH::clienteMostrado() const { return txtNome->chosenData(); }

void FrmConsultaCH::Form_Load() {
    centre();
    dbconectar& dados = dbconectar::instance();
    Estrutura::exigir(dados.rsCliente, {"codigo", "nome"});
    Estrutura::exigir(dados.rsBancos, {"codigo", "nome"});
    Estrutura::exigir(dados.rsCheques, {"cliente", "valor"});
    Estrutura::exigir(semFundos(), {"lancamento", "cliente", "banco", "numero", "valor"});
    Estrutura::dispensar(dados.rsCliente, {
                                              {"cgc_cpf", txtCpf}
    });
    Estrutura::dispensar(semFundos(), {
                                          {"empresa", nullptr}
    });
    Mirtal::preencherLista(*txtNome, dbconectar::instance().rsCliente, "nome", "codigo");
}

// ---- the search

void FrmConsultaCH::txtNome_LostFocus() {
    if (txtNome->listIndex() < 0 || dbconectar::instance().rsCliente.isEmpty())
        return;
    if (pesquisar(txtNome->itemData(txtNome->listIndex())))
        return;
    // Deliberate: what was found of his received cheques goes as well.
    showMessage("Nada consta a este cliente!", "Pesquisar Cheques", MessageIcon::information);
    limpar();
}

bool FrmConsultaCH::pesquisar(std::int64_t cliente) {
    const BusyCursor ocupado;
    ado::Recordset& clientes = dbconectar::instance().rsCliente;
    const bool achado = Mirtal::localizar(clientes, criterio("codigo=", cliente));
    txtCpf->setText(achado ? texto(clientes["cgc_cpf"]) : "");
    somarCheques(criterio("cliente=", cliente));
    listarSemFundos(criterio("cliente=", cliente));
    return Lstcheques->count() > 0;
}

// Deliberate: the count has 16 bits; no client of the shop has more cheques than that.
void FrmConsultaCH::somarCheques(const QString& doCliente) {
    ado::Recordset& rs = dbconectar::instance().rsCheques;
    rs.setFilter(doCliente);
    const std::int64_t quantos = rs.RecordCount();
    if (!std::in_range<std::int16_t>(quantos))
        throw jet::Error(jet::Errc::outOfRange, "O cliente tem " + std::to_string(quantos) +
                                                    " cheques, mais do que os 32767 que a "
                                                    "consulta pode contar.");
    Amount total;
    for (; !rs.EOF(); rs.MoveNext())
        total = Valores::soma(total, valor(rs["valor"]), "O total dos cheques do cliente");
    txttotal->setText(formatMoney(total));
    txtcheques->setText(QString::number(quantos));
    rs.clearFilter();
}

void FrmConsultaCH::listarSemFundos(const QString& doCliente) {
    ado::Recordset& rs = semFundos();
    rs.setFilter(doCliente);
    Lstcheques->clear();
    const QIcon icone = Icons::named("codigo");
    for (; !rs.EOF(); rs.MoveNext()) {
        const QString lancamento = texto(rs["lancamento"]);
        Lstcheques->addItem({
            .key = Mirtal::zerosAEsquerda(lancamento),
            .text = lancamento,
            .subItems = {texto(rs["numero"]), nomeDoBanco(rs["banco"].integer()),
                         formatMoney(valor(rs["valor"])), texto(rs["empresa"])},
            .icon = icone
        });
    }
}

void FrmConsultaCH::limpar() {
    txtCpf->clear();
    txtNome->setText("");
    txttotal->setText(formatMoney({}));
    txtcheques->setText("0");
    txtNome->setFocus();
}

// ---- the list

// The first click on a row only chooses it. Deliberate: a new search doesn't forget which row that
// was, and each further click opens its cheque again.
void FrmConsultaCH::Lstcheques_ItemClick(const QString& /*chave*/, int linha) {
    const QString lancamento = Lstcheques->item(linha).text;
    if (lancamento != ultimoClicado_) {
        ultimoClicado_ = lancamento;
        return;
    }
    const QScopedValueRollback modo(Mirtal::modo, QString("Consulta"));
    if (!Mirtal::localizar(semFundos(), "lancamento=" + lancamento)) {
        showMessage("O cheque do lançamento " + lancamento +
                        " não está mais cadastrado: foi excluído depois de listado.",
                    "Mensagem", MessageIcon::exclamation);
        return;
    }
    FrmLancasSFundos::instance().consultar();
}

// ---- commands

void FrmConsultaCH::CmdNovo_Click() {
    Lstcheques->clear();
    limpar();
}

void FrmConsultaCH::CmdSair_Click() { unload(); }

#include "cheques/moc_FrmConsultaCH.cpp"
