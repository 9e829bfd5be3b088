#pragma once

#include "jet/TableSpec.h"

#include <string_view>

namespace jet {

class Database;

/// Gives a table of an open file columns and indexes that it lacks, those of `more`, in a
/// transaction of its own. The rows stay as they lie: a new column is null in them, a yes/no is no.
/// Relationships, rules and everything else that the file keeps of the table stay too. Whoever has
/// the table open, here or in another station, is told that it has another form now; the next
/// Database::table() gives that one.
/// @throws Error{misuse, exists, notFound, full} for what can't be made, Error{duplicate,
///         nullValue} if rows don't fit an index, Error{readOnly} if file or table can't be
///         changed, and what claim() and commit() throw. Nothing is changed then.
void extendTable(Database& database, std::string_view name, const TableSpec& more);

} // namespace jet
