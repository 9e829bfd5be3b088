#pragma once

#include "ado/server/ServerWire.h"
#include "jet/TableDefinition.h"
#include "jet/TableSpec.h"

#include <string>

/// What a stored value is on a server, and back:
///
///     column                         on the server
///     yes/no                         boolean
///     byte, integer, long            smallint (a byte by a check), smallint, integer
///     currency                       numeric(19,4)
///     single, double                 real, double precision
///     numeric                        numeric(precision, scale)
///     date                           timestamp(0) without time zone
///     text, memo                     varchar(width), text, in the shop's order of texts
///     guid                           uuid
///     binary, OLE                    bytea
namespace ado {

/// The server's numbers of the types.
namespace server_type {
constexpr unsigned kBoolean = 16;
constexpr unsigned kBytes = 17;
constexpr unsigned kBigint = 20;
constexpr unsigned kSmallint = 21;
constexpr unsigned kInteger = 23;
constexpr unsigned kText = 25;
constexpr unsigned kReal = 700;
constexpr unsigned kDouble = 701;
constexpr unsigned kVarchar = 1043;
constexpr unsigned kTimestamp = 1114;
constexpr unsigned kNumeric = 1700;
constexpr unsigned kUuid = 2950;
} // namespace server_type

/// How a column is declared, its order of texts included.
[[nodiscard]] std::string serverType(const jet::ColumnSpec& column);
/// What a column so declared is here. `modifier` is the server's word for its size.
[[nodiscard]] jet::Column columnOf(const std::string& name, unsigned type, int modifier);

/// As it travels to a column, which it is of the type of.
[[nodiscard]] Parameter parameterOf(const jet::Value& value);
/// Of a column of the server's type `type` and `modifier`; nothing is null.
[[nodiscard]] jet::Value valueOf(const std::optional<std::string>& text, unsigned type,
                                 int modifier);
/// A text as it stands in a statement.
[[nodiscard]] std::string serverText(std::string_view text);
/// A moment as the server reads it.
[[nodiscard]] std::string timestampText(jet::Date date);

} // namespace ado
