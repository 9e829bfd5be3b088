#pragma once

#include "ado/server/ServerWire.h"
#include "jet/TableSpec.h"

#include <span>
#include <string>

namespace ado {

/// Makes, in an empty database, what every table and statement of the shop needs there: the schema
/// `valtrino`, the order of texts, the functions of the dialect, who tells of changes. Then the
/// tables. All of it or nothing. @throws jet::Error.
void createServerSchema(ServerWire& wire, std::span<const jet::TableSpec> tables);

/// One more table. @throws Error{exists, misuse}.
void createServerTable(ServerWire& wire, const jet::TableSpec& table);

/// How far a change is told by its row's key: a block for every so many keys.
inline constexpr int kKeysInABlock = 1024;

} // namespace ado
