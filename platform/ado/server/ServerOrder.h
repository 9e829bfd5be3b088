#pragma once

#include "jet/TableDefinition.h"

#include <string>
#include <vector>

namespace ado {

/// The function of a server's database by which its texts are ordered, and the same, as a file of
/// that order has them: `jet_chave` gives of a text the bytes that jet::Collation::appendSortKey()
/// does. One for the texts that a shop mostly has, by what the server itself is fast at; one for
/// any, which goes from character to character. No table is read: a restored copy, an index and a
/// rule get the same from them at any time.
[[nodiscard]] std::vector<std::string> keyFunctions(const jet::Collation& order);

/// That a text stands where it is ordered or compared: its key.
[[nodiscard]] inline std::string keyOf(const std::string& text) {
    return "jet_chave(" + text + ")";
}

} // namespace ado
