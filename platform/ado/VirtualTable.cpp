#include "ado/VirtualTable.h"

#include "ado/IndexOperand.h"
#include "ado/IndexPlan.h"
#include "jet/Error.h"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace ado {

namespace {

using jet::Bytes;
using jet::Column;
using jet::ColumnType;
using jet::Value;

struct VirtualTable : sqlite3_vtab {
    explicit VirtualTable(TableSource& from) : sqlite3_vtab{}, source(from) {}
    TableSource& source;
};

/// A plan as the number that SQLite carries from the planning to the search.
struct PackedPlan {
    Plan::Way way;
    bool low;
    bool high;
    bool backwards;
    std::size_t equal;
    std::size_t index;

    static PackedPlan of(const Plan& plan) {
        return {plan.way,       plan.low.has_value(), plan.high.has_value(),
                plan.backwards, plan.equal.size(),    plan.index};
    }
    [[nodiscard]] int pack() const {
        return static_cast<int>(static_cast<unsigned>(way) | (low ? 4U : 0U) | (high ? 8U : 0U) |
                                (backwards ? 16U : 0U) | static_cast<unsigned>(equal << 8) |
                                static_cast<unsigned>(index << 16));
    }
    static PackedPlan unpack(int number) {
        const auto bits = static_cast<unsigned>(number);
        return {static_cast<Plan::Way>(bits & 3U),
                (bits & 4U) != 0,
                (bits & 8U) != 0,
                (bits & 16U) != 0,
                (bits >> 8) & 0xFFU,
                (bits >> 16) & 0x7FFFU};
    }
};

/// The stretch of the index in which all rows lie that meet the comparisons; all of it where
/// an operand can't be put as a key.
jet::KeyRange rangeOf(const TableSource& source, const PackedPlan& plan,
                      std::span<sqlite3_value*> operands) {
    const jet::Index& index = source.table.indexes()[plan.index];
    const auto column = [&](std::size_t place) -> const Column& {
        return source.table.columns()[index.columns[place].column];
    };
    std::vector<Value> equal;
    for (std::size_t i = 0; i < plan.equal; ++i) {
        auto value = operandFor(column(i), operands[i], Rounding::none);
        if (!value)
            return {};
        equal.push_back(std::move(*value));
    }
    std::size_t at = plan.equal;
    std::optional<Value> low;
    std::optional<Value> high;
    if (plan.low)
        low = operandFor(column(plan.equal), operands[at++], Rounding::down);
    if (plan.high)
        high = operandFor(column(plan.equal), operands[at], Rounding::up);
    try {
        if (low || high)
            return source.table.keysBetween(plan.index, equal, low, high);
        if (!equal.empty())
            return source.table.keysEqual(plan.index, equal);
    } catch (const jet::Error& error) {
        // No row can hold such a value, but one may still compare as the statement wants.
        if (error.code() != jet::Errc::outOfRange && error.code() != jet::Errc::tooLong)
            throw;
    }
    return {};
}

// ---- cursor -----------------------------------------------------------------------------------

/// One walk over a table: through all rows, to one row, or along a stretch of an index.
class Cursor : public sqlite3_vtab_cursor {
public:
    explicit Cursor(TableSource& source)
        : sqlite3_vtab_cursor{}, source_(source), reader_(source.table.reader()) {}

    void search(const PackedPlan& plan, std::span<sqlite3_value*> operands) {
        way_ = plan.way;
        backwards_ = plan.backwards;
        row_ = nullptr;
        for (sqlite3_value* operand : operands) {
            if (sqlite3_value_type(operand) == SQLITE_NULL)
                return; // nothing equals null, or lies beyond it
        }
        switch (way_) {
        case Plan::Way::scan:
            beginScan(operands);
            break;
        case Plan::Way::row:
            id_ = jet::unpacked(sqlite3_value_int64(operands[0]));
            if (jet::packed(id_) == sqlite3_value_int64(operands[0]) && exists(id_))
                row_ = reader_.read(id_);
            break;
        case Plan::Way::index:
            beginWalk(plan, operands);
            break;
        }
    }

    void next() {
        switch (way_) {
        case Plan::Way::scan:
            settleScan(backwards_ ? scan_->previous() : scan_->next());
            break;
        case Plan::Way::row:
            row_ = nullptr;
            break;
        case Plan::Way::index:
            settleWalk(backwards_ ? walk_->previous() : walk_->next());
            break;
        }
    }

    [[nodiscard]] bool atEnd() const { return row_ == nullptr; }
    [[nodiscard]] jet::RowId id() const { return id_; }

    void give(sqlite3_context* context, std::size_t number) {
        const Column& column = source_.table.columns()[number];
        switch (column.type) {
        case ColumnType::boolean:
            return sqlite3_result_int(context, row_->boolean(number) ? -1 : 0);
        case ColumnType::byte:
        case ColumnType::integer:
        case ColumnType::longInteger:
            if (!row_->isNull(number))
                sqlite3_result_int64(context, row_->integer(number));
            return;
        case ColumnType::currency:
            if (!row_->isNull(number))
                sqlite3_result_double(
                    context, static_cast<double>(row_->currency(number).tenThousandths) / 10000.0);
            return;
        case ColumnType::single:
        case ColumnType::real:
            if (!row_->isNull(number))
                sqlite3_result_double(context, row_->real(number));
            return;
        case ColumnType::date:
            if (!row_->isNull(number))
                sqlite3_result_double(context, row_->date(number).days);
            return;
        case ColumnType::text:
        case ColumnType::memo:
            if (!row_->isNull(number)) {
                const std::string_view text = row_->text(number, buffer_);
                sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT,
                                      SQLITE_UTF8);
            }
            return;
        default:
            giveOther(context, row_->value(number));
        }
    }

private:
    static void giveOther(sqlite3_context* context, const Value& value) {
        if (const auto* decimal = std::get_if<jet::Numeric>(&value)) {
            sqlite3_result_double(context, approximate(*decimal));
        } else if (const auto* id = std::get_if<jet::Guid>(&value)) {
            const std::string text = id->text();
            sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
        } else if (const auto* bytes = std::get_if<Bytes>(&value)) {
            sqlite3_result_blob64(context, bytes->data(), bytes->size(), SQLITE_TRANSIENT);
        }
    }

    /// A row's id from a statement may be any number: only the scan knows which pages hold rows.
    bool exists(jet::RowId id) {
        scan_.emplace(source_.table.scan());
        return scan_->seek(id) && scan_->id() == id;
    }

    void beginScan(std::span<sqlite3_value*> operands) {
        scan_.emplace(source_.table.scan());
        if (backwards_)
            return settleScan(scan_->last());
        if (operands.empty() || sqlite3_value_type(operands[0]) != SQLITE_INTEGER)
            return settleScan(scan_->first());
        const std::int64_t low = sqlite3_value_int64(operands[0]);
        const jet::RowId id = jet::unpacked(low);
        settleScan(jet::packed(id) == low ? scan_->seek(id) : scan_->first());
    }

    void settleScan(bool found) {
        row_ = nullptr;
        if (found) {
            row_ = &scan_->row();
            id_ = scan_->id();
        }
    }

    void beginWalk(const PackedPlan& plan, std::span<sqlite3_value*> operands) {
        range_ = rangeOf(source_, plan, operands);
        walk_.emplace(source_.table.walk(plan.index));
        if (!backwards_)
            settleWalk(range_.lower.empty() ? walk_->first() : walk_->seek(range_.lower));
        else
            settleWalk(range_.upper ? walk_->seekBefore(*range_.upper) : walk_->last());
    }

    void settleWalk(bool found) {
        for (; found; found = backwards_ ? walk_->previous() : walk_->next()) {
            if (!insideRange())
                break;
            id_ = walk_->row();
            row_ = reader_.read(id_);
            if (row_ != nullptr) // else erased while this walk stood on it
                return;
        }
        row_ = nullptr;
    }

    [[nodiscard]] bool insideRange() const {
        const auto key = walk_->key();
        const auto before = [](std::span<const std::byte> a, std::span<const std::byte> b) {
            const int order = a.empty() || b.empty()
                                  ? 0
                                  : std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
            return order < 0 || (order == 0 && a.size() < b.size());
        };
        if (backwards_)
            return !before(key, range_.lower);
        return !range_.upper || before(key, *range_.upper);
    }

    TableSource& source_;
    Plan::Way way_ = Plan::Way::scan;
    bool backwards_ = false;
    std::optional<jet::RowCursor> scan_;
    std::optional<jet::IndexTree::Cursor> walk_;
    jet::KeyRange range_;
    jet::RowReader reader_;
    const jet::RowView* row_ = nullptr;
    jet::RowId id_;
    std::string buffer_;
};

// ---- what SQLite calls ------------------------------------------------------------------------

TableSource& sourceOf(sqlite3_vtab_cursor* cursor) {
    return static_cast<VirtualTable*>(cursor->pVtab)->source;
}

int result(bool done) { return done ? SQLITE_OK : SQLITE_ERROR; }

std::string declaredType(const Column& column) {
    switch (column.type) {
    case ColumnType::boolean:
    case ColumnType::byte:
    case ColumnType::integer:
    case ColumnType::longInteger:
        return "integer";
    case ColumnType::currency:
    case ColumnType::single:
    case ColumnType::real:
    case ColumnType::numeric:
    case ColumnType::date:
        return "real";
    case ColumnType::text:
    case ColumnType::memo:
        return std::string("text collate ") + kTextOrder;
    case ColumnType::guid:
        return "text collate nocase";
    default:
        return "blob";
    }
}

int connect(sqlite3* handle, void* client, int /*count*/, const char* const* /*arguments*/,
            sqlite3_vtab** table, char** /*message*/) {
    auto& source = *static_cast<TableSource*>(client);
    int declared = SQLITE_OK;
    const bool done = source.trap.run([&] {
        std::string statement = "create table x(";
        for (const Column& column : source.table.columns()) {
            if (statement.back() != '(')
                statement += ", ";
            statement += quotedName(column.name) + " " + declaredType(column);
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

std::optional<Comparison::Kind> kindOf(unsigned char operation) {
    switch (operation) {
    case SQLITE_INDEX_CONSTRAINT_EQ:
        return Comparison::Kind::equal;
    case SQLITE_INDEX_CONSTRAINT_GT:
    case SQLITE_INDEX_CONSTRAINT_GE:
        return Comparison::Kind::atLeast;
    case SQLITE_INDEX_CONSTRAINT_LT:
    case SQLITE_INDEX_CONSTRAINT_LE:
        return Comparison::Kind::atMost;
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
        return source.table.partBetween(plan.index, rangeOf(source, plan, operands));
    } catch (const jet::Error& error) {
        if (error.code() != jet::Errc::corrupt)
            throw;
        return std::nullopt;
    }
}

void plan(TableSource& source, sqlite3_index_info& info) {
    std::vector<Comparison> comparisons;
    std::vector<int> constraints; // where each comparison stands in SQLite's list
    for (int i = 0; i < info.nConstraint; ++i) {
        const auto& constraint = info.aConstraint[i];
        const auto kind = kindOf(constraint.op);
        if (constraint.usable == 0 || !kind)
            continue;
        comparisons.push_back({columnOf(constraint.iColumn), *kind});
        constraints.push_back(i);
    }
    std::vector<OrderTerm> order;
    order.reserve(static_cast<std::size_t>(info.nOrderBy));
    for (int i = 0; i < info.nOrderBy; ++i)
        order.push_back({columnOf(info.aOrderBy[i].iColumn), info.aOrderBy[i].desc != 0});

    const PartOf partOf = [&](const Plan& plan) -> std::optional<double> {
        std::vector<sqlite3_value*> operands;
        const auto isKnown = [&](std::size_t comparison) {
            sqlite3_value* value = nullptr;
            if (sqlite3_vtab_rhs_value(&info, constraints[comparison], &value) != SQLITE_OK ||
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
    const Plan best = choosePlan(source.table, comparisons, order, partOf);
    int operands = 0;
    const auto use = [&](std::size_t comparison) {
        info.aConstraintUsage[constraints[comparison]].argvIndex = ++operands;
    };
    for (const std::size_t comparison : best.equal)
        use(comparison);
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
    return result(source.trap.run([&] { *cursor = new Cursor(source); }));
}

int close(sqlite3_vtab_cursor* cursor) {
    delete static_cast<Cursor*>(cursor);
    return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor* cursor, int number, const char* /*text*/, int count,
           sqlite3_value** operands) {
    return result(sourceOf(cursor).trap.run([&] {
        static_cast<Cursor*>(cursor)->search(PackedPlan::unpack(number),
                                             {operands, static_cast<std::size_t>(count)});
    }));
}

int next(sqlite3_vtab_cursor* cursor) {
    return result(sourceOf(cursor).trap.run([&] { static_cast<Cursor*>(cursor)->next(); }));
}

int atEnd(sqlite3_vtab_cursor* cursor) { return static_cast<Cursor*>(cursor)->atEnd() ? 1 : 0; }

int column(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int number) {
    return result(sourceOf(cursor).trap.run(
        [&] { static_cast<Cursor*>(cursor)->give(context, static_cast<std::size_t>(number)); }));
}

int rowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* id) {
    *id = jet::packed(static_cast<Cursor*>(cursor)->id());
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

double approximate(const jet::Numeric& decimal) {
    const std::string text = decimal.text();
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

} // namespace ado
