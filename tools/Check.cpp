#include "jet/Check.h"

#include "jet/CheckRules.h"
#include "jet/FileSteps.h"
#include "tools/Commands.h"

#include <algorithm>
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

} // namespace

int runCheck(const Arguments& arguments) {
    jet::Report report = jet::check(arguments.path());
    mentionParts(arguments.path(), report);
    const bool whole = report.sound();
    if (whole)
        std::ranges::move(jet::checkRules(arguments.path()), std::back_inserter(report.findings));
    for (const jet::Finding& finding : report.findings)
        std::cout << nameOf(finding.severity) << ", página " << number(finding.page) << ": "
                  << finding.sentence << '\n';
    std::cout << report.pages << " páginas (" << report.freePages << " livres), " << report.tables
              << " tabelas, " << report.rows << " registros, " << report.indexEntries
              << " entradas de índices.\n"
              << verdict(report) << '\n';
    if (!whole)
        std::cout << "As regras do arquivo não foram conferidas: antes delas, os erros.\n";
    return report.clean() ? kDone : report.sound() ? kWarnings : kProblems;
}
