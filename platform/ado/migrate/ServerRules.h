#pragma once

#include "ado/migrate/ServerTables.h"
#include "jet/Extras.h"

namespace ado {

/// What a server asks of the rows of its tables, as a file says it, and what it keeps of the file
/// that they came from.
struct ServerRules {
    jet::Extras extras;
    std::vector<std::string> notes; ///< what a file can't say, a sentence each
};
[[nodiscard]] ServerRules serverRules(ServerWire& wire, std::span<const ServerTableSpec> tables);

} // namespace ado
