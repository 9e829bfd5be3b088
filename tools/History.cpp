#include "jet/Database.h"
#include "jet/DropTable.h"
#include "jet/Error.h"
#include "tools/Commands.h"

#include <iostream>

namespace {

// As shell/Historico.h has them.
constexpr const char* kTable = "valtrino_historico";
constexpr const char* kOff = "valtrino_sem_historico";

jet::Database opened(const std::filesystem::path& path, bool readOnly) {
    jet::Database::Options options;
    options.readOnly = readOnly;
    return {path, options};
}

void tell(jet::Database& database) {
    if (database.hasTable(kTable))
        std::cout << "Histórico: " << database.table(kTable).rowCount() << " registros.\n";
    else
        std::cout << "Não há histórico.\n";
    std::cout << (database.hasTable(kOff) ? "Está desligado: nada é gravado nele.\n"
                                          : "Está ligado.\n");
}

void turnOff(const std::filesystem::path& path) {
    jet::Database database = opened(path, false);
    if (!database.hasTable(kOff))
        database.createTable({.name = kOff,
                              .columns = {{.name = "desde", .type = jet::ColumnType::date}},
                              .indexes = {}});
}

void drop(const std::filesystem::path& path, const char* table) {
    if (opened(path, true).hasTable(table))
        jet::dropTable(path, table);
}

} // namespace

int runHistory(const Arguments& arguments) {
    const std::filesystem::path path = arguments.file();
    if (arguments.has("--on") && arguments.has("--off"))
        throw UsageError("O histórico não pode ser ligado e desligado ao mesmo tempo.");
    if (arguments.has("--off"))
        turnOff(path);
    if (arguments.has("--on"))
        drop(path, kOff);
    if (arguments.has("--remove"))
        drop(path, kTable);
    jet::Database database = opened(path, true);
    tell(database);
    return kDone;
}
