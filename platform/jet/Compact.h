#pragma once

#include "jet/Disk.h"
#include "jet/Progress.h"

#include <cstdint>
#include <filesystem>

namespace jet {

/// What came of a compaction.
struct Compacted {
    std::uint32_t pagesBefore = 0;
    std::uint32_t pagesAfter = 0;
    std::uint64_t tables = 0;
    std::uint64_t rows = 0; ///< of all tables, the system's own included
};

/// Copies a sound file into a new one without the space nobody uses, its indexes built anew: every
/// table, column, index, relationship, property, right and object of it, known or not, and the
/// numbering of each table. The copy is compared with the source row for row and checked before it
/// gets its name.
///
/// The source is only read, and mustn't be written meanwhile: that is noticed, and refused.
/// @throws Error{exists} if there is a `target`; Error{corrupt} for a source that a check finds
///         errors in (salvage() is for these); Error{unsupported} for an index whose order of texts
///         this engine can't maintain; Error{conflict} if the source changed meanwhile;
///         Error{notFound, io, full}. Then there is no `target`.
[[nodiscard]] Compacted compact(const std::filesystem::path& source,
                                const std::filesystem::path& target, const Progress& progress = {},
                                Disk& disk = Disk::system());

} // namespace jet
