#pragma once

#include "jet/Database.h"

#include <filesystem>
#include <functional>
#include <span>

/// The four tables of the shop's database file: the one home of their columns, widths and indexes.
///
/// Names are as the windows spell them, "renuneração_mensal" included: the back-office system that
/// shares the file has it so. Keys (`codigo`, `lancamento`) are numbered by the file on insertion.
namespace shop {

/// The tables, in the order in which they are made.
[[nodiscard]] std::span<const jet::TableSpec> tables();

/// Indexes that a server gets besides: what the windows list by a bank or a day, of more cheques
/// than any file has. A file is rather without them, for those who write to it.
[[nodiscard]] std::span<const jet::TableSpec> serverIndexes();

/// What was done with the cheques is kept in this one, by the programs themselves.
inline constexpr const char* kHistory = "valtrino_historico";
/// Where this one is, nothing is.
inline constexpr const char* kNoHistory = "valtrino_sem_historico";
[[nodiscard]] const jet::TableSpec& history();

/// Makes the tables in a file that has none of them.
/// @throws jet::Error{exists} if one is there, and whatever jet::Database::createTable() throws.
void createTables(jet::Database& database);

/// Makes a new file with the tables, and lets `fill` work on it; it has another name until it is
/// whole.
/// @throws jet::Error{exists} if there is a file of that name, {notFound, readOnly, full, io}.
void createFile(const std::filesystem::path& path, jet::Version version,
                const std::function<void(jet::Database&)>& fill = {});

} // namespace shop
