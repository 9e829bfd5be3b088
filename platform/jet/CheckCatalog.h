#pragma once

#include "jet/CheckTable.h"

namespace jet {

/// A row of the catalog that names a table of this file.
struct CatalogTable {
    std::string name;
    PageNo definition{};
    bool user{};
};

/// For a check: the catalog, table MSysObjects.
class CatalogCheck {
public:
    /// Reads the rows that `objects` has found, and compares them with each other.
    CatalogCheck(const CheckContext& context, const TableCheck& objects);

    [[nodiscard]] const std::vector<CatalogTable>& tables() const noexcept { return tables_; }

    /// The rows of MSysRelationships against the tables they name. `tables` are those that could be
    /// read.
    void checkRelationships(const TableCheck& relationships,
                            const std::vector<std::unique_ptr<TableCheck>>& tables) const;

private:
    struct Object {
        RowId row;
        std::uint32_t id;
        std::uint32_t parent;
        std::string name;
        std::int64_t type;
        std::uint32_t flags;
    };
    void readObjects(const TableCheck& objects);
    void compareObjects(const TableCheck& objects);
    [[nodiscard]] std::optional<std::size_t> columnOf(const TableCheck& table,
                                                      const char* name) const;

    const CheckContext& context_;
    std::vector<Object> objects_;
    std::vector<CatalogTable> tables_;
    std::set<std::string> linked_; ///< folded names of tables that are in other files
};

} // namespace jet
