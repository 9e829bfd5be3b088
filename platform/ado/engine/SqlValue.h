#pragma once

#include "jet/Types.h"

#include <cstddef>
#include <string>

struct sqlite3_context;
struct sqlite3_stmt;

namespace jet {
struct Column;
class RowView;
} // namespace jet

/// What a stored value is in SQL:
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
namespace ado {

/// The type by which a column is declared, its order of texts included.
[[nodiscard]] std::string sqlType(const jet::Column& column);

/// Gives a field of a row as the result that SQLite asks for; `buffer` is the caller's, for texts.
void giveField(sqlite3_context* context, const jet::Column& column, const jet::RowView& row,
               std::size_t field, std::string& buffer);

/// The parameter `?number`, counted from 1. @return SQLite's own code.
[[nodiscard]] int bindValue(sqlite3_stmt* statement, int number, const jet::Value& value);

/// A column of a statement's current row: null, whole number, double, text or bytes.
[[nodiscard]] jet::Value columnValue(sqlite3_stmt* statement, int column);

} // namespace ado
