#pragma once

#include <string>

namespace ado {

/// Whom a shop's tables on a server belong to, and who works with them. Neither logs in: who does
/// is made one of them ("grant valtrino_atendente to maria").
struct ShopRoles {
    std::string owner = "valtrino_dono";
    std::string clerks = "valtrino_atendente"; ///< read and change rows, and no table
};

} // namespace ado
