#include "schema/ShopUpgrade.h"

#include "jet/ExtendTable.h"
#include "schema/ShopSchema.h"

#include <algorithm>

namespace shop {

namespace {

/// Rows changed in one transaction, which holds their pages in memory.
constexpr std::size_t kRowsAtOnce = 20'000;

/// Whether an index finds rows by the columns of the one that is wanted.
bool servesFor(const jet::Table& table, const jet::Index& index, const jet::IndexSpec& wanted) {
    if (index.columns.size() < wanted.columns.size() ||
        (wanted.unique && !(index.unique && index.columns.size() == wanted.columns.size())))
        return false;
    for (std::size_t i = 0; i < wanted.columns.size(); ++i)
        if (table.findColumn(wanted.columns[i].name) != index.columns[i].column)
            return false;
    return true;
}

/// The index as it can be made beside those that the table has.
jet::IndexSpec beside(const jet::Table& table, jet::IndexSpec wanted) {
    const auto& others = table.definition().logicalIndexes;
    const auto isTaken = [&](const std::string& name) {
        return std::ranges::find(others, name, &jet::LogicalIndex::name) != others.end();
    };
    wanted.primary = wanted.primary && !table.primaryKey();
    if (isTaken(wanted.name))
        wanted.name = wanted.columns.front().name;
    while (isTaken(wanted.name))
        wanted.name += "_";
    return wanted;
}

/// Indexes over texts whose order this program doesn't know can't be kept.
bool canBeKept(const jet::Table& table, const jet::IndexSpec& index) {
    return std::ranges::all_of(index.columns, [&](const jet::IndexSpec::KeyColumn& key) {
        const auto place = table.findColumn(key.name);
        return !place || !jet::isText(table.columns()[*place].type) ||
               table.columns()[*place].collation;
    });
}

void setToYes(jet::Database& database, const jet::TableSpec& more) {
    jet::Table& table = database.table(more.name);
    std::vector<jet::Assignment> yes;
    for (const jet::ColumnSpec& column : more.columns)
        if (column.type == jet::ColumnType::boolean)
            yes.push_back({*table.findColumn(column.name), true});
    std::vector<jet::RowId> rows;
    jet::RowCursor row = table.scan();
    for (bool there = !yes.empty() && row.first(); there; there = row.next())
        rows.push_back(row.id());
    for (std::size_t done = 0; done < rows.size();) {
        jet::DatabaseTransaction some(database);
        for (const std::size_t end = std::min(rows.size(), done + kRowsAtOnce); done < end; ++done)
            table.update(rows[done], yes);
        some.commit();
    }
}

} // namespace

std::vector<Missing> missingIn(jet::Database& database) {
    std::vector<Missing> all;
    for (const jet::TableSpec& wanted : tables()) {
        if (!database.hasTable(wanted.name)) {
            all.push_back({wanted, true});
            continue;
        }
        const jet::Table& table = database.table(wanted.name);
        jet::TableSpec more{table.name(), {}, {}};
        for (const jet::ColumnSpec& column : wanted.columns)
            if (!table.findColumn(column.name))
                more.columns.push_back(column);
        for (const jet::IndexSpec& index : wanted.indexes)
            if (canBeKept(table, index) &&
                std::ranges::none_of(table.indexes(), [&](const jet::Index& other) {
                    return servesFor(table, other, index);
                }))
                more.indexes.push_back(beside(table, index));
        if (!more.columns.empty() || !more.indexes.empty())
            all.push_back({std::move(more), false});
    }
    return all;
}

void upgrade(jet::Database& database, const std::vector<Missing>& missing) {
    for (const auto& [more, table] : missing) {
        if (table) {
            database.createTable(more);
            continue;
        }
        const auto key = std::ranges::find_if(more.columns, &jet::ColumnSpec::autonumber);
        if (key != more.columns.end() && database.table(more.name).rowCount() > 0)
            throw jet::Error(jet::Errc::unsupported,
                             "A tabela \"" + more.name + "\" não tem o campo \"" + key->name +
                                 "\", que numera os registros dela: não é de uma versão anterior, "
                                 "e números novos não seriam os que outras tabelas citam.");
        jet::extendTable(database, more.name, more);
        setToYes(database, more);
    }
}

} // namespace shop
