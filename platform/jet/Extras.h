#pragma once

#include "jet/database/Relationships.h"
#include "jet/row/SystemTables.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// What a file keeps beside the definitions and the rows of its tables, for who takes it into
/// another file, of either version.
namespace jet {

class Database;

/// An object of the catalog: what is noted of a table, a query, a link.
struct ExtraObject {
    static constexpr std::int64_t kTable = tableObject;
    static constexpr std::int64_t kDatabase = databaseObject;
    static constexpr std::int64_t kServerLink = linkedOdbcObject;
    static constexpr std::int64_t kQuery = queryObject;
    static constexpr std::int64_t kLink = linkedTableObject;
    static constexpr std::int64_t kDocument = documentObject;

    std::int64_t type = 0;
    std::string name;
    std::int64_t flags = 0;
    /// Of a link: the other file, how to get there, the table's name in it. A null isn't there.
    std::array<Value, 3> link;
    Bytes properties{}; ///< as a Jet 4 file stores them; empty: none
    /// Of a query: rows of MSysQueries without the object's number.
    std::vector<Row> steps{};
    friend bool operator==(const ExtraObject&, const ExtraObject&) = default;
};

/// A relationship as MSysRelationships has it: how a child's columns refer to its parent's.
struct RelationshipSpec {
    std::string name;
    std::string child;
    std::string parent;
    std::vector<std::pair<std::string, std::string>> columns; ///< child's, parent's
    std::int64_t flags = 0;                                   ///< RelationshipFlags
    friend bool operator==(const RelationshipSpec&, const RelationshipSpec&) = default;
};

struct Extras {
    std::vector<ExtraObject> objects;
    std::vector<RelationshipSpec> relationships;
    std::vector<std::string> others; ///< names of forms, reports and the like, which stay behind
};

/// @throws Error{corrupt, io}.
[[nodiscard]] Extras extrasOf(Database& database);

/// Notes it of a table that is there, or enters an object that isn't.
/// @throws Error{notFound} without the table, Error{exists} if the name is taken, Error{outOfRange}
///         for what the file's code page can't say, as Database::commit(). Nothing is changed then.
void addExtra(Database& database, const ExtraObject& object);

/// Declares a relationship; one to be enforced is also told by an index of each of the two tables,
/// where the parent has a unique one of these columns, so that any program enforces it. Rows are
/// not looked at.
/// @throws Error{notFound} without a table or column, Error{exists} if the name is taken,
///         as Database::commit(). Nothing is changed then.
void relate(Database& database, const RelationshipSpec& relationship);

} // namespace jet
