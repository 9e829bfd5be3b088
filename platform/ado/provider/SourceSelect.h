#pragma once

#include "ado/RecordsetTypes.h"
#include "ado/dialect/SqlDialect.h"

#include <functional>

namespace ado {

/// The select that a recordset's source means: a table's name means all of it. `hasTable` is asked
/// by folded name. @throws Error{notFound, syntax}.
[[nodiscard]] Select selectOf(const std::string& source, CommandType command,
                              const std::function<bool(const std::string&)>& hasTable,
                              const Spelling& spelling, Tongue& tongue = sqliteTongue());

/// Whether a condition or an order says nothing.
[[nodiscard]] bool saysNothing(const std::string& text);

} // namespace ado
