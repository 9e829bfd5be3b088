#include "jet/PatientFile.h"

#include "support/FileRules.h"

#include <stdexcept>

using namespace jet;

namespace {

/// More than any of the small files can need: who goes on beyond it goes in a circle.
constexpr int kMostSteps = 20'000;
constexpr int kRows = 24;
constexpr int kClients = 5;

} // namespace

std::vector<RowId> makePatient(Database& database) {
    Table& clients = database.createTable({
        "Clientes",
        {{"codigo", ColumnType::longInteger}, {"nome", ColumnType::text, 30}},
        {{"PrimaryKey", {{"codigo"}}, true}                                  }
    });
    Table& table = database.createTable({
        "Cheques",
        {{"numero", ColumnType::longInteger, 0, true},
          {"nome", ColumnType::text, 60},
          {"data", ColumnType::date},
          {"valor", ColumnType::currency},
          {"bytes", ColumnType::binary, 20},
          {"sim", ColumnType::boolean},
          {"obs", ColumnType::memo},
          {"cliente", ColumnType::longInteger}},
        {{"PrimaryKey", {{"numero"}}, true},
          {"nome", {{"nome", false}, {"data"}}},
          {"cliente", {{"cliente"}}} }
    });
    addRelationship(database,
                    {"ClientesCheques",
                     "Cheques",
                     {"cliente"},
                     "Clientes",
                     {"codigo"},
                     FileRelationship::kCascadeDelete | FileRelationship::kCascadeUpdate});
    setRules(database, "Cheques",
             {
                 {.column = "valor",         .defaultValue = "0", .rule = ">=0 And <1000000"},
                 {.column = "nome",                         .required = true,                             .allowZeroLength = false},
                 {.rule = "[data] Is Null Or [nome] Like \"*\"", .message = "sem nome"}
    });
    std::vector<RowId> rows;
    rows.reserve(kRows);
    DatabaseTransaction all(database);
    for (std::int64_t i = 0; i < kClients; ++i)
        clients.insert(Row{i, "Cliente " + std::to_string(i)});
    for (int i = 0; i < kRows; ++i)
        rows.push_back(
            table.insert(Row{Value(), "Nome " + std::to_string(i) + "ç", Date::of({2004, 1, 1 + i}),
                             Currency{std::int64_t{i} * 10000},
                             Bytes(static_cast<std::size_t>(i % 20), std::byte{7}), i % 2 == 0,
                             std::string(i == 19 ? 9000 : static_cast<std::size_t>(i * i * 4), 'm'),
                             std::int64_t{i % kClients}}));
    for (std::size_t i = 0; i < 8; ++i)
        table.update(rows[i], std::vector<Assignment>{
                                  {1, std::string(60, 'v')}
        });
    table.erase(rows[20]);
    all.commit();
    return rows;
}

void tolerant(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        if (*error.what() == '\0')
            throw std::logic_error("an error that says nothing");
    }
}

void readTable(Table& table, const std::vector<RowId>& rows) {
    int steps = 0;
    tolerant([&] {
        RowCursor row = table.scan();
        for (bool there = row.first(); there && ++steps < kMostSteps; there = row.next())
            (void)row.row().values();
    });
    tolerant([&] {
        RowCursor row = table.scan();
        for (bool there = row.last(); there && ++steps < kMostSteps; there = row.previous())
            (void)row.row().bytes();
    });
    for (std::size_t i = 0; i < table.indexes().size(); ++i)
        for (const bool forward : {true, false})
            tolerant([&] {
                IndexTree::Cursor entry = table.walk(i);
                for (bool there = forward ? entry.first() : entry.last();
                     there && ++steps < kMostSteps;
                     there = forward ? entry.next() : entry.previous())
                    (void)table.keyOf(i, entry.row());
            });
    for (const RowId id : rows)
        tolerant([&] {
            (void)table.read(id);
            (void)table.rowVersion(id);
        });
    tolerant([&] { (void)table.readOnlyReason(); });
    if (steps >= kMostSteps)
        throw std::logic_error("reading \"" + table.name() + "\" doesn't end");
}

void readEverything(Database& database, const std::vector<RowId>& rows) {
    for (const std::string& name : database.allTableNames())
        tolerant([&] { readTable(database.table(name), rows); });
}
