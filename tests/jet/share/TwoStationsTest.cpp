// Two stations in one process: what one saves the other reads, and who came to harm is noticed.
#include "jet/MemoryDisk.h"
#include "jet/Sentences.h"
#include "jet/page/CommitPairs.h"
#include "jet/share/CounterFile.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

using namespace jet;
using namespace std::string_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

/// Two stations in one process, on a disk in memory.
class TwoStations : public testing::TestWithParam<Version>, protected CounterFile {
protected:
    TwoStations() { makeShop(kPath, GetParam(), disk); }

    void writePair(std::size_t user, std::uint16_t value) {
        File file(kPath, File::Mode::readWrite, disk);
        CommitPairs::write(file, formatOf(GetParam()), user, value);
    }

    MemoryDisk disk;
};

INSTANTIATE_TEST_SUITE_P(, TwoStations, bothVersions(), versionName);

TEST_P(TwoStations, WhatOneSavesTheOtherReads) {
    Database first(kPath, on(disk));
    Database second(kPath, on(disk));
    Table& here = first.table("contador");
    Table& there = second.table("contador");
    const RowId id = firstRow(here);
    EXPECT_EQ(valueOf(there, id), 0);
    const std::uint64_t generation = second.generation();
    set(here, id, 4);
    EXPECT_EQ(valueOf(there, id), 0);
    first.flush();
    EXPECT_EQ(valueOf(there, id), 4);
    EXPECT_GT(second.generation(), generation);
}

TEST_P(TwoStations, ACursorGoesOnWhereItWasWhenTheOtherHasWritten) {
    Database first(kPath, on(disk));
    Database second(kPath, on(disk));
    Table& here = first.table("contas");
    Table& there = second.table("contas");
    IndexTree::Cursor entry = there.walk(0);
    RowCursor row = there.scan();
    ASSERT_TRUE(entry.first() && row.first() && row.next());
    std::vector<RowId> ids;
    RowCursor all = here.scan();
    for (bool next = all.first(); next; next = all.next())
        ids.push_back(all.id());
    for (std::size_t i = 0; i < 20; ++i)
        here.erase(ids[i]);
    for (int i = 0; i < 300; ++i)
        here.insert(rowOf(i));
    first.flush();
    int left = 0;
    while (entry.next())
        ++left;
    EXPECT_EQ(left, kAccounts - 20 + 300);
    std::set<RowId> seen;
    while (row.next())
        EXPECT_TRUE(seen.insert(row.id()).second);
    EXPECT_GE(seen.size(), static_cast<std::size_t>(kAccounts - 20));
}

TEST_P(TwoStations, ATableMadeByOneIsThereForTheOther) {
    Database first(kPath, on(disk));
    Database second(kPath, on(disk));
    EXPECT_FALSE(second.hasTable("nova"));
    first.createTable(numbers("nova")).insert(rowOf(3));
    first.flush();
    EXPECT_TRUE(second.hasTable("nova"));
    EXPECT_EQ(second.table("nova").rowCount(), 1);
}

TEST_P(TwoStations, TheSecondOfTwoEditorsIsRefused) {
    Database first(kPath, on(disk));
    Database second(kPath, on(disk));
    Table& here = first.table("contador");
    Table& there = second.table("contador");
    const RowId id = firstRow(here);
    const auto seenHere = here.rowVersion(id);
    const auto seenThere = there.rowVersion(id);
    set(here, id, 10, seenHere);
    first.flush();
    EXPECT_THAT(sentenceOf([&] { set(there, id, 20, seenThere); }, Errc::conflict),
                HasSubstr("alterado ou excluído por outra estação"));
    EXPECT_THAT(sentenceOf([&] { there.erase(id, seenThere); }, Errc::conflict),
                HasSubstr("alterado ou excluído por outra estação"));
    EXPECT_EQ(valueOf(there, id), 10);
    set(there, id, 20, there.rowVersion(id));
    second.flush();
    EXPECT_EQ(valueOf(here, id), 20);
    here.erase(id);
    first.flush();
    EXPECT_THAT(sentenceOf([&] { set(there, id, 30); }, Errc::conflict), HasSubstr("excluído"));
}

TEST_P(TwoStations, ATransactionIsUnseenUntilItsEndAndGoneWhenRolledBack) {
    Database first(kPath, on(disk));
    Database second(kPath, on(disk));
    Table& here = first.table("contador");
    Table& there = second.table("contador");
    const RowId id = firstRow(here);
    first.begin();
    set(here, id, 1);
    EXPECT_EQ(valueOf(there, id), 0);
    first.rollback();
    set(there, id, 2);
    second.flush();
    first.begin();
    EXPECT_EQ(valueOf(here, id), 2);
    set(here, id, 3);
    first.commit();
    EXPECT_EQ(valueOf(there, id), 3);
}

TEST_P(TwoStations, ARefusedChangeKeepsNobodyWaiting) {
    Database first(kPath, on(disk));
    Database second(kPath, on(disk));
    Row twice = rowOf(1);
    twice[0] = std::int64_t{1};
    sentenceOf([&] { first.table("contas").insert(twice); }, Errc::duplicate);
    second.table("contas").insert(rowOf(2));
    second.flush();
    EXPECT_EQ(first.table("contas").rowCount(), kAccounts + 1);
}

TEST_P(TwoStations, AUserWhoDiedWritingLeavesAFileThatIsOnlyRead) {
    for (const std::uint16_t value : {CommitPairs::kWriting, CommitPairs::kDamaged}) {
        writePair(5, value);
        Database file(kPath, on(disk));
        ASSERT_TRUE(file.readOnlyReason());
        EXPECT_THAT(
            *file.readOnlyReason(),
            testing::AllOf(HasSubstr("danificado por outro programa"), HasSubstr("usuário 5")));
        EXPECT_EQ(file.table("contas").rowCount(), kAccounts);
        EXPECT_EQ(sentenceOf([&] { file.begin(); }, Errc::readOnly), *file.readOnlyReason());
        EXPECT_FALSE(check(kPath, disk).sound());
    }
    writePair(5, 0x0107);
    EXPECT_EQ(Database(kPath, on(disk)).readOnlyReason(), std::nullopt);
}

TEST_P(TwoStations, AUserWhoDiesWritingWhileWeAreThereIsNoticed) {
    Database file(kPath, on(disk));
    EXPECT_EQ(file.table("contas").rowCount(), kAccounts);
    writePair(9, CommitPairs::kWriting);
    EXPECT_EQ(file.table("contas").rowCount(), kAccounts);
    ASSERT_TRUE(file.readOnlyReason());
    sentenceOf([&] { file.table("contas").insert(rowOf(1)); }, Errc::readOnly);
}

TEST_P(TwoStations, ALockFileRemovedWhileEnteringIsMadeAnew) {
    const std::string lockFile = "/loja/automacao.ldb";
    int removals = 0;
    disk.onLock = [&](std::uint64_t byte) {
        if (byte == 0x70001002 && removals++ == 0)
            static_cast<void>(disk.remove(lockFile));
    };
    Database file(kPath, on(disk));
    disk.onLock = {};
    EXPECT_GE(removals, 2);
    const File lock(lockFile, File::Mode::read, disk);
    EXPECT_TRUE(lock.isHeld(0x10000001));
    EXPECT_TRUE(lock.isHeld(0x70000001));
}

TEST_P(TwoStations, EachHasAUserNumberOfItsOwn) {
    Database first(kPath, on(disk));
    Database second(kPath, on(disk));
    const File lock("/loja/automacao.ldb", File::Mode::read, disk);
    EXPECT_TRUE(lock.isHeld(0x10000001) && lock.isHeld(0x10000002));
    EXPECT_FALSE(lock.isHeld(0x10000003));
    EXPECT_EQ(first.readOnlyReason(), std::nullopt);
}

TEST_P(TwoStations, AFileWithoutAUsableLockFileIsOnlyRead) {
    disk.failing = [](const std::string& name) { return name.ends_with(".ldb"); };
    Database file(kPath, on(disk));
    EXPECT_THAT(file.readOnlyReason().value_or(""), HasSubstr("avisa as outras estações"));
    EXPECT_EQ(file.table("contas").rowCount(), kAccounts);
    sentenceOf([&] { file.table("contas").insert(rowOf(1)); }, Errc::readOnly);
}

TEST_P(TwoStations, WhatAForeignProgramWritesDuringAReadingIsReadAnew) {
    Database file(kPath, on(disk));
    Table& table = file.table("contador");
    const RowId id = firstRow(table);
    // A foreign program is there, and writes just when a page is read.
    File lock("/loja/automacao.ldb", File::Mode::readWrite, disk);
    ASSERT_TRUE(lock.tryLock(Disk::Lock::exclusive, 0x10000007));
    ASSERT_TRUE(file.readOnlyReason());
    writePair(7, 0x0101);
    int reads = 0;
    disk.onRead = [&](std::uint64_t offset) {
        if (offset == std::uint64_t{number(id.page)} * formatOf(GetParam()).pageSize &&
            reads++ == 0)
            writePair(7, 0x0102);
    };
    EXPECT_EQ(valueOf(table, id), 0);
    EXPECT_EQ(reads, 2);
}

} // namespace
