// The parts of sharing, each for itself: who is there and why nobody may write, what protects a
// section, who has the turn to write.
#include "jet/MemoryDisk.h"
#include "jet/Sentences.h"
#include "jet/ShopWork.h"
#include "jet/Waiting.h"
#include "jet/page/Header.h"
#include "jet/share/Journal.h"
#include "jet/share/ReadingTurn.h"
#include "jet/share/WritingTurn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace jet;
using testing::HasSubstr;

namespace {

/// One station in a shop's file, and the lock file as the others see it.
class ShareParts : public testing::Test {
protected:
    ShareParts() : file(kPath, File::Mode::readWrite, disk) {
        presence.open();
        presence.takeUser();
        presence.lookAround(Presence::Look::around);
        snapshot.start(snapshot.inFile());
    }
    void TearDown() override { setWaitHook({}); }

    /// Takes a byte of the lock file as another station does, until it goes.
    [[nodiscard]] File other(std::uint64_t byte, Disk::Lock kind = Disk::Lock::exclusive) {
        File lock("/loja/automacao.ldb", File::Mode::readWrite, disk);
        EXPECT_TRUE(lock.tryLock(kind, byte));
        return lock;
    }
    [[nodiscard]] ChangedPages nothing() const {
        const auto pages = static_cast<std::uint32_t>(file.size() / format.pageSize);
        return {pages, pages, {}, {}};
    }
    [[nodiscard]] bool isHeld(std::uint64_t byte) {
        return File("/loja/automacao.ldb", File::Mode::read, disk).isHeld(byte);
    }
    void writePair(std::size_t user, std::uint16_t value) {
        File database(kPath, File::Mode::readWrite, disk);
        CommitPairs::write(database, format, user, value);
    }
    void replaceFile() {
        File copy("/loja/copia.mdb", File::Mode::createNew, disk);
        copy.write(0, disk.image().at(kPath));
        File::rename(disk, "/loja/copia.mdb", kPath);
    }
    [[nodiscard]] std::optional<Hindrance::Why> why(Presence::Look look) {
        const auto hindrance = presence.hindrance(look);
        return hindrance ? std::optional(hindrance->why) : std::nullopt;
    }

    /// Does it again and again, until that costs a call of the system.
    void untilAsked(const std::function<void()>& work) const {
        for (const std::uint64_t before = disk.calls(); disk.calls() == before;)
            work();
    }

    MemoryDisk disk{emptyShop(Version::jet4)};
    const Format& format = formatOf(Version::jet4);
    File file;
    Presence presence{file, format};
    Snapshot snapshot{presence, [this](const auto&) {
                          if (++forgotten == failForgetting)
                              throw Error(Errc::io, "the disk");
                      }};
    ReadingTurn reading{presence, snapshot};
    int forgotten = 0;
    int failForgetting = 0; ///< for the how-manieth time
};

// ---- whether anybody may write ----------------------------------------------------------------

TEST_F(ShareParts, KnowAForeignProgramAsLongAsItIsThere) {
    using enum Presence::Look;
    EXPECT_EQ(why(around), std::nullopt);
    {
        const File foreign = other(0x10000007);
        EXPECT_EQ(why(known), std::nullopt) << "it wasn't looked for";
        EXPECT_EQ(why(around), Hindrance::Why::foreign);
        EXPECT_EQ(why(entranceClosed), Hindrance::Why::foreign);
        EXPECT_TRUE(presence.isCareful());
    }
    EXPECT_EQ(why(around), std::nullopt);
    EXPECT_FALSE(presence.isCareful());
}

// A copy of this program that is just entering has its number before its mark.
TEST_F(ShareParts, TakeNobodyForForeignWhoIsJustEntering) {
    std::optional<File> entering = other(LockFile::kEntering);
    File newcomer = other(0x10000007);
    setWaitHook([&] {
        static_cast<void>(newcomer.tryLock(Disk::Lock::exclusive, 0x70000007));
        entering.reset();
    });
    EXPECT_EQ(why(Presence::Look::around), std::nullopt);
    EXPECT_FALSE(presence.isCareful());
}

// Whoever holds O then, its number alone proves nothing yet: only that it stays without a mark.
TEST_F(ShareParts, LookAgainWhereSomebodyTakesLongToEnter) {
    const File entering = other(LockFile::kEntering);
    File newcomer = other(0x10000007);
    EXPECT_EQ(why(Presence::Look::around), Hindrance::Why::foreign);
    setWaitHook([&] { static_cast<void>(newcomer.tryLock(Disk::Lock::exclusive, 0x70000007)); });
    EXPECT_EQ(why(Presence::Look::around), std::nullopt);
}

TEST_F(ShareParts, LookAgainOnlyWhereItCouldHelp) {
    int looks = 0;
    disk.onLock = [&](std::uint64_t byte) { looks += byte == LockFile::kEntering ? 1 : 0; };
    EXPECT_EQ(presence.foreigner(Presence::Look::around), std::nullopt);
    const File foreign = other(0x10000007);
    EXPECT_EQ(presence.foreigner(Presence::Look::entranceClosed), std::optional(7U));
    EXPECT_EQ(looks, 0);
    EXPECT_EQ(presence.foreigner(Presence::Look::around), std::optional(7U));
    EXPECT_GT(looks, 0);
    disk.onLock = {};
}

TEST_F(ShareParts, LookForForeignProgramsTwiceASecond) {
    using namespace std::chrono_literals;
    const auto before = std::chrono::steady_clock::now();
    presence.lookAround(Presence::Look::around);
    const auto after = std::chrono::steady_clock::now();
    EXPECT_FALSE(presence.isLookDue(before + 499ms));
    EXPECT_TRUE(presence.isLookDue(after + 500ms));
}

TEST_F(ShareParts, KnowTheFileThatAnotherHasReplaced) {
    replaceFile();
    EXPECT_EQ(why(Presence::Look::around), Hindrance::Why::replaced);
}

TEST_F(ShareParts, KnowWhoHasComeByAnotherName) {
    File stranger(kPath, File::Mode::readWrite, disk);
    ASSERT_TRUE(stranger.tryLock(Disk::Lock::shared, 0x80000000 + 9));
    EXPECT_EQ(why(Presence::Look::around), Hindrance::Why::otherName);
    EXPECT_TRUE(presence.isCareful());
}

TEST_F(ShareParts, RememberWhatLastsWithoutLooking) {
    writePair(5, CommitPairs::kDamaged);
    presence.noteSuspect(snapshot.inFile());
    EXPECT_EQ(why(Presence::Look::known), Hindrance::Why::suspect);
    EXPECT_THAT(presence.hindrance(Presence::Look::known)->sentence, HasSubstr("usuário 5"));
    EXPECT_TRUE(presence.isSuspect() && presence.isCareful());
}

TEST(Hindrances, ByOthersAreErrorsThatMayPass) {
    using enum Hindrance::Why;
    for (const auto passing : {foreign, otherName, replaced})
        EXPECT_EQ((Hindrance{passing, ""}.error().code()), Errc::locked);
    for (const auto lasting :
         {forReading, noLockFile, suspect, journal, textOrder, unknownForm, damage, rules})
        EXPECT_EQ((Hindrance{lasting, "porque"}.error().code()), Errc::readOnly);
    EXPECT_STREQ((Hindrance{rules, "porque"}.error().what()), "porque");
}

// ---- reading ----------------------------------------------------------------------------------

TEST_F(ShareParts, ProtectASectionByTheLockToTheEndOfTheOutermost) {
    reading.open();
    EXPECT_TRUE(isHeld(LockFile::kReading));
    reading.nest();
    reading.close();
    EXPECT_TRUE(reading.isOpen());
    EXPECT_TRUE(isHeld(LockFile::kReading));
    reading.close();
    EXPECT_FALSE(reading.isOpen());
    EXPECT_FALSE(isHeld(LockFile::kReading));
}

TEST_F(ShareParts, LetAWriterGoFirstWhoWaitsForTheReaders) {
    std::optional<File> writer = other(LockFile::kWantsReaders);
    bool waited = false;
    setWaitHook([&] {
        EXPECT_FALSE(isHeld(LockFile::kReading));
        waited = true;
        writer.reset();
    });
    reading.open();
    EXPECT_TRUE(waited);
    EXPECT_TRUE(isHeld(LockFile::kReading));
    reading.close();
}

TEST_F(ShareParts, ProtectASectionByTheSnapshotUntilTheFileIsRead) {
    reading.openOnSnapshot();
    EXPECT_TRUE(reading.isOpen());
    EXPECT_FALSE(isHeld(LockFile::kReading));
    reading.protect();
    EXPECT_TRUE(isHeld(LockFile::kReading));
    reading.protect(); // once is enough
    reading.close();
    EXPECT_FALSE(isHeld(LockFile::kReading));
}

TEST_F(ShareParts, TellASectionThatAnotherHasWrittenMeanwhile) {
    reading.openOnSnapshot();
    writePair(7, 0x0150);
    sentenceOf([&] { reading.protect(); }, Errc::locked);
    EXPECT_TRUE(reading.isDisturbed());
    reading.close();
    EXPECT_FALSE(isHeld(LockFile::kReading));
    EXPECT_TRUE(reading.isDisturbed()) << "until the next";
    reading.open();
    EXPECT_FALSE(reading.isDisturbed());
    reading.abandon();
}

TEST_F(ShareParts, BreatheOnlyWhereTheSectionCanBeDoneAgain) {
    std::optional<File> writer = other(LockFile::kWantsReaders);
    setWaitHook([&] { writer.reset(); });
    reading.open();
    writer = other(LockFile::kWantsReaders);
    reading.breathe();
    EXPECT_TRUE(isHeld(LockFile::kReading)) << "it can't";
    reading.makeRepeatable();
    reading.nest();
    reading.breathe();
    EXPECT_TRUE(isHeld(LockFile::kReading)) << "the outer one may rely on it";
    reading.close();
    presence.beCareful();
    reading.breathe();
    EXPECT_TRUE(isHeld(LockFile::kReading)) << "somebody may write without a lock";
    presence.lookAround(Presence::Look::around);
    untilAsked([&] { reading.breathe(); });
    EXPECT_FALSE(isHeld(LockFile::kReading));
    reading.protect();
    EXPECT_TRUE(isHeld(LockFile::kReading));
    EXPECT_FALSE(writer) << "it was waited for";
    reading.close();
}

TEST_F(ShareParts, KeepTheLockWhereNobodyWaitsForIt) {
    reading.open();
    reading.makeRepeatable();
    untilAsked([&] { reading.breathe(); });
    EXPECT_TRUE(isHeld(LockFile::kReading));
    EXPECT_FALSE(reading.isAwaited());
    reading.close();
}

TEST_F(ShareParts, ASectionThatGaveItsLockAwayEndsWithoutIt) {
    reading.open();
    reading.release();
    EXPECT_TRUE(reading.isOpen());
    EXPECT_FALSE(isHeld(LockFile::kReading));
    EXPECT_TRUE(reading.tryLock());
    EXPECT_TRUE(isHeld(LockFile::kReading));
    reading.abandon();
    EXPECT_FALSE(reading.isOpen());
    EXPECT_FALSE(isHeld(LockFile::kReading));
}

// ---- what is known of the file ----------------------------------------------------------------

TEST_F(ShareParts, ForgetWhatOthersHaveChangedAndKnowWhoItWas) {
    const auto now = std::chrono::steady_clock::now();
    EXPECT_TRUE(snapshot.confirm(snapshot.inFile(), now));
    EXPECT_TRUE(snapshot.holds(now));
    const std::uint64_t before = snapshot.changesByOthers();
    writePair(7, 0x0150);
    EXPECT_FALSE(snapshot.holds(now));
    EXPECT_FALSE(snapshot.confirm(snapshot.inFile(), now));
    snapshot.replace(snapshot.inFile());
    EXPECT_EQ(forgotten, 1);
    EXPECT_TRUE(snapshot.isCurrent());
    EXPECT_EQ(snapshot.changesByOthers(), before + 1);
    EXPECT_THAT(snapshot.writersSince(before), testing::SizeIs(1));
    EXPECT_THAT(snapshot.writersSince(before + 1), testing::IsEmpty());
}

TEST_F(ShareParts, TryAgainToForgetWhereThatFails) {
    writePair(7, 0x0150);
    failForgetting = 1;
    sentenceOf([&] { snapshot.replace(snapshot.inFile()); }, Errc::io);
    EXPECT_FALSE(snapshot.isCurrent());
    EXPECT_THAT(snapshot.writersSince(0), testing::IsEmpty());
    snapshot.replace(snapshot.inFile());
    EXPECT_EQ(forgotten, 2);
    EXPECT_TRUE(snapshot.isCurrent());
    EXPECT_THAT(snapshot.writersSince(0), testing::SizeIs(1));
}

TEST_F(ShareParts, TellWhichPagesTheLastTransactionChangedIfItIsAllThatWasWritten) {
    const auto told = [&](const CommitPairs& before, const CommitPairs& after,
                          std::uint32_t most = 1000) {
        return Journal::changesBetween(before, after, kPath, format, disk, most).has_value();
    };
    Database station(kPath, on(disk));
    const CommitPairs before = snapshot.inFile();
    ShopWork(3).step(station, 4); // cheques come in
    const CommitPairs after = snapshot.inFile();
    EXPECT_TRUE(told(before, after));
    EXPECT_FALSE(told(before, after, 1)) << "more than are asked for";
    EXPECT_FALSE(told(after, after)) << "none";
    CommitPairs more = after;
    more.set(7, CommitPairs::after(more[7]));
    EXPECT_FALSE(told(before, more)) << "a program without a journal wrote behind it";
}

TEST_F(ShareParts, RelyOnWhatWasHeardAsLongAsTheyAreTold) {
    const auto now = std::chrono::steady_clock::now();
    snapshot.setHold(std::chrono::hours(1));
    EXPECT_TRUE(snapshot.confirm(snapshot.inFile(), now));
    writePair(7, 0x0150);
    EXPECT_TRUE(snapshot.holds(now + std::chrono::minutes(59)));
    EXPECT_FALSE(snapshot.holds(now + std::chrono::minutes(61)));
}

TEST_F(ShareParts, TrustNothingAfterSomebodyWroteUntold) {
    const auto now = std::chrono::steady_clock::now();
    snapshot.setHold(std::chrono::hours(1));
    EXPECT_TRUE(snapshot.confirm(snapshot.inFile(), now));
    sentenceOf([&] { snapshot.refuse(); }, Errc::conflict);
    EXPECT_FALSE(snapshot.holds(now));
    EXPECT_FALSE(snapshot.confirm(snapshot.inFile(), now));
    snapshot.replace(snapshot.inFile());
    EXPECT_EQ(forgotten, 1);
    EXPECT_TRUE(snapshot.holds(now));
}

// ---- writing ----------------------------------------------------------------------------------

class TheTurnToWrite : public ShareParts {
protected:
    TheTurnToWrite() { writing.allow(); }

    WritingTurn writing{presence, snapshot};
};

TEST_F(TheTurnToWrite, IsHadByOneAtATime) {
    EXPECT_FALSE(writing.isHeld() || writing.isAwaited() || writing.isTakenByOther());
    ASSERT_TRUE(writing.take());
    EXPECT_TRUE(writing.isHeld() && isHeld(LockFile::kWriting));
    writing.giveBack();
    EXPECT_FALSE(writing.isHeld() || isHeld(LockFile::kWriting));
    const File another = other(LockFile::kWriting);
    EXPECT_TRUE(writing.isTakenByOther());
}

TEST_F(TheTurnToWrite, IsAnnouncedByWhoWaitsForIt) {
    std::optional<File> another = other(LockFile::kWriting);
    bool announced = false;
    setWaitHook([&] {
        announced = isHeld(LockFile::kWantsWriting);
        another.reset();
    });
    EXPECT_TRUE(writing.take());
    EXPECT_TRUE(announced);
    EXPECT_FALSE(isHeld(LockFile::kWantsWriting));
}

TEST_F(TheTurnToWrite, IsLeftToWhoWaitedWhenItWasGivenBack) {
    ASSERT_TRUE(writing.take());
    std::optional<File> another = other(LockFile::kWantsWriting, Disk::Lock::shared);
    EXPECT_TRUE(writing.isAwaited());
    writing.giveBack();
    bool waited = false;
    setWaitHook([&] {
        EXPECT_FALSE(writing.isHeld());
        waited = true;
        another.reset();
    });
    EXPECT_TRUE(writing.take());
    EXPECT_TRUE(waited);
}

TEST_F(TheTurnToWrite, CommitsAndCountsItself) {
    const std::uint16_t before = snapshot.pairs()[1];
    ASSERT_TRUE(writing.take());
    writing.commit(nothing());
    EXPECT_EQ(snapshot.inFile()[1], before + 1);
    EXPECT_TRUE(snapshot.isCurrent());
    for (const std::uint64_t byte : {LockFile::kReading, LockFile::kEntering})
        EXPECT_FALSE(isHeld(byte));
}

TEST_F(TheTurnToWrite, CommitsWithTheFileForItself) {
    ASSERT_TRUE(writing.take());
    std::optional<File> reader = other(LockFile::kReading, Disk::Lock::shared);
    bool announced = false;
    setWaitHook([&] {
        announced = isHeld(LockFile::kWantsReaders);
        reader.reset();
    });
    Bytes page(format.pageSize);
    file.read(0, page);
    ChangedPages changed = nothing();
    changed.pages.push_back({PageNo{0}, page});
    bool alone = false;
    changed.before = [&](PageNo) {
        alone = isHeld(LockFile::kReading) && isHeld(LockFile::kEntering) && isHeld(0x10000002) &&
                isHeld(0x100000FF) && !isHeld(LockFile::kWantsReaders);
        return std::span<const std::byte>(page);
    };
    writing.commit(changed);
    EXPECT_TRUE(announced);
    EXPECT_TRUE(alone);
    for (const std::uint64_t byte : {LockFile::kReading, LockFile::kEntering,
                                     std::uint64_t{0x10000002}, std::uint64_t{0x100000FF}})
        EXPECT_FALSE(isHeld(byte));
    writing.giveBack();
}

TEST_F(TheTurnToWrite, CommitsNothingWhileAForeignProgramIsComingIn) {
    ASSERT_TRUE(writing.take());
    std::optional<File> coming;
    disk.onLock = [&](std::uint64_t byte) {
        if (byte == 0x10000002 && !coming) // the gate is just being closed
            coming = other(0x10000004);
    };
    sentenceOf([&] { writing.commit(nothing()); }, Errc::locked);
    EXPECT_TRUE(coming);
    disk.onLock = {};
    for (const std::uint64_t byte : {LockFile::kReading, LockFile::kEntering})
        EXPECT_FALSE(isHeld(byte));
}

TEST_F(TheTurnToWrite, CommitsNothingBesideOthers) {
    const std::uint16_t before = snapshot.pairs()[1];
    ASSERT_TRUE(writing.take());
    {
        const File foreign = other(0x10000007);
        sentenceOf([&] { writing.commit(nothing()); }, Errc::locked);
    }
    ChangedPages wrong = nothing();
    ++wrong.fileBefore;
    sentenceOf([&] { writing.commit(wrong); }, Errc::conflict);
    writePair(7, 0x0150);
    sentenceOf([&] { writing.commit(nothing()); }, Errc::conflict);
    snapshot.replace(snapshot.inFile());
    replaceFile();
    EXPECT_THAT(sentenceOf([&] { writing.commit(nothing()); }, Errc::conflict),
                HasSubstr("foi substituído"));
    EXPECT_EQ(snapshot.inFile()[1], before);
}

// ---- leaving ----------------------------------------------------------------------------------

/// One that has written, and what is to become of its journal.
class TheLastToWrite : public ShareParts {
protected:
    TheLastToWrite() {
        writing.emplace(presence, snapshot);
        writing->allow();
        EXPECT_TRUE(writing->take());
        writing->commit(nothing());
        writing->giveBack();
        EXPECT_TRUE(disk.exists(kJournal));
    }

    std::optional<WritingTurn> writing;
};

// Of two that left at once each took the other for one who stays.
TEST_F(TheLastToWrite, TakesTheJournalAlongThoughAnotherWasJustLeaving) {
    std::optional<File> another = other(LockFile::kWriting);
    setWaitHook([&] { another.reset(); });
    writing.reset();
    EXPECT_FALSE(disk.exists(kJournal));
    EXPECT_FALSE(isHeld(0x10000001) || isHeld(0x70000001)) << "whoever leaves next is the last";
}

TEST_F(TheLastToWrite, LeavesTheJournalToWhoIsWriting) {
    const File another = other(LockFile::kWriting);
    writing.reset();
    EXPECT_TRUE(disk.exists(kJournal));
}

TEST_F(TheLastToWrite, LeavesTheJournalToWhoStays) {
    const File another = other(0x10000007);
    writing.reset();
    EXPECT_TRUE(disk.exists(kJournal));
}

} // namespace
