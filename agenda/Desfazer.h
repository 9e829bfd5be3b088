#pragma once

#include <QString>

#include <cstdint>

/// The way back from what the history tells.
namespace Desfazer {

/// Undoes all that one operation has done, in one transaction and as an operation of its own: what
/// was deleted comes back with its number, what was changed is as before, what was recorded goes,
/// and so with all that went along by relationships.
///
/// @return "" when that is done. Otherwise why it can't be, naming the cheque, and nothing is done:
///         a number was given out again, a client or bank has gone, a cheque has been changed
///         since, all of it was undone already, or is itself an undoing.
/// @throws as Recordset::Update() and Delete().
[[nodiscard]] QString desfazer(std::int32_t grupo);

} // namespace Desfazer
