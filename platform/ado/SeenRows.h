#pragma once

#include "jet/Table.h"

#include <map>
#include <optional>
#include <unordered_map>

namespace ado {

/// How rows looked (jet::Table::stamp) when the program last read them outside a transaction: what
/// the operator has seen, and what a change that he then asks for is compared with. A window that
/// saves begins a transaction and looks its record up again; what it reads then tells of the file,
/// not of what was on the screen.
///
/// Our own changes count as seen, once they are committed.
class SeenRows {
public:
    void saw(const jet::Table& table, jet::RowId row, std::uint64_t stamp);
    /// We have stored the row so, or erased it or made it (nothing).
    void wrote(const jet::Table& table, jet::RowId row, std::optional<std::uint64_t> stamp,
               bool inTransaction);
    [[nodiscard]] std::optional<std::uint64_t> of(const jet::Table& table, jet::RowId row) const;

    /// The transaction's end.
    void commit();
    void rollback() noexcept { own_.clear(); }

private:
    struct Key {
        const jet::Table* table;
        std::int64_t row;
        friend auto operator<=>(const Key&, const Key&) = default;
    };
    struct Hash {
        std::size_t operator()(const Key& key) const noexcept {
            return std::hash<const void*>{}(key.table) ^
                   static_cast<std::size_t>(key.row) * 0x9E3779B97F4A7C15U;
        }
    };
    std::unordered_map<Key, std::uint64_t, Hash> seen_;
    std::map<Key, std::optional<std::uint64_t>> own_; ///< of the open transaction
};

} // namespace ado
