#include "ado/file/TableWalk.h"

#include <algorithm>

namespace ado {

TableWalk::TableWalk(const jet::Table& table) : table_(table) {
    if (const auto key = table.primaryKey())
        walk_.emplace(table.walk(*key));
    else
        scan_.emplace(table.scan());
}

bool TableWalk::arrive(bool found) {
    if (found)
        row_ = walk_ ? walk_->row() : scan_->id();
    return found;
}

bool TableWalk::first() { return arrive(walk_ ? walk_->first() : scan_->first()); }
bool TableWalk::last() { return arrive(walk_ ? walk_->last() : scan_->last()); }
bool TableWalk::next() { return arrive(walk_ ? walk_->next() : scan_->next()); }
bool TableWalk::previous() { return arrive(walk_ ? walk_->previous() : scan_->previous()); }

bool TableWalk::empty() {
    return walk_ ? !table_.walk(*table_.primaryKey()).first() : !table_.scan().first();
}

bool TableWalk::erased(std::size_t /*table*/, const std::unordered_set<std::int64_t>& ids) {
    return ids.contains(jet::packed(row_));
}

bool TableWalk::find(PreparedStatement statement,
                     const std::function<const jet::RowView*()>& current) {
    if (const auto key = table_.primaryKey()) {
        const jet::RowView& row = *current();
        int number = 0;
        for (const jet::IndexColumn& column : table_.indexes()[*key].columns)
            statement.bind(++number, row.value(column.column));
    } else {
        statement.bind(1, jet::packed(row_));
    }
    const bool found = statement.step();
    if (found)
        goTo(jet::unpacked(statement.integer(0)));
    return found;
}

void TableWalk::goTo(jet::RowId row) {
    if (walk_) {
        const auto key = table_.keyOf(*table_.primaryKey(), row);
        static_cast<void>(walk_->seek(key.value_or(jet::Bytes{}), row));
    } else {
        static_cast<void>(scan_->seek(row));
    }
    row_ = row;
}

bool TableWalk::isSame(jet::RowReader& reader, std::span<const jet::Value> /*key*/) const {
    if (!walk_)
        return reader.read(row_) != nullptr;
    if (!walk_->valid())
        return false;
    const auto key = table_.keyOf(*table_.primaryKey(), row_);
    return key && std::ranges::equal(*key, walk_->key());
}

} // namespace ado
