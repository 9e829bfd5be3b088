// Lists and reports of all cheques of a file, beside SQLite on the same rows: the first page, all
// of it, and the memory that is taken. For files near the largest size of their format.
#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "bench/BenchData.h"

#include <sqlite3.h>

#include <cstdio>
#include <ctime>
#include <string>

namespace {

constexpr int kRowsOfAPage = 50;

struct Listing {
    const char* name;
    const char* statement;
    double wanted; ///< times SQLite's; where an index gives the order the first page counts instead
};
// Cheques of one day come in the order of entry: so the index of due dates doesn't give theirs.
constexpr Listing kListings[] = {
    {"all cheques by entry number (the key)", "select * from cheques order by lancamento", 0},
    {"all cheques by due date",               "select * from cheques order by bompara",    2},
    {"report of all, by due date and name",
     "Select * from (cheques inner join cliente_fornecedor on "
     "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on cheques.banco=bancos.codigo  "
     "order by bompara,cliente_fornecedor.nome",                                           2},
    {"report of all, by name and due date",
     "Select * from (cheques inner join cliente_fornecedor on "
     "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on cheques.banco=bancos.codigo  "
     "order by cliente_fornecedor.nome,bompara",                                           2},
};
constexpr double kWantedFirstPage = 2;

double processorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

struct Taken {
    double firstPage = 0; ///< seconds of the processor
    double all = 0;
    std::int64_t rows = 0;
};

Taken ours(ado::Connection& connection, const Listing& listing) {
    Taken taken;
    const double begun = processorSeconds();
    ado::Recordset rows;
    rows.Open(listing.statement, connection, ado::CursorType::ForwardOnly, ado::LockType::ReadOnly);
    for (; !rows.EOF(); rows.MoveNext())
        if (++taken.rows == kRowsOfAPage)
            taken.firstPage = processorSeconds() - begun;
    taken.all = processorSeconds() - begun;
    return taken;
}

Taken theirs(Sqlite& database, const Listing& listing) {
    Taken taken;
    const double begun = processorSeconds();
    sqlite3_stmt* statement = database.prepare(listing.statement);
    while (sqlite3_step(statement) == SQLITE_ROW)
        ++taken.rows;
    taken.all = processorSeconds() - begun;
    return taken;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "limits_bench FILE\n");
        return EXIT_FAILURE;
    }
    Taken taken[std::size(kListings)];
    double memories[std::size(kListings)];
    {
        ado::Connection connection;
        connection.Open("Data Source=" + std::string(argv[1]));
        for (std::size_t i = 0; i < std::size(kListings); ++i) {
            taken[i] = ours(connection, kListings[i]);
            memories[i] = memoryOf("VmHWM");
        }
    }
    const auto copy = benchFolder() / "given.sqlite";
    copyToSqlite(argv[1], copy);
    Sqlite database(copy);
    std::printf("%-40s %10s %13s %9s %9s %7s %7s %9s\n", "processor seconds:", "rows", "first page",
                "ours", "SQLite", "ratio", "wanted", "memory");
    for (std::size_t i = 0; i < std::size(kListings); ++i) {
        const Listing& listing = kListings[i];
        const Taken other = theirs(database, listing);
        if (other.rows != taken[i].rows)
            std::fprintf(stderr, "%lld rows here, %lld there\n",
                         static_cast<long long>(taken[i].rows), static_cast<long long>(other.rows));
        std::printf("%-40s %10lld %13.3f %9.1f %9.1f %6.2fx ", listing.name,
                    static_cast<long long>(taken[i].rows), taken[i].firstPage, taken[i].all,
                    other.all, taken[i].all / other.all);
        listing.wanted > 0 ? std::printf("%6.1fx", listing.wanted)
                           : std::printf("%4.1f s*", kWantedFirstPage);
        std::printf(" %6.0f MB\n", memories[i]);
    }
    std::printf("* of the first page. Memory: the largest so far; wanted: 200 MB\n");
    return EXIT_SUCCESS;
}
