// In place of all the others where the server's library wasn't there to build with.
#include "ado/ServerShop.h"
#include "ado/server/OpenServer.h"
#include "jet/Error.h"

namespace ado {

namespace {

[[noreturn]] void thereIsNone() {
    throw jet::Error(jet::Errc::unsupported,
                     "Este programa foi montado sem o que é preciso para usar um servidor de banco "
                     "de dados. Peça a quem cuida dele o programa com a biblioteca libpq.");
}

} // namespace

std::unique_ptr<Provider> openServer(const std::string& /*address*/, Recorder* /*recorder*/) {
    thereIsNone();
}

bool holdsPassword(const std::string& /*address*/) { thereIsNone(); }

void createShopOnServer(const std::string& /*address*/, std::span<const jet::TableSpec> /*tables*/,
                        const ShopRoles& /*roles*/, std::span<const jet::TableSpec> /*further*/) {
    thereIsNone();
}

} // namespace ado
