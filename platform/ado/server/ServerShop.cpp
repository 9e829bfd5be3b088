#include "ado/ServerShop.h"

#include "ado/server/ServerSchema.h"
#include "jet/Error.h"

#include <algorithm>
#include <array>
#include <libpq-fe.h>

namespace ado {

namespace {

constexpr std::array<std::string_view, 2> kSecrets = {"password", "sslpassword"};

} // namespace

bool holdsPassword(const std::string& address) {
    struct Freer {
        void operator()(PQconninfoOption* options) const { PQconninfoFree(options); }
    };
    // Why it couldn't be read isn't asked for: that may quote the password.
    const std::unique_ptr<PQconninfoOption, Freer> options(
        PQconninfoParse(address.c_str(), nullptr));
    if (!options)
        throw jet::Error(jet::Errc::syntax, "O endereço do servidor não está escrito como deve "
                                            "ser: postgresql://servidor/base.");
    for (const PQconninfoOption* option = options.get(); option->keyword != nullptr; ++option)
        if (option->val != nullptr &&
            std::ranges::find(kSecrets, option->keyword) != kSecrets.end())
            return true;
    return false;
}

void createShopOnServer(const std::string& address, std::span<const jet::TableSpec> tables,
                        const ShopRoles& roles, std::span<const jet::TableSpec> further) {
    ServerWire wire(address);
    requireNoShop(wire);
    createServerSchema(wire, tables, roles, further);
}

} // namespace ado
