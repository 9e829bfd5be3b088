#include "ado/ServerCheck.h"

#include "ado/dialect/Spelling.h"
#include "ado/migrate/ServerIndexes.h"
#include "ado/migrate/ServerTables.h"
#include "ado/server/ServerRoles.h"
#include "ado/server/ServerSchema.h"
#include "ado/server/ServerValue.h"
#include "jet/Error.h"
#include "jet/Names.h"

#include <algorithm>

namespace ado {

namespace {

using Severity = jet::Finding::Severity;

constexpr const char* kTablesOf =
    "from pg_catalog.pg_class c join pg_catalog.pg_namespace n on n.oid = c.relnamespace and "
    "n.nspname = 'valtrino' and c.relkind in ('r', 'p') ";

constexpr const char* kOfKept = " do esquema \"valtrino_arquivo\"";

std::string named(std::string_view name) { return "\"" + std::string(name) + "\""; }

class ServerCheck {
public:
    explicit ServerCheck(const std::string& address) : wire_(address) {
        static_cast<void>(wire_.run("set statement_timeout = 0"));
        wire_.beginReading(); // all of one state
        requireShop(wire_);
        tables_ = serverTables(wire_);
        report_.tables = tables_.size();
    }

    void checkFoundation() {
        const ServerRows has = wire_.run(
            "select p.proname from pg_catalog.pg_proc p join pg_catalog.pg_namespace n on n.oid = "
            "p.pronamespace and n.nspname = 'valtrino'");
        std::vector<std::string> names;
        names.reserve(static_cast<std::size_t>(has.rows()));
        for (int row = 0; row < has.rows(); ++row)
            names.push_back(has.field(row, 0).value_or(""));
        for (const std::string& wanted : foundationFunctions())
            if (std::ranges::find(names, wanted) == names.end())
                tell(Severity::error, "falta a função " + named(wanted));
    }

    void checkShape(const jet::TableSpec& wanted) {
        const jet::TableSpec* const table = find(wanted.name);
        if (table == nullptr)
            return tell(Severity::error, "falta a tabela " + named(wanted.name));
        const std::string of = " da tabela " + named(wanted.name);
        for (const jet::ColumnSpec& column : wanted.columns) {
            const std::size_t place = table->placeOf(column.name);
            if (place == table->columns.size())
                tell(Severity::error, "falta o campo " + named(column.name) + of);
            else if (table->columns[place].type != column.type)
                tell(Severity::error, "o campo " + named(column.name) + of + " é de outro tipo");
            else if (column.autonumber && !table->columns[place].autonumber)
                tell(Severity::error, "o campo " + named(column.name) + of + " não é numerado");
        }
        for (const jet::IndexSpec& index : wanted.indexes)
            if (std::ranges::none_of(table->indexes,
                                     [&](const jet::IndexSpec& one) { return serves(one, index); }))
                tell(index.primary ? Severity::error : Severity::warning,
                     (index.primary ? "falta a chave" : "falta um índice de ") +
                         (index.primary ? std::string() : named(index.columns.front().name)) + of);
    }

    void checkWorkings() {
        each(std::string("select c.relname ") + kTablesOf +
                 "where not exists (select 1 from pg_catalog.pg_trigger t where t.tgrelid = c.oid "
                 "and t.tgname = 'valtrino_news' and t.tgenabled in ('O', 'A'))",
             Severity::error, "as outras estações não são avisadas do que muda na tabela ");
        each(std::string("select x.relname ") + kTablesOf +
                 "join pg_catalog.pg_index i on i.indrelid = c.oid and not i.indisvalid "
                 "join pg_catalog.pg_class x on x.oid = i.indexrelid",
             Severity::error, "não está pronto o índice ");
        each(std::string("select c.relname ") + kTablesOf + "where c.relowner <> n.nspowner",
             Severity::warning, "não é do dono da loja a tabela ");
        each(std::string("select distinct c.relname ") + kTablesOf +
                 "cross join aclexplode(n.nspacl) a where a.privilege_type = 'USAGE' and "
                 "a.grantee <> n.nspowner and a.grantee <> 0 and not "
                 "(has_table_privilege(a.grantee, c.oid, 'select') and "
                 "has_table_privilege(a.grantee, c.oid, 'insert') and "
                 "has_table_privilege(a.grantee, c.oid, 'update') and "
                 "has_table_privilege(a.grantee, c.oid, 'delete'))",
             Severity::warning, "os atendentes não podem trabalhar na tabela ");
        for (const ServerTableSpec& table : tables_) {
            const std::string name = quotedName(table.spec.name);
            report_.rows += static_cast<std::uint64_t>(count("select count(*) from " + name));
            for (const jet::ColumnSpec& column : table.spec.columns)
                if (column.autonumber && count("select coalesce(max(" + quotedName(column.name) +
                                               "), 0) from " + name) > table.lastNumber)
                    tell(Severity::error, "a numeração do campo " + named(column.name) +
                                              " da tabela " + named(table.spec.name) +
                                              " está atrás do maior número que há nela");
        }
    }

    void checkRules() {
        const ServerRows rules =
            wire_.run(std::string("select c.oid::regclass::text, k.conname, "
                                  "pg_get_expr(k.conbin, k.conrelid) ") +
                      kTablesOf +
                      "join pg_catalog.pg_constraint k on k.conrelid = c.oid and k.contype = 'c'");
        for (int row = 0; row < rules.rows(); ++row)
            tellRows(count("select count(*) from " + *rules.field(row, 0) + " where not (" +
                           *rules.field(row, 2) + ")"),
                     "na tabela " + *rules.field(row, 0) + " não obedecem à regra " +
                         named(*rules.field(row, 1)));
        each(std::string("select k.conname ") + kTablesOf +
                 "join pg_catalog.pg_constraint k on k.conrelid = c.oid and k.contype = 'f' and "
                 "(k.confupdtype in ('n', 'd') or k.confdeltype = 'd')",
             Severity::warning,
             "o histórico não guarda o que muda em outras tabelas por causa do relacionamento ");
        // The columns of both sides, in the order of the relationship.
        const ServerRows bonds = wire_.run(
            std::string(
                "select c.oid::regclass::text, k.conname, k.confrelid::regclass::text, "
                "string_agg(format('p.%I = f.%I', pa.attname, fa.attname), ' and ' order by "
                "u.place), string_agg(format('f.%I is not null', fa.attname), ' and ' order "
                "by u.place) ") +
            kTablesOf +
            "join pg_catalog.pg_constraint k on k.conrelid = c.oid and k.contype = 'f' "
            "cross join unnest(k.conkey, k.confkey) with ordinality u (f, p, place) "
            "join pg_catalog.pg_attribute fa on fa.attrelid = k.conrelid and fa.attnum = u.f "
            "join pg_catalog.pg_attribute pa on pa.attrelid = k.confrelid and pa.attnum = u.p "
            "group by c.oid, k.conname, k.confrelid");
        for (int row = 0; row < bonds.rows(); ++row)
            tellRows(count("select count(*) from " + *bonds.field(row, 0) + " f where " +
                           *bonds.field(row, 4) + " and not exists (select 1 from " +
                           *bonds.field(row, 2) + " p where " + *bonds.field(row, 3) + ")"),
                     "na tabela " + *bonds.field(row, 0) + " não obedecem ao relacionamento " +
                         named(*bonds.field(row, 1)));
    }

    void checkReference(const Reference& reference) {
        const jet::TableSpec* const table = find(reference.table);
        const jet::TableSpec* const parent = find(reference.parent);
        if (table == nullptr || parent == nullptr ||
            table->placeOf(reference.column) == table->columns.size() ||
            parent->placeOf(reference.key) == parent->columns.size())
            return;
        const std::string column =
            quotedName(table->columns[table->placeOf(reference.column)].name);
        const std::string key = quotedName(parent->columns[parent->placeOf(reference.key)].name);
        tellRows(count("select count(*) from " + quotedName(table->name) + " f where f." + column +
                       " is not null and not exists (select 1 from " + quotedName(parent->name) +
                       " p where p." + key + " = f." + column + ")"),
                 "na tabela " + named(reference.table) + " têm em " + named(reference.column) +
                     " o que não existe na tabela " + named(reference.parent));
    }

    void checkOwnIndexes(std::span<const jet::TableSpec> further) {
        std::vector<jet::TableSpec> tables;
        tables.reserve(tables_.size());
        for (const ServerTableSpec& table : tables_)
            tables.push_back(table.spec);
        for (const auto& [table, index] : missingIndexes(wire_, tables, further)) {
            std::string besides;
            for (const std::string& name : includable(*table, *index))
                besides += (besides.empty() ? " com " : ", ") + named(name);
            tell(Severity::warning, "falta um índice de " + named(index->columns.front().name) +
                                        besides + " da tabela " + named(table->name));
        }
    }

    void checkKept() {
        if (wire_.run("select 1 from pg_catalog.pg_namespace where nspname = 'valtrino_arquivo'")
                .rows() == 0)
            return tell(Severity::warning, "falta o esquema \"valtrino_arquivo\"");
        constexpr int kKeptTables = 4;
        const ServerRows missing =
            wire_.run("select t from unnest('{objeto,passo,relacionamento,regra}'::text[]) t "
                      "where to_regclass('valtrino_arquivo.' || t) is null");
        if (missing.rows() == kKeptTables)
            return; // that never was in a file
        for (int row = 0; row < missing.rows(); ++row)
            tell(Severity::warning, "falta a tabela " + named(*missing.field(row, 0)) + kOfKept);
        if (missing.rows() > 0)
            return;
        tellRows(count("select count(*) from valtrino_arquivo.passo p where not exists (select 1 "
                       "from valtrino_arquivo.objeto o where o.objeto = p.objeto)"),
                 "na tabela \"passo\"" + std::string(kOfKept) + " são de um objeto que não há");
        each("select distinct r.tabela from valtrino_arquivo.regra r where "
             "to_regclass(format('valtrino.%I', r.tabela)) is null",
             Severity::warning,
             "no esquema \"valtrino_arquivo\" há regras de uma tabela que não "
             "existe, ");
    }

    jet::Report take() { return std::move(report_); }

private:
    [[nodiscard]] const jet::TableSpec* find(std::string_view name) const {
        for (const ServerTableSpec& table : tables_)
            if (jet::foldedName(table.spec.name) == jet::foldedName(name))
                return &table.spec;
        return nullptr;
    }
    /// Begins with the columns of the other.
    static bool serves(const jet::IndexSpec& index, const jet::IndexSpec& wanted) {
        return (index.primary || !wanted.primary) &&
               index.columns.size() >= wanted.columns.size() &&
               std::equal(wanted.columns.begin(), wanted.columns.end(), index.columns.begin(),
                          [](const auto& a, const auto& b) {
                              return jet::foldedName(a.name) == jet::foldedName(b.name);
                          });
    }
    std::int64_t count(const std::string& sql) {
        return std::stoll(wire_.run(sql).field(0, 0).value_or("0"));
    }
    void each(const std::string& sql, Severity severity, const std::string& sentence) {
        const ServerRows rows = wire_.run(sql);
        for (int row = 0; row < rows.rows(); ++row)
            tell(severity, sentence + named(rows.field(row, 0).value_or("")));
    }
    void tellRows(std::int64_t rows, const std::string& sentence) {
        if (rows > 0)
            tell(Severity::rule, std::to_string(rows) + " registros " + sentence);
    }
    void tell(Severity severity, std::string sentence) {
        report_.findings.push_back({severity, jet::PageNo{0}, std::move(sentence)});
    }

    ServerWire wire_;
    std::vector<ServerTableSpec> tables_;
    jet::Report report_;
};

} // namespace

jet::Report checkServer(const std::string& address, std::span<const jet::TableSpec> tables,
                        std::span<const jet::TableSpec> further,
                        std::span<const Reference> references) {
    ServerCheck check(address);
    check.checkFoundation();
    for (const jet::TableSpec& table : tables)
        check.checkShape(table);
    check.checkOwnIndexes(further);
    check.checkWorkings();
    check.checkRules();
    for (const Reference& reference : references)
        check.checkReference(reference);
    check.checkKept();
    return check.take();
}

std::vector<std::string> addServerIndexes(const std::string& address,
                                          std::span<const jet::TableSpec> further) {
    ServerWire wire(address);
    static_cast<void>(wire.run("set statement_timeout = 0"));
    wire.begin();
    requireShop(wire);
    std::vector<ServerTableSpec> found = serverTables(wire);
    std::vector<jet::TableSpec> tables;
    tables.reserve(found.size());
    for (ServerTableSpec& table : found)
        tables.push_back(std::move(table.spec));
    becomeOwner(wire);
    std::vector<std::string> made;
    for (const MissingIndex& missing : missingIndexes(wire, tables, further)) {
        makeIndex(wire, missing);
        made.push_back(missing.table->name + "." + missing.index->columns.front().name);
    }
    leaveOwner(wire);
    wire.commit();
    return made;
}

} // namespace ado
