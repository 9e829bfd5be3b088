#pragma once

#include "jet/Table.h"

namespace jet {

/// Why a table can't be changed without harm.
struct Hindrance {
    std::string sentence;
    bool damage; ///< and not merely something that this engine doesn't know
};

/// What keeps a table from being changed, or nothing: a text order that this engine doesn't know in
/// one of its indexes, or indexes that don't agree with the rows by this engine's own reckoning.
/// Costs one pass over the indexes of a small table, a bounded sample of the rows of a large one.
[[nodiscard]] std::optional<Hindrance> whyNotWritable(const Table& table, Pager& pager);

} // namespace jet
