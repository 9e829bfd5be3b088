#pragma once

#include "ado/server/ServerWire.h"
#include "jet/TableSpec.h"

#include <vector>

namespace ado {

/// A table of a shop on a server, as a file may have it.
struct ServerTableSpec {
    jet::TableSpec spec;
    std::string rows; ///< the statement that gives its rows, in the order they are to have
    std::int32_t lastNumber = 0;
};

/// All of them, by name.
[[nodiscard]] std::vector<ServerTableSpec> serverTables(ServerWire& wire);

} // namespace ado
