#include "jet/disk/SideFile.h"

#include "jet/Error.h"

namespace jet::side {

namespace {

constexpr std::uint32_t kReadWrite = 0666;
constexpr std::uint32_t kRead = 0444;
constexpr std::uint32_t kOwn = 0600;

} // namespace

File open(const std::filesystem::path& path, bool forWriting, Disk& disk) {
    File file(path, forWriting ? File::Mode::writeBeside : File::Mode::readBeside, disk);
    if (file.attributes().names > 1)
        throw Error(Errc::io, "O arquivo \"" + path.string() +
                                  "\" não pode ser usado: é outro nome de um arquivo que tem o seu "
                                  "próprio.");
    return file;
}

File make(const std::filesystem::path& path, Disk& disk) {
    return {path, File::Mode::makeBeside, disk};
}

void share(File& file, const std::filesystem::path& database, Holds what) noexcept {
    try {
        Disk::Rights rights = File(database, File::Mode::read, file.disk()).attributes().rights;
        rights.mode = (rights.mode & kReadWrite) | kOwn;
        if (file.takeRights(rights) || what == Holds::data ||
            file.attributes().rights.owner == rights.owner)
            return;
        rights.mode |= (rights.mode & kRead) >> 1;
        static_cast<void>(file.takeRights(rights));
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch)
        // Nobody's file yet, one of a disk that has no rights, or no memory to ask for them.
    }
}

} // namespace jet::side
