#include "ado/engine/VirtualTable.h"

#include "ado/dialect/Spelling.h"
#include "ado/engine/SqlValue.h"
#include "ado/engine/TableCursor.h"
#include "jet/Error.h"

#include <sqlite3.h>

#include <algorithm>

namespace ado {

namespace {

struct VirtualTable : sqlite3_vtab {
    explicit VirtualTable(TableSource& from) : sqlite3_vtab{}, source(from) {}
    TableSource& source;
};

TableSource& sourceOf(sqlite3_vtab_cursor* cursor) {
    return static_cast<VirtualTable*>(cursor->pVtab)->source;
}

/// Of what ran in the trap, which keeps what it threw: SQLite is C and knows numbers only.
int result(bool done) { return done ? SQLITE_OK : SQLITE_ERROR; }

int connect(sqlite3* handle, void* client, int /*count*/, const char* const* /*arguments*/,
            sqlite3_vtab** table, char** /*message*/) {
    auto& source = *static_cast<TableSource*>(client);
    int declared = SQLITE_OK;
    const bool done = source.trap.run([&] {
        std::string statement = "create table x(";
        for (const jet::Column& column : source.table.columns()) {
            if (statement.back() != '(')
                statement += ", ";
            statement += quotedName(column.name) + " " + sqlType(column);
        }
        declared = sqlite3_declare_vtab(handle, (statement + ")").c_str());
        if (declared == SQLITE_OK)
            *table = new VirtualTable(source);
    });
    return done ? declared : SQLITE_ERROR;
}

int disconnect(sqlite3_vtab* table) {
    delete static_cast<VirtualTable*>(table);
    return SQLITE_OK;
}

std::optional<Constraint::Kind> kindOf(unsigned char operation) {
    switch (operation) {
    case SQLITE_INDEX_CONSTRAINT_EQ:
        return Constraint::Kind::equal;
    case SQLITE_INDEX_CONSTRAINT_GT:
    case SQLITE_INDEX_CONSTRAINT_GE:
        return Constraint::Kind::atLeast;
    case SQLITE_INDEX_CONSTRAINT_LT:
    case SQLITE_INDEX_CONSTRAINT_LE:
        return Constraint::Kind::atMost;
    default:
        return std::nullopt;
    }
}

std::optional<std::size_t> columnOf(int number) {
    return number < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(number));
}

/// Nothing of an index that is damaged: who walks it will be told.
std::optional<double> partOfIndex(const TableSource& source, const PackedPlan& plan,
                                  std::span<sqlite3_value*> operands) {
    try {
        return source.table.partBetween(plan.index, rangeOf(source.table, plan, operands));
    } catch (const jet::Error& error) {
        if (error.code() != jet::Errc::corrupt)
            throw;
        return std::nullopt;
    }
}

void plan(TableSource& source, sqlite3_index_info& info) {
    std::vector<Constraint> constraints;
    std::vector<int> places; // where each stands in SQLite's list
    for (int i = 0; i < info.nConstraint; ++i) {
        const auto& constraint = info.aConstraint[i];
        const auto kind = kindOf(constraint.op);
        if (constraint.usable == 0 || !kind)
            continue;
        constraints.push_back({columnOf(constraint.iColumn), *kind});
        places.push_back(i);
    }
    std::vector<OrderTerm> order;
    order.reserve(static_cast<std::size_t>(info.nOrderBy));
    for (int i = 0; i < info.nOrderBy; ++i)
        order.push_back({columnOf(info.aOrderBy[i].iColumn), info.aOrderBy[i].desc != 0});

    const PartOf partOf = [&](const AccessPlan& plan) -> std::optional<double> {
        std::vector<sqlite3_value*> operands;
        const auto isKnown = [&](std::size_t constraint) {
            sqlite3_value* value = nullptr;
            if (sqlite3_vtab_rhs_value(&info, places[constraint], &value) != SQLITE_OK ||
                sqlite3_value_type(value) == SQLITE_NULL)
                return false;
            operands.push_back(value);
            return true;
        };
        if (!std::ranges::all_of(plan.equal, isKnown) || (plan.low && !isKnown(*plan.low)) ||
            (plan.high && !isKnown(*plan.high)))
            return std::nullopt;
        return partOfIndex(source, PackedPlan::of(plan), operands);
    };
    const AccessPlan best = choosePlan(source.table, constraints, order, partOf);
    int operands = 0;
    // SQLite goes on to check each row itself, so that an index may give some too many.
    const auto use = [&](std::size_t constraint) {
        info.aConstraintUsage[places[constraint]].argvIndex = ++operands;
    };
    for (const std::size_t constraint : best.equal)
        use(constraint);
    if (best.low)
        use(*best.low);
    if (best.high)
        use(*best.high);
    info.idxNum = PackedPlan::of(best).pack();
    info.orderByConsumed = best.ordered || best.unique ? 1 : 0;
    info.estimatedCost = best.cost;
    info.estimatedRows = static_cast<sqlite3_int64>(best.rows);
    if (best.unique)
        info.idxFlags = SQLITE_INDEX_SCAN_UNIQUE;
}

int bestIndex(sqlite3_vtab* table, sqlite3_index_info* info) {
    TableSource& source = static_cast<VirtualTable*>(table)->source;
    return result(source.trap.run([&] { plan(source, *info); }));
}

int open(sqlite3_vtab* table, sqlite3_vtab_cursor** cursor) {
    TableSource& source = static_cast<VirtualTable*>(table)->source;
    return result(source.trap.run([&] { *cursor = new TableCursor(source.table); }));
}

int close(sqlite3_vtab_cursor* cursor) {
    delete static_cast<TableCursor*>(cursor);
    return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor* cursor, int number, const char* /*text*/, int count,
           sqlite3_value** operands) {
    return result(sourceOf(cursor).trap.run([&] {
        static_cast<TableCursor*>(cursor)->search(PackedPlan::unpack(number),
                                                  {operands, static_cast<std::size_t>(count)});
    }));
}

int next(sqlite3_vtab_cursor* cursor) {
    return result(sourceOf(cursor).trap.run([&] { static_cast<TableCursor*>(cursor)->next(); }));
}

int atEnd(sqlite3_vtab_cursor* cursor) {
    return static_cast<TableCursor*>(cursor)->atEnd() ? 1 : 0;
}

int column(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int number) {
    return result(sourceOf(cursor).trap.run([&] {
        static_cast<TableCursor*>(cursor)->give(context, static_cast<std::size_t>(number));
    }));
}

int rowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* id) {
    *id = jet::packed(static_cast<TableCursor*>(cursor)->id());
    return SQLITE_OK;
}

sqlite3_module makeModule() {
    sqlite3_module module{};
    // No xCreate: the table is there under the module's name, and no statement can make another.
    module.xConnect = connect;
    module.xBestIndex = bestIndex;
    module.xDisconnect = disconnect;
    module.xOpen = open;
    module.xClose = close;
    module.xFilter = filter;
    module.xNext = next;
    module.xEof = atEnd;
    module.xColumn = column;
    module.xRowid = rowid;
    return module;
}

} // namespace

const sqlite3_module* virtualTableModule() {
    static const sqlite3_module module = makeModule();
    return &module;
}

} // namespace ado
