#pragma once

#include <QtGlobal>

/// The entry number of a received cheque, by which the windows find it.
namespace Lancamento {

/// Whether the entry of cheques can show it; where not, the clerk has been told. Deliberate: the
/// number goes through a 16-bit whole number, as between all the windows of the shop's system, so
/// it can't be above 32767.
[[nodiscard]] bool cabe(qint32 lancamento);

/// Goes to it in rsCheques. All cheques are looked at: a filter that hides this one comes off.
/// @return false, and rsCheques stays where it is, if there is no such cheque or it can't be shown;
///         the clerk has then been told.
[[nodiscard]] bool ir(qint32 lancamento);

} // namespace Lancamento
