#include "jet/Report.h"

#include <algorithm>

namespace jet {

bool Report::sound() const noexcept {
    return std::ranges::none_of(findings, [](const Finding& finding) {
        return finding.severity == Finding::Severity::error;
    });
}

} // namespace jet
