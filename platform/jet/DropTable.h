#pragma once

#include <filesystem>
#include <string_view>

namespace jet {

/// Takes a table out of a file, with all its rows, and gives its pages back, in one transaction.
/// Other stations that have the table open are told that it is gone.
/// @throws Error{notFound} if there is none of that name; Error{misuse} for one of the system's
/// own;
///         Error{related} if a relationship has an end there; Error{readOnly} if the file or the
///         table can't be changed; and what Database and commit() throw.
void dropTable(const std::filesystem::path& file, std::string_view name);

} // namespace jet
