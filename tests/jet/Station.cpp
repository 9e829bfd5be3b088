// A station of the shop for the tests that need several processes: opens a database and does one
// thing to it, as its arguments say. Ends with 0, or prints what went wrong.
//
//   jet_station make <file> <3 or 4>       makes the file, of that format, with a counter row
//                                          and accounts
//   jet_station value <file>               prints what the counter row says
//   jet_station count <file> <times>       adds 1 to the counter row, so often
//   jet_station add <file> <times>         adds rows with a number given by the file
//   jet_station work <file> <seconds>      reads and writes; prints how often
//   jet_station write <file>               writes for ever, "." after each commit
//   jet_station foreign <lock file>        holds user byte 1 as a foreign program, until its input
//                                          ends
//   jet_station hold <file>                keeps a transaction open until its input ends
#include "jet/Database.h"
#include "jet/disk/File.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <random>
#include <string>

using namespace jet;

namespace {

constexpr std::size_t kAccounts = 40;

RowId firstRow(Table& table) {
    RowCursor row = table.scan();
    if (!row.first())
        throw Error(Errc::notFound, "no row");
    return row.id();
}

std::int64_t valueOf(Table& table, RowId id) {
    return std::get<std::int64_t>((*table.read(id))[1]);
}

void set(Table& table, RowId id, std::int64_t value) {
    const Assignment change[] = {
        {1, value}
    };
    table.update(id, change);
}

void count(Database& file, int times) {
    Table& table = file.table("contador");
    const RowId id = firstRow(table);
    for (int i = 0; i < times; ++i) {
        DatabaseTransaction transaction(file);
        file.claim();
        set(table, id, valueOf(table, id) + 1);
        transaction.commit();
    }
}

void addRows(Database& file, int times) {
    Table& table = file.table("numerados");
    for (int i = 0; i < times; ++i) {
        Row row(2);
        row[1] = std::int64_t{i};
        table.insert(row);
        if (i % 3 == 0)
            file.flush();
    }
    file.flush();
}

std::vector<RowId> accounts(Table& table) {
    std::vector<RowId> ids;
    RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next())
        ids.push_back(row.id());
    return ids;
}

/// Moves an amount between two accounts: their sum stays.
void transfer(Database& file, Table& table, const std::vector<RowId>& ids, unsigned& random) {
    random = random * 1103515245U + 12345U;
    const RowId from = ids[(random >> 16) % ids.size()];
    const RowId to = ids[(random >> 8) % ids.size()];
    DatabaseTransaction transaction(file);
    file.claim();
    set(table, from, valueOf(table, from) - 5);
    set(table, to, valueOf(table, to) + 5);
    transaction.commit();
}

/// The sum of all accounts, by scan and by index: half a transaction would show in both.
void readAll(Database& file, Table& table) {
    const Reading reading(file);
    std::int64_t sum = 0;
    RowCursor row = table.scan();
    std::size_t rows = 0;
    for (bool there = row.first(); there; there = row.next(), ++rows)
        sum += row.row().integer(1);
    std::int64_t indexed = 0;
    RowReader reader = table.reader();
    IndexTree::Cursor entry = table.walk(1);
    std::int64_t last = -1'000'000'000;
    for (bool there = entry.first(); there; there = entry.next()) {
        const std::int64_t value = reader.read(entry.row())->integer(1);
        if (value < last)
            throw Error(Errc::corrupt, "index out of order");
        last = value;
        indexed += value;
    }
    if (sum != 0 || indexed != 0 || rows != kAccounts)
        throw Error(Errc::corrupt, "half a transaction: " + std::to_string(sum) + " " +
                                       std::to_string(indexed) + " " + std::to_string(rows));
}

void work(Database& file, double seconds) {
    Table& table = file.table("contas");
    const std::vector<RowId> ids = accounts(table);
    std::random_device seed;
    unsigned random = seed();
    int writes = 0;
    int reads = 0;
    const auto begin = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - begin < std::chrono::duration<double>(seconds)) {
        transfer(file, table, ids, random);
        ++writes;
        for (int i = 0; i < 5; ++i, ++reads)
            readAll(file, table);
    }
    std::cout << writes << ' ' << reads << '\n';
}

[[noreturn]] void writeForEver(Database& file) {
    Table& table = file.table("contas");
    const std::vector<RowId> ids = accounts(table);
    std::random_device seed;
    unsigned random = seed();
    while (true) {
        transfer(file, table, ids, random);
        std::cout << '.' << std::flush;
    }
}

void untilInputEnds() {
    std::cout << "ready" << std::endl;
    std::string line;
    while (std::getline(std::cin, line)) {
    }
}

void beForeign(const std::string& lockFile) {
    File file(lockFile,
              Disk::system().exists(lockFile) ? File::Mode::readWrite : File::Mode::createNew);
    std::uint64_t user = 0x10000001;
    while (!file.tryLock(Disk::Lock::exclusive, user))
        ++user;
    Bytes slot(64, std::byte{' '});
    std::memcpy(slot.data(), "CAIXA2\0", 7);
    std::memcpy(slot.data() + 32, "Maria\0", 6);
    file.write((user - 0x10000001) * 64, slot);
    untilInputEnds();
}

void make(const std::string& path, const std::string& version) {
    Database::create(path, version == "3" ? Version::jet3 : Version::jet4);
    Database file(path);
    Row counter(2);
    counter[1] = std::int64_t{0};
    TableSpec spec{
        "contador",
        {{"codigo", ColumnType::longInteger, 0, true}, {"valor", ColumnType::longInteger}},
        {                                            }
    };
    file.createTable(spec).insert(counter);
    spec.name = "contas";
    spec.indexes = {
        {.name = "PrimaryKey", .columns = {{"codigo"}}, .primary = true},
        {.name = "valor",                    .columns = {{"valor"}}                            }
    };
    Table& table = file.createTable(spec);
    for (std::size_t i = 0; i < kAccounts; ++i)
        table.insert(counter);
}

void hold(Database& file) {
    Table& table = file.table("contador");
    DatabaseTransaction transaction(file);
    set(table, firstRow(table), 1000);
    untilInputEnds();
}

} // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 2 ? argv[1] : "";
    try {
        if (what == "foreign") {
            beForeign(argv[2]);
            return 0;
        }
        if (what == "make") {
            make(argv[2], argv[3]);
            return 0;
        }
        if (what.empty())
            return 2;
        Database file(argv[2]);
        if (what == "count")
            count(file, std::atoi(argv[3]));
        else if (what == "add")
            addRows(file, std::atoi(argv[3]));
        else if (what == "work")
            work(file, std::atof(argv[3]));
        else if (what == "write")
            writeForEver(file);
        else if (what == "hold")
            hold(file);
        else if (what == "value")
            std::cout << valueOf(file.table("contador"), firstRow(file.table("contador"))) << '\n';
        else
            return 2;
        return 0;
    } catch (const std::exception& error) {
        std::cout << error.what() << '\n';
        return 1;
    }
}
