#pragma once

#include "ado/ShopRoles.h"
#include "ado/server/ServerWire.h"
#include "jet/TableSpec.h"

#include <span>
#include <string>
#include <vector>

namespace ado {

/// Makes, in a database without a shop, what every table and statement of one needs there: the
/// roles, the schema `valtrino`, the order of texts, the functions of the dialect, who tells of
/// changes. Then the tables, with the indexes of `further`. All of it or nothing.
/// @throws jet::Error.
void createServerSchema(ServerWire& wire, std::span<const jet::TableSpec> tables,
                        const ShopRoles& roles, std::span<const jet::TableSpec> further);

/// One more table, of the owner of the others. @throws Error{exists, misuse, readOnly}.
void createServerTable(ServerWire& wire, const jet::TableSpec& table);

[[nodiscard]] bool hasShop(ServerWire& wire);
/// @throws Error{exists} if the database has a shop.
void requireNoShop(ServerWire& wire);
/// @throws Error{notFound} if it has none.
void requireShop(ServerWire& wire);

/// The names of the functions that a shop's database has.
[[nodiscard]] std::vector<std::string> foundationFunctions();

// The same in steps, inside a transaction and as the owner, for who fills the tables in between:
// rows come in faster before there are indexes.
/// Texts go by the order of that version.
void createFoundation(ServerWire& wire, jet::Version order);
void createColumns(ServerWire& wire, const jet::TableSpec& table);
/// `exactly` tells texts apart that differ in case, or in what the shop's order passes over: such
/// an index keeps fewer rows from being the same, and is nobody's key.
void createIndex(ServerWire& wire, const jet::TableSpec& table, const jet::IndexSpec& index,
                 bool exactly = false);
/// The columns of the table that an index is to include, those that aren't too long for one.
[[nodiscard]] std::vector<std::string> includable(const jet::TableSpec& table,
                                                  const jet::IndexSpec& index);
/// One that no file is to hear of, of columns that the table has.
void createOwnIndex(ServerWire& wire, const jet::TableSpec& table, jet::IndexSpec index);
/// The table with what those of `further` include in the indexes that it has itself.
[[nodiscard]] jet::TableSpec withIncluded(const jet::TableSpec& table,
                                          std::span<const jet::TableSpec> further);
/// The indexes among `further` whose columns the table has and no index of its begins with.
void createOwnIndexes(ServerWire& wire, const jet::TableSpec& table,
                      std::span<const jet::TableSpec> further);
void createNews(ServerWire& wire, const jet::TableSpec& table);

/// How a comment of a column or index begins that says what it is in a file.
inline constexpr std::string_view kNote = "valtrino: ";
/// The whole comment of an index that is in no file.
inline constexpr const char* kOwnIndex = "valtrino: -";
/// The whole comment of one that is in a file: what it is there.
[[nodiscard]] std::string noteOf(const jet::IndexSpec& index);

/// How far a change is told by its row's key: a block for every so many keys.
inline constexpr int kKeysInABlock = 1024;

} // namespace ado
