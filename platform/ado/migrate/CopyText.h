#pragma once

#include "jet/TableSpec.h"

#include <optional>

namespace ado {

/// A row as a line of "copy ... from stdin", appended.
void appendCopyLine(std::string& text, const jet::Row& row);

/// Why the server can't hold that value in that column, the end of a sentence; nothing if it can.
[[nodiscard]] std::optional<std::string> refusal(const jet::ColumnSpec& column,
                                                 const jet::Value& value);

/// Whether the server, which counts seconds, will have another moment than the file.
[[nodiscard]] bool losesFraction(const jet::Value& value);

} // namespace ado
