#include "jet/Damage.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace jet;

namespace {

bool tells(const Report& report, const Damage& damage, PageNo page) {
    return std::ranges::any_of(report.findings, [&](const Finding& finding) {
        return finding.severity == damage.severity && finding.page == page &&
               finding.sentence.find(damage.words) != std::string::npos;
    });
}

} // namespace

void expectTold(std::span<const Damage> damages) {
    for (const Version version : {Version::jet3, Version::jet4}) {
        DamagedFile file(version);
        for (const Damage& damage : damages) {
            if (version == Version::jet3 && !damage.inJet3)
                continue;
            SCOPED_TRACE(std::string(version == Version::jet3 ? "Jet 3, " : "Jet 4, ") +
                         damage.name);
            file.restore();
            const PageNo page = damage.plant(file);
            const Report report = file.check();
            EXPECT_TRUE(tells(report, damage, page))
                << "expected on page " << number(page) << ": " << damage.words << "\n"
                << listed(report);
        }
        file.restore();
        EXPECT_TRUE(file.check().clean());
    }
}
