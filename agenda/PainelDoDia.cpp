#include "agenda/PainelDoDia.h"

#include "agenda/Ficha.h"
#include "agenda/FrmAgenda.h"
#include "agenda/FrmFicha.h"
#include "collections/FrmLancasSFundos.h"
#include "controls/box/BarChart.h"
#include "controls/box/FigureButton.h"
#include "controls/box/ListView.h"
#include "controls/look/Icons.h"
#include "controls/look/Spoken.h"
#include "controls/look/Style.h"
#include "controls/typing/KeyHabits.h"
#include "controls/typing/Typing.h"
#include "controls/window/Failure.h"
#include "shell/dbconectar.h"

#include <QEvent>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QToolButton>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

using namespace std::chrono_literals;

namespace {

using Vencimentos::Periodo;

constexpr int kDiasDoGrafico = 30;
constexpr int kSemanas = 12;
constexpr int kDiasDaSemana = 7;
constexpr std::size_t kMaiores = 5;
constexpr double kPorReal = 10'000; ///< of an amount

/// So wide the clients' list must be at least.
constexpr char kClienteEstreito[] =
    "Nome do cliente  000  0.000.000,00  0.000.000,00  passou 000.000,00";

constexpr auto kSomando = 200ms; ///< how often is told how far the summing has come
constexpr auto kEntreOlhadas = 20s;

// Pixels.
constexpr int kMargem = 12;
constexpr int kVao = 10;
constexpr int kEntreLinhas = 4; ///< of a list

struct Figura {
    const char* nome;
    const char* legenda;
    Periodo periodo;
};
constexpr Figura kFiguras[] = {
    {"cmdhoje",      "Vencem hoje",      Periodo::hoje     },
    {"cmdsemana",    "Próximos 7 dias", Periodo::semana   },
    {"cmdatrasados", "Atrasados",        Periodo::atrasados},
};

struct Escala {
    const char* titulo;
    const char* outra; ///< the caption of the button that goes to the other one
    int barras;
    int dias; ///< of each
};
constexpr Escala kEscalas[] = {
    {"Vencem por dia, em 30 dias",       "Ver 12 &semanas", kDiasDoGrafico, 1            },
    {"Vencem por semana, em 12 semanas", "Ver 30 dia&s",    kSemanas,       kDiasDaSemana},
};

QString emReais(const Vencimentos::Soma& soma) { return "R$ " + formatMoney(soma.valor); }

/// As the sheet says it, for a column of reais.
QString livreEmReais(const Ficha::Cliente& cliente) {
    return Ficha::livre(cliente).remove("nada: ").remove("R$ ");
}

QLabel* rotulo(const char* nome) {
    installSpoken();
    auto* label = new QLabel;
    label->setObjectName(nome);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QWidget* parte(QLayout* lugar) {
    auto* parte = new QWidget;
    lugar->setContentsMargins(0, 0, 0, 0);
    parte->setLayout(lugar);
    return parte;
}

} // namespace

PainelDoDia::PainelDoDia(QDate (*hoje)(), QWidget* parent) : QWidget(parent), hoje_(hoje) {
    setObjectName("PainelDoDia");
    setAccessibleName("Painel do dia");
    cabecalho_ = montarCabecalho();
    figuras_ = montarFiguras();
    grafico_ = montarGrafico();
    maiores_ = montarClientes();
    lblteclas = rotulo("lblteclas");
    lblteclas->setText("F1 ajuda     F6 ficha do cliente     F7 agenda     F8 histórico");

    auto* tudo = new QVBoxLayout(this);
    tudo->setContentsMargins(kMargem, kMargem, kMargem, kMargem);
    tudo->setSpacing(kVao);
    tudo->setSizeConstraint(QLayout::SetNoConstraint); // what has no room is left out
    tudo->addWidget(cabecalho_);
    tudo->addWidget(figuras_);
    tudo->addWidget(grafico_, 1);
    tudo->addWidget(maiores_);
    tudo->addWidget(lblteclas, 0, Qt::AlignHCenter);
    tudo->addStretch(0);
    // What is used every day comes first.
    QWidget* const ordem[] = {vencimentos_[0], vencimentos_[1], vencimentos_[2], cmdsemfundos,
                              cmdgrafico,      grfvencimentos,  lstclientes,     cmdocultar};
    for (std::size_t i = 1; i < std::size(ordem); ++i)
        setTabOrder(ordem[i - 1], ordem[i]);

    connectGuarded(&carteira_, &Carteira::mudou, this, &PainelDoDia::Carteira_Mudou);
    Relogio.setObjectName("Relogio");
    connectGuarded(&Relogio, &QTimer::timeout, this, &PainelDoDia::Relogio_Timer);
}

PainelDoDia::~PainelDoDia() = default;

QWidget* PainelDoDia::montarCabecalho() {
    auto* linha = new QHBoxLayout;
    lblemmaos = rotulo("lblemmaos");
    lblemmaos->setAccessibleName("Cheques em mãos");
    cmdocultar = new QToolButton;
    cmdocultar->setObjectName("cmdocultar");
    cmdocultar->setText("Ocultar painel");
    cmdocultar->setIcon(Icons::named("close"));
    cmdocultar->setAutoRaise(true);
    connect(cmdocultar, &QToolButton::clicked, this, &PainelDoDia::ocultado);
    linha->addWidget(lblemmaos, 1);
    linha->addWidget(cmdocultar);
    return parte(linha);
}

QWidget* PainelDoDia::montarFiguras() {
    lugarDasFiguras_ = new QGridLayout;
    lugarDasFiguras_->setSpacing(kVao);
    for (const Figura& figura : kFiguras) {
        auto* botao = new FigureButton(figura.legenda, this);
        botao->setObjectName(figura.nome);
        connect(botao, &FigureButton::clicked, this, [this, periodo = figura.periodo] {
            guarded([&] { FrmAgenda::mostrar(Vencimentos::dias(periodo, hoje_())); });
        });
        vencimentos_.push_back(botao);
    }
    cmdsemfundos = new FigureButton("Sem fundos em aberto", this);
    cmdsemfundos->setObjectName("cmdsemfundos");
    connectGuarded(cmdsemfundos, &FigureButton::clicked, this, &PainelDoDia::cmdsemfundos_Click);
    return parte(lugarDasFiguras_);
}

QWidget* PainelDoDia::montarGrafico() {
    lblgrafico = rotulo("lblgrafico");
    lblbarra = rotulo("lblbarra");
    lblbarra->setAccessibleName("Barra");
    lblbarra->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    lblbarra->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    cmdgrafico = new QPushButton;
    cmdgrafico->setObjectName("cmdgrafico");
    connectGuarded(cmdgrafico, &QPushButton::clicked, this, &PainelDoDia::cmdgrafico_Click);
    grfvencimentos = new BarChart;
    grfvencimentos->setObjectName("grfvencimentos");
    grfvencimentos->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    connectGuarded(grfvencimentos, &BarChart::barClicked, this, &PainelDoDia::grfvencimentos_Click);
    connect(grfvencimentos, &BarChart::currentBarChanged, this, &PainelDoDia::mostrarBarra);
    auto* linha = new QHBoxLayout;
    linha->addWidget(lblgrafico);
    linha->addSpacing(kVao);
    linha->addWidget(lblbarra, 1);
    linha->addWidget(cmdgrafico);
    auto* coluna = new QVBoxLayout;
    coluna->addLayout(linha);
    coluna->addWidget(grfvencimentos, 1);
    QWidget* grafico = parte(coluna);
    grafico->installEventFilter(this);
    return grafico;
}

QWidget* PainelDoDia::montarClientes() {
    auto* titulo = rotulo("lblclientes");
    titulo->setText("Clientes com mais em mãos");
    lstclientes = new ListView;
    lstclientes->setObjectName("lstclientes");
    lstclientes->setAccessibleName("Clientes com mais em mãos");
    // clang-format off
    lstclientes->setColumns({
        {"Cliente",    2300, Qt::AlignLeft},
        {"Cheques",    900,  Qt::AlignRight},
        {"Em mãos R$", 1400, Qt::AlignRight},
        {"Limite R$",  1400, Qt::AlignRight},
        {"Livre R$",   1800, Qt::AlignRight}
    });
    // clang-format on
    lstclientes->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    lstclientes->installEventFilter(this);
    lstclientes->viewport()->installEventFilter(this);
    auto* coluna = new QVBoxLayout;
    coluna->addWidget(titulo);
    coluna->addWidget(lstclientes);
    return parte(coluna);
}

// ---- what has room

void PainelDoDia::arrumar() {
    lblemmaos->setFont(headingFont());
    const QFontMetrics letras = lstclientes->fontMetrics();
    const int linha = std::max(lstclientes->sizeHintForRow(0), letras.height() + kEntreLinhas);
    lstclientes->setFixedHeight(lstclientes->header()->sizeHint().height() +
                                static_cast<int>(kMaiores) * linha + 2 * lstclientes->frameWidth() +
                                kEntreLinhas);
    lstclientes->setMinimumWidth(letras.horizontalAdvance(kClienteEstreito));
    const int largura = width() - 2 * kMargem;
    const int comTexto = lblemmaos->sizeHint().width() + kVao + cmdocultar->iconSize().width() +
                         cmdocultar->fontMetrics().horizontalAdvance(cmdocultar->text() + "    ");
    cmdocultar->setToolButtonStyle(comTexto <= largura ? Qt::ToolButtonTextBesideIcon
                                                       : Qt::ToolButtonIconOnly);
    dispor(largura);
    int resto = height() - 2 * kMargem + kVao;
    for (QWidget* parte : {cabecalho_, figuras_, static_cast<QWidget*>(lblteclas), grafico_,
                           maiores_}) { // what is left out last comes first
        const QSize precisa = parte->minimumSizeHint();
        const bool cabe = precisa.width() <= largura && precisa.height() + kVao <= resto;
        parte->setVisible(cabe);
        if (cabe)
            resto -= precisa.height() + kVao;
    }
}

// The figures beside each other or, where that is too wide, in two rows.
void PainelDoDia::dispor(int largura) {
    std::vector<QWidget*> figuras(vencimentos_.begin(), vencimentos_.end());
    figuras.push_back(cmdsemfundos);
    const int todas = static_cast<int>(figuras.size());
    int larga = 0;
    for (const QWidget* figura : figuras)
        larga = std::max(larga, figura->sizeHint().width());
    const int colunas = todas * (larga + kVao) - kVao <= largura ? todas : todas / 2;
    if (std::exchange(colunas_, colunas) == colunas)
        return;
    for (int i = 0; i < todas; ++i)
        lugarDasFiguras_->addWidget(figuras[static_cast<std::size_t>(i)], i / colunas, i % colunas);
}

void PainelDoDia::mostrarBarra() {
    const int livre = grafico_->width() - lblgrafico->sizeHint().width() -
                      cmdgrafico->sizeHint().width() - 3 * kVao;
    const int barra = grfvencimentos->currentBar();
    const QString diz =
        barra < 0 ? QString() : grfvencimentos->bars()[static_cast<std::size_t>(barra)].words;
    lblbarra->setText(lblbarra->fontMetrics().horizontalAdvance(diz) <= livre ? diz : QString());
}

void PainelDoDia::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    arrumar();
}

bool PainelDoDia::event(QEvent* event) {
    if (event->type() == QEvent::FontChange)
        arrumar();
    return QWidget::event(event);
}

// ---- when it works

void PainelDoDia::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    guarded([this] {
        carteira_.acompanhar(true);
        mostrar();
    });
}

void PainelDoDia::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    Relogio.stop();
    carteira_.acompanhar(false);
}

// Also what a client's register says may have changed, and the day.
void PainelDoDia::Relogio_Timer() { mostrar(); }

// ---- what it shows

void PainelDoDia::mostrar() {
    const bool sabe = carteira_.completa();
    mostrado_ = hoje_();
    Relogio.start(sabe ? std::chrono::milliseconds(kEntreOlhadas) : kSomando);
    showStatus(*lblemmaos, sabe ? "Em mãos: " + Vencimentos::texto(carteira_.emMaos()) : espera());
    mostrarFiguras();
    mostrarGrafico();
    if (!quietly([this] { listarClientes(); })) {
        lstclientes->clear();
        clientes_.clear();
    }
    arrumar();
}

QString PainelDoDia::espera() const {
    if (!dbconectar::instance().aberto())
        return "Nenhuma base de dados está aberta.";
    if (carteira_.falhou())
        return "Os cheques não puderam ser somados.";
    return QString("Somando os cheques… %1 %").arg(static_cast<int>(carteira_.andamento() * 100));
}

void PainelDoDia::mostrarFiguras() {
    const auto figura = [this](FigureButton& botao, const Vencimentos::Soma& soma) {
        carteira_.completa() ? botao.setFigure(emReais(soma), Vencimentos::quantos(soma))
                             : botao.setFigure("…", "");
    };
    for (std::size_t i = 0; i < vencimentos_.size(); ++i)
        figura(*vencimentos_[i],
               carteira_.devidos(Vencimentos::dias(kFiguras[i].periodo, mostrado_)));
    figura(*cmdsemfundos, carteira_.semFundos());
}

void PainelDoDia::mostrarGrafico() {
    const Escala& escala = kEscalas[porSemana_ ? 1 : 0];
    lblgrafico->setText(escala.titulo);
    cmdgrafico->setText(escala.outra);
    grfvencimentos->setAccessibleName(escala.titulo);
    barras_.clear();
    std::vector<BarChart::Bar> barras;
    for (int i = 0; i < escala.barras && carteira_.completa(); ++i) {
        const QDate primeiro = mostrado_.addDays(qint64{i} * escala.dias);
        const Vencimentos::Dias dias{primeiro, primeiro.addDays(escala.dias - 1)};
        const Vencimentos::Soma soma = carteira_.devidos(dias);
        const QString quando = porSemana_
                                   ? formatDate(dias.primeiro) + " a " + formatDate(dias.ultimo)
                                   : formatDate(primeiro);
        barras.push_back({.label = primeiro.toString("dd/MM"),
                          .words = quando + ": " + Vencimentos::texto(soma),
                          .height = static_cast<double>(soma.valor.tenThousandths) / kPorReal});
        barras_.push_back(dias);
    }
    grfvencimentos->setBars(std::move(barras));
}

void PainelDoDia::listarClientes() {
    const auto atual = clienteMostrado();
    lstclientes->clear();
    clientes_.clear();
    if (!carteira_.completa() || !dbconectar::instance().aberto())
        return;
    for (const auto& [codigo, emMaos] : carteira_.maiores(kMaiores)) {
        Ficha::Cliente cliente = Ficha::cadastro(codigo);
        cliente.emMaos = emMaos;
        ListItem linha;
        linha.key = QString::number(codigo);
        linha.text = cliente.nome;
        linha.subItems = {QString::number(emMaos.cheques), formatMoney(emMaos.valor),
                          cliente.limite > Amount{} ? formatMoney(cliente.limite) : "",
                          livreEmReais(cliente)};
        lstclientes->addItem(std::move(linha));
        clientes_.push_back(codigo);
    }
    if (atual)
        lstclientes->setCurrentRow(lstclientes->rowOf(QString::number(*atual)));
}

// ---- what it opens

std::optional<std::int64_t> PainelDoDia::clienteMostrado() const {
    const int linha = lstclientes->currentRow();
    return linha < 0 ? std::nullopt : std::optional(clientes_[static_cast<std::size_t>(linha)]);
}

void PainelDoDia::cmdsemfundos_Click() { FrmLancasSFundos::instance().showModal(); }

void PainelDoDia::cmdgrafico_Click() {
    porSemana_ = !porSemana_;
    mostrarGrafico();
    grfvencimentos->setCurrentBar(barras_.empty() ? -1 : 0);
}

void PainelDoDia::grfvencimentos_Click(int barra) {
    FrmAgenda::mostrar(barras_[static_cast<std::size_t>(barra)]);
}

// The sheet asks for whom the window in front has on show.
void PainelDoDia::abrirFicha() {
    if (clienteMostrado())
        FrmFicha::mostrar();
}

bool PainelDoDia::eventFilter(QObject* watched, QEvent* event) {
    if (watched == grafico_ && event->type() == QEvent::Resize)
        mostrarBarra();
    const bool enter = event->type() == QEvent::KeyPress && watched == lstclientes &&
                       isEnter(*static_cast<QKeyEvent*>(event)) && !KeyHabits::isHeld();
    const bool duplo =
        event->type() == QEvent::MouseButtonDblClick && watched == lstclientes->viewport() &&
        lstclientes->indexAt(static_cast<QMouseEvent*>(event)->position().toPoint()).isValid();
    if (enter || duplo) // when the key or the click has come to its end
        QTimer::singleShot(0, this, [this] { guarded([this] { abrirFicha(); }); });
    return QWidget::eventFilter(watched, event);
}

// Enter presses the button that has the focus, as in every window.
void PainelDoDia::keyPressEvent(QKeyEvent* event) {
    auto* botao = qobject_cast<QAbstractButton*>(focusWidget());
    if (isEnter(*event) && botao && botao->hasFocus())
        return botao->click();
    QWidget::keyPressEvent(event);
}

#include "agenda/moc_PainelDoDia.cpp"
