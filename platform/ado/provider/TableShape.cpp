#include "ado/TableShape.h"

#include "jet/Names.h"

#include <algorithm>

namespace ado {

std::optional<std::size_t> TableShape::findColumn(std::string_view name) const {
    const std::string wanted = jet::foldedName(name);
    const auto found = std::ranges::find_if(columns_, [&](const jet::Column& column) {
        return jet::foldedName(column.name) == wanted;
    });
    if (found == columns_.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - columns_.begin());
}

} // namespace ado
