#include "jet/copy/Losses.h"

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

} // namespace jet
