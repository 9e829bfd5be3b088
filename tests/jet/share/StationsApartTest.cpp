// Stations that don't agree, because they don't meet in one lock file, or in one file: what each
// can still tell, and that none spoils the other's work.
#include "jet/Database.h"
#include "jet/MemoryDisk.h"
#include "jet/Sentences.h"
#include "jet/ShopWork.h"
#include "jet/Waiting.h"
#include "jet/page/CommitPairs.h"
#include "jet/share/FileAlone.h"
#include "jet/share/LockFile.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

using namespace jet;
using namespace std::string_literals;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kUsersAt = 0x10000000;

/// One table with one number.
void makeCounter(const fs::path& path, Version version, Disk& disk = Disk::system()) {
    Database::create(path, version, disk);
    Database file(path, on(disk));
    file.createTable({"contador", {{"valor", ColumnType::longInteger}}, {}})
        .insert(Row{std::int64_t{0}});
}

RowId only(Table& table) {
    RowCursor row = table.scan();
    EXPECT_TRUE(row.first());
    return row.id();
}

void set(Database& file, std::int64_t value) {
    Table& table = file.table("contador");
    const Assignment change[] = {
        {0, value}
    };
    table.update(only(table), change);
}

std::int64_t valueIn(Database& file) {
    Table& table = file.table("contador");
    return std::get<std::int64_t>((*table.read(only(table)))[0]);
}

/// A shop's file on the real disk.
class OneFile : public testing::TestWithParam<Version> {
protected:
    OneFile() { makeCounter(path, GetParam()); }
    void TearDown() override { fs::current_path(here); }

    [[nodiscard]] bool there(const char* name) const { return fs::exists(folder / name); }

    fs::path here = fs::current_path();
    TemporaryFolder folder;
    fs::path path = folder / "loja.mdb";
};

INSTANTIATE_TEST_SUITE_P(, OneFile, bothVersions(), versionName);

TEST_P(OneFile, ThroughASymbolicLinkHasTheSameLockFileAndJournal) {
    const fs::path link = folder / "atalho.mdb";
    fs::create_symlink(path, link);
    Database first(path);
    Database second(link);
    EXPECT_EQ(second.readOnlyReason(), std::nullopt);
    set(second, 5);
    second.flush();
    EXPECT_EQ(valueIn(first), 5);
    EXPECT_TRUE(File(folder / "loja.ldb", File::Mode::read).isHeld(kUsersAt + 2));
    EXPECT_TRUE(there("loja.mdb-journal"));
    EXPECT_FALSE(there("atalho.ldb"));
    EXPECT_FALSE(there("atalho.mdb-journal"));
    EXPECT_THAT(sentenceOf([&] { const FileAlone alone(link); }, Errc::locked),
                HasSubstr("aberto em outro programa"));
}

TEST_P(OneFile, OpenedByARelativeNameStaysTheSameWhenTheProgramGoesElsewhere) {
    const TemporaryFolder elsewhere;
    fs::current_path(folder.path());
    {
        Database file("loja.mdb");
        fs::current_path(elsewhere.path());
        set(file, 1);
        file.flush();
        EXPECT_TRUE(there("loja.mdb-journal"));
        EXPECT_EQ(file.readOnlyReason(), std::nullopt);
    }
    EXPECT_FALSE(there("loja.mdb-journal"));
    EXPECT_FALSE(there("loja.ldb"));
    EXPECT_TRUE(fs::is_empty(elsewhere.path()));
}

TEST_P(OneFile, UnderASecondNameIsOnlyReadByBoth) {
    const fs::path other = folder / "outra.mdb";
    fs::create_hard_link(path, other);
    Database first(path);
    set(first, 1);
    first.flush();
    {
        Database second(other);
        EXPECT_THAT(second.readOnlyReason().value_or(""), HasSubstr("com outro nome"));
        EXPECT_EQ(valueIn(second), 1);
        EXPECT_THAT(sentenceOf([&] { set(second, 2); }, Errc::locked), HasSubstr("com outro nome"));
        // Who was there before may find it out no sooner than when it writes.
        EXPECT_THAT(sentenceOf(
                        [&] {
                            set(first, 2);
                            first.flush();
                        },
                        Errc::locked),
                    HasSubstr("com outro nome"));
        first.discard();
        EXPECT_THAT(sentenceOf([&] { set(first, 2); }, Errc::locked), HasSubstr("com outro nome"))
            << "from then on";
        EXPECT_EQ(valueIn(second), 1);
    }
    set(first, 3);
    first.flush();
    EXPECT_EQ(valueIn(first), 3);
}

TEST_P(OneFile, WhoseLockFileSomebodyHasDeletedIsOnlyReadByThoseWhoDontMeet) {
    Database first(path);
    fs::remove(folder / "loja.ldb");
    first.begin();
    set(first, 1);
    {
        Database second(path);
        EXPECT_THAT(second.readOnlyReason().value_or(""), HasSubstr(".ldb foi apagado"));
        sentenceOf([&] { set(second, 2); }, Errc::locked);
        EXPECT_THAT(sentenceOf([&] { first.commit(); }, Errc::locked),
                    HasSubstr(".ldb foi apagado"));
        EXPECT_THAT(sentenceOf([&] { const FileAlone alone(path); }, Errc::locked),
                    HasSubstr("aberto em outro programa"));
    }
    sentenceOf([&] { const FileAlone alone(path); }, Errc::locked);
    first.commit();
    EXPECT_EQ(valueIn(first), 1);
}

TEST_P(OneFile, BeingWrittenByWhoseLockFileWasDeletedIsNotRecovered) {
    Database first(path);
    fs::remove(folder / "loja.ldb");
    // As in the middle of a transaction.
    File file(path, File::Mode::readWrite);
    CommitPairs::write(file, formatOf(GetParam()), 1, CommitPairs::kWriting);
    std::ofstream(folder / "loja.mdb-journal") << "JETUNDO2";
    sentenceOf([&] { const Database second(path); }, Errc::locked);
    EXPECT_TRUE(there("loja.mdb-journal"));
}

TEST_P(OneFile, ThatAnotherHasReplacedTakesNoMoreChanges) {
    const fs::path copy = folder / "copia.mdb";
    fs::copy_file(path, copy);
    Database first(path);
    set(first, 1); // to be written within half a second
    fs::rename(copy, path);
    EXPECT_THAT(sentenceOf([&] { first.flush(); }, Errc::conflict), HasSubstr("foi substituído"));
    EXPECT_THAT(first.readOnlyReason().value_or(""), HasSubstr("foi substituído"));
    sentenceOf([&] { set(first, 2); }, Errc::locked);
    Database second(path);
    set(second, 3);
    second.flush();
    EXPECT_EQ(valueIn(second), 3);
}

/// A shop's file on a disk in memory.
class Apart : public testing::TestWithParam<Version> {
protected:
    Apart() { makeCounter(kPath, GetParam(), disk); }
    void TearDown() override { setWaitHook({}); }

    void writePair(std::size_t user, std::uint16_t value) {
        File file(kPath, File::Mode::readWrite, disk);
        CommitPairs::write(file, formatOf(GetParam()), user, value);
    }
    void noLockFile() {
        disk.failing = [](const std::string& name) { return name.ends_with(".ldb"); };
    }

    MemoryDisk disk;
    const std::string lockFile = "/loja/automacao.ldb";
    const std::string journal = kPath + "-journal"s;
};

INSTANTIATE_TEST_SUITE_P(, Apart, bothVersions(), versionName);

TEST_P(Apart, WhoHasNoLockFileReadsAnewWhatAnotherWritesMeanwhile) {
    Database writer(kPath, on(disk));
    noLockFile();
    Database reader(kPath, on(disk));
    disk.failing = {};
    Table& table = reader.table("contador");
    const RowId id = only(table);
    writePair(1, 0x0150);
    int reads = 0;
    disk.onRead = [&](std::uint64_t offset) {
        if (offset == std::uint64_t{number(id.page)} * formatOf(GetParam()).pageSize &&
            reads++ == 0)
            writePair(1, 0x0151);
    };
    EXPECT_EQ(std::get<std::int64_t>((*table.read(id))[0]), 0);
    EXPECT_EQ(reads, 2);
    disk.onRead = {};
    // Somebody at work all the time: a sentence, and no guess at who it is.
    writePair(1, CommitPairs::kWriting);
    EXPECT_THAT(sentenceOf([&] { static_cast<void>(table.read(id)); }, Errc::locked),
                HasSubstr("está gravando no banco de dados. Espere"));
}

TEST_P(Apart, WhoHasNoLockFileWaitsForTheEndOfAnothersTransaction) {
    noLockFile();
    writePair(1, CommitPairs::kWriting);
    {
        File left(journal, File::Mode::createNew, disk);
        left.write(0, Bytes(600, std::byte{'J'}));
    }
    setWaitHook([&] {
        disk.failing = {};
        writePair(1, 0x0150);
        static_cast<void>(disk.remove(journal));
        noLockFile();
    });
    Database reader(kPath, on(disk));
    EXPECT_EQ(valueIn(reader), 0);
}

TEST_P(Apart, WhoHasNoLockFileReadsNoHalfTransaction) {
    noLockFile();
    writePair(1, CommitPairs::kWriting);
    setWaitHook([&] {
        if (disk.exists(journal))
            return;
        disk.failing = {};
        File left(journal, File::Mode::createNew, disk);
        left.write(0, Bytes(600, std::byte{'J'}));
        noLockFile();
    });
    EXPECT_THAT(sentenceOf([&] { const Database reader(kPath, on(disk)); }, Errc::locked),
                HasSubstr("foi interrompida"));
}

TEST_P(Apart, WhatAForeignProgramIsWritingWhenWeComeIsWaitedFor) {
    File lock(lockFile, File::Mode::createNew, disk);
    ASSERT_TRUE(lock.tryLock(Disk::Lock::exclusive, kUsersAt + 7));
    writePair(7, CommitPairs::kWriting);
    int waits = 0;
    setWaitHook([&] {
        if (++waits == 2)
            writePair(7, 0x0101);
    });
    Database file(kPath, on(disk));
    EXPECT_GE(waits, 2);
    EXPECT_TRUE(file.readOnlyReason());
    EXPECT_EQ(valueIn(file), 0);
    writePair(7, CommitPairs::kWriting);
    setWaitHook({});
    sentenceOf([&] { static_cast<void>(valueIn(file)); }, Errc::locked);
}

TEST_P(Apart, WhoTakesLongToWriteIsNoForeignProgram) {
    Database file(kPath, on(disk));
    LockFile other(kPath, disk);
    other.open();
    for (const std::uint64_t what : {LockFile::kWriting, LockFile::kReading, LockFile::kEntering})
        ASSERT_TRUE(other.tryLock(what));
    ASSERT_TRUE(other.closeGate());
    EXPECT_EQ(file.readOnlyReason(), std::nullopt);
}

TEST_P(Apart, ALockThatFailsLeavesNoWishBehind) {
    Database file(kPath, on(disk));
    Database other(kPath, on(disk));
    const File lock(lockFile, File::Mode::read, disk);
    const auto failAt = [&](std::uint64_t what) {
        disk.onLock = [what](std::uint64_t byte) {
            if (byte == what)
                throw Error(Errc::io, "A rede caiu.");
        };
    };
    set(file, 1);
    failAt(LockFile::kReading);
    sentenceOf([&] { file.flush(); }, Errc::io);
    EXPECT_FALSE(lock.isHeld(LockFile::kWantsReaders));
    disk.onLock = {};
    file.flush();
    file.begin();
    set(file, 2);
    int tries = 0;
    disk.onLock = [&](std::uint64_t byte) {
        if (byte == LockFile::kWriting && ++tries == 2)
            throw Error(Errc::io, "A rede caiu.");
    };
    sentenceOf([&] { set(other, 3); }, Errc::io);
    EXPECT_FALSE(lock.isHeld(LockFile::kWantsWriting));
    disk.onLock = {};
    file.commit();
    EXPECT_EQ(valueIn(other), 2);
}

} // namespace
