#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace ado {

/// The path in a connection string: what stands after "Data Source=", blanks around it dropped, in
/// double or single quotes (the same quote inside them written twice) or not; both / and \ separate
/// folders, and doubled ones count once.
/// @throws Error{misuse} if there is none.
[[nodiscard]] std::filesystem::path dataSource(std::string_view connectionString);

/// The same where it is a server's address, "postgresql://...", as it stands; else nothing.
/// @throws Error{misuse} if there is none.
[[nodiscard]] std::optional<std::string> serverAddress(std::string_view connectionString);

/// The data source of who has chosen a folder: the file in it, put behind it as it is; or the
/// server whose address stands in the folder's place.
[[nodiscard]] std::string sourceIn(std::string_view folder, std::string_view file);

/// The data source for a sentence: the path, or a server's address with neither user nor password.
/// @throws Error{misuse} if there is none.
[[nodiscard]] std::string shownSource(std::string_view connectionString);

/// A server's address without a password, wherever one may stand in it; what is no address, as it
/// is.
[[nodiscard]] std::string withoutPassword(std::string_view address);
/// A server's address with that password and no other.
[[nodiscard]] std::string withPassword(std::string_view address, std::string_view password);

/// A value as it must stand in a connection string to be read back as it is: in quotes if it would
/// be read otherwise, as the path of a folder with a semicolon in its name or a blank before it
/// would, else bare.
[[nodiscard]] std::string quotedValue(std::string_view value);

/// The file of that path, or one whose name, or the names of whose folders, differ only in case:
/// the shop's folders come from a system that doesn't tell them apart. The exact name is
/// preferred; of several others, the first in alphabetical order.
/// @throws Error{notFound} with the path tried.
[[nodiscard]] std::filesystem::path existingFile(const std::filesystem::path& path);

} // namespace ado
