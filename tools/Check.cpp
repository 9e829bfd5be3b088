#include "jet/Check.h"

#include "ado/ServerCheck.h"
#include "jet/CheckRules.h"
#include "jet/FileSteps.h"
#include "schema/ShopSchema.h"
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

std::string verdict(const jet::Report& report,
                    const std::string& whole = "O arquivo está inteiro") {
    const auto has = [&](Severity severity) {
        return std::ranges::count(report.findings, severity, &jet::Finding::severity) > 0;
    };
    if (!report.sound())
        return "Há erros.";
    if (has(Severity::rule))
        return whole + ", mas há registros que não obedecem às regras dele.";
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

// ---- a server, which has no pages

// What the windows look up by these, kept by the server or not.
constexpr ado::Reference kReferences[] = {
    {"cheques",   "cliente", "cliente_fornecedor", "codigo"},
    {"cheques",   "banco",   "bancos",             "codigo"},
    {"semfundos", "cliente", "cliente_fornecedor", "codigo"},
    {"semfundos", "banco",   "bancos",             "codigo"},
};

void printServerText(const jet::Report& report) {
    for (const jet::Finding& finding : report.findings)
        std::cout << nameOf(finding.severity) << ": " << finding.sentence << '\n';
    std::cout << report.tables << " tabelas, " << report.rows << " registros.\n"
              << verdict(report, "A base de dados está inteira") << '\n';
}

void printServerJson(const jet::Report& report) {
    std::cout << "{\"conclusao\": " << jsonText(verdict(report, "A base de dados está inteira"))
              << ", \"regras_conferidas\": true, \"tabelas\": " << report.tables
              << ", \"registros\": " << report.rows << ", \"achados\": [";
    const char* between = "\n";
    for (const jet::Finding& finding : report.findings) {
        std::cout << between << "{\"tipo\": " << jsonText(nameOf(finding.severity))
                  << ", \"frase\": " << jsonText(finding.sentence) << '}';
        between = ",\n";
    }
    std::cout << "]}\n";
}

int checkServer(const Arguments& arguments, const std::string& address) {
    std::vector<jet::TableSpec> tables(shop::tables().begin(), shop::tables().end());
    tables.push_back(shop::history());
    const jet::Report report =
        ado::checkServer(address, tables, shop::serverIndexes(), kReferences);
    arguments.has("--json") ? printServerJson(report) : printServerText(report);
    return report.clean() ? kDone : report.sound() ? kWarnings : kProblems;
}

} // namespace

int runCheck(const Arguments& arguments) {
    if (const auto server = arguments.server())
        return checkServer(arguments, *server);
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
