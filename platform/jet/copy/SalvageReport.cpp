#include "jet/SalvageReport.h"

#include <algorithm>

namespace jet {

bool SalvageReport::complete() const noexcept {
    for (const auto what : {Loss::What::value, Loss::What::row, Loss::What::page, Loss::What::table,
                            Loss::What::structure, Loss::What::apart})
        if (count(what) != 0)
            return false;
    return std::ranges::all_of(
        tables, [](const SavedTable& table) { return table.rows + table.apart >= table.said; });
}

} // namespace jet
