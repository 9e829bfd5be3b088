#pragma once

#include "ado/Engine.h"
#include "jet/Table.h"

struct sqlite3_module;

/// A table of the file as SQLite sees it: read-only, rowid = jet::packed(RowId), every column
/// under its stored name with this type and these values:
///
///     stored                         SQL
///     byte, integer, long            INTEGER
///     yes/no                         INTEGER, -1 and 0 as the dialect's true and false
///     currency                       REAL, the nearest to the amount in reais (see SqlFunctions.h)
///     single, double, numeric        REAL
///     date                           REAL, days since 1899-12-30 as stored
///     text, memo                     TEXT in UTF-8, compared by the file's order (kTextOrder)
///     guid                           TEXT "{...}"
///     binary, OLE, others            BLOB
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

/// The double nearest to a decimal number.
[[nodiscard]] double approximate(const jet::Numeric& decimal);

} // namespace ado
