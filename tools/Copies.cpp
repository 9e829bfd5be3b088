#include "jet/Backup.h"
#include "jet/Compact.h"
#include "jet/Move.h"
#include "jet/Salvage.h"
#include "tools/Commands.h"
#include "tools/ProgressLine.h"

#include <functional>
#include <iostream>

namespace {

/// In the order of jet::Loss::What.
constexpr const char* kNames[jet::kLossKinds] = {
    "aviso",          "registro separado", "campo perdido",    "registro perdido",
    "página perdida", "tabela perdida",    "estrutura perdida"};

const char* nameOf(jet::Loss::What what) { return kNames[static_cast<std::size_t>(what)]; }

void print(const jet::Loss& loss) {
    std::cout << nameOf(loss.what) << ", página " << number(loss.page);
    if (loss.slot)
        std::cout << ", linha " << *loss.slot;
    std::cout << ": " << (loss.table.empty() ? "" : "tabela \"" + loss.table + "\": ")
              << loss.reason << '\n';
}

void printCounts(const jet::SalvageReport& report) {
    std::uint64_t all = 0;
    for (std::size_t i = 0; i < jet::kLossKinds; ++i)
        all += report.counts[i];
    if (all > report.losses.size())
        std::cout << "(mais " << all - report.losses.size() << " ocorrências)\n";
    for (const jet::SavedTable& table : report.tables) {
        std::cout << "tabela \"" << table.name << "\": " << table.rows << " registros salvos";
        if (table.apart > 0)
            std::cout << " e " << table.apart << " separados em \"" << table.apartName << '"';
        std::cout << "; ela dizia ter " << table.said << '\n';
    }
    using enum jet::Loss::What;
    for (const auto what : {apart, value, row, page, table, structure})
        if (const std::uint64_t count = report.count(what); count > 0)
            std::cout << nameOf(what) << ": " << count << '\n';
    for (const jet::Finding& finding : report.check.findings)
        if (finding.severity == jet::Finding::Severity::error)
            std::cout << "erro no arquivo novo, página " << number(finding.page) << ": "
                      << finding.sentence << '\n';
}

} // namespace

int runCompact(const Arguments& arguments) {
    ProgressLine progress;
    const jet::Compacted done =
        jet::compact(arguments.file(), arguments.newFile(1), std::ref(progress));
    progress.clear();
    std::cout << done.tables << " tabelas, " << done.rows << " registros: de " << done.pagesBefore
              << " páginas para " << done.pagesAfter << ".\n";
    return kDone;
}

int runSalvage(const Arguments& arguments) {
    ProgressLine progress;
    const jet::SalvageReport report =
        jet::salvage(arguments.file(), arguments.newFile(1), std::ref(progress));
    progress.clear();
    for (const jet::Loss& loss : report.losses)
        print(loss);
    printCounts(report);
    const bool complete = report.complete() && report.check.sound();
    std::cout << (complete ? "Tudo foi salvo.\n" : "O arquivo novo não tem tudo.\n");
    return complete ? kDone : kProblems;
}

int runRestore(const Arguments& arguments) {
    const auto kept = jet::restore(arguments.file(), arguments.newFile(1));
    std::cout << "No lugar: " << arguments.operand(1) << ".\n";
    if (kept)
        std::cout << "O arquivo substituído foi guardado como \"" << kept->string() << "\".\n";
    return kDone;
}

int runMove(const Arguments& arguments) {
    jet::moveDatabase(arguments.file(), arguments.folder(1));
    std::cout << "Agora está em: " << (arguments.folder(1) / arguments.path().filename()).string()
              << '\n';
    return kDone;
}
