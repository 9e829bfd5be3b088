#include "jet/Database.h"
#include "jet/SelfCheck.h"
#include "tools/Commands.h"
#include "tools/TextTable.h"
#include "tools/ValueText.h"

#include <iostream>

namespace {

jet::Database::Options onlyToRead() {
    jet::Database::Options options;
    options.readOnly = true;
    return options;
}

void dumpCsv(const jet::Table& table) {
    const auto print = [](std::string& line) {
        line.back() = '\r'; // in the place of the comma after the last field
        std::cout << line << '\n';
        line.clear();
    };
    std::string line;
    for (const jet::Column& column : table.columns())
        line += csvOf(column.name) + ",";
    print(line);
    jet::RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next()) {
        for (std::size_t i = 0; i < table.columns().size(); ++i)
            line += csvOf(row.row().value(i)) + ",";
        print(line);
    }
}

bool isNumber(jet::ColumnType type) {
    using enum jet::ColumnType;
    return type == byte || type == integer || type == longInteger || type == currency ||
           type == single || type == real || type == numeric;
}

void dumpText(const jet::Table& table) {
    std::vector<std::string> names;
    std::vector<bool> numbers;
    for (const jet::Column& column : table.columns()) {
        names.push_back(column.name);
        numbers.push_back(isNumber(column.type));
    }
    TextTable text(names, numbers);
    std::vector<std::string> fields(names.size());
    const auto eachRow = [&](auto&& use) {
        jet::RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next()) {
            for (std::size_t i = 0; i < fields.size(); ++i)
                fields[i] = textOf(row.row().value(i));
            use();
        }
    };
    eachRow([&] { text.measure(fields); });
    text.printHeadings(std::cout);
    eachRow([&] { text.print(std::cout, fields); });
}

} // namespace

int runDump(const Arguments& arguments) {
    jet::Database database(arguments.path(), onlyToRead());
    const jet::Table& table = database.table(arguments.operand(1));
    arguments.has("--csv") ? dumpCsv(table) : dumpText(table);
    return kDone;
}

int runTables(const Arguments& arguments) {
    jet::Database database(arguments.path(), onlyToRead());
    TextTable text({"tabela", "registros", "campos", "só para consulta"},
                   {false, true, true, false});
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> reasons;
    for (const std::string& name : database.tableNames()) {
        const jet::Table& table = database.table(name);
        const auto reason = jet::selfCheck(table, database);
        rows.push_back({name, std::to_string(table.rowCount()),
                        std::to_string(table.columns().size()), reason ? "sim" : ""});
        if (reason)
            reasons.push_back(reason->sentence);
    }
    for (const auto& row : rows)
        text.measure(row);
    text.printHeadings(std::cout);
    for (const auto& row : rows)
        text.print(std::cout, row);
    for (const std::string& reason : reasons)
        std::cout << reason << '\n';
    return kDone;
}
