#include "ado/Migration.h"
#include "ado/migrate/BinaryRows.h"
#include "ado/migrate/RowDigest.h"
#include "ado/migrate/ServerRules.h"
#include "ado/migrate/ServerTables.h"
#include "ado/server/ServerCopy.h"
#include "ado/server/ServerSchema.h"
#include "jet/Database.h"
#include "jet/Error.h"
#include "jet/FileSteps.h"
#include "jet/Rules.h"

#include <algorithm>

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
    if (progress)
        progress(from.spec.name, 0, all);
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
    copyOut(wire.line(), "copy (" + from.rows + ") to stdout (format binary)",
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

/// As far as the file takes them; what it doesn't is told and left out.
void addExtras(jet::Database& database, jet::Extras& extras, std::vector<std::string>& notes) {
    const auto addAll = [&](auto& all, auto&& add) {
        std::erase_if(all, [&](const auto& one) {
            try {
                add(one);
                return false;
            } catch (const Error& error) {
                if (error.code() == Errc::io || error.code() == Errc::full)
                    throw;
                notes.push_back("O que se guardava de \"" + one.name +
                                "\" não cabe no arquivo e não voltou: " + error.what());
                return true;
            }
        });
    };
    // Those of the file's own windows are of tables that didn't go to the server either.
    std::erase_if(extras.relationships, [](const jet::RelationshipSpec& bond) {
        return bond.child.starts_with("MSys") || bond.parent.starts_with("MSys");
    });
    addAll(extras.objects, [&](const auto& one) { jet::addExtra(database, one); });
    addAll(extras.relationships, [&](const auto& one) { jet::relate(database, one); });
}

/// Whether two tables' notes say the same, as a file of another version may not to the byte.
bool saySame(const jet::Bytes& one, const jet::Bytes& other) {
    const jet::TextCodec codec(jet::Version::jet4);
    return one == other ||
           jet::recodedProperties(one, codec, codec) == jet::recodedProperties(other, codec, codec);
}

void compare(jet::Database& database, const jet::Extras& extras) {
    const auto is = [](const jet::ExtraObject& one, const jet::ExtraObject& other) {
        return one.type == other.type && one.name == other.name && one.link == other.link &&
               one.steps.size() == other.steps.size() && saySame(one.properties, other.properties);
    };
    const jet::Extras there = jet::extrasOf(database);
    const auto require = [&](const std::string& name, bool same) {
        if (!same)
            throw Error(Errc::corrupt, "A migração não foi aproveitada: o que o arquivo tem de \"" +
                                           name + "\" não é o que o servidor guardava.");
    };
    for (const jet::ExtraObject& object : extras.objects)
        require(object.name, std::ranges::any_of(there.objects,
                                                 [&](const auto& one) { return is(one, object); }));
    for (const jet::RelationshipSpec& bond : extras.relationships)
        require(bond.name,
                std::ranges::find(there.relationships, bond) != there.relationships.end());
}

Migration bringBack(const std::string& address, const std::filesystem::path& file,
                    jet::Version version, const jet::Progress& progress, jet::Disk& disk) {
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
    ServerRules rules = serverRules(wire, tables);
    result.notes = std::move(rules.notes);
    std::vector<TableDigest> digests;
    digests.reserve(tables.size());
    jet::UnnamedFile part(file, disk);
    jet::Database::create(part.path(), version, disk);
    jet::Database::Options options;
    options.disk = &disk;
    {
        jet::Database database(part.path(), options);
        for (const ServerTableSpec& table : tables)
            database.createTable(table.spec);
        for (const ServerTableSpec& table : tables)
            digests.push_back(fill(wire, table, database.table(table.spec.name), progress));
        database.flush();
        addExtras(database, rules.extras, result.notes);
    }
    {
        options.readOnly = true;
        jet::Database database(part.path(), options);
        compare(database, rules.extras);
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

} // namespace

Migration migrateToFile(const std::string& address, const std::filesystem::path& file,
                        jet::Version version, const jet::Progress& progress, jet::Disk& disk) {
    try {
        return bringBack(address, file, version, progress, disk);
    } catch (const Error& error) {
        if (error.code() != Errc::offline)
            throw;
        throw Error(Errc::offline, "A conexão com o servidor caiu no meio da migração. O arquivo "
                                   "não foi feito: repita-a.");
    }
}

} // namespace ado
