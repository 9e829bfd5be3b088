#include "ado/server/ServerWriting.h"

#include "ado/dialect/Spelling.h"
#include "ado/server/ServerTongue.h"
#include "ado/server/ServerValue.h"

namespace ado {

namespace {

/// A value of a row, as the server has it there. A yes/no is never null.
std::string placeOf(ServerStatement& statement, const ServerTable& table, const jet::Row& row,
                    std::size_t column) {
    const bool none =
        table.columns[column].type == jet::ColumnType::boolean && jet::isNull(row[column]);
    return placeFor(statement.parameters,
                    {table.types[column].number,
                     none ? parameterOf(false).text : parameterOf(row[column]).text});
}

/// That it is the one of that key and the same in all columns: by what all that is stored of it
/// looks like, as fingerprints are made.
std::string isAs(ServerStatement& statement, const ServerTable& table, const jet::Row& row) {
    std::string condition = " where ";
    for (const std::size_t column : table.key) {
        condition += "t." + quotedName(table.columns[column].name) + " = ";
        condition += placeOf(statement, table, row, column) + " and ";
    }
    condition += "(t.*)::text collate \"C\" operator(pg_catalog.=) (row(";
    for (std::size_t column = 0; column < row.size(); ++column) {
        condition += column == 0 ? "" : ", ";
        condition += placeOf(statement, table, row, column);
    }
    return condition + ")::" + quotedName(table.name) + ")::text collate \"C\"";
}

} // namespace

ServerStatement writing(const ServerTable& table, const Store::RowWrite& row) {
    ServerStatement statement;
    const std::string name = quotedName(table.name) + " as t";
    if (row.after == nullptr) {
        statement.sql = "delete from " + name;
        statement.sql += isAs(statement, table, *row.before);
        return statement;
    }
    std::string names;
    std::string values;
    std::string changes;
    for (std::size_t column = 0; column < row.after->size(); ++column) {
        const std::string of = quotedName(table.columns[column].name);
        if (row.before == nullptr
                ? table.columns[column].autonumber && jet::isNull((*row.after)[column])
                : (*row.before)[column] == (*row.after)[column])
            continue; // the server gives it one; it stays
        const std::string value = placeOf(statement, table, *row.after, column);
        names.append(names.empty() ? "" : ", ").append(of);
        values.append(values.empty() ? "" : ", ").append(value);
        changes.append(changes.empty() ? "" : ", ").append(of).append(" = ").append(value);
    }
    if (row.before == nullptr) {
        statement.sql =
            "insert into " + name +
            (names.empty() ? " default values" : " (" + names + ") values (" + values + ")");
        return statement;
    }
    const std::string key = quotedName(table.columns[table.key.front()].name);
    statement.sql = "update " + name + " set " + (changes.empty() ? key + " = t." + key : changes);
    statement.sql += isAs(statement, table, *row.before);
    return statement;
}

} // namespace ado
