#pragma once

#include "controls/typing/Formato.h"

#include <QString>

#include <cstdint>

/// What the cheque list asks the database for, and what its ticks amount to. `modo` is
/// Mirtal::modo: with "localizarSF" bounced cheques are asked for, otherwise received ones.
namespace ListaDeCheques {

/// The whole statement: the cheques with their clients and banks that meet `onde`, by client and
/// then by date. `onde` is one of the where clauses below, or "" for all cheques.
[[nodiscard]] QString comando(const QString& modo, const QString& onde);

/// The statement for the client of one cheque, by its entry number.
[[nodiscard]] QString comandoDoCliente(const QString& modo, const QString& lancamento);

/// The received cheques that the shop deposits itself, or those that clients come to exchange.
[[nodiscard]] QString ondeDescontar(bool descontar);
[[nodiscard]] QString ondeBanco(std::int64_t codigo);
[[nodiscard]] QString ondeCliente(std::int64_t codigo);
/// Both days included: due dates of received cheques, issue dates of bounced ones.
[[nodiscard]] QString ondeDatas(const QString& modo, const QDate& inicio, const QDate& fim);

/// What ticking a cheque adds to the total, given its value as the list shows it ("1.234,56").
/// Deliberately not its value: the point counts as the decimal one, and the rest from the comma on
/// is not read, so 1.234,56 adds 1,234 and 150,50 adds 150.
[[nodiscard]] Amount somaAoMarcar(const QString& valor);
/// What unticking it takes away: its whole value, cents and all.
[[nodiscard]] Amount somaAoDesmarcar(const QString& valor);

} // namespace ListaDeCheques
