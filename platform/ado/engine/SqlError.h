#pragma once

struct sqlite3;

namespace ado {

/// What SQLite says, as a jet::Error in Portuguese.
/// @throws Error{notFound} for an unknown table, column or function, Error{full} as tooMuch(),
///         Error{syntax} for all else.
[[noreturn]] void throwSqlError(sqlite3* handle, int result);

/// @throws Error{full}, the sentence for all that goes beyond the bounds of a statement.
[[noreturn]] void tooMuch();

} // namespace ado
