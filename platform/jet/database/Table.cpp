#include "jet/Table.h"

#include "jet/Names.h"
#include "jet/SelfCheck.h"
#include "jet/database/Consequences.h"
#include "jet/database/DatabaseParts.h"
#include "jet/database/TableRules.h"
#include "jet/row/LongValues.h"
#include "jet/row/RowStore.h"

#include <algorithm>
#include <limits>

namespace jet {

struct Table::Parts {
    Database& owner;
    Database::Parts& file;
    TableDefinition definition;
    std::vector<IndexTree> trees;
    std::vector<std::vector<KeyColumn>> keyColumns;
    std::vector<std::string> foldedNames; ///< of the columns
    std::optional<Hindrance> readOnly;
    bool verified = false;
    std::unique_ptr<const TableRules> rules; ///< null if there are none
    bool rulesKnown = false;
    bool rulesTentative = false; ///< read from a catalog that the open transaction has changed

    Parts(Database& database, Database::Parts& shared, PageNo page)
        : owner(database), file(shared),
          definition(parseDefinition(shared.pager, page, shared.texts)) {
        for (const Column& column : definition.columns)
            foldedNames.push_back(foldedName(column.name));
    }

    [[nodiscard]] Pager& pager() const noexcept { return file.pager; }
    [[nodiscard]] const Format& format() const noexcept { return file.pager.format(); }

    [[nodiscard]] Bytes contentOf(const StoredField& field) const {
        return field.content ? *field.content
                             : readLongValue(file.pager, field.bytes, definition.page());
    }

    /// The key of a row, or nothing if this index passes over it.
    [[nodiscard]] std::optional<Bytes> key(std::size_t index, const StoredRow& row) const {
        const RealIndex& real = definition.realIndexes[index];
        if (real.ignoreNulls && allNull(index, row))
            return std::nullopt;
        Bytes bytes;
        for (std::size_t i = 0; i < real.columns.size(); ++i) {
            const std::size_t column = real.columns[i].column;
            const KeyColumn& part = keyColumns[index][i];
            const StoredField& field = row[column];
            if (part.type == ColumnType::boolean)
                appendBooleanKey(bytes, part, field.present);
            else if (!field.present)
                appendNullKey(bytes, part);
            else if (part.type == ColumnType::memo)
                appendStoredKey(bytes, part, contentOf(field));
            else
                appendStoredKey(bytes, part, field.bytes);
        }
        return bytes;
    }

    [[nodiscard]] bool allNull(std::size_t index, const StoredRow& row) const {
        const auto& columns = definition.realIndexes[index].columns;
        return std::all_of(columns.begin(), columns.end(), [&](const auto& key) {
            return definition.columns[key.column].type != ColumnType::boolean &&
                   !row[key.column].present;
        });
    }

    [[nodiscard]] StoredRow stored(RowId id) const {
        RowReader reader(file.pager, definition);
        const RowView* row = reader.read(id);
        if (!row)
            throw Error(Errc::conflict, "O registro foi excluído por outro usuário ou programa.");
        return storedRow(definition, *row);
    }

    void requireKeys(const Table& table, const StoredRow& row) const;
    void requireUnique(std::span<const Index> indexes, const StoredRow& row,
                       std::optional<RowId> self) const;
    void settleLongValues(StoredRow& row);
    /// Gives back the long values of `old` that `row` (if any) no longer has.
    void releaseLongValues(const StoredRow& old, const StoredRow* row);
    void addKey(std::size_t index, const Bytes& key, RowId id);
    void takeNumber(StoredRow& row);
    /// The counter never stays behind a number that a row has.
    void noteNumber(const StoredRow& row);

    /// Which fields of `row` (its new contents not yet written) differ from those of `old`.
    [[nodiscard]] std::vector<bool> changedFields(const StoredRow& old, const StoredRow& row) const;
    /// The catalog says what rules there are: after a change of it every table reads its own anew.
    void noteCatalogChange();

    template <class T>
    [[nodiscard]] T counter(std::size_t at) const {
        definition.requireThere();
        return load<T>(file.pager.read(definition.page()).bytes().data() + at);
    }
    template <class T>
    void setCounter(std::size_t at, T value) {
        store<T>(file.pager.change(definition.page()).data() + at, value);
    }
    [[nodiscard]] std::size_t distinctKeysAt(std::size_t index) const {
        return format().definitionHeader + index * format().statisticsSize + 4;
    }
};

namespace {

/// The first key behind all that begin with `prefix`; nothing if there is none.
std::optional<Bytes> behind(Bytes prefix) {
    while (!prefix.empty() && prefix.back() == std::byte{0xFF})
        prefix.pop_back();
    if (prefix.empty())
        return std::nullopt;
    prefix.back() = static_cast<std::byte>(std::to_integer<unsigned>(prefix.back()) + 1);
    return prefix;
}

std::string columnList(std::span<const Column> columns, const Index& index) {
    std::string names;
    for (const IndexColumn& key : index.columns)
        names += (names.empty() ? "\"" : ", \"") + columns[key.column].name + "\"";
    return names;
}

std::uint64_t hashed(std::uint64_t hash, std::span<const std::byte> bytes) noexcept {
    for (const std::byte b : bytes)
        hash = (hash ^ std::to_integer<std::uint64_t>(b)) * 0x100000001B3U;
    return hash;
}

} // namespace

Table::Table(Database& database, std::string name, PageNo definition)
    : name_(std::move(name)),
      parts_(std::make_unique<Parts>(database, *database.parts_, definition)) {
    const TableDefinition& table = parts_->definition;
    for (std::size_t i = 0; i < table.realIndexes.size(); ++i) {
        const RealIndex& real = table.realIndexes[i];
        Index index{{}, {}, real.unique, real.ignoreNulls, real.required, false};
        for (const LogicalIndex& logical : table.logicalIndexes)
            if (logical.realIndex == i) {
                const bool primary = logical.kind == LogicalIndex::Kind::primary;
                if (index.name.empty() || primary)
                    index.name = logical.name;
                index.primary = index.primary || primary;
            }
        std::vector<KeyColumn> keys;
        for (const RealIndex::KeyColumn& key : real.columns) {
            const Column& column = table.columns[key.column];
            index.columns.push_back({key.column, key.ascending});
            keys.push_back(
                {column.type, key.ascending, column.collation, &column.codec, column.scale});
        }
        parts_->keyColumns.push_back(std::move(keys));
        parts_->trees.emplace_back(parts_->pager(), table.page(), real.root, real.map);
        indexes_.push_back(std::move(index));
    }
}

Table::~Table() = default;

std::span<const Column> Table::columns() const noexcept { return parts_->definition.columns; }

std::optional<std::size_t> Table::findColumn(std::string_view name) const {
    const auto& names = parts_->foldedNames;
    const auto found = std::ranges::find(names, foldedName(name));
    if (found == names.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - names.begin());
}

std::optional<std::size_t> Table::primaryKey() const noexcept {
    const auto found =
        std::find_if(indexes_.begin(), indexes_.end(), [](const Index& i) { return i.primary; });
    if (found == indexes_.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - indexes_.begin());
}

std::int64_t Table::rowCount() const {
    return parts_->pager().look(
        [&] { return parts_->counter<std::uint32_t>(parts_->format().rowCountAt); });
}

std::optional<std::string> Table::readOnlyReason() {
    if (auto reason = parts_->file.whyNotWritable())
        return reason;
    return ownReadOnlyReason();
}

std::optional<std::string> Table::ownReadOnlyReason() {
    Parts& my = *parts_;
    my.definition.requireThere();
    if (!my.verified) {
        my.readOnly = my.pager().look([&] { return whyNotWritable(*this, my.pager()); });
        my.verified = true;
        if (my.readOnly && my.readOnly->damage)
            my.file.damage = my.readOnly->sentence;
    }
    if (my.readOnly)
        return my.readOnly->sentence;
    if (my.rulesTentative && !my.file.catalogChanged)
        forgetRules(); // that transaction has ended, one way or the other
    if (!std::exchange(my.rulesKnown, true) && !my.definition.system) {
        try {
            my.rules = TableRules::load(my.owner, *this);
        } catch (...) {
            forgetRules();
            throw;
        }
        my.rulesTentative = my.file.catalogChanged;
    }
    return my.rules ? my.rules->problem() : std::nullopt;
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

RowCursor Table::scan() const { return {parts_->pager(), parts_->definition}; }
RowReader Table::reader() const { return {parts_->pager(), parts_->definition}; }

std::optional<Row> Table::read(RowId id) const {
    return parts_->pager().look([&] {
        RowReader source = reader();
        const RowView* row = source.read(id);
        return row ? std::optional(row->values()) : std::nullopt;
    });
}

std::optional<std::uint64_t> Table::stamp(RowId id) const {
    return parts_->pager().look([&] {
        RowReader source = reader();
        const RowView* row = source.read(id);
        return row ? std::optional(stamp(*row)) : std::nullopt;
    });
}

std::uint64_t Table::stamp(const RowView& row) const {
    std::uint64_t hash = hashed(0xCBF29CE484222325U, row.bytes());
    for (std::size_t i = 0; i < columns().size(); ++i)
        if (isLongValue(columns()[i].type) && !row.isNull(i))
            hash = hashed(hash, readLongValue(parts_->pager(), row.stored(i), definition().page()));
    return hash;
}

IndexTree::Cursor Table::walk(std::size_t index) const {
    return IndexTree::Cursor(parts_->trees[index]);
}

double Table::partBetween(std::size_t index, const KeyRange& range) const {
    const IndexTree& tree = parts_->trees[index];
    const double end = range.upper ? tree.partBefore(*range.upper) : 1;
    return std::max(0.0, end - tree.partBefore(range.lower));
}

KeyRange Table::keysEqual(std::size_t index, std::span<const Value> values) const {
    Bytes prefix;
    for (std::size_t i = 0; i < values.size(); ++i)
        appendKey(prefix, index, i, values[i]);
    return {prefix, behind(prefix)};
}

KeyRange Table::keysBetween(std::size_t index, std::span<const Value> equal,
                            const std::optional<Value>& low,
                            const std::optional<Value>& high) const {
    KeyRange range = equal.empty() ? KeyRange{} : keysEqual(index, equal);
    const Bytes prefix = range.lower;
    const std::size_t column = equal.size();
    const bool ascending = indexes_[index].columns[column].ascending;
    const auto bound = [&](const Value& value) {
        Bytes key = prefix;
        appendKey(key, index, column, value);
        return key;
    };
    if (const auto& first = ascending ? low : high)
        range.lower = bound(*first);
    if (const auto& last = ascending ? high : low)
        range.upper = behind(bound(*last));
    return range;
}

void Table::appendKey(Bytes& key, std::size_t index, std::size_t place, const Value& value) const {
    const KeyColumn& part = parts_->keyColumns[index][place];
    const Column& column = columns()[indexes_[index].columns[place].column];
    if (jet::isNull(value) && part.type != ColumnType::boolean)
        return appendNullKey(key, part);
    // A text may be searched for that is longer than the column takes.
    if (isText(part.type) && std::holds_alternative<std::string>(value))
        return jet::appendKey(key, part, value);
    const StoredField field = encodeField(column, value);
    if (part.type == ColumnType::boolean)
        appendBooleanKey(key, part, field.present);
    else
        appendStoredKey(key, part, field.content ? *field.content : field.bytes);
}

std::optional<Bytes> Table::keyOf(std::size_t index, RowId id) const {
    return parts_->pager().look([&] {
        RowReader source = reader();
        const RowView* row = source.read(id);
        return row ? parts_->key(index, storedRow(parts_->definition, *row)) : std::nullopt;
    });
}

const TableDefinition& Table::definition() const noexcept { return parts_->definition; }
const IndexTree& Table::tree(std::size_t index) const noexcept { return parts_->trees[index]; }

void Table::requireWritable() {
    if (const auto& reason = ownReadOnlyReason())
        throw Error(Errc::readOnly, *reason);
}

void Table::requireExpected(RowId id, std::optional<std::uint64_t> expected) const {
    if (expected && stamp(id) != expected)
        throw Error(Errc::conflict,
                    "Este registro foi alterado ou excluído por outra estação depois de lido. Nada "
                    "foi gravado; localize o registro outra vez e repita a alteração.");
}

void Table::Parts::requireKeys(const Table& table, const StoredRow& row) const {
    for (const Index& index : table.indexes_)
        if (index.required || index.primary)
            for (const IndexColumn& key : index.columns)
                if (definition.columns[key.column].type != ColumnType::boolean &&
                    !row[key.column].present)
                    throw leftEmpty(table.name_, definition.columns[key.column].name);
}

void Table::Parts::requireUnique(std::span<const Index> indexes, const StoredRow& row,
                                 std::optional<RowId> self) const {
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        if (!(indexes[i].unique || indexes[i].primary) || allNull(i, row))
            continue;
        const std::optional<Bytes> bytes = key(i, row);
        if (bytes && trees[i].hasKey(*bytes, self))
            throw Error(Errc::duplicate, "Já existe um registro com o mesmo valor em " +
                                             columnList(definition.columns, indexes[i]) + ".");
    }
}

void Table::Parts::settleLongValues(StoredRow& row) {
    const bool inRow = rowSize(format(), definition, row, true) <= format().largestRow;
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
        row[i].bytes = LongValueStore(file.pager, file.pages, *maps).write(*row[i].content, inRow);
        row[i].content.reset();
    }
}

void Table::Parts::releaseLongValues(const StoredRow& old, const StoredRow* row) {
    for (std::size_t i = 0; i < old.size(); ++i) {
        const Column& column = definition.columns[i];
        if (!isLongValue(column.type) || !old[i].present ||
            (row && (*row)[i].present && (*row)[i].bytes == old[i].bytes))
            continue;
        if (const LongValueMaps* maps = definition.longValuesOf(column))
            LongValueStore(file.pager, file.pages, *maps).release(old[i].bytes, definition.page());
    }
}

void Table::Parts::addKey(std::size_t index, const Bytes& key, RowId id) {
    if (!trees[index].hasKey(key)) {
        const std::size_t at = distinctKeysAt(index);
        setCounter<std::uint32_t>(at, counter<std::uint32_t>(at) + 1);
    }
    trees[index].insert(file.pages, key, id);
}

void Table::Parts::takeNumber(StoredRow& row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (definition.columns[i].autoGuid && !row[i].present)
            row[i] = encodeField(definition.columns[i], Guid::random());
        if (!definition.columns[i].autonumber)
            continue;
        const auto last = counter<std::int32_t>(format().autonumberAt);
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
    const std::size_t at = format().autonumberAt;
    for (std::size_t i = 0; i < row.size(); ++i)
        if (definition.columns[i].autonumber && row[i].present)
            if (const auto mine = load<std::int32_t>(row[i].bytes.data());
                mine > counter<std::int32_t>(at))
                setCounter<std::int32_t>(at, mine);
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
    file.catalogChanged = file.explicitTransaction;
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

RowId Table::insert(std::span<const Value> values) {
    if (values.size() != columns().size())
        throw Error(Errc::misuse, "O registro não tem um valor para cada campo.");
    const Database::Parts::Change writing(parts_->file);
    requireWritable();
    StoredRow row;
    row.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        row.push_back(encodeField(columns()[i], values[i]));
    return parts_->file.statement([&] {
        Consequences all(parts_->owner);
        const RowId id = addRow(std::move(row), all);
        all.settle();
        return id;
    });
}

RowId Table::insert(std::span<const Assignment> given) {
    const Database::Parts::Change writing(parts_->file);
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
    const RowId id = RowStore(my.pager(), my.file.pages, my.definition)
                         .add(assembleRow(my.format(), my.definition, row));
    for (std::size_t i = 0; i < keys.size(); ++i)
        if (keys[i])
            my.addKey(i, *keys[i], id);
    my.setCounter<std::uint32_t>(my.format().rowCountAt,
                                 my.counter<std::uint32_t>(my.format().rowCountAt) + 1);
    if (my.rules)
        my.rules->accept(id, std::vector<bool>(row.size(), true), {}, all);
    my.noteCatalogChange();
    return id;
}

std::vector<Cascaded> Table::update(RowId id, std::span<const Assignment> changes,
                                    std::optional<std::uint64_t> expected) {
    const Database::Parts::Change writing(parts_->file);
    requireWritable();
    requireExpected(id, expected);
    return parts_->file.statement([&] {
        Consequences all(parts_->owner);
        changeRow(id, changes, all);
        all.settle();
        return all.takeCascaded();
    });
}

void Table::changeRow(RowId id, std::span<const Assignment> changes, Consequences& all) {
    Parts& my = *parts_;
    requireWritable();
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
    RowStore(my.pager(), my.file.pages, my.definition)
        .replace(id, assembleRow(my.format(), my.definition, row));
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto& [before, after] = keys[i];
        if (before == after)
            continue;
        if (before)
            my.trees[i].erase(my.file.pages, *before, id);
        if (after)
            my.addKey(i, *after, id);
    }
    my.releaseLongValues(old, &row);
    if (my.rules)
        my.rules->accept(id, changed, parentKeys, all);
    my.noteCatalogChange();
}

std::vector<Cascaded> Table::erase(RowId id, std::optional<std::uint64_t> expected) {
    const Database::Parts::Change writing(parts_->file);
    requireWritable();
    requireExpected(id, expected);
    return parts_->file.statement([&] {
        Consequences all(parts_->owner);
        eraseRow(id, all);
        all.settle();
        return all.takeCascaded();
    });
}

void Table::eraseRow(RowId id, Consequences& all) {
    Parts& my = *parts_;
    requireWritable();
    const StoredRow old = my.stored(id);
    const auto parentKeys = my.rules ? my.rules->keysOf(id) : TableRules::Keys();
    for (std::size_t i = 0; i < indexes_.size(); ++i)
        if (const auto key = my.key(i, old))
            my.trees[i].erase(my.file.pages, *key, id);
    RowStore(my.pager(), my.file.pages, my.definition).remove(id);
    my.releaseLongValues(old, nullptr);
    const auto rows = my.counter<std::uint32_t>(my.format().rowCountAt);
    my.setCounter<std::uint32_t>(my.format().rowCountAt, rows - (rows > 0 ? 1 : 0));
    if (my.rules)
        my.rules->gone(parentKeys, all);
    my.noteCatalogChange();
}

} // namespace jet
