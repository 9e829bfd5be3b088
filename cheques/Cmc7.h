#pragma once

#include <QString>

#include <optional>

/// The line at the foot of every cheque, in the CMC-7 type: 30 digits. Read as "BBBAAAA2 CCCNNNNNNT
/// 1KKKKKKKKKK3" it has the bank, the branch, the place of clearing, the number, the kind and the
/// account, and three check digits by modulo 10: 1 is of bank and branch, 2 of the middle part, 3
/// of the account.
namespace Cmc7 {

struct ChequeLido {
    int banco; ///< its official number
    QString agencia;
    QString numero;
};

/// @return nothing if it isn't 30 digits or a check digit is wrong.
[[nodiscard]] std::optional<ChequeLido> ler(const QString& digitos);

/// What the shop knows a number by, whether it was typed or read: without zeros before it.
[[nodiscard]] QString semZeros(const QString& numero);

} // namespace Cmc7
