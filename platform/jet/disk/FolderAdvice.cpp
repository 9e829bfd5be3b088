#include "jet/disk/FolderAdvice.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

namespace jet {

namespace {

enum class FolderSign : std::uint8_t {
    folder,      ///< a folder around the database has this name
    folderStart, ///< or one that begins so
    inside,      ///< in a folder around the database there is this name
    file,        ///< the same, and it is a regular file
    insideStart  ///< or one that begins so
};
/// By what the folder of a program that copies files between computers is known.
struct Marker {
    FolderSign is;
    const char* name;
    const char* program;
};
constexpr Marker kMarkers[] = {
    {FolderSign::file,        ".dropbox",                              "Dropbox"     }, // at home: its settings
    {FolderSign::inside,      ".dropbox.cache",                        "Dropbox"     }, // what it is carrying
    {FolderSign::folder,      "Dropbox",                               "Dropbox"     }, // as it is made
    {FolderSign::folderStart, "Dropbox (",                             "Dropbox"     }, // a firm's
    {FolderSign::folder,      "OneDrive",                              "OneDrive"    }, // as it is made
    {FolderSign::folderStart, "OneDrive - ",                           "OneDrive"    }, // a firm's
    {FolderSign::inside,      ".849C9593-D756-4E56-8D6E-42412F2A707B", "OneDrive"    }, // in its root
    {FolderSign::folder,      "Google Drive",                          "Google Drive"}, // as it is made
    {FolderSign::folder,      "GoogleDrive",                           "Google Drive"}, // by other clients
    {FolderSign::folder,      "Meu Drive",                             "Google Drive"}, // in its own disk
    {FolderSign::folder,      "My Drive",                              "Google Drive"}, // in English
    {FolderSign::inside,      ".tmp.drivedownload",                    "Google Drive"}, // what it fetches
    {FolderSign::inside,      ".tmp.driveupload",                      "Google Drive"}, // what it sends
    {FolderSign::folder,      "Nextcloud",                             "Nextcloud"   }, // as it is made
    {FolderSign::folder,      "ownCloud",                              "ownCloud"    }, // as it is made
    {FolderSign::insideStart, ".sync_",                                "Nextcloud"   }, // its list of files
    {FolderSign::insideStart, "._sync_",                               "ownCloud"    }, // of older clients
    {FolderSign::inside,      ".nextcloudsync.log",                    "Nextcloud"   }, // what it has done
    {FolderSign::inside,      ".owncloudsync.log",                     "ownCloud"    }, // what it has done
    {FolderSign::inside,      ".stfolder",                             "Syncthing"   }, // each of its folders
    {FolderSign::inside,      ".sync/ID",                              "Resilio Sync"}, // each of its folders
    {FolderSign::inside,      ".SynologyWorkingDirectory",             "Synology"    }, // what it is carrying
    {FolderSign::folder,      "SynologyDrive",                         "Synology"    }, // as it is made
    {FolderSign::folder,      "MEGAsync",                              "MEGA"        }, // as it is made
    {FolderSign::inside,      ".megaignore",                           "MEGA"        }, // what it leaves out
    {FolderSign::folder,      "iCloudDrive",                           "iCloud"      }, // as it is made
    {FolderSign::folder,      "com~apple~CloudDocs",                   "iCloud"      }, // its own name for it
    {FolderSign::folder,      "pCloudDrive",                           "pCloud"      }, // in its own disk
    {FolderSign::folder,      "Seafile",                               "Seafile"     }, // as it is made
};

bool isMarked(const std::filesystem::path& folder, const std::vector<Disk::Entry>& names,
              const Marker& marker, Disk& disk) {
    const std::string name = folder.filename().string();
    switch (marker.is) {
    case FolderSign::folder:
        return name == marker.name;
    case FolderSign::folderStart:
        return name.starts_with(marker.name);
    case FolderSign::inside:
        return disk.exists(folder / marker.name);
    case FolderSign::file:
        return std::ranges::any_of(names, [&](const Disk::Entry& entry) {
            return entry.name == marker.name && entry.isFile;
        });
    case FolderSign::insideStart:
        return std::ranges::any_of(
            names, [&](const Disk::Entry& entry) { return entry.name.starts_with(marker.name); });
    }
    return false;
}

const Marker* markerOf(const std::filesystem::path& folder, Disk& disk) {
    std::vector<Disk::Entry> names;
    static_cast<void>(disk.list(folder, names)); // one that can't be listed tells less
    const auto* found = std::ranges::find_if(
        kMarkers, [&](const Marker& marker) { return isMarked(folder, names, marker, disk); });
    return found == std::end(kMarkers) ? nullptr : found;
}

} // namespace

std::optional<std::string> adviceOn(const std::filesystem::path& database, Disk& disk) {
    const std::filesystem::path home = disk.resolved(database).parent_path();
    for (std::filesystem::path folder = home; folder.has_filename(); folder = folder.parent_path())
        if (const Marker* marker = markerOf(folder, disk))
            return std::string("O banco de dados está em \"") + folder.string() +
                   "\", uma pasta que um programa (" + marker->program +
                   ") copia entre computadores. Se outra estação trabalhar na cópia dela, o que "
                   "uma "
                   "grava apaga o que a outra gravou. Ponha o banco de dados fora dessa pasta, "
                   "numa "
                   "pasta comum deste computador ou da rede.";
    return std::nullopt;
}

} // namespace jet
