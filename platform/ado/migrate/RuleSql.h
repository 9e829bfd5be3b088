#pragma once

#include "jet/Rules.h"

#include <optional>
#include <string>

namespace ado {

/// A rule or default of a file as an expression of the server; nothing if it uses what the server
/// has no counterpart for.
[[nodiscard]] std::optional<std::string> ruleSql(const jet::Expression& rule,
                                                 std::span<const jet::Column> columns);

} // namespace ado
