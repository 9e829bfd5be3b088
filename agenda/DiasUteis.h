#pragma once

#include <QDate>

/// The days on which banks work and cheques are cleared, in all of Brazil. Holidays of a state or
/// a town aren't known here.
namespace DiasUteis {

/// Neither a Saturday nor a Sunday nor a national holiday of the banks. An invalid date isn't one.
[[nodiscard]] bool ehUtil(const QDate& dia);

/// The day itself if banks work then, or else the next one on which they do: what falls due on a
/// holiday is paid on the first working day after it. An invalid date stays one.
[[nodiscard]] QDate aPartirDe(const QDate& dia);

} // namespace DiasUteis
