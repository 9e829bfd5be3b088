#pragma once

#include "jet/row/RowView.h"

#include <utility>

namespace jet {

/// What a row stores for one column. A yes/no is its `present`.
struct StoredField {
    bool present = false;
    Bytes bytes;                  ///< of a long value: its definition
    std::optional<Bytes> content; ///< of a long value that is still to be written
};

/// One for each column of the table, in the order of TableDefinition::columns.
using StoredRow = std::vector<StoredField>;

/// The fields of a row as it lies on its page.
[[nodiscard]] StoredRow storedRow(const TableDefinition& table, const RowView& row);

/// The form in which a column stores `value`; null is a field that isn't present.
/// Whole numbers are taken for amounts and reals as well.
/// @throws Error{outOfRange} if the value isn't of the column's type or too large for it,
///         Error{tooLong} if a text has more characters than the column.
[[nodiscard]] StoredField encodeField(const Column& column, const Value& value);

/// The bytes of a row. Every long value has been written.
/// @throws Error{tooLong} if it is longer than a page takes.
[[nodiscard]] Bytes assembleRow(const Format& format, const TableDefinition& table,
                                const StoredRow& fields);

/// How long assembleRow() would make it, its contents still to be written counted as `inRow` says.
[[nodiscard]] std::size_t rowSize(const Format& format, const TableDefinition& table,
                                  const StoredRow& fields, bool inRow);

} // namespace jet
