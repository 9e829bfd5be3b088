#pragma once

#include "jet/check/CheckTable.h"
#include "jet/row/RowCursor.h"

namespace jet {

/// A row of the catalog that names a table of this file.
struct CatalogTable {
    std::string name;
    PageNo definition{};
    bool user{};
};

/// For a check: the catalog, table MSysObjects, and the system's tables that name what is in it.
class CatalogCheck {
public:
    /// Reads the rows that `objects` has found, and compares them with each other.
    CatalogCheck(const CheckContext& context, const TableCheck& objects);

    [[nodiscard]] const std::vector<CatalogTable>& tables() const noexcept { return tables_; }

    /// The tables that could be read.
    using Tables = std::vector<std::unique_ptr<TableCheck>>;

    /// The rows of MSysRelationships against each other and the tables they name.
    void checkRelationships(const TableCheck& relationships, const Tables& tables) const;
    /// The rows of MSysACEs.
    void checkRights(const TableCheck& rights) const;
    /// The indexes that stand for a relationship, against those of the other table.
    void checkPartners(const Tables& tables) const;

private:
    static constexpr const char* kWhere = "catálogo";
    [[nodiscard]] static std::string inQuotes(const std::string& name) {
        return "\"" + name + "\"";
    }

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
    void requireColumn(const Tables& tables, const std::string& table, const std::string& column,
                       RowId row) const;
    void checkProperties(const Object& object, const RowView& row, std::size_t column) const;
    /// Rows that can't be read are left out: checkRows() has told of them.
    template <class Visit>
    void forEachRow(const TableCheck& table, Visit&& visit) const {
        RowReader reader(context_.pager, table.definition());
        for (std::size_t i = 0; i < table.rowCount(); ++i) {
            try {
                if (const RowView* const row = reader.read(table.row(i)))
                    visit(table.row(i), *row);
            } catch (const Error& error) {
                if (error.code() == Errc::io)
                    throw;
            }
        }
    }
    [[nodiscard]] std::optional<std::size_t> columnOf(const TableCheck& table,
                                                      const char* name) const;

    const CheckContext& context_;
    std::vector<Object> objects_;
    std::vector<CatalogTable> tables_;
    std::set<std::uint32_t> ids_;
    std::set<std::string> linked_; ///< folded names of tables that are in other files
};

} // namespace jet
