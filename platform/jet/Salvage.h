#pragma once

#include "jet/Disk.h"
#include "jet/Progress.h"
#include "jet/SalvageReport.h"

#include <filesystem>

namespace jet {

/// Reads what can still be read out of a damaged file into a new one, and says what is missing.
///
/// Where maps or catalog are damaged, each page's own word says whose it is. Tables of which only
/// the definition is left get a name made of its page's number. A row whose key another row has
/// already isn't dropped: it goes into a table beside its own, without indexes. A transaction that
/// was cut off, and whose journal lies beside the source, is undone first, in a copy. The source is
/// only read. Time and memory are bounded by its size, whatever its bytes.
/// @throws Error{exists} if there is a `target`; Error{unsupported} for what isn't a file of these
///         formats; Error{io, full}. Then there is no `target`.
[[nodiscard]] SalvageReport salvage(const std::filesystem::path& source,
                                    const std::filesystem::path& target,
                                    const Progress& progress = {}, Disk& disk = Disk::system());

} // namespace jet
