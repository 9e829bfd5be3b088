#pragma once

#include "jet/Disk.h"

namespace jet {

/// Moves a database to another folder, under its name, with everything that goes with it: its daily
/// copies, the files that other ones have replaced, journals that were set aside. A transaction
/// that was cut off is undone first. Nothing is overwritten: a file of a name that the other folder
/// has stays where it is. The database goes last, and in one step: whenever the power goes it is in
/// the one place or in the other, and moving it again brings the rest.
/// From one disk to another it is in both for a moment; if it can't be taken away from the first
/// then, the sentence tells of the two.
/// @throws Error{exists} if there is a database in the folder, Error{locked} if somebody has it
///         open, Error{notFound, readOnly, full, io}.
void moveDatabase(const std::filesystem::path& database, const std::filesystem::path& folder,
                  Disk& disk = Disk::system());

} // namespace jet
