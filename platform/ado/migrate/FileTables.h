#pragma once

#include "jet/Rules.h"
#include "jet/TableSpec.h"

namespace ado {

/// How a table of a file is, to be made elsewhere.
[[nodiscard]] jet::TableSpec specOf(const jet::Table& table);

} // namespace ado
