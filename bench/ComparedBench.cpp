// What the same operations cost over the shop's file and over a server with the same rows, in
// turns, in one run:
//
//     compared_bench <folder of automacao.mdb> postgresql://...
#include "ado/Connection.h"
#include "ado/ConnectionString.h"
#include "ado/Recordset.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
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
    show(connection, kJoined + "cliente=" + std::to_string(2 + 7919 * turn % 900) +
                         " order by cliente_fornecedor.nome,cheques.bompara");
}
void report(ado::Connection& connection, int /*turn*/) {
    show(connection, kJoined + "lancamento<=100000 order by cliente_fornecedor.nome,bompara");
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
    rows.Find("lancamento=" + std::to_string(300'000 + 77'777 * turn));
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
    if (argc != 3) {
        std::fprintf(stderr, "compared_bench <folder of automacao.mdb> postgresql://...\n");
        return 1;
    }
    ado::Connection file;
    file.Open("Data Source=" + ado::quotedValue(argv[1] + std::string("/automacao.mdb")));
    ado::Connection server;
    server.Open("Data Source=" + ado::quotedValue(argv[2]));
    const std::pair<const char*, Work> operations[] = {
        {"open, first and last row",            open      },
        {"find by number",                      find      },
        {"joined list of a client",             clientList},
        {"sum of valor",                        sum       },
        {"report of 100000, joined and sorted", report    },
        {"1000 inserts, each committed",        insert    },
        {"100 cheques settled",                 settle    },
        {"10000 deleted",                       purge     },
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
