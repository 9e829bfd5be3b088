// In place of all the others where the server's library wasn't there to build with.
#include "ado/Migration.h"
#include "ado/ServerCheck.h"
#include "ado/server/OpenServer.h"

namespace ado {

Migration migrateToServer(const std::filesystem::path& /*file*/, const std::string& address,
                          const ShopRoles& /*roles*/, std::span<const jet::TableSpec> /*wanted*/,
                          std::span<const jet::TableSpec> /*further*/,
                          const jet::Progress& /*progress*/) {
    static_cast<void>(openServer(address, nullptr)); // says what is missing
    return {};
}

Migration migrateToFile(const std::string& address, const std::filesystem::path& /*file*/,
                        jet::Version /*version*/, const jet::Progress& /*progress*/,
                        jet::Disk& /*disk*/) {
    static_cast<void>(openServer(address, nullptr));
    return {};
}

jet::Report checkServer(const std::string& address, std::span<const jet::TableSpec> /*tables*/,
                        std::span<const jet::TableSpec> /*further*/,
                        std::span<const Reference> /*references*/) {
    static_cast<void>(openServer(address, nullptr));
    return {};
}

std::vector<std::string> addServerIndexes(const std::string& address,
                                          std::span<const jet::TableSpec> /*further*/) {
    static_cast<void>(openServer(address, nullptr));
    return {};
}

} // namespace ado
