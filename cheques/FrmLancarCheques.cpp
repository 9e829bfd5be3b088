#include "cheques/FrmLancarCheques.h"

#include "cheques/ChequeRepetido.h"
#include "cheques/Cmc7.h"
#include "cheques/Lancamento.h"
#include "cheques/LimiteDeCredito.h"
#include "controls/box/ClearControls.h"
#include "controls/window/WindowList.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <utility>

namespace {

constexpr int kPrazo = 30; ///< days from one cheque of a run to the next

/// Of the chosen client.
QString codigo(const DropDownList& lista) {
    return QString::number(lista.itemData(lista.listIndex()));
}

dbconectar& dados() { return dbconectar::instance(); }
ado::Recordset& cheques() { return dados().rsCheques; }

/// Has CmdLocalizar's list shown.
std::function<void()>& lista() {
    static std::function<void()> mostrar;
    return mostrar;
}

} // namespace

FrmLancarCheques::FrmLancarCheques() {
    setupUi(this);
    // clang-format off
    prompts({
        {txtNome,       "Digite o nome do cliente"},
        {txtbanco,      "Digite o código do banco"},
        {txtagencia,    "Digite o nº da Agência"},
        {txtnumero,     "Digite o número do cheque"},
        {txtdata,       "Digite a data de emissão do cheque"},
        {txtbompara,    "Digite a data de vencimento do cheque"},
        {txtvalor,      "Digite o valor do cheque"},
        {txtautorizou,  "Digite o nome da pessoa que autorizou"},
        {txtobservacao, "Digite alguma observação a respeito do cliente ou cheque"},
        {txtdescontar,  "Informe se o cliente vem trocar o cheque na empresa ou é p/descontar"},
        {cmbcheques,    "Marque se deseja lançar vários cheques do mesmo cliente"},
    });
    // clang-format on
    campos_ = Campos(Campos::Nulo::esvazia,
                     {
                         {"cliente",    Campos::ListaDeCodigos{txtNome, &dados().rsCliente}},
                         {"banco",      Campos::ListaDeCodigos{txtbanco, &dados().rsBancos}},
                         {"numero",     txtnumero                                          },
                         {"data",       txtdata                                            },
                         {"bompara",    txtbompara                                         },
                         {"valor",      txtvalor                                           },
                         {"observacao", txtobservacao                                      },
                         {"autorizou",  txtautorizou                                       },
                         {"agencia",    txtagencia                                         },
                         {"descontar",  txtdescontar                                       },
    });
    enterAsTab({txtNome, txtbanco, txtagencia, txtnumero, txtdata, txtbompara, txtvalor,
                txtautorizou, txtobservacao, txtdescontar, cmbcheques});
    tellsRecord(txtlancamento, "Lançamento");
    txtlancamento->hide(); // told by the heading
    txtbompara->setNotBefore(txtdata);
    closesWith(CmdSair);
    lostFocus(txtNome, &FrmLancarCheques::txtNome_LostFocus);
    for (QWidget* caixa : std::initializer_list<QWidget*>{txtbanco, txtagencia, txtnumero})
        lostFocus(caixa, &FrmLancarCheques::numeracao_LostFocus);
    lostFocus(txtvalor, &FrmLancarCheques::txtvalor_LostFocus);
    lostFocus(txtobservacao, &FrmLancarCheques::txtobservacao_LostFocus);
    on(&leitor_, &ChequeReader::lineRead, &FrmLancarCheques::leitor_Lido);
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
    Estrutura::exigir(cheques(), {"lancamento", "cliente", "banco", "numero", "valor"});
    Estrutura::exigir(dados().rsCliente, {"codigo", "nome"});
    Estrutura::exigir(dados().rsBancos, {"codigo", "nome"});
    Estrutura::dispensar(dados().rsCliente, {
                                                {"limite_credito", nullptr}
    });
    campos_.dispensar(cheques());
    campos_.limitar(cheques());
    datasDeHoje();
    Mirtal::preencherLista(*txtNome, dados().rsCliente, "nome", "codigo");
    Mirtal::preencherLista(*txtbanco, dados().rsBancos, "nome", "codigo");
    nothingTyped();
}

void FrmLancarCheques::Form_Unload() {
    Mirtal::modo.clear();
    avisarRepetido("");
}

// ---- the cheque on the screen

bool FrmLancarCheques::mostrarCheque(qint32 lancamento) {
    if (!Lancamento::ir(lancamento))
        return false;
    if (isVisible())
        mostrarRegistro();
    return true;
}

void FrmLancarCheques::mostrarRegistro() {
    const ado::Recordset& rs = cheques();
    const ado::Shown visto = rs.shown();
    txtlancamento->setText(Valores::texto(rs["lancamento"]));
    campos_.mostrar(rs);
    visto_ = visto; // only now: what was shown in part isn't seen
    nothingTyped();
    avisarRepetido("");
}

bool FrmLancarCheques::mostrarGravado() {
    if (!Mirtal::foiAlterado(cheques(), "lancamento=" + txtlancamento->text(), visto_))
        return false;
    mostrarRegistro();
    return true;
}

void FrmLancarCheques::esvaziar() {
    limparControles(*this);
    campos_.esquecer();
    visto_ = {};
    avisarRepetido("");
}

void FrmLancarCheques::limpar() {
    esvaziar();
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
    ado::Recordset& clientes = dados().rsCliente;
    if (txtNome->listIndex() >= 0 && Mirtal::localizar(clientes, "codigo=" + codigo(*txtNome)))
        limite_ = Valores::valor(clientes["limite_credito"]);
}

void FrmLancarCheques::numeracao_LostFocus() {
    const auto banco = txtbanco->chosenData();
    if (!banco)
        return avisarRepetido("");
    avisarRepetido(ChequeRepetido::aviso({.banco = *banco,
                                          .agencia = txtagencia->text(),
                                          .numero = txtnumero->text(),
                                          .lancamento = txtlancamento->text()}));
}

void FrmLancarCheques::avisarRepetido(const QString& aviso) {
    if (aviso != avisado_)
        Mirtal::noticia(avisado_ = aviso);
}

// Warns when the client's cheques with this one pass his limit. Deliberate: a stored cheque counts
// twice, as it is stored and as it is typed; and where there is nothing to warn of, rsCheques stays
// restricted to the client's cheques, for the walk and for the search of the save.
void FrmLancarCheques::txtvalor_LostFocus() {
    ado::Recordset& rs = cheques();
    if (rs.isEmpty() || txtNome->listIndex() < 0)
        return;
    rs.setFilter("cliente=" + codigo(*txtNome));
    if (!rs.isEmpty() && LimiteDeCredito::ultrapassado(rs, txtvalor->valor(), limite_))
        rs.clearFilter();
}

// The last field leads straight to the save.
void FrmLancarCheques::txtobservacao_LostFocus() { CmdIncluir->setFocus(); }

// ---- the cheque reader

void FrmLancarCheques::leitor_Lido(const QString& digitos) {
    const auto cheque = Cmc7::ler(digitos);
    if (!cheque)
        return advertir(txtnumero, "O leitor não leu bem a linha deste cheque: os dígitos de "
                                   "controle não conferem. Passe o cheque outra vez ou digite "
                                   "banco, agência e número.");
    if (!escolherBanco(cheque->banco))
        return advertir(txtbanco, QString("O cheque é do banco %1, que não está cadastrado. "
                                          "Cadastre-o na janela de bancos e passe o cheque outra "
                                          "vez.")
                                      .arg(cheque->banco, 3, 10, QChar('0')));
    txtagencia->setText(cheque->agencia);
    txtnumero->setText(cheque->numero);
    numeracao_LostFocus();
    QWidget& proximo = txtNome->listIndex() < 0 ? static_cast<QWidget&>(*txtNome) : *txtdata;
    proximo.setFocus();
}

// Of two banks with the same number, the one that is chosen already.
bool FrmLancarCheques::escolherBanco(int codigoOficial) {
    ado::Recordset bancos;
    bancos.Open("select codigo from bancos where cod_banco=" + QString::number(codigoOficial),
                dados().Automacao);
    if (bancos.EOF())
        return false;
    const std::int64_t primeiro = bancos["codigo"].integer();
    for (; !bancos.EOF(); bancos.MoveNext())
        if (bancos["codigo"].integer() == txtbanco->chosenData())
            return true;
    Campos::escolher({txtbanco, &dados().rsBancos}, primeiro);
    return true;
}

// ---- commands

bool FrmLancarCheques::validar() {
    auto recusa = TelaDeCheque::falta({txtNome, txtbanco, txtnumero, txtvalor});
    if (!recusa)
        recusa = campos_.recusa(cheques());
    if (recusa)
        advertir(recusa->controle, recusa->motivo);
    return !recusa;
}

void FrmLancarCheques::CmdIncluir_Click() {
    if (!validar())
        return;
    ado::Recordset& rs = cheques();
    ado::Transaction gravacao(dados().Automacao);
    const bool novo = txtlancamento->text().isEmpty();
    if (novo)
        Estrutura::acrescentar(rs, "lancamento");
    else
        Mirtal::editar(rs, "lancamento=" + txtlancamento->text(), visto_);
    campos_.gravar(rs);
    rs.Update();
    const ado::Shown gravado = rs.shown();
    rs.Requery();
    gravacao.commit();

    if (!cmbcheques->isChecked())
        return limpar();
    // Deliberate: txtlancamento stays too, so a run begun on a stored cheque goes on changing it.
    if (!novo) {
        visto_ = gravado;
        campos_.lembrar();
    }
    txtbompara->setValue(txtbompara->value().addDays(kPrazo));
    txtnumero->clear();
    nothingTyped();
    avisarRepetido("");
    txtnumero->setFocus();
}

void FrmLancarCheques::CmdExcluir_Click() {
    if (txtlancamento->text().isEmpty() || !TelaDeCheque::confirmarExclusao(cheques()))
        return;
    Mirtal::apagarPorChave("Cheques", "lancamento", txtlancamento->text(), false, visto_);
    esvaziar(); // deliberate: unlike a new cheque, due today and not for deposit
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

void FrmLancarCheques::btnNavegacao_Click(int indice) {
    if (Mirtal::navegar(cheques(), indice) &&
        Lancamento::cabe(static_cast<qint32>(cheques()["lancamento"].integer())))
        mostrarRegistro();
}

#include "cheques/moc_FrmLancarCheques.cpp"
