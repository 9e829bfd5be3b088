#include "jet/database/Consequences.h"

#include "jet/Database.h"

#include <algorithm>

namespace jet {

namespace {

/// The table at one end, which must still be the one that was looked at when the rules were read.
Table& tableAt(Database& database, const RelationshipEnd& end) {
    Table& table = database.table(end.table);
    const bool same = table.definition().page() == end.definition &&
                      std::all_of(end.columns.begin(), end.columns.end(), [&](std::size_t column) {
                          return column < table.columns().size();
                      });
    if (!same)
        throw Error(Errc::conflict, "A tabela \"" + end.table +
                                        "\" foi redefinida por outro programa. Feche o programa e "
                                        "abra-o de novo.");
    return table;
}

const Collation& orderOf(const Database& database) {
    return Collation::closest(database.version(), database.sortOrder());
}

std::string columnsOf(const Table& table, const RelationshipEnd& end) {
    return columnNames(table, end.columns);
}

std::string shown(const Row& key) {
    const std::string values = shownKey(key);
    return values.empty() ? "" : " (" + values + ")";
}

std::string named(const Relationship& bond) { return " (relacionamento \"" + bond.name + "\")"; }

} // namespace

void Consequences::needsParent(const Relationship& bond, RowId child) {
    needs_.push_back({&bond, child});
}

void Consequences::leftKey(const Relationship& bond, Row old, std::optional<Row> current) {
    if (!hasNull(old))
        left_.push_back({&bond, std::move(old), std::move(current)});
}

void Consequences::settle() {
    while (!left_.empty() || !cascades_.empty()) {
        if (!left_.empty()) {
            Left next = std::move(left_.back());
            left_.pop_back();
            follow(std::move(next));
        } else {
            const Cascade next = std::move(cascades_.back());
            cascades_.pop_back();
            carryOut(next);
        }
    }
    for (const Left& refused : refused_)
        check(refused);
    for (const Need& need : needs_)
        check(need);
}

bool Consequences::hasParent(const Relationship& bond, const Row& key) const {
    return hasRowWith(tableAt(database_, bond.parent), bond.parent.columns, key,
                      orderOf(database_));
}

bool Consequences::hasChild(const Relationship& bond, const Row& key) const {
    return hasRowWith(tableAt(database_, bond.child), bond.child.columns, key, orderOf(database_));
}

void Consequences::follow(Left left) {
    const Relationship& bond = *left.bond;
    if (hasParent(bond, left.old)) // another, or the same one with its capitals changed
        return;
    const bool cascades =
        left.current ? bond.cascadesUpdates : bond.cascadesDeletes || bond.nullsOnDelete;
    if (!cascades) {
        refused_.push_back(std::move(left));
        return;
    }
    std::optional<Row> values = std::move(left.current);
    if (!values && !bond.cascadesDeletes)
        values = Row(bond.child.columns.size());
    for (const RowId child :
         rowsWith(tableAt(database_, bond.child), bond.child.columns, left.old, orderOf(database_)))
        cascades_.push_back({&bond, child, values});
}

void Consequences::carryOut(const Cascade& cascade) {
    const RelationshipEnd& end = cascade.bond->child;
    Table& table = tableAt(database_, end);
    auto before = table.read(cascade.child);
    if (!before)
        return; // another cascade has been here
    cascaded_.push_back({&table, cascade.child, std::move(*before), !cascade.values});
    if (!cascade.values) {
        table.eraseRow(cascade.child, *this);
        return;
    }
    std::vector<Assignment> changes;
    for (std::size_t i = 0; i < end.columns.size(); ++i)
        changes.push_back({end.columns[i], (*cascade.values)[i]});
    table.changeRow(cascade.child, changes, *this);
}

void Consequences::check(const Need& need) const {
    const Relationship& bond = *need.bond;
    const Table& child = tableAt(database_, bond.child);
    RowReader reader = child.reader();
    const RowView* const row = reader.read(need.child);
    if (!row)
        return;
    const Row key = valuesOf(*row, bond.child.columns);
    if (hasNull(key) || hasParent(bond, key))
        return;
    const Table& parent = tableAt(database_, bond.parent);
    throw Error(Errc::related,
                "O registro da tabela \"" + child.name() + "\" não pode ser gravado: o valor de " +
                    columnsOf(child, bond.child) + shown(key) + " não existe em " +
                    columnsOf(parent, bond.parent) + " da tabela \"" + parent.name() + "\"" +
                    named(bond) + ". Cadastre-o lá primeiro, ou corrija-o.");
}

void Consequences::check(const Left& refused) const {
    const Relationship& bond = *refused.bond;
    if (!hasChild(bond, refused.old))
        return;
    const Table& child = tableAt(database_, bond.child);
    const Table& parent = tableAt(database_, bond.parent);
    const std::string what = refused.current ? "O valor de " + columnsOf(parent, bond.parent) +
                                                   shown(refused.old) + " da tabela \"" +
                                                   parent.name() + "\" não pode ser alterado"
                                             : "O registro" + shown(refused.old) + " da tabela \"" +
                                                   parent.name() + "\" não pode ser excluído";
    throw Error(Errc::related, what + ": a tabela \"" + child.name() +
                                   "\" tem registros ligados a ele pelo campo " +
                                   columnsOf(child, bond.child) + named(bond) +
                                   ". Altere-os ou exclua-os primeiro.");
}

} // namespace jet
