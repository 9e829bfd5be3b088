#include "ado/Query.h"

#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/Tokens.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace ado {

namespace {

using jet::ColumnType;
using jet::Errc;
using jet::Error;
using jet::Value;

/// Changed rows beyond which a list is asked for anew.
constexpr std::size_t kMostReplaced = 1000;

/// Whether a condition depends on nothing but the row it is asked of.
bool dependsOnRowOnly(const std::string& sql) {
    return sql.find("select ") == std::string::npos &&
           sql.find("\"jet_date\"") == std::string::npos &&
           sql.find("\"jet_now\"") == std::string::npos;
}

bool isOneName(const std::string& source) {
    const std::vector<jet::Token> tokens = jet::tokenize(source);
    return tokens.size() == 1 && (tokens[0].kind == jet::Token::Kind::word ||
                                  tokens[0].kind == jet::Token::Kind::bracketed);
}

std::string qualified(const std::string& qualifier, const std::string& column) {
    return (qualifier.empty() ? "" : quotedName(qualifier) + ".") + quotedName(column);
}

} // namespace

Query::Query(jet::Database& database, Engine& engine, const std::string& source,
             CommandType command)
    : database_(database), engine_(engine) {
    std::string name = source;
    name.erase(0, std::min(name.find_first_not_of(" \t\r\n"), name.size()));
    if (name.size() > 2 && name.front() == '[' && name.back() == ']')
        name = name.substr(1, name.size() - 2);
    const bool isTable = command != CommandType::Text && database.hasTable(jet::foldedName(name));
    if (command == CommandType::Table && !isTable)
        throw Error(Errc::notFound, "Não existe a tabela \"" + name + "\".");
    if (command == CommandType::Unknown && !isTable && isOneName(source))
        throw Error(Errc::notFound, "Não existe a tabela \"" + name + "\".");
    const Spelling spelling = engine.spelling();
    const std::string table = isTable ? spelling.table(name) : "";
    select_ = parseSelect(isTable ? "select * from [" + table + "]" : source, spelling);
    if (select_.plain)
        describeLive();
    if (!select_.plain)
        describeComputed();
}

// ---- fields -----------------------------------------------------------------------------------

std::vector<std::size_t> Query::tablesOf(const std::string& qualifier) const {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        if (qualifier.empty() ||
            jet::foldedName(select_.tables[i].alias) == jet::foldedName(qualifier))
            found.push_back(i);
    }
    return found;
}

void Query::addField(const SelectItem& item, std::size_t table, std::size_t column) {
    const std::string& stored = tables_[table]->columns()[column].name;
    fields_.push_back(
        {item.label.empty() ? stored : item.label, select_.tables[table].alias, table, column});
}

/// Leaves the query computed if its rows can't be named by ids: then it can be read all the same.
void Query::describeLive() {
    select_.plain = std::ranges::all_of(
        select_.tables, [&](const SourceTable& from) { return database_.hasTable(from.table); });
    if (!select_.plain)
        return;
    for (const SourceTable& table : select_.tables)
        tables_.push_back(&database_.table(table.table));
    bool ambiguous = false;
    for (const SelectItem& item : select_.items) {
        const std::size_t before = fields_.size();
        for (const std::size_t table : tablesOf(item.qualifier)) {
            if (item.column.empty()) {
                for (std::size_t i = 0; i < tables_[table]->columns().size(); ++i)
                    addField(item, table, i);
            } else if (const auto column = tables_[table]->findColumn(item.column)) {
                addField(item, table, *column);
            }
        }
        if (fields_.size() == before)
            select_.plain = false;
        ambiguous = ambiguous || (!item.column.empty() && fields_.size() > before + 1);
    }
    if (!select_.plain)
        return;
    if (ambiguous)
        static_cast<void>(engine_.prepare(select_.text)); // it may be an error in a list of columns
    try {
        tryStatement();
    } catch (const Error&) {
        select_.plain = false; // joins nested to the right: SQLite hides the ids inside
    }
    if (!select_.plain)
        return;
    if (const auto key = tables_.front()->primaryKey())
        key_ = tables_.front()->indexes()[*key].columns;
    findColumnOrder();
}

void Query::describeComputed() {
    tables_.clear();
    fields_.clear();
    tryStatement();
    const Statement& statement = tried_->statement;
    for (int i = 0; i < statement.columns(); ++i)
        fields_.push_back(
            {statement.columnName(i), statement.columnTable(i), 0, static_cast<std::size_t>(i)});
}

std::size_t Query::fieldNamed(std::string_view name) const {
    if (const auto known = named_.find(name); known != named_.end())
        return known->second;
    const std::string wanted = jet::foldedName(name);
    const std::size_t point = wanted.rfind('.');
    const std::string qualifier = wanted.substr(0, point == std::string::npos ? 0 : point);
    std::string column = wanted.substr(point == std::string::npos ? 0 : point + 1);
    if (const auto alias = aliases_.find(column); alias != aliases_.end())
        column = jet::foldedName(alias->second);
    std::vector<std::size_t> found;
    std::string candidates;
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        const QueryField& field = fields_[i];
        const bool sameTable =
            qualifier.empty() || jet::foldedName(field.qualifier) == qualifier ||
            (live() && jet::foldedName(tables_[field.table]->name()) == qualifier);
        if (!sameTable || jet::foldedName(field.name) != column)
            continue;
        found.push_back(i);
        candidates += (found.size() > 1 ? ", " : "") + field.qualifier + "." + field.name;
    }
    if (found.empty() && optional_.contains(column))
        return named_.emplace(std::string(name), kNoField).first->second;
    if (found.empty())
        throw Error(Errc::notFound, missing(name));
    if (found.size() > 1)
        throw Error(
            Errc::notFound,
            "O campo \"" + std::string(name) +
                "\" existe mais de uma vez neste conjunto; escreva um destes: " + candidates + ".");
    return named_.emplace(std::string(name), found.front()).first->second;
}

std::size_t Query::tableNamed(std::string_view name) const {
    const std::vector<std::size_t> found = tablesOf(std::string(name));
    if (found.size() != 1 || !live())
        throw Error(Errc::notFound,
                    "Não existe a tabela \"" + std::string(name) + "\" neste conjunto.");
    return found.front();
}

std::string Query::missing(std::string_view name) const {
    const std::string field = "o campo \"" + std::string(name) + "\"";
    if (!updatable())
        return "Não existe " + field + " neste conjunto.";
    return "Falta " + field + " na tabela \"" + tables_.front()->name() +
           "\" da base de dados. Peça a quem cuida dela que o acrescente.";
}

void Query::addOptional(std::string_view name) { optional_.insert(jet::foldedName(name)); }

void Query::addAlias(const std::string& alias, std::string_view field) {
    const std::string wanted = jet::foldedName(alias);
    const std::string& column = fields_[fieldNamed(field)].name;
    const bool taken = std::ranges::any_of(
        fields_, [&](const QueryField& other) { return jet::foldedName(other.name) == wanted; });
    if (!taken)
        aliases_.emplace(wanted, column);
}

Spelling Query::spelling() {
    Spelling names = engine_.spelling();
    names.column = [this, ofFile = names.column](std::string_view name,
                                                 std::span<const std::string> own) {
        const std::string wanted = jet::foldedName(name);
        if (const auto alias = aliases_.find(wanted); alias != aliases_.end())
            return alias->second;
        std::vector<std::string> all(own.begin(), own.end());
        for (const SourceTable& table : select_.tables)
            all.push_back(table.table);
        const std::string stored = ofFile(name, all);
        const auto field = std::ranges::find_if(fields_, [&](const QueryField& candidate) {
            return !live() && jet::foldedName(candidate.name) == wanted;
        });
        return field != fields_.end() ? field->name : stored;
    };
    names.qualifier = [this](std::string_view name) {
        for (const std::size_t table : tablesOf(std::string(name)))
            return select_.tables[table].alias;
        return std::string(name);
    };
    return names;
}

// ---- filter and sort --------------------------------------------------------------------------

void Query::setFilter(const std::string& condition) {
    const bool none = jet::foldedName(condition).empty();
    const auto filter = std::exchange(filter_, none ? "" : condition);
    const auto filterSql = std::exchange(filterSql_, "");
    try {
        if (!none) {
            filterSql_ = parseCondition(condition, spelling());
            tryStatement();
        }
    } catch (const Error&) {
        filter_ = filter;
        filterSql_ = filterSql;
        throw;
    }
}

void Query::setSort(const std::string& fields) {
    const bool none = jet::foldedName(fields).empty();
    const auto sort = std::exchange(sort_, none ? "" : fields);
    const auto terms = std::exchange(sortTerms_, {});
    try {
        if (!none) {
            sortTerms_ = parseSort(fields, spelling());
            tryStatement();
        }
    } catch (const Error&) {
        sort_ = sort;
        sortTerms_ = terms;
        throw;
    }
    findColumnOrder();
}

// ---- SQL --------------------------------------------------------------------------------------

std::string Query::rowIds() const {
    std::string ids;
    for (const SourceTable& table : select_.tables)
        ids += (ids.empty() ? "" : ", ") + quotedName(table.alias) + "._rowid_";
    return ids;
}

std::string Query::where(const std::string& more) const {
    std::string conditions;
    for (const std::string& part : {live() ? select_.where : std::string(), filterSql_, more}) {
        if (!part.empty())
            conditions += (conditions.empty() ? " where (" : " and (") + part + ")";
    }
    return conditions;
}

std::string Query::orderOf(const std::vector<SortTerm>& terms) const {
    std::string order;
    for (const SortTerm& term : terms)
        order += (order.empty() ? "" : ", ") + qualified(term.qualifier, term.column) +
                 (term.descending ? " desc" : "");
    return order;
}

std::string Query::order() const {
    std::string order = !sortTerms_.empty() ? orderOf(sortTerms_) : live() ? select_.orderBy : "";
    if (updatable()) {
        // Equal rows in the order of the key, so that the order is the same each time.
        const std::string table = quotedName(select_.tables.front().alias) + ".";
        for (const jet::IndexColumn& key : key_)
            order += (order.empty() ? "" : ", ") + table +
                     quotedName(tables_.front()->columns()[key.column].name) +
                     (key.ascending ? "" : " desc");
        if (key_.empty())
            order += (order.empty() ? "" : ", ") + table + "_rowid_";
    }
    return order.empty() ? order : " order by " + order;
}

std::string Query::statement() const {
    if (live())
        return "select " + rowIds() + " from " + select_.from + where("") + order();
    if (filterSql_.empty() && sortTerms_.empty())
        return select_.text;
    return "select * from (" + select_.text + ")" + where("") + order();
}

void Query::tryStatement() {
    std::string sql = statement();
    Statement statement = engine_.prepare(sql);
    tried_.emplace(Tried{std::move(sql), std::move(statement)});
}

Statement Query::takeStatement() {
    const std::string sql = statement();
    auto tried = std::exchange(tried_, std::nullopt);
    return tried && tried->sql == sql ? std::move(tried->statement) : engine_.prepare(sql);
}

// ---- rows -------------------------------------------------------------------------------------

bool Query::isWholeTable() const {
    if (!updatable() || !select_.where.empty() || !filterSql_.empty() || !columnOrder_)
        return false;
    // By the key, which comes last in the order anyway: nothing else orders.
    const bool unordered = sortTerms_.empty() && select_.orderBy.empty();
    const bool byKey =
        !key_.empty() && columnOrder_->size() == 2 * key_.size() &&
        std::ranges::equal(key_, std::span(*columnOrder_).first(key_.size()),
                           [](const jet::IndexColumn& key, const ColumnOrder& term) {
                               return key.column == term.column && key.ascending != term.descending;
                           });
    return unordered || byKey;
}

std::unique_ptr<Rows> Query::rows() {
    if (isWholeTable()) {
        tried_.reset();
        return std::make_unique<TableWalk>(*tables_.front());
    }
    Statement rows = takeStatement();
    if (!live())
        return std::make_unique<ComputedRows>(std::move(rows));
    if (tables_.size() > 1)
        return std::make_unique<JoinRows>(std::move(rows));
    return database_.look([&]() -> std::unique_ptr<Rows> {
        auto list = std::make_unique<RowList>();
        rows.reset();
        while (rows.step())
            list->append(jet::unpacked(rows.integer(0)));
        return list;
    });
}

Statement Query::candidates(const std::string& criterion) {
    if (!live())
        throw Error(Errc::misuse,
                    "A procura só se aplica aos registros das próprias tabelas, e este "
                    "conjunto é um resultado calculado.");
    const std::string condition = parseCondition(criterion, spelling());
    const std::string select = "select " + rowIds() + " from " + select_.from;
    // A list says itself which rows belong to it.
    return engine_.prepare(select +
                           (updatable() ? " where (" + condition + ")" : where(condition)));
}

Statement Query::firstFrom(const std::string& criterion) {
    const std::string condition = parseCondition(criterion, spelling());
    return engine_.prepare("select " + rowIds() + " from " + select_.from + " where (" + condition +
                           ") and " + fromKey(0) + order() + " limit 1");
}

std::string Query::fromKey(std::size_t place) const {
    const std::string table = quotedName(select_.tables.front().alias) + ".";
    if (key_.empty())
        return table + "_rowid_ >= ?1";
    const jet::IndexColumn& key = key_[place];
    const std::string column = table + quotedName(tables_.front()->columns()[key.column].name);
    const std::string beyond = key.ascending ? " > " : " < ";
    const std::string notBefore = key.ascending ? " >= " : " <= ";
    const std::string parameter = "?" + std::to_string(place + 1);
    std::string condition = column + notBefore + parameter;
    if (place + 1 < key_.size())
        condition += " and (" + column + beyond + parameter + " or (" + fromKey(place + 1) + "))";
    return condition;
}

// ---- changed rows -----------------------------------------------------------------------------

void Query::findColumnOrder() {
    columnOrder_.reset();
    if (!updatable())
        return;
    const std::vector<SortTerm>& terms = sortTerms_.empty() ? select_.sortTerms : sortTerms_;
    if (terms.empty() && !select_.orderBy.empty())
        return;
    std::vector<ColumnOrder> order;
    for (const SortTerm& term : terms) {
        const auto column = tables_.front()->findColumn(term.column);
        if (!column)
            return;
        order.push_back({*column, term.descending});
    }
    for (const jet::IndexColumn& key : key_)
        order.push_back({key.column, !key.ascending});
    columnOrder_ = std::move(order);
}

std::optional<std::vector<Value>> Query::orderValues(jet::RowReader& reader, jet::RowId row) const {
    const jet::RowView* const view = reader.read(row);
    if (view == nullptr)
        return std::nullopt;
    std::vector<Value> values;
    for (const ColumnOrder& term : *columnOrder_)
        values.push_back(view->value(term.column));
    if (key_.empty())
        values.emplace_back(jet::packed(row));
    return values;
}

namespace {

/// As SQLite orders the values that VirtualTable gives for these; types without an order are
/// equal.
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
    if (const auto* text = std::get_if<std::string>(&a))
        return database.compareText(*text, std::get<std::string>(b));
    return 0;
}

bool hasOrder(ColumnType type) {
    return type != ColumnType::binary && type != ColumnType::ole && type != ColumnType::guid &&
           type != ColumnType::numeric;
}

} // namespace

int Query::compare(std::span<const Value> a, std::span<const Value> b) const {
    for (std::size_t i = 0; i < a.size(); ++i) {
        const int order = compareValues(database_, a[i], b[i]);
        if (order != 0)
            return i < columnOrder_->size() && (*columnOrder_)[i].descending ? -order : order;
    }
    return 0;
}

bool Query::replace(RowList& list, const std::vector<jet::RowId>& changed) {
    if (!dependsOnRowOnly(where("") + order()))
        return false;
    if (changed.empty())
        return true;
    if (!columnOrder_ || changed.size() > kMostReplaced)
        return false;
    for (const ColumnOrder& term : *columnOrder_) {
        if (!hasOrder(tables_.front()->columns()[term.column].type))
            return false;
    }
    std::unordered_set<std::int64_t> ids;
    for (const jet::RowId row : changed)
        ids.insert(jet::packed(row));
    static_cast<void>(list.erased(0, ids));

    const std::string table = quotedName(select_.tables.front().alias);
    Statement belongs =
        engine_.prepare("select 1 from " + select_.from + where(table + "._rowid_ = ?1"));
    jet::RowReader reader = tables_.front()->reader();
    for (const std::int64_t id : ids) {
        belongs.reset();
        belongs.bind(1, id);
        if (!belongs.step())
            continue;
        const auto values = orderValues(reader, jet::unpacked(id));
        if (!values)
            return false;
        std::size_t low = 0;
        std::size_t high = list.ids().size();
        while (low < high) {
            const std::size_t middle = low + (high - low) / 2;
            const auto other = orderValues(reader, jet::unpacked(list.ids()[middle]));
            if (!other)
                return false;
            if (compare(*other, *values) < 0)
                low = middle + 1;
            else
                high = middle;
        }
        list.insert(low, jet::unpacked(id));
    }
    return true;
}

} // namespace ado
