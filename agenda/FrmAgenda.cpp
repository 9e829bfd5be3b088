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
#include <QSaveFile>
#include <QShortcut>
#include <QTimer>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace {

using Vencimentos::Cheque;
using Vencimentos::Periodo;

enum ColunaDoDia { kMarcadosDoDia = 4, kSomaMarcadaDoDia };

constexpr const char* kPeriodos[] = {"Hoje",      "Amanhã",   "Semana (7 dias)", "Mês (30 dias)",
                                     "Atrasados", "De - até", "Sem vencimento"};

struct Destino {
    const char* nome;
    std::optional<bool> descontar;
};
constexpr Destino kDestinos[] = {
    {"Todos",              std::nullopt},
    {"Descontar no banco", true        },
    {"Trocar na loja",     false       }
};

} // namespace

FrmAgenda::FrmAgenda() {
    setupUi(this);
    lstcheques->setColumns(ListaDaAgenda::colunas());
    // clang-format off
    lstdias->setColumns({
        {"Vencimento",           1250, Qt::AlignHCenter},
        {"Dia útil",             1100, Qt::AlignHCenter, "Dia útil do vencimento"},
        {"Cheques",              1000, Qt::AlignRight},
        {"Soma R$",              1700, Qt::AlignRight},
        {"Marcados",             1000, Qt::AlignRight},
        {"Soma dos marcados R$", 1700, Qt::AlignRight}
    });
    // clang-format on
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
    agenda.escolher(dias);
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
    for (const char* nome : kPeriodos)
        cmbperiodo->addItem(nome);
    for (const Destino& destino : kDestinos)
        cmbdestino->addItem(destino.nome);
    for (const ListaDaAgenda::Ordenacao& ordem : ListaDaAgenda::ordens())
        cmbordem->addItem(ordem.nome);
    escolha_LostFocus();
    if (pedidos_)
        escolher(*pedidos_);
    Mirtal::preencherLista(*txtcliente, dados.rsCliente, "nome", "codigo");
    Mirtal::preencherLista(*txtbanco, dados.rsBancos, "nome", "codigo");
    pronta_ = true;
    filtro_Change();
}

// ---- what is asked for

void FrmAgenda::escolher(const Vencimentos::Dias& dias) {
    const QDate hoje = QDate::currentDate();
    int qual = 0;
    while (qual < static_cast<int>(Periodo::deAte) &&
           !(Vencimentos::dias(static_cast<Periodo>(qual), hoje) == dias))
        ++qual;
    cmbperiodo->setListIndex(qual);
    if (qual != static_cast<int>(Periodo::deAte))
        return;
    txtinicio->setValue(dias.primeiro);
    txtfim->setValue(dias.ultimo);
}

Vencimentos::Procura FrmAgenda::procura() const {
    const Vencimentos::Dias digitados{txtinicio->value(), txtfim->value()};
    const int destino = std::max(0, cmbdestino->listIndex());
    return {.dias = periodo_ == Periodo::deAte ? digitados
                                               : Vencimentos::dias(periodo_, QDate::currentDate()),
            .cliente = txtcliente->chosenData(),
            .banco = txtbanco->chosenData(),
            .descontar = kDestinos[destino].descontar};
}

void FrmAgenda::filtro_Change() {
    if (cmbperiodo->listIndex() >= 0)
        periodo_ = static_cast<Periodo>(cmbperiodo->listIndex());
    for (auto* dia : {txtinicio, txtfim})
        dia->setEnabled(periodo_ == Periodo::deAte);
    if (pronta_ && procura() != procurado_)
        procurar();
}

// A text that is none of the choices: the last one counts.
void FrmAgenda::escolha_LostFocus() {
    cmbperiodo->setListIndex(static_cast<int>(periodo_));
    cmbdestino->setListIndex(std::max(0, cmbdestino->listIndex()));
    mostrarOrdem();
}

void FrmAgenda::procurar() {
    const BusyCursor ocupado;
    const Vencimentos::Procura procura = this->procura();
    std::vector<Cheque> achados = Vencimentos::procurar(procura);
    std::unordered_set<std::int64_t> marcados;
    for (const Cheque& cheque : cheques_)
        if (cheque.marcado)
            marcados.insert(cheque.lancamento);
    for (Cheque& cheque : achados)
        cheque.marcado = marcados.contains(cheque.lancamento);
    somar(achados);
    procurado_ = procura;
    if (periodo_ != Periodo::deAte && periodo_ != Periodo::semVencimento) {
        const QDate& ultimo = procura.dias.ultimo;
        const QDate primeiro = achados.empty() ? ultimo : achados.front().vencimento;
        txtinicio->setValue(procura.dias.primeiro.isValid() ? procura.dias.primeiro : primeiro);
        txtfim->setValue(ultimo);
    }
    const QString atual = chaveAtual();
    cheques_ = std::move(achados);
    ordenar(atual);
    mostrarDias();
    mostrarSomas();
}

void FrmAgenda::somar(const std::vector<Cheque>& cheques) {
    Vencimentos::SomaDoDia total;
    std::vector<Dia> dias;
    for (const auto& [vencimento, soma] : Vencimentos::porDia(cheques)) {
        total.todos.mais(soma.todos);
        total.marcados.mais(soma.marcados);
        dias.push_back({vencimento, soma});
    }
    total_ = total;
    dias_ = std::move(dias);
}

void FrmAgenda::cmdatualizar_Click() { procurar(); }

// ---- the order

void FrmAgenda::cmbordem_Click() {
    coluna_ = ListaDaAgenda::ordens()[static_cast<std::size_t>(cmbordem->listIndex())].coluna;
    ordenar(chaveAtual());
}

void FrmAgenda::chkinvertida_Click() { ordenar(chaveAtual()); }

// The header that the list is ordered by already turns it round.
void FrmAgenda::lstcheques_ColumnClick(int coluna) {
    const auto nova = ListaDaAgenda::ordenavel(coluna);
    chkinvertida->setChecked(nova == coluna_ && !chkinvertida->isChecked());
    coluna_ = nova;
    ordenar(chaveAtual());
}

void FrmAgenda::ordenar(const QString& atual) {
    const BusyCursor ocupado;
    ListaDaAgenda::ordenar(cheques_, coluna_, chkinvertida->isChecked());
    mostrarOrdem();
    mostrarCheques();
    if (!atual.isEmpty())
        lstcheques->setCurrentRow(lstcheques->rowOf(atual));
}

void FrmAgenda::mostrarOrdem() {
    const auto ordens = ListaDaAgenda::ordens();
    const auto ordem = std::ranges::find(ordens, coluna_, &ListaDaAgenda::Ordenacao::coluna);
    if (const auto qual = static_cast<int>(ordem - ordens.begin()); cmbordem->listIndex() != qual)
        cmbordem->setListIndex(qual); // not under who is typing it
}

// ---- the lists

std::optional<std::int64_t> FrmAgenda::clienteMostrado() const {
    const int linha = lstcheques->currentRow();
    return linha < 0 ? txtcliente->chosenData()
                     : cheques_[static_cast<std::size_t>(linha)].codigoDoCliente;
}

QString FrmAgenda::chaveAtual() const {
    const int linha = lstcheques->currentRow();
    return linha < 0 ? QString() : lstcheques->item(linha).key;
}

void FrmAgenda::mostrarCheques() {
    ListaDaAgenda::Linhas linhas;
    lstcheques->clear();
    for (const Cheque& cheque : cheques_)
        lstcheques->addItem(linhas.de(cheque));
}

void FrmAgenda::mostrarDias() {
    lstdias->clear();
    for (const auto& [vencimento, soma] : dias_) {
        ListItem linha;
        linha.text = vencimento.isValid() ? formatDate(vencimento) : "Nenhum";
        linha.subItems = {Vencimentos::outroDiaUtil(vencimento),
                          QString::number(soma.todos.cheques), formatMoney(soma.todos.valor),
                          QString::number(soma.marcados.cheques), formatMoney(soma.marcados.valor)};
        lstdias->addItem(std::move(linha));
    }
}

void FrmAgenda::mostrarSomas() {
    showStatus(*lblsoma, "Na lista: " + Vencimentos::texto(total_.todos) +
                             "     Marcados: " + Vencimentos::texto(total_.marcados));
}

void FrmAgenda::lstcheques_ItemCheck(int linha, bool marcado) {
    Cheque& cheque = cheques_[static_cast<std::size_t>(linha)];
    const auto dia = std::ranges::lower_bound(dias_, cheque.vencimento, {}, &Dia::vencimento);
    for (Vencimentos::Soma* soma : {&dia->soma.marcados, &total_.marcados})
        marcado ? soma->mais(cheque.valor) : soma->menos(cheque.valor);
    cheque.marcado = marcado;
    const auto linhaDoDia = static_cast<int>(dia - dias_.begin());
    lstdias->setText(linhaDoDia, kMarcadosDoDia, QString::number(dia->soma.marcados.cheques));
    lstdias->setText(linhaDoDia, kSomaMarcadaDoDia, formatMoney(dia->soma.marcados.valor));
    mostrarSomas();
}

void FrmAgenda::cmdmarcar_Click() {
    const BusyCursor ocupado;
    const bool marcar = !std::ranges::all_of(cheques_, &Cheque::marcado);
    for (Cheque& cheque : cheques_)
        cheque.marcado = marcar;
    somar(cheques_);
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
    const std::int64_t lancamento = cheques_[static_cast<std::size_t>(linha)].lancamento;
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

QString FrmAgenda::escolha() const {
    const auto& [primeiro, ultimo] = procurado_.dias;
    QStringList partes{primeiro.isValid()
                           ? "Vencem de " + formatDate(primeiro) + " a " + formatDate(ultimo)
                       : ultimo.isValid() ? "Vencidos até " + formatDate(ultimo)
                                          : QString("Sem vencimento")};
    if (procurado_.cliente)
        partes += txtcliente->text();
    if (procurado_.banco)
        partes += txtbanco->text();
    if (procurado_.descontar)
        partes += cmbdestino->text();
    return partes.join("; ");
}

void FrmAgenda::cmdimprimir_Click() {
    JanelaDeImpressao::instance().mostrar(
        Impressos::vencimentos(cheques_, escolha(), total_, coluna_ == ListaDaAgenda::kVencimento));
}

// What is printed is the cheques as they are now, not as they were listed.
void FrmAgenda::cmdbordero_Click() {
    constexpr char kTitulo[] = "Borderô";
    std::vector<std::int64_t> marcados;
    for (const Cheque& cheque : cheques_)
        if (cheque.marcado)
            marcados.push_back(cheque.lancamento);
    if (marcados.empty()) {
        showMessage("Marque na lista os cheques que vão ser depositados.", kTitulo,
                    MessageIcon::exclamation);
        return lstcheques->setFocus();
    }
    std::vector<Cheque> cheques = Vencimentos::reler(marcados);
    const std::size_t sumidos = marcados.size() - cheques.size();
    const std::size_t aVencer = std::erase_if(cheques, [hoje = QDate::currentDate()](auto& c) {
        return !c.vencimento.isValid() || c.vencimento > hoje;
    });
    QStringList fora;
    if (sumidos > 0)
        fora += QString("Não estão mais cadastrados, por terem sido baixados ou excluídos: %1.")
                    .arg(sumidos);
    if (aVencer > 0)
        fora +=
            QString("Ainda não venceram, e o banco não deve recebê-los antes: %1.").arg(aVencer);
    if (!fora.isEmpty())
        showMessage("Dos cheques marcados, ficam fora do borderô:\n\n" + fora.join('\n'), kTitulo,
                    MessageIcon::exclamation);
    if (sumidos > 0)
        procurar();
    if (cheques.empty())
        return lstcheques->setFocus();
    FrmBordero::instance().preparar(std::move(cheques));
    FrmBordero::instance().showModal();
}

void FrmAgenda::cmdcalendario_Click() {
    constexpr char kTitulo[] = "Salvar o calendário";
    const auto caminho =
        chooseFile({FileChoice::newFile, kTitulo, "Vencimentos.ics", "Calendário (*.ics)"});
    if (!caminho)
        return;
    const QByteArray ics =
        Calendario::ics(Vencimentos::porDia(cheques_),
                        QString::fromStdString(dbconectar::instance().Automacao.store().identity()),
                        QDateTime::currentDateTimeUtc());
    QSaveFile novo(*caminho);
    const bool gravado =
        novo.open(QIODevice::WriteOnly) && novo.write(ics) == ics.size() && novo.commit();
    const QString nome = QDir::toNativeSeparators(*caminho);
    if (gravado)
        showMessage("O calendário foi salvo em " + nome + ".", kTitulo, MessageIcon::information);
    else
        showMessage("Não foi possível gravar \"" + nome +
                        "\": a pasta não aceita o arquivo ou o disco está cheio. Escolha outra "
                        "pasta.",
                    kTitulo, MessageIcon::exclamation);
}

void FrmAgenda::cmdsair_Click() { unload(); }

#include "agenda/moc_FrmAgenda.cpp"
