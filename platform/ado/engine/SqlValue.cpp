#include "ado/engine/SqlValue.h"

#include "ado/dialect/Spelling.h"
#include "jet/Table.h"

#include <sqlite3.h>

#include <charconv>

namespace ado {

namespace {

using jet::ColumnType;
using jet::Value;

/// The double nearest to a decimal number.
double approximate(const jet::Numeric& decimal) {
    const std::string text = decimal.text();
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

double inReais(jet::Currency amount) {
    return static_cast<double>(amount.tenThousandths) / 10000.0;
}

struct Binder {
    sqlite3_stmt* statement;
    int number;

    int operator()(std::monostate) const { return sqlite3_bind_null(statement, number); }
    int operator()(bool yes) const { return sqlite3_bind_int(statement, number, yes ? -1 : 0); }
    int operator()(std::int64_t whole) const {
        return sqlite3_bind_int64(statement, number, whole);
    }
    int operator()(jet::Currency amount) const { return (*this)(inReais(amount)); }
    int operator()(double real) const { return sqlite3_bind_double(statement, number, real); }
    int operator()(jet::Date date) const { return (*this)(date.days); }
    int operator()(const std::string& text) const {
        return sqlite3_bind_text64(statement, number, text.data(), text.size(), SQLITE_TRANSIENT,
                                   SQLITE_UTF8);
    }
    int operator()(const jet::Bytes& bytes) const {
        return sqlite3_bind_blob64(statement, number, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
    }
    int operator()(const jet::Guid& id) const { return (*this)(id.text()); }
    int operator()(const jet::Numeric& decimal) const { return (*this)(approximate(decimal)); }
};

void giveText(sqlite3_context* context, std::string_view text) {
    sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void giveBytes(sqlite3_context* context, std::span<const std::byte> bytes) {
    sqlite3_result_blob64(context, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}

/// Of the types that the shop's tables hardly have.
void giveRareValue(sqlite3_context* context, const Value& value) {
    if (const auto* decimal = std::get_if<jet::Numeric>(&value))
        sqlite3_result_double(context, approximate(*decimal));
    else if (const auto* id = std::get_if<jet::Guid>(&value))
        giveText(context, id->text());
    else
        giveBytes(context, std::get<jet::Bytes>(value));
}

/// Of a text or bytes.
template <class Result>
Result columnAs(sqlite3_stmt* statement, int column) {
    const void* const first = sqlite3_column_blob(statement, column);
    const auto* const bytes = static_cast<const typename Result::value_type*>(first);
    return Result(bytes, bytes + sqlite3_column_bytes(statement, column));
}

} // namespace

std::string sqlType(const jet::Column& column) {
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

void giveField(sqlite3_context* context, const jet::Column& column, const jet::RowView& row,
               std::size_t field, std::string& buffer) {
    if (column.type == ColumnType::boolean)
        return sqlite3_result_int(context, row.boolean(field) ? -1 : 0);
    if (row.isNull(field))
        return;
    switch (column.type) {
    case ColumnType::byte:
    case ColumnType::integer:
    case ColumnType::longInteger:
        return sqlite3_result_int64(context, row.integer(field));
    case ColumnType::currency:
        return sqlite3_result_double(context, inReais(row.currency(field)));
    case ColumnType::single:
    case ColumnType::real:
        return sqlite3_result_double(context, row.real(field));
    case ColumnType::date:
        return sqlite3_result_double(context, row.date(field).days);
    case ColumnType::text:
    case ColumnType::memo:
        return giveText(context, row.text(field, buffer));
    default:
        giveRareValue(context, row.value(field));
    }
}

int bindValue(sqlite3_stmt* statement, int number, const Value& value) {
    return std::visit(Binder{statement, number}, value);
}

Value columnValue(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_INTEGER:
        return std::int64_t{sqlite3_column_int64(statement, column)};
    case SQLITE_FLOAT:
        return sqlite3_column_double(statement, column);
    case SQLITE_TEXT:
        return columnAs<std::string>(statement, column);
    case SQLITE_BLOB:
        return columnAs<jet::Bytes>(statement, column);
    default:
        return {};
    }
}

} // namespace ado
