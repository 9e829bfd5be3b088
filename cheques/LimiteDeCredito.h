#pragma once

#include "ado/Recordset.h"
#include "controls/typing/Formato.h"

/// The credit limit of a client, against the cheques of his that the shop has in hand.
namespace LimiteDeCredito {

/// Whether the cheques of `rs` with one more of this value pass the limit; no limit is never
/// passed. Where they do, the clerk has been told. @throws jet::Error{outOfRange} if their sum is
/// beyond the largest amount.
[[nodiscard]] bool ultrapassado(ado::Recordset& rs, Amount maisEste, Amount limite);

} // namespace LimiteDeCredito
