#include "jet/check/CheckFindings.h"

namespace jet {

void Findings::add(Finding::Severity severity, PageNo page, const std::string& where,
                   const std::string& what, const std::string& detail) {
    Kind& kind = kinds_.try_emplace(what, Kind{severity, page}).first->second;
    if (++kind.count <= kShown)
        findings_.push_back({severity, page,
                             (where.empty() ? "" : where + ": ") + what +
                                 (detail.empty() ? "" : " (" + detail + ")")});
    else if (kind.count == kShown + 1)
        kind.page = page;
}

std::vector<Finding> Findings::take() {
    for (const auto& [what, kind] : kinds_)
        if (kind.count > kShown)
            findings_.push_back({kind.severity, kind.page,
                                 what + ": mais " + std::to_string(kind.count - kShown) +
                                     " vezes, a partir desta página"});
    kinds_.clear();
    return std::move(findings_);
}

} // namespace jet
