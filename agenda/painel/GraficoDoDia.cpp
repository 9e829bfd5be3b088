#include "agenda/painel/GraficoDoDia.h"

#include "agenda/FrmAgenda.h"
#include "agenda/painel/Carteira.h"
#include "controls/box/BarChart.h"
#include "controls/typing/Typing.h"
#include "controls/window/Failure.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include <utility>

namespace {

constexpr double kPorReal = 10'000; ///< of an amount
constexpr int kEspaco = 10;         ///< pixels

struct Escala {
    const char* titulo;
    const char* outra; ///< the caption of the button that goes to the other one
    int barras;
    int dias; ///< of each
};
constexpr Escala kEscalas[] = {
    {"Vencem por dia, em 30 dias",       "Ver 12 &semanas", 30, 1},
    {"Vencem por semana, em 12 semanas", "Ver 30 dia&s",    12, 7},
};

} // namespace

GraficoDoDia::GraficoDoDia(const Carteira& carteira, QWidget* parent)
    : QWidget(parent), carteira_(carteira), lblgrafico(new QLabel), lblbarra(new QLabel),
      cmdgrafico(new QPushButton), grfvencimentos(new BarChart) {
    lblgrafico->setObjectName("lblgrafico");
    lblbarra->setObjectName("lblbarra");
    lblbarra->setAccessibleName("Barra");
    lblbarra->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    lblbarra->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    cmdgrafico->setObjectName("cmdgrafico");
    connectGuarded(cmdgrafico, &QPushButton::clicked, this, &GraficoDoDia::cmdgrafico_Click);
    grfvencimentos->setObjectName("grfvencimentos");
    grfvencimentos->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    connectGuarded(grfvencimentos, &BarChart::barClicked, this,
                   &GraficoDoDia::grfvencimentos_Click);
    connect(grfvencimentos, &BarChart::currentBarChanged, this, &GraficoDoDia::mostrarBarra);

    auto* linha = new QHBoxLayout;
    linha->addWidget(lblgrafico);
    linha->addSpacing(kEspaco);
    linha->addWidget(lblbarra, 1);
    linha->addWidget(cmdgrafico);
    auto* coluna = new QVBoxLayout(this);
    coluna->setContentsMargins(0, 0, 0, 0);
    coluna->addLayout(linha);
    coluna->addWidget(grfvencimentos, 1);
}

void GraficoDoDia::mostrar(QDate hoje) {
    hoje_ = hoje;
    const Escala& escala = kEscalas[porSemana_ ? 1 : 0];
    lblgrafico->setText(escala.titulo);
    cmdgrafico->setText(escala.outra);
    grfvencimentos->setAccessibleName(escala.titulo);
    barras_.clear();
    std::vector<BarChart::Bar> barras;
    for (int i = 0; i < escala.barras && carteira_.completa(); ++i) {
        const QDate primeiro = hoje.addDays(qint64{i} * escala.dias);
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

void GraficoDoDia::mostrarBarra() {
    const int livre =
        width() - lblgrafico->sizeHint().width() - cmdgrafico->sizeHint().width() - 3 * kEspaco;
    const int barra = grfvencimentos->currentBar();
    const QString diz =
        barra < 0 ? QString() : grfvencimentos->bars()[static_cast<std::size_t>(barra)].words;
    lblbarra->setText(lblbarra->fontMetrics().horizontalAdvance(diz) <= livre ? diz : QString());
}

void GraficoDoDia::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    mostrarBarra();
}

void GraficoDoDia::cmdgrafico_Click() {
    porSemana_ = !porSemana_;
    mostrar(hoje_);
    grfvencimentos->setCurrentBar(barras_.empty() ? -1 : 0);
}

void GraficoDoDia::grfvencimentos_Click(int barra) {
    FrmAgenda::mostrar(barras_[static_cast<std::size_t>(barra)]);
}

#include "agenda/painel/moc_GraficoDoDia.cpp"
