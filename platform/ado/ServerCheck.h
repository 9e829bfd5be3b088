#pragma once

#include "jet/Report.h"
#include "jet/TableSpec.h"

#include <span>
#include <string>
#include <vector>

namespace ado {

/// A column whose values are keys of another table, whether or not the server is told to keep that.
struct Reference {
    const char* table;
    const char* column;
    const char* parent;
    const char* key;
};

/// Looks at a shop on a server: that it has `tables` as they should be, and what every statement
/// needs, the indexes of `further` among it, as createShopOnServer(); that each index, number and
/// telling of changes works; who may do what; that each row obeys the rules, and no `references`
/// lead nowhere; and that what is kept of a file for the way back is whole. Changes nothing. Of a
/// report only findings, tables and rows are told; pages are a file's.
/// @throws as ServerWire; Error{notFound} if the database has no shop.
[[nodiscard]] jet::Report checkServer(const std::string& address,
                                      std::span<const jet::TableSpec> tables,
                                      std::span<const jet::TableSpec> further,
                                      std::span<const Reference> references);

/// Makes those of the indexes of `further` that a shop on a server lacks, as one made by an earlier
/// version does; all or none. Nobody changes anything meanwhile.
/// @return "table.column" of each. @throws as checkServer(), and what the server refuses.
std::vector<std::string> addServerIndexes(const std::string& address,
                                          std::span<const jet::TableSpec> further);

} // namespace ado
