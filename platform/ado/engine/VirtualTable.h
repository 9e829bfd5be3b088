#pragma once

#include "ado/engine/Trap.h"
#include "jet/Table.h"

struct sqlite3_module;

/// A table of the file as SQLite sees it: read-only, rowid = jet::packed(RowId), every column
/// under its stored name with a type and values as SqlValue.h says.
///
/// The planner is offered the file's indexes: equality on the first columns and a range on the
/// next, walked forwards or backwards. They only narrow the search: SQLite tests every row again,
/// because a key can be coarser than its value. An index's order counts as the answer's order only
/// over columns where it is the same, that is not over text.
namespace ado {

/// What a virtual table works on. Lives as long as the SQLite handle that knows its address.
struct TableSource {
    jet::Table& table;
    Trap& trap;
};

/// The module that all tables share; each is registered under its own name with its TableSource.
[[nodiscard]] const sqlite3_module* virtualTableModule();

} // namespace ado
