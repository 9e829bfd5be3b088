#include "jet/Stations.h"

#include "jet/share/LockFile.h"

namespace jet {

std::vector<std::string> stationsIn(const std::filesystem::path& database, Disk& disk) {
    std::vector<std::string> names;
    const std::filesystem::path file = disk.resolved(database);
    if (!disk.exists(std::filesystem::path(file).replace_extension(".ldb")))
        return names;
    LockFile lock(file, disk);
    lock.open();
    for (const unsigned user : lock.otherUsers())
        names.push_back(lock.nameOf(user) + (lock.isForeign(user) ? " (outro programa)" : ""));
    return names;
}

} // namespace jet
