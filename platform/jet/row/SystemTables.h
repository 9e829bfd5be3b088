#pragma once

#include "jet/page/Format.h"

#include <string_view>

/// What the system's own tables have alike in every file of the format.
namespace jet {

/// A table's number in the catalog is the page of its definition, in these bits.
inline constexpr std::uint32_t kObjectPageMask = 0x00FFFFFF;

/// The objects that every catalog has beside those four tables, by number. kTablesObject,
/// kDatabasesObject and kRelationshipsObject are folders in kRootObject.
inline constexpr std::uint32_t kRootObject = 0x0F000000;
inline constexpr std::uint32_t kTablesObject = 0x0F000001;
inline constexpr std::uint32_t kDatabasesObject = 0x0F000002;
inline constexpr std::uint32_t kRelationshipsObject = 0x0F000003;
inline constexpr std::uint32_t kDatabaseObject = 0x10000000; ///< "MSysDb", in kDatabasesObject

/// Column Type of the catalog.
enum ObjectType : std::int16_t {
    tableObject = 1,
    databaseObject = 2,
    containerObject = 3,
    linkedOdbcObject = 4,
    queryObject = 5,
    linkedTableObject = 6,
    relationshipObject = 8,
    documentObject = -32757 ///< of the database: its title, its author
};

// Column Flags of the catalog.
inline constexpr std::uint32_t kSystemFlag = 0x80000000;
inline constexpr std::uint32_t kHiddenFlag = 0x00000002;

/// Whether a table is one of the user, by its row in the catalog.
[[nodiscard]] constexpr bool isUserTable(std::uint32_t flags, std::string_view name) noexcept {
    return (flags & (kSystemFlag | kHiddenFlag)) == 0 && !name.starts_with("MSys");
}

/// What every catalog has, in the order in which a new file gets it.
struct CoreObject {
    std::uint32_t id;
    std::uint32_t parent;
    const char* name;
    ObjectType type;
};
inline constexpr CoreObject kCoreObjects[] = {
    {kTablesObject,              kRootObject,      "Tables",            containerObject},
    {kDatabasesObject,           kRootObject,      "Databases",         containerObject},
    {kRelationshipsObject,       kRootObject,      "Relationships",     containerObject},
    {kDatabaseObject,            kDatabasesObject, "MSysDb",            databaseObject },
    {number(kObjectsPage),       kTablesObject,    "MSysObjects",       tableObject    },
    {number(kRightsPage),        kTablesObject,    "MSysACEs",          tableObject    },
    {number(kQueriesPage),       kTablesObject,    "MSysQueries",       tableObject    },
    {number(kRelationshipsPage), kTablesObject,    "MSysRelationships", tableObject    }
};

} // namespace jet
