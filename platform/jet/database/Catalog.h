#pragma once

#include "jet/Table.h"
#include "jet/page/Header.h"

namespace jet {

/// A table that the catalog names.
struct CatalogEntry {
    std::string name;
    PageNo definition;
    bool user; ///< not one of the system's own or a hidden one
};

/// The tables of a file, in the order the catalog has them. Entries that don't name a page of the
/// file are passed over.
[[nodiscard]] std::vector<CatalogEntry> readCatalog(const Table& objects, std::uint32_t pageCount);

/// What the catalog keeps of a table besides its definition (see Properties.h); empty if nothing.
[[nodiscard]] Bytes tableProperties(const Table& objects, PageNo definition);

/// Enters a new table, with the owner and the rights that the file's other tables have.
void addToCatalog(Table& objects, Table& rights, const std::string& name, PageNo definition);

/// Enters an object that is no table, in the folder `parent`. @return its number.
std::int64_t addToCatalog(Table& objects, Table& rights, const std::string& name, std::int64_t type,
                          std::uint32_t parent, std::int64_t flags);

/// Enters the objects that every file's catalog has, and their rights: all of them in a new file,
/// those that are missing in another.
void completeCatalog(Table& objects, Table& rights, const Accounts& accounts);

} // namespace jet
