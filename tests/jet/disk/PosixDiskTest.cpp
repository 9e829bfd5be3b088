// What the disk of a system with POSIX's calls says of what can't be done.
#include "jet/Account.h"
#include "jet/FileSteps.h"
#include "jet/Fork.h"
#include "jet/MemoryDisk.h"
#include "jet/RealFolder.h"
#include "jet/Sentences.h"
#include "jet/disk/File.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cctype>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <sys/socket.h>
#include <sys/un.h>

using namespace jet;
namespace fs = std::filesystem;
using Mode = Disk::Mode;

namespace {

class PosixDisks : public RealFolder {};

TEST_F(PosixDisks, OpenOnlyWhatIsAFileOfThatName) {
    const fs::path file = made("arquivo");
    EXPECT_EQ(openError(folder / "nenhum"), ENOENT);
    EXPECT_EQ(openError(file / "dentro"), ENOTDIR);
    EXPECT_EQ(openError(folder.path()), EISDIR);
    EXPECT_EQ(openError(file, Mode::createNew), EEXIST);
    ASSERT_EQ(::mkfifo((folder / "canal").c_str(), 0666), 0);
    EXPECT_EQ(openError(folder / "canal"), EISDIR); // and nobody is waited for
    fs::create_symlink(file, folder / "atalho");
    int error = 0;
    EXPECT_NE(disk.open(folder / "atalho", Mode::read, error), nullptr);
    EXPECT_EQ(openError(folder / "atalho", Mode::readBeside), ELOOP);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = (folder / "tomada").string();
    ASSERT_LT(name.size(), sizeof address.sun_path);
    std::ranges::copy(name, address.sun_path);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(openError(name), EISDIR);
    ::close(socket);
}

TEST_F(PosixDisks, KnowWhetherANameIsStillThatFile) {
    const fs::path file = made("arquivo");
    int error = 0;
    const auto open = disk.open(file, Mode::readWrite, error);
    ASSERT_NE(open, nullptr);
    EXPECT_TRUE(open->isAt(file));
    EXPECT_FALSE(open->isAt(folder / "nenhum"));
    EXPECT_FALSE(open->isAt(made("outro")));
    EXPECT_FALSE(open->isAt("/dev/null"));
    fs::create_symlink(file, folder / "atalho");
    EXPECT_FALSE(open->isAt(folder / "atalho"));
    fs::rename(file, folder / "movido");
    EXPECT_FALSE(open->isAt(file));
    EXPECT_TRUE(open->isAt(folder / "movido"));
}

TEST_F(PosixDisks, GiveAFilesRightsOnlyAsFarAsTheyMay) {
    if (!Account::canBeHad())
        GTEST_SKIP() << "only root can become somebody else";
    const fs::path like = made("de outro");
    const fs::path mine = made("meu");
    ASSERT_EQ(::chown(like.c_str(), 4321, 4322), 0);
    ASSERT_EQ(::chmod(like.c_str(), 0664), 0);
    fs::permissions(folder.path(), fs::perms::all);
    const auto rightsOf = [](const fs::path& path) {
        struct stat info {};
        EXPECT_EQ(::stat(path.c_str(), &info), 0);
        return info;
    };
    EXPECT_EQ(disk.copyRights(like, mine), 0);
    EXPECT_EQ(rightsOf(mine).st_uid, 4321U);
    EXPECT_EQ(rightsOf(mine).st_gid, 4322U);
    EXPECT_EQ(rightsOf(mine).st_mode & 0777U, 0664U);
    EXPECT_EQ(disk.copyRights(like, mine), 0) << "nothing is left to be given";
    EXPECT_EQ(disk.copyRights(folder / "nenhum", mine), -ENOENT);
    EXPECT_EQ(disk.copyRights(like, folder / "nenhum"), -ENOENT);
    Account ana(5001, 5001, 5002);
    EXPECT_TRUE(ana.does([&] {
        const fs::path hers = made("dela");
        EXPECT_EQ(disk.copyRights(like, hers), -EPERM);
        // Nobody of her group gets by way of it what everybody hasn't.
        EXPECT_EQ(rightsOf(hers).st_mode & 0777U, 0644U);
        EXPECT_EQ(rightsOf(hers).st_uid, 5001U);
        EXPECT_EQ(disk.copyRights(hers, like), -EPERM) << "a file that isn't hers";
        int error = 0;
        const auto open = disk.open(like, Mode::read, error);
        EXPECT_EQ(open->setOwner(5001, 5001), -EPERM);
        EXPECT_EQ(open->setMode(0666), -EPERM);
    }));
}

std::atomic<int> leased = -1;

TEST_F(PosixDisks, WaitForAProgramThatIsAskedToLetGoOfAFile) {
    const fs::path file = made("arquivo", "abc");
    leased = ::open(file.c_str(), O_RDWR);
    struct sigaction letsGo {};
    struct sigaction before {};
    letsGo.sa_handler = [](int) { static_cast<void>(::fcntl(leased, F_SETLEASE, F_UNLCK)); };
    ASSERT_EQ(::sigaction(SIGIO, &letsGo, &before), 0);
    if (::fcntl(leased, F_SETLEASE, F_WRLCK) != 0)
        GTEST_SKIP() << "a file system without leases";
    int error = 0;
    const auto open = disk.open(file, Mode::read, error);
    ASSERT_NE(open, nullptr) << error;
    EXPECT_EQ(open->size(), 3);
    ::close(leased);
    ::sigaction(SIGIO, &before, nullptr);
}

TEST_F(PosixDisks, FilesThatAProgramHasOnlyForItsWorkGoWhenASignalEndsIt) {
    const fs::path target = folder / "automacao.mdb";
    const pid_t child = ::fork();
    if (child == 0) {
        const UnnamedFile part(target);
        std::ofstream(part.path()) << "meio";
        std::ofstream(folder / "pronto") << "inteiro";
        Unfinished::removeAll();
        endFork(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(partsOf(target).empty());
    EXPECT_TRUE(fs::exists(folder / "pronto"));
}

TEST_F(PosixDisks, WhatADeadProgramOfThisMachineHasLeftGoesWithTheNext) {
    const fs::path target = folder / "automacao.mdb";
    std::string machine(256, 0);
    ASSERT_EQ(::gethostname(machine.data(), machine.size()), 0);
    machine.resize(machine.find('\0'));
    std::erase_if(machine, [](unsigned char c) { return std::isalnum(c) == 0; });
    machine.resize(std::min<std::size_t>(machine.size(), 32));
    const pid_t dead = ::fork();
    if (dead == 0)
        endFork(0);
    ::waitpid(dead, nullptr, 0);
    const auto part = [&](const std::string& of) {
        return made(("automacao.parcial-" + of + "-7.mdb").c_str());
    };
    const fs::path gone = part(machine + "-" + std::to_string(dead));
    const std::vector<fs::path> kept = {
        part(machine + "-" + std::to_string(::getpid())), // runs
        part("x" + machine + "-" + std::to_string(dead)), // of another machine
        part(machine + "-0"),                             // nobody's number
        part(machine + "-" + std::to_string(dead) + "x"), // no number
    };
    {
        const UnnamedFile next(target);
        EXPECT_TRUE(UnnamedFile::isOne(next.path()));
    }
    EXPECT_FALSE(fs::exists(gone));
    for (const fs::path& path : kept)
        EXPECT_TRUE(fs::exists(path)) << path;
    EXPECT_EQ(partsOf(target).size(), kept.size());
    EXPECT_TRUE(partsOf(folder / "nenhuma" / "automacao.mdb").empty());
}

TEST(PosixErrors, AQuotaThatIsUsedUpIsAFullDisk) {
    MemoryDisk disk;
    disk.failFrom(1, true, EDQUOT);
    EXPECT_THAT(sentenceOf([&] { File::rename(disk, "/loja/a", "/loja/b"); }, Errc::full),
                testing::HasSubstr("libere espaço"));
    EXPECT_THAT(sentenceOf([&] { File::makeFolder(disk, "/loja/backup"); }, Errc::full),
                testing::HasSubstr("/loja/backup"));
}

} // namespace
