#include "ado/file/FileProvider.h"

#include "ado/file/FileCursor.h"
#include "ado/file/FileFollowing.h"

namespace ado {

void FileProvider::end() {
    if (inTransaction())
        rollback();
    database().flush();
}

std::unique_ptr<Cursor> FileProvider::open(const std::string& source, CursorType type,
                                           LockType /*lock*/, CommandType command) {
    // All that it reads to begin with, in one section.
    return database().onSnapshot(
        [&] { return std::make_unique<FileCursor>(session_, source, type, command); });
}

std::unique_ptr<Following> FileProvider::follow(const std::string& table,
                                                const std::vector<std::string>& columns,
                                                Following::Take take) {
    return std::make_unique<FileFollowing>(database(), table, columns, std::move(take));
}

std::string FileProvider::place() const { return database().path().string(); }

std::string FileProvider::identity() const {
    std::error_code error;
    const auto canonical = std::filesystem::canonical(database().path(), error);
    return error ? "" : canonical.string();
}

std::optional<std::string> FileProvider::readOnlyReason() { return database().readOnlyReason(); }

bool FileProvider::isBroken() const noexcept { return database().isBroken(); }

bool FileProvider::hasTable(std::string_view name) { return database().hasTable(name); }

TableShape FileProvider::shape(std::string_view name) { return shapeOf(database().table(name)); }

std::vector<std::size_t> FileProvider::keyOf(std::string_view name) {
    const jet::Table& table = database().table(name);
    std::vector<std::size_t> places;
    if (const auto primary = table.primaryKey())
        for (const jet::IndexColumn& column : table.indexes()[*primary].columns)
            places.push_back(column.column);
    return places;
}

std::optional<std::string> FileProvider::readOnlyReason(std::string_view table) {
    return database().table(table).readOnlyReason();
}

void FileProvider::createTable(const jet::TableSpec& spec) { database().createTable(spec); }

void FileProvider::claim() { database().claim(); }

Store::Tally FileProvider::tally() const noexcept {
    const jet::Database::Tally tally = database().tally();
    return {tally.written, tally.gathered};
}

void FileProvider::onSnapshot(const std::function<void()>& body) { database().onSnapshot(body); }

std::shared_ptr<void> FileProvider::hold() { return std::make_shared<jet::Reading>(database()); }

std::uint64_t FileProvider::generation() { return database().generation(); }

bool FileProvider::isTakenByOther() const { return database().isTakenByOther(); }

} // namespace ado
