#include "jet/ShopWork.h"

using namespace jet;

namespace {

std::vector<RowId> rowsOf(const Table& table) {
    std::vector<RowId> ids;
    RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next())
        ids.push_back(row.id());
    return ids;
}

template <class Change>
void inTransaction(Database& file, Change&& change) {
    Transaction transaction(file);
    change();
    transaction.commit();
}

} // namespace

std::uint64_t contentOf(Database& file) {
    std::uint64_t sum = 0;
    for (const std::string& name : file.tableNames()) {
        Table& table = file.table(name);
        sum += std::hash<std::string>{}(name) * static_cast<std::uint64_t>(table.rowCount() + 1);
        RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next())
            sum += table.stamp(row.id()).value() * 0x9E3779B97F4A7C15U;
    }
    return sum;
}

DiskImage emptyShop(Version version) {
    MemoryDisk disk;
    Database::create(kPath, version, disk);
    Database(kPath, on(disk)).createTable(ShopWork::cheques());
    return disk.image();
}

TableSpec ShopWork::cheques() {
    return {
        "Cheques",
        {{"lancamento", ColumnType::longInteger, 0, true},
          {"cliente", ColumnType::longInteger},
          {"numero", ColumnType::text, 20},
          {"bompara", ColumnType::date},
          {"valor", ColumnType::currency},
          {"obs", ColumnType::memo},
          {"baixado", ColumnType::boolean}},
        {{"PrimaryKey", {{"lancamento"}}, true},
          {"cliente", {{"cliente"}}},
          {"numero", {{"numero"}}}}
    };
}

void ShopWork::step(Database& file, int number) {
    if (number % 25 == 0) {
        file.createTable({
            "semfundos" + std::to_string(number),
            {{"codigo", ColumnType::longInteger, 0, true}, {"motivo", ColumnType::text, 50}},
            {{"PrimaryKey", {{"codigo"}}, true}                                           }
        });
        return;
    }
    Table& table = file.table("Cheques");
    switch (number % 9) {
    case 0: // a purge of half of all
        inTransaction(file, [&] { eraseSome(table, 2); });
        break;
    case 1: // a settlement
        inTransaction(file, [&] { settle(table); });
        break;
    case 2: // one change that nobody calls a transaction
        add(table, 40);
        file.flush();
        break;
    case 3:
        inTransaction(file, [&] { eraseSome(table, 5); });
        break;
    case 4: // a day's cheques
        inTransaction(file, [&] {
            for (int i = 0; i < 12; ++i)
                add(table, 30);
        });
        break;
    case 5: // the file grows
        inTransaction(file, [&] {
            add(table, 9000);
            add(table, 20);
        });
        break;
    default:
        inTransaction(file, [&] { add(table, 60); });
    }
}

void ShopWork::add(Table& table, std::size_t memo) {
    Row row(7);
    row[1] = static_cast<std::int64_t>(below(9));
    row[2] = std::to_string(100000 + below(900000));
    row[3] = Date::of({2026, 1 + static_cast<int>(below(12)), 1});
    row[4] = Currency{static_cast<std::int64_t>(below(1000000))};
    row[5] = std::string(memo, static_cast<char>('a' + below(26)));
    row[6] = false;
    table.insert(row);
}
void ShopWork::eraseSome(Table& table, std::uint64_t oneIn) {
    for (const RowId id : rowsOf(table))
        if (below(oneIn) == 0)
            table.erase(id);
}
void ShopWork::settle(Table& table) {
    for (const RowId id : rowsOf(table))
        if (below(4) == 0) {
            const Assignment changes[] = {
                {1, static_cast<std::int64_t>(below(9))},
                {5, std::string(below(3) * 1500,         static_cast<char>('A' + below(26)))},
                {6, true                                   }
            };
            table.update(id, changes);
        }
}
