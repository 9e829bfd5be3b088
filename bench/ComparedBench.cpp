// What the same operations cost over the shop's file and over a server of its own with the same
// rows, in turns, in one run:
//
//     compared_bench [cheques]
#include "ado/Connection.h"
#include "ado/ConnectionString.h"
#include "ado/Migration.h"
#include "ado/Recordset.h"
#include "bench/BenchData.h"
#include "schema/ShopSchema.h"
#include "support/Cluster.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Work = std::function<void(ado::Connection&, int turn)>;

constexpr int kTurns = 5;
constexpr int kInserts = 1000;
constexpr int kSettled = 100;
constexpr int kDeleted = 10'000;
constexpr int kOfEach = 50; ///< cheques of each client

int cheques = 1'000'000;

/// All rows of a statement, with what is shown of each.
void show(ado::Connection& connection, const std::string& statement) {
    ado::Recordset rows;
    rows.Open(statement, connection);
    for (; !rows.EOF(); rows.MoveNext())
        for (std::size_t place = 0; place < std::min<std::size_t>(rows.FieldCount(), 8); ++place)
            static_cast<void>(rows.field(place).text());
}

const std::string kJoined =
    "Select * from (cheques inner join cliente_fornecedor on "
    "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on cheques.banco=bancos.codigo "
    "where ";

void sum(ado::Connection& connection, int /*turn*/) {
    show(connection, "select sum(valor) from cheques");
}
void clientList(ado::Connection& connection, int turn) {
    show(connection, kJoined +
                         "cliente=" + std::to_string(2 + 7919 * turn % (cheques / kOfEach - 2)) +
                         " order by cliente_fornecedor.nome,cheques.bompara");
}
void report(ado::Connection& connection, int /*turn*/) {
    show(connection, kJoined + "lancamento<=" + std::to_string(cheques / 10) +
                         " order by cliente_fornecedor.nome,bompara");
}
void open(ado::Connection& connection, int /*turn*/) {
    ado::Recordset rows;
    rows.Open("Cheques", connection);
    static_cast<void>(rows["numero"].text());
    rows.MoveLast();
    static_cast<void>(rows["numero"].text());
}
void find(ado::Connection& connection, int turn) {
    ado::Recordset rows;
    rows.Open("Cheques", connection);
    rows.Find("lancamento=" + std::to_string(cheques / 3 + cheques / 13 * turn));
    static_cast<void>(rows["numero"].text());
}
void insert(ado::Connection& connection, int /*turn*/) {
    ado::Recordset rows;
    rows.Open("Cheques", connection);
    for (int i = 0; i < kInserts; ++i) {
        ado::Transaction saving(connection);
        rows.AddNew();
        rows["cliente"] = 2;
        rows["banco"] = 1;
        rows["numero"] = "000001";
        rows["valor"] = jet::Currency{10'000};
        rows.Update();
        saving.commit();
    }
}
/// The rows that come first of those still there.
void erase(ado::Connection& connection, int count) {
    ado::Recordset rows;
    rows.Open("select * from cheques order by lancamento", connection);
    ado::Transaction saving(connection);
    for (int i = 0; i < count && !rows.EOF(); ++i, rows.MoveNext())
        rows.Delete();
    saving.commit();
}

void settle(ado::Connection& connection, int /*turn*/) { erase(connection, kSettled); }
void purge(ado::Connection& connection, int /*turn*/) { erase(connection, kDeleted); }

double milliseconds(ado::Connection& connection, const Work& work, int turn) {
    const auto begun = Clock::now();
    work(connection, turn);
    return std::chrono::duration<double, std::milli>(Clock::now() - begun).count();
}

double median(std::array<double, kTurns> times) {
    std::ranges::sort(times);
    return times[kTurns / 2];
}

} // namespace

int main(int argc, char** argv) {
    if (const std::string why = Cluster::absence(); !why.empty())
        return std::puts(why.c_str()), EXIT_FAILURE;
    cheques = argc > 1 ? std::max(kOfEach * 3, std::atoi(argv[1])) : cheques;
    const auto path = benchFolder() / "automacao.mdb";
    makeShop(path, {.clients = cheques / kOfEach, .cheques = cheques});
    Cluster::likeAShops();
    const auto tables = shop::tables();
    const std::string address = Cluster::instance(tables, shop::serverIndexes()).newDatabase();
    const auto begun = Clock::now();
    static_cast<void>(
        ado::migrateToServer(path, address, {}, {&shop::history(), 1}, shop::serverIndexes(), {}));
    std::printf("%d cheques moved to the server and compared: %.1f s\n", cheques,
                std::chrono::duration<double>(Clock::now() - begun).count());
    ado::Connection file;
    file.Open("Data Source=" + ado::quotedValue(path.string()));
    ado::Connection server;
    server.Open("Data Source=" + ado::quotedValue(address));
    const std::pair<const char*, Work> operations[] = {
        {"open, first and last row",             open      },
        {"find by number",                       find      },
        {"joined list of a client",              clientList},
        {"sum of valor",                         sum       },
        {"report of a tenth, joined and sorted", report    },
        {"1000 inserts, each committed",         insert    },
        {"100 cheques settled",                  settle    },
        {"10000 deleted",                        purge     },
    };
    std::printf("%-36s %10s %10s %7s\n", "median of 5, time that passes", "file ms", "server ms",
                "ratio");
    for (const auto& [name, work] : operations) {
        std::array<double, kTurns> ofFile{};
        std::array<double, kTurns> ofServer{};
        for (int turn = 0; turn < kTurns; ++turn) {
            ofFile[static_cast<std::size_t>(turn)] = milliseconds(file, work, turn);
            ofServer[static_cast<std::size_t>(turn)] = milliseconds(server, work, turn);
        }
        std::printf("%-36s %10.2f %10.2f %6.2fx\n", name, median(ofFile), median(ofServer),
                    median(ofServer) / median(ofFile));
        std::fflush(stdout);
    }
    return 0;
}
