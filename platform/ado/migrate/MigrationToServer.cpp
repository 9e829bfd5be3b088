#include "ado/Migration.h"
#include "ado/dialect/Spelling.h"
#include "ado/migrate/BinaryRows.h"
#include "ado/migrate/CopyText.h"
#include "ado/migrate/FileTables.h"
#include "ado/migrate/KeptExtras.h"
#include "ado/migrate/RowDigest.h"
#include "ado/migrate/RuleSql.h"
#include "ado/server/ServerCopy.h"
#include "ado/server/ServerRoles.h"
#include "ado/server/ServerSchema.h"
#include "ado/server/ServerValue.h"
#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/FileSteps.h"

#include <algorithm>
#include <set>

namespace ado {

namespace {

using jet::Errc;
using jet::Error;

constexpr std::size_t kPiece = std::size_t{64} << 10; ///< bytes sent at once
constexpr std::uint64_t kStep = 4096;                 ///< rows between two tellings
constexpr std::size_t kLongestName = 63;              ///< bytes, of anything on the server

constexpr const char* kBroken =
    "A conexão com o servidor caiu no meio da migração. Nada ficou nele: repita-a.";

std::string inQuotes(std::string_view name) { return "\"" + std::string(name) + "\""; }

/// The same, as much of it as a name may have.
std::string shortened(std::string name, std::size_t bytes) {
    if (name.size() <= bytes)
        return name;
    while (bytes > 0 && (static_cast<unsigned char>(name[bytes]) & 0xC0U) == 0x80U)
        --bytes;
    return name.substr(0, bytes);
}

class ToServer {
public:
    ToServer(const std::filesystem::path& file, const std::string& address,
             const jet::Progress& progress)
        : database_(file, onlyToRead()), address_(address), wire_(address), progress_(progress) {
        result_.place = wire_.place();
    }

    void load(const ShopRoles& roles, std::span<const jet::TableSpec> wanted,
              std::span<const jet::TableSpec> further) {
        // However long it takes.
        for (const char* const unbound :
             {"set statement_timeout = 0", "set idle_in_transaction_session_timeout = 0"})
            static_cast<void>(wire_.run(unbound));
        wire_.begin();
        requireNoShop(wire_);
        createRolesAndSchema(wire_, roles);
        createFoundation(wire_, database_.version());
        for (const std::string& name : database_.tableNames())
            specs_.push_back(specOf(database_.table(name)));
        for (const jet::TableSpec& spec : specs_)
            requireNames(spec);
        for (const jet::TableSpec& spec : specs_)
            fill(spec);
        addWanted(wanted);
        for (const jet::TableSpec& spec : specs_) {
            finish(withIncluded(spec, further));
            createOwnIndexes(wire_, spec, further);
        }
        for (const jet::TableSpec& spec : specs_)
            keepRules(spec);
        keepOthers();
        for (const jet::TableSpec& spec : specs_)
            static_cast<void>(wire_.run("analyze " + quotedName(spec.name)));
        leaveOwner(wire_);
    }
    Migration keep() {
        const std::string end = wire_.run("select pg_backend_pid()").field(0, 0).value_or("0");
        try {
            wire_.commit();
        } catch (const Error& error) {
            if (error.code() != Errc::offline)
                throw;
            requireDone(end);
        }
        return std::move(result_);
    }

private:
    static jet::Database::Options onlyToRead() {
        jet::Database::Options options;
        options.readOnly = options.unshared = true; // whoever writes meanwhile is found out
        return options;
    }

    static void requireNames(const jet::TableSpec& spec) {
        const auto require = [&](const std::string& name, const char* what) {
            if (name.size() > kLongestName)
                throw Error(Errc::unsupported,
                            std::string("O nome ") + what + " " + inQuotes(name) +
                                " é longo demais para o servidor, que guarda 63 bytes. Nada foi "
                                "mudado nele.");
        };
        require(spec.name, "da tabela");
        for (const jet::ColumnSpec& column : spec.columns)
            require(column.name, "do campo");
    }

    /// The line broke when all was being kept: once whoever was at its end has gone, there is a
    /// shop or there is none.
    void requireDone(const std::string& end) const {
        constexpr const char* kWaits = "10000"; // milliseconds
        bool done = false;
        try {
            ServerWire other(address_);
            static_cast<void>(other.run("select pg_terminate_backend(pid, " + std::string(kWaits) +
                                        ") from pg_catalog.pg_stat_activity where pid = " + end));
            done = hasShop(other);
        } catch (const Error&) {
            throw Error(Errc::offline,
                        "A conexão com o servidor caiu no fim da migração, e não se "
                        "sabe se ela foi feita. Quando ele voltar, confira o "
                        "endereço com check: se não há uma loja, repita a migração.");
        }
        if (!done)
            throw Error(Errc::offline, kBroken);
    }

    /// What a file's programs make by themselves, where a clerk may.
    void addWanted(std::span<const jet::TableSpec> wanted) {
        if (!database_.hasTable("cheques"))
            return;
        for (const jet::TableSpec& spec : wanted)
            if (!database_.hasTable(spec.name)) {
                createColumns(wire_, spec);
                specs_.push_back(spec);
            }
    }

    // ---- rows

    void fill(const jet::TableSpec& spec) {
        createColumns(wire_, spec);
        const jet::Table& table = database_.table(spec.name);
        const auto all = static_cast<std::uint64_t>(table.rowCount());
        TableDigest sent(spec);
        if (progress_)
            progress_(spec.name, 0, all);
        std::uint64_t fractions = 0;
        jet::RowCursor cursor = table.scan();
        bool there = cursor.first();
        copyIn(wire_.line(), "copy " + quotedName(spec.name) + " from stdin",
               [&](std::string& piece) {
                   for (; there && piece.size() < kPiece; there = cursor.next()) {
                       const jet::Row row = cursor.row().values();
                       requireHeld(spec, row, sent.rows().size() + 1);
                       fractions += static_cast<std::uint64_t>(std::ranges::count_if(
                           row, [](const jet::Value& v) { return losesFraction(v); }));
                       sent.add(row);
                       appendCopyLine(piece, row);
                       if (progress_ && sent.rows().size() % kStep == 0)
                           progress_(spec.name, sent.rows().size() / 2, all);
                   }
                   return there;
               });
        compare(spec, sent, all);
        if (fractions > 0)
            note("Na tabela " + inQuotes(spec.name) + ", " + std::to_string(fractions) +
                 " horas têm frações de segundo, que o servidor não guarda: foram arredondadas.");
        std::vector<std::pair<std::string, std::string>> sums;
        for (const TableDigest::Sum& sum : sent.sums())
            if (sum.total)
                sums.emplace_back(spec.columns[sum.column].name, TableDigest::text(sum));
        result_.tables.push_back({spec.name, sent.rows().size(), sent.whole(), std::move(sums)});
    }

    static void requireHeld(const jet::TableSpec& spec, const jet::Row& row, std::size_t number) {
        for (std::size_t i = 0; i < row.size(); ++i)
            if (const auto why = refusal(spec.columns[i], row[i]))
                throw Error(Errc::outOfRange,
                            "Na tabela " + inQuotes(spec.name) + ", registro " +
                                std::to_string(number) + ", o campo " +
                                inQuotes(spec.columns[i].name) + " " + *why +
                                ". Corrija-o no arquivo e repita; nada foi mudado no servidor.");
    }

    /// Row by row, and by what the server counts and sums up itself.
    void compare(const jet::TableSpec& spec, const TableDigest& sent, std::uint64_t all) {
        const auto differs = [&](const std::string& what) {
            return Error(Errc::corrupt, "A migração não foi aproveitada: na tabela " +
                                            inQuotes(spec.name) + " " + what +
                                            " no servidor não é o do arquivo.");
        };
        std::size_t number = 0;
        BinaryRows rows(spec, [&](jet::Row& row) {
            if (number >= sent.rows().size() || digestOf(row) != sent.rows()[number])
                throw differs("o registro " + std::to_string(number + 1));
            if (progress_ && ++number % kStep == 0)
                progress_(spec.name, (all + number) / 2, all);
            else if (!progress_)
                ++number;
        });
        copyOut(wire_.line(), "copy " + quotedName(spec.name) + " to stdout (format binary)",
                [&](std::string_view piece) { rows.add(piece); });
        std::string asked = "select count(*)";
        for (const TableDigest::Sum& sum : sent.sums())
            asked += ", coalesce(sum(" + quotedName(spec.columns[sum.column].name) + "), 0" +
                     (sum.currency ? "::numeric(19,4)" : "") + ")";
        const ServerRows own = wire_.run(asked + " from " + quotedName(spec.name));
        if (number != sent.rows().size() || own.field(0, 0) != std::to_string(sent.rows().size()))
            throw differs("o número de registros");
        for (std::size_t i = 0; i < sent.sums().size(); ++i) {
            const TableDigest::Sum& sum = sent.sums()[i];
            const auto total = sum.total ? own.field(0, static_cast<int>(i) + 1) : std::nullopt;
            if (total && total != TableDigest::text(sum)) // unreached: it would add up wrongly
                throw differs("a soma do campo " + inQuotes(spec.columns[sum.column].name));
        }
    }

    // ---- keys and numbers

    void finish(const jet::TableSpec& spec) {
        for (const bool primary : {true, false})
            for (const jet::IndexSpec& index : spec.indexes)
                if (index.primary == primary)
                    addIndex(spec, index);
        createNews(wire_, spec);
        if (!database_.hasTable(spec.name))
            return;
        for (const jet::ColumnSpec& column : spec.columns)
            if (column.autonumber)
                passNumber(spec, column, database_.table(spec.name).lastNumber());
    }

    /// What the server takes for the same is not always what the file does.
    void addIndex(const jet::TableSpec& spec, const jet::IndexSpec& index) {
        const std::string what =
            "O índice " + inQuotes(index.name) + " da tabela " + inQuotes(spec.name);
        try {
            return createIndex(wire_, spec, index);
        } catch (const Error& error) {
            requireConnected(error);
            if (error.code() != Errc::duplicate)
                return note(what + " não pôde ser feito no servidor: " + error.what());
        }
        try {
            createIndex(wire_, spec, index, true);
            note(what + " tem valores que o servidor toma por iguais: nele o índice distingue "
                        "maiúsculas de minúsculas.");
        } catch (const Error& error) {
            requireConnected(error);
            note(what + " não pôde ser feito no servidor: " + error.what());
        }
    }

    void passNumber(const jet::TableSpec& spec, const jet::ColumnSpec& column, std::int32_t last) {
        if (last < 1)
            return;
        static_cast<void>(wire_.run("select setval(pg_get_serial_sequence(" +
                                    serverText(quotedName(spec.name)) + ", " +
                                    serverText(column.name) + "), " + std::to_string(last) + ")"));
    }

    // ---- rules

    void keepRules(const jet::TableSpec& spec) {
        if (!database_.hasTable(spec.name))
            return;
        const jet::Table& table = database_.table(spec.name);
        const jet::KeptRules kept = jet::rulesOf(database_, table);
        if (kept.problem && kept.values.empty()) // unreached: check() has refused the file
            note(*kept.problem);
        names_.clear();
        for (const jet::ValueRules::Rule& rule : kept.values)
            keep(table, rule);
        for (const jet::Index& index : table.indexes())
            if (index.required && !index.primary)
                for (const jet::IndexColumn& key : index.columns)
                    require(table, table.columns()[key.column]);
        for (const jet::Relationship& bond : kept.bonds)
            keep(table, bond);
    }

    /// What has no use on a server, for the way back.
    void keepOthers() {
        const jet::Extras extras = jet::extrasOf(database_);
        for (std::string& refused : keepExtras(wire_, extras))
            note(std::move(refused));
        ado::keepRules(wire_, made_);
        std::string queries;
        std::string links;
        std::string others;
        const auto list = [](std::string& names, const std::string& name) {
            names.append(names.empty() ? "" : ", ").append(inQuotes(name));
        };
        for (const jet::ExtraObject& object : extras.objects)
            if (object.type == jet::ExtraObject::kQuery)
                list(queries, object.name);
            else if (object.type == jet::ExtraObject::kLink ||
                     object.type == jet::ExtraObject::kServerLink)
                list(links, object.name);
        for (const std::string& name : extras.others)
            list(others, name);
        if (!queries.empty())
            note("No servidor não se usam as consultas do arquivo, que o caminho de volta "
                 "devolve: " +
                 queries + ".");
        if (!links.empty())
            note("No servidor não se usam as tabelas que o arquivo vincula de outros, que o "
                 "caminho de volta devolve: " +
                 links + ".");
        if (!others.empty())
            note("Ficam só no arquivo os formulários, relatórios e outros objetos: " + others +
                 ".");
    }

    void keep(const jet::Table& table, const jet::ValueRules::Rule& rule) {
        const jet::Column* const column = rule.column ? &table.columns()[*rule.column] : nullptr;
        const std::string of =
            (column != nullptr ? "do campo " + inQuotes(column->name) + " " : "") + "da tabela " +
            inQuotes(table.name());
        if (column != nullptr && rule.required)
            require(table, *column);
        if (column != nullptr && rule.refusesEmptyText)
            constrain({table.name(), column->name, "AllowZeroLength", "vazio: " + column->name},
                      "check (octet_length(" + quotedName(column->name) + ") > 0)",
                      "A regra " + of + ", que não aceita um texto vazio,");
        if (!rule.text.empty()) {
            const std::string what = "A regra " + of + ", " + rule.text + ",";
            const auto sql =
                rule.condition ? ruleSql(*rule.condition, table.columns()) : std::nullopt;
            if (sql)
                constrain({table.name(), column ? column->name : "", "ValidationRule",
                           rule.message.empty() ? "regra: " + (column ? column->name : table.name())
                                                : rule.message},
                          "check (" + *sql + ")", what);
            else
                note(what + " não tem igual no servidor e ficou de fora.");
        }
        if (column != nullptr && !rule.defaultText.empty())
            keepDefault(table, *column, rule);
    }

    void keepDefault(const jet::Table& table, const jet::Column& column,
                     const jet::ValueRules::Rule& rule) {
        const std::string what = "O valor inicial do campo " + inQuotes(column.name) +
                                 " da tabela " + inQuotes(table.name()) + ", " + rule.defaultText +
                                 ",";
        auto sql = rule.defaultValue ? ruleSql(*rule.defaultValue, {}) : std::nullopt;
        if (!sql)
            return note(what + " não tem igual no servidor e ficou de fora.");
        if (column.type == jet::ColumnType::boolean)
            *sql = "(" + *sql + ")::int::boolean";
        if (attempt("alter table " + quotedName(table.name()) + " alter column " +
                        quotedName(column.name) + " set default " + *sql,
                    what))
            made_.push_back({table.name(), column.name, kDefault, ""});
    }

    void require(const jet::Table& table, const jet::Column& column) {
        constrain({table.name(), column.name, "Required", "falta: " + column.name},
                  "check (" + quotedName(column.name) + " is not null)",
                  "A regra de que se preencha o campo " + inQuotes(column.name) + " da tabela " +
                      inQuotes(table.name()));
    }

    void keep(const jet::Table& table, const jet::Relationship& bond) {
        const jet::Table& parent = database_.table(bond.parent.table);
        const auto list = [](const jet::Table& of, const std::vector<std::size_t>& columns) {
            std::string names;
            for (const std::size_t column : columns)
                names.append(names.empty() ? "" : ", ")
                    .append(quotedName(of.columns()[column].name));
            return names;
        };
        constrain({table.name(), bond.name, kBond, bond.name},
                  "foreign key (" + list(table, bond.child.columns) + ") references " +
                      quotedName(parent.name()) + " (" + list(parent, bond.parent.columns) + ")" +
                      (bond.cascadesUpdates ? " on update cascade" : "") +
                      (bond.cascadesDeletes ? " on delete cascade"
                       : bond.nullsOnDelete ? " on delete set null"
                                            : ""),
                  "O relacionamento " + inQuotes(bond.name) + " da tabela " +
                      inQuotes(table.name()) + " com " + inQuotes(parent.name()));
    }

    /// For new rows at least: a row may be older than a rule, here as in the file.
    void constrain(KeptRule rule, const std::string& constraint, const std::string& what) {
        constexpr std::size_t kForNumber = 4;
        const std::string wish = rule.name;
        std::string name = shortened(wish, kLongestName);
        for (int i = 2; !names_.insert(name).second; ++i)
            name = shortened(wish, kLongestName - kForNumber) + " " + std::to_string(i);
        const std::string alter = "alter table " + quotedName(rule.table);
        if (!attempt(alter + " add constraint " + quotedName(name) + " " + constraint +
                         " not valid",
                     what))
            return;
        rule.name = name;
        made_.push_back(std::move(rule));
        try {
            static_cast<void>(wire_.run(alter + " validate constraint " + quotedName(name)));
        } catch (const Error& error) {
            requireConnected(error);
            note(what + " vale para o que se gravar de agora em diante: há registros mais antigos "
                        "que não a seguem.");
        }
    }

    bool attempt(const std::string& sql, const std::string& what) {
        try {
            static_cast<void>(wire_.run(sql));
            return true;
        } catch (const Error& error) {
            requireConnected(error);
            note(what + " não pôde ser feito no servidor: " + error.what());
            return false;
        }
    }

    static void requireConnected(const Error& error) {
        if (error.code() == Errc::io || error.code() == Errc::offline)
            throw error;
    }
    void note(std::string sentence) { result_.notes.push_back(std::move(sentence)); }

    jet::Database database_;
    const std::string& address_;
    ServerWire wire_;
    const jet::Progress& progress_;
    std::vector<jet::TableSpec> specs_;
    std::set<std::string> names_; ///< of the rules of one table
    std::vector<KeptRule> made_;
    Migration result_;
};

} // namespace

Migration migrateToServer(const std::filesystem::path& file, const std::string& address,
                          const ShopRoles& roles, std::span<const jet::TableSpec> wanted,
                          std::span<const jet::TableSpec> further, const jet::Progress& progress) {
    const jet::Report report = jet::check(file);
    const auto error =
        std::ranges::find(report.findings, jet::Finding::Severity::error, &jet::Finding::severity);
    if (error != report.findings.end())
        throw Error(Errc::corrupt, "O arquivo tem erros e não foi migrado: " + error->sentence +
                                       ". Use o salvamento para aproveitar o que se lê dele.");
    std::optional<ToServer> work; // undone, if it isn't kept
    if (!jet::unchangedWhile(file, [&] {
            work.emplace(file, address, progress);
            try {
                work->load(roles, wanted, further);
            } catch (const Error& broken) {
                throw broken.code() == Errc::offline ? Error(Errc::offline, kBroken) : broken;
            }
        }))
        throw Error(Errc::conflict, "O arquivo foi alterado durante a migração, que não foi "
                                    "aproveitada. Repita-a com o programa fechado.");
    return work->keep();
}

} // namespace ado
