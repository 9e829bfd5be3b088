#include "ado/server/ServerQuery.h"

#include "ado/provider/SourceSelect.h"
#include "ado/server/ServerOrder.h"
#include "ado/server/ServerTongue.h"
#include "ado/server/ServerValue.h"
#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/TextParts.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

/// The name of the table where a change names it itself.
const std::string kChanged = "\"t\"";

} // namespace

ServerQuery::ServerQuery(const ServerCatalog& catalog, const std::string& source,
                         CommandType command) {
    ServerTongue tongue(parameters_);
    select_ = selectOf(
        source, command, [&](const std::string& name) { return catalog.find(name) != nullptr; },
        catalog.spelling(), tongue);
    ofSource_ = parameters_;
    if (!select_.plain)
        return;
    std::vector<const ServerTable*> tables;
    std::vector<TableShape> shapes;
    for (const SelectedTable& from : select_.tables) {
        const ServerTable* const table = catalog.find(from.table); // as the spelling has seen
        tables.push_back(table);
        shapes.push_back(table->shape());
    }
    auto fields = QueryFields::of(select_, std::move(shapes));
    if (!fields || fields->isAmbiguous())
        return; // the server says what is wrong
    fields_ = std::move(*fields);
    tables_ = std::move(tables);
    const bool byColumns = select_.orderBy.empty() || !select_.sortTerms.empty();
    if (tables_.size() == 1 && !tables_.front()->key.empty() && byColumns) {
        keyed_ = tables_.front();
        order_ = orderBy(select_.sortTerms);
        ask();
    }
    lookForOthers();
}

/// @throws Error{notFound} for what is no column of the table.
std::vector<ServerQuery::OrderColumn>
ServerQuery::orderBy(const std::vector<SortTerm>& terms) const {
    std::vector<OrderColumn> order;
    const auto isIn = [&](std::size_t column) {
        return std::ranges::find(order, column, &OrderColumn::column) != order.end();
    };
    for (const SortTerm& term : terms) {
        const auto column = keyed_->shape().findColumn(term.column);
        if (!column)
            throw Error(Errc::notFound, "Não existe o campo \"" + term.column + "\".");
        const bool isYesNo = keyed_->columns[*column].type == jet::ColumnType::boolean;
        if (!isIn(*column)) // a yes is -1
            order.push_back({*column, term.descending != isYesNo});
    }
    for (const std::size_t column : keyed_->key)
        if (!isIn(column))
            order.push_back({column, false});
    return order;
}

bool ServerQuery::isWholeTable() const {
    return keyed_ != nullptr && select_.where.empty() && condition_.empty() &&
           std::ranges::equal(order_, keyed_->key, [](const OrderColumn& a, std::size_t b) {
               return a.column == b && !a.descending;
           });
}

void ServerQuery::lookForOthers() {
    dependsOnOthers_ = where("").find("select ") != std::string::npos;
}

std::optional<std::string> ServerQuery::keyIn(std::string_view condition) const {
    const std::size_t equals = condition.find('=');
    if (equals == std::string_view::npos || keyed_->key.size() != 1)
        return std::nullopt;
    const jet::Column& key = keyed_->columns[keyed_->key.front()];
    const std::string_view name = jet::trimmed(condition.substr(0, equals), jet::Side::both);
    const std::string_view value = jet::trimmed(condition.substr(equals + 1), jet::Side::both);
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc() || end != value.data() + value.size() ||
        key.type != jet::ColumnType::longInteger ||
        jet::foldedName(name) != jet::foldedName(key.name))
        return std::nullopt;
    return std::to_string(number);
}

bool ServerQuery::areSame(const ServerRow& a, const ServerRow& b) const {
    return std::ranges::all_of(
        keyed_->key, [&](std::size_t column) { return valueIn(a, column) == valueIn(b, column); });
}

void ServerQuery::setFilter(const std::string& condition, const Spelling& spelling) {
    std::vector<Parameter> parameters = ofSource_;
    std::string said;
    if (!saysNothing(condition)) {
        ServerTongue tongue(parameters);
        said = parseCondition(condition, spelling, tongue);
    }
    condition_ = std::move(said);
    parameters_ = std::move(parameters);
    lookForOthers();
}

void ServerQuery::setSort(const std::string& fields, const Spelling& spelling) {
    std::vector<SortTerm> terms;
    if (!saysNothing(fields))
        terms = parseSort(fields, spelling);
    if (keyed_ != nullptr)
        order_ = orderBy(terms.empty() ? select_.sortTerms : terms);
    ask();
    sort_ = std::move(terms);
}

// ---- parts of statements ----------------------------------------------------------------------

std::string ServerQuery::alias() const { return quotedName(select_.tables.front().alias); }

std::string ServerQuery::column(std::size_t place, const std::string& table) const {
    return table + "." + quotedName(keyed_->columns[place].name);
}

/// What a row is ordered by.
std::string ServerQuery::ordered(std::size_t place) const {
    const std::string name = column(place, alias());
    return jet::isText(keyed_->columns[place].type) ? keyOf(name) : name;
}

void ServerQuery::ask() {
    asked_.clear();
    places_.clear();
    const std::size_t columns = keyed_ != nullptr ? keyed_->columns.size() : 0;
    asked_.reserve(columns);
    places_.reserve(columns);
    for (std::size_t i = 0; i < columns; ++i) {
        places_.push_back(asked_.size());
        if (all_ || isKey(i) ||
            std::ranges::find(order_, i, &OrderColumn::column) != order_.end() ||
            std::ranges::find(fields_.all(), i, &QueryField::column) != fields_.all().end())
            asked_.push_back(i);
    }
}

void ServerQuery::askForFieldsOnly() {
    all_ = false;
    ask();
}

void ServerQuery::askForAll() {
    all_ = true;
    ask();
}

/// What is asked for of it, and then a fingerprint of the whole row.
std::string ServerQuery::rowOfTable(const std::string& table) const {
    std::string list;
    for (const std::size_t place : asked_) {
        list += list.empty() ? "" : ", ";
        list += column(place, table);
    }
    return all_ ? list + ", hashtextextended((" + table + ".*)::text, 0)" : list;
}

std::string ServerQuery::where(const std::string& more) const {
    std::string conditions;
    for (const std::string& part : {live() ? select_.where : std::string(), condition_, more}) {
        if (part.empty())
            continue;
        conditions += conditions.empty() ? " where (" : " and (";
        conditions += part + ")";
    }
    return conditions;
}

/// Nulls are the smallest.
std::string ServerQuery::sourceOrder() const {
    const std::vector<SortTerm>& terms = sort_.empty() && live() ? select_.sortTerms : sort_;
    std::string order;
    for (const SortTerm& term : terms) {
        order += order.empty() ? " order by jet_ordem(" : ", jet_ordem(";
        if (!term.qualifier.empty())
            order += quotedName(term.qualifier) + ".";
        order +=
            quotedName(term.column) + (term.descending ? ") desc nulls last" : ") nulls first");
    }
    if (order.empty() && live() && !select_.orderBy.empty())
        order = " order by " + select_.orderBy;
    // Equal rows in the order of the keys, so that it is the same each time.
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        for (const std::size_t key : tables_[i]->key) {
            order += order.empty() ? " order by " : ", ";
            order += quotedName(select_.tables[i].alias) + "." +
                     quotedName(tables_[i]->columns[key].name);
        }
    }
    return order;
}

ServerStatement ServerQuery::all() const {
    if (!live()) {
        if (condition_.empty() && sort_.empty())
            return {select_.text, parameters_};
        return {"select * from (" + select_.text + ") q" + where("") + sourceOrder(), parameters_};
    }
    std::string list;
    for (const QueryField& field : fields_.all()) {
        list += quotedName(select_.tables[field.table].alias) + ".";
        list += quotedName(tables_[field.table]->columns[field.column].name) + ", ";
    }
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        list += i == 0 ? "" : ", ";
        list += "hashtextextended((" + quotedName(select_.tables[i].alias) + ".*)::text, 0)";
    }
    return {"select " + list + " from " + select_.from + where("") + sourceOrder(), parameters_};
}

ServerStatement ServerQuery::count() const {
    return {"select count(*) from " + select_.from + where(""), parameters_};
}

// ---- ranges -----------------------------------------------------------------------------------

bool ServerQuery::isKey(std::size_t column) const {
    return std::ranges::find(keyed_->key, column) != keyed_->key.end();
}

/// Whether the order goes on from there with nothing but columns of the key, which are never null,
/// and all in one direction: the server compares such places at once, by an index and without
/// computing what that is of.
bool ServerQuery::endsAlike(std::size_t term) const {
    return std::all_of(order_.begin() + static_cast<std::ptrdiff_t>(term) + 1, order_.end(),
                       [&](const OrderColumn& by) {
                           return by.descending == order_[term].descending && isKey(by.column);
                       });
}

const std::optional<std::string>& ServerQuery::placeAt(const ServerRow& row,
                                                       std::size_t term) const {
    return row.place.empty() ? valueIn(row, order_[term].column) : row.place[term];
}

std::vector<std::optional<std::string>> ServerQuery::placeOf(const ServerRow& row) const {
    std::vector<std::optional<std::string>> place;
    place.reserve(order_.size());
    for (std::size_t term = 0; term < order_.size(); ++term)
        place.push_back(placeAt(row, term));
    return place;
}

/// What a row's place says of one term, as rows are compared with it.
std::string ServerQuery::valueAt(const ServerRow& place, std::size_t term,
                                 std::vector<Parameter>& parameters) const {
    const std::size_t column = order_[term].column;
    std::string value = placeFor(parameters, {keyed_->types[column].number, placeAt(place, term)});
    return jet::isText(keyed_->columns[column].type) ? keyOf(value) : value;
}

/// That a row comes behind a place, in its order from the term number `term` on.
std::string ServerQuery::beyond(const ServerRow& place, std::size_t term, bool forwards,
                                bool inclusive, std::vector<Parameter>& parameters) const {
    if (term == order_.size())
        return inclusive ? "true" : "false";
    const OrderColumn& by = order_[term];
    const std::string name = ordered(by.column);
    const bool upwards = forwards != by.descending; // to greater values, of which null is none
    const std::optional<std::string>& value = placeAt(place, term);
    if (value && endsAlike(term)) {
        std::string names;
        std::string values;
        for (std::size_t i = term; i < order_.size(); ++i) {
            names += (i == term ? "" : ", ") + ordered(order_[i].column);
            values += (i == term ? "" : ", ") + valueAt(place, i, parameters);
        }
        const std::string beyondThem =
            "(" + names + ")" + (upwards ? " >" : " <") + (inclusive ? "= (" : " (") + values + ")";
        return upwards || isKey(by.column) ? beyondThem : beyondThem + " or " + name + " is null";
    }
    const std::string rest = beyond(place, term + 1, forwards, inclusive, parameters);
    if (!value) {
        const std::string equal = "(" + name + " is null and (" + rest + "))";
        return upwards ? name + " is not null or " + equal : equal;
    }
    const std::string there = valueAt(place, term, parameters);
    // The first part is what an index is entered by.
    const std::string within = name + (upwards ? " >= " : " <= ") + there + " and (" + name +
                               (upwards ? " > " : " < ") + there + " or (" + rest + "))";
    return upwards ? within : "(" + within + ") or " + name + " is null";
}

ServerStatement ServerQuery::range(From from, bool forwards, const ServerRow* place,
                                   std::size_t most, const std::string& more,
                                   const Spelling& spelling) const {
    ServerStatement statement{{}, parameters_};
    std::string condition;
    if (from != From::end)
        condition = beyond(*place, 0, forwards, from == From::at, statement.parameters);
    if (!more.empty()) {
        ServerTongue tongue(statement.parameters);
        const std::string said = parseCondition(more, spelling, tongue);
        condition = condition.empty() ? said : "(" + condition + ") and (" + said + ")";
    }
    std::string order;
    for (const OrderColumn& by : order_) {
        order += order.empty() ? " order by " : ", ";
        order += ordered(by.column);
        const bool upwards = forwards != by.descending;
        order += upwards ? " asc" : " desc";
        // No key is null, and where that isn't said the server goes by the key's own index.
        if (!isKey(by.column))
            order += upwards ? " nulls first" : " nulls last";
    }
    statement.sql = "select " + rowOfTable(alias()) + " from " + select_.from + where(condition) +
                    order + " limit " + std::to_string(most);
    return statement;
}

ServerRow ServerQuery::rowOf(const ServerRows& rows, int row) const {
    ServerRow made;
    const auto columns = static_cast<int>(asked_.size());
    made.values.reserve(asked_.size());
    for (int column = 0; column < columns; ++column)
        made.values.push_back(rows.field(row, column));
    if (all_)
        made.fingerprint = std::atoll(rows.field(row, columns).value_or("0").c_str());
    return made;
}

ServerRow ServerQuery::spread(ServerRow row) const {
    std::vector<std::optional<std::string>> values(keyed_->columns.size());
    for (std::size_t i = 0; i < asked_.size(); ++i)
        values[asked_[i]] = std::move(row.values[i]);
    row.values = std::move(values);
    return row;
}

std::string ServerQuery::isKeyOf(const ServerRow& row, const std::string& table,
                                 std::vector<Parameter>& parameters) const {
    std::string condition;
    for (const std::size_t place : keyed_->key) {
        condition += condition.empty() ? "" : " and ";
        condition += column(place, table) + " = ";
        condition += placeFor(parameters, {keyed_->types[place].number, valueIn(row, place)});
    }
    return condition;
}

ServerStatement ServerQuery::same(const ServerRow& row) const {
    ServerStatement statement;
    statement.sql = "select " + rowOfTable(kChanged) + " from " + quotedName(keyed_->name) +
                    " as " + kChanged + " where " + isKeyOf(row, kChanged, statement.parameters);
    return statement;
}

// ---- changes ----------------------------------------------------------------------------------

/// A yes/no is never null.
Parameter ServerQuery::stored(const jet::Assignment& given) const {
    if (jet::isNull(given.value) && keyed_->columns[given.column].type == jet::ColumnType::boolean)
        return parameterOf(false);
    return parameterOf(given.value);
}

ServerStatement ServerQuery::insert(std::span<const jet::Assignment> given) const {
    ServerStatement statement;
    std::string names;
    std::string values;
    for (const jet::Assignment& one : given) {
        if (keyed_->columns[one.column].autonumber && jet::isNull(one.value))
            continue; // the server gives it one
        names += names.empty() ? "" : ", ";
        names += quotedName(keyed_->columns[one.column].name);
        values += values.empty() ? "" : ", ";
        values += placeFor(statement.parameters, stored(one));
    }
    statement.sql =
        "insert into " + quotedName(keyed_->name) + " as " + kChanged +
        (names.empty() ? " default values" : " (" + names + ") values (" + values + ")") +
        " returning " + rowOfTable(kChanged);
    return statement;
}

ServerStatement ServerQuery::update(const ServerRow& row, std::span<const jet::Assignment> given,
                                    std::int64_t fingerprint) const {
    ServerStatement statement;
    std::string changes;
    for (const jet::Assignment& one : given) {
        changes += changes.empty() ? "" : ", ";
        changes += quotedName(keyed_->columns[one.column].name) + " = ";
        changes += placeFor(statement.parameters, stored(one));
    }
    if (changes.empty()) { // nothing but that it is still there, and as it was
        const std::string key = quotedName(keyed_->columns[keyed_->key.front()].name);
        changes = key + " = " + kChanged + "." + key;
    }
    statement.sql =
        "update " + quotedName(keyed_->name) + " as " + kChanged + " set " + changes + " where " +
        isKeyOf(row, kChanged, statement.parameters) + " and hashtextextended((" + kChanged +
        ".*)::text, 0) = " +
        placeFor(statement.parameters, {server_type::kBigint, std::to_string(fingerprint)}) +
        " returning " + rowOfTable(kChanged);
    return statement;
}

ServerStatement ServerQuery::erase(const ServerRow& row, std::int64_t fingerprint) const {
    ServerStatement statement;
    statement.sql =
        "delete from " + quotedName(keyed_->name) + " as " + kChanged + " where " +
        isKeyOf(row, kChanged, statement.parameters) + " and hashtextextended((" + kChanged +
        ".*)::text, 0) = " +
        placeFor(statement.parameters, {server_type::kBigint, std::to_string(fingerprint)});
    return statement;
}

} // namespace ado
