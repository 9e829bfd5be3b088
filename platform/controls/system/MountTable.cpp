#include "controls/system/MountTable.h"

#include "controls/system/Drives.h"

#include <QFileInfo>

#include <algorithm>
#include <array>

namespace {

/// One line of the table: what is mounted, where, as what.
struct Mount {
    QString source;
    QString folder;
    QString type;
};

/// Blanks and the like stand in the table as "\" and three octal digits.
QString unescaped(const QByteArray& field) {
    constexpr qsizetype kLength = 4;
    QByteArray bytes;
    for (qsizetype i = 0; i < field.size(); ++i) {
        bool isNumber = false;
        const int code = field[i] == '\\' ? field.mid(i + 1, kLength - 1).toInt(&isNumber, 8) : 0;
        if (isNumber)
            i += kLength - 1;
        bytes += isNumber ? static_cast<char>(code) : field[i];
    }
    return QString::fromUtf8(bytes);
}

bool isOfTheSystem(const QString& folder) {
    static constexpr std::array kFolders = {"/boot", "/dev", "/etc", "/proc",
                                            "/snap", "/sys", "/usr", "/var"};
    return std::ranges::any_of(kFolders, [&](const char* own) { return liesIn(folder, own); });
}

/// A file may be mounted as well as a folder. Only of a disk in the machine is it asked.
bool isDisk(const Mount& mount) {
    return mount.source.startsWith("/dev/") && mount.type != "squashfs" &&
           QFileInfo(mount.folder).isDir();
}

/// "//machine/folder", "machine:/folder", "person@machine:", or what a virtual machine is handed.
bool isOfAnotherMachine(const Mount& mount) {
    static constexpr std::array kTypes = {"9p", "vboxsf", "virtiofs", "fuse.vmhgfs-fuse"};
    return mount.source.startsWith("//") || mount.source.contains(":/") ||
           mount.type == "fuse.sshfs" ||
           std::ranges::any_of(kTypes, [&](const char* type) { return mount.type == type; });
}

bool holdsPeoplesFiles(const Mount& mount) {
    return !isOfTheSystem(mount.folder) &&
           (isDisk(mount) || isOfAnotherMachine(mount) || mount.type == "zfs");
}

} // namespace

QStringList volumesOf(const QByteArray& mounts) {
    QStringList folders{"/"};
    for (const QByteArray& line : mounts.split('\n')) {
        const auto fields = line.split(' ');
        if (fields.size() < 3)
            continue;
        const Mount mount{unescaped(fields[0]), unescaped(fields[1]), unescaped(fields[2])};
        if (holdsPeoplesFiles(mount))
            folders << mount.folder;
    }
    folders.sort();
    folders.removeDuplicates();
    return folders;
}
