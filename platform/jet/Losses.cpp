#include "jet/Losses.h"

#include "jet/Error.h"

#include <algorithm>

namespace jet {

void Losses::tell(Loss loss) {
    if (!mayLose())
        throw Error(Errc::corrupt,
                    "O arquivo está danificado (página " + std::to_string(number(loss.page)) +
                        (loss.table.empty() ? "" : ", tabela \"" + loss.table + "\"") +
                        "): " + loss.reason + ".");
    ++report_.counts[static_cast<std::size_t>(loss.what)];
    if (report_.losses.size() < SalvageReport::kTold)
        report_.losses.push_back(std::move(loss));
}

bool SalvageReport::complete() const noexcept {
    for (const auto what : {Loss::What::value, Loss::What::row, Loss::What::page, Loss::What::table,
                            Loss::What::structure, Loss::What::apart})
        if (count(what) != 0)
            return false;
    return std::ranges::all_of(
        tables, [](const SavedTable& table) { return table.rows + table.apart >= table.said; });
}

} // namespace jet
