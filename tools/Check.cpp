#include "jet/Check.h"

#include "jet/CheckRules.h"
#include "jet/FileSteps.h"
#include "tools/Commands.h"
#include "tools/ProgressLine.h"
#include "tools/ValueText.h"

#include <algorithm>
#include <functional>
#include <iostream>

namespace {

using Severity = jet::Finding::Severity;

const char* nameOf(Severity severity) {
    switch (severity) {
    case Severity::rule:
        return "regra";
    case Severity::warning:
        return "aviso";
    case Severity::error:
        return "erro";
    }
    return "";
}

const char* verdict(const jet::Report& report) {
    const auto has = [&](Severity severity) {
        return std::ranges::count(report.findings, severity, &jet::Finding::severity) > 0;
    };
    if (!report.sound())
        return "Há erros.";
    if (has(Severity::rule))
        return "O arquivo está inteiro, mas há registros que não obedecem às regras dele.";
    return report.clean() ? "Nenhum problema." : "Só avisos: sobras sem perigo.";
}

/// What isn't of the file but lies beside it.
void mentionParts(const std::filesystem::path& path, jet::Report& report) {
    for (const jet::LeftPart& part : jet::partsOf(path))
        report.findings.push_back(
            {Severity::warning, jet::PageNo{0},
             "ao lado do arquivo está \"" + part.path.string() +
                 (part.dead ? "\", sobra de um comando que foi interrompido: o próximo a apaga"
                            : "\", de um comando em andamento ou interrompido em outro "
                              "computador; se nenhum está trabalhando, pode ser apagado")});
}

void printText(const jet::Report& report, bool withRules) {
    for (const jet::Finding& finding : report.findings)
        std::cout << nameOf(finding.severity) << ", página " << number(finding.page) << ": "
                  << finding.sentence << '\n';
    std::cout << report.pages << " páginas (" << report.freePages << " livres), " << report.tables
              << " tabelas, " << report.rows << " registros, " << report.indexEntries
              << " entradas de índices.\n"
              << verdict(report) << '\n';
    if (!withRules)
        std::cout << "As regras do arquivo não foram conferidas: antes delas, os erros.\n";
}

void printJson(const jet::Report& report, bool withRules) {
    std::cout << "{\"conclusao\": " << jsonText(verdict(report))
              << ", \"regras_conferidas\": " << (withRules ? "true" : "false")
              << ", \"paginas\": " << report.pages << ", \"paginas_livres\": " << report.freePages
              << ", \"tabelas\": " << report.tables << ", \"registros\": " << report.rows
              << ", \"entradas_de_indices\": " << report.indexEntries << ", \"achados\": [";
    const char* between = "\n";
    for (const jet::Finding& finding : report.findings) {
        std::cout << between << "{\"tipo\": " << jsonText(nameOf(finding.severity))
                  << ", \"pagina\": " << number(finding.page)
                  << ", \"frase\": " << jsonText(finding.sentence) << '}';
        between = ",\n";
    }
    std::cout << "]}\n";
}

} // namespace

int runCheck(const Arguments& arguments) {
    ProgressLine progress;
    jet::Report report = jet::check(arguments.file(), jet::Disk::system(), {}, std::ref(progress));
    mentionParts(arguments.file(), report);
    const bool whole = report.sound();
    if (whole)
        std::ranges::move(jet::checkRules(arguments.file(), std::ref(progress)),
                          std::back_inserter(report.findings));
    progress.clear();
    arguments.has("--json") ? printJson(report, whole) : printText(report, whole);
    return report.clean() ? kDone : report.sound() ? kWarnings : kProblems;
}
