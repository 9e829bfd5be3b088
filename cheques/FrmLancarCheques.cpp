#include "cheques/FrmLancarCheques.h"

#include "controls/ClearControls.h"
#include "controls/MessageBox.h"
#include "controls/WindowList.h"
#include "jet/Error.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <limits>
#include <utility>

namespace {

constexpr int kPrazo = 30; ///< days from one cheque of a run to the next

ado::Recordset& cheques() { return dbconectar::instance().rsCheques; }

/// Has CmdLocalizar's list shown.
std::function<void()>& lista() {
    static std::function<void()> mostrar;
    return mostrar;
}

std::int64_t codigo(const DropDownList& escolhido) {
    return escolhido.itemData(escolhido.listIndex());
}

/// A long text shows its beginning.
void mostrar(QLineEdit& caixa, const ado::FieldValue& campo) {
    caixa.setText(Valores::texto(campo));
    caixa.setCursorPosition(0);
}

/// An empty field shows as an empty date box does: today's date.
void mostrar(DatePicker& data, const ado::FieldValue& campo) {
    data.setValue(campo.isNull() ? QDate::currentDate() : Valores::dia(campo));
}

Amount soma(Amount a, Amount b) {
    using Limites = std::numeric_limits<std::int64_t>;
    const std::int64_t parcela = b.tenThousandths;
    if (parcela > 0 ? a.tenThousandths > Limites::max() - parcela
                    : a.tenThousandths < Limites::min() - parcela)
        throw jet::Error(jet::Errc::outOfRange,
                         "O total dos cheques do cliente passa do maior valor possível.");
    return {a.tenThousandths + parcela};
}

/// Goes to the row of a client or bank, by its code, and chooses the entry of its name: of several
/// clients of one name the right one, or the next save would hand his cheque to another.
void escolher(DropDownList& lista, ado::Recordset& rs, std::int64_t codigo) {
    rs.MoveFirst();
    rs.Find("CODIGO=" + QString::number(codigo));
    const QString nome = Valores::texto(rs["nome"]);
    for (int i = 0; i < lista.count(); ++i) {
        if (lista.itemData(i) == codigo && lista.itemText(i) == nome)
            return lista.setListIndex(i);
    }
    lista.selectByText(nome);
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
    for (const auto& [campo, caixa] : textos()) {
        if (const auto tamanho = cheques()[campo].DefinedSize())
            caixa->setMaxLength(static_cast<int>(*tamanho));
    }
    datasDeHoje();
    dbconectar& dados = dbconectar::instance();
    Mirtal::preencherLista(*txtNome, dados.rsCliente, "nome", "codigo");
    Mirtal::preencherLista(*txtbanco, dados.rsBancos, "nome", "codigo");
}

void FrmLancarCheques::Form_Unload() { Mirtal::modo.clear(); }

std::array<FrmLancarCheques::Texto, 4> FrmLancarCheques::textos() const {
    return {
        {{"agencia", txtagencia},
         {"numero", txtnumero},
         {"autorizou", txtautorizou},
         {"observacao", txtobservacao}}
    };
}

// ---- the cheque on the screen

void FrmLancarCheques::mostrarCheque(qint32 lancamento) {
    if (!load())
        return;
    if (!std::in_range<std::int16_t>(lancamento))
        throw jet::Error(jet::Errc::outOfRange,
                         "O lançamento " + std::to_string(lancamento) +
                             " não pode ser mostrado na entrada de cheques, que só mostra "
                             "lançamentos até 32767.");
    ado::Recordset& rs = cheques();
    rs.MoveFirst();
    rs.Find("Lancamento=" + QString::number(lancamento));
    txtlancamento->setText(QString::number(lancamento));
    escolher(*txtNome, dbconectar::instance().rsCliente, rs["cliente"].integer());
    escolher(*txtbanco, dbconectar::instance().rsBancos, rs["banco"].integer());
    mostrar(*txtnumero, rs["numero"]);
    mostrar(*txtdata, rs["data"]);
    mostrar(*txtbompara, rs["bompara"]);
    txtvalor->setValor(Valores::valor(rs["valor"]));
    mostrar(*txtobservacao, rs["observacao"]);
    mostrar(*txtautorizou, rs["autorizou"]);
    mostrar(*txtagencia, rs["agencia"]);
    txtdescontar->setChecked(rs["descontar"].boolean());
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
    datasDeHoje();
    txtdescontar->setChecked(true);
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
    const struct {
        bool falta;
        QWidget* controle;
        const char* mensagem;
    } exigidos[] = {
        {txtNome->listIndex() < 0,      txtNome,   "É necessário preencher o nome do cliente."  },
        {txtbanco->listIndex() < 0,     txtbanco,  "É necessário preencher o nome do banco."    },
        {txtnumero->text().isEmpty(),   txtnumero, "É necessário preencher O número do cheque."},
        {txtvalor->valor() == Amount{}, txtvalor,  "É necessário preencher o Valor do Cheque."  },
    };
    for (const auto& [falta, controle, mensagem] : exigidos) {
        if (falta) {
            advertir(controle, mensagem);
            return false;
        }
    }
    // A pasted sign that the file has no place for would end the program, and with it what was
    // typed.
    for (const auto& [campo, caixa] : textos()) {
        if (const auto motivo = cheques()[campo].refusal(caixa->text())) {
            advertir(caixa, QString::fromStdString(*motivo));
            return false;
        }
    }
    return true;
}

void FrmLancarCheques::CmdIncluir_Click() {
    if (!validar())
        return;
    ado::Recordset& rs = cheques();
    ado::Transaction gravacao(dbconectar::instance().Automacao);
    if (txtlancamento->text().isEmpty()) {
        rs.AddNew();
    } else {
        rs.MoveFirst();
        rs.Find("lancamento=" + txtlancamento->text());
    }
    gravarCampos();
    rs.Update();
    rs.Requery();
    gravacao.commit();

    if (!cmbcheques->isChecked())
        return limpar();
    // Deliberate: txtlancamento stays too, so a run begun on a stored cheque goes on changing it.
    txtbompara->setValue(txtbompara->value().addDays(kPrazo));
    txtnumero->clear();
    txtnumero->setFocus();
}

void FrmLancarCheques::CmdNovo_Click() { limpar(); }

void FrmLancarCheques::CmdExcluir_Click() {
    if (txtlancamento->text().isEmpty())
        return;
    if (cheques().RecordCount() == 0) {
        showMessage("Não existe registros para excluir !", "Mensagem", MessageIcon::exclamation);
        return;
    }
    if (showMessage("Deseja realmente excluir este registro ?", "Exclusão", MessageIcon::critical,
                    MessageButtons::yesNo) != MessageAnswer::yes)
        return;
    Mirtal::apagarPorChave("Cheques", "lancamento", txtlancamento->text(), false);
    limparControles(*this); // deliberate: unlike a new cheque, due today and not for deposit
    cheques().Requery();
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
