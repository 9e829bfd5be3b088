#include "ado/ServerCheck.h"
#include "jet/Backup.h"
#include "jet/Error.h"
#include "schema/ShopSchema.h"
#include "schema/ShopUpgrade.h"
#include "tools/Commands.h"

#include <iostream>

namespace {

std::vector<shop::Missing> missingIn(const std::filesystem::path& path) {
    jet::Database::Options onlyToRead;
    onlyToRead.readOnly = true;
    jet::Database database(path, onlyToRead);
    return shop::missingIn(database);
}

template <class List>
void print(const char* what, const List& list) {
    if (list.empty())
        return;
    std::cout << what;
    for (const auto& item : list)
        std::cout << (&item == &list.front() ? "" : ", ") << item.name;
    std::cout << '\n';
}

int upgradeServer(const std::string& address) {
    const std::vector<std::string> made = ado::addServerIndexes(address, shop::serverIndexes());
    if (made.empty())
        std::cout << "Nada a fazer: não falta nenhum índice desta versão.\n";
    for (const std::string& index : made)
        std::cout << "Índice novo: " << index << '\n';
    return kDone;
}

} // namespace

int runUpgrade(const Arguments& arguments) {
    if (const auto address = arguments.server())
        return upgradeServer(*address);
    const std::filesystem::path path = arguments.file();
    const std::vector<shop::Missing> missing = missingIn(path);
    if (missing.empty()) {
        std::cout << "Nada a fazer: não falta nenhuma tabela, campo ou índice desta versão.\n";
        return kDone;
    }
    const std::filesystem::path kept =
        jet::changeAside(path, [&](jet::Database& database) { shop::upgrade(database, missing); });
    for (const auto& [more, table] : missing) {
        std::cout << "Tabela " << more.name << (table ? ": nova\n" : ":\n");
        if (table)
            continue;
        print("  campos: ", more.columns);
        print("  índices: ", more.indexes);
    }
    std::cout << "O arquivo como era foi guardado como \"" << kept.string() << "\".\n";
    return kDone;
}
