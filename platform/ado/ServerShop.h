#pragma once

#include "ado/ShopRoles.h"
#include "jet/TableSpec.h"

#include <span>
#include <string>
#include <string_view>

namespace ado {

/// Whether that is a server's address, "postgresql://...", and no path.
[[nodiscard]] bool isServerAddress(std::string_view text) noexcept;

/// Whether an address carries what only its user may know. Error{syntax} for one that is none.
[[nodiscard]] bool holdsPassword(const std::string& address);

/// Makes the shop's tables, and what they need, in a database that has no shop yet; and the indexes
/// of `further`, of which no file is to hear. All of it or nothing.
/// @throws Error{exists} if it has one, Error{io, password, notFound} if the server can't be
///         reached, Error{unsupported} where the program was built without one, and what the server
///         refuses.
void createShopOnServer(const std::string& address, std::span<const jet::TableSpec> tables,
                        const ShopRoles& roles = {}, std::span<const jet::TableSpec> further = {});

} // namespace ado
