#pragma once

#include "jet/Database.h"

/// A small file for those who damage one and see whether reading it still ends.

/// Fills a new file: texts, memos of every storage, moved and erased rows, two indexes, a
/// relationship and rules. The places that rows of "Cheques" have, or had.
[[nodiscard]] std::vector<jet::RowId> makePatient(jet::Database& database);

/// Runs `action`. An Error is an answer; what isn't any of ours goes on.
/// @throws std::logic_error for an Error that says nothing.
void tolerant(const std::function<void()>& action);

/// Reads every table in every way there is, and looks into `rows`.
/// @throws std::logic_error if that doesn't end.
void readEverything(jet::Database& database, const std::vector<jet::RowId>& rows);
void readTable(jet::Table& table, const std::vector<jet::RowId>& rows);
