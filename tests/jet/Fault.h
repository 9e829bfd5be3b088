#pragma once

#include "jet/Types.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

/// How the disk fails, once or from then on, while something is done with a file.
///
///     INSTANTIATE_TEST_SUITE_P(, CopyFaults, allFaults(), faultName);
struct Fault {
    jet::Version version;
    bool forever;
    int error; ///< EIO, ENOSPC
};

inline auto allFaults() {
    using jet::Version;
    return testing::Values(Fault{Version::jet3, false, EIO}, Fault{Version::jet3, true, ENOSPC},
                           Fault{Version::jet4, false, ENOSPC}, Fault{Version::jet4, true, EIO});
}

inline std::string faultName(const testing::TestParamInfo<Fault>& fault) {
    return std::string(fault.param.version == jet::Version::jet3 ? "Jet3" : "Jet4") +
           (fault.param.forever ? "ForEver" : "Once") +
           (fault.param.error == EIO ? "Error" : "DiskFull");
}
