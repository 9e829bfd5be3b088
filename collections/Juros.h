#pragma once

#include "controls/typing/Formato.h"
#include "jet/Types.h"

/// What a cheque costs that is moved to another due date: the interest of a renegotiation.
///
/// Deliberate: the rate is one a month, as the window asks for it, and counts for each day all the
/// same: 2 % over 30 days are 60 %. And days and factor are kept in single precision, so they have
/// about seven digits. The shop's books have been kept like this; nothing of it is stored.
namespace Juros {

/// The days from one due date to another, a time of day counting as part of one; negative when the
/// new date comes first.
[[nodiscard]] float dias(jet::Date vencimento, jet::Date novo);

/// The part of the value that is interest: rate in percent, times days, by a hundred.
[[nodiscard]] float fator(Amount taxa, float dias);

/// Value times factor, to the nearest 1/10000, halves to the even one; negative with the days.
/// @throws jet::Error{outOfRange} if no amount is so large.
[[nodiscard]] Amount juros(Amount valor, float fator);

/// Value and interest together, exact. @throws jet::Error{outOfRange} likewise.
[[nodiscard]] Amount novoValor(Amount valor, Amount juros);

} // namespace Juros
