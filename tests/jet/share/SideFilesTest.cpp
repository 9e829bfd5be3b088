// What anybody may have put beside a database under the names of its lock file and journal: it is
// never waited for, written through, taken for ours or deleted, and the data can still be read.
#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/MemoryDisk.h"
#include "jet/Notes.h"
#include "jet/Sentences.h"
#include "jet/page/CommitPairs.h"
#include "jet/share/FileAlone.h"
#include "jet/share/LockFile.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

using namespace jet;
using namespace std::string_literals;
using testing::HasSubstr;
using Kind = MemoryDisk::Kind;

namespace fs = std::filesystem;

namespace {

std::string textOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void putText(const fs::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

/// A shop's file with a row, on the real disk.
class Beside : public testing::TestWithParam<Version> {
protected:
    Beside() { makeShop(path); }

    static void makeShop(const fs::path& path) {
        Database::create(path, GetParam());
        Database file(path);
        file.createTable(notes());
        note(file, "primeira");
    }
    /// Readable, not writable, and told why; what lies beside is as it was.
    void expectOnlyRead(const std::string& why) { expectOnlyRead(path, why); }
    static void expectOnlyRead(const fs::path& database, const std::string& why) {
        const std::string before = textOf(database);
        {
            Database file(database);
            EXPECT_THAT(file.readOnlyReason().value_or(""), HasSubstr(why));
            EXPECT_EQ(file.table("notas").rowCount(), 1);
            sentenceOf([&] { note(file, "segunda"); }, Errc::readOnly);
        }
        EXPECT_EQ(textOf(database), before);
    }
    /// Set aside, told, and the file is worked in as always.
    void expectSetAside(const std::string& why) {
        {
            Database file(path);
            EXPECT_THAT(file.notice().value_or(""),
                        testing::AllOf(HasSubstr(why), HasSubstr("-journal.old")));
            EXPECT_EQ(file.readOnlyReason(), std::nullopt);
            note(file, "segunda");
        }
        EXPECT_EQ(Database(path).table("notas").rowCount(), 2);
        EXPECT_EQ(fs::symlink_status(journal).type(), fs::file_type::not_found);
        EXPECT_NE(fs::symlink_status(journal.string() + ".old").type(), fs::file_type::not_found);
    }
    void saysThatItIsBeingWritten() const {
        File file(path, File::Mode::readWrite);
        CommitPairs::write(file, formatOf(GetParam()), 1, CommitPairs::kWriting);
    }

    TemporaryFolder folder;
    fs::path path = folder / "loja.mdb";
    fs::path lock = folder / "loja.ldb";
    fs::path journal = folder / "loja.mdb-journal";
};

INSTANTIATE_TEST_SUITE_P(, Beside, bothVersions(), versionName);

TEST_P(Beside, ADatabaseWithTheLockFilesNameIsNoLockFile) {
    const fs::path copy = folder / "copia.ldb";
    fs::copy_file(path, copy);
    expectOnlyRead(copy, "termine em .mdb");
    // And beside a database of that name it isn't touched either.
    fs::copy_file(path, folder / "copia.mdb");
    const std::string before = textOf(copy);
    expectOnlyRead(folder / "copia.mdb", "outra coisa");
    EXPECT_EQ(textOf(copy), before);
    EXPECT_THAT(sentenceOf([&] { const FileAlone alone(folder / "copia.mdb"); }, Errc::readOnly),
                HasSubstr("outra coisa"));
    EXPECT_EQ(textOf(copy), before);
}

TEST_P(Beside, ALinkIsNoLockFile) {
    const fs::path other = folder / "outro";
    for (const fs::path& target : {path, other, folder / "nada"}) {
        putText(other, std::string(64, '\0'));
        fs::create_symlink(target, lock);
        expectOnlyRead("é um atalho");
        EXPECT_EQ(fs::read_symlink(lock), target);
        EXPECT_FALSE(fs::exists(folder / "nada"));
        EXPECT_EQ(textOf(other), std::string(64, '\0'));
        fs::remove(lock);
    }
    for (const fs::path& target : {path, other}) {
        fs::create_hard_link(target, lock);
        expectOnlyRead("é outro nome de um arquivo");
        EXPECT_TRUE(fs::equivalent(lock, target));
        EXPECT_EQ(textOf(other), std::string(64, '\0'));
        fs::remove(lock);
    }
}

TEST_P(Beside, WhatIsNoRegularFileIsNoLockFile) {
    ASSERT_EQ(::mkfifo(lock.c_str(), 0666), 0);
    expectOnlyRead("não é um arquivo comum");
    EXPECT_TRUE(fs::is_fifo(lock));
    fs::remove(lock);
    fs::create_directory(lock);
    expectOnlyRead("não é um arquivo comum");
    EXPECT_TRUE(fs::is_directory(lock));
}

TEST_P(Beside, OnlySlotsOfNamesAreALockFile) {
    const std::string name = "CAIXA\0"s + std::string(26, ' ');
    const std::string slot = name + name;
    const std::string never(64, '\0'); // by a user of a lower number
    for (const std::string& no :
         {"notas do caixa"s, slot + "x", slot + std::string(64, 'x'), "\1"s + slot.substr(1),
          slot.substr(0, 31) + "x" + slot.substr(32), std::string(std::size_t{256} * 64, '\0')}) {
        putText(lock, no);
        expectOnlyRead("outra coisa");
        EXPECT_EQ(textOf(lock), no);
    }
    const std::string second = never + slot;
    for (const std::string& yes : {""s, slot, second, slot + second}) {
        putText(lock, yes);
        EXPECT_EQ(Database(path).readOnlyReason(), std::nullopt);
        EXPECT_FALSE(fs::exists(lock));
    }
}

TEST_P(Beside, ADatabaseThatIsNoRegularFileIsRefusedAtOnce) {
    const fs::path pipe = folder / "canal.mdb";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0666), 0);
    for (const fs::path& special : {pipe, fs::path("/dev/null"), folder.path()}) {
        Database::Options options;
        for (options.readOnly = false;; options.readOnly = true) {
            EXPECT_THAT(sentenceOf([&] { const Database file(special, options); }, Errc::io),
                        HasSubstr("não é um arquivo comum"));
            if (options.readOnly)
                break;
        }
    }
    EXPECT_FALSE(fs::exists(folder / "canal.ldb"));
}

TEST_P(Beside, ALinkIsNoJournal) {
    const fs::path other = folder / "outro";
    putText(other, "de outro programa");
    for (const fs::path& target : {other, path, folder / "nada"}) {
        fs::create_symlink(target, journal);
        expectSetAside("é um atalho");
        EXPECT_EQ(textOf(other), "de outro programa");
        EXPECT_FALSE(fs::exists(folder / "nada"));
        fs::remove_all(folder.path());
        fs::create_directory(folder.path());
        putText(other, "de outro programa");
        makeShop(path);
    }
    fs::create_hard_link(other, journal);
    expectSetAside("é outro nome de um arquivo");
    EXPECT_EQ(textOf(other), "de outro programa");
}

TEST_P(Beside, WhatIsNoRegularFileIsNoJournal) {
    ASSERT_EQ(::mkfifo(journal.c_str(), 0666), 0);
    expectSetAside("não é um arquivo comum");
    fs::remove(journal.string() + ".old");
    fs::create_directory(journal);
    const Report report = check(path);
    EXPECT_TRUE(report.sound());
    ASSERT_FALSE(report.findings.empty());
    EXPECT_THAT(report.findings.front().sentence, HasSubstr("não é um arquivo comum"));
    {
        Database file(path);
        EXPECT_THAT(file.notice().value_or(""), HasSubstr("não é um arquivo comum"));
    }
    EXPECT_TRUE(fs::is_directory(journal.string() + ".old"));
}

TEST_P(Beside, AFileThatWasNeverAJournalIsKept) {
    putText(journal, "diário do caixa");
    expectSetAside("não é o registro de uma gravação");
    EXPECT_EQ(textOf(journal.string() + ".old"), "diário do caixa");
}

TEST_P(Beside, AJournalThatCantBeReadCountsWhenSomebodyWasWriting) {
    fs::create_directory(journal);
    saysThatItIsBeingWritten();
    EXPECT_THAT(sentenceOf([&] { const Database file(path); }, Errc::readOnly),
                testing::AllOf(HasSubstr("Uma gravação foi interrompida"), HasSubstr("-journal")));
    EXPECT_TRUE(fs::is_directory(journal));
}

TEST_P(Beside, ALinkPutInTheJournalsPlaceWhileAtWorkIsNotWrittenThrough) {
    const fs::path other = folder / "outro";
    putText(other, "de outro programa");
    Database file(path);
    note(file, "segunda");
    fs::remove(journal);
    fs::create_symlink(other, journal);
    file.begin();
    file.table("notas").insert(Row{"terceira"s});
    EXPECT_THAT(sentenceOf([&] { file.commit(); }, Errc::io), HasSubstr("é um atalho"));
    EXPECT_EQ(textOf(other), "de outro programa");
    fs::remove(journal);
    file.commit(); // nothing is lost
    EXPECT_EQ(file.table("notas").rowCount(), 3);
}

/// The same on a disk in memory, where every call can be made to fail.
class BesideInMemory : public testing::TestWithParam<Version> {
protected:
    const DiskImage shop = diskOfNotes(GetParam());
    const std::string lock = "/loja/automacao.ldb";
    const std::string journal = kPath + "-journal"s;
};

INSTANTIATE_TEST_SUITE_P(, BesideInMemory, bothVersions(), versionName);

TEST_P(BesideInMemory, WhateverFailsWhatIsThereIsNeitherWrittenNorRemoved) {
    for (const std::string& name : {lock, journal})
        for (const Kind kind : {Kind::link, Kind::channel, Kind::folder}) {
            bool failed = true;
            for (std::uint64_t call = 1; failed; ++call) {
                MemoryDisk disk(shop);
                disk.put("/outro", Kind::file);
                disk.put(name, kind, "/outro");
                disk.failFrom(call, call % 2 == 0, EIO);
                try {
                    Database file(kPath, on(disk));
                    note(file, "segunda");
                } catch (const Error& error) {
                    EXPECT_STRNE(error.what(), "");
                }
                failed = disk.calls() >= call;
                disk.failNoMore();
                const DiskImage left = disk.image();
                EXPECT_TRUE(left.at("/outro").empty());
                EXPECT_TRUE(left.contains(name == lock ? lock : journal + ".old") ||
                            left.contains(name));
                for (const auto& operation : disk.record())
                    EXPECT_FALSE(operation.kind == MemoryDisk::Operation::Kind::remove &&
                                 operation.name == name && !left.contains(journal + ".old"));
                Database file(kPath, on(disk));
                EXPECT_GE(file.table("notas").rowCount(), 1);
                EXPECT_EQ(file.readOnlyReason().has_value(), name == lock);
            }
        }
}

TEST_P(BesideInMemory, AJournalThatCantBeMovedIsLeftAndTheFileOnlyRead) {
    MemoryDisk disk(shop);
    disk.put(journal, Kind::channel);
    disk.rightsOf(journal).owner = 100;
    disk.account = 101;
    disk.eachItsOwn = true;
    {
        Database file(kPath, on(disk));
        EXPECT_THAT(file.readOnlyReason().value_or(""),
                    testing::AllOf(HasSubstr("nem posto de lado"), HasSubstr("arquivo comum")));
        EXPECT_EQ(file.table("notas").rowCount(), 1);
        sentenceOf([&] { note(file, "segunda"); }, Errc::readOnly);
    }
    EXPECT_TRUE(disk.exists(journal));
}

TEST_P(BesideInMemory, AJournalThatOnlyReadersMeetIsIgnoredAndTold) {
    MemoryDisk disk(shop);
    disk.put(journal, Kind::folder);
    disk.failing = [](const std::string& name) { return name.ends_with(".mdb"); };
    Database file(kPath, on(disk));
    EXPECT_THAT(file.notice().value_or(""), HasSubstr("não é um arquivo comum"));
    EXPECT_EQ(file.table("notas").rowCount(), 1);
    EXPECT_TRUE(disk.exists(journal));
}

TEST_P(BesideInMemory, AFolderThatNeverStandsStillIsGivenUp) {
    MemoryDisk disk(shop);
    disk.onLock = [&](std::uint64_t byte) {
        if (byte == LockFile::kEntering)
            static_cast<void>(disk.remove(lock));
    };
    EXPECT_THAT(sentenceOf([&] { const Database file(kPath, on(disk)); }, Errc::io),
                HasSubstr("muda sem parar"));
    sentenceOf([&] { const FileAlone alone(kPath, disk); }, Errc::locked);
}

} // namespace
