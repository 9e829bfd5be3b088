#include "agenda/FrmHistorico.h"

#include "agenda/Desfazer.h"
#include "agenda/Vencimentos.h"
#include "controls/look/BusyCursor.h"
#include "controls/window/MessageBox.h"
#include "controls/window/Repainting.h"
#include "controls/window/WindowList.h"
#include "shell/Historico.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <QTime>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

using namespace std::chrono_literals;

namespace {

using Valores::texto;
using Valores::valor;

constexpr int kDias = 30; ///< of the period at first
constexpr auto kEntreRepinturas = 100ms;
constexpr char kTotal[] = "O total do histórico";

constexpr const char* kOperacoes[] = {
    Historico::kAlteracao, Historico::kBaixa,   Historico::kBordero,      Historico::kDesfazer,
    Historico::kExclusao,  Historico::kExpurgo, Historico::kRenegociacao, Historico::kSemFundos};

enum SomaPor { kCliente, kBanco, kOperacao, kMes };
constexpr const char* kSomas[] = {"Cliente", "Banco", "Operação", "Mês"};

// clang-format off
const std::vector<ListColumn> kColunas = {
    {"Data e hora", 2300, Qt::AlignLeft,  "", "00/00/0000 00:00"},
    {"Operação",    1500, Qt::AlignLeft,  "", "renegociação"},
    {"Nº  Cheque",  1200, Qt::AlignLeft},
    {"Cliente",     2400, Qt::AlignLeft,  "", "Ana Maria de Souza"},
    {"Banco",       1300, Qt::AlignLeft,  "", "Banco da Serra"},
    {"Dt.Vencto",   1500, Qt::AlignLeft,  "", "00/00/0000"},
    {"Valor R$",    1500, Qt::AlignRight, "", "000.000,00"},
    {"Estação",     1000, Qt::AlignLeft}
};
const std::vector<ListColumn> kColunasDasSomas = {
    {"",                        4000, Qt::AlignLeft},
    {"Cheques",                 1200, Qt::AlignRight},
    {"Valor R$",                1800, Qt::AlignRight},
    {"Atraso médio das baixas", 2200, Qt::AlignRight}
};
// clang-format on

/// To the minute.
QString momento(jet::Date data) {
    const jet::CivilTime em = data.civil();
    return formatDate({em.year, em.month, em.day}) + QTime(em.hour, em.minute).toString(" HH:mm");
}

/// Or of a slip of them, and not of what has only gone along with one.
bool eDeCheque(const ado::Recordset& rs) {
    return rs["tabela"].isNull() || Historico::eDeCheques(rs["tabela"].text());
}

QString feito(const QString& operacao, bool desfeita) {
    return desfeita ? operacao + " (desfeita)" : operacao;
}

} // namespace

FrmHistorico::FrmHistorico() {
    setupUi(this);
    for (const char* operacao : kOperacoes)
        txtoperacao->addItem(operacao);
    for (const char* soma : kSomas)
        txtsoma->addItem(soma);
    enterAsTab({txtinicio, txtfim, txtoperacao, txtcliente, txttexto, txtsoma});
    closesWith(cmdsair);
    lostFocus(txtfim, &FrmHistorico::listar);
    lostFocus(txttexto, &FrmHistorico::listar);
    on(txtoperacao, &DropDownList::clicked, &FrmHistorico::listar);
    on(txtcliente, &DropDownList::clicked, &FrmHistorico::listar);
    on(txtsoma, &DropDownList::clicked, &FrmHistorico::listar);
    on(cmdlocalizar, &QPushButton::clicked, &FrmHistorico::listar);
    on(cmddesfazer, &QPushButton::clicked, &FrmHistorico::cmddesfazer_Click);
    on(cmdsair, &QPushButton::clicked, &FrmHistorico::cmdsair_Click);
}

FrmHistorico& FrmHistorico::instance() { return WindowList::instance().one<FrmHistorico>(); }

void FrmHistorico::Form_Load() {
    centre();
    txtinicio->setValue(QDate::currentDate().addDays(-kDias));
    Mirtal::preencherLista(*txtcliente, dbconectar::instance().rsCliente, "nome", "codigo");
    listar();
}

std::optional<std::int64_t> FrmHistorico::clienteMostrado() const {
    const int linha = lsthistorico->currentRow();
    return linha < 0 || linhas_.empty() ? txtcliente->chosenData()
                                        : linhas_[static_cast<std::size_t>(linha)].cliente;
}

// ---- the list

QString FrmHistorico::linhasProcuradas() const {
    QString linhas = QString("%1 where quando>=%2 and quando<%3")
                         .arg(Historico::kTabela, Valores::literal(txtinicio->value()),
                              Valores::literal(txtfim->value().addDays(1)));
    if (txtoperacao->listIndex() >= 0)
        linhas += " and operacao='" + txtoperacao->text() + "'";
    if (const auto cliente = txtcliente->chosenData())
        linhas += " and cliente=" + QString::number(*cliente);
    return linhas;
}

bool FrmHistorico::procurado(const ado::Recordset& rs) const {
    const QString procura = txttexto->text();
    if (procura.isEmpty())
        return true;
    const auto tem = [&](const QString& texto) {
        return texto.contains(procura, Qt::CaseInsensitive);
    };
    return tem(cliente(rs)) || tem(banco(rs)) || tem(texto(rs["estacao"])) ||
           tem(texto(rs["antes"])) || tem(texto(rs["depois"]));
}

QString FrmHistorico::cliente(const ado::Recordset& rs) const {
    return clientes_->de(Nomes::codigo(rs["cliente"]));
}

QString FrmHistorico::banco(const ado::Recordset& rs) const {
    return bancos_->de(Nomes::codigo(rs["banco"]));
}

/// Of all rows, which are gone through for it and stand at the first one again. The same names
/// serve for one list after the other, until it is asked for anew.
void FrmHistorico::lerNomes(ado::Recordset& rs) {
    std::vector<Nomes::Codigo> clientes;
    std::vector<Nomes::Codigo> bancos;
    const ado::Recordset& lido = rs;
    for (; !rs.EOF(); rs.MoveNext()) {
        clientes.push_back(Nomes::codigo(lido["cliente"]));
        bancos.push_back(Nomes::codigo(lido["banco"]));
    }
    if (!clientes_ || !clientes_->bastamPara(clientes))
        clientes_.emplace("cliente_fornecedor", clientes);
    if (!bancos_ || !bancos_->bastamPara(bancos))
        bancos_.emplace("bancos", bancos);
    if (!clientes.empty())
        rs.MoveFirst();
}

void FrmHistorico::listar() {
    clientes_.reset();
    bancos_.reset();
    mostrarLista();
}

void FrmHistorico::mostrarLista() {
    const BusyCursor ocupado;
    Repainting repintura(kEntreRepinturas);
    const bool somando = txtsoma->listIndex() >= 0;
    lsthistorico->setColumns(somando ? kColunasDasSomas : kColunas);
    if (somando)
        lsthistorico->setColumnCaption(0, txtsoma->text());
    linhas_.clear();
    somas_.clear();
    const Historico& historico = dbconectar::instance().historico;
    if (!historico.legivel())
        return lblsoma->setText(historico.impedimento().isEmpty() ? "Ainda não há histórico."
                                                                  : historico.impedimento());
    const QString linhas = linhasProcuradas();
    ado::Recordset rs;
    rs.Open("select * from " + linhas + " order by id desc", dbconectar::instance().Automacao);
    lerNomes(rs);
    qint64 quantos = 0;
    Amount total;
    for (; !rs.EOF(); rs.MoveNext()) {
        repintura.repaintIfDue();
        const bool valeu =
            rs["desfeito_por"].isNull() && rs["operacao"].text() != Historico::kDesfazer;
        const bool cheque = eDeCheque(rs);
        if ((somando && !(valeu && cheque)) || !procurado(rs))
            continue;
        somando ? acrescentarSoma(rs) : acrescentarLinha(rs);
        quantos += cheque ? 1 : 0;
        total = Valores::soma(total, valor(rs["valor"]), kTotal);
    }
    if (somando)
        mostrarSomas();
    lblsoma->setText(Vencimentos::quantos({quantos, {}}) +
                     (somando ? ", sem o que foi desfeito" : "") +
                     ". Total: " + formatMoney(total));
}

void FrmHistorico::acrescentarLinha(const ado::Recordset& rs) {
    Linha linha{static_cast<std::int32_t>(rs["grupo"].integer()), texto(rs["operacao"]),
                !rs["desfeito_por"].isNull(), Nomes::codigo(rs["cliente"])};
    ListItem item;
    item.text = momento(rs["quando"].date());
    item.subItems = {feito(linha.operacao, linha.desfeita),
                     texto(rs["numero"]),
                     eDeCheque(rs) ? cliente(rs) : '(' + texto(rs["tabela"]) + ')',
                     banco(rs),
                     formatDate(Valores::dia(rs["bompara"])),
                     formatMoney(valor(rs["valor"])),
                     texto(rs["estacao"])};
    lsthistorico->addItem(std::move(item));
    linhas_.push_back(std::move(linha));
}

void FrmHistorico::acrescentarSoma(const ado::Recordset& rs) {
    const QDate quando = Valores::dia(rs["quando"]);
    QString de;
    switch (txtsoma->listIndex()) {
    case kCliente:
        de = cliente(rs);
        break;
    case kBanco:
        de = banco(rs);
        break;
    case kOperacao:
        de = texto(rs["operacao"]);
        break;
    default:
        de = quando.toString("yyyy/MM");
    }
    Parcela& soma = somas_[de];
    ++soma.cheques;
    soma.valor = Valores::soma(soma.valor, valor(rs["valor"]), kTotal);
    if (rs["operacao"].text() == Historico::kBaixa)
        soma.atraso.mais(Valores::dia(rs["bompara"]), quando);
}

void FrmHistorico::mostrarSomas() {
    for (const auto& [de, soma] : somas_) {
        ListItem item;
        item.text = de;
        item.subItems = {QString::number(soma.cheques), formatMoney(soma.valor),
                         soma.atraso.medio()};
        lsthistorico->addItem(std::move(item));
    }
}

// ---- the way back

void FrmHistorico::cmddesfazer_Click() {
    const int escolhida = lsthistorico->currentRow();
    if (escolhida < 0 || linhas_.empty())
        return advertir(lsthistorico, "Escolha na lista o que deve ser desfeito.");
    const Linha linha = linhas_[static_cast<std::size_t>(escolhida)];
    ado::Recordset todos;
    todos.Open(QString("select count(*) as quantos from %1 where grupo=%2 and (lancamento is not "
                       "null or tabela is null)")
                   .arg(Historico::kTabela)
                   .arg(linha.grupo),
               dbconectar::instance().Automacao);
    const Vencimentos::Soma quantos{todos["quantos"].integer(), {}};
    todos.Close();
    if (showMessage(QString("Deseja realmente desfazer a operação \"%1\" de %2 ?")
                        .arg(linha.operacao, Vencimentos::quantos(quantos)),
                    "Desfazer", MessageIcon::question, MessageButtons::yesNo) != MessageAnswer::yes)
        return;
    const QString motivo = [&] {
        const BusyCursor ocupado;
        return Desfazer::desfazer(linha.grupo);
    }();
    if (!motivo.isEmpty())
        showMessage(motivo, "Desfazer", MessageIcon::exclamation);
    dbconectar::instance().rsCheques.Requery();
    dbconectar::instance().rsSemFundos.Requery();
    mostrarLista(); // with the names that it had
    lsthistorico->setFocus();
}

#include "agenda/moc_FrmHistorico.cpp"
