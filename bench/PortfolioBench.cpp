// What it takes to keep the sums of a million cheques that the day's panel shows, beside what
// SQLite takes to sum them once; and what the agenda and the history of as many take.
#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "agenda/FrmAgenda.h"
#include "agenda/FrmHistorico.h"
#include "agenda/painel/SomasDaCarteira.h"
#include "bench/BenchData.h"
#include "bench/BenchWindows.h"
#include "controls/box/DatePicker.h"
#include "controls/box/DropDownList.h"
#include "controls/box/ListView.h"
#include "shell/Mirtal.h"
#include "shell/dbconectar.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <malloc.h>
#include <string>

namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kCheques = 1'000'000;
constexpr int kTimes = 21;
constexpr int kDeleted = 60'000;
constexpr double kWantedMs = 20;
/// As the program asks for.
constexpr std::chrono::microseconds kPiece = 4ms;

double processorMs() { return 1e3 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

/// The sums, and the longest that a piece of them has held the program.
struct Kept {
    SomasDaCarteira sums;
    double longestMs = 0;

    /// What all that there is to be done takes of the processor.
    double catchUp() {
        const double begin = processorMs();
        for (bool more = true; more;) {
            const double before = processorMs();
            more = sums.continuar(kPiece);
            longestMs = std::max(longestMs, processorMs() - before);
        }
        return processorMs() - begin;
    }
    /// The median after a change.
    double after(const std::function<void(int)>& change) {
        std::vector<double> times;
        for (int i = 0; i < kTimes; ++i) {
            change(i);
            times.push_back(catchUp());
        }
        std::ranges::nth_element(times, times.begin() + kTimes / 2);
        return times[kTimes / 2];
    }
};

double sumOfSqlite(const std::filesystem::path& file) {
    constexpr char kSum[] = "select bompara,count(*),sum(valor) from cheques group by bompara";
    Sqlite database(file);
    database.run(kSum); // into memory
    const double begin = processorMs();
    database.run(kSum);
    return processorMs() - begin;
}

void open(ado::Connection& station, const std::filesystem::path& file) {
    station.Open("Provider=Microsoft.Jet.OLEDB.3.51;Data Source=" + file.string());
}

/// Saves a cheque, some place in the table.
void save(ado::Connection& station, int number) {
    ado::Recordset cheques;
    cheques.Open("select * from cheques where lancamento=" +
                     std::to_string(1 + (number + 1) * 7919LL * 97 % kCheques),
                 station);
    cheques["valor"] = jet::Currency{10'000 + number};
    cheques.Update();
    station.flush();
}

void print(const char* what, double ms, double wanted) {
    std::printf("%-52s %10.3f", what, ms);
    wanted > 0 ? std::printf(" %8.0f\n", wanted) : std::printf("\n");
    std::fflush(stdout);
}

/// Of the week after the day on which the invented shop's clock stands.
void measureAgenda() {
    double begin = processorMs();
    auto& agenda = shown<FrmAgenda>();
    QApplication::processEvents();
    print("the agenda opened", processorMs() - begin, 0);
    const auto& cheques = control<ListView>(agenda, "lstcheques");
    begin = processorMs();
    control<DatePicker>(agenda, "txtinicio").setValue(QDate(2026, 4, 1));
    control<DatePicker>(agenda, "txtfim").setValue(QDate(2026, 4, 7));
    control<DropDownList>(agenda, "cmbperiodo")
        .setListIndex(static_cast<int>(Vencimentos::Periodo::deAte));
    while (cheques.count() == 0)
        QApplication::processEvents();
    print("and a week of it listed", processorMs() - begin, 0);
    std::printf("%-52s %10d\n", "  its cheques", cheques.count());
    agenda.unload();
}

/// Of a purge of today's.
void measureHistory() {
    ado::Recordset& cheques = dbconectar::instance().rsCheques;
    Mirtal::excluirMuitos("excluído", Historico::kExpurgo, [&] {
        cheques.MoveFirst();
        for (int i = 0; i < kDeleted; ++i, cheques.MoveNext())
            cheques.Delete();
    });
    const double begin = processorMs();
    auto& history = shown<FrmHistorico>();
    const auto& rows = control<ListView>(history, "lsthistorico");
    while (rows.count() < kDeleted)
        QApplication::processEvents();
    print("the history of 60,000 deleted ones opened", processorMs() - begin, 0);
    history.unload();
}

MessageAnswer refuse(const Message& message) {
    std::fprintf(stderr, "a message came up: %s\n", qUtf8Printable(message.text));
    return MessageAnswer::no;
}

void measureSums(const ShopFiles& files) {
    const double sqlite = sumOfSqlite(files.sqlite);
    ado::Connection mine;
    ado::Connection theirs;
    open(mine, files.mdb);
    open(theirs, files.mdb);
    malloc_trim(0); // what making the files has left
    const double before = memoryOf("VmRSS");
    Kept kept{SomasDaCarteira(mine)};
    std::printf("%-52s %10s %8s\n", "sums of a million cheques", "processor ms", "wanted");
    print("summed once by SQLite", sqlite, 0);
    print("summed the first time, in pieces", kept.catchUp(), 0);
    print("  the longest piece", kept.longestMs, 10);
    const double memory = memoryOf("VmRSS") - before;
    kept.longestMs = 0;
    print("nothing has changed", kept.after([](int) {}), kWantedMs);
    print("after a cheque saved here", kept.after([&](int i) { save(mine, i); }), kWantedMs);
    print("after one saved by another station", kept.after([&](int i) { save(theirs, i); }),
          kWantedMs);
    print("after two: all pages compared", kept.after([&](int i) {
        save(theirs, i);
        save(theirs, i + kTimes);
    }),
          kWantedMs);
    print("  the longest piece of these", kept.longestMs, 10);
    std::printf("%-52s %10.1f MB\n", "kept in memory, the engine's cache with it", memory);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    prepareWindows(application, &refuse);

    const ShopFiles files = shopCopy(kCheques);
    measureSums(files);
    std::filesystem::rename(files.mdb, files.mdb.parent_path() / "automacao.mdb");
    Mirtal::DatabaseFolder = QString::fromStdString(files.mdb.parent_path().string());
    dbconectar::instance().abrir();
    measureAgenda();
    measureHistory();
    dbconectar::descartar();
    return EXIT_SUCCESS;
}
