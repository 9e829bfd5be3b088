#pragma once

#include "jet/Table.h"
#include "jet/share/Hindrance.h"

namespace jet {

/// What keeps a table from being changed, or nothing: a text order that this engine doesn't know in
/// one of its indexes, or indexes that don't agree with the rows by this engine's own reckoning.
/// Costs one pass over the indexes of a small table, a bounded sample of the rows of a large one.
[[nodiscard]] std::optional<Hindrance> selfCheck(const Table& table, Database& database);

} // namespace jet
