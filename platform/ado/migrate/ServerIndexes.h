#pragma once

#include "ado/server/ServerWire.h"
#include "jet/TableSpec.h"

#include <span>
#include <vector>

namespace ado {

/// An index that the windows want of a table on a server, and that it hasn't.
struct MissingIndex {
    const jet::TableSpec* table;
    const jet::IndexSpec* index;
};

/// What a file needs no index for, but the server does: of `further` those of which the tables have
/// none that begins with the column and includes what is read with it.
[[nodiscard]] std::vector<MissingIndex> missingIndexes(ServerWire& wire,
                                                       const std::vector<jet::TableSpec>& tables,
                                                       std::span<const jet::TableSpec> further);

/// Makes it, in the place of the one of a file that has all of it but what it includes.
void makeIndex(ServerWire& wire, const MissingIndex& missing);

} // namespace ado
