#include "jet/Check.h"

#include "tools/Commands.h"

#include <iostream>

int runCheck(const Arguments& arguments) {
    const jet::Report report = jet::check(arguments.path());
    for (const jet::Finding& finding : report.findings)
        std::cout << (finding.severity == jet::Finding::Severity::error ? "erro" : "aviso")
                  << ", página " << number(finding.page) << ": " << finding.sentence << '\n';
    std::cout << report.pages << " páginas (" << report.freePages << " livres), " << report.tables
              << " tabelas, " << report.rows << " registros, " << report.indexEntries
              << " entradas de índices.\n"
              << (report.clean()   ? "Nenhum problema.\n"
                  : report.sound() ? "Só avisos: sobras sem perigo.\n"
                                   : "Há erros.\n");
    return report.clean() ? kDone : kProblems;
}
