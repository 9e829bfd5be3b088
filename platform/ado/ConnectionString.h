#pragma once

#include <filesystem>
#include <string_view>

namespace ado {

/// The path in a connection string: what stands after "Data Source=", blanks around it dropped, in
/// double or single quotes or not; both / and \ separate folders, and doubled ones count once.
/// @throws Error{misuse} if there is none.
[[nodiscard]] std::filesystem::path dataSource(std::string_view connectionString);

/// The file of that path, or one whose name, or the names of whose folders, differ only in case:
/// the shop's folders come from a system that doesn't tell them apart. The exact name is
/// preferred; of several others, the first in alphabetical order.
/// @throws Error{notFound} with the path tried, and where it is configured.
[[nodiscard]] std::filesystem::path existingFile(const std::filesystem::path& path);

} // namespace ado
