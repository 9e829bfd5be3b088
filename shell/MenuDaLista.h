#pragma once

#include "shell/Comandos.h"

#include <functional>

class QEvent;
class QObject;

/// The menu of the lists that show a client's cheques, or clients, one each row: it opens what the
/// keys of Comandos::teclas() open, the sheet that of the current row's client.
namespace MenuDaLista {

/// Shows it if that is what the event asks for: by the right button on a row, or by the menu key or
/// Shift+F10 in a list. The window of the list tells whose row it is (see ClienteMostrado.h).
/// @param executar runs the command that is chosen, when the menu has gone
/// @return whether it was asked for: nobody else need look at the event then
bool mostrar(QObject& watched, QEvent& event,
             const std::function<void(const Comandos::Comando*)>& executar);

} // namespace MenuDaLista
