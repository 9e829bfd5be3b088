#include "agenda/painel/MaioresClientes.h"

#include "agenda/Ficha.h"
#include "agenda/FrmFicha.h"
#include "agenda/painel/Carteira.h"
#include "controls/box/ListView.h"
#include "controls/typing/KeyHabits.h"
#include "controls/typing/Typing.h"
#include "controls/window/Failure.h"
#include "shell/dbconectar.h"

#include <QHeaderView>
#include <QLabel>
#include <QMouseEvent>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t kMaiores = 5;
constexpr int kEntreLinhas = 4; ///< pixels

/// So wide the list must be at least.
constexpr char kClienteEstreito[] =
    "Nome do cliente  000  0.000.000,00  0.000.000,00  passou 000.000,00";

/// As the sheet says it, for a column of reais.
QString livreEmReais(const Ficha::Cliente& cliente) {
    return Ficha::livre(cliente).remove("nada: ").remove("R$ ");
}

} // namespace

MaioresClientes::MaioresClientes(const Carteira& carteira, QWidget* parent)
    : QWidget(parent), carteira_(carteira), lstclientes(new ListView) {
    auto* titulo = new QLabel("Clientes com mais em mãos");
    titulo->setObjectName("lblclientes");
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
    auto* coluna = new QVBoxLayout(this);
    coluna->setContentsMargins(0, 0, 0, 0);
    coluna->addWidget(titulo);
    coluna->addWidget(lstclientes);
}

void MaioresClientes::arrumar() {
    const QFontMetrics letras = lstclientes->fontMetrics();
    const int linha = std::max(lstclientes->sizeHintForRow(0), letras.height() + kEntreLinhas);
    lstclientes->setFixedHeight(lstclientes->header()->sizeHint().height() +
                                static_cast<int>(kMaiores) * linha + 2 * lstclientes->frameWidth() +
                                kEntreLinhas);
    lstclientes->setMinimumWidth(letras.horizontalAdvance(kClienteEstreito));
}

void MaioresClientes::mostrar() {
    if (quietly([this] { listar(); }))
        return;
    lstclientes->clear();
    clientes_.clear();
}

void MaioresClientes::listar() {
    const auto mostrado = atual();
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
    if (mostrado)
        lstclientes->setCurrentRow(lstclientes->rowOf(QString::number(*mostrado)));
}

std::optional<std::int64_t> MaioresClientes::atual() const {
    const int linha = lstclientes->currentRow();
    return linha < 0 ? std::nullopt : std::optional(clientes_[static_cast<std::size_t>(linha)]);
}

// The sheet asks for whom the window in front has on show.
void MaioresClientes::abrirFicha() {
    if (atual())
        FrmFicha::mostrar();
}

bool MaioresClientes::eventFilter(QObject* watched, QEvent* event) {
    const bool enter = event->type() == QEvent::KeyPress && watched == lstclientes &&
                       isEnter(*static_cast<QKeyEvent*>(event)) && !KeyHabits::isHeld();
    const bool duplo =
        event->type() == QEvent::MouseButtonDblClick && watched == lstclientes->viewport() &&
        lstclientes->indexAt(static_cast<QMouseEvent*>(event)->position().toPoint()).isValid();
    if (enter || duplo) // when the key or the click has come to its end
        QTimer::singleShot(0, this, [this] { guarded([this] { abrirFicha(); }); });
    return QWidget::eventFilter(watched, event);
}

#include "agenda/painel/moc_MaioresClientes.cpp"
