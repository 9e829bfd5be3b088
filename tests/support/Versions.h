#pragma once

#include "jet/Types.h"

#include <gtest/gtest.h>

#include <string>

/// What is tested for each version of the file:
///
///     INSTANTIATE_TEST_SUITE_P(, Salvage, bothVersions(), versionName);
inline auto bothVersions() { return testing::Values(jet::Version::jet3, jet::Version::jet4); }

inline std::string versionName(const testing::TestParamInfo<jet::Version>& chosen) {
    return chosen.param == jet::Version::jet3 ? "Jet3" : "Jet4";
}
