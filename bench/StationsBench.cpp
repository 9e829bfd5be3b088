// What each of many stations waits for that work on one server at the same time:
//
//     stations_bench [clerks [seconds]]
#include "ado/Connection.h"
#include "schema/ShopSchema.h"
#include "support/Cluster.h"
#include "support/StationsAtWork.h"
#include "support/TemporaryFolder.h"

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv) {
    constexpr int kClerks = 64;
    constexpr int kSeconds = 120;
    if (const std::string why = Cluster::absence(); !why.empty())
        return std::puts(why.c_str()), EXIT_FAILURE;
    Cluster::likeAShops();
    const std::string shop =
        "Data Source=" + Cluster::instance(shop::tables(), shop::serverIndexes()).newShop();
    {
        ado::Connection connection;
        connection.Open(shop);
        StationsAtWork::addRows(connection);
    }
    const TemporaryFolder folder;
    StationsAtWork stations(shop, folder.path());
    stations.work(argc > 1 ? std::atoi(argv[1]) : kClerks, 0,
                  argc > 2 ? std::atoi(argv[2]) : kSeconds);
    stations.print();
    for (const std::string& error : stations.errors())
        std::puts(error.c_str());
    return stations.errors().empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}
