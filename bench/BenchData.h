#pragma once

#include "tools/SampleData.h"

#include <cstdint>
#include <filesystem>
#include <memory>

struct sqlite3;
struct sqlite3_stmt;

/// A folder that goes with the program.
const std::filesystem::path& benchFolder();
/// A new database file of the shop with invented rows.
void makeShop(const std::filesystem::path& mdb, const SampleSize& size);

/// A new database of SQLite with the same tables, columns, keys and indexes.
void copyToSqlite(const std::filesystem::path& mdb, const std::filesystem::path& sqlite);

/// The same invented shop twice: as our database and as one of SQLite, with the same columns, keys
/// and indexes. Made when first asked for, in a temporary folder that goes with the program.
struct ShopFiles {
    std::filesystem::path mdb;
    std::filesystem::path sqlite;
    std::int64_t clients;
};
const ShopFiles& shopFiles(std::int64_t cheques);

/// What the program takes, in MB: "VmRSS" at this moment, "VmHWM" the most so far.
double memoryOf(const char* which);

/// Copies of both, to be written to.
ShopFiles shopCopy(std::int64_t cheques);

/// SQLite as a shop would be given it: durable commits, everything else as it comes.
class Sqlite {
public:
    explicit Sqlite(const std::filesystem::path& path);
    ~Sqlite();
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;

    void run(const char* sql);
    sqlite3_stmt* prepare(const char* sql); ///< ours until the database closes
    void check(int result) const;
    [[nodiscard]] sqlite3* handle() const noexcept { return handle_; }

private:
    sqlite3* handle_ = nullptr;
};
