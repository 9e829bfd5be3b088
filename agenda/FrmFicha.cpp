#include "agenda/FrmFicha.h"

#include "agenda/JanelaDeImpressao.h"
#include "controls/box/ShowOnly.h"
#include "controls/look/BusyCursor.h"
#include "controls/window/WindowList.h"
#include "shell/Campos.h"
#include "shell/ClienteMostrado.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/dbconectar.h"

#include <QApplication>
#include <QShortcut>

#include <utility>

namespace {

constexpr double kDecimosDeMilesimo = 10'000;
constexpr int kDatasNaLista = 4; ///< as wide as so many

ListItem linha(const QString& primeira, const QStringList& outras) {
    ListItem linha;
    linha.text = primeira;
    linha.subItems = outras;
    return linha;
}

} // namespace

FrmFicha::FrmFicha() {
    setupUi(this);
    showOnly({txtemmaos, txtlimite, txtlivre, txtbaixados, txtdevolvidos});
    // clang-format off
    lstprazos->setColumns({
        {"Prazo",   2000, Qt::AlignLeft},
        {"Cheques", 1000, Qt::AlignRight, "Cheques do prazo"},
        {"Soma R$", 1700, Qt::AlignRight, "Soma do prazo"}
    });
    lstavencer->setColumns({
        {"Dt.Vencto", 2000, Qt::AlignHCenter},
        {"Cheques",   1200, Qt::AlignRight, "Cheques do dia"},
        {"Soma R$",   1600, Qt::AlignRight, "Soma do dia"}
    });
    lstsemfundos->setColumns({
        {"Data",      2000, Qt::AlignHCenter},
        {"Nº Cheque", 1300, Qt::AlignLeft},
        {"Valor R$",  1500, Qt::AlignRight}
    });
    // clang-format on
    // Dates and amounts are read whole, however narrow the window is made.
    for (ListView* lista : {lstprazos, lstavencer, lstsemfundos})
        lista->setMinimumWidth(kDatasNaLista * fontMetrics().horizontalAdvance("00/00/0000"));
    txtemmaos->setMinimumWidth(fontMetrics().horizontalAdvance("0.000 cheques, R$ 000.000,00"));
    prompts({
        {txtcliente, "Digite o nome do cliente"                 },
        {grfprazos,  "As setas dizem quanto está em cada prazo"},
    });
    enterAsTab({txtcliente});
    closesWith(cmdsair);
    lostFocus(txtcliente, &FrmFicha::txtcliente_LostFocus);
    on(txtcliente, &DropDownList::clicked, &FrmFicha::mostrarFicha);
    on(cmdimprimir, &QPushButton::clicked, &FrmFicha::cmdimprimir_Click);
    on(cmdatualizar, &QPushButton::clicked, &FrmFicha::mostrarFicha);
    on(new QShortcut(Qt::Key_F5, this), &QShortcut::activated, &FrmFicha::mostrarFicha);
    on(cmdsair, &QPushButton::clicked, &FrmFicha::cmdsair_Click);
}

FrmFicha& FrmFicha::instance() { return WindowList::instance().one<FrmFicha>(); }

void FrmFicha::mostrar() {
    const auto* naFrente = dynamic_cast<const ClienteMostrado*>(QApplication::activeWindow());
    const auto cliente = naFrente ? naFrente->clienteMostrado() : std::nullopt;
    if (FrmFicha& antes = instance(); antes.isVisible() && !antes.isActiveWindow())
        antes.unload(); // behind the one from which it is asked for: that one stays open
    FrmFicha& ficha = instance();
    if (!ficha.load())
        return;
    if (cliente) {
        Campos::escolher({ficha.txtcliente, &dbconectar::instance().rsCliente}, *cliente);
        ficha.mostrarFicha();
    }
    ficha.showModal();
}

void FrmFicha::Form_Load() {
    centre();
    dbconectar& dados = dbconectar::instance();
    Estrutura::exigir(dados.rsCliente, {"codigo", "nome"});
    Estrutura::exigir(dados.rsCheques, {"cliente", "valor"});
    Mirtal::preencherLista(*txtcliente, dados.rsCliente, "nome", "codigo");
    mostrarFiguras();
}

void FrmFicha::txtcliente_LostFocus() {
    if (txtcliente->chosenData() != pedido_)
        mostrarFicha();
}
void FrmFicha::cmdimprimir_Click() {
    if (!mostrado_)
        return advertir(txtcliente, "Escolha o cliente cuja ficha deve ser impressa.");
    JanelaDeImpressao::instance().mostrar(Impressos::ficha(*mostrado_));
}
void FrmFicha::cmdsair_Click() { unload(); }

void FrmFicha::mostrarFicha() {
    const BusyCursor ocupado;
    for (ListView* lista : {lstprazos, lstavencer, lstsemfundos})
        lista->clear();
    grfprazos->setBars({});
    mostrado_.reset();
    pedido_ = txtcliente->chosenData();
    if (pedido_)
        mostrado_ = Ficha::ler(*pedido_, QDate::currentDate());
    mostrarFiguras();
    if (!mostrado_)
        return;
    mostrarPrazos(*mostrado_);
    mostrarListas(*mostrado_);
}

void FrmFicha::mostrarFiguras() {
    const auto& cliente = mostrado_;
    titulo->setRecord(cliente ? cliente->nome : "Nenhum cliente");
    txtemmaos->setText(cliente ? Vencimentos::texto(cliente->emMaos) : "");
    txtlimite->setText(!cliente ? "" : "R$ " + formatMoney(cliente->limite));
    txtlivre->setText(cliente ? Ficha::livre(*cliente) : "");
    txtbaixados->setText(cliente ? Ficha::baixados(*cliente) : "");
    txtdevolvidos->setText(cliente ? Ficha::devolvidos(*cliente) : "");
}

void FrmFicha::mostrarPrazos(const Ficha::Cliente& cliente) {
    std::vector<BarChart::Bar> barras;
    barras.reserve(Ficha::kPrazos);
    for (int i = 0; i < Ficha::kPrazos; ++i) {
        const auto prazo = static_cast<Ficha::Prazo>(i);
        const Vencimentos::Soma& soma = cliente.porPrazo[prazo];
        if (prazo == Ficha::kSemVencimento && soma.cheques == 0)
            continue; // the rule
        lstprazos->addItem(
            linha(Ficha::nome(prazo), {QString::number(soma.cheques), formatMoney(soma.valor)}));
        barras.push_back(
            {.label = Ficha::nomeCurto(prazo),
             .words = Ficha::nome(prazo) + ": " + Vencimentos::texto(soma),
             .height = static_cast<double>(soma.valor.tenThousandths) / kDecimosDeMilesimo});
    }
    grfprazos->setBars(std::move(barras));
}

void FrmFicha::mostrarListas(const Ficha::Cliente& cliente) {
    for (const auto& [vencimento, soma] : cliente.aVencer)
        lstavencer->addItem(linha(formatDate(vencimento),
                                  {QString::number(soma.cheques), formatMoney(soma.valor)}));
    for (const Ficha::SemFundos& cheque : cliente.semFundos)
        lstsemfundos->addItem(
            linha(formatDate(cheque.data), {cheque.numero, formatMoney(cheque.valor)}));
}

#include "agenda/moc_FrmFicha.cpp"
