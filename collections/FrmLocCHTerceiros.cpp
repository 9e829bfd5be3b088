#include "collections/FrmLocCHTerceiros.h"

#include "cheques/FrmLancarCheques.h"
#include "collections/ListaDeCheques.h"
#include "controls/look/BusyCursor.h"
#include "controls/look/Icons.h"
#include "controls/look/Style.h"
#include "controls/window/MessageBox.h"
#include "controls/window/Repainting.h"
#include "controls/window/WindowList.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

using Valores::texto;
using Valores::valor;

enum Coluna { kLancamento, kNumero, kNome, kAgencia, kData, kValor };

constexpr int kPrimeiraAoBaixar = 250;
constexpr int kPrimeiraAoLocalizar = 300;

constexpr auto kEntreRepinturas = 100ms;

constexpr char kNomeDoCliente[] = "cliente_fornecedor.nome";
constexpr char kNomeDoBanco[] = "bancos.nome";

bool baixando() { return Mirtal::modo == "Baixar"; }
bool localizandoSemFundos() { return Mirtal::modo == "localizarSF"; }

// Deliberate: of an entry number above 16.777.216 the last digits are lost.
qint32 emPrecisaoSimples(const QString& lancamento) {
    return static_cast<qint32>(static_cast<qint64>(lancamento.toFloat()));
}

} // namespace

FrmLocCHTerceiros::FrmLocCHTerceiros() {
    setupUi(this);
    // clang-format off
    lstterceiros->setColumns({
        {"",                kPrimeiraAoLocalizar, Qt::AlignLeft},
        {"Nº  Cheque",      1300,                 Qt::AlignLeft},
        {"Nome do Cliente", 4000,                 Qt::AlignLeft},
        {"Agência",         1000,                 Qt::AlignLeft},
        {"Dt.Vencto",       1250,                 Qt::AlignHCenter},
        {"Valor R$",        1500,                 Qt::AlignRight}
    });
    // clang-format on
    lstterceiros->setColumnName(kLancamento, "Lançamento");
    lstterceiros->setFirstColumnFit(kPrimeiraAoBaixar);
    lbltotal->setFont(headingFont());
    enterAsTab({txtbanco, txtcliente, chkdescontar, chkmostrar, txtinicio, txtfim});
    closesWith(cmdsair);
    lostFocus(txtfim, &FrmLocCHTerceiros::txtfim_LostFocus);
    on(chkdescontar, &QCheckBox::clicked, &FrmLocCHTerceiros::chkdescontar_Click);
    on(chkmostrar, &QCheckBox::clicked, &FrmLocCHTerceiros::chkmostrar_Click);
    on(txtbanco, &DropDownList::clicked, &FrmLocCHTerceiros::txtbanco_Click);
    on(txtcliente, &DropDownList::clicked, &FrmLocCHTerceiros::txtcliente_Click);
    on(lstterceiros, &ListView::itemChecked, &FrmLocCHTerceiros::lstterceiros_ItemCheck);
    on(lstterceiros, &ListView::itemClicked, &FrmLocCHTerceiros::lstterceiros_ItemClick);
    on(cmdsalvar, &QPushButton::clicked, &FrmLocCHTerceiros::cmdsalvar_Click);
    on(cmdsair, &QPushButton::clicked, &FrmLocCHTerceiros::cmdsair_Click);
}

FrmLocCHTerceiros::~FrmLocCHTerceiros() = default;

FrmLocCHTerceiros& FrmLocCHTerceiros::instance() {
    return WindowList::instance().one<FrmLocCHTerceiros>();
}

void FrmLocCHTerceiros::ocultarDescontar() { chkdescontar->hide(); }

void FrmLocCHTerceiros::Form_Load() {
    centre();
    txtinicio->setValue(QDate::currentDate());
    txtfim->setValue(QDate::currentDate());
    Mirtal::preencherLista(*txtbanco, dbconectar::instance().rsBancos, "nome", "codigo");
    Mirtal::preencherLista(*txtcliente, dbconectar::instance().rsCliente, "nome", "codigo");
    chkmostrar_Click();
    lbltotal->setVisible(baixando());
    cmdsalvar->setVisible(baixando());
    lstterceiros->setCheckBoxes(baixando());
    lstterceiros->setColumnWidthShare(kLancamento,
                                      baixando() ? kPrimeiraAoBaixar : kPrimeiraAoLocalizar);
    if (baixando())
        setWindowTitle("Baixa de cheques recebidos");
}

// ---- filters

// Deliberate: the name column keeps its title, which is that of the filter used before.
void FrmLocCHTerceiros::chkdescontar_Click() {
    txtbanco->setText("");
    txtcliente->setText("");
    preencher(ListaDeCheques::ondeDescontar(chkdescontar->isChecked()), kNomeDoCliente);
}

void FrmLocCHTerceiros::txtbanco_Click() {
    txtcliente->setText("");
    lstterceiros->setColumnCaption(kNome, "Nome do Cliente");
    preencher(ListaDeCheques::ondeBanco(txtbanco->itemData(txtbanco->listIndex())), kNomeDoCliente);
}

void FrmLocCHTerceiros::txtcliente_Click() {
    txtbanco->setText("");
    lstterceiros->setColumnCaption(kNome, "Nome do Banco");
    preencher(ListaDeCheques::ondeCliente(txtcliente->itemData(txtcliente->listIndex())),
              kNomeDoBanco);
}

void FrmLocCHTerceiros::chkmostrar_Click() {
    txtinicio->setEnabled(chkmostrar->isChecked());
    txtfim->setEnabled(chkmostrar->isChecked());
}

void FrmLocCHTerceiros::txtfim_LostFocus() {
    lstterceiros->setColumnCaption(kNome, "Nome do Cliente");
    preencher(ListaDeCheques::ondeDatas(Mirtal::modo, txtinicio->value(), txtfim->value()),
              kNomeDoCliente);
}

// ---- the list

void FrmLocCHTerceiros::preencher(const QString& onde, const char* campoNome) {
    const BusyCursor ocupado;
    Repainting repintura(kEntreRepinturas);
    rs_ = std::make_unique<ado::Recordset>();
    rs_->Open(ListaDeCheques::comando(Mirtal::modo, onde), dbconectar::instance().Automacao);
    rs_->addOptional("agencia");
    onde_ = onde;
    campoNome_ = campoNome;
    total_ = {};
    mostrarTotal("Total Selecionado :"); // deliberate: with a blank here, without one on ticking
    lstterceiros->clear();
    vistos_.clear();
    const QIcon icone = Icons::named("codigo");
    for (; !rs_->EOF(); rs_->MoveNext()) {
        acrescentarLinha(campoNome, icone);
        repintura.repaintIfDue();
    }
}

void FrmLocCHTerceiros::acrescentarLinha(const char* campoNome, const QIcon& icone) {
    const ado::Recordset& rs = *rs_;
    if (baixando())
        vistos_.push_back(rs.shown("cheques"));
    const char* const campoData = localizandoSemFundos() ? "data" : "bompara";
    ListItem linha;
    linha.text = texto(rs["lancamento"]);
    linha.subItems = {texto(rs["numero"]), texto(rs[campoNome]), texto(rs["agencia"]),
                      texto(rs[campoData]), formatMoney(valor(rs["valor"]))};
    linha.icon = icone;
    lstterceiros->addItem(std::move(linha));
}

std::optional<std::int64_t> FrmLocCHTerceiros::clienteMostrado() const {
    const int linha = lstterceiros->currentRow();
    if (linha < 0)
        return std::nullopt;
    ado::Recordset cheque;
    cheque.Open(
        ListaDeCheques::comandoDoCliente(Mirtal::modo, lstterceiros->text(linha, kLancamento)),
        dbconectar::instance().Automacao);
    if (cheque.EOF() || cheque["cliente"].isNull())
        return std::nullopt;
    return cheque["cliente"].integer();
}

void FrmLocCHTerceiros::lstterceiros_ItemCheck(int linha, bool marcado) {
    const QString mostrado = lstterceiros->text(linha, kValor);
    const Amount mais = marcado ? ListaDeCheques::somaAoMarcar(mostrado)
                                : Amount{-ListaDeCheques::somaAoDesmarcar(mostrado).tenThousandths};
    total_ = Valores::soma(total_, mais, "O total selecionado");
    mostrarTotal("Total Selecionado:");
}

void FrmLocCHTerceiros::mostrarTotal(const QString& titulo) {
    lbltotal->setText(titulo + formatMoney(total_));
}

void FrmLocCHTerceiros::lstterceiros_ItemClick(const QString& /*chave*/, int linha) {
    if (baixando())
        return;
    const QString lancamento = lstterceiros->text(linha, kLancamento);
    if (lancamento != ultimoClicado_) {
        ultimoClicado_ = lancamento;
        return;
    }
    const qint32 escolhido = emPrecisaoSimples(lancamento);
    // Also when it is the renegotiation that looks for a cheque.
    if (!localizandoSemFundos() && !FrmLancarCheques::instance().mostrarCheque(escolhido))
        return; // it has said why; the list stays for another choice
    Mirtal::lancamentoEscolhido = escolhido;
    Mirtal::registroEscolhido = true;
    rs_.reset();
    unload();
}

// ---- settlement

// Deliberate: nothing is asked before and nothing is said afterwards.
void FrmLocCHTerceiros::cmdsalvar_Click() {
    Alterados alterados;
    Mirtal::excluirMuitos("baixado", Historico::kBaixa, [&] { alterados = baixarMarcados(); });
    if (!alterados.lancamentos.isEmpty())
        return mostrarAlterados(alterados);
    // An emptied list says that all of it is stored.
    txtbanco->setText("");
    txtcliente->setText("");
    lstterceiros->clear();
    lbltotal->setText("Total:");
    txtbanco->setFocus();
}

FrmLocCHTerceiros::Alterados FrmLocCHTerceiros::baixarMarcados() {
    const BusyCursor ocupado;
    Repainting repintura(kEntreRepinturas);
    Alterados alterados;
    for (int linha = 0; linha < lstterceiros->count(); ++linha) {
        if (!lstterceiros->isChecked(linha))
            continue;
        const QString lancamento = lstterceiros->text(linha, kLancamento);
        const ado::Shown& visto = vistos_[static_cast<std::size_t>(linha)];
        if (!baixar(lancamento, visto)) {
            alterados.lancamentos += lancamento;
            alterados.porQuem = dbconectar::instance().rsCheques.byWhom(visto);
        }
        if (repintura.due()) {
            lstterceiros->setCurrentRow(linha); // shows how far it has come
            repintura.repaint();
        }
    }
    return alterados;
}

void FrmLocCHTerceiros::mostrarAlterados(const Alterados& alterados) {
    const QStringList& lancamentos = alterados.lancamentos;
    constexpr qsizetype kNomeados = 20;
    QString quais = lancamentos.first(std::min(kNomeados, lancamentos.size())).join(", ");
    if (lancamentos.size() > kNomeados)
        quais += QString(" e mais %1").arg(lancamentos.size() - kNomeados);
    showMessage(QString("Foram alterados%1 depois de listados e por isso não foram baixados os "
                        "cheques de lançamento %2.\n\nA lista mostra agora como eles estão: "
                        "confira e marque-os de novo.")
                    .arg(QString::fromStdString(alterados.porQuem), quais),
                "Mensagem", MessageIcon::exclamation);
    preencher(onde_, campoNome_);
    for (int linha = lstterceiros->count() - 1; linha >= 0; --linha)
        if (lstterceiros->text(linha, kLancamento) == lancamentos.front())
            lstterceiros->setCurrentRow(linha);
    lstterceiros->setFocus();
}

bool FrmLocCHTerceiros::baixar(const QString& lancamento, const ado::Shown& visto) {
    ado::Recordset& cheques = dbconectar::instance().rsCheques;
    cheques.clearFilter();
    cheques.Requery();
    if (!Mirtal::localizar(cheques, "lancamento=" + lancamento))
        return true; // another has deleted it since it was listed
    dbconectar::instance().historico.comecar();
    ado::Transaction baixa(dbconectar::instance().Automacao);
    if (cheques.isOther(visto))
        return false;
    cheques.Delete(visto);
    cheques.Requery();
    baixa.commitLater(); // each on its own, but for the disk several at once
    return true;
}

void FrmLocCHTerceiros::cmdsair_Click() { unload(); }

#include "collections/moc_FrmLocCHTerceiros.cpp"
