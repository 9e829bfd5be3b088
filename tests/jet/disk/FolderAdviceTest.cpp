// A database in a folder that a program copies between computers: the operator is told.
#include "jet/disk/FolderAdvice.h"

#include "jet/Notes.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace jet;
using testing::HasSubstr;
using Kind = MemoryDisk::Kind;

namespace {

TEST(FolderAdvice, KnowsTheFoldersOfProgramsThatCopyFiles) {
    const std::pair<const char*, const char*> folders[] = {
        {"/home/ana/Dropbox/loja",             "Dropbox"     },
        {"/home/ana/Dropbox (Loja)/loja",      "Dropbox"     },
        {"/home/ana/OneDrive/loja",            "OneDrive"    },
        {"/home/ana/OneDrive - Loja Ltda",     "OneDrive"    },
        {"/media/ana/Meu Drive/loja",          "Google Drive"},
        {"/home/ana/Nextcloud",                "Nextcloud"   },
        {"/home/ana/com~apple~CloudDocs/loja", "iCloud"      },
    };
    for (const auto& [folder, program] : folders) {
        MemoryDisk disk;
        EXPECT_THAT(adviceOn(std::string(folder) + "/automacao.mdb", disk).value_or(""),
                    HasSubstr(program));
    }
}

TEST(FolderAdvice, KnowsWhatSuchProgramsLeaveInThem) {
    const std::pair<const char*, const char*> names[] = {
        {"/dados/loja/.dropbox",         "Dropbox"     },
        {"/dados/.dropbox.cache",        "Dropbox"     },
        {"/dados/.sync_6f0a1b2c3d4e.db", "Nextcloud"   },
        {"/dados/loja/._sync_1a2b.db",   "ownCloud"    },
        {"/dados/.stfolder",             "Syncthing"   },
        {"/dados/.sync/ID",              "Resilio Sync"},
        {"/dados/.tmp.driveupload",      "Google Drive"},
    };
    for (const auto& [name, program] : names) {
        MemoryDisk disk;
        disk.put(name, Kind::file);
        EXPECT_THAT(adviceOn("/dados/loja/automacao.mdb", disk).value_or(""), HasSubstr(program))
            << name;
    }
}

TEST(FolderAdvice, SaysNothingOfOtherFolders) {
    MemoryDisk disk;
    for (const char* name : {"/dados/dropbox.txt", "/dados/.sync", "/dados/loja/sync_1.db",
                             "/outra/.dropbox", "/dados/loja/OneDrive"})
        disk.put(name, Kind::file);
    for (const char* path : {"/dados/loja/automacao.mdb", "/dados/OneDriveAntigo/automacao.mdb",
                             "/dados/Dropbox.mdb", "automacao.mdb"})
        EXPECT_EQ(adviceOn(path, disk), std::nullopt) << path;
}

TEST(FolderAdvice, SettingsAtHomeAreNoCarriedFolder) {
    const TemporaryFolder home;
    std::filesystem::create_directories(home / ".dropbox");
    EXPECT_EQ(adviceOn(home / "loja.mdb", Disk::system()), std::nullopt);
    std::filesystem::create_directories(home / ".stfolder");
    EXPECT_THAT(adviceOn(home / "loja.mdb", Disk::system()).value_or(""), HasSubstr("Syncthing"));
}

class AdvisedFile : public testing::TestWithParam<Version> {};
INSTANTIATE_TEST_SUITE_P(, AdvisedFile, testing::Values(Version::jet3, Version::jet4));

TEST_P(AdvisedFile, IsOpenedAsAlwaysAndTheOperatorIsTold) {
    const TemporaryFolder folder;
    const auto carried = folder / "Dropbox";
    std::filesystem::create_directory(carried);
    Database::create(carried / "loja.mdb", GetParam());
    Database file(carried / "loja.mdb");
    EXPECT_EQ(file.readOnlyReason(), std::nullopt);
    EXPECT_THAT(file.notice().value_or(""),
                testing::AllOf(HasSubstr("copia entre computadores"), HasSubstr(carried.string())));
}

TEST_P(AdvisedFile, TellsOfTheJournalAsWell) {
    MemoryDisk disk(diskOfNotes(GetParam()));
    disk.put("/loja/.stfolder", Kind::folder);
    disk.put(std::string(kPath) + "-journal", Kind::folder);
    Database file(kPath, on(disk));
    EXPECT_THAT(file.notice().value_or(""),
                testing::AllOf(HasSubstr("-journal.old"), HasSubstr("Syncthing")));
    EXPECT_EQ(file.notice(), file.notice());
}

} // namespace
