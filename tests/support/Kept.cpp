#include "support/Kept.h"

#include "support/Cluster.h"

#include <vector>

testing::internal::ParamGenerator<Kept> everywhere() {
    std::vector<Kept> all{Kept(jet::Version::jet3), Kept(jet::Version::jet4)};
    if (Cluster::absence().empty())
        all.push_back(Kept::onServer());
    return testing::ValuesIn(all);
}

testing::internal::ParamGenerator<Kept> inFiles() {
    return testing::Values(Kept(jet::Version::jet3), Kept(jet::Version::jet4));
}

testing::internal::ParamGenerator<Kept> onServers() {
    std::vector<Kept> all;
    if (Cluster::absence().empty())
        all.push_back(Kept::onServer());
    return testing::ValuesIn(all);
}
