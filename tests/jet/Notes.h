#pragma once

#include "jet/ShopWork.h"

/// A database with one table of texts, for tests of what happens around it.
inline jet::TableSpec notes() { return {"notas", {{"texto", jet::ColumnType::text, 250}}, {}}; }

/// Another row, on the disk on return.
inline void note(jet::Database& file, const std::string& text) {
    file.table("notas").insert(jet::Row{text});
    file.flush();
}

/// A disk with such a database at kPath, and one row in it.
inline DiskImage diskOfNotes(jet::Version version) {
    MemoryDisk disk;
    jet::Database::create(kPath, version, disk);
    {
        jet::Database file(kPath, on(disk));
        file.createTable(notes());
        note(file, "primeira");
    }
    return disk.image();
}
