// Moving a database into another folder takes along what is the database's, and nothing else.
#include "jet/Move.h"

#include "jet/Copies.h"
#include "jet/ShopWork.h"
#include "jet/share/Journal.h"
#include "jet/share/LockFile.h"
#include "support/Versions.h"

using namespace jet;

namespace {

class Moving : public testing::TestWithParam<Version> {
protected:
    void make(const std::string& name) {
        File file(name, File::Mode::createNew, disk);
        file.write(0, std::as_bytes(std::span(name)));
    }
    /// Whether the file that was made under `name` is at `place`.
    [[nodiscard]] bool isAt(const std::string& place, const std::string& name) const {
        const auto bytes = std::as_bytes(std::span(name));
        const DiskImage image = disk.image();
        return image.contains(place) && image.at(place) == Bytes(bytes.begin(), bytes.end());
    }

    MemoryDisk disk{emptyShop(GetParam())};
};

INSTANTIATE_TEST_SUITE_P(, Moving, bothVersions(), versionName);

TEST_P(Moving, TakesAlongWhatIsTheDatabases) {
    const Bytes database = disk.image().at(kPath);
    const std::vector<std::string> its{
        "/automacao-substituido-2004-05-01-101500.mdb", "/automacao.mdb-journal.1",
        "/backup/automacao-2004-05-01.mdb", "/backup/automacao-com-erros.txt"};
    const std::vector<std::string> others{"/outro.mdb", "/automacao.txt", "/automacao.mdb-journal2",
                                          "/backup/outro-2004-05-01.mdb"};
    for (const std::string& name : its)
        make("/loja" + name);
    for (const std::string& name : others)
        make("/loja" + name);
    disk.put("/loja/automacao-pasta", MemoryDisk::Kind::folder);
    moveDatabase(kPath, "/nova", disk);
    EXPECT_TRUE(disk.image().at("/nova/automacao.mdb") == database);
    EXPECT_FALSE(disk.exists(kPath));
    for (const std::string& name : its)
        EXPECT_TRUE(isAt("/nova" + name, "/loja" + name) && !disk.exists("/loja" + name)) << name;
    for (const std::string& name : others)
        EXPECT_TRUE(isAt("/loja" + name, "/loja" + name) && !disk.exists("/nova" + name)) << name;
    EXPECT_TRUE(disk.exists("/loja/automacao-pasta"));
}

TEST_P(Moving, LeavesAFileThatAForeignProgramIsJustOpening) {
    const DiskImage before = disk.image();
    std::optional<File> coming;
    disk.onLock = [&](std::uint64_t byte) {
        if (byte > LockFile::kUsers && byte <= LockFile::kUsers + LockFile::kMostUsers && !coming) {
            coming.emplace("/loja/automacao.ldb", File::Mode::readWrite, disk);
            ASSERT_TRUE(coming->tryLock(Disk::Lock::exclusive, LockFile::kUsers + 4));
        }
    };
    expectError(Errc::locked, "está aberto em outro programa",
                [&] { moveDatabase(kPath, "/nova", disk); });
    EXPECT_TRUE(coming);
    EXPECT_TRUE(disk.image().at(kPath) == before.at(kPath));
}

TEST_P(Moving, OverwritesNothing) {
    const std::string copy = "/backup/automacao-2004-05-01.mdb";
    make("/loja" + copy);
    make("/nova" + copy);
    for (const char* there : {"/nova/automacao.mdb", "/nova/automacao.mdb-journal"}) {
        SCOPED_TRACE(there);
        make(there);
        expectError(Errc::exists, "já existe", [&] { moveDatabase(kPath, "/nova", disk); });
        EXPECT_TRUE(disk.exists(kPath) && isAt(there, there));
        EXPECT_TRUE(isAt("/loja" + copy, "/loja" + copy));
        File::remove(disk, there);
    }
    moveDatabase(kPath, "/nova", disk);
    EXPECT_TRUE(disk.exists("/nova/automacao.mdb"));
    EXPECT_TRUE(isAt("/loja" + copy, "/loja" + copy) && isAt("/nova" + copy, "/nova" + copy));
}

} // namespace
