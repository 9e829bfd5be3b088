#include "jet/CheckRules.h"

#include "jet/Database.h"
#include "jet/check/CheckFindings.h"
#include "jet/database/TableRules.h"
#include "jet/page/Header.h"

#include <algorithm>

namespace jet {

namespace {

/// The file as anybody reads it, but as nobody's station, and whatever its password.
Database opened(const std::filesystem::path& path) {
    Database::Options options;
    options.readOnly = options.unshared = true;
    options.password = readHeader(File(path, File::Mode::read)).password;
    return {path, options};
}

/// The columns by which a row of the table is best found: those of the primary key, if any.
std::vector<std::size_t> keyColumns(const Table& table) {
    std::vector<std::size_t> columns;
    if (const auto primary = table.primaryKey())
        for (const IndexColumn& key : table.indexes()[*primary].columns)
            columns.push_back(key.column);
    return columns;
}

class RuleCheck {
public:
    RuleCheck(Database& database, Findings& findings, const Progress& progress)
        : database_(database), findings_(findings), progress_(progress),
          order_(Collation::closest(database.version(), database.sortOrder())) {}

    void run() {
        for (const std::string& name : database_.tableNames()) {
            Table& table = database_.table(name);
            const auto rules = TableRules::load(database_, table);
            if (!rules)
                continue;
            where_ = "tabela \"" + table.name() + "\"";
            if (rules->problem())
                tell(table.definition().page(), *rules->problem());
            checkTable(table, *rules);
        }
    }

private:
    static constexpr std::uint64_t kStep = 256; ///< rows between two words of how far it is

    void checkTable(const Table& table, const TableRules& rules) {
        const std::vector<Bond> bonds = bondsOf(table, rules);
        const std::vector<std::size_t> key = keyColumns(table);
        const auto rows = static_cast<std::uint64_t>(std::max<std::int64_t>(table.rowCount(), 0));
        const std::string label = where_ + ", regras";
        std::uint64_t done = 0;
        RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next()) {
            if (progress_ && done++ % kStep == 0)
                progress_(label, std::min(done, rows), rows);
            const auto tellRow = [&](const std::string& what) {
                const std::string values = shownKey(valuesOf(row.row(), key));
                tell(row.id().page, what,
                     (values.empty() ? "" : columnNames(table, key) + " " + values + ", ") +
                         "linha " + std::to_string(row.id().slot));
            };
            for (const std::string& phrase : rules.values().broken(row.row()))
                tellRow(phrase);
            for (const Bond& bond : bonds) {
                const Row values = valuesOf(row.row(), bond.relationship->child.columns);
                if (!hasNull(values) &&
                    !hasRowWith(*bond.parent, bond.relationship->parent.columns, values, order_))
                    tellRow(bond.phrase);
            }
        }
    }

    /// A relationship in which the table is the child.
    struct Bond {
        const Relationship* relationship;
        const Table* parent;
        std::string phrase; ///< of a row without a parent
    };

    std::vector<Bond> bondsOf(const Table& table, const TableRules& rules) {
        std::vector<Bond> bonds;
        for (const Relationship& bond : rules.relationships()) {
            if (bond.child.definition != table.definition().page())
                continue;
            const Table& parent = database_.table(bond.parent.table);
            const std::string names =
                "o relacionamento \"" + bond.name + "\" com a tabela \"" + parent.name() + "\"";
            if (hasIndexOver(parent, bond.parent.columns))
                bonds.push_back({&bond, &parent,
                                 "o valor de " + columnNames(table, bond.child.columns) +
                                     " não existe em " + columnNames(parent, bond.parent.columns) +
                                     ", como quer " + names});
            else
                tell(table.definition().page(), names +
                                                    " não foi conferido: falta nela um índice de " +
                                                    columnNames(parent, bond.parent.columns));
        }
        return bonds;
    }

    /// Of each kind of finding only so many are told: a rule of a table is one.
    void tell(PageNo page, const std::string& what, const std::string& detail = {}) {
        findings_.rule(page, {}, where_ + ": " + what, detail);
    }

    Database& database_;
    Findings& findings_;
    const Progress& progress_;
    const Collation& order_;
    std::string where_; ///< as findings call the table
};

} // namespace

std::vector<Finding> checkRules(const std::filesystem::path& path, const Progress& progress) {
    Findings findings;
    try {
        Database database = opened(path);
        RuleCheck(database, findings, progress).run();
    } catch (const Error& error) {
        if (error.code() == Errc::io || error.code() == Errc::notFound)
            throw;
        findings.error(PageNo{0}, "arquivo", "as regras não puderam ser conferidas", error.what());
    }
    return findings.take();
}

} // namespace jet
