#pragma once

#include "jet/database/Relationships.h"
#include "jet/rule/Functions.h"
#include "jet/rule/ValueRules.h"

namespace jet {

/// What a file keeps as rules of one table, for who is to keep the same elsewhere.
struct KeptRules {
    std::vector<ValueRules::Rule> values; ///< a text without its expression isn't understood here
    std::vector<Relationship> bonds;      ///< those in which the table is the child
    std::optional<std::string> problem;   ///< why they can't be read
};

/// @throws Error{io}.
[[nodiscard]] KeptRules rulesOf(Database& database, const Table& table);

} // namespace jet
