#include "jet/database/TableRules.h"

#include "jet/Database.h"
#include "jet/Rules.h"
#include "jet/database/Catalog.h"

#include <algorithm>
#include <iterator>

namespace jet {

std::unique_ptr<const TableRules> TableRules::load(Database& database, const Table& table) {
    std::unique_ptr<const TableRules> rules(new TableRules(database, table));
    if (!rules->problem_ && rules->values_.empty() && rules->bonds_.empty())
        return nullptr;
    return rules;
}

KeptRules rulesOf(Database& database, const Table& table) {
    KeptRules kept;
    const auto rules = TableRules::load(database, table);
    if (!rules)
        return kept;
    kept.problem = rules->problem();
    kept.values.assign(rules->values().rules().begin(), rules->values().rules().end());
    std::ranges::copy_if(rules->relationships(), std::back_inserter(kept.bonds),
                         [&](const Relationship& bond) {
                             return bond.child.definition == table.definition().page();
                         });
    return kept;
}

TableRules::TableRules(Database& database, const Table& table)
    : table_(table), values_(table.name(), table.columns(),
                             Collation::closest(database.version(), database.sortOrder())) {
    try {
        read(database);
        if (values_.unknown())
            problem_ = "A tabela \"" + table.name() +
                       "\" pode ser consultada mas não alterada: " + *values_.unknown() +
                       ", usa o que este programa não sabe avaliar.";
    } catch (const Error& error) {
        if (error.code() != Errc::corrupt)
            throw;
        problem_ = "A tabela \"" + table.name() +
                   "\" pode ser consultada mas não alterada, porque as suas regras não podem ser "
                   "lidas. " +
                   error.what();
    }
}

void TableRules::read(Database& database) {
    const Table& objects = database.table("MSysObjects");
    const TextCodec& codec = objects.columns()[objects.findColumn("Name").value()].codec;
    const PageNo page = table_.definition().page();
    values_.read(parseProperties(tableProperties(objects, page), codec, page), codec);
    bonds_ = relationshipsOf(database, table_);
}

bool TableRules::isHere(const RelationshipEnd& end) const noexcept {
    return end.definition == table_.definition().page();
}

TableRules::Keys TableRules::keysOf(RowId id) const {
    Keys keys(bonds_.size());
    if (std::none_of(bonds_.begin(), bonds_.end(),
                     [&](const Relationship& bond) { return isHere(bond.parent); }))
        return keys;
    RowReader reader = table_.reader();
    const RowView* const row = reader.read(id);
    for (std::size_t i = 0; row && i < bonds_.size(); ++i)
        if (isHere(bonds_[i].parent))
            keys[i] = valuesOf(*row, bonds_[i].parent.columns);
    return keys;
}

void TableRules::accept(RowId id, const std::vector<bool>& changed, const Keys& before,
                        Consequences& all) const {
    RowReader reader = table_.reader();
    if (const RowView* const row = reader.read(id))
        values_.check(*row, changed);
    const Keys now = before.empty() ? Keys() : keysOf(id);
    for (std::size_t i = 0; i < bonds_.size(); ++i) {
        const Relationship& bond = bonds_[i];
        if (isHere(bond.child) && std::any_of(bond.child.columns.begin(), bond.child.columns.end(),
                                              [&](std::size_t column) { return changed[column]; }))
            all.needsParent(bond, id);
        if (!before.empty() && isHere(bond.parent) && before[i] != now[i])
            all.leftKey(bond, before[i], now[i]);
    }
}

void TableRules::gone(const Keys& before, Consequences& all) const {
    for (std::size_t i = 0; i < bonds_.size(); ++i)
        if (isHere(bonds_[i].parent))
            all.leftKey(bonds_[i], before[i], std::nullopt);
}

} // namespace jet
