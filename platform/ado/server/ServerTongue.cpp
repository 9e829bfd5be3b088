#include "ado/server/ServerTongue.h"

#include "ado/dialect/Spelling.h"
#include "ado/dialect/SqlFunctions.h"
#include "ado/server/ServerValue.h"

#include <cstdlib>

namespace ado {

std::string placeFor(std::vector<Parameter>& parameters, Parameter parameter) {
    parameters.push_back(std::move(parameter));
    return "$" + std::to_string(parameters.size());
}

std::string ServerTongue::text(const std::string& value) {
    // Between literals alone the shop's order counts as well.
    return "(" + placeFor(parameters_, parameterOf(value)) + " collate texto)";
}

std::string ServerTongue::date(const std::string& days) {
    return placeFor(parameters_, parameterOf(jet::Date{std::strtod(days.c_str(), nullptr)}));
}

/// Ours have the same names there: see ServerSchema.cpp.
std::optional<std::string> ServerTongue::function(std::string_view name) const {
    const char* const known = engineFunction(name);
    if (known == nullptr)
        return std::nullopt;
    if (name == "sum" || name == "avg") // which are exact there
        return quotedName(name);
    return quotedName(known);
}

} // namespace ado
