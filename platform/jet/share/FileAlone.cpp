#include "jet/share/FileAlone.h"

#include "jet/Error.h"
#include "jet/Waiting.h"
#include "jet/disk/SideFile.h"
#include "jet/share/Attendance.h"

namespace jet {

namespace {

constexpr std::chrono::milliseconds kLongest{2000};

[[noreturn]] void inUse(const std::string& byWhom) {
    throw Error(Errc::locked, "O banco de dados está aberto em outro programa ou estação" + byWhom +
                                  ". Feche-o lá e tente de novo.");
}

} // namespace

FileAlone::FileAlone(const std::filesystem::path& database, Disk& disk) : lock_(database, disk) {
    // Whoever leaves meanwhile removes the very file that we have opened.
    int round = 0;
    do {
        if (++round > side::kMostRounds)
            inUse("");
        const std::optional<File> there = File::ifThere(database, File::Mode::read, disk);
        lock_.open(there ? &*there : nullptr);
        for (const std::uint64_t what :
             {LockFile::kWriting, LockFile::kReading, LockFile::kEntering})
            if (!waitFor([&] { return lock_.tryLock(what); }, kLongest))
                inUse("");
    } while (!lock_.isCurrent());
    if (!lock_.closeGate())
        inUse("");
    const std::vector<unsigned> users = lock_.otherUsers();
    if (!users.empty())
        inUse(": " + lock_.nameOf(users.front()));
    unfinished_.emplace(disk.resolved(database).replace_extension(".ldb"));
    if (!disk.exists(database))
        return;
    File file(database, File::Mode::read, disk);
    if (Attendance(file, lock_).hasStranger())
        inUse("");
}

} // namespace jet
