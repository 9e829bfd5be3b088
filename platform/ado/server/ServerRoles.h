#pragma once

#include "ado/ShopRoles.h"
#include "ado/server/ServerWire.h"

namespace ado {

/// Inside a transaction: makes the roles if the server doesn't have them, and the schema
/// `valtrino`, the owner's; lets clerks into it and nobody else into the database. From here on, as
/// becomeOwner().
/// @throws jet::Error.
void createRolesAndSchema(ServerWire& wire, const ShopRoles& roles);

/// What is made from here to leaveOwner(), inside the transaction, belongs to the shop's owner.
/// @throws Error{readOnly} if whoever is connected may not act for him.
void becomeOwner(ServerWire& wire);
void leaveOwner(ServerWire& wire);

} // namespace ado
