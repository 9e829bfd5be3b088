#include "jet/TableFollower.h"

#include "jet/DropTable.h"
#include "jet/MemoryDisk.h"
#include "jet/RandomRows.h"
#include "jet/RuleFile.h"
#include "jet/ShopWork.h"
#include "jet/database/DatabasePager.h"
#include "jet/value/Checksum.h"
#include "support/Versions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <vector>

using namespace jet;
using namespace std::chrono_literals;

namespace {

/// The fingerprints of some rows.
using Prints = std::vector<std::uint64_t>;

/// What a follower has given, and how much work it was.
class Taken {
public:
    Taken(Database& database, const std::string& name)
        : table_(database.table(name)), follower_(database, table_) {}

    bool step(std::chrono::microseconds time = 0us) {
        return follower_.follow(time, [this](PageNo page, PageRows& rows) { take(page, rows); });
    }
    void toTheEnd() {
        while (step(1ms))
            ;
    }
    /// The rows that it gives, after all is done, are those of the table.
    void expectRight() {
        toTheEnd();
        EXPECT_TRUE(follower_.isComplete());
        EXPECT_EQ(follower_.damage(), std::nullopt);
        EXPECT_EQ(all(), scanned());
    }
    [[nodiscard]] Prints all() const {
        Prints prints;
        for (const auto& [page, rows] : pages_)
            prints.insert(prints.end(), rows.begin(), rows.end());
        std::ranges::sort(prints);
        return prints;
    }
    [[nodiscard]] Prints scanned() const {
        Prints prints;
        RowCursor row = table_.scan();
        for (bool there = row.first(); there; there = row.next())
            prints.push_back(checksum(row.row().bytes()));
        std::ranges::sort(prints);
        return prints;
    }
    /// Pages compared and decoded by all that there is to do now.
    TableFollower::Tally work() {
        const TableFollower::Tally before = follower_.tally();
        toTheEnd();
        return {follower_.tally().compared - before.compared,
                follower_.tally().decoded - before.decoded};
    }
    TableFollower& follower() { return follower_; }
    [[nodiscard]] std::uint64_t pages() const { return pages_.size(); }
    std::uint64_t refuse = 0; ///< a row that isn't taken

private:
    void take(PageNo page, PageRows& rows) {
        Prints prints;
        while (const RowView* row = rows.next()) {
            prints.push_back(checksum(row->bytes()));
            if (refuse == prints.back())
                throw Error(Errc::outOfRange, "grande demais");
        }
        if (prints.empty())
            pages_.erase(page);
        else
            pages_[page] = prints;
    }

    const Table& table_;
    TableFollower follower_;
    std::map<PageNo, Prints> pages_;
};

class Followed : public RuleFile {
protected:
    enum Place : std::size_t { kId, kValor, kObs, kNota };

    Followed() {
        database_->createTable({
            "cheques",
            {{"id", ColumnType::longInteger, 0, true},
              {"valor", ColumnType::currency},
              {"obs", ColumnType::text, 250},
              {"nota", ColumnType::memo}},
            {{"PrimaryKey", {{"id"}}, true}          }
        });
        // Others, so that the table's pages don't all lie side by side.
        database_->createTable({"outros", {{"texto", ColumnType::text, 250}}, {}});
    }
    Table& cheques(Database& file) { return file.table("cheques"); }
    Table& cheques() { return cheques(*database_); }
    /// Of about so many characters each.
    std::vector<RowId> fill(int rows, std::size_t size = 40) {
        std::vector<RowId> ids;
        database_->begin();
        for (int i = 0; i < rows; ++i) {
            ids.push_back(cheques().insert(given(i, size)));
            if (i % 50 == 0)
                database_->table("outros").insert(std::array{
                    Assignment{0, std::string(250, 'x')}
                });
        }
        database_->commit();
        return ids;
    }
    static std::array<Assignment, 2> given(int value, std::size_t size) {
        return {
            Assignment{kValor,            Currency{value}},
            Assignment{ kObs, std::string(size,            'o')}
        };
    }
    static std::array<Assignment, 1> worth(std::int64_t value) {
        return {
            Assignment{kValor, Currency{value}}
        };
    }
    static std::array<Assignment, 1> said(std::size_t size) {
        return {
            Assignment{kObs, std::string(size, 's')}
        };
    }
    /// Random changes by one station.
    void change(Database& file, RandomRows& random, int times) {
        Table& table = cheques(file);
        std::vector<RowId> ids;
        RowCursor row = table.scan();
        for (bool there = row.first(); there; there = row.next())
            ids.push_back(row.id());
        for (int i = 0; i < times; ++i) {
            const std::size_t dice = random.below(10);
            const RowId id = ids.empty() ? RowId{} : ids[random.below(ids.size())];
            if (ids.empty() || dice < 4) {
                ids.push_back(table.insert(given(i, random.below(240))));
            } else if (dice < 8) {
                table.update(id, said(random.below(250)));
            } else {
                table.erase(id);
                std::erase(ids, id);
            }
        }
    }
};

INSTANTIATE_TEST_SUITE_P(, Followed, bothVersions(), versionName);

TEST_P(Followed, GivesTheRowsThatTheTableHas) {
    Taken taken(*database_, "cheques");
    taken.expectRight(); // none
    fill(2000);
    taken.expectRight();
    EXPECT_EQ(taken.all().size(), 2000U);
    EXPECT_EQ(taken.follower().progress(), 1);
}

TEST_P(Followed, GivesThemAfterAnyChange) {
    RandomRows random(21);
    fill(300);
    Taken taken(*database_, "cheques");
    Taken late(*database_, "cheques"); // looks only now and then
    for (int round = 0; round < 150; ++round) {
        SCOPED_TRACE(round);
        const std::size_t dice = random.below(6);
        if (dice == 0) {
            database_->flush();
            Database other(path());
            change(other, random, 1 + static_cast<int>(random.below(20)));
        } else if (dice < 3) {
            database_->begin();
            change(*database_, random, static_cast<int>(random.below(30)));
            if (random.chance(50))
                taken.step(); // sees what may yet be undone
            if (dice == 1)
                database_->rollback();
            else
                random.chance(50) ? database_->commit() : database_->commitLater();
        } else {
            change(*database_, random, static_cast<int>(random.below(30)));
            taken.step();
            if (dice == 3)
                database_->discard();
        }
        taken.expectRight();
        if (round % 40 == 39)
            late.expectRight();
        if (HasFailure())
            return;
    }
    late.expectRight();
}

TEST_P(Followed, DecodesOnlyWhatHasChangedHere) {
    const std::vector<RowId> ids = fill(3000);
    Taken taken(*database_, "cheques");
    const std::uint64_t first = taken.work().decoded;
    EXPECT_EQ(first, taken.pages());
    EXPECT_GT(first, 30U);
    EXPECT_EQ(taken.work().compared, 0U); // nothing
    cheques().update(ids[700], worth(-5));
    cheques().update(ids[2900], worth(-7));
    const TableFollower::Tally changed = taken.work();
    EXPECT_EQ(changed.decoded, 2U);
    EXPECT_EQ(changed.compared, 2U);
    taken.expectRight();
    database_->discard();
    EXPECT_EQ(taken.work().decoded, 2U);
    taken.expectRight();
    database_->begin(); // and nothing of what was undone before it has looked
    cheques().update(ids[5], worth(-5));
    database_->rollback();
    EXPECT_EQ(taken.work().decoded, 0U);
    taken.expectRight();
}

TEST_P(Followed, ComparesAllPagesOnlyWhenOthersHaveWrittenMoreThanOneTransaction) {
    const std::vector<RowId> ids = fill(3000);
    Taken taken(*database_, "cheques");
    taken.toTheEnd();
    Database other(path());
    const auto changed = [&](std::initializer_list<std::size_t> rows) {
        for (const std::size_t row : rows) {
            cheques(other).update(ids[row], worth(-static_cast<std::int64_t>(row)));
            other.flush();
        }
        return taken.work();
    };
    const TableFollower::Tally one = changed({700});
    EXPECT_EQ(one.decoded, 1U);
    EXPECT_EQ(one.compared, 1U);
    taken.expectRight();
    const TableFollower::Tally two = changed({800, 2900});
    EXPECT_EQ(two.decoded, 2U);
    EXPECT_EQ(two.compared, taken.pages());
    taken.expectRight();
}

TEST_P(Followed, ComparesAllAfterMoreChangesThanAreRemembered) {
    const std::vector<RowId> ids = fill(3000);
    Taken taken(*database_, "cheques");
    taken.toTheEnd();
    for (int i = 0; i < 10'000; ++i)
        cheques().update(ids[static_cast<std::size_t>(i) % 20], worth(i + 10'000));
    const TableFollower::Tally changed = taken.work();
    EXPECT_LE(changed.decoded, 2U);
    EXPECT_EQ(changed.compared, taken.pages());
    taken.expectRight();
}

TEST_P(Followed, KnowsOfARowThatLiesElsewhere) {
    const std::vector<RowId> ids = fill(1000, 5);
    cheques().update(ids[3], said(250)); // no room on its page
    Taken taken(*database_, "cheques");
    taken.expectRight();
    cheques().update(ids[3], said(249)); // where it lies now
    const TableFollower::Tally changed = taken.work();
    EXPECT_EQ(changed.decoded, 2U); // that page, and the one that it belongs to
    taken.expectRight();
    cheques().update(ids[3], said(5)); // back
    taken.expectRight();
    cheques().erase(ids[3]);
    taken.expectRight();
}

TEST_P(Followed, SeesPagesComeAndGo) {
    const std::vector<RowId> ids = fill(2000);
    Taken taken(*database_, "cheques");
    taken.toTheEnd();
    const std::uint64_t pages = taken.pages();
    for (std::size_t i = 0; i < 1500; ++i)
        cheques().erase(ids[i]);
    taken.expectRight();
    EXPECT_LT(taken.pages(), pages / 2);
    database_->flush();
    {
        Database other(path());
        for (std::size_t i = 1500; i < 2000; ++i) {
            cheques(other).erase(ids[i]);
            if (i % 100 == 0)
                other.flush();
        }
    }
    taken.expectRight();
    EXPECT_EQ(taken.pages(), 0U);
}

TEST_P(Followed, EndsExactWhatOthersWriteBetweenItsPieces) {
    RandomRows random(4);
    fill(1500, 100);
    database_->flush();
    Taken taken(*database_, "cheques");
    Database other(path());
    for (int piece = 0; piece < 60 && taken.step(); ++piece) {
        EXPECT_LE(taken.follower().progress(), 1);
        if (piece % 7 != 0)
            continue;
        change(other, random, 5);
        other.flush();
    }
    taken.expectRight();
}

TEST_P(Followed, OfADamagedPageTellsAndGoesOnWithTheOthers) {
    const std::vector<RowId> ids = fill(1500);
    Taken taken(*database_, "cheques");
    taken.toTheEnd();
    const std::size_t rows = taken.all().size();
    Pager& pager = DatabasePager::of(*database_);
    const Format& format = pager.format();
    database_->begin();
    const Bytes sound(pager.read(ids[400].page).bytes().begin(),
                      pager.read(ids[400].page).bytes().end());
    store(pager.change(ids[400].page).data(), format.dataPage.slotCount, std::uint16_t{9999});
    EXPECT_EQ(taken.work().decoded, 1U);
    ASSERT_NE(taken.follower().damage(), std::nullopt);
    EXPECT_EQ(taken.follower().damage()->code(), Errc::corrupt);
    EXPECT_TRUE(taken.follower().isComplete());
    EXPECT_LT(taken.all().size(), rows);
    EXPECT_GT(taken.all().size(), rows - 100);
    EXPECT_EQ(taken.work().compared, 0U); // not again, as long as it is the same
    std::ranges::copy(sound, pager.change(ids[400].page).begin());
    taken.expectRight();
    database_->rollback();
    taken.expectRight();
}

TEST_P(Followed, APageWhoseRowIsRefusedCountsAsOneWithout) {
    const std::vector<RowId> ids = fill(300);
    Taken taken(*database_, "cheques");
    {
        RowReader reader = cheques().reader();
        taken.refuse = checksum(reader.read(ids[7])->bytes());
    }
    taken.toTheEnd();
    EXPECT_EQ(taken.follower().damage()->code(), Errc::outOfRange);
    EXPECT_GT(taken.pages(), 0U);
    cheques().update(ids[7], worth(-9));
    taken.expectRight();
}

TEST_P(Followed, OfATableThatHasGoneSaysSo) {
    fill(100);
    database_->flush();
    Taken taken(*database_, "cheques");
    taken.toTheEnd();
    dropTable(path(), "cheques");
    for (int again = 0; again < 2; ++again)
        EXPECT_THROW(taken.step(), Error);
    EXPECT_EQ(taken.follower().tally().decoded, taken.pages());
}

TEST_P(Followed, GoesOnWhereTheDiskHadFailed) {
    MemoryDisk disk;
    Database::create(kPath, GetParam(), disk);
    Database file(kPath, on(disk));
    Table& table = file.createTable({"cheques", {{"obs", ColumnType::text, 250}}, {}});
    constexpr int kRows = 300;
    std::vector<RowId> ids;
    ids.reserve(kRows);
    for (int i = 0; i < kRows; ++i)
        ids.push_back(table.insert(std::array{
            Assignment{0, std::string(100, 'o')}
        }));
    file.flush();
    Taken taken(file, "cheques");
    disk.lost = {kPath,
                 std::uint64_t{number(ids[150].page)} * DatabasePager::of(file).format().pageSize};
    for (int again = 0; again < 2; ++again)
        EXPECT_THROW(taken.toTheEnd(), Error);
    EXPECT_FALSE(taken.follower().isComplete());
    EXPECT_LT(taken.follower().progress(), 1);
    disk.lost.reset();
    taken.expectRight();
    EXPECT_EQ(taken.follower().tally().decoded, taken.pages());
}

// It costs calls of the disk with each transaction of another.
TEST_P(Followed, OthersChangesAreReadOfOnlyWhereSomebodyFollows) {
    MemoryDisk disk(emptyShop(GetParam()));
    Database file(kPath, on(disk));
    Database other(kPath, on(disk));
    ShopWork work(3);
    // Steps in which cheques come in.
    const auto callsToSee = [&](int step) {
        work.step(other, step);
        const std::uint64_t before = disk.calls();
        { const Reading reading(file); }
        return disk.calls() - before;
    };
    (void)callsToSee(4); // which also has to find the other one
    const std::uint64_t unfollowed = callsToSee(13);
    Taken taken(file, ShopWork::cheques().name);
    taken.toTheEnd();
    EXPECT_GT(callsToSee(22), unfollowed);
    taken.expectRight();
}

} // namespace
