#pragma once

#include "jet/Database.h"

#include <filesystem>
#include <string>

/// Opens the file for reading, and compares every table that the catalog names (those that `file`'s
/// version of the reader can't show left out) with what the independent reader gives: columns, and
/// rows as a set. Differences are test failures. Requires hasMdbTools().
void expectSameAsIndependentReader(const std::filesystem::path& file,
                                   const jet::Database::Options& options = {},
                                   const std::string& environment = {});
