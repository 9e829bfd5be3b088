#include "jet/disk/SideFile.h"

#include "jet/Error.h"

#include <utility>

namespace jet::side {

namespace {

constexpr std::uint32_t kReadWrite = 0666;
constexpr std::uint32_t kRead = 0444;
constexpr std::uint32_t kOwn = 0600;

File::Mode mode(bool forWriting) {
    return forWriting ? File::Mode::writeBeside : File::Mode::readBeside;
}

File ofOneName(File file) {
    if (file.attributes().names > 1)
        throw Error(Errc::io, "O arquivo \"" + file.path().string() +
                                  "\" não pode ser usado: é outro nome de um arquivo que tem o seu "
                                  "próprio.");
    return file;
}

} // namespace

std::optional<File> find(const std::filesystem::path& path, bool forWriting, Disk& disk) {
    auto file = File::ifThere(path, mode(forWriting), disk);
    return file ? std::optional(ofOneName(std::move(*file))) : std::nullopt;
}

File open(const std::filesystem::path& path, bool forWriting, Disk& disk) {
    return ofOneName(File(path, mode(forWriting), disk));
}

File make(const std::filesystem::path& path, Disk& disk) {
    return {path, File::Mode::makeBeside, disk};
}

void share(File& file, const File& database, Holds what) noexcept {
    try {
        Disk::Rights rights = database.attributes().rights;
        rights.mode = (rights.mode & kReadWrite) | kOwn;
        if (file.takeRights(rights) || what == Holds::data ||
            file.attributes().rights.owner == rights.owner)
            return;
        rights.mode |= (rights.mode & kRead) >> 1;
        static_cast<void>(file.takeRights(rights));
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch)
        // A disk that has no rights, or no memory to ask for them.
    }
}

} // namespace jet::side
