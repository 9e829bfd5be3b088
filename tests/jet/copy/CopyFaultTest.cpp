// A disk that fails while a database is compacted or a copy put in its place: every call made to
// it, one after the other, fails once or from then on. What there was is there.
#include "jet/Afterwards.h"
#include "jet/Backup.h"
#include "jet/Compact.h"
#include "jet/Fault.h"
#include "jet/FileSteps.h"
#include "jet/Move.h"
#include "jet/Salvage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>

using namespace jet;
using namespace std::string_literals;

namespace {

const std::string kOther = "/loja/outro.mdb";

class CopyFaults : public testing::TestWithParam<Fault> {
protected:
    CopyFaults() {
        MemoryDisk disk(emptyShop(GetParam().version));
        ShopWork work(3);
        {
            Database file(kPath, on(disk));
            work.step(file, 2);
        }
        older_ = disk.image();
        olderContent_ = after_.of(older_).content;
        {
            Database file(kPath, on(disk));
            work.step(file, 1);
        }
        content_ = after_.of(disk.image()).content;
        before_ = halfDone(disk.image(), [&](Database& file) { work.step(file, 4); });
    }

    /// Does `work` with each of its calls failing; `look` sees the disk and whether it was done.
    template <class Work, class Look>
    void everyFault(const DiskImage& before, Work&& work, Look&& look, std::size_t fewest = 30) {
        std::size_t failures = 0;
        std::uint64_t number = 1;
        for (bool failed = true; failed; number += JET_ONE_IN) {
            SCOPED_TRACE("call " + std::to_string(number));
            MemoryDisk disk(before);
            disk.failFrom(number, GetParam().forever, GetParam().error);
            bool done = false;
            try {
                work(disk);
                done = true;
            } catch (const Error& error) {
                EXPECT_STRNE(error.what(), "");
                ++failures;
            }
            failed = disk.calls() >= number;
            disk.failNoMore();
            look(disk, done);
            ASSERT_FALSE(HasFailure());
        }
        std::cout << "calls made to fail: one in " << JET_ONE_IN << " of " << number - 1
                  << ", told to the technician: " << failures << '\n';
        EXPECT_GT(failures, fewest / JET_ONE_IN);
    }

    void expectSound(const MemoryDisk& disk, const std::string& path, std::uint64_t content) {
        const Afterwards::Outcome& outcome = after_.of(disk.image(), path);
        EXPECT_EQ(outcome.problem, "");
        EXPECT_EQ(outcome.content, content);
    }
    /// Nothing half made stays, unless the disk doesn't even take it away.
    static void expectTidy(const MemoryDisk& disk, std::size_t mostLeft) {
        std::size_t left = 0;
        for (const auto& [name, bytes] : disk.image())
            left += UnnamedFile::isOne(name) ? 1 : 0;
        EXPECT_LE(left, GetParam().forever ? 9 : mostLeft);
    }

    DiskImage older_;
    DiskImage before_; ///< a shop's file whose writer died
    std::uint64_t content_ = 0;
    std::uint64_t olderContent_ = 0;
    Afterwards after_;
};

INSTANTIATE_TEST_SUITE_P(, CopyFaults, allFaults(), faultName);

TEST_P(CopyFaults, ACompactionThatFailsLeavesItsSource) {
    everyFault(
        before_, [](MemoryDisk& disk) { (void)compact(kPath, kOther, {}, disk); },
        [&](MemoryDisk& disk, bool done) {
            expectSound(disk, kPath, content_);
            EXPECT_TRUE(!done || disk.exists(kOther));
            if (disk.exists(kOther))
                expectSound(disk, kOther, content_);
            expectTidy(disk, 1);
        });
}

/// A page that the disk doesn't give is lost, but not in silence.
TEST_P(CopyFaults, ASalvageThatLosesSomethingSaysSo) {
    std::optional<SalvageReport> report;
    everyFault(
        older_,
        [&](MemoryDisk& disk) {
            report.reset();
            report = salvage(kPath, kOther, {}, disk);
        },
        [&](MemoryDisk& disk, bool done) {
            EXPECT_EQ(disk.image().at(kPath), older_.at(kPath));
            EXPECT_TRUE(!done || disk.exists(kOther));
            if (disk.exists(kOther)) {
                const Afterwards::Outcome& outcome = after_.of(disk.image(), kOther);
                EXPECT_EQ(outcome.problem, "");
                EXPECT_TRUE(outcome.content == olderContent_ || (report && !report->complete()));
            }
            expectTidy(disk, 1);
        });
}

TEST_P(CopyFaults, ADailyCopyThatFailsLeavesTheFileAndTheOlderCopies) {
    const std::string older = "/loja/backup/automacao-2026-11-19.mdb";
    const std::string copy = "/loja/backup/automacao-2026-11-20.mdb";
    DiskImage before = before_;
    before[older] = older_.at(kPath);
    everyFault(
        before,
        [](MemoryDisk& disk) {
            using namespace std::chrono;
            (void)Backup(
                kPath, [] { return 2026y / 11 / 20; }, disk)
                .makeIfDue();
        },
        [&](MemoryDisk& disk, bool done) {
            expectSound(disk, kPath, content_);
            EXPECT_TRUE(disk.image().at(older) == older_.at(kPath));
            EXPECT_TRUE(!done || disk.exists(copy));
            if (disk.exists(copy))
                expectSound(disk, copy, content_);
            expectTidy(disk, 1);
        });
}

TEST_P(CopyFaults, ARestoringThatFailsLeavesTheFileOrHasReplacedIt) {
    DiskImage before = before_;
    before[kOther] = older_.at(kPath);
    everyFault(
        before, [](MemoryDisk& disk) { (void)restore(kOther, kPath, disk); },
        [&](MemoryDisk& disk, bool done) {
            std::string kept;
            for (const auto& [name, bytes] : disk.image())
                if (name.find("-substituido-") != std::string::npos && name.ends_with(".mdb"))
                    kept = name;
            if (done || after_.of(disk.image()).content == olderContent_) {
                expectSound(disk, kPath, olderContent_);
                ASSERT_NE(kept, "");
                expectSound(disk, kept, content_);
            } else {
                expectSound(disk, kPath, content_);
                EXPECT_TRUE(kept.empty() || GetParam().forever) << kept;
            }
            expectTidy(disk, 1);
        });
}

TEST_P(CopyFaults, AMoveThatFailsLosesNothing) {
    const std::string moved = "/nova/automacao.mdb";
    const std::string copy = "/loja/backup/automacao-2026-11-19.mdb";
    const std::string movedCopy = "/nova/backup/automacao-2026-11-19.mdb";
    DiskImage before = before_;
    before[copy] = older_.at(kPath);
    everyFault(
        before, [](MemoryDisk& disk) { moveDatabase(kPath, "/nova", disk); },
        [&](MemoryDisk& disk, bool done) {
            const bool there = disk.exists(moved);
            EXPECT_TRUE(there || !done);
            EXPECT_NE(there, disk.exists(kPath));
            expectSound(disk, there ? moved : kPath, content_);
            EXPECT_NE(disk.exists(movedCopy), disk.exists(copy));
            EXPECT_TRUE(disk.image().at(disk.exists(movedCopy) ? movedCopy : copy) ==
                        older_.at(kPath));
        },
        10);
}

TEST_P(CopyFaults, AMoveToAnotherDiskThatFailsLosesNothing) {
    const std::string moved = "/nova/automacao.mdb";
    std::string said;
    int twice = 0;
    everyFault(
        before_,
        [&](MemoryDisk& disk) {
            disk.foldersApart = true;
            said.clear();
            try {
                moveDatabase(kPath, "/nova", disk);
            } catch (const Error& error) {
                said = error.what();
                throw;
            }
        },
        [&](MemoryDisk& disk, bool done) {
            const bool there = disk.exists(moved);
            const bool still = disk.exists(kPath);
            EXPECT_TRUE(done ? there && !still : there || still);
            // Where it can't be taken away any more, it is in both places, and the same.
            if (there && still) {
                ++twice;
                EXPECT_NE(said.find("e agora há dois"), std::string::npos) << said;
            }
            if (there)
                expectSound(disk, moved, content_);
            if (still)
                expectSound(disk, kPath, content_);
        },
        10);
    EXPECT_TRUE(twice > 0 || JET_ONE_IN > 1) << "else the one call may not be among them";
}

} // namespace
