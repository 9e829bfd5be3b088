#include "jet/index/RowKey.h"

#include <algorithm>

namespace jet {

RowKey rowKey(const TableDefinition& table, const RealIndex& index, const RowParts& row,
              const MemoContent& memo) {
    RowKey found{Bytes(), false, true};
    for (const auto& [place, ascending] : index.columns) {
        const Column& column = table.columns[place];
        const auto stored = row.field(column);
        const bool isNull = column.type != ColumnType::boolean && !stored;
        found.anyNull = found.anyNull || isNull;
        found.allNull = found.allNull && isNull;
        if (!found.key || (isText(column.type) && column.collation == nullptr)) {
            found.key.reset();
            continue;
        }
        try {
            if (column.type == ColumnType::boolean)
                appendBooleanKey(*found.key, ascending, row.bit(column));
            else if (isNull)
                appendNullKey(*found.key, ascending);
            else if (column.type == ColumnType::memo)
                appendStoredKey(*found.key, column, ascending, memo(column, *stored));
            else
                appendStoredKey(*found.key, column, ascending, *stored);
        } catch (const Error& error) {
            if (error.code() == Errc::io)
                throw;
            found.key.reset();
        }
    }
    return found;
}

const Column* columnOfUnknownOrder(const TableDefinition& table, const RealIndex& index) noexcept {
    for (const IndexColumn& part : index.columns)
        if (const Column& column = table.columns[part.column];
            isText(column.type) && column.collation == nullptr)
            return &column;
    return nullptr;
}

bool isAllNull(std::span<const std::byte> key, std::size_t columns) noexcept {
    return key.size() == columns && std::ranges::all_of(key, [](std::byte b) {
               return b == std::byte{0x00} || b == std::byte{0xFF};
           });
}

} // namespace jet
