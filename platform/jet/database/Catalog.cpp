#include "jet/database/Catalog.h"

#include "jet/row/SystemTables.h"

#include <set>

namespace jet {

namespace {

// Permission masks as the engine gives them to new objects.
constexpr std::int64_t kFullTable = 1048319;
constexpr std::int64_t kReadDefinition = 393216;
constexpr std::int64_t kUsersRead = 20;

/// Places of the columns this file reads and writes, found by name.
struct Objects {
    explicit Objects(const Table& table)
        : id(at(table, "Id")), parent(at(table, "ParentId")), name(at(table, "Name")),
          type(at(table, "Type")), created(at(table, "DateCreate")),
          updated(at(table, "DateUpdate")), owner(at(table, "Owner")), flags(at(table, "Flags")) {}

    static std::size_t at(const Table& table, const char* column) {
        if (const auto found = table.findColumn(column))
            return *found;
        corrupt(table.definition().page(),
                "a tabela de sistema \"" + table.name() + "\" não tem a coluna " + column);
    }

    std::size_t id, parent, name, type, created, updated, owner, flags;
};

struct Rights {
    explicit Rights(const Table& table)
        : object(Objects::at(table, "ObjectId")), account(Objects::at(table, "SID")),
          mask(Objects::at(table, "ACM")), inherited(Objects::at(table, "FInheritable")) {}
    std::size_t object, account, mask, inherited;
};

void addObject(Table& table, std::int64_t id, std::int64_t parent, const std::string& name,
               std::int64_t type, const Bytes& owner, std::int64_t flags) {
    const Objects at(table);
    Row row(table.columns().size());
    row[at.id] = id;
    row[at.parent] = parent;
    row[at.name] = name;
    row[at.type] = type;
    row[at.created] = row[at.updated] = Date::now();
    row[at.owner] = owner;
    row[at.flags] = flags;
    table.insert(row);
}

void addRight(Table& table, std::int64_t object, const Bytes& account, std::int64_t mask,
              bool inherited) {
    const Rights at(table);
    Row row(table.columns().size());
    row[at.object] = object;
    row[at.account] = account;
    row[at.mask] = mask;
    row[at.inherited] = inherited;
    table.insert(row);
}

} // namespace

std::vector<CatalogEntry> readCatalog(const Table& objects, std::uint32_t pageCount) {
    const Objects at(objects);
    std::vector<CatalogEntry> tables;
    std::string name;
    RowCursor cursor = objects.scan();
    for (bool there = cursor.first(); there; there = cursor.next()) {
        const RowView& row = cursor.row();
        const std::int64_t page = row.integer(at.id) & kObjectPageMask;
        if (row.integer(at.type) != tableObject || row.isNull(at.name) || page < 2 ||
            page >= pageCount)
            continue;
        row.text(at.name, name);
        tables.push_back({name, static_cast<PageNo>(page),
                          (row.integer(at.flags) & (kSystemFlag | kHiddenFlag)) == 0});
    }
    return tables;
}

Bytes tableProperties(const Table& objects, PageNo definition) {
    const Objects at(objects);
    const std::size_t properties = Objects::at(objects, "LvProp");
    RowCursor cursor = objects.scan();
    for (bool there = cursor.first(); there; there = cursor.next()) {
        const RowView& row = cursor.row();
        if (row.integer(at.type) != tableObject ||
            (row.integer(at.id) & kObjectPageMask) != number(definition) || row.isNull(properties))
            continue;
        const Value stored = row.value(properties);
        if (const auto* bytes = std::get_if<Bytes>(&stored))
            return *bytes;
    }
    return {};
}

namespace {

/// With the owner and the rights that the file's other objects have.
void addOwned(Table& objects, Table& rights, std::int64_t id, std::int64_t parent,
              const std::string& name, std::int64_t type, std::int64_t flags) {
    const Objects at(objects);
    const Rights rightAt(rights);
    Bytes admin;
    RowCursor object = objects.scan();
    for (bool there = object.first(); there && admin.empty(); there = object.next())
        if (object.row().integer(at.id) == kDatabaseObject) {
            const auto owner = object.row().stored(at.owner);
            admin.assign(owner.begin(), owner.end());
        }
    Bytes users;
    RowCursor right = rights.scan();
    for (bool there = right.first(); there && users.empty(); there = right.next())
        if (right.row().integer(rightAt.object) == number(objects.definition().page()) &&
            right.row().integer(rightAt.mask) == kUsersRead) {
            const auto account = right.row().stored(rightAt.account);
            users.assign(account.begin(), account.end());
        }

    addObject(objects, id, parent, name, type, admin, flags);
    for (const Bytes& account : {admin, users})
        if (!account.empty())
            addRight(rights, id, account, kFullTable, false);
}

} // namespace

void addToCatalog(Table& objects, Table& rights, const std::string& name, PageNo definition) {
    addOwned(objects, rights, number(definition), kTablesObject, name, tableObject, 0);
}

std::int64_t addToCatalog(Table& objects, Table& rights, const std::string& name, std::int64_t type,
                          std::uint32_t parent, std::int64_t flags) {
    constexpr std::uint32_t kFirst = 0x80000000; // tables have the lower ones
    const Objects at(objects);
    std::uint32_t next = kFirst;
    RowCursor object = objects.scan();
    for (bool there = object.first(); there; there = object.next())
        if (const auto taken = static_cast<std::uint32_t>(object.row().integer(at.id));
            taken >= next)
            next = taken + 1;
    const auto id = static_cast<std::int32_t>(next);
    addOwned(objects, rights, id, parent, name, type, flags);
    return id;
}

void completeCatalog(Table& objects, Table& rights, const Accounts& accounts) {
    std::set<std::int64_t> there;
    {
        const Objects at(objects);
        RowCursor object = objects.scan();
        for (bool found = object.first(); found; found = object.next())
            there.insert(object.row().integer(at.id));
    }
    for (const CoreObject& core : kCoreObjects)
        if (!there.contains(core.id))
            addObject(objects, core.id, core.parent, core.name, core.type,
                      core.type == databaseObject ? accounts.admin : accounts.engine,
                      static_cast<std::int32_t>(kSystemFlag));

    const struct {
        std::int64_t object;
        const Bytes& account;
        std::int64_t mask;
        bool inherited;
    } rows[] = {
        {number(kObjectsPage),       accounts.admin,   kReadDefinition, false},
        {number(kRightsPage),        accounts.admin,   kReadDefinition, false},
        {number(kQueriesPage),       accounts.admin,   kReadDefinition, false},
        {number(kRelationshipsPage), accounts.admin,   917504,          false},
        {kTablesObject,              accounts.creator, 983294,          true },
        {kTablesObject,              accounts.admin,   393217,          false},
        {kRelationshipsObject,       accounts.creator, 983294,          true },
        {kRelationshipsObject,       accounts.admin,   393217,          false},
        {kDatabasesObject,           accounts.admin,   kReadDefinition, false},
        {kDatabaseObject,            accounts.admin,   393230,          false},
        {kDatabaseObject,            accounts.users,   14,              false},
        {number(kQueriesPage),       accounts.users,   kUsersRead,      false},
        {number(kRelationshipsPage), accounts.users,   kUsersRead,      false},
        {number(kObjectsPage),       accounts.users,   kUsersRead,      false},
        {kTablesObject,              accounts.users,   kFullTable,      true },
        {kRelationshipsObject,       accounts.users,   1048575,         true }
    };
    for (const auto& row : rows)
        if (!there.contains(row.object))
            addRight(rights, row.object, row.account, row.mask, row.inherited);
}

} // namespace jet
