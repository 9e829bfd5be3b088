// What changes the rows of a table, and whether they may be changed: it looks at the whole
// database.
#include "jet/SelfCheck.h"
#include "jet/database/Consequences.h"
#include "jet/database/DatabaseParts.h"
#include "jet/database/TableParts.h"
#include "jet/database/TableRules.h"
#include "jet/row/RowStore.h"

#include <algorithm>
#include <limits>

namespace jet {

namespace {

std::string columnList(std::span<const Column> columns, const Index& index) {
    std::string names;
    for (const IndexColumn& key : index.columns)
        names += (names.empty() ? "\"" : ", \"") + columns[key.column].name + "\"";
    return names;
}

} // namespace

Table::Parts::Parts(Database& database, PageNo page)
    : owner(database), pager(database.parts_->pager), pages(database.parts_->pages),
      definition(parseDefinition(pager, page, database.parts_->texts)) {}
Table::Parts::~Parts() = default;

Table::~Table() = default;

std::optional<std::string> Table::readOnlyReason() {
    const auto file = parts_->owner.parts_->hindrance(Presence::Look::around);
    return Hindrance::told(file ? file : parts_->hindrance(*this));
}

std::optional<Hindrance> Table::Parts::hindrance(Table& table) {
    Database::Parts& file = *owner.parts_;
    definition.requireThere();
    if (!verified) {
        unsound = pager.onSnapshot([&] { return selfCheck(table, owner); });
        verified = true;
        if (unsound && unsound->why == Hindrance::Why::damage)
            file.damage = unsound->sentence;
    }
    if (unsound)
        return unsound;
    if (rulesTentative && !file.work.hasChangedCatalog())
        table.forgetRules(); // that transaction has ended, one way or the other
    if (!std::exchange(rulesKnown, true) && !definition.system) {
        try {
            rules = TableRules::load(owner, table);
        } catch (...) {
            table.forgetRules();
            throw;
        }
        rulesTentative = file.work.hasChangedCatalog();
    }
    if (rules && rules->problem())
        return Hindrance{Hindrance::Why::rules, *rules->problem()};
    return std::nullopt;
}

void Table::forgetRules() noexcept {
    parts_->rules.reset();
    parts_->rulesKnown = parts_->rulesTentative = false;
}

void Table::lose(const Error& why) noexcept {
    forgetRules();
    parts_->definition.lost = why;
    for (IndexTree& tree : parts_->trees)
        tree.lose(why);
}

void Table::requireWritable() {
    if (const auto why = parts_->hindrance(*this))
        throw why->error();
}

void Table::requireExpected(RowId id, std::optional<std::uint64_t> expected) const {
    if (expected && rowVersion(id) != expected)
        throw Error(Errc::conflict,
                    "Este registro foi alterado ou excluído por outra estação depois de lido. Nada "
                    "foi gravado; localize o registro outra vez e repita a alteração.");
}

void Table::Parts::requireKeys(const Table& table, const StoredRow& row) const {
    for (const Index& index : table.indexes_)
        requireKey(table, index, row);
}

void Table::Parts::requireKey(const Table& table, const Index& index, const StoredRow& row) const {
    if (!index.required && !index.primary)
        return;
    for (const IndexColumn& key : index.columns)
        if (definition.columns[key.column].type != ColumnType::boolean && !row[key.column].present)
            throw leftEmpty(table.name_, definition.columns[key.column].name);
}

void Table::Parts::requireUnique(std::span<const Index> indexes, const StoredRow& row,
                                 std::optional<RowId> self) const {
    for (std::size_t i = 0; i < indexes.size(); ++i)
        requireUnique(indexes[i], i, row, self);
}

void Table::Parts::requireUnique(const Index& index, std::size_t place, const StoredRow& row,
                                 std::optional<RowId> self) const {
    if (!(index.unique || index.primary) || allNull(place, row))
        return;
    const std::optional<Bytes> bytes = key(place, row);
    if (bytes && trees[place].hasKey(*bytes, self))
        throw Error(Errc::duplicate, "Já existe um registro com o mesmo valor em " +
                                         columnList(definition.columns, index) + ".");
}

void Table::fillIndex(std::size_t index) {
    const auto change = parts_->owner.parts_->change();
    RowCursor row = scan();
    for (bool there = row.first(); there; there = row.next()) {
        const StoredRow stored = storedRow(parts_->definition, row.row());
        parts_->requireKey(*this, indexes_[index], stored);
        parts_->requireUnique(indexes_[index], index, stored, std::nullopt);
        if (const auto key = parts_->key(index, stored))
            parts_->addKey(index, *key, row.id());
    }
}

void Table::Parts::settleLongValues(StoredRow& row) {
    const bool inRow = rowSize(format(), definition, row, true) <= format().row.largest;
    if (!inRow)
        for (std::size_t i = 0; i < row.size(); ++i)
            // What other long values keep in the row has to go out as well.
            if (row[i].present && !row[i].content && isLongValue(definition.columns[i].type) &&
                row[i].bytes.size() > LongValueDefinition::kSize)
                row[i].content = contentOf(row[i]);
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (!row[i].content)
            continue;
        const LongValueMaps* maps = definition.longValuesOf(definition.columns[i]);
        if (!maps)
            corrupt(definition.page(), "a coluna \"" + definition.columns[i].name +
                                           "\" não tem lugar para os seus valores");
        row[i].bytes = LongValueStore(pager, pages, *maps).write(*row[i].content, inRow);
        row[i].content.reset();
    }
}

void Table::Parts::releaseLongValues(const StoredRow& old, const StoredRow* row) {
    // The same bytes name the same pages: a value that wasn't given anew has stayed where it was.
    for (std::size_t i = 0; i < old.size(); ++i) {
        const Column& column = definition.columns[i];
        if (!isLongValue(column.type) || !old[i].present ||
            (row && (*row)[i].present && (*row)[i].bytes == old[i].bytes))
            continue;
        if (const LongValueMaps* maps = definition.longValuesOf(column))
            LongValueStore(pager, pages, *maps).release(old[i].bytes, definition.page());
    }
}

void Table::Parts::addKey(std::size_t index, const Bytes& key, RowId id) {
    // As the format counts them: up with each new key, never down again.
    if (!trees[index].hasKey(key)) {
        const auto distinct = distinctKeys(index);
        setCounter(distinct, counter(distinct) + 1);
    }
    trees[index].insert(pages, key, id);
}

void Table::Parts::takeNumber(StoredRow& row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (definition.columns[i].autoGuid && !row[i].present)
            row[i] = encodeField(definition.columns[i], Guid::random());
        if (!definition.columns[i].autonumber)
            continue;
        const auto last = counter(format().definition.lastNumber);
        if (!row[i].present) {
            if (last == std::numeric_limits<std::int32_t>::max())
                throw Error(Errc::full, "A numeração do campo \"" + definition.columns[i].name +
                                            "\" chegou ao fim.");
            row[i] = encodeField(definition.columns[i], std::int64_t{last} + 1);
        }
    }
    noteNumber(row);
}

void Table::Parts::noteNumber(const StoredRow& row) {
    const auto last = format().definition.lastNumber;
    for (std::size_t i = 0; i < row.size(); ++i)
        if (definition.columns[i].autonumber && row[i].present)
            if (const auto mine = load<std::int32_t>(row[i].bytes.data()); mine > counter(last))
                setCounter(last, mine);
}

std::vector<bool> Table::Parts::changedFields(const StoredRow& old, const StoredRow& row) const {
    std::vector<bool> changed(row.size());
    for (std::size_t i = 0; i < row.size(); ++i)
        changed[i] =
            old[i].present != row[i].present ||
            (row[i].content ? contentOf(old[i]) != *row[i].content : old[i].bytes != row[i].bytes);
    return changed;
}

void Table::Parts::noteCatalogChange() {
    if (!definition.system)
        return;
    Database::Parts& file = *owner.parts_;
    file.work.noteCatalogChange();
    for (auto& [name, entry] : file.catalog)
        if (entry.table)
            entry.table->forgetRules();
}

std::optional<std::string> Table::refusal(std::size_t column, const Value& value) {
    try {
        static_cast<void>(encodeField(columns()[column], value));
        if (!readOnlyReason() && parts_->rules)
            parts_->rules->values().check(column, value);
        return std::nullopt;
    } catch (const Error& reason) {
        return reason.what();
    }
}

bool Table::takesEmptyText(std::size_t column) {
    return readOnlyReason() || !parts_->rules || parts_->rules->values().takesEmptyText(column);
}

std::int32_t Table::lastNumber() const {
    return parts_->counter(parts_->format().definition.lastNumber);
}

void Table::passNumber(std::int32_t last) {
    const auto change = parts_->owner.parts_->change();
    requireWritable();
    parts_->owner.parts_->work.run([&] {
        if (last > lastNumber())
            parts_->setCounter(parts_->format().definition.lastNumber, last);
    });
}

void Table::addAtEnd() noexcept { parts_->addsAtEnd = true; }

RowId Table::insert(std::span<const Value> values) {
    if (values.size() != columns().size())
        throw Error(Errc::misuse, "O registro não tem um valor para cada campo.");
    const auto change = parts_->owner.parts_->change();
    requireWritable();
    StoredRow row;
    row.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        row.push_back(encodeField(columns()[i], values[i]));
    return parts_->owner.parts_->work.run([&] {
        Consequences all(parts_->owner);
        const RowId id = addRow(std::move(row), all);
        all.settle();
        return id;
    });
}

RowId Table::insert(std::span<const Assignment> given) {
    const auto change = parts_->owner.parts_->change();
    requireWritable();
    Row values(columns().size());
    std::vector<bool> isGiven(columns().size());
    for (const Assignment& assignment : given) {
        values[assignment.column] = assignment.value;
        isGiven[assignment.column] = true;
    }
    if (parts_->rules)
        parts_->rules->values().fillIn(values, isGiven);
    return insert(values);
}

RowId Table::addRow(StoredRow row, Consequences& all) {
    Parts& my = *parts_;
    my.takeNumber(row);
    my.requireKeys(*this, row);
    my.requireUnique(indexes_, row, std::nullopt);
    std::vector<std::optional<Bytes>> keys;
    for (std::size_t i = 0; i < indexes_.size(); ++i)
        keys.push_back(my.key(i, row));
    my.settleLongValues(row);
    const RowId id = RowStore(my.pager, my.pages, my.definition)
                         .add(assembleRow(my.format(), my.definition, row), my.addsAtEnd);
    for (std::size_t i = 0; i < keys.size(); ++i)
        if (keys[i])
            my.addKey(i, *keys[i], id);
    const auto rows = my.format().definition.rows;
    my.setCounter(rows, my.counter(rows) + 1);
    if (my.rules)
        my.rules->accept(id, std::vector<bool>(row.size(), true), {}, all);
    my.noteCatalogChange();
    return id;
}

std::vector<Cascaded> Table::update(RowId id, std::span<const Assignment> changes,
                                    std::optional<std::uint64_t> expected) {
    const auto change = parts_->owner.parts_->change();
    requireWritable();
    requireExpected(id, expected);
    return parts_->owner.parts_->work.run([&] {
        Consequences all(parts_->owner);
        changeRow(id, changes, all);
        all.settle();
        return all.takeCascaded();
    });
}

void Table::changeRow(RowId id, std::span<const Assignment> changes, Consequences& all) {
    Parts& my = *parts_;
    requireWritable(); // a relationship comes here from another table's change
    const StoredRow old = my.stored(id);
    StoredRow row = old;
    for (const Assignment& change : changes)
        row[change.column] = encodeField(columns()[change.column], change.value);
    my.requireKeys(*this, row);
    my.requireUnique(indexes_, row, id);
    my.noteNumber(row);
    const auto parentKeys = my.rules ? my.rules->keysOf(id) : TableRules::Keys();
    const std::vector<bool> changed = my.rules ? my.changedFields(old, row) : std::vector<bool>();
    std::vector<std::pair<std::optional<Bytes>, std::optional<Bytes>>> keys;
    for (std::size_t i = 0; i < indexes_.size(); ++i)
        keys.emplace_back(my.key(i, old), my.key(i, row));
    my.settleLongValues(row);
    RowStore(my.pager, my.pages, my.definition)
        .replace(id, assembleRow(my.format(), my.definition, row));
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto& [before, after] = keys[i];
        if (before == after)
            continue;
        if (before)
            my.trees[i].erase(my.pages, *before, id);
        if (after)
            my.addKey(i, *after, id);
    }
    my.releaseLongValues(old, &row);
    if (my.rules)
        my.rules->accept(id, changed, parentKeys, all);
    my.noteCatalogChange();
}

std::vector<const Table*> Table::cascadesTo(std::optional<std::span<const Assignment>> changes) {
    std::vector<const Table*> found;
    const auto follow = [&](const Relationship& bond, const Table& from) {
        if (bond.parent.definition != from.definition().page())
            return;
        const Table* const child = &parts_->owner.table(bond.child.table);
        if (std::ranges::find(found, child) == found.end())
            found.push_back(child);
    };
    if (readOnlyReason() || !parts_->rules)
        return found;
    for (const Relationship& bond : parts_->rules->relationships())
        if (changes ? bond.cascadesUpdates &&
                          std::ranges::any_of(*changes,
                                              [&](const Assignment& change) {
                                                  return std::ranges::find(bond.parent.columns,
                                                                           change.column) !=
                                                         bond.parent.columns.end();
                                              })
                    : bond.cascadesDeletes || bond.nullsOnDelete)
            follow(bond, *this);
    for (std::size_t i = 0; i < found.size(); ++i) // which grows meanwhile
        for (const Relationship& bond : relationshipsOf(parts_->owner, *found[i]))
            if (bond.cascadesUpdates || bond.cascadesDeletes || bond.nullsOnDelete)
                follow(bond, *found[i]);
    return found;
}

std::vector<Cascaded> Table::erase(RowId id, std::optional<std::uint64_t> expected) {
    const auto change = parts_->owner.parts_->change();
    requireWritable();
    requireExpected(id, expected);
    return parts_->owner.parts_->work.run([&] {
        Consequences all(parts_->owner);
        eraseRow(id, all);
        all.settle();
        return all.takeCascaded();
    });
}

void Table::eraseRow(RowId id, Consequences& all) {
    Parts& my = *parts_;
    requireWritable(); // as in changeRow()
    const StoredRow old = my.stored(id);
    const auto parentKeys = my.rules ? my.rules->keysOf(id) : TableRules::Keys();
    for (std::size_t i = 0; i < indexes_.size(); ++i)
        if (const auto key = my.key(i, old))
            my.trees[i].erase(my.pages, *key, id);
    RowStore(my.pager, my.pages, my.definition).remove(id);
    my.releaseLongValues(old, nullptr);
    const auto rows = my.format().definition.rows;
    const std::uint32_t count = my.counter(rows);
    my.setCounter(rows, count - (count > 0 ? 1 : 0)); // in others' files it may have been too low
    if (my.rules)
        my.rules->gone(parentKeys, all);
    my.noteCatalogChange();
}

} // namespace jet
