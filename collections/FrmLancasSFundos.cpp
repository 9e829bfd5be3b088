#include "collections/FrmLancasSFundos.h"

#include "collections/FrmLocCHTerceiros.h"
#include "controls/box/ClearControls.h"
#include "controls/look/BusyCursor.h"
#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <initializer_list>

namespace {

dbconectar& dados() { return dbconectar::instance(); }
ado::Recordset& cheques() { return dados().rsCheques; }
ado::Recordset& semFundos() { return dados().rsSemFundos; }

} // namespace

FrmLancasSFundos::FrmLancasSFundos() {
    setupUi(this);
    // The window keeps its size while the panel comes and goes.
    QSizePolicy lugar = painelbuscar->sizePolicy();
    lugar.setRetainSizeWhenHidden(true);
    painelbuscar->setSizePolicy(lugar);
    painelbuscar->hide();
    // clang-format off
    prompts({
        {txtcliente,    "Digite o nome do cliente"},
        {txtbanco,      "Digite o código do banco"},
        {txtdata,       "Digite a data de emissão do cheque"},
        {txtnumero,     "Digite o número do cheque"},
        {txtvalor,      "Informe o valor do cheque"},
        {txtagencia,    "Informe nº da agência"},
        {txtEmpresa,    "Nome da empresa que cadastrou cliente"},
        {txtobservacao, "Digite observações sobre o cliente ou cheque"},
    });
    // clang-format on
    campos_ = Campos(Campos::Nulo::esvazia,
                     {
                         {"cliente",    Campos::ListaDeCodigos{txtcliente, &dados().rsCliente}},
                         {"banco",      Campos::ListaDeCodigos{txtbanco, &dados().rsBancos}   },
                         {"numero",     txtnumero                                             },
                         {"data",       txtdata                                               },
                         {"valor",      txtvalor                                              },
                         {"observacao", txtobservacao                                         },
                         {"agencia",    txtagencia                                            },
                         {"empresa",    txtEmpresa                                            },
    });
    enterAsTab({txtcliente, txtbanco, txtagencia, txtnumero, txtdata, txtvalor, txtEmpresa,
                txtobservacao, cmbncheque});
    tellsRecord(txtlancamento, "Lançamento");
    txtlancamento->hide(); // told by the heading
    closesWith(CmdSair);
    lostFocus(cmbncheque, &FrmLancasSFundos::cmbncheque_LostFocus);
    lostFocus(txtobservacao, &FrmLancasSFundos::txtobservacao_LostFocus);
    on(btnNavegacao, &NavigationBar::clicked, &FrmLancasSFundos::btnNavegacao_Click);
    on(CmdBuscar, &QPushButton::clicked, &FrmLancasSFundos::CmdBuscar_Click);
    on(CmdNovo, &QPushButton::clicked, &FrmLancasSFundos::CmdNovo_Click);
    on(CmdIncluir, &QPushButton::clicked, &FrmLancasSFundos::CmdIncluir_Click);
    on(cmdExcluir, &QPushButton::clicked, &FrmLancasSFundos::cmdExcluir_Click);
    on(CmdLocalizar, &QPushButton::clicked, &FrmLancasSFundos::CmdLocalizar_Click);
    on(CmdSair, &QPushButton::clicked, &FrmLancasSFundos::CmdSair_Click);
}

FrmLancasSFundos& FrmLancasSFundos::instance() {
    return WindowList::instance().one<FrmLancasSFundos>();
}

std::optional<std::int64_t> FrmLancasSFundos::clienteMostrado() const {
    return txtcliente->chosenData();
}

void FrmLancasSFundos::Form_Load() {
    centre();
    Estrutura::exigir(semFundos(),
                      {"lancamento", "cliente", "banco", "numero", "valor", "empresa"});
    Estrutura::exigir(dados().rsCliente, {"codigo", "nome"});
    Estrutura::exigir(dados().rsBancos, {"codigo", "nome"});
    campos_.dispensar(semFundos());
    campos_.limitar(semFundos());
    Mirtal::preencherLista(*txtcliente, dados().rsCliente, "nome", "codigo");
    Mirtal::preencherLista(*txtbanco, dados().rsBancos, "nome", "codigo");
    esvaziar();
    nothingTyped();
    if (soConsulta_) {
        travar();
        mostrarRegistro();
    }
}

// ---- the cheque on the screen

void FrmLancasSFundos::consultar() {
    soConsulta_ = true;
    showModal();
}

void FrmLancasSFundos::travar() {
    QPalette legivel; // what is there to be looked at isn't faint
    legivel.setBrush(QPalette::Disabled, QPalette::Text, palette().brush(QPalette::Text));
    for (QWidget* campo :
         std::initializer_list<QWidget*>{txtcliente, txtbanco, txtagencia, txtnumero, txtdata,
                                         txtvalor, txtEmpresa, txtobservacao, cmbncheque}) {
        campo->setEnabled(false);
        campo->setPalette(legivel);
    }
    for (QPushButton* comando : {CmdNovo, CmdIncluir, cmdExcluir, CmdBuscar})
        comando->setEnabled(false);
    CmdSair->setFocus();
}

void FrmLancasSFundos::mostrarRegistro() {
    const ado::Recordset& rs = semFundos();
    const ado::Shown visto = rs.shown();
    txtlancamento->setText(Valores::texto(rs["lancamento"]));
    campos_.mostrar(rs);
    visto_ = visto; // only now: what was shown in part isn't seen
    nothingTyped();
}

bool FrmLancasSFundos::mostrarGravado() {
    if (!Mirtal::foiAlterado(semFundos(), "lancamento=" + txtlancamento->text(), visto_))
        return false;
    mostrarRegistro();
    return true;
}

// ---- copying a received cheque

void FrmLancasSFundos::CmdBuscar_Click() {
    if (!txtlancamento->text().isEmpty()) {
        showMessage("Clique em novo para copiar dados !", "Mensagem", MessageIcon::information);
        return;
    }
    painelbuscar->show();
    cmbncheque->clear();
    cmbncheque->setFocus();
}

// Deliberate: where no cheque at all is at hand the panel stays; the search sees rsCheques as
// another window has filtered it; and an apostrophe in the number breaks the criterion.
void FrmLancasSFundos::cmbncheque_LostFocus() {
    const QString numero = cmbncheque->text();
    if (!numero.isEmpty()) {
        if (cheques().isEmpty())
            return;
        if (!copiarRecebido(numero))
            showMessage("Cheque não cadastrado ", "Mensagem", MessageIcon::exclamation);
    }
    painelbuscar->hide();
    cmbncheque->clear();
    txtcliente->setFocus();
}

bool FrmLancasSFundos::copiarRecebido(const QString& numero) {
    const BusyCursor ocupado;
    const bool achado = Mirtal::localizar(cheques(), "numero='" + numero + "'");
    if (achado)
        campos_.copiar(cheques(), "empresa");
    return achado;
}

// ---- commands

bool FrmLancasSFundos::validar() {
    auto recusa = TelaDeCheque::falta({txtcliente, txtbanco, txtnumero, txtvalor});
    if (!recusa && txtEmpresa->text().isEmpty())
        recusa = {txtEmpresa, "É necessário preencher O nome da empresa."};
    if (!recusa)
        recusa = campos_.recusa(semFundos());
    if (recusa)
        advertir(recusa->controle, recusa->motivo);
    return !recusa;
}

void FrmLancasSFundos::CmdIncluir_Click() {
    if (!validar())
        return;
    ado::Recordset& rs = semFundos();
    ado::Transaction gravacao(dados().Automacao);
    if (txtlancamento->text().isEmpty())
        Estrutura::acrescentar(rs, "lancamento");
    else
        Mirtal::editar(rs, "lancamento=" + txtlancamento->text(), visto_);
    campos_.gravar(rs);
    rs.Update();
    gravacao.commit();
    limpar();
}

void FrmLancasSFundos::CmdNovo_Click() { limpar(); }

void FrmLancasSFundos::esvaziar() {
    limparControles(*this);
    campos_.esquecer();
    visto_ = {};
}

void FrmLancasSFundos::limpar() {
    esvaziar();
    nothingTyped();
    txtcliente->setFocus();
}

void FrmLancasSFundos::cmdExcluir_Click() {
    if (txtlancamento->text().isEmpty() || !TelaDeCheque::confirmarExclusao(semFundos()))
        return;
    Mirtal::apagarPorChave("SemFundos", "lancamento", txtlancamento->text(), false, visto_);
    esvaziar();
    semFundos().Requery();
    nothingTyped();
    txtcliente->setFocus();
}

void FrmLancasSFundos::CmdLocalizar_Click() {
    Mirtal::registroEscolhido = false;
    Mirtal::modo = "localizarSF";
    FrmLocCHTerceiros& lista = FrmLocCHTerceiros::instance();
    lista.ocultarDescontar();
    lista.showModal();
    if (Mirtal::registroEscolhido) {
        semFundos().clearFilter();
        semFundos().Requery();
        if (Mirtal::localizar(semFundos(),
                              "lancamento=" + QString::number(Mirtal::lancamentoEscolhido)))
            mostrarRegistro();
    }
    txtcliente->setFocus();
}

void FrmLancasSFundos::CmdSair_Click() { unload(); }

void FrmLancasSFundos::btnNavegacao_Click(int indice) {
    if (Mirtal::navegar(semFundos(), indice))
        mostrarRegistro();
}

// The last field leads straight to the save.
void FrmLancasSFundos::txtobservacao_LostFocus() { CmdIncluir->setFocus(); }

#include "collections/moc_FrmLancasSFundos.cpp"
