#include "jet/Database.h"
#include "jet/SelfCheck.h"
#include "tools/Commands.h"
#include "tools/Csv.h"
#include "tools/TextTable.h"
#include "tools/ValueText.h"

#include <iostream>

namespace {

jet::Database::Options onlyToRead() {
    jet::Database::Options options;
    options.readOnly = true;
    return options;
}

void dumpJson(const jet::Table& table) {
    std::vector<std::string> names;
    names.reserve(table.columns().size());
    for (const jet::Column& column : table.columns())
        names.push_back(jsonText(column.name) + ": ");
    std::string line = "[";
    jet::RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next()) {
        line += "\n{";
        for (std::size_t i = 0; i < names.size(); ++i)
            line.append(i == 0 ? "" : ", ").append(names[i]).append(jsonOf(row.row().value(i)));
        std::cout << line << '}';
        line = ",";
    }
    std::cout << (line == "[" ? "[" : "") << "\n]\n";
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
    jet::Database database(arguments.file(), onlyToRead());
    const jet::Table& table = database.table(arguments.operand(1));
    if (arguments.has("--csv") && arguments.has("--json"))
        throw UsageError("Só uma das formas pode ser pedida: --csv ou --json.");
    if (arguments.has("--csv"))
        writeCsv(table, std::cout);
    else
        arguments.has("--json") ? dumpJson(table) : dumpText(table);
    return kDone;
}

namespace {

struct TableLine {
    std::string name;
    std::int64_t rows;
    std::size_t columns;
    std::optional<std::string> onlyToRead;
};

std::vector<TableLine> tablesOf(jet::Database& database) {
    std::vector<TableLine> lines;
    for (const std::string& name : database.tableNames()) {
        const jet::Table& table = database.table(name);
        const auto reason = jet::selfCheck(table, database);
        lines.push_back({name, table.rowCount(), table.columns().size(),
                         reason ? std::optional(reason->sentence) : std::nullopt});
    }
    return lines;
}

void printJson(const std::vector<TableLine>& tables) {
    std::cout << '[';
    const char* between = "\n";
    for (const TableLine& table : tables) {
        std::cout << between << "{\"tabela\": " << jsonText(table.name)
                  << ", \"registros\": " << table.rows << ", \"campos\": " << table.columns
                  << ", \"so_para_consulta\": "
                  << (table.onlyToRead ? jsonText(*table.onlyToRead) : "null") << '}';
        between = ",\n";
    }
    std::cout << "\n]\n";
}

void printText(const std::vector<TableLine>& tables) {
    TextTable text({"tabela", "registros", "campos", "só para consulta"},
                   {false, true, true, false});
    std::vector<std::vector<std::string>> rows;
    rows.reserve(tables.size());
    for (const TableLine& table : tables)
        rows.push_back({table.name, std::to_string(table.rows), std::to_string(table.columns),
                        table.onlyToRead ? "sim" : ""});
    for (const auto& row : rows)
        text.measure(row);
    text.printHeadings(std::cout);
    for (const auto& row : rows)
        text.print(std::cout, row);
    for (const TableLine& table : tables)
        if (table.onlyToRead)
            std::cout << *table.onlyToRead << '\n';
}

} // namespace

int runTables(const Arguments& arguments) {
    jet::Database database(arguments.file(), onlyToRead());
    const std::vector<TableLine> tables = tablesOf(database);
    arguments.has("--json") ? printJson(tables) : printText(tables);
    return kDone;
}
