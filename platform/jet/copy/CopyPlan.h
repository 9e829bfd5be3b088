#pragma once

#include "jet/copy/Rewriter.h"

namespace jet {

/// The tables of a sound file, as its catalog has them, the system's own included.
/// @throws Error{corrupt, unsupported, io}.
[[nodiscard]] std::vector<RewrittenTable> planSound(SourceFile& source);

/// The tables that can be found in a damaged file: those of the catalog, those of which only the
/// definition is left, and for rows that their table can't hold a table beside it. Tells what is
/// lost. `scratch` is the name of a file that may be made and is gone afterwards.
/// @throws Error{unsupported} for a text order of the catalog that this engine doesn't know.
[[nodiscard]] std::vector<RewrittenTable> planDamaged(SourceFile& source,
                                                      const std::filesystem::path& scratch);

} // namespace jet
