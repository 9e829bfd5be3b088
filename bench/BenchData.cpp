#include "bench/BenchData.h"

#include "jet/Database.h"
#include "jet/Disk.h"
#include "schema/ShopSchema.h"
#include "tools/SampleData.h"

#include <sqlite3.h>

#include <fstream>
#include <map>
#include <random>
#include <stdexcept>
#include <string>

namespace {

constexpr std::int64_t kChequesOfAClient = 50;
constexpr std::uint64_t kSeed = 20260331;

const char* typeOf(const jet::Column& column) {
    switch (column.type) {
    case jet::ColumnType::text:
    case jet::ColumnType::memo:
        return " TEXT COLLATE NOCASE";
    case jet::ColumnType::date:
        return " REAL";
    default:
        return " INTEGER";
    }
}

void bind(sqlite3_stmt* statement, int at, const jet::Value& value) {
    if (const auto* text = std::get_if<std::string>(&value))
        sqlite3_bind_text(statement, at, text->c_str(), static_cast<int>(text->size()),
                          SQLITE_TRANSIENT);
    else if (const auto* whole = std::get_if<std::int64_t>(&value))
        sqlite3_bind_int64(statement, at, *whole);
    else if (const auto* amount = std::get_if<jet::Currency>(&value))
        sqlite3_bind_int64(statement, at, amount->tenThousandths);
    else if (const auto* date = std::get_if<jet::Date>(&value))
        sqlite3_bind_double(statement, at, date->days);
    else if (const auto* yes = std::get_if<bool>(&value))
        sqlite3_bind_int64(statement, at, *yes ? 1 : 0);
    else
        sqlite3_bind_null(statement, at);
}

void copyTable(jet::Table& table, Sqlite& target) {
    std::string create = "create table " + table.name() + "(";
    std::string insert = "insert into " + table.name() + " values(";
    for (const jet::Column& column : table.columns()) {
        const bool first = &column == table.columns().data();
        create += (first ? "\"" : ",\"") + column.name + "\"" +
                  (column.autonumber ? " INTEGER PRIMARY KEY" : typeOf(column));
        insert += first ? "?" : ",?";
    }
    target.run((create + ")").c_str());
    sqlite3_stmt* statement = target.prepare((insert + ")").c_str());
    jet::RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next()) {
        const jet::Row values = row.row().values();
        for (std::size_t i = 0; i < values.size(); ++i)
            bind(statement, static_cast<int>(i) + 1, values[i]);
        target.check(sqlite3_step(statement));
        sqlite3_reset(statement);
    }
    for (const jet::Index& index : table.indexes())
        if (!index.primary)
            target.run(("create index " + table.name() + "_" + index.name + " on " + table.name() +
                        "(\"" + table.columns()[index.columns[0].column].name + "\")")
                           .c_str());
}

ShopFiles make(std::int64_t cheques) {
    const std::string name = std::to_string(cheques);
    ShopFiles files{benchFolder() / (name + ".mdb"), benchFolder() / (name + ".sqlite"),
                    std::max<std::int64_t>(20, cheques / kChequesOfAClient)};
    makeShop(files.mdb, {files.clients, 20, cheques, cheques / 100});
    copyToSqlite(files.mdb, files.sqlite);
    return files;
}

/// A copy that is on the disk: else the first durable commit that is measured would wait for all of
/// it.
void copyToDisk(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
    int error = 0;
    const auto file = jet::Disk::system().open(to, jet::Disk::Mode::readWrite, error);
    if (!file || file->sync() != 0)
        throw std::runtime_error("could not write " + to.string());
}

} // namespace

const std::filesystem::path& benchFolder() {
    struct Folder {
        std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     ("valtrino-bench-" + std::to_string(std::random_device{}()));
        Folder() { std::filesystem::create_directory(path); }
        ~Folder() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    };
    static const Folder made;
    return made.path;
}

void makeShop(const std::filesystem::path& mdb, const SampleSize& size) {
    jet::Database::create(mdb, jet::Version::jet4);
    jet::Database database(mdb);
    shop::createTables(database);
    fillWithSamples(database, size, kSeed, jet::Date::of({2026, 3, 31}));
}

void copyToSqlite(const std::filesystem::path& mdb, const std::filesystem::path& sqlite) {
    jet::Database database(mdb);
    Sqlite target(sqlite);
    target.run("begin");
    for (const std::string& table : database.tableNames())
        copyTable(database.table(table), target);
    target.run("commit");
    target.run("analyze");
}

const ShopFiles& shopFiles(std::int64_t cheques) {
    static std::map<std::int64_t, ShopFiles> made;
    const auto known = made.find(cheques);
    return known != made.end() ? known->second : made.emplace(cheques, make(cheques)).first->second;
}

double memoryOf(const char* which) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(which))
            return std::stod(line.substr(std::string(which).size() + 1)) / 1024;
    return 0;
}

ShopFiles shopCopy(std::int64_t cheques) {
    const ShopFiles& original = shopFiles(cheques);
    ShopFiles copy{benchFolder() / "copy.mdb", benchFolder() / "copy.sqlite", original.clients};
    copyToDisk(original.mdb, copy.mdb);
    copyToDisk(original.sqlite, copy.sqlite);
    return copy;
}

Sqlite::Sqlite(const std::filesystem::path& path) {
    check(sqlite3_open(path.c_str(), &handle_));
    run("pragma synchronous=full");
}

Sqlite::~Sqlite() {
    while (sqlite3_stmt* statement = sqlite3_next_stmt(handle_, nullptr))
        sqlite3_finalize(statement);
    sqlite3_close(handle_);
}

void Sqlite::run(const char* sql) { check(sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr)); }

sqlite3_stmt* Sqlite::prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(handle_, sql, -1, &statement, nullptr));
    return statement;
}

void Sqlite::check(int result) const {
    if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE)
        throw std::runtime_error(sqlite3_errmsg(handle_));
}
