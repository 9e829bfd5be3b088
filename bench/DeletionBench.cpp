// How long the operator waits while cheques are deleted, of a table of a million: by the purge, and
// by the settlement of ticked cheques. Deleting many may take no longer for each than deleting few,
// and with a history of it at most twice as long as without.
#include "bench/BenchData.h"
#include "bench/BenchWindows.h"
#include "collections/FrmLocCHTerceiros.h"
#include "controls/box/DatePicker.h"
#include "controls/box/ListView.h"
#include "controls/window/WindowList.h"
#include "reports/FrmApagar.h"
#include "shell/MDICheques.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"
#include "shell/dbconectar.h"

#include <QCheckBox>
#include <QPushButton>

#include <chrono>
#include <ctime>

namespace {

constexpr std::int64_t kCheques = 1'000'000;
constexpr std::int64_t kClients = 20'000;
constexpr std::int64_t kBanks = 20;
constexpr std::int64_t kDeleted[] = {1'000, 10'000, 100'000};

using Clock = std::chrono::steady_clock;

struct Period {
    QDate first;
    QDate last;
    std::int64_t cheques = 0;
};

/// From the middle of all due dates on, as many days as `wanted` cheques fall due in.
Period periodOf(std::int64_t wanted) {
    ado::Recordset days;
    days.Open("select bompara, count(*) as quantos from cheques where bompara is not null "
              "group by bompara order by bompara",
              dbconectar::instance().Automacao);
    Period period;
    for (std::int64_t before = 0; !days.EOF() && period.cheques < wanted; days.MoveNext()) {
        const std::int64_t due = days["quantos"].integer();
        before += due;
        if (before < kCheques / 2)
            continue;
        period.last = Valores::dia(days["bompara"]);
        if (period.cheques == 0)
            period.first = period.last;
        period.cheques += due;
    }
    return period;
}

struct Cost {
    double seconds; ///< until all of it is in the file
    double cpuSeconds;
};

Cost costOf(QPushButton& button) {
    const auto begin = Clock::now();
    const std::clock_t cpu = std::clock();
    button.click();
    dbconectar::instance().Automacao.database().flush();
    return {std::chrono::duration<double>(Clock::now() - begin).count(),
            static_cast<double>(std::clock() - cpu) / CLOCKS_PER_SEC};
}

Cost purge(const Period& period) {
    auto& form = shown<FrmApagar>();
    control<DatePicker>(form, "txtdtinicial").setValue(period.first);
    control<DatePicker>(form, "txtdtfinal").setValue(period.last);
    return costOf(control<QPushButton>(form, "cmdExcluir"));
}

Cost settle(const Period& period) {
    Mirtal::modo = "Baixar";
    auto& form = shown<FrmLocCHTerceiros>();
    control<QCheckBox>(form, "chkmostrar").click();
    control<DatePicker>(form, "txtinicio").setValue(period.first);
    control<DatePicker>(form, "txtfim").setValue(period.last);
    control<DatePicker>(form, "txtfim").setFocus();
    auto& list = control<ListView>(form, "lstterceiros");
    list.setFocus(); // leaving the last date fills it
    for (int row = 0; row < list.count(); ++row)
        list.setChecked(row, true);
    return costOf(control<QPushButton>(form, "cmdsalvar"));
}

struct Measured {
    const char* name;
    Cost (*run)(const Period&);
    std::int64_t kept; ///< of the cheques chosen
};

constexpr Measured kMeasured[] = {
    {"purging",  &purge,  1},
    {"settling", &settle, 0},
};

/// In a copy of the shop; prints a line. @return the processor's time.
double measure(const Measured& measured, std::int64_t wanted, bool history, double& first) {
    const auto folder = benchFolder() / "copy";
    std::filesystem::create_directory(folder);
    std::filesystem::copy_file(benchFolder() / "shop.mdb", folder / "automacao.mdb",
                               std::filesystem::copy_options::overwrite_existing);
    Mirtal::DatabaseFolder = QString::fromStdString(folder.string());
    dbconectar::instance().abrir();
    if (!history)
        dbconectar::instance().Automacao.database().createTable(
            {.name = Historico::kDesligado,
             .columns = {{.name = "desde", .type = jet::ColumnType::date}},
             .indexes = {}});
    shown<MDICheques>();
    const Period period = periodOf(wanted);
    const Cost cost = measured.run(period);
    const std::int64_t left = dbconectar::instance().rsCheques.RecordCount();
    const std::int64_t deleted = kCheques - left;
    if (deleted != period.cheques - measured.kept)
        std::fprintf(stderr, "%lld cheques were chosen\n", static_cast<long long>(period.cheques));
    WindowList::instance().clear();
    dbconectar::descartar();

    const double perRow = cost.seconds / static_cast<double>(deleted);
    if (first == 0)
        first = perRow;
    std::printf("%-10s %-8s %10lld %10.3f %10.0f %14.2fx %14.1f\n", measured.name,
                history ? "history" : "", static_cast<long long>(deleted), cost.seconds, 1 / perRow,
                perRow / first, 1e6 * cost.cpuSeconds / static_cast<double>(deleted));
    std::fflush(stdout);
    return cost.cpuSeconds;
}

MessageAnswer acknowledge(const Message& message) {
    if (message.text != "Operação concluída !")
        std::fprintf(stderr, "a message came up: %s\n", qUtf8Printable(message.text));
    return MessageAnswer::ok;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    prepareWindows(application, &acknowledge);
    MDICheques::mostrarMensagens();
    makeShop(benchFolder() / "shop.mdb", {kClients, kBanks, kCheques, 0});

    std::printf("%-10s %-8s %10s %10s %10s %15s %14s\n", "", "", "cheques", "seconds", "a second",
                "time for each", "CPU us each");
    for (const Measured& measured : kMeasured) {
        double first = 0;
        double firstWithHistory = 0;
        for (const std::int64_t wanted : kDeleted) {
            const double without = measure(measured, wanted, false, first);
            const double with = measure(measured, wanted, true, firstWithHistory);
            std::printf(
                "%-10s with the history %.2f times the processor's time; wanted at most 2\n",
                measured.name, with / without);
        }
    }
    std::printf("%-10s %-8s %10d %10d %10s %14.2fx\n", "wanted", "", 100'000, 10, "", 1.0);
    return EXIT_SUCCESS;
}
