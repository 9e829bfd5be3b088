#pragma once

#include "ado/ShopRoles.h"
#include "jet/Disk.h"
#include "jet/Progress.h"
#include "jet/TableSpec.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace ado {

/// A table that has been moved, and what both sides have been found to have in it.
struct MigratedTable {
    std::string name;
    std::uint64_t rows = 0;
    std::uint64_t digest = 0; ///< of all values of all rows, in their order
    /// Of each column of whole numbers or amounts whose sum has a place in its number.
    std::vector<std::pair<std::string, std::string>> sums;
};

struct Migration {
    std::string place; ///< the server, without user and password
    std::vector<MigratedTable> tables;
    std::vector<std::string> notes; ///< what is otherwise there than it was here, a sentence each
};

/// Moves a database file, whosever it is, to an empty database of a server: tables, rows, keys,
/// relationships and rules. What has been written is read back by another way and every row
/// compared; nothing is kept unless all are equal. `wanted` are made too, empty, if the file is a
/// shop's and has none of that name, and the indexes of `further`, as createShopOnServer(). What
/// the server has no use for, as queries, lies beside the tables.
/// @throws Error{exists} if there is a shop; Error{conflict} if the file changed meanwhile;
///         Error{corrupt} for a file with errors; Error{outOfRange} naming table, row and column of
///         a value that the server can't hold; Error{offline} if the line broke, which says whether
///         it is done all the same; as createShopOnServer().
[[nodiscard]] Migration migrateToServer(const std::filesystem::path& file,
                                        const std::string& address, const ShopRoles& roles,
                                        std::span<const jet::TableSpec> wanted,
                                        std::span<const jet::TableSpec> further,
                                        const jet::Progress& progress);

/// Makes a new file of all tables of a server's shop: columns, rows and keys; the relationships,
/// rules, queries and properties that came from a file, unless the server has others by now, which
/// then come as far as a file can say them. It has its name when all has been read back and
/// compared.
/// @throws Error{exists} if there is a file; as migrateToServer().
[[nodiscard]] Migration migrateToFile(const std::string& address, const std::filesystem::path& file,
                                      jet::Version version, const jet::Progress& progress,
                                      jet::Disk& disk = jet::Disk::system());

} // namespace ado
