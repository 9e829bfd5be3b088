#pragma once

#include "jet/Database.h"

#include <optional>
#include <string>
#include <vector>

/// Writes rules into a database file, as the back-office's program keeps them there: properties of
/// tables (MSysObjects.LvProp) and relationships (MSysRelationships).
///
///     setRules(database, "cheques", {{.column = "valor", .rule = ">0"}});
///     addRelationship(database, {"clientes", "cheques", {"cliente"}, "clientes", {"codigo"}});

/// What is kept of one column, or of the table where `column` is empty.
struct FileRule {
    std::string column{};
    std::optional<bool> required{};
    std::optional<bool> allowZeroLength{};
    std::string defaultValue{};
    std::string rule{};
    std::string message{};
};

struct FileRelationship {
    static constexpr std::int64_t kNotEnforced = 0x02;
    static constexpr std::int64_t kCascadeUpdate = 0x100;
    static constexpr std::int64_t kCascadeDelete = 0x1000;
    static constexpr std::int64_t kCascadeNull = 0x2000;

    std::string name;
    std::string child;
    std::vector<std::string> childColumns;
    std::string parent;
    std::vector<std::string> parentColumns;
    std::int64_t flags = 0;
};

/// The bytes of an LvProp that says `rules`.
[[nodiscard]] jet::Bytes propertyBytes(jet::Version version, const std::vector<FileRule>& rules);

/// Stores an LvProp for a table.
void setProperties(jet::Database& database, const std::string& table, const jet::Bytes& bytes);
/// Stores one that says `rules`.
void setRules(jet::Database& database, const std::string& table,
              const std::vector<FileRule>& rules);
void addRelationship(jet::Database& database, const FileRelationship& relationship);

/// Enters an object into the catalog, in the folder of tables and queries unless said otherwise.
jet::RowId enterObject(jet::Database& database, std::int64_t id, const std::string& name,
                       std::int64_t type, std::int64_t parent = 0x0F000001);
