#include "cheques/FrmLancarCheques.h"

#include "controls/ClearControls.h"
#include "controls/MessageBox.h"
#include "controls/WindowList.h"
#include "jet/Error.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <utility>

namespace {

using TelaDeCheque::codigo;
using TelaDeCheque::escolher;
using TelaDeCheque::mostrar;

constexpr int kPrazo = 30; ///< days from one cheque of a run to the next

ado::Recordset& cheques() { return dbconectar::instance().rsCheques; }

/// Has CmdLocalizar's list shown.
std::function<void()>& lista() {
    static std::function<void()> mostrar;
    return mostrar;
}

Amount soma(Amount a, Amount b) {
    const auto total = sum(a, b);
    if (!total)
        throw jet::Error(jet::Errc::outOfRange,
                         "O total dos cheques do cliente passa do maior valor possível.");
    return *total;
}

/// Goes to a cheque of all that are stored; the filter comes off if it hides it.
/// @return false if there is none: then rsCheques stays where it is.
bool irAte(const QString& criterio) {
    ado::Recordset cheque;
    cheque.Open("select lancamento from cheques where " + criterio,
                dbconectar::instance().Automacao);
    if (cheque.EOF())
        return false;
    if (Mirtal::localizar(cheques(), criterio))
        return true;
    cheques().clearFilter();
    return Mirtal::localizar(cheques(), criterio);
}

bool naoMostrado(const QString& motivo) {
    showMessage(motivo, "Mensagem", MessageIcon::exclamation);
    return false;
}

} // namespace

FrmLancarCheques::FrmLancarCheques() {
    setupUi(this);
    prompts({
        {txtNome,       "Digite o nome do cliente"                                             },
        {txtbanco,      "Digite o código do banco"                                            },
        {txtagencia,    "Digite o nº da Agência"                                             },
        {txtnumero,     "Digite o número do cheque"                                           },
        {txtdata,       "Digite a data de emissão do cheque"                                  },
        {txtbompara,    "Digite a data de vencimento do cheque"                                },
        {txtvalor,      "Digite o valor do cheque"                                             },
        {txtautorizou,  "Digite o nome da pessoa que autorizou"                                },
        {txtobservacao, "Digite alguma observação a respeito do cliente ou cheque"           },
        {txtdescontar,  "Informe se o cliente vem trocar o cheque na empresa ou é p/descontar"},
        {cmbcheques,    "Marque se deseja lançar vários cheques do mesmo cliente"            },
    });
    enterAsTab({txtNome, txtbanco, txtagencia, txtnumero, txtdata, txtbompara, txtvalor,
                txtautorizou, txtobservacao, txtdescontar, cmbcheques});
    tellsRecord(txtlancamento, "Lançamento");
    txtlancamento->hide(); // told by the heading
    closesWith(CmdSair);
    lostFocus(txtNome, &FrmLancarCheques::txtNome_LostFocus);
    lostFocus(txtvalor, &FrmLancarCheques::txtvalor_LostFocus);
    lostFocus(txtobservacao, &FrmLancarCheques::txtobservacao_LostFocus);
    on(btnNavegacao, &NavigationBar::clicked, &FrmLancarCheques::btnNavegacao_Click);
    on(CmdNovo, &QPushButton::clicked, &FrmLancarCheques::CmdNovo_Click);
    on(CmdIncluir, &QPushButton::clicked, &FrmLancarCheques::CmdIncluir_Click);
    on(CmdExcluir, &QPushButton::clicked, &FrmLancarCheques::CmdExcluir_Click);
    on(CmdLocalizar, &QPushButton::clicked, &FrmLancarCheques::CmdLocalizar_Click);
    on(CmdSair, &QPushButton::clicked, &FrmLancarCheques::CmdSair_Click);
}

FrmLancarCheques& FrmLancarCheques::instance() {
    return WindowList::instance().one<FrmLancarCheques>();
}

void FrmLancarCheques::aoLocalizar(std::function<void()> mostrarLista) {
    lista() = std::move(mostrarLista);
}

void FrmLancarCheques::Form_Load() {
    centre();
    dbconectar& dados = dbconectar::instance();
    Estrutura::exigir(cheques(), {"lancamento", "cliente", "banco", "numero", "valor"});
    Estrutura::exigir(dados.rsCliente, {"codigo", "nome"});
    Estrutura::exigir(dados.rsBancos, {"codigo", "nome"});
    Estrutura::dispensar(dados.rsCliente, {
                                              {"limite_credito", nullptr}
    });
    Estrutura::dispensar(cheques(), {
                                        {"agencia",    txtagencia   },
                                        {"data",       txtdata      },
                                        {"bompara",    txtbompara   },
                                        {"autorizou",  txtautorizou },
                                        {"observacao", txtobservacao},
                                        {"descontar",  txtdescontar }
    });
    TelaDeCheque::limitar(cheques(), textos());
    datasDeHoje();
    Mirtal::preencherLista(*txtNome, dados.rsCliente, "nome", "codigo");
    Mirtal::preencherLista(*txtbanco, dados.rsBancos, "nome", "codigo");
    nothingTyped();
}

void FrmLancarCheques::Form_Unload() { Mirtal::modo.clear(); }

TelaDeCheque::Textos FrmLancarCheques::textos() const {
    return {
        {{"agencia", txtagencia},
         {"numero", txtnumero},
         {"autorizou", txtautorizou},
         {"observacao", txtobservacao}}
    };
}

// ---- the cheque on the screen

bool FrmLancarCheques::mostrarCheque(qint32 lancamento) {
    const QString numero = QString::number(lancamento);
    if (!std::in_range<std::int16_t>(lancamento))
        return naoMostrado("O lançamento " + numero +
                           " não pode ser mostrado na entrada de cheques, que só mostra "
                           "lançamentos até 32767.");
    if (!irAte("Lancamento=" + numero))
        return naoMostrado("O cheque do lançamento " + numero +
                           " não está mais cadastrado: foi excluído ou baixado depois de listado.");
    if (isVisible())
        mostrarRegistro();
    return true;
}

void FrmLancarCheques::mostrarRegistro() {
    const ado::Recordset& rs = cheques();
    const ado::Shown visto = rs.shown();
    txtlancamento->setText(Valores::texto(rs["lancamento"]));
    escolher(*txtNome, dbconectar::instance().rsCliente, rs["cliente"].integer());
    escolher(*txtbanco, dbconectar::instance().rsBancos, rs["banco"].integer());
    for (const auto& [campo, caixa] : textos())
        mostrar(*caixa, rs[campo]);
    mostrar(*txtdata, rs["data"]);
    mostrar(*txtbompara, rs["bompara"]);
    txtvalor->setValor(Valores::valor(rs["valor"]));
    txtdescontar->setChecked(rs["descontar"].boolean());
    visto_ = visto; // only now: what was shown in part isn't seen
    nothingTyped();
}

bool FrmLancarCheques::mostrarGravado() {
    if (!Mirtal::foiAlterado(cheques(), "lancamento=" + txtlancamento->text(), visto_))
        return false;
    mostrarRegistro();
    return true;
}

void FrmLancarCheques::gravarCampos() {
    ado::Recordset& rs = cheques();
    rs["cliente"] = codigo(*txtNome);
    rs["banco"] = codigo(*txtbanco);
    rs["numero"] = txtnumero->text();
    rs["data"] = Valores::data(txtdata->value());
    rs["bompara"] = Valores::data(txtbompara->value());
    rs["valor"] = Valores::moeda(txtvalor->valor());
    rs["observacao"] = txtobservacao->text();
    rs["autorizou"] = txtautorizou->text();
    rs["agencia"] = txtagencia->text();
    rs["descontar"] = txtdescontar->isChecked();
}

void FrmLancarCheques::limpar() {
    limparControles(*this);
    visto_ = {};
    datasDeHoje();
    txtdescontar->setChecked(true);
    nothingTyped();
    txtNome->setFocus();
}

void FrmLancarCheques::datasDeHoje() {
    txtdata->setValue(QDate::currentDate());
    txtbompara->setValue(txtdata->value().addDays(kPrazo));
}

// ---- leaving a field

void FrmLancarCheques::txtNome_LostFocus() {
    ado::Recordset& clientes = dbconectar::instance().rsCliente;
    if (clientes.RecordCount() == 0 || txtNome->listIndex() < 0)
        return;
    clientes.MoveFirst();
    clientes.Find("codigo=" + QString::number(codigo(*txtNome)));
    if (!clientes.EOF())
        limite_ = Valores::valor(clientes["limite_credito"]);
}

// Warns when the client's cheques with this one pass his limit. Deliberate: a stored cheque counts
// twice, as it is stored and as it is typed; and where there is nothing to warn of, rsCheques stays
// restricted to the client's cheques, for the walk and for the search of the save.
void FrmLancarCheques::txtvalor_LostFocus() {
    ado::Recordset& rs = cheques();
    if (rs.RecordCount() == 0 || txtNome->listIndex() < 0)
        return;
    rs.setFilter("cliente=" + QString::number(codigo(*txtNome)));
    if (rs.RecordCount() == 0)
        return;
    Amount total;
    for (rs.MoveFirst(); !rs.EOF(); rs.MoveNext()) {
        total = soma(total, Valores::valor(rs["valor"]));
        const Amount comEste = soma(total, txtvalor->valor());
        if (comEste <= limite_ || limite_ <= Amount{})
            continue;
        showMessage("Cliente ultrapassou seu Limite de crédito!\r\rLimite  Crédito :" +
                        formatMoney(limite_) + "\rTotal em Cheques:" + formatMoney(comEste),
                    "Limite de crédito", MessageIcon::critical);
        rs.clearFilter();
        return;
    }
}

// The last field leads straight to the save.
void FrmLancarCheques::txtobservacao_LostFocus() { CmdIncluir->setFocus(); }

// ---- commands

bool FrmLancarCheques::validar() {
    auto impedimento = TelaDeCheque::falta({txtNome, txtbanco, txtnumero, txtvalor});
    if (!impedimento)
        impedimento = TelaDeCheque::naoCabe(cheques(), textos(), txtvalor);
    if (impedimento)
        advertir(impedimento->controle, impedimento->mensagem);
    return !impedimento;
}

void FrmLancarCheques::CmdIncluir_Click() {
    if (!validar())
        return;
    ado::Recordset& rs = cheques();
    ado::Transaction gravacao(dbconectar::instance().Automacao);
    const bool novo = txtlancamento->text().isEmpty();
    if (novo)
        Estrutura::acrescentar(rs, "lancamento");
    else
        Mirtal::editar(rs, "lancamento=" + txtlancamento->text(), visto_);
    gravarCampos();
    rs.Update();
    const ado::Shown gravado = rs.shown();
    rs.Requery();
    gravacao.commit();

    if (!cmbcheques->isChecked())
        return limpar();
    // Deliberate: txtlancamento stays too, so a run begun on a stored cheque goes on changing it.
    if (!novo)
        visto_ = gravado;
    txtbompara->setValue(txtbompara->value().addDays(kPrazo));
    txtnumero->clear();
    nothingTyped();
    txtnumero->setFocus();
}

void FrmLancarCheques::CmdNovo_Click() { limpar(); }

void FrmLancarCheques::CmdExcluir_Click() {
    if (txtlancamento->text().isEmpty() || !TelaDeCheque::confirmarExclusao(cheques()))
        return;
    Mirtal::apagarPorChave("Cheques", "lancamento", txtlancamento->text(), false, visto_);
    limparControles(*this); // deliberate: unlike a new cheque, due today and not for deposit
    visto_ = {};
    cheques().Requery();
    nothingTyped();
    txtNome->setFocus();
}

void FrmLancarCheques::CmdLocalizar_Click() {
    Mirtal::modo = "localizarCH";
    Mirtal::registroEscolhido = false;
    if (lista())
        lista()();
    txtNome->setFocus();
}

void FrmLancarCheques::CmdSair_Click() { unload(); }

void FrmLancarCheques::btnNavegacao_Click(int indice) {
    if (Mirtal::navegar(cheques(), indice))
        mostrarCheque(static_cast<qint32>(cheques()["lancamento"].integer()));
}
