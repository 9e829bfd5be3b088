#pragma once

#include "jet/Disk.h"
#include "jet/Progress.h"
#include "jet/Report.h"

#include <filesystem>
#include <stop_token>

namespace jet {

/// Reads a file whole and holds what the format promises against it: header, maps, page owners,
/// definitions, pages, rows, long values, counters, indexes, catalog, properties, relationships.
///
/// Only reads, and takes no lock: a file that is being written meanwhile may show what isn't wrong.
/// A transaction that was cut off, and the journal that can undo it, are told as what they are.
/// Damage is told in the report and never thrown. Time and memory are bounded by the file's size.
/// @throws Error{notFound, io} if the file can't be read; Error{cancelled} soon after `stop` asks
/// for it.
[[nodiscard]] Report check(const std::filesystem::path& path, Disk& disk = Disk::system(),
                           const std::stop_token& stop = {}, const Progress& progress = {});

} // namespace jet
