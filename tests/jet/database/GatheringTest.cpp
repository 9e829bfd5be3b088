// Transactions that are written together: each is done or undone on its own, and for the disk and
// the other stations they are one.
#include "jet/Check.h"
#include "jet/MemoryDisk.h"
#include "jet/ShopWork.h"
#include "jet/share/LockFile.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>

using namespace jet;

namespace {

constexpr int kMany = 20;

class GatheredTransactions : public testing::TestWithParam<Version> {
protected:
    GatheredTransactions() : disk(emptyShop(GetParam())) {
        file.emplace(kPath, on(disk));
        other.emplace(kPath, on(disk));
    }

    static void add(Database& where, std::int64_t client) {
        Row row(7);
        row[1] = client;
        row[2] = std::to_string(client);
        row[5] = std::string(200, 'a');
        where.table("Cheques").insert(row);
    }
    void addLater(std::int64_t client) {
        DatabaseTransaction transaction(*file);
        add(*file, client);
        transaction.commitLater();
    }
    static std::int64_t count(Database& where) { return where.table("Cheques").rowCount(); }
    [[nodiscard]] std::ptrdiff_t syncs() const {
        return std::ranges::count(disk.record(), MemoryDisk::Operation::Kind::sync,
                                  &MemoryDisk::Operation::kind);
    }
    void expectClean() {
        for (const Finding& finding : check(kPath, disk).findings)
            ADD_FAILURE() << finding.sentence;
    }

    MemoryDisk disk;
    std::optional<Database> file;
    std::optional<Database> other;
};

INSTANTIATE_TEST_SUITE_P(, GatheredTransactions, bothVersions(), versionName);

TEST_P(GatheredTransactions, CostTheDiskAsMuchAsOne) {
    const std::ptrdiff_t before = syncs();
    add(*file, 0);
    file->flush();
    const std::ptrdiff_t one = syncs() - before;
    for (int i = 1; i <= kMany; ++i)
        addLater(i);
    file->flush();
    // A machine so slow that half a second passes between writes them in a few parts.
    EXPECT_LT(syncs() - before - one, kMany * one / 2);
    EXPECT_EQ(count(*other), 1 + kMany);
    expectClean();
}

TEST_P(GatheredTransactions, ShowToOthersWhenTheyAreWritten) {
    addLater(1);
    EXPECT_EQ(count(*file), 1);
    EXPECT_EQ(count(*other), 0);
    EXPECT_FALSE(file->inTransaction());
    addLater(2);
    file->flush();
    EXPECT_EQ(count(*other), 2);
}

TEST_P(GatheredTransactions, AreWrittenAtOnceWhenAnotherStationWaits) {
    File lock("/loja/automacao.ldb", File::Mode::readWrite, disk);
    ASSERT_TRUE(lock.tryLock(Disk::Lock::shared, LockFile::kWantsWriting));
    addLater(1);
    EXPECT_EQ(count(*other), 1);
}

TEST_P(GatheredTransactions, AreWrittenByTheNextThatIsCommittedInFull) {
    addLater(1);
    {
        DatabaseTransaction transaction(*file);
        add(*file, 2);
        transaction.commit();
    }
    EXPECT_EQ(count(*other), 2);
    add(*other, 3); // nothing is left locked
    other->flush();
    EXPECT_EQ(count(*file), 3);
}

TEST_P(GatheredTransactions, StayWhenTheNextIsUndone) {
    addLater(1);
    const std::uint64_t before = contentOf(*file);
    {
        DatabaseTransaction undone(*file);
        Table& table = file->table("Cheques");
        RowCursor row = table.scan();
        ASSERT_TRUE(row.first());
        const Assignment longer[] = {
            {5, std::string(9000, 'b')}
        };
        table.update(row.id(), longer);
        Row again(7);
        again[0] = std::int64_t{1};
        EXPECT_THROW(table.insert(again), Error);
        add(*file, 2);
    }
    EXPECT_EQ(contentOf(*file), before);
    file->flush();
    EXPECT_EQ(contentOf(*other), before);
    expectClean();
}

TEST_P(GatheredTransactions, AreWrittenWithoutTheOneThatIsOpen) {
    addLater(1);
    file->begin();
    add(*file, 2);
    file->flush();
    file->flushIfDue();
    EXPECT_LT(count(*other), 2);
    file.reset();
    EXPECT_EQ(count(*other), 1);
    expectClean();
}

TEST_P(GatheredTransactions, AreKeptWhenTheDiskIsFullAndWrittenWhenItIsNot) {
    addLater(1);
    disk.failWrites = std::string(kPath) + "-journal";
    EXPECT_THROW(file->flush(), Error);
    EXPECT_EQ(count(*file), 1);
    disk.failWrites.clear();
    file->flush();
    EXPECT_EQ(count(*other), 1);
}

// Each later flush tries again, and nobody waits for the one that failed.
TEST_P(GatheredTransactions, ThatCouldNotBeWrittenKeepNobodyFromWriting) {
    addLater(1);
    disk.failWrites = std::string(kPath) + "-journal";
    EXPECT_THROW(file->flush(), Error);
    EXPECT_EQ(file->tally().gathered, 1U);
    {
        File lock("/loja/automacao.ldb", File::Mode::readWrite, disk);
        EXPECT_FALSE(lock.isHeld(LockFile::kWriting));
    }
    addLater(2);
    EXPECT_EQ(count(*file), 2);
    disk.failWrites.clear();
    file->flush();
    EXPECT_EQ(count(*other), 2);
    EXPECT_EQ(file->tally().written, 2U);
    EXPECT_EQ(file->tally().gathered, 0U);
    expectClean();
}

TEST_P(GatheredTransactions, ThatCouldNotBeWrittenAreUndoneIfAnotherWritesFirst) {
    const auto fail = [&](std::int64_t client) {
        addLater(client);
        disk.failWrites = std::string(kPath) + "-journal";
        EXPECT_THROW(file->flush(), Error);
        disk.failWrites.clear();
        add(*other, 100 + client);
        other->flush();
    };
    const auto conflict = [](const std::function<void()>& work) {
        try {
            work();
        } catch (const Error& error) {
            return error.code() == Errc::conflict;
        }
        return false;
    };
    fail(1);
    EXPECT_TRUE(conflict([&] { static_cast<void>(contentOf(*file)); })) << "reading";
    EXPECT_EQ(contentOf(*file), contentOf(*other));
    fail(2);
    EXPECT_TRUE(conflict([&] { file->flush(); })) << "writing";
    EXPECT_EQ(contentOf(*file), contentOf(*other));
    fail(3);
    EXPECT_TRUE(conflict([&] { addLater(4); })) << "changing more";
    EXPECT_EQ(contentOf(*file), contentOf(*other));
    fail(5);
    file->begin();
    EXPECT_TRUE(conflict([&] { file->claim(); })) << "in a transaction";
    add(*file, 6); // which goes on
    file->commit();
    EXPECT_EQ(contentOf(*file), contentOf(*other));
    EXPECT_EQ(count(*other), 5);
    EXPECT_EQ(file->tally().written, 1U);
    expectClean();
}

TEST_P(GatheredTransactions, AreCountedUntilTheyAreWritten) {
    addLater(1);
    add(*file, 2);
    {
        DatabaseTransaction undone(*file);
        add(*file, 3);
    }
    EXPECT_EQ(file->tally().gathered + file->tally().written, 2U);
    file->flush();
    EXPECT_EQ(file->tally().written, 2U);
    {
        DatabaseTransaction both(*file);
        add(*file, 4);
        add(*file, 5);
        both.commit();
    }
    EXPECT_EQ(file->tally().written, 4U);
}

TEST_P(GatheredTransactions, ThatChangeNothingHoldNobodyUp) {
    {
        DatabaseTransaction nothing(*file);
        nothing.commitLater();
    }
    {
        DatabaseTransaction claimed(*file);
        file->claim();
        claimed.commitLater();
    }
    add(*other, 1);
    other->flush();
    EXPECT_EQ(count(*file), 1);
}

TEST_P(GatheredTransactions, ATableMadeInOneIsThereForAllAtOnce) {
    addLater(1);
    {
        DatabaseTransaction transaction(*file);
        file->createTable({"nova", {{"codigo", ColumnType::longInteger}}, {}});
        transaction.commitLater();
    }
    EXPECT_TRUE(other->hasTable("nova"));
    EXPECT_EQ(count(*other), 1);
}

TEST_P(GatheredTransactions, EndAsIfEachHadBeenWrittenByItself) {
    std::mt19937 random(3);
    const auto change = [&](Table& table) {
        RowCursor row = table.scan();
        if (random() % 3 == 0 && row.first()) {
            table.erase(row.id());
        } else if (random() % 3 == 0 && row.last()) {
            const Assignment longer[] = {
                {5, std::string(random() % 5000, 'c')}
            };
            table.update(row.id(), longer);
        } else {
            add(*file, static_cast<std::int64_t>(random() % 1000));
        }
    };
    for (int i = 0; i < 150; ++i) {
        const std::uint64_t before = contentOf(*file);
        DatabaseTransaction transaction(*file);
        for (unsigned changes = random() % 4; changes > 0; --changes)
            change(file->table("Cheques"));
        const std::uint64_t after = contentOf(*file);
        if (random() % 3 == 0) {
            file->rollback();
            ASSERT_EQ(contentOf(*file), before);
        } else {
            transaction.commitLater();
            ASSERT_EQ(contentOf(*file), after);
        }
        if (random() % 10 == 0) {
            file->flush();
            ASSERT_EQ(contentOf(*other), contentOf(*file));
        }
    }
    file->flush();
    EXPECT_EQ(contentOf(*other), contentOf(*file));
    expectClean();
}

} // namespace
