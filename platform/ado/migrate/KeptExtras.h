#pragma once

#include "ado/server/ServerWire.h"
#include "jet/Extras.h"

namespace ado {

/// A rule of the file that the server keeps: by which of its constraints, and what that says.
struct KeptRule {
    std::string table;
    std::string column; ///< empty: the table's
    std::string what;   ///< the property's name, kRelationship, or nothing: no rule of the file
    std::string name;   ///< of the constraint, or of the relationship's; of a default empty
    std::string definition{};
};
inline constexpr const char* kBond = "relacionamento";
inline constexpr const char* kDefault = "DefaultValue";

/// What a file has that a server has no use for lies there beside the tables, for the way back.
/// @return a sentence for each thing that the server can't hold.
std::vector<std::string> keepExtras(ServerWire& wire, const jet::Extras& extras);
/// Notes the rules that have been made, each as the server has it now.
void keepRules(ServerWire& wire, const std::vector<KeptRule>& rules);

/// Empty of a shop that never was in a file.
[[nodiscard]] jet::Extras keptExtras(ServerWire& wire);
[[nodiscard]] std::vector<KeptRule> keptRules(ServerWire& wire);

} // namespace ado
