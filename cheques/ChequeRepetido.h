#pragma once

#include <QString>

#include <cstdint>

/// Whether the shop has a cheque already: of the same bank, branch and number, among those in hand
/// or among the bounced ones. Zeros before a branch or a number don't count.
namespace ChequeRepetido {

struct Procurado {
    std::int64_t banco; ///< its code in the shop's list
    QString agencia;
    QString numero;
    QString lancamento; ///< its own, which isn't the other; "" for a new one
};

/// Where the other one is, in a line for the status bar; "" if there is none.
[[nodiscard]] QString aviso(const Procurado& cheque);

} // namespace ChequeRepetido
