// How often a station that lists or enters something turns to those it shares the file with: each
// time is a way to the server and back where the file lies on one.
#include "ado/ShopInMemory.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

namespace {

using ado::Connection;
using ado::Recordset;
using testing::AnyOf;
using testing::Contains;
using Strings = std::vector<std::string>;

class SharedCallsTest : public ShopInMemory {
protected:
    /// What is locked, given back, or asked for (?) meanwhile, by name.
    static Strings during(MemoryDisk& disk, const std::function<void()>& work) {
        static const std::map<std::uint64_t, std::string> names{
            {0x70001000, "R"      },
            {0x70001001, "W"      },
            {0x70001002, "O"      },
            {0x70001003, "wants R"},
            {0x70001004, "wants W"},
            {0x10000001, "users"  },
            {0x10000002, "gate"   },
            {0x80000001, "marks"  },
        };
        Strings met;
        disk.onLock = [&](std::uint64_t byte) { met.push_back(names.at(byte)); };
        disk.onAsk = [&](std::uint64_t byte) { met.push_back(names.at(byte) + "?"); };
        work();
        disk.onLock = disk.onAsk = {};
        return met;
    }
};
INSTANTIATE_TEST_SUITE_P(, SharedCallsTest, testing::Values(jet::Version::jet4));

// How many rows are fetched at once hangs on how long they take: of several lists the best counts.
TEST_P(SharedCallsTest, AListIsReadUnderOneLock) {
    std::vector<Strings> lists(10);
    for (Strings& list : lists) {
        MemoryDisk disk(image);
        Connection station;
        open(station, disk);
        static_cast<void>(answer(station, "select nome from bancos", "nome"));
        station.database().setSnapshotHold(std::chrono::hours(1));
        list = during(disk, [&] {
            EXPECT_EQ(answer(station,
                             "select * from (cheques inner join cliente_fornecedor on "
                             "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on "
                             "cheques.banco=bancos.codigo order by cheques.lancamento",
                             "lancamento"),
                      (Strings{"1", "2", "3", "4", "5", "6"}));
        });
        std::erase(list, "wants R?"); // every few thousandths of a second
    }
    EXPECT_THAT(lists, Contains(Strings{"R", "R"}));
}

TEST_P(SharedCallsTest, AChequeIsEnteredUnderFourLocks) {
    MemoryDisk disk(image);
    Connection station;
    open(station, disk);
    station.database().setSnapshotHold(std::chrono::hours(1));
    Recordset cheques;
    cheques.Open("cheques", station);
    const auto enter = [&] {
        ado::Transaction saving(station);
        cheques.AddNew();
        cheques["numero"] = "000123";
        cheques.Update();
        saving.commit();
    };
    enter();                          // makes the journal
    std::vector<Strings> entered(10); // every half second it is looked around besides
    for (Strings& one : entered)
        one = during(disk, enter);
    EXPECT_THAT(entered, Contains(Strings{"W", "users?", "R", "O", "gate", "marks?", "gate", "O",
                                          "R", "wants W?", "W"}));
}

} // namespace
