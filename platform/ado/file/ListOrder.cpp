#include "ado/file/ListOrder.h"

#include <algorithm>

namespace ado {

namespace {

using jet::ColumnType;
using jet::Value;

/// As SQLite orders the values that a virtual table gives for these, of a type with an order.
int compareValues(const jet::Database& database, const Value& a, const Value& b) {
    const auto sign = [](auto x, auto y) { return x < y ? -1 : (y < x ? 1 : 0); };
    if (jet::isNull(a) || jet::isNull(b))
        return sign(!jet::isNull(a), !jet::isNull(b));
    if (const auto* yes = std::get_if<bool>(&a))
        return sign(std::get<bool>(b), *yes); // yes is -1
    if (const auto* number = std::get_if<std::int64_t>(&a))
        return sign(*number, std::get<std::int64_t>(b));
    if (const auto* amount = std::get_if<jet::Currency>(&a))
        return sign(*amount, std::get<jet::Currency>(b));
    if (const auto* number = std::get_if<double>(&a))
        return sign(*number, std::get<double>(b));
    if (const auto* date = std::get_if<jet::Date>(&a))
        return sign(date->days, std::get<jet::Date>(b).days);
    return database.compareText(std::get<std::string>(a), std::get<std::string>(b));
}

bool hasOrder(ColumnType type) {
    return type != ColumnType::binary && type != ColumnType::ole && type != ColumnType::guid &&
           type != ColumnType::numeric;
}

} // namespace

std::optional<ListOrder> ListOrder::by(std::span<const SortTerm> terms, const jet::Table& table) {
    ListOrder order(table);
    for (const SortTerm& term : terms) {
        const auto column = table.findColumn(term.column);
        if (!column)
            return std::nullopt;
        order.columns_.push_back({*column, !term.descending});
    }
    if (const auto index = table.primaryKey()) {
        const auto& key = table.indexes()[*index].columns;
        order.columns_.insert(order.columns_.end(), key.begin(), key.end());
        order.ofKey_ = key.size();
    }
    return order;
}

bool ListOrder::isTablesOwn() const {
    const auto all = std::span(columns_);
    const auto terms = all.first(all.size() - ofKey_);
    return terms.empty() || std::ranges::equal(terms, all.last(ofKey_));
}

bool ListOrder::isComparable() const {
    return std::ranges::all_of(columns_, [&](const jet::IndexColumn& column) {
        return hasOrder(table_->columns()[column.column].type);
    });
}

std::optional<std::vector<Value>> ListOrder::keyOf(jet::RowReader& reader, jet::RowId row) const {
    const jet::RowView* const view = reader.read(row);
    if (view == nullptr)
        return std::nullopt;
    std::vector<Value> key;
    for (const jet::IndexColumn& column : columns_)
        key.push_back(view->value(column.column));
    if (ofKey_ == 0)
        key.emplace_back(jet::packed(row));
    return key;
}

int ListOrder::compare(const jet::Database& database, std::span<const Value> a,
                       std::span<const Value> b) const {
    for (std::size_t i = 0; i < a.size(); ++i) {
        const int order = compareValues(database, a[i], b[i]);
        if (order != 0)
            return i < columns_.size() && !columns_[i].ascending ? -order : order;
    }
    return 0; // unreached: no two rows have one key
}

} // namespace ado
