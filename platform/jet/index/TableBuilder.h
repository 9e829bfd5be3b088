#pragma once

#include "jet/TableDefinition.h"
#include "jet/index/IndexTree.h"
#include "jet/page/UsageMap.h"

namespace jet {

/// One column of a definition to be written. `length` in bytes, as the file counts it.
struct NewColumn {
    std::string name;
    ColumnType type;
    std::uint8_t flags;
    std::uint16_t length;
    bool compressed = false;
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;
};

struct NewIndex {
    std::string name;
    std::vector<RealIndex::KeyColumn> columns;
    std::uint8_t flags;
    bool primary = false;
};

struct NewTable {
    std::vector<NewColumn> columns;
    std::vector<NewIndex> indexes;
    bool system = false;
};

/// Makes an empty table whose definition starts on `page` (already taken): its maps, the roots of
/// its indexes, and the definition itself. `order` and `columnMark` are those of the file's header.
void buildTable(Pager& pager, PageAllocator& pages, PageNo page, const NewTable& table,
                const SortOrder& order, std::uint16_t columnMark);

/// The four tables that every file has, by page: 2 to 5.
struct SystemTable {
    PageNo page;
    const char* name;
    NewTable table;
};
[[nodiscard]] std::vector<SystemTable> systemTables(Version version);

} // namespace jet
