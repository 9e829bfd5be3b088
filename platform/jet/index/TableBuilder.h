#pragma once

#include "jet/TableSpec.h"
#include "jet/index/IndexTree.h"
#include "jet/page/UsageMap.h"

namespace jet {

/// One of the four tables that every file has.
struct SystemTable {
    PageNo page; ///< of its definition
    TableSpec table;
    const char* account = nullptr; ///< the column, if any, that names accounts
};
[[nodiscard]] std::vector<SystemTable> systemTables(Version version);

/// Makes an empty table whose definition starts on `page` (already taken): its maps, the roots of
/// its indexes, and the definition itself. `order` and `columnMark` are those of the file's header.
void buildTable(Pager& pager, PageAllocator& pages, PageNo page, const TableSpec& table,
                const SortOrder& order, std::uint16_t columnMark);
void buildTable(Pager& pager, PageAllocator& pages, const SystemTable& table,
                const SortOrder& order, std::uint16_t columnMark);

/// Gives a table the columns and indexes of `more` besides its own; these trees are empty. Rows
/// stay as they are, the definition's first pages too. `table` as parseDefinition() has read it; it
/// has the columns that the indexes name, or `more` has.
void extendTable(Pager& pager, PageAllocator& pages, const TableDefinition& table,
                 const TableSpec& more, const SortOrder& order, std::uint16_t columnMark);

/// Puts a logical index over a tree that is there into a table's definition; the one of the same
/// number, if any, becomes it, and keeps its name.
void putLogicalIndex(Pager& pager, PageAllocator& pages, const TableDefinition& table,
                     const LogicalIndex& index, const SortOrder& order);

} // namespace jet
