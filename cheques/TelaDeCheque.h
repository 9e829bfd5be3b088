#pragma once

#include "shell/Campos.h"

#include <optional>

/// What the windows that show one cheque, received or bounced, do alike.
namespace TelaDeCheque {

/// What every cheque must have.
struct Exigidos {
    DropDownList* cliente;
    DropDownList* banco;
    QLineEdit* numero;
    MoneyEdit* valor;
};
/// The first of these that is missing, in this order, and what to tell the clerk; nothing if all
/// are there.
[[nodiscard]] std::optional<Campos::Recusa> falta(const Exigidos& exigidos);

/// Asks whether the cheque on show is to be deleted; if there are no cheques at all, says so.
/// @return whether it is.
[[nodiscard]] bool confirmarExclusao(const ado::Recordset& rs);

} // namespace TelaDeCheque
