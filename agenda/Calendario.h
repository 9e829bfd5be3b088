#pragma once

#include "agenda/Vencimentos.h"

#include <QByteArray>
#include <QDateTime>

#include <map>

/// What falls due on each day, as a file that calendar programs read (RFC 5545).
namespace Calendario {

/// An event for each day, the whole day long and without a claim on anybody's time: how many
/// cheques, how much, of which file, and the banking day if that is another. Of one shop's file a
/// day always has the same UID, so that a calendar takes a later file's events for the same ones.
/// What has no due date isn't there.
/// @param arquivo the database's path, always the same one of the ways to write it
/// @param agora when this is made
[[nodiscard]] QByteArray ics(const std::map<QDate, Vencimentos::SomaDoDia>& dias,
                             const QString& arquivo, const QDateTime& agora);

/// Writes them as a new file, in place of an old one of that name. @return false, and the old one
/// is as it was, if it can't be written.
[[nodiscard]] bool gravar(const QString& caminho,
                          const std::map<QDate, Vencimentos::SomaDoDia>& dias,
                          const QString& arquivo);

} // namespace Calendario
