#pragma once

#include "jet/index/KeyCodec.h"
#include "jet/row/RowParts.h"

#include <functional>

namespace jet {

/// What an index has to hold for a row.
struct RowKey {
    std::optional<Bytes>
        key; ///< nothing if it can't be told: unknown order, value that doesn't fit
    bool anyNull = false;
    bool allNull = true;
};

/// Where the content of a memo is found, given what its row stores.
using MemoContent = std::function<Bytes(const Column& memo, std::span<const std::byte> stored)>;

/// The key of a row that has been cut without a flaw.
/// @throws Error{io} if a memo can't be read.
[[nodiscard]] RowKey rowKey(const TableDefinition& table, const RealIndex& index,
                            const RowParts& row, const MemoContent& memo);

/// The first of the index's columns whose order of texts this engine doesn't know; null for none.
[[nodiscard]] const Column* columnOfUnknownOrder(const TableDefinition& table,
                                                 const RealIndex& index) noexcept;

/// Whether a key is that of nothing but nulls: a flag byte for each column and no more. Such keys
/// may repeat in a unique index.
[[nodiscard]] bool isAllNull(std::span<const std::byte> key, std::size_t columns) noexcept;

} // namespace jet
