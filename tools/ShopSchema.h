#pragma once

#include "jet/Database.h"

#include <span>

/// The four tables of the shop's database file: the one home of their columns, widths and indexes.
///
/// Names are as the windows spell them, "renuneração_mensal" included: the back-office system that
/// shares the file has it so. Keys (`codigo`, `lancamento`) are numbered by the file on insertion.
namespace shop {

/// The tables, in the order in which they are made.
[[nodiscard]] std::span<const jet::TableSpec> tables();

/// Makes the tables in a file that has none of them.
/// @throws jet::Error{exists} if one is there, and whatever jet::Database::createTable() throws.
void createTables(jet::Database& database);

} // namespace shop
