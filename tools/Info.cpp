#include "jet/Backup.h"
#include "jet/Database.h"
#include "jet/Error.h"
#include "jet/Stations.h"
#include "tools/Commands.h"

#include <iostream>

namespace {

/// Who is in the file, before we are.
std::string stations(const std::filesystem::path& path) {
    std::string names;
    try {
        for (const std::string& name : jet::stationsIn(path))
            names.append(names.empty() ? "" : ", ").append(name);
    } catch (const jet::Error& error) {
        return std::string("não se sabe. ") + error.what();
    }
    return names.empty() ? "ninguém" : names;
}

std::string lastCopy(const jet::Backup& backup) {
    try {
        const auto copies = backup.copies();
        return copies.empty() ? "nenhuma" : copies.back().string();
    } catch (const jet::Error& error) {
        return std::string("não se sabe. ") + error.what();
    }
}

} // namespace

int runInfo(const Arguments& arguments) {
    const std::filesystem::path path = arguments.file();
    const std::string present = stations(path);
    jet::Database::Options onlyToRead;
    onlyToRead.readOnly = true;
    jet::Database database(path, onlyToRead);
    const jet::Backup backup(path);
    const bool jet4 = database.version() == jet::Version::jet4;
    const std::uint64_t bytes = std::filesystem::file_size(path);
    std::int64_t rows = 0;
    const std::vector<std::string> tables = database.tableNames();
    for (const std::string& name : tables)
        rows += database.table(name).rowCount();
    std::cout << "Arquivo:      " << database.path().string() << '\n'
              << "Formato:      " << (jet4 ? "Jet 4, de 2000 a 2003" : "Jet 3, de 97") << '\n'
              << "Tamanho:      " << bytes << " bytes, " << bytes / (jet4 ? 4096 : 2048)
              << " páginas\n"
              << "Conteúdo:     " << tables.size() << " tabelas, " << rows << " registros\n"
              << "Aberto por:   " << present << '\n'
              << "Última cópia: " << lastCopy(backup) << '\n';
    if (const auto damage = backup.damage())
        std::cout << "Dano anotado: " << *damage << '\n';
    if (const auto& notice = database.notice())
        std::cout << "Aviso:        " << *notice << '\n';
    return kDone;
}
