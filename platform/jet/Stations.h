#pragma once

#include "jet/Disk.h"

#include <filesystem>
#include <string>
#include <vector>

namespace jet {

/// Who has a database open at this moment, "CAIXA2", "CAIXA2 (Maria)", programs that aren't a copy
/// of this one told as such. Nobody notices the look; a lock file that nobody uses any more goes.
/// @throws Error{readOnly, io} where the lock file can't be opened, or isn't one.
[[nodiscard]] std::vector<std::string> stationsIn(const std::filesystem::path& database,
                                                  Disk& disk = Disk::system());

} // namespace jet
