#include "ado/file/Query.h"

#include "ado/engine/Engine.h"
#include "ado/file/FetchedRows.h"
#include "ado/file/RowList.h"
#include "ado/file/TableWalk.h"
#include "ado/provider/SourceSelect.h"
#include "jet/Error.h"

#include <utility>

namespace ado {

using jet::Errc;
using jet::Error;

Query::Query(jet::Database& database, Engine& engine, const std::string& source,
             CommandType command)
    : database_(database), engine_(engine) {
    const Select select = selectOf(
        source, command, [&](const std::string& name) { return database.hasTable(name); },
        engine.spelling());
    if (select.plain && describeLive(select))
        return;
    sql_ = QuerySql::ofAnswer(select);
    tried_ = engine_.prepare(sql_.all());
    std::vector<QueryFields::Computed> columns;
    columns.reserve(static_cast<std::size_t>(tried_->columns()));
    for (int i = 0; i < tried_->columns(); ++i)
        columns.push_back({tried_->columnName(i), tried_->columnTable(i)});
    fields_ = QueryFields(select, columns);
}

/// False if its rows can't be named by ids: then it can be read all the same.
bool Query::describeLive(const Select& select) {
    std::vector<jet::Table*> tables;
    for (const SelectedTable& from : select.tables) {
        if (!database_.hasTable(from.table))
            return false;
        tables.push_back(&database_.table(from.table));
    }
    std::vector<TableShape> shapes;
    shapes.reserve(tables.size());
    for (const jet::Table* table : tables)
        shapes.push_back(shapeOf(*table));
    auto fields = QueryFields::of(select, std::move(shapes));
    if (!fields)
        return false;
    if (fields->isAmbiguous())
        static_cast<void>(engine_.prepare(select.text)); // it may be an error in a list of columns
    QuerySql sql = QuerySql::ofRows(select, tables);
    try {
        tried_ = engine_.prepare(sql.all());
    } catch (const Error& error) {
        if (error.code() != Errc::notFound && error.code() != Errc::syntax)
            throw;
        return false; // joins nested to the right: SQLite hides the ids inside
    }
    tables_ = std::move(tables);
    fields_ = std::move(*fields);
    sql_ = std::move(sql);
    return true;
}

// ---- filter and sort --------------------------------------------------------------------------

/// @throws what Engine::prepare() throws, and leaves all as it was then.
void Query::restrict(QuerySql::Restriction to) {
    QuerySql sql = sql_;
    sql.restrict(std::move(to));
    tried_.reset();
    if (!sql.isWholeTable()) // which is walked without one
        tried_ = engine_.prepare(sql.all());
    sql_ = std::move(sql);
}

void Query::setFilter(const std::string& condition) {
    const bool none = saysNothing(condition);
    QuerySql::Restriction to = sql_.restriction();
    to.condition = none ? "" : parseCondition(condition, fields_.spelling(engine_.spelling()));
    restrict(std::move(to));
    filter_ = none ? "" : condition;
}

void Query::setSort(const std::string& fields) {
    const bool none = saysNothing(fields);
    QuerySql::Restriction to = sql_.restriction();
    to.order =
        none ? std::vector<SortTerm>() : parseSort(fields, fields_.spelling(engine_.spelling()));
    restrict(std::move(to));
    sort_ = none ? "" : fields;
}

// ---- rows -------------------------------------------------------------------------------------

PreparedStatement Query::takeStatement() {
    auto tried = std::exchange(tried_, std::nullopt);
    return tried ? std::move(*tried) : engine_.prepare(sql_.all());
}

std::unique_ptr<Rows> Query::rows(bool forwardOnly) {
    if (sql_.isWholeTable()) {
        tried_.reset();
        return std::make_unique<TableWalk>(*tables().front());
    }
    if (!live())
        return std::make_unique<ComputedRows>(takeStatement(), forwardOnly);
    if (tables().size() > 1)
        return std::make_unique<JoinRows>(takeStatement(), forwardOnly);
    return std::make_unique<RowList>(ListSource{database_, engine_, *tables().front(), sql_.all(),
                                                sql_.belongs(), sql_.order(), sql_.isByRow()},
                                     takeStatement());
}

PreparedStatement Query::finder(const std::string& criterion) {
    if (!live())
        throw Error(Errc::misuse,
                    "A procura só se aplica aos registros das próprias tabelas, e este "
                    "conjunto é um resultado calculado.");
    const std::string condition = parseCondition(criterion, fields_.spelling(engine_.spelling()));
    return engine_.prepare(sql_.isWholeTable() ? sql_.firstFrom(condition)
                                               : sql_.meeting(condition));
}

} // namespace ado
