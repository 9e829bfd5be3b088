// The promise of what works on a database as a whole: whenever the power goes while one is
// compacted or a copy put in its place, the shop has a whole file under its name, and loses none.
#include "jet/Afterwards.h"
#include "jet/Backup.h"
#include "jet/Check.h"
#include "jet/Compact.h"
#include "jet/FileSteps.h"
#include "jet/Move.h"
#include "jet/Salvage.h"
#include "jet/share/Journal.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

using namespace jet;
using namespace std::string_literals;

namespace {

const std::string kSmall = "/loja/menor.mdb";
const std::string kCopy = "/loja/backup/automacao-2026-11-19.mdb";
/// So often a cut is followed by another try.
constexpr std::size_t kTriedAgain = 29;
/// These take few steps: so many disks more are looked at for each.
constexpr int kCompactingRounds = 4;
constexpr int kRestoringRounds = 20;

/// The names of the files that a replaced one is kept under.
std::vector<std::string> keptIn(const DiskImage& image) {
    std::vector<std::string> names;
    for (const auto& [name, bytes] : image)
        if (name.starts_with("/loja/automacao-substituido-") && name.ends_with(".mdb"))
            names.push_back(name);
    return names;
}

bool holds(const DiskImage& image, const std::string& name, const Bytes& bytes) {
    const auto file = image.find(name);
    return file != image.end() && file->second == bytes;
}

class CopyCrash : public testing::TestWithParam<Version> {
protected:
    CopyCrash() {
        MemoryDisk disk(emptyShop(GetParam()));
        ShopWork work(3);
        run(disk, work, 1, 4);
        older_ = disk.image();
        run(disk, work, 5, 11);
        used_ = disk.image();
        cutOff_ = halfDone(used_, [&](Database& file) { work.step(file, 13); });
        content_ = after_.of(used_).content;
        olderContent_ = after_.of(older_).content;
    }

    static void run(MemoryDisk& disk, ShopWork& work, int first, int last) {
        Database file(kPath, on(disk));
        for (int i = first; i <= last; ++i)
            work.step(file, i);
    }

    /// Whether what the disk has at `path` is sound and holds `content`; else what is wrong.
    std::string flaw(const DiskImage& image, const std::string& path, std::uint64_t content) {
        const Afterwards::Outcome& outcome = after_.of(image, path);
        if (!outcome.problem.empty())
            return path + ": " + outcome.problem;
        return outcome.content == content ? "" : path + " holds something else";
    }

    /// Calls `look` with the disks that a cut at any place of the record may leave.
    template <class Look>
    void everyCut(const DiskImage& before, const MemoryDisk& disk, int rounds, Look&& look) {
        std::mt19937_64 random(11);
        PowerCut cut(before);
        for (std::size_t i = 0; i < disk.record().size(); ++i) {
            SCOPED_TRACE("after operation " + std::to_string(i + 1));
            cut.advance(disk.record()[i]);
            for (const DiskImage& image : imagesOf(cut, random, rounds)) {
                look(image);
                if (testing::Test::HasFailure())
                    return;
            }
        }
    }
    void tell(const char* what, const MemoryDisk& disk) const {
        std::cout << what << ": operations " << disk.record().size() << ", crash points " << points_
                  << ", tried again " << repeats_ << ", different databases opened "
                  << after_.images() << ", checked " << after_.checks() << '\n';
    }

    /// What makes the file `kPath` anew under another name.
    using Copier = std::function<void(const std::string& target, MemoryDisk& disk)>;
    void cutCopying(const DiskImage& before, const Copier& copy);
    void cutRestoring(const DiskImage& before, std::uint64_t replaced);

    DiskImage older_;
    DiskImage used_;
    DiskImage cutOff_; ///< the same as used_, and a transaction that a dead station has begun
    std::uint64_t content_ = 0;
    std::uint64_t olderContent_ = 0;
    Afterwards after_;
    std::size_t points_ = 0;
    std::size_t repeats_ = 0;
};

INSTANTIATE_TEST_SUITE_P(, CopyCrash, bothVersions(), versionName);

void CopyCrash::cutCopying(const DiskImage& before, const Copier& copy) {
    MemoryDisk disk(before);
    copy(kSmall, disk);
    ASSERT_EQ(flaw(disk.image(), kSmall, content_), "");
    const Bytes whole = disk.image().at(kSmall);
    everyCut(before, disk, kCompactingRounds, [&](const DiskImage& image) {
        ASSERT_EQ(flaw(image, kPath, content_), "");
        ASSERT_TRUE(!image.contains(kSmall) || holds(image, kSmall, whole));
        // What else there may be is known by its name for what it is.
        for (const auto& [name, bytes] : image)
            ASSERT_TRUE(name == kPath || name == kSmall || !name.ends_with(".mdb") ||
                        UnnamedFile::isOne(name))
                << name;
        if (++points_ % kTriedAgain != 0)
            return;
        ++repeats_;
        MemoryDisk again(image);
        const std::string second = image.contains(kSmall) ? "/loja/menor2.mdb" : kSmall;
        copy(second, again);
        ASSERT_TRUE(holds(again.image(), second, whole));
    });
    tell("a new file", disk);
    EXPECT_GT(points_, 900U);
}

void compactTo(const std::string& target, MemoryDisk& disk) {
    (void)compact(kPath, target, {}, disk);
}

TEST_P(CopyCrash, ACompactionNeverTouchesItsSourceAndItsResultIsWhole) {
    cutCopying(used_, compactTo);
}

TEST_P(CopyCrash, ACompactionOfAFileWhoseWriterDiedFirstUndoesTheTransaction) {
    cutCopying(cutOff_, compactTo);
}

TEST_P(CopyCrash, ASalvageNeverTouchesItsSourceAndItsResultIsWhole) {
    cutCopying(used_, [](const std::string& target, MemoryDisk& disk) {
        EXPECT_TRUE(salvage(kPath, target, {}, disk).complete());
    });
}

TEST_P(CopyCrash, ANewDatabaseIsWholeOrNotThere) {
    MemoryDisk disk;
    Database::create(kPath, GetParam(), disk);
    const Bytes whole = disk.image().at(kPath);
    const std::uint64_t empty = after_.of(disk.image()).content;
    ASSERT_EQ(flaw(disk.image(), kPath, empty), "");
    everyCut({}, disk, kRestoringRounds, [&](const DiskImage& image) {
        ASSERT_TRUE(!image.contains(kPath) || holds(image, kPath, whole));
        if (++points_ % kTriedAgain != 0 || image.contains(kPath))
            return;
        ++repeats_;
        MemoryDisk again(image);
        Database::create(kPath, GetParam(), again);
        ASSERT_EQ(flaw(again.image(), kPath, empty), "");
    });
    tell("creation", disk);
}

TEST_P(CopyCrash, ADailyCopyIsWholeOrNotThereAndTheOlderOnesStay) {
    using namespace std::chrono;
    DiskImage before = cutOff_;
    before[kCopy] = older_.at(kPath);
    MemoryDisk disk(before);
    const auto made = Backup(
                          kPath, [] { return 2026y / 11 / 20; }, disk)
                          .makeIfDue();
    ASSERT_TRUE(made);
    const std::string name = made->generic_string();
    const Bytes whole = disk.image().at(name);
    everyCut(before, disk, kCompactingRounds, [&](const DiskImage& image) {
        ++points_;
        ASSERT_EQ(flaw(image, kPath, content_), "");
        ASSERT_TRUE(holds(image, kCopy, before.at(kCopy)));
        ASSERT_TRUE(!image.contains(name) || holds(image, name, whole));
    });
    tell("a daily copy", disk);
    EXPECT_GT(points_, 400U);
}

TEST_P(CopyCrash, AMoveLosesNothing) {
    const std::string moved = "/nova/automacao.mdb";
    const std::string movedCopy = "/nova/backup/automacao-2026-11-19.mdb";
    DiskImage before = cutOff_;
    before[kCopy] = older_.at(kPath);
    MemoryDisk disk(before);
    moveDatabase(kPath, "/nova", disk);
    ASSERT_TRUE(disk.exists(moved) && disk.exists(movedCopy));
    ASSERT_FALSE(disk.exists(kPath) || disk.exists(kCopy) || disk.exists(kJournal));
    everyCut(before, disk, kRestoringRounds, [&](const DiskImage& image) {
        ++points_;
        ASSERT_EQ(flaw(image, image.contains(moved) ? moved : kPath, content_), "");
        ASSERT_TRUE(holds(image, kCopy, before.at(kCopy)) ||
                    holds(image, movedCopy, before.at(kCopy)));
    });
    tell("a move", disk);
    // Whoever is told that it is there finds it there: the program's settings name the new folder.
    PowerCut afterwards(before);
    for (const MemoryDisk::Operation& operation : disk.record())
        afterwards.advance(operation);
    EXPECT_TRUE(afterwards.nothingMore().contains(moved));
    EXPECT_TRUE(afterwards.nothingMore().contains(movedCopy));
    EXPECT_GT(points_, 100U);
}

void CopyCrash::cutRestoring(const DiskImage& before, std::uint64_t replaced) {
    MemoryDisk disk(before);
    const auto kept = restore(kCopy, kPath, disk);
    ASSERT_TRUE(kept);
    ASSERT_EQ(flaw(disk.image(), kPath, olderContent_), "");
    ASSERT_EQ(flaw(disk.image(), kept->generic_string(), replaced), "");
    ASSERT_FALSE(disk.exists(kJournal));
    std::size_t restored = 0;
    everyCut(before, disk, kRestoringRounds, [&](const DiskImage& image) {
        ASSERT_TRUE(image.contains(kPath));
        ASSERT_TRUE(holds(image, kCopy, before.at(kCopy)));
        if (after_.of(image).content == olderContent_) {
            ++restored;
            ASSERT_EQ(flaw(image, kPath, olderContent_), "");
            const std::vector<std::string> names = keptIn(image);
            ASSERT_EQ(names.size(), 1U);
            ASSERT_EQ(flaw(image, names.front(), replaced), "");
        } else {
            ASSERT_EQ(flaw(image, kPath, replaced), "");
        }
        if (++points_ % kTriedAgain != 0)
            return;
        ++repeats_;
        MemoryDisk again(image);
        (void)restore(kCopy, kPath, again);
        ASSERT_EQ(flaw(again.image(), kPath, olderContent_), "");
    });
    tell("restoring", disk);
    EXPECT_GT(restored, 0U);
    EXPECT_GT(points_, 1000U);
}

TEST_P(CopyCrash, RestoringLeavesTheOneFileOrTheOtherAndKeepsBoth) {
    DiskImage before = used_;
    before[kCopy] = older_.at(kPath);
    cutRestoring(before, content_);
}

TEST_P(CopyCrash, TheJournalOfAReplacedFileIsUsedForThatAndNoOther) {
    DiskImage before = cutOff_;
    before[kCopy] = older_.at(kPath);
    cutRestoring(before, content_);
}

/// A compaction that is to be brought back is a copy like any other, and has the same content.
TEST_P(CopyCrash, ACompactedFileIsBroughtBackInOneStep) {
    MemoryDisk disk(cutOff_);
    (void)compact(kPath, kCopy, {}, disk);
    DiskImage before = cutOff_;
    before[kCopy] = disk.image().at(kCopy);
    olderContent_ = after_.of(before, kCopy).content;
    ASSERT_EQ(olderContent_, content_);
    MemoryDisk restored(before);
    const auto kept = restore(kCopy, kPath, restored);
    ASSERT_TRUE(kept);
    EXPECT_TRUE(holds(restored.image(), kPath, before.at(kCopy)));
    everyCut(before, restored, kRestoringRounds, [&](const DiskImage& image) {
        ++points_;
        ASSERT_EQ(flaw(image, kPath, content_), "");
    });
    tell("bringing back", restored);
}

/// What can't be read any more can't be brought to a whole state either: it is kept as it is, with
/// its journal, and that is no other file's.
TEST_P(CopyCrash, AFileTooDamagedToBeRecoveredIsKeptWithItsJournal) {
    DiskImage before = cutOff_;
    std::fill_n(before[kPath].begin(), 64, std::byte{0x58});
    // The very state that the transaction began with: nearer to that journal no copy can be.
    before[kCopy] = used_.at(kPath);
    MemoryDisk disk(before);
    const auto kept = restore(kCopy, kPath, disk);
    ASSERT_TRUE(kept);
    EXPECT_TRUE(holds(disk.image(), kept->generic_string(), before.at(kPath)));
    EXPECT_TRUE(holds(disk.image(), kept->generic_string() + "-journal", before.at(kJournal)));
    EXPECT_FALSE(disk.exists(kJournal));
    everyCut(before, disk, kRestoringRounds, [&](const DiskImage& image) {
        ++points_;
        ASSERT_TRUE(image.contains(kPath));
        if (holds(image, kPath, before.at(kPath))) {
            ASSERT_TRUE(holds(image, kJournal, before.at(kJournal)));
            return;
        }
        ASSERT_EQ(flaw(image, kPath, content_), "");
        const std::vector<std::string> names = keptIn(image);
        ASSERT_EQ(names.size(), 1U);
        ASSERT_TRUE(holds(image, names.front(), before.at(kPath)));
        ASSERT_TRUE(holds(image, kJournal, before.at(kJournal)) ||
                    holds(image, names.front() + "-journal", before.at(kJournal)));
    });
    tell("restoring over a damaged file", disk);
}

} // namespace
