#pragma once

#include <QString>

/// Tells that the record on show has been changed by another since, with `motivo` first and then
/// each field of the window in front that differs, as it is stored and as it stands in the window.
/// What was typed stays there, unless the operator asks for what is stored. What he has been told
/// here counts as shown: doing the same again is then meant so.
/// @return false, and nothing is told, if no window shows such a record.
bool mostrarOutraVersao(const QString& motivo);
