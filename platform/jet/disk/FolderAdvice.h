#pragma once

#include "jet/Disk.h"

#include <optional>
#include <string>

namespace jet {

/// What the operator must know of the folder in which a database lies, in Portuguese, or nothing:
/// that a program carries it from one computer to another, where each works in a copy of its own
/// and no lock of one reaches the other. That doesn't show in the file until somebody's work is
/// lost.
///
/// Looks at the names in the folder and in those around it: some calls of the system for each.
[[nodiscard]] std::optional<std::string> adviceOn(const std::filesystem::path& database,
                                                  Disk& disk);

} // namespace jet
