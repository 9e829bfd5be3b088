#pragma once

#include "ado/TableShape.h"
#include "ado/dialect/Spelling.h"
#include "ado/server/ServerWire.h"

#include <map>

namespace ado {

/// A table of the shop on the server.
struct ServerTable {
    std::string name;
    unsigned number = 0; ///< the server's
    std::vector<jet::Column> columns;
    /// The server's own of each column.
    struct Type {
        unsigned number;
        int modifier;
    };
    std::vector<Type> types;
    std::vector<std::size_t> key; ///< places of the primary key's columns; none without one
    /// A foreign key of another table, or of this one, by which rows there change with those here.
    struct Bond {
        unsigned child;                   ///< the server's number of that table
        std::vector<std::size_t> columns; ///< here, and in their order there
        std::vector<std::size_t> childColumns;
        bool cascadesUpdates;
        bool cascadesDeletes;
        bool nullsOnDelete;
    };
    std::vector<Bond> bonds;

    [[nodiscard]] TableShape shape() const { return {name, columns}; }
};

/// The tables that the server has, as they were when last asked for.
class ServerCatalog {
public:
    /// Asks for all of them. Those that were known stay where they are.
    void load(ServerWire& wire);
    [[nodiscard]] bool isEmpty() const noexcept { return tables_.empty(); }

    /// By name, without regard to case; null if there is none.
    [[nodiscard]] const ServerTable* find(std::string_view name) const;
    /// The same by the server's number.
    [[nodiscard]] const ServerTable* find(unsigned number) const;
    /// The name of the table that the server has a number for, or "".
    [[nodiscard]] std::string nameOf(unsigned number) const;
    /// How the server spells names. @throws Error{notFound} of a table that the shop hasn't.
    [[nodiscard]] Spelling spelling() const;

private:
    std::map<std::string, std::unique_ptr<ServerTable>> tables_; ///< by folded name
    std::vector<std::unique_ptr<ServerTable>> former_;           ///< whoever is open on one has it
};

} // namespace ado
