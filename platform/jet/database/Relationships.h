#pragma once

#include "jet/Table.h"

namespace jet {

/// What a row of MSysRelationships says of one.
struct RelationshipFlags {
    static constexpr std::int64_t notEnforced = 0x02;
    static constexpr std::int64_t cascadeUpdate = 0x100;
    static constexpr std::int64_t cascadeDelete = 0x1000;
    static constexpr std::int64_t cascadeNull = 0x2000;
};

/// One end of a relationship: a table and its columns, in the order of the other end's.
struct RelationshipEnd {
    std::string table;
    PageNo definition{};
    std::vector<std::size_t> columns; ///< places in Table::columns()
};

/// A bond between two tables, or of one with itself, that the file declares and wants kept: each
/// child has a parent with the same values, unless one of its own is null.
struct Relationship {
    std::string name;
    RelationshipEnd parent;
    RelationshipEnd child;
    bool cascadesUpdates = false; ///< a parent's new key becomes its children's
    bool cascadesDeletes = false; ///< children go with their parent
    bool nullsOnDelete = false;   ///< children stay, without a parent
};

/// The relationships that `table` has a part in, by MSysRelationships and by its own index blocks,
/// each once; those declared as not to be enforced left out, and those with tables or columns that
/// aren't there.
/// @throws Error{corrupt} if the columns of one aren't all told.
[[nodiscard]] std::vector<Relationship> relationshipsOf(Database& database, const Table& table);

/// The names of the columns of `table`, in quotes: "banco", "agencia".
[[nodiscard]] std::string columnNames(const Table& table, std::span<const std::size_t> columns);
[[nodiscard]] Row valuesOf(const RowView& row, std::span<const std::size_t> columns);
/// Such values for a message: 7, "SP"; empty if one of them has no plain
/// form.
[[nodiscard]] std::string shownKey(const Row& key);
[[nodiscard]] bool hasNull(const Row& key);

/// The rows of a table whose `columns` have the `values` (none of them null), found through an
/// index that begins with these columns, or by a scan where there is none.
[[nodiscard]] std::vector<RowId> rowsWith(const Table& table, std::span<const std::size_t> columns,
                                          std::span<const Value> values, const Collation& order);
/// Whether there is such an index.
[[nodiscard]] bool hasIndexOver(const Table& table, std::span<const std::size_t> columns);
/// Whether there is any such row.
[[nodiscard]] bool hasRowWith(const Table& table, std::span<const std::size_t> columns,
                              std::span<const Value> values, const Collation& order);

} // namespace jet
