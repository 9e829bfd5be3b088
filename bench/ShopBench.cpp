#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "bench/BenchData.h"
#include "bench/Ratios.h"

#include <sqlite3.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::int64_t kCheques = 1'000'000;
constexpr int kInserts = 1000;
constexpr int kSettled = 100;
constexpr int kDeleted = 10'000;

const char* const kSum = "select sum(valor) from cheques";
const char* const kClientList =
    "Select * from (cheques inner join cliente_fornecedor on "
    "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on cheques.banco=bancos.codigo  "
    "where cliente=";
const char* const kReport =
    "Select * from (cheques inner join cliente_fornecedor on "
    "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on cheques.banco=bancos.codigo  "
    "where lancamento<=100000 order by cliente_fornecedor.nome,cheques.bompara ";
const char* const kClientOrder = " order by cliente_fornecedor.nome,cheques.bompara ";
const char* const kAllInOrder = "select * from cheques order by lancamento";

std::string connectionString(const std::filesystem::path& mdb) {
    return "Provider=Microsoft.Jet.OLEDB.3.51;Persist Security Info=False;Data Source=" +
           mdb.string();
}

/// As the program has it open.
class Station : public ado::Connection {
public:
    explicit Station(const ShopFiles& files) {
        Open(connectionString(files.mdb));
        database().setSnapshotHold(std::chrono::milliseconds(5));
    }
};

void sumOurs(benchmark::State& state, std::int64_t cheques) {
    Station connection(shopFiles(cheques));
    for (auto _ : state) {
        ado::Recordset rows;
        rows.Open(kSum, connection);
        benchmark::DoNotOptimize(rows.field(0).value());
    }
}

void sumSqlite(benchmark::State& state, std::int64_t cheques) {
    Sqlite database(shopFiles(cheques).sqlite);
    for (auto _ : state) {
        sqlite3_stmt* statement = database.prepare(kSum);
        sqlite3_step(statement);
        benchmark::DoNotOptimize(sqlite3_column_int64(statement, 0));
        sqlite3_finalize(statement);
    }
}

/// Some client, another one each time, until all have been met.
std::int64_t nextClient(std::int64_t& before, std::int64_t clients) {
    before = (before + 7919) % clients;
    return before + 1;
}

/// All rows of a joined list, with what is shown of each.
void showOurs(const std::string& list, ado::Connection& connection) {
    ado::Recordset rows;
    rows.Open(list, connection);
    for (; !rows.EOF(); rows.MoveNext()) {
        benchmark::DoNotOptimize(rows["numero"].text());
        benchmark::DoNotOptimize(rows["cliente_fornecedor.nome"].text());
        benchmark::DoNotOptimize(rows["bancos.nome"].text());
        benchmark::DoNotOptimize(rows["valor"].currency());
    }
}

void showSqlite(sqlite3_stmt* statement) {
    const auto isNamed = [&](int column, const char* name) {
        return std::string_view(sqlite3_column_name(statement, column)) == name;
    };
    std::vector<int> texts; // of the list: numero and both names
    int amount = -1;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
        if (isNamed(i, "nome") || (isNamed(i, "numero") && texts.empty()))
            texts.push_back(i);
        if (isNamed(i, "valor"))
            amount = i;
    }
    while (sqlite3_step(statement) == SQLITE_ROW) {
        for (const int column : texts) {
            const auto* text =
                reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
            benchmark::DoNotOptimize(std::string(text != nullptr ? text : ""));
        }
        benchmark::DoNotOptimize(sqlite3_column_int64(statement, amount));
    }
}

void clientListOurs(benchmark::State& state, std::int64_t cheques) {
    const ShopFiles& files = shopFiles(cheques);
    Station connection(files);
    std::int64_t client = 0;
    for (auto _ : state)
        showOurs(kClientList + std::to_string(nextClient(client, files.clients)) + kClientOrder,
                 connection);
}

void clientListSqlite(benchmark::State& state, std::int64_t cheques) {
    const ShopFiles& files = shopFiles(cheques);
    Sqlite database(files.sqlite);
    std::int64_t client = 0;
    for (auto _ : state) {
        const std::string sql =
            kClientList + std::to_string(nextClient(client, files.clients)) + kClientOrder;
        sqlite3_stmt* statement = database.prepare(sql.c_str());
        showSqlite(statement);
        sqlite3_finalize(statement);
    }
}

/// Who never prepares it again.
void clientListSqliteKept(benchmark::State& state, std::int64_t cheques) {
    const ShopFiles& files = shopFiles(cheques);
    Sqlite database(files.sqlite);
    sqlite3_stmt* statement =
        database.prepare((std::string(kClientList) + "?1" + kClientOrder).c_str());
    std::int64_t client = 0;
    for (auto _ : state) {
        sqlite3_bind_int64(statement, 1, nextClient(client, files.clients));
        showSqlite(statement);
        sqlite3_reset(statement);
    }
}

void clientListOursWithAnother(benchmark::State& state, std::int64_t cheques) {
    const Station another(shopFiles(cheques));
    clientListOurs(state, cheques);
}

void clientListSqliteWithAnother(benchmark::State& state, std::int64_t cheques) {
    const Sqlite another(shopFiles(cheques).sqlite);
    clientListSqlite(state, cheques);
}

void reportOurs(benchmark::State& state, std::int64_t cheques) {
    Station connection(shopFiles(cheques));
    for (auto _ : state)
        showOurs(kReport, connection);
}

void reportSqlite(benchmark::State& state, std::int64_t cheques) {
    Sqlite database(shopFiles(cheques).sqlite);
    for (auto _ : state) {
        sqlite3_stmt* statement = database.prepare(kReport);
        showSqlite(statement);
        sqlite3_finalize(statement);
    }
}

/// To the first row of all cheques, in their order.
void openOurs(benchmark::State& state, std::int64_t cheques) {
    const ShopFiles& files = shopFiles(cheques);
    for (auto _ : state) {
        Station connection(files);
        ado::Recordset rows;
        rows.Open(kAllInOrder, connection);
        benchmark::DoNotOptimize(rows["lancamento"].integer());
    }
}

void openSqlite(benchmark::State& state, std::int64_t cheques) {
    const ShopFiles& files = shopFiles(cheques);
    for (auto _ : state) {
        Sqlite database(files.sqlite);
        sqlite3_stmt* statement = database.prepare(kAllInOrder);
        sqlite3_step(statement);
        benchmark::DoNotOptimize(sqlite3_column_int64(statement, 0));
    }
}

std::string cheque(std::int64_t number) { return "lancamento=" + std::to_string(number); }

/// In one transaction, as a purge does it.
void deleteOurs(benchmark::State& state, std::int64_t cheques) {
    Station connection(shopCopy(cheques));
    for (auto _ : state) {
        ado::Transaction transaction(connection);
        ado::Recordset rows;
        rows.Open("select * from cheques where lancamento between 50001 and " +
                      std::to_string(50000 + kDeleted),
                  connection);
        for (; !rows.EOF(); rows.MoveNext())
            rows.Delete();
        transaction.commit();
    }
}

void deleteSqlite(benchmark::State& state, std::int64_t cheques) {
    Sqlite database(shopCopy(cheques).sqlite);
    sqlite3_stmt* statement = database.prepare("delete from cheques where lancamento=?1");
    for (auto _ : state) {
        database.run("begin");
        for (int i = 1; i <= kDeleted; ++i) {
            sqlite3_bind_int64(statement, 1, 50000 + i);
            database.check(sqlite3_step(statement));
            sqlite3_reset(statement);
        }
        database.run("commit");
    }
}

/// Each cheque found and deleted in a transaction of its own, as the settlement does it.
void settleOurs(benchmark::State& state, std::int64_t cheques) {
    Station connection(shopCopy(cheques));
    ado::Recordset rows;
    rows.Open("Cheques", connection);
    std::int64_t next = 0;
    for (auto _ : state) {
        for (int i = 0; i < kSettled; ++i) {
            rows.MoveFirst();
            rows.Find(cheque(++next * cheques / 1000));
            ado::Transaction transaction(connection);
            rows.Delete();
            rows.Requery();
            transaction.commitLater();
        }
        connection.flush();
    }
}

void settleSqlite(benchmark::State& state, std::int64_t cheques) {
    Sqlite database(shopCopy(cheques).sqlite);
    sqlite3_stmt* statement = database.prepare("delete from cheques where lancamento=?1");
    std::int64_t next = 0;
    for (auto _ : state)
        for (int i = 0; i < kSettled; ++i) {
            sqlite3_bind_int64(statement, 1, ++next * cheques / 1000);
            database.check(sqlite3_step(statement));
            sqlite3_reset(statement);
        }
}

void insertOurs(benchmark::State& state, std::int64_t cheques) {
    Station connection(shopCopy(cheques));
    ado::Recordset rows;
    rows.Open("Cheques", connection);
    for (auto _ : state)
        for (int i = 0; i < kInserts; ++i) {
            ado::Transaction transaction(connection);
            rows.AddNew();
            rows["cliente"] = 1 + i % 20;
            rows["banco"] = 1;
            rows["numero"] = std::to_string(100000 + i);
            rows["data"] = jet::Date::of({2026, 3, 31});
            rows["bompara"] = jet::Date::of({2026, 4, 30});
            rows["valor"] = jet::Currency{1234500};
            rows["descontar"] = true;
            rows.Update();
            transaction.commit();
        }
}

void insertSqlite(benchmark::State& state, std::int64_t cheques) {
    Sqlite database(shopCopy(cheques).sqlite);
    sqlite3_stmt* statement =
        database.prepare("insert into cheques(cliente,banco,numero,data,bompara,valor,descontar) "
                         "values(?1,1,?2,46112.0,46142.0,1234500,1)");
    for (auto _ : state)
        for (int i = 0; i < kInserts; ++i) {
            const std::string number = std::to_string(100000 + i);
            sqlite3_bind_int(statement, 1, 1 + i % 20);
            sqlite3_bind_text(statement, 2, number.c_str(), -1, SQLITE_TRANSIENT);
            database.check(sqlite3_step(statement));
            sqlite3_reset(statement);
        }
}

// ---- Opening the program's recordsets: time and memory of a process that does nothing else.

std::int64_t largestMemory() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.starts_with("VmHWM:"))
            return std::stoll(line.substr(6));
    return 0;
}

/// Opens the four recordsets as the program does and prints seconds and kilobytes.
int openRecordsets(const char* mdb) {
    const auto begin = std::chrono::steady_clock::now();
    ado::Connection connection;
    connection.setConnectionString(connectionString(mdb));
    std::array<ado::Recordset, 4> recordsets;
    recordsets[0].Open("bancos", connection);
    recordsets[1].Open("select * from cliente_fornecedor where tipo=true", connection);
    recordsets[2].Open("Cheques", connection);
    recordsets[3].Open("semfundos", connection);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    std::printf("%f %lld\n", seconds.count(), static_cast<long long>(largestMemory()));
    return 0;
}

struct Opening {
    double seconds;
    std::int64_t kilobytes;
};

Opening openInAProcess(const std::filesystem::path& mdb) {
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    FILE* pipe = popen(("'" + program + "' --open '" + mdb.string() + "'").c_str(), "r");
    Opening opening{};
    long long kilobytes = 0;
    if (!pipe || std::fscanf(pipe, "%lf %lld", &opening.seconds, &kilobytes) != 2)
        std::fprintf(stderr, "could not measure the opening of %s\n", mdb.c_str());
    if (pipe)
        pclose(pipe);
    opening.kilobytes = kilobytes;
    return opening;
}

void printOpening() {
    const Opening empty = openInAProcess(shopFiles(0).mdb);
    const Opening opening = openInAProcess(shopFiles(kCheques).mdb);
    std::printf("\nopening the program's four recordsets: %.3f s (wanted: 0.3), %.1f MB more than "
                "of an empty file (wanted: 60)\n",
                opening.seconds, static_cast<double>(opening.kilobytes - empty.kilobytes) / 1024);
}

constexpr Wanted kWanted[] = {
    {"sum of valor",                        Clock::processor, 1.0},
    {"joined list of a client",             Clock::processor, 1.0},
    {"the same, SQLite's prepared once",    Clock::processor, 1.0},
    {"joined list, two stations",           Clock::processor, 1.0},
    {"report of 100000, joined and sorted", Clock::processor, 1.0},
    {"open and first row",                  Clock::processor, 2.0},
    {"100 cheques settled",                 Clock::wall,      1.0},
    {"1000 inserts, each committed",        Clock::wall,      0.8},
    {"10000 deleted",                       Clock::wall,      0.8},
};

using Measure = void (*)(benchmark::State&, std::int64_t);

void add(const char* name, Measure ours, Measure sqlite, bool once = false) {
    for (const auto& [whose, measure] : {std::pair("/ours", ours), std::pair("/sqlite", sqlite)}) {
        auto* registered = benchmark::RegisterBenchmark(
            (std::string(name) + whose).c_str(),
            [measure = measure](benchmark::State& state) { measure(state, kCheques); });
        registered->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
        if (once)
            registered->Iterations(1);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string(argv[1]) == "--open")
        return openRecordsets(argv[2]);
    add("sum of valor", sumOurs, sumSqlite);
    add("joined list of a client", clientListOurs, clientListSqlite);
    add("the same, SQLite's prepared once", clientListOurs, clientListSqliteKept);
    add("joined list, two stations", clientListOursWithAnother, clientListSqliteWithAnother);
    add("report of 100000, joined and sorted", reportOurs, reportSqlite);
    add("open and first row", openOurs, openSqlite);
    add("100 cheques settled", settleOurs, settleSqlite, true);
    add("1000 inserts, each committed", insertOurs, insertSqlite, true);
    add("10000 deleted", deleteOurs, deleteSqlite, true);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter(kWanted);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    printOpening();
    return 0;
}
