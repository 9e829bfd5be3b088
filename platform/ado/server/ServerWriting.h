#pragma once

#include "ado/Store.h"
#include "ado/server/ServerCatalog.h"
#include "ado/server/ServerWire.h"

namespace ado {

/// The statement that writes a row of a table with a key, if it is still as it was.
[[nodiscard]] ServerStatement writing(const ServerTable& table, const Store::RowWrite& row);

} // namespace ado
