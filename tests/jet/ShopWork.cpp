#include "jet/ShopWork.h"

#include "jet/page/ByteView.h"
#include "jet/page/CommitPairs.h"
#include "jet/share/Journal.h"

#include <stdexcept>
#include <string_view>

using namespace jet;

namespace {

std::vector<RowId> rowsOf(const Table& table) {
    std::vector<RowId> ids;
    RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next())
        ids.push_back(row.id());
    return ids;
}

/// Of any kind: in a damaged file a field may have become one that no shop has.
std::uint64_t hashOf(const Value& value) {
    return std::visit(
        []<class T>(const T& held) -> std::uint64_t {
            if constexpr (std::is_same_v<T, Currency>)
                return static_cast<std::uint64_t>(held.tenThousandths);
            else if constexpr (std::is_same_v<T, Date>)
                return std::hash<double>{}(held.days);
            else if constexpr (std::is_same_v<T, Bytes>)
                return std::hash<std::string_view>{}(
                    {reinterpret_cast<const char*>(held.data()), held.size()});
            else if constexpr (requires { held.text(); })
                return std::hash<std::string>{}(held.text());
            else
                return std::hash<T>{}(held);
        },
        value);
}

std::uint64_t hashOf(const Row& row) {
    std::uint64_t hash = 0;
    for (const Value& value : row)
        hash = (hash ^ hashOf(value)) * 0x9E3779B97F4A7C15U + value.index();
    return hash;
}

template <class Change>
void inTransaction(Database& file, Change&& change) {
    DatabaseTransaction transaction(file);
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
            sum += hashOf(row.row().values());
    }
    return sum;
}

DiskImage emptyShop(Version version) {
    MemoryDisk disk;
    Database::create(kPath, version, disk);
    Database(kPath, on(disk)).createTable(ShopWork::cheques());
    return disk.image();
}

DiskImage halfDone(const DiskImage& before, const std::function<void(Database&)>& work) {
    constexpr int kPagesWritten = 3;
    MemoryDisk disk(before);
    std::size_t pairAt = 0;
    {
        Database file(kPath, on(disk));
        pairAt = formatOf(file.version()).header.commitPairs.at + 2;
        work(file);
    }
    PowerCut cut(before);
    int written = 0;
    for (const MemoryDisk::Operation& operation : disk.record()) {
        cut.advance(operation);
        DiskImage image = cut.everything();
        if (!image.contains(Journal::pathFor(kPath).generic_string()) ||
            load<std::uint16_t>(image.at(kPath).data() + pairAt) != CommitPairs::kWriting)
            continue;
        if (operation.kind == MemoryDisk::Operation::Kind::write &&
            operation.bytes.size() > CommitPairs::kBytes && ++written == kPagesWritten)
            return image;
    }
    throw std::logic_error("the work writes too few pages for its purpose");
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
