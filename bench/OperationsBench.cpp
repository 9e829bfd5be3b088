// What each operation of a shop's day takes of the processor, in a shop of 20,000 clients with few
// cheques and with a million, or in a given one. Nothing may take longer because the table is
// larger.
#include "bench/BenchData.h"
#include "bench/BenchWindows.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLocCHTerceiros.h"
#include "controls/box/ListView.h"
#include "controls/window/NavigationBar.h"
#include "controls/window/WindowList.h"
#include "shell/Mirtal.h"
#include "shell/dbconectar.h"

#include <QPushButton>
#include <QToolButton>

#include <algorithm>
#include <ctime>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr std::int64_t kSizes[] = {2'000, 1'000'000};
constexpr std::int64_t kClients = 20'000;
constexpr std::int64_t kBanks = 20;

// Clients with the same number of cheques in either table, spread over all of it: what an operation
// finds is the same, whatever it has to look through.
constexpr std::int64_t kMeasured = 11;
constexpr std::int64_t kChequesOfEach = 50;

constexpr double kWantedMs = 100;
constexpr double kWantedRatio = 3;

QString nameOf(std::int64_t measured) { return QString("Cliente Medido %1").arg(measured); }

/// A limit of zero: nothing is warned of, so all the cheques are summed.
void addMeasuredClients(std::int64_t cheques) {
    dbconectar& data = dbconectar::instance();
    ado::Transaction changes(data.Automacao);
    ado::Recordset clients;
    clients.Open("cliente_fornecedor", data.Automacao);
    std::vector<std::int64_t> codes;
    for (std::int64_t i = 0; i < kMeasured; ++i) {
        clients.AddNew();
        clients["nome"] = nameOf(i);
        clients["tipo"] = true;
        clients.Update();
        codes.push_back(clients["codigo"].integer());
    }
    ado::Recordset rows;
    rows.Open("cheques", data.Automacao);
    for (std::int64_t i = 0; i < kMeasured * kChequesOfEach; ++i) {
        rows.MoveFirst();
        rows.Find("lancamento=" + std::to_string(1 + i * (cheques / (kMeasured * kChequesOfEach))));
        rows["cliente"] = codes[static_cast<std::size_t>(i % kMeasured)];
        rows.Update();
    }
    changes.commit();
    data.rsCliente.Requery();
    data.rsCheques.Requery();
}

void choose(DropDownList& list, const QString& name) {
    for (int i = 0; i < list.count(); ++i)
        if (list.itemText(i) == name)
            return list.setListIndex(i);
}

// ---- the operations: each does what comes before unmeasured, and returns what is measured

using Operation = std::function<void()>;

struct Measured {
    const char* name;
    int times;
    /// For the try of this number.
    std::function<Operation(int)> prepare;
};

Operation openEntry(int) {
    FrmLancarCheques::instance().unload();
    QApplication::processEvents();
    return [] {
        shown<FrmLancarCheques>();
        QApplication::processEvents();
    };
}

Operation showNext(int at) {
    auto& form = shown<FrmLancarCheques>();
    dbconectar::instance().rsCheques.clearFilter();
    auto& bar = control<NavigationBar>(form, "btnNavegacao");
    bar.button(0)->setFocus();
    if (at == 0)
        bar.button(0)->click();
    else
        form.mostrarCheque(at * 7); // the next one is not where the last search ended
    return [&bar] {
        bar.button(2)->click();
        QApplication::processEvents();
    };
}

FrmLancarCheques& chequeOf(std::int64_t client, int at) {
    auto& form = shown<FrmLancarCheques>();
    control<QPushButton>(form, "CmdNovo").click();
    choose(control<DropDownList>(form, "txtNome"), nameOf(client));
    control<DropDownList>(form, "txtbanco").setListIndex(0);
    control<QLineEdit>(form, "txtnumero").setText(QString::number(900'000 + at));
    auto& value = control<QLineEdit>(form, "txtvalor");
    value.setFocus();
    value.setText("150,00");
    return form;
}

Operation leaveValue(int at) {
    auto& next = control<QLineEdit>(chequeOf(at % (kMeasured - 1), at), "txtautorizou");
    return [&next] {
        next.setFocus();
        QApplication::processEvents();
    };
}

Operation saveCheque(int at) {
    auto& save = control<QPushButton>(chequeOf(kMeasured - 1, at), "CmdIncluir");
    save.setFocus(); // leaves the value
    return [&save] {
        save.click();
        QApplication::processEvents();
    };
}

Operation listClient(int at) {
    FrmLancarCheques::instance().hide();
    Mirtal::modo = "localizarCH";
    auto& form = shown<FrmLocCHTerceiros>();
    auto& clients = control<DropDownList>(form, "txtcliente");
    choose(clients, nameOf(at % (kMeasured - 1)));
    return [&clients, &form] {
        emit clients.clicked();
        QApplication::processEvents();
        if (control<ListView>(form, "lstterceiros").count() != kChequesOfEach)
            std::fprintf(stderr, "not the client's cheques\n");
    };
}

const Measured kOperations[] = {
    {"opening the entry window",              21,  &openEntry },
    {"showing a cheque by navigation",        200, &showNext  },
    {"leaving the value (50 cheques summed)", 200, &leaveValue},
    {"saving a cheque",                       200, &saveCheque},
    {"listing a client's 50 cheques",         50,  &listClient},
};

double medianMs(const Measured& measured) {
    std::vector<double> times;
    for (int i = 0; i < measured.times; ++i) {
        const Operation operation = measured.prepare(i);
        const std::clock_t begin = std::clock();
        operation();
        times.push_back(1e3 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC);
    }
    std::ranges::nth_element(times, times.begin() + measured.times / 2);
    return times[static_cast<std::size_t>(measured.times) / 2];
}

using Medians = std::map<std::string, double>;

/// By operation, in the database of a folder.
Medians measure(const std::filesystem::path& folder) {
    Mirtal::DatabaseFolder = QString::fromStdString(folder.string());
    dbconectar::instance().abrir();
    addMeasuredClients(dbconectar::instance().rsCheques.RecordCount());
    Medians medians;
    for (const Measured& operation : kOperations)
        medians[operation.name] = medianMs(operation);
    WindowList::instance().clear();
    dbconectar::descartar();
    return medians;
}

std::filesystem::path folderOf(const std::string& name) {
    auto folder = benchFolder() / name;
    std::filesystem::create_directory(folder);
    return folder;
}

void measureFile(const std::filesystem::path& file) {
    const auto folder = folderOf("given");
    std::filesystem::copy_file(file, folder / "automacao.mdb");
    std::printf("%-40s %9s\n", "median (processor ms):", "");
    for (const auto& [operation, ms] : measure(folder))
        std::printf("%-40s %9.3f\n", operation.c_str(), ms);
    std::printf("%-40s %9.0f\n", "wanted, at most", kWantedMs);
    std::printf("%-40s %9.1f\n%-40s %9d\n", "largest memory (MB)", memoryOf("VmHWM"),
                "wanted, at most", 200);
}

void measureSizes() {
    std::map<std::int64_t, Medians> medians;
    for (const std::int64_t cheques : kSizes) {
        const auto folder = folderOf(std::to_string(cheques));
        makeShop(folder / "automacao.mdb", {kClients, kBanks, cheques, 0});
        medians[cheques] = measure(folder);
    }
    std::printf("%-40s %9lld %9lld %8s\n",
                "median (processor ms) with cheques:", static_cast<long long>(kSizes[0]),
                static_cast<long long>(kSizes[1]), "ratio");
    for (const Measured& operation : kOperations) {
        const double few = medians[kSizes[0]][operation.name];
        const double many = medians[kSizes[1]][operation.name];
        std::printf("%-40s %9.3f %9.3f %7.2fx\n", operation.name, few, many, many / few);
    }
    std::printf("%-40s %9s %9.0f %7.0fx\n", "wanted, at most", "", kWantedMs, kWantedRatio);
}

MessageAnswer refuse(const Message& message) {
    std::fprintf(stderr, "a message came up: %s\n", qUtf8Printable(message.text));
    return message.buttons == MessageButtons::ok ? MessageAnswer::ok : MessageAnswer::no;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    prepareWindows(application, &refuse);

    argc == 2 ? measureFile(argv[1]) : measureSizes();
    return EXIT_SUCCESS;
}
