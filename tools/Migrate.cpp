#include "ado/ConnectionString.h"
#include "ado/Migration.h"
#include "schema/ShopSchema.h"
#include "tools/Commands.h"
#include "tools/ProgressLine.h"
#include "tools/TextTable.h"

#include <cstdio>
#include <iostream>

namespace {

std::string hexOf(std::uint64_t number) {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(number));
    return text;
}

void tell(const ado::Migration& migration, const std::string& from, const std::string& to) {
    TextTable text({"tabela", "registros", "soma de controle"}, {false, true, false});
    std::vector<std::vector<std::string>> lines;
    std::uint64_t rows = 0;
    for (const ado::MigratedTable& table : migration.tables) {
        lines.push_back({table.name, std::to_string(table.rows), hexOf(table.digest)});
        rows += table.rows;
    }
    for (const auto& line : lines)
        text.measure(line);
    text.printHeadings(std::cout);
    for (const auto& line : lines)
        text.print(std::cout, line);
    for (const ado::MigratedTable& table : migration.tables)
        for (const auto& [column, sum] : table.sums)
            std::cout << "soma de " << table.name << '.' << column << ": " << sum << '\n';
    for (const std::string& note : migration.notes)
        std::cout << "aviso: " << note << '\n';
    std::cout << "De " << from << " para " << to << ": " << migration.tables.size() << " tabelas, "
              << rows << " registros, lidos de volta e comparados um a um: todos iguais.\n";
}

} // namespace

int runMigrate(const Arguments& arguments) {
    const auto from = arguments.server(0);
    const auto to = arguments.server(1);
    if (from.has_value() == to.has_value())
        throw UsageError("Um dos dois é um arquivo, o outro o endereço de um servidor, "
                         "postgresql://servidor/base.");
    ProgressLine line;
    const jet::Progress progress = [&](const std::string& table, std::uint64_t done,
                                       std::uint64_t all) { line(table, done, all); };
    ado::Migration done;
    if (to) {
        requireNone(arguments, {"--jet3", "--jet4"},
                    "Uma base de dados num servidor não tem formato de arquivo");
        done = ado::migrateToServer(arguments.file(0), *to, rolesOf(arguments),
                                    {&shop::history(), 1}, shop::serverIndexes(), progress);
    } else {
        requireNone(arguments, {"--owner", "--clerks"}, "Um arquivo não tem papéis");
        done = ado::migrateToFile(*from, arguments.newFile(1), versionOf(arguments), progress);
    }
    line.clear();
    to ? tell(done, arguments.operand(0), done.place)
       : tell(done, done.place, arguments.operand(1));
    return done.notes.empty() ? kDone : kWarnings;
}
