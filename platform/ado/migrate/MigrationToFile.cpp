#include "ado/Migration.h"
#include "ado/migrate/BinaryRows.h"
#include "ado/migrate/RowDigest.h"
#include "ado/migrate/ServerTables.h"
#include "ado/server/ServerCopy.h"
#include "ado/server/ServerSchema.h"
#include "jet/Database.h"
#include "jet/Error.h"
#include "jet/FileSteps.h"

namespace ado {

namespace {

using jet::Errc;
using jet::Error;

constexpr std::uint64_t kToldEvery = 4096; ///< rows

std::uint64_t countOf(ServerWire& wire, const ServerTableSpec& table) {
    return std::stoull(
        wire.run("select count(*) from (" + table.rows + ") t").field(0, 0).value_or("0"));
}

/// All rows of a table, as the server has them.
TableDigest fill(ServerWire& wire, const ServerTableSpec& from, jet::Table& to,
                 const jet::Progress& progress) {
    const std::uint64_t all = countOf(wire, from);
    TableDigest digest(from.spec);
    to.addAtEnd();
    BinaryRows rows(from.spec, [&](jet::Row& row) {
        try {
            static_cast<void>(to.insert(row));
        } catch (const Error& error) {
            throw Error(error.code(), "O registro " + std::to_string(digest.rows().size() + 1) +
                                          " da tabela \"" + from.spec.name +
                                          "\" não cabe num arquivo. " + error.what());
        }
        digest.add(row);
        if (progress && digest.rows().size() % kToldEvery == 0)
            progress(from.spec.name, digest.rows().size(), all);
    });
    copyOut(wire, "copy (" + from.rows + ") to stdout (format binary)",
            [&](std::string_view piece) { rows.add(piece); });
    to.passNumber(from.lastNumber);
    return digest;
}

/// The file as anybody opens it, against what was read of the server.
void compare(jet::Database& database, const jet::TableSpec& spec, const TableDigest& digest) {
    jet::RowCursor row = database.table(spec.name).scan();
    std::size_t number = 0;
    bool there = row.first();
    for (; there && number < digest.rows().size(); there = row.next(), ++number)
        if (digestOf(row.row().values()) != digest.rows()[number])
            break;
    if (there || number < digest.rows().size())
        throw Error(Errc::corrupt, "A migração não foi aproveitada: na tabela \"" + spec.name +
                                       "\" o registro " + std::to_string(number + 1) +
                                       " no arquivo não é o do servidor.");
}

} // namespace

Migration migrateToFile(const std::string& address, const std::filesystem::path& file,
                        jet::Version version, const jet::Progress& progress) {
    jet::Disk& disk = jet::Disk::system();
    jet::requireAbsent(file, disk);
    ServerWire wire(address);
    for (const char* const setting :
         {"set statement_timeout = 0", "set idle_in_transaction_session_timeout = 0",
          "set synchronize_seqscans = off"})
        static_cast<void>(wire.run(setting));
    wire.beginReading();
    requireShop(wire);
    Migration result{wire.place(), {}, {}};
    const std::vector<ServerTableSpec> tables = serverTables(wire);
    std::vector<TableDigest> digests;
    digests.reserve(tables.size());
    jet::UnnamedFile part(file, disk);
    jet::Database::create(part.path(), version);
    {
        jet::Database database(part.path());
        for (const ServerTableSpec& table : tables)
            database.createTable(table.spec);
        for (const ServerTableSpec& table : tables)
            digests.push_back(fill(wire, table, database.table(table.spec.name), progress));
        database.flush();
    }
    {
        jet::Database::Options options;
        options.readOnly = true;
        jet::Database database(part.path(), options);
        for (std::size_t i = 0; i < tables.size(); ++i) {
            compare(database, tables[i].spec, digests[i]);
            std::vector<std::pair<std::string, std::string>> sums;
            for (const TableDigest::Sum& sum : digests[i].sums())
                if (sum.total)
                    sums.emplace_back(tables[i].spec.columns[sum.column].name,
                                      TableDigest::text(sum));
            result.tables.push_back({tables[i].spec.name, digests[i].rows().size(),
                                     digests[i].whole(), std::move(sums)});
        }
    }
    jet::requireAbsent(file, disk);
    part.takeName();
    return result;
}

} // namespace ado
