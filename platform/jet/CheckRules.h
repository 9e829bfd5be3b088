#pragma once

#include "jet/Progress.h"
#include "jet/Report.h"

#include <filesystem>
#include <vector>

namespace jet {

/// Holds every row of a file in which check() has found no errors against the rules that the file
/// keeps: columns that must be filled in or take no empty text, validation rules, relationships.
///
/// A row that breaks one isn't damage: the formats' own engine doesn't look at the rows that are
/// there when a rule is made. Of each rule at most 50 rows are told, by key and place. Only reads,
/// as check() does; the cost is one pass over the rows and one look into the parent's index for
/// each child.
/// @return findings of severity rule, or one of severity error if the file can't be read as
///         everybody reads it.
/// @throws Error{notFound, io}.
[[nodiscard]] std::vector<Finding> checkRules(const std::filesystem::path& path,
                                              const Progress& progress = {});

} // namespace jet
