// What the program's work on a given file of the shop takes, a line each in milliseconds; the rows
// it enters stay there. Built for each system, so that packaging/windows/speed can hold them
// against each other:
//
//     systems_bench <file> <turn>
#include "ado/Connection.h"
#include "ado/ConnectionString.h"
#include "ado/Recordset.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <string>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kHold = 5ms; ///< as the windows have it
constexpr int kSearches = 100;
constexpr int kLists = 100;
constexpr int kCommits = 200;

/// All rows of a statement, with what is shown of each; how many.
int show(ado::Connection& connection, const std::string& statement) {
    ado::Recordset rows;
    rows.Open(statement, connection);
    int count = 0;
    for (; !rows.EOF(); rows.MoveNext(), ++count)
        for (std::size_t place = 0; place < std::min<std::size_t>(rows.FieldCount(), 8); ++place)
            static_cast<void>(rows.field(place).text());
    return count;
}

int numberOf(ado::Connection& connection, const std::string& statement) {
    ado::Recordset rows;
    rows.Open(statement, connection);
    return std::atoi(rows.field(0).text().c_str());
}

const std::string kJoined =
    "Select * from (cheques inner join cliente_fornecedor on "
    "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on cheques.banco=bancos.codigo "
    "where ";

void find(ado::Connection& connection, int lancamento) {
    ado::Recordset rows;
    rows.Open("Cheques", connection);
    rows.Find("lancamento=" + std::to_string(lancamento));
    static_cast<void>(rows["numero"].text());
}

void enter(ado::Connection& connection) {
    ado::Recordset rows;
    rows.Open("Cheques", connection);
    for (int i = 0; i < kCommits; ++i) {
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

void measure(const char* name, const std::function<void()>& work) {
    const auto begun = Clock::now();
    work();
    std::printf("%.3f\t%s\n",
                std::chrono::duration<double, std::milli>(Clock::now() - begun).count(), name);
    std::fflush(stdout);
}

void measureAll(const std::string& file, int turn) {
    ado::Connection shop;
    measure("opening", [&] {
        shop.Open("Data Source=" + ado::quotedValue(file));
        static_cast<void>(numberOf(shop, "select count(*) from bancos"));
    });
    shop.database().setSnapshotHold(kHold);
    measure("sum of all", [&] { show(shop, "select sum(valor) from cheques"); });
    const int last = numberOf(shop, "select max(lancamento) from cheques");
    const int clients = numberOf(shop, "select max(codigo) from cliente_fornecedor");
    measure("100 clients' lists", [&] {
        for (int i = 0; i < kLists; ++i)
            show(shop, kJoined +
                           "cliente=" + std::to_string(1 + 7919 * (turn * kLists + i) % clients) +
                           " order by cliente_fornecedor.nome,cheques.bompara");
    });
    measure("100 searches by number", [&] {
        for (int i = 0; i < kSearches; ++i)
            find(shop, 1 + (last / 13 * i + turn * 7919) % last);
    });
    measure("report of a seventh, in order", [&] {
        show(shop, kJoined + "lancamento<=" + std::to_string(last / 7) +
                       " order by cliente_fornecedor.nome,bompara");
    });
    measure("200 cheques entered", [&] { enter(shop); });
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 3)
        return std::puts("systems_bench <file> <turn>"), EXIT_FAILURE;
    measureAll(argv[1], std::atoi(argv[2]));
    return EXIT_SUCCESS;
} catch (const std::exception& error) {
    std::puts(error.what());
    return EXIT_FAILURE;
}
