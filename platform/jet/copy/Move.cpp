#include "jet/Move.h"

#include "jet/Error.h"
#include "jet/FileSteps.h"
#include "jet/disk/File.h"
#include "jet/share/FileAlone.h"
#include "jet/share/Recovery.h"

#include <cerrno>

namespace jet {

namespace {

/// In one step, also from one disk to another.
void moveFile(const std::filesystem::path& from, const std::filesystem::path& to, Disk& disk) {
    const int result = disk.rename(from, to);
    if (result == -EXDEV) {
        UnnamedFile copy(to, disk);
        copyFile(from, copy, from);
        try {
            copy.takeName();
            return File::remove(disk, from);
        } catch (const Error& error) {
            if (!disk.exists(to))
                throw;
            throw Error(error.code(), "O arquivo \"" + from.string() + "\" foi copiado para \"" +
                                          to.string() +
                                          "\", mas não pôde ser excluído, e agora há dois. "
                                          "Verifique o disco, e exclua um deles antes que alguém "
                                          "trabalhe no outro. " +
                                          error.what());
        }
    }
    if (result < 0)
        return File::rename(disk, from, to); // says why it can't be
    File::syncFolderOf(disk, to);
    File::syncFolderOf(disk, from);
}

/// The files of one folder for which `goes` says so.
template <class Goes>
void moveFiles(const std::filesystem::path& from, const std::filesystem::path& to, Disk& disk,
               Goes&& goes) {
    for (const Disk::Entry& entry : File::list(disk, from)) {
        if (!entry.isFile || !goes(entry.name) || disk.exists(to / entry.path()))
            continue;
        File::makeFolder(disk, to);
        moveFile(from / entry.path(), to / entry.path(), disk);
    }
}

} // namespace

void moveDatabase(const std::filesystem::path& database, const std::filesystem::path& folder,
                  Disk& disk) {
    const std::filesystem::path from = disk.resolved(database);
    const std::filesystem::path to = disk.resolved(folder) / from.filename();
    requireAbsent(to, disk);
    requireAbsent(Journal::pathFor(to), disk);
    const FileAlone alone(from, disk);
    recover(from, disk);
    const std::string stem = from.stem().string();
    const auto isOfIt = [&](const std::string& name) { return name.starts_with(stem + "-"); };
    moveFiles(from.parent_path() / "backup", to.parent_path() / "backup", disk, isOfIt);
    moveFiles(from.parent_path(), to.parent_path(), disk, [&](const std::string& name) {
        // An empty journal is of no use to anybody.
        return isOfIt(name) || name.starts_with(from.filename().string() + "-journal.");
    });
    moveFile(from, to, disk);
}

} // namespace jet
