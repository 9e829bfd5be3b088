#include "agenda/FrmAgenda.h"

#include "agenda/Calendario.h"
#include "agenda/FrmBordero.h"
#include "agenda/Impressos.h"
#include "agenda/JanelaDeImpressao.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLocCHTerceiros.h"
#include "controls/folder/FileChooser.h"
#include "controls/look/BusyCursor.h"
#include "controls/look/Spoken.h"
#include "controls/look/Style.h"
#include "controls/window/MessageBox.h"
#include "controls/window/WindowList.h"
#include "jet/Database.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/dbconectar.h"

#include <QDir>
#include <QMouseEvent>
#include <QShortcut>
#include <QTimer>

#include <utility>

FrmAgenda::FrmAgenda() {
    setupUi(this);
    filtro_ = FiltroDaAgenda({cmbperiodo, txtinicio, txtfim, cmbdestino, txtcliente, txtbanco});
    lstcheques->setColumns(ListaDaAgenda::colunas());
    lstdias->setColumns(ListaDaAgenda::colunasDosDias());
    lstcheques->setCheckBoxes(true);
    lstcheques->viewport()->installEventFilter(this);
    lblsoma->setFont(headingFont());
    lblsoma->setAccessibleName("Somas");
    // clang-format off
    prompts({
        {cmbperiodo, "Escolha quando os cheques vencem"},
        {txtinicio,  "Digite o primeiro dia do vencimento"},
        {txtfim,     "Digite o último dia do vencimento"},
        {cmbdestino, "Escolha se o cheque é p/descontar ou o cliente vem trocar na empresa"},
        {txtcliente, "Digite o nome do cliente (opcional)"},
        {txtbanco,   "Digite o nome do banco (opcional)"},
        {cmbordem,   "Escolha a ordem da lista"},
        {chkinvertida, "Marque para ver o maior ou o último primeiro"},
        {lstcheques, "Espaço marca o cheque, Enter ou dois cliques o abrem na entrada de cheques"},
    });
    // clang-format on
    txtcliente->signUnlisted("Nenhum cliente tem este nome: são mostrados os cheques de todos.");
    txtbanco->signUnlisted("Nenhum banco tem este nome: são mostrados os cheques de todos.");
    enterAsTab(
        {cmbperiodo, txtinicio, txtfim, cmbdestino, txtcliente, txtbanco, cmbordem, chkinvertida});
    closesWith(cmdsair);
    for (auto* lista : {cmbperiodo, cmbdestino, txtcliente, txtbanco})
        on(lista, &DropDownList::changed, &FrmAgenda::filtro_Change);
    for (auto* dia : {txtinicio, txtfim})
        on(dia, &DatePicker::changed, &FrmAgenda::filtro_Change);
    for (auto* escolha : {cmbperiodo, cmbdestino, cmbordem})
        lostFocus(escolha, &FrmAgenda::escolha_LostFocus);
    on(cmbordem, &DropDownList::clicked, &FrmAgenda::cmbordem_Click);
    on(chkinvertida, &QCheckBox::clicked, &FrmAgenda::chkinvertida_Click);
    on(lstcheques, &ListView::columnClicked, &FrmAgenda::lstcheques_ColumnClick);
    on(lstcheques, &ListView::itemChecked, &FrmAgenda::lstcheques_ItemCheck);
    onEnter(lstcheques, &FrmAgenda::lstcheques_Enter);
    on(cmdmarcar, &QPushButton::clicked, &FrmAgenda::cmdmarcar_Click);
    on(cmdatualizar, &QPushButton::clicked, &FrmAgenda::cmdatualizar_Click);
    on(cmdimprimir, &QPushButton::clicked, &FrmAgenda::cmdimprimir_Click);
    on(cmdbordero, &QPushButton::clicked, &FrmAgenda::cmdbordero_Click);
    on(cmdcalendario, &QPushButton::clicked, &FrmAgenda::cmdcalendario_Click);
    on(new QShortcut(Qt::Key_F5, this), &QShortcut::activated, &FrmAgenda::cmdatualizar_Click);
    on(cmdsair, &QPushButton::clicked, &FrmAgenda::cmdsair_Click);
}

FrmAgenda& FrmAgenda::instance() { return WindowList::instance().one<FrmAgenda>(); }

void FrmAgenda::mostrar(const Vencimentos::Dias& dias) {
    FrmAgenda& agenda = instance();
    agenda.pedidos_ = dias; // else it would be asked for its own period first
    if (!agenda.load())
        return;
    agenda.filtro_.escolher(dias);
    agenda.showModal();
}

void FrmAgenda::Form_Load() {
    centre();
    dbconectar& dados = dbconectar::instance();
    Estrutura::exigir(dados.rsCheques,
                      {"lancamento", "cliente", "banco", "numero", "bompara", "valor"});
    Estrutura::exigir(dados.rsCliente, {"codigo", "nome"});
    Estrutura::exigir(dados.rsBancos, {"codigo", "nome"});
    Estrutura::dispensar(dados.rsCheques,
                         {
                             {"agencia",   nullptr   },
                             {"data",      nullptr   },
                             {"descontar", cmbdestino}
    });
    filtro_.encher();
    for (const ListaDaAgenda::Ordenacao& ordem : ListaDaAgenda::ordens())
        cmbordem->addItem(ordem.nome);
    mostrarOrdem();
    if (pedidos_)
        filtro_.escolher(*pedidos_);
    Mirtal::preencherLista(*txtcliente, dados.rsCliente, "nome", "codigo");
    Mirtal::preencherLista(*txtbanco, dados.rsBancos, "nome", "codigo");
    pronta_ = true;
    filtro_Change();
}

// ---- what is asked for

void FrmAgenda::filtro_Change() {
    filtro_.trocarPeriodo();
    if (pronta_ && filtro_.procura() != procurado_)
        procurar();
}

void FrmAgenda::escolha_LostFocus() {
    filtro_.completar();
    mostrarOrdem();
}

void FrmAgenda::procurar() {
    const BusyCursor ocupado;
    const Vencimentos::Procura procura = filtro_.procura();
    const std::int64_t atual = chequeAtual();
    std::vector<Vencimentos::Cheque> achados = Vencimentos::procurar(procura);
    lstcheques->clear(); // its rows are made of those
    listados_.receber(std::move(achados));
    procurado_ = procura;
    filtro_.mostrarDias(procura.dias, listados_.cheques());
    ordenar(atual);
    mostrarDias();
    mostrarSomas();
}

// ---- the order

void FrmAgenda::cmbordem_Click() {
    coluna_ = ListaDaAgenda::ordens()[static_cast<std::size_t>(cmbordem->listIndex())].coluna;
    ordenar(chequeAtual());
}

// The header that the list is ordered by already turns it round.
void FrmAgenda::lstcheques_ColumnClick(int coluna) {
    const auto nova = ListaDaAgenda::ordenavel(coluna);
    chkinvertida->setChecked(nova == coluna_ && !chkinvertida->isChecked());
    coluna_ = nova;
    ordenar(chequeAtual());
}

void FrmAgenda::ordenar(std::int64_t atual) {
    const BusyCursor ocupado;
    lstcheques->clear();
    listados_.ordenar(coluna_, chkinvertida->isChecked());
    mostrarOrdem();
    mostrarCheques();
    if (atual != 0)
        lstcheques->setCurrentRow(listados_.linhaDe(atual));
}

void FrmAgenda::mostrarOrdem() {
    if (const int qual = ListaDaAgenda::ordem(coluna_); cmbordem->listIndex() != qual)
        cmbordem->setListIndex(qual); // not under who is typing it
}

// ---- the lists

std::optional<std::int64_t> FrmAgenda::clienteMostrado() const {
    const int linha = lstcheques->currentRow();
    return linha < 0 ? txtcliente->chosenData() : listados_.cheque(linha).codigoDoCliente;
}

std::int64_t FrmAgenda::chequeAtual() const {
    const int linha = lstcheques->currentRow();
    return linha < 0 ? 0 : listados_.cheque(linha).lancamento;
}

void FrmAgenda::mostrarCheques() {
    lstcheques->addLater(static_cast<int>(listados_.cheques().size()),
                         [this, linhas = ListaDaAgenda::Linhas()](int linha) mutable {
                             return linhas.de(listados_.cheque(linha));
                         });
}

void FrmAgenda::mostrarDias() {
    lstdias->clear();
    for (const auto& [vencimento, soma] : listados_.dias())
        lstdias->addItem(ListaDaAgenda::linhaDoDia(vencimento, soma));
}

void FrmAgenda::mostrarSomas() {
    showStatus(*lblsoma, "Na lista: " + Vencimentos::texto(listados_.total().todos) +
                             "     Marcados: " + Vencimentos::texto(listados_.total().marcados));
}

void FrmAgenda::lstcheques_ItemCheck(int linha, bool marcado) {
    const std::size_t dia = listados_.marcar(static_cast<std::size_t>(linha), marcado);
    const Vencimentos::Soma& marcados = listados_.dias()[dia].soma.marcados;
    const auto linhaDoDia = static_cast<int>(dia);
    lstdias->setText(linhaDoDia, ListaDaAgenda::kMarcadosDoDia, QString::number(marcados.cheques));
    lstdias->setText(linhaDoDia, ListaDaAgenda::kSomaMarcadaDoDia, formatMoney(marcados.valor));
    mostrarSomas();
}

void FrmAgenda::cmdmarcar_Click() {
    const BusyCursor ocupado;
    const bool marcar = listados_.marcarTodos();
    for (int linha = 0; linha < lstcheques->count(); ++linha)
        lstcheques->setChecked(linha, marcar);
    mostrarDias();
    mostrarSomas();
}

// ---- a cheque of the list

void FrmAgenda::lstcheques_Enter() {
    if (const int linha = lstcheques->currentRow(); linha >= 0)
        abrirDepois(linha);
}

bool FrmAgenda::eventFilter(QObject* watched, QEvent* event) {
    if (watched != lstcheques->viewport() || event->type() != QEvent::MouseButtonDblClick)
        return Form::eventFilter(watched, event);
    const QPoint onde = static_cast<QMouseEvent*>(event)->position().toPoint();
    const QModelIndex linha = lstcheques->indexAt(onde);
    if (linha.isValid() && !lstcheques->checkBoxRect(linha.row()).contains(onde))
        abrirDepois(linha.row());
    return Form::eventFilter(watched, event);
}

// When the key or the click has come to its end: the list may be another afterwards.
void FrmAgenda::abrirDepois(int linha) {
    const std::int64_t lancamento = listados_.cheque(linha).lancamento;
    QTimer::singleShot(
        0, this, [this, lancamento] { guarded([&] { abrir(static_cast<qint32>(lancamento)); }); });
}

void FrmAgenda::abrir(qint32 lancamento) {
    // Open behind this window: what is typed there isn't lost unasked.
    if (auto& aberta = FrmLancarCheques::instance(); aberta.isVisible()) {
        aberta.reject();
        if (aberta.isVisible())
            return;
    }
    FrmLancarCheques::aoLocalizar([] { FrmLocCHTerceiros::instance().showModal(); });
    auto& entrada = FrmLancarCheques::instance();
    if (entrada.load() && entrada.mostrarCheque(lancamento)) {
        QTimer::singleShot(0, &entrada, [&entrada, lancamento] {
            guarded([&] { entrada.mostrarCheque(lancamento); }); // once it is on show
        });
        entrada.showModal();
    } else if (!entrada.isVisible()) {
        entrada.unload(); // loaded for nothing
    }
    procurar();
}

// ---- on paper and for other programs

void FrmAgenda::cmdimprimir_Click() {
    JanelaDeImpressao::instance().mostrar(
        Impressos::vencimentos(listados_.cheques(), filtro_.emPalavras(procurado_),
                               listados_.total(), coluna_ == ListaDaAgenda::kVencimento));
}

void FrmAgenda::cmdbordero_Click() {
    const std::vector<std::int64_t> marcados = listados_.marcados();
    if (marcados.empty()) {
        showMessage("Marque na lista os cheques que vão ser depositados.", "Borderô",
                    MessageIcon::exclamation);
        return lstcheques->setFocus();
    }
    FrmBordero& bordero = FrmBordero::instance();
    if (bordero.preparar(marcados) > 0)
        procurar();
    if (bordero.vazio())
        return lstcheques->setFocus();
    bordero.showModal();
}

void FrmAgenda::cmdcalendario_Click() {
    constexpr char kTitulo[] = "Salvar o calendário";
    const auto caminho =
        chooseFile({FileChoice::newFile, kTitulo, "Vencimentos.ics", "Calendário (*.ics)"});
    if (!caminho)
        return;
    const QString nome = QDir::toNativeSeparators(*caminho);
    if (Calendario::gravar(
            *caminho, Vencimentos::porDia(listados_.cheques()),
            QString::fromStdString(dbconectar::instance().Automacao.store().identity())))
        showMessage("O calendário foi salvo em " + nome + ".", kTitulo, MessageIcon::information);
    else
        showMessage("Não foi possível gravar \"" + nome +
                        "\": a pasta não aceita o arquivo ou o disco está cheio. Escolha outra "
                        "pasta.",
                    kTitulo, MessageIcon::exclamation);
}

#include "agenda/moc_FrmAgenda.cpp"
