#include "shell/MenuDaLista.h"

#include "controls/box/ListView.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>

#include <algorithm>
#include <optional>

namespace MenuDaLista {

namespace {

/// Those whose rows are of one client each; not those of sums.
constexpr const char* kListas[] = {"lstcheques",  "lsthistorico", "Lstcheques",
                                   "lstclientes", "lstterceiros", "LstEncontrado"};

ListView* listaDe(QObject& watched) {
    auto* lista = qobject_cast<ListView*>(&watched);
    if (!lista && watched.parent()) {
        lista = qobject_cast<ListView*>(watched.parent());
        if (lista && lista->viewport() != &watched)
            return nullptr; // its headings
    }
    return lista && std::ranges::find(kListas, lista->objectName()) != std::end(kListas) ? lista
                                                                                         : nullptr;
}

/// Below the current row, when the keyboard has asked.
std::optional<QPoint> naLinhaAtual(ListView& lista) {
    const int linha = lista.currentRow();
    if (linha < 0)
        return std::nullopt;
    return lista.viewport()->mapToGlobal(lista.rowRect(linha).bottomLeft());
}

/// Where the menu is asked for; nothing if it isn't, or on no row.
std::optional<QPoint> pedidoEm(ListView& lista, const QEvent& event) {
    if (event.type() == QEvent::KeyPress) {
        const auto& tecla = static_cast<const QKeyEvent&>(event);
        const bool pede = tecla.key() == Qt::Key_F10 && tecla.modifiers() == Qt::ShiftModifier;
        return pede ? naLinhaAtual(lista) : std::nullopt;
    }
    if (event.type() != QEvent::ContextMenu)
        return std::nullopt;
    const auto& pedido = static_cast<const QContextMenuEvent&>(event);
    if (pedido.reason() == QContextMenuEvent::Keyboard)
        return naLinhaAtual(lista);
    const QPoint ponto = lista.viewport()->mapFromGlobal(pedido.globalPos());
    const QModelIndex linha = lista.indexAt(ponto);
    if (!linha.isValid())
        return std::nullopt;
    lista.setCurrentRow(linha.row());
    return pedido.globalPos();
}

} // namespace

bool mostrar(QObject& watched, QEvent& event,
             const std::function<void(const Comandos::Comando*)>& executar) {
    ListView* const lista = listaDe(watched);
    const auto onde = lista ? pedidoEm(*lista, event) : std::nullopt;
    if (!onde)
        return false;
    event.accept();
    auto* menu = new QMenu(lista);
    menu->setObjectName("MenuDaLista");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const Comandos::Tecla& tecla : Comandos::teclas()) {
        if (!tecla.legenda || lista->window()->objectName() == tecla.janela)
            continue; // not of a row, or it is there
        QAction* acao = menu->addAction(
            QString("%1\t%2").arg(tecla.legenda, QKeySequence(tecla.tecla).toString()));
        QObject::connect(
            acao, &QAction::triggered, lista,
            [executar, comando = tecla.comando] { executar(comando); }, Qt::QueuedConnection);
    }
    menu->popup(*onde);
    return true;
}

} // namespace MenuDaLista
