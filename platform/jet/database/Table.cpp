#include "jet/Table.h"

#include "jet/Names.h"
#include "jet/database/TableParts.h"
#include "jet/value/Checksum.h"

#include <algorithm>

namespace jet {

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

} // namespace

Table::Table(Database& database, std::string name, PageNo definition)
    : name_(std::move(name)), parts_(std::make_unique<Parts>(database, definition)) {
    const TableDefinition& table = parts_->definition;
    for (const Column& column : table.columns)
        parts_->foldedNames.push_back(foldedName(column.name));
    for (std::size_t i = 0; i < table.realIndexes.size(); ++i) {
        const RealIndex& real = table.realIndexes[i];
        Index index{{}, real.columns, real.unique, real.ignoreNulls, real.required, false};
        for (const LogicalIndex& logical : table.logicalIndexes)
            if (logical.realIndex == i) {
                const bool primary = logical.kind == LogicalIndex::Kind::primary;
                if (index.name.empty() || primary)
                    index.name = logical.name;
                index.primary = index.primary || primary;
            }
        parts_->trees.emplace_back(parts_->pager, table.page(), real.root, real.map);
        indexes_.push_back(std::move(index));
    }
}

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
    return parts_->pager.onSnapshot(
        [&] { return parts_->counter(parts_->format().definition.rows); });
}

RowCursor Table::scan() const { return {parts_->pager, parts_->definition}; }
RowReader Table::reader() const { return {parts_->pager, parts_->definition}; }

std::optional<Row> Table::read(RowId id) const {
    return parts_->pager.onSnapshot([&] {
        RowReader source = reader();
        const RowView* row = source.read(id);
        return row ? std::optional(row->values()) : std::nullopt;
    });
}

std::optional<std::uint64_t> Table::rowVersion(RowId id) const {
    return parts_->pager.onSnapshot([&] {
        RowReader source = reader();
        const RowView* row = source.read(id);
        return row ? std::optional(rowVersion(*row)) : std::nullopt;
    });
}

std::uint64_t Table::rowVersion(const RowView& row) const {
    std::uint64_t version = checksum(row.bytes());
    for (std::size_t i = 0; i < columns().size(); ++i)
        if (isLongValue(columns()[i].type) && !row.isNull(i))
            version =
                checksum(readLongValue(parts_->pager, row.stored(i), definition().page()), version);
    return version;
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
    constexpr std::size_t kOrdinary = 16; // the key of a number or a date
    Bytes prefix;
    prefix.reserve(kOrdinary);
    for (std::size_t i = 0; i < values.size(); ++i)
        appendKey(prefix, index, i, values[i]);
    std::optional<Bytes> upper = behind(prefix);
    return {std::move(prefix), std::move(upper)};
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
    const bool ascending = indexes_[index].columns[place].ascending;
    const Column& column = columns()[indexes_[index].columns[place].column];
    if (jet::isNull(value) && column.type != ColumnType::boolean)
        return appendNullKey(key, ascending);
    // A text may be searched for that is longer than the column takes.
    if (isText(column.type) && std::holds_alternative<std::string>(value))
        return jet::appendKey(key, column, ascending, value);
    const StoredField field = encodeField(column, value);
    if (column.type == ColumnType::boolean)
        appendBooleanKey(key, ascending, field.present);
    else
        appendStoredKey(key, column, ascending, field.content ? *field.content : field.bytes);
}

std::optional<Bytes> Table::keyOf(std::size_t index, RowId id) const {
    return parts_->pager.onSnapshot([&] {
        RowReader source = reader();
        const RowView* row = source.read(id);
        return row ? parts_->key(index, storedRow(parts_->definition, *row)) : std::nullopt;
    });
}

const TableDefinition& Table::definition() const noexcept { return parts_->definition; }
const IndexTree& Table::tree(std::size_t index) const noexcept { return parts_->trees[index]; }

} // namespace jet
