#include "agenda/painel/PainelDoDia.h"

#include "agenda/FrmAgenda.h"
#include "agenda/painel/GraficoDoDia.h"
#include "agenda/painel/MaioresClientes.h"
#include "collections/FrmLancasSFundos.h"
#include "controls/box/FigureButton.h"
#include "controls/look/Icons.h"
#include "controls/look/Spoken.h"
#include "controls/look/Style.h"
#include "controls/typing/Typing.h"
#include "controls/window/Failure.h"
#include "shell/dbconectar.h"

#include <QEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QToolButton>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

using namespace std::chrono_literals;

namespace {

using Vencimentos::Periodo;

constexpr auto kSomando = 200ms; ///< how often is told how far the summing has come
constexpr auto kEntreOlhadas = 20s;

// Pixels.
constexpr int kMargem = 12;
constexpr int kVao = 10;

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

QString emReais(const Vencimentos::Soma& soma) { return "R$ " + formatMoney(soma.valor); }

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
    installSpoken();
    cabecalho_ = montarCabecalho();
    figuras_ = montarFiguras();
    grafico_ = new GraficoDoDia(carteira_, this);
    maiores_ = new MaioresClientes(carteira_, this);
    lblteclas = new QLabel("F1 ajuda     F6 ficha do cliente     F7 agenda     F8 histórico");
    lblteclas->setObjectName("lblteclas");

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
    setTabOrder(maiores_, cmdocultar); // what is used every day comes first

    connectGuarded(&carteira_, &Carteira::mudou, this, &PainelDoDia::Carteira_Mudou);
    Relogio.setObjectName("Relogio");
    connectGuarded(&Relogio, &QTimer::timeout, this, &PainelDoDia::Relogio_Timer);
}

PainelDoDia::~PainelDoDia() = default;

QWidget* PainelDoDia::montarCabecalho() {
    auto* linha = new QHBoxLayout;
    lblemmaos = new QLabel;
    lblemmaos->setObjectName("lblemmaos");
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

// ---- what has room

void PainelDoDia::arrumar() {
    lblemmaos->setFont(headingFont());
    maiores_->arrumar();
    const int largura = width() - 2 * kMargem;
    const int comTexto = lblemmaos->sizeHint().width() + kVao + cmdocultar->iconSize().width() +
                         cmdocultar->fontMetrics().horizontalAdvance(cmdocultar->text() + "    ");
    cmdocultar->setToolButtonStyle(comTexto <= largura ? Qt::ToolButtonTextBesideIcon
                                                       : Qt::ToolButtonIconOnly);
    dispor(largura);
    int resto = height() - 2 * kMargem + kVao;
    QWidget* const partes[] = {cabecalho_, figuras_, lblteclas, grafico_, maiores_};
    for (QWidget* parte : partes) { // what is left out last comes first
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
    grafico_->mostrar(mostrado_);
    maiores_->mostrar();
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

// ---- what is asked of it

std::optional<std::int64_t> PainelDoDia::clienteMostrado() const { return maiores_->atual(); }

void PainelDoDia::cmdsemfundos_Click() { FrmLancasSFundos::instance().showModal(); }

// Enter presses the button that has the focus, as in every window.
void PainelDoDia::keyPressEvent(QKeyEvent* event) {
    auto* botao = qobject_cast<QAbstractButton*>(focusWidget());
    if (isEnter(*event) && botao && botao->hasFocus())
        return botao->click();
    QWidget::keyPressEvent(event);
}

#include "agenda/painel/moc_PainelDoDia.cpp"
