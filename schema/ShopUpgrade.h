#pragma once

#include "jet/Database.h"

#include <string>
#include <vector>

namespace shop {

/// What a file lacks of one of the shop's tables.
struct Missing {
    jet::TableSpec more; ///< the columns and indexes, under the table's name
    bool table = false;  ///< the whole of it
};

/// What a file lacks of the shop's tables, as one of an earlier version does, in the order of
/// tables(). An index that the file has over the same columns counts, whatever it is called.
/// Columns are told apart by their names alone.
[[nodiscard]] std::vector<Missing> missingIn(jet::Database& database);

/// Gives it that. In rows that are there the new fields are empty, but yes/no ones are yes, as in
/// what the windows enter.
/// @throws jet::Error{unsupported} for a table with rows and without the key that numbers them: it
///         is of no earlier version; and what extendTable() and createTable() throw. Some of it
///         may have been done.
void upgrade(jet::Database& database, const std::vector<Missing>& missing);

} // namespace shop
