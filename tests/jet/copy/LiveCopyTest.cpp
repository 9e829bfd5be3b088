// Copying a database while others save: the copy is of one state, and nobody is kept from saving.
#include "jet/copy/LiveCopy.h"

#include "jet/Copies.h"
#include "jet/ShopWork.h"
#include "jet/page/CommitPairs.h"
#include "jet/share/LockFile.h"
#include "support/Versions.h"

#include <functional>
#include <iostream>
#include <map>

using namespace jet;

namespace {

const std::string kTarget = "/loja/copia.mdb";

/// A shop's file on a disk in memory, and a station that saves whenever the copy leaves it room:
/// before each time that R is taken for reading.
class LiveCopies : public testing::TestWithParam<Version> {
protected:
    void fill(std::size_t bytes) {
        Database::create(kPath, GetParam(), disk_);
        station_.emplace(kPath, on(disk_));
        Table& table = station_->createTable({
            "Notas",
            {{"codigo", ColumnType::longInteger, 0, true}, {"texto", ColumnType::memo}},
            {{"chave", {{"codigo"}}, true}                                           }
        });
        for (std::size_t stored = 0; stored < bytes; stored += 2000)
            rows_.push_back(table.insert(
                Row{Value{}, std::string(2000, static_cast<char>('a' + stored % 26))}));
        station_->flush();
    }
    /// One transaction: a row is changed, somewhere in the file, and one is added.
    void save() {
        Table& table = station_->table("Notas");
        const RowId row = rows_[(++saves_ * 7919) % rows_.size()];
        table.update(row, std::vector<Assignment>{
                              {1, std::string(1900, static_cast<char>('A' + saves_ % 26))}
        });
        table.insert(Row{Value{}, "venda " + std::to_string(saves_)});
        station_->flush();
    }
    /// Calls `work` whenever the copy is about to read a part.
    void betweenParts(std::function<void()> work) {
        disk_.onLock = [this, work = std::move(work)](std::uint64_t what) {
            if (what != LockFile::kReading || atWork_)
                return;
            held_ = !held_; // taken, then given back
            if (!held_)
                return;
            ++parts_;
            atWork_ = true;
            work();
            atWork_ = false;
        };
    }
    void copy() {
        File target(kTarget, File::Mode::createNew, disk_);
        LiveCopy::into(target, kPath, {});
        disk_.onLock = {};
        disk_.onRead = {};
    }
    void expectTheLastState() {
        ASSERT_EQ(disk_.image().at(kTarget).size(), disk_.image().at(kPath).size());
        EXPECT_TRUE(disk_.image().at(kTarget) == disk_.image().at(kPath));
        EXPECT_TRUE(check(kTarget, disk_).clean());
    }

    MemoryDisk disk_;
    std::optional<Database> station_;
    std::vector<RowId> rows_;
    std::size_t saves_ = 0;
    std::size_t parts_ = 0;
    bool held_ = false;
    bool atWork_ = false;
};

INSTANTIATE_TEST_SUITE_P(, LiveCopies, bothVersions(), versionName);

TEST_P(LiveCopies, WithAStationThatSavesBetweenAllPartsItIsOfItsLastState) {
    fill(3 << 20);
    betweenParts([this] { save(); });
    copy(); // where a save is refused it throws
    EXPECT_GE(saves_, (3U << 20) / LiveCopy::kPart);
    EXPECT_LE(saves_, (12U << 20) / LiveCopy::kPart) << "what is left gets less and less";
    std::cout << "parts: " << parts_ << ", saves meanwhile: " << saves_ << '\n';
    expectTheLastState();
}

TEST_P(LiveCopies, WhereManySaveBetweenAllPartsTheRestIsTakenAtOnceIfItIsLittle) {
    fill(1 << 20);
    betweenParts([this] {
        save();
        save();
    });
    copy();
    expectTheLastState();
}

TEST_P(LiveCopies, AndIfItIsMuchNobodyIsMadeToWait) {
    fill(LiveCopy::kMostAtOnce + (1 << 20));
    betweenParts([this] {
        save();
        save();
    });
    expectError(Errc::locked, "sem pausa", [this] { copy(); });
}

TEST_P(LiveCopies, TwoSavesAtOnceNowAndThenOnlyCostABeginning) {
    fill(2 << 20);
    betweenParts([this] {
        save();
        if (parts_ == 5)
            save();
    });
    copy();
    expectTheLastState();
}

TEST_P(LiveCopies, AProgramThatHeedsNoLockIsNoticed) {
    fill(2 << 20);
    File stranger(kPath, File::Mode::readWrite, disk_);
    bool written = false;
    disk_.onRead = [&](std::uint64_t offset) {
        if (offset < (1U << 20) || written || atWork_)
            return;
        written = true;
        const std::vector<std::byte> note(16, std::byte{0x5A});
        stranger.write(disk_.image().at(kPath).size() - 16, note);
        stranger.write(disk_.image().at(kPath).size() / 4 + 100, note); // copied by now
    };
    copy();
    EXPECT_TRUE(written);
    EXPECT_TRUE(disk_.image().at(kTarget) == disk_.image().at(kPath));
}

/// Then it isn't known what has been saved: all is copied anew.
TEST_P(LiveCopies, WhereTheJournalDoesntTellItBeginsAnew) {
    fill(1 << 20);
    const auto journal = [&] { return File(kJournal, File::Mode::readWrite, disk_); };
    const std::map<std::string, std::function<void()>> cases{
        {"there is none",             [&] { File::remove(disk_, kJournal); }                            },
        {"nothing is in it",          [&] { journal().truncate(0); }                                    },
        {"its end is missing",        [&] { journal().truncate(disk_.image().at(kJournal).size() / 2); }},
        {"another program has saved",
         [&] {
             File file(kPath, File::Mode::readWrite, disk_);
             CommitPairs::write(file, formatOf(GetParam()), 9, 0x0150);
         }                                                                                              },
        {"the file got shorter",
         [&] {
             File file(kPath, File::Mode::readWrite, disk_);
             file.truncate(file.size() - formatOf(GetParam()).pageSize);
         }                                                                                              },
    };
    const DiskImage sound = disk_.image();
    for (const auto& [what, does] : cases) {
        SCOPED_TRACE(what);
        bool happened = false;
        parts_ = 0;
        betweenParts([&, &happens = does] {
            if (parts_ != 3)
                return;
            save();
            happens();
            happened = true;
        });
        copy();
        EXPECT_TRUE(happened);
        EXPECT_TRUE(disk_.image().at(kTarget) == disk_.image().at(kPath));
        File::remove(disk_, kTarget);
        File(kPath, File::Mode::readWrite, disk_).truncate(sound.at(kPath).size());
    }
}

TEST_P(LiveCopies, OfAFileThatAStrangerNeverLeavesAloneThereIsNone) {
    fill(3 << 20);
    File stranger(kPath, File::Mode::readWrite, disk_);
    std::uint8_t mark = 0;
    disk_.onRead = [&](std::uint64_t offset) {
        if (offset % formatOf(GetParam()).pageSize == 0) // what is copied, not what is looked at
            stranger.write(disk_.image().at(kPath).size() - 16, Bytes(16, std::byte{++mark}));
    };
    expectError(Errc::locked, "sem pausa", [this] { copy(); });
    disk_.onRead = {};
}

TEST_P(LiveCopies, TheFileMayGrowMeanwhile) {
    fill(1 << 20);
    betweenParts([this] {
        DatabaseTransaction transaction(*station_);
        for (int i = 0; i < 60; ++i)
            station_->table("Notas").insert(Row{Value{}, std::string(1500, 'n')});
        transaction.commit();
    });
    copy();
    expectTheLastState();
}

TEST_P(LiveCopies, ATransactionThatWasCutOffIsUndoneFirst) {
    MemoryDisk healthy(emptyShop(GetParam()));
    ShopWork work(3);
    {
        Database file(kPath, on(healthy));
        work.step(file, 1);
    }
    MemoryDisk disk(halfDone(healthy.image(), [&](Database& file) { work.step(file, 2); }));
    File target(kTarget, File::Mode::createNew, disk);
    LiveCopy::into(target, kPath, {});
    EXPECT_TRUE(check(kTarget, disk).clean());
    EXPECT_TRUE(disk.image().at(kTarget) == disk.image().at(kPath));
}

} // namespace
