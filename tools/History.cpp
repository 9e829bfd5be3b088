#include "jet/Database.h"
#include "jet/DropTable.h"
#include "jet/Error.h"
#include "schema/ShopSchema.h"
#include "tools/Commands.h"

#include <iostream>

namespace {

jet::Database opened(const std::filesystem::path& path, bool readOnly) {
    jet::Database::Options options;
    options.readOnly = readOnly;
    return {path, options};
}

void tell(jet::Database& database) {
    if (database.hasTable(shop::kHistory))
        std::cout << "Histórico: " << database.table(shop::kHistory).rowCount() << " registros.\n";
    else
        std::cout << "Não há histórico.\n";
    std::cout << (database.hasTable(shop::kNoHistory) ? "Está desligado: nada é gravado nele.\n"
                                                      : "Está ligado.\n");
}

void turnOff(const std::filesystem::path& path) {
    jet::Database database = opened(path, false);
    if (!database.hasTable(shop::kNoHistory))
        database.createTable({.name = shop::kNoHistory,
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
        drop(path, shop::kNoHistory);
    if (arguments.has("--remove"))
        drop(path, shop::kHistory);
    jet::Database database = opened(path, true);
    tell(database);
    return kDone;
}
