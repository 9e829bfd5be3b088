// What recordsets make of a disk that fails, and of another station that writes, at whatever
// moment.
#include "ado/ShopInMemory.h"
#include "jet/TableDefinition.h"
#include "jet/Waiting.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <memory>
#include <set>

namespace {

using ado::Connection;
using ado::Recordset;
using jet::Errc;
using Strings = std::vector<std::string>;

class DiskTroubleTest : public ShopInMemory {};
INSTANTIATE_TEST_SUITE_P(, DiskTroubleTest, testing::Values(jet::Version::jet4));

TEST_P(DiskTroubleTest, WhatIsReadIsRightOrAnErrorWhicheverCallOfTheDiskFails) {
    const std::pair<const char*, std::function<Strings(Connection&)>> readings[] = {
        {"a whole table, searched",
         [](Connection& station) {
             Recordset rows;
             rows.Open("cheques", station);
             rows.Find("numero='A-77'");
             Strings found{rows["lancamento"].text()};
             rows.MoveLast();
             found.push_back(rows["numero"].text());
             rows.MovePrevious();
             found.push_back(rows["numero"].text());
             return found;
         }},
        {"a list, filtered, sorted and asked for anew",
         [](Connection& station) {
             Recordset rows;
             rows.Open("select * from cheques where bompara>#01/05/2024#", station);
             rows.setFilter("valor>1");
             rows.setSort("numero desc");
             rows.Requery();
             rows.Find("cliente=1");
             return Strings{rows["lancamento"].text(), std::to_string(rows.RecordCount())};
         }},
        {"a join",
         [](Connection& station) {
             return answer(station,
                           "select * from cheques inner join bancos on "
                           "cheques.banco=bancos.codigo order by lancamento",
                           "bancos.nome");
         }},
        {"sums",
         [](Connection& station) {
             return answer(station,
                           "select cliente, sum(valor) as total from cheques group by cliente",
                           "total");
         }},
        {"rows of which the second is long in coming",
         [](Connection& station) {
             return answer(station,
                           "select b1.codigo from bancos as b1, bancos as b2, bancos as b3, bancos "
                           "as b4, bancos as b5, bancos as b6, bancos as b7, bancos as b8, bancos "
                           "as b9 where +b2.codigo+b3.codigo+b4.codigo+b5.codigo+b6.codigo+"
                           "b7.codigo+b8.codigo+b9.codigo=8 and +b1.codigo<>2",
                           "codigo");
         }},
    };
    for (const auto& [name, read] : readings) {
        SCOPED_TRACE(name);
        Strings expected;
        {
            MemoryDisk disk(image);
            Connection station;
            open(station, disk);
            expected = read(station);
        }
        bool met = true;
        for (std::uint64_t call = 1; met; ++call) {
            MemoryDisk disk(image);
            Connection station;
            open(station, disk);
            const std::uint64_t before = disk.calls();
            disk.failFrom(before + call, false, EIO);
            try {
                EXPECT_EQ(read(station), expected) << call;
            } catch (const jet::Error& error) {
                EXPECT_EQ(error.code(), Errc::io) << call << ": " << error.what();
            }
            met = disk.calls() >= before + call;
            disk.failNoMore();
            EXPECT_EQ(read(station), expected) << "afterwards, " << call;
        }
    }
}

TEST_P(DiskTroubleTest, AConnectionThatCantWriteAtItsEndGoesInSilence) {
    MemoryDisk disk(image);
    {
        Connection station;
        open(station, disk);
        Recordset rows;
        rows.Open("bancos", station);
        rows["nome"] = "perdido";
        rows.Update();
        disk.failFrom(disk.calls() + 1, true, EIO);
    }
    disk.failNoMore();
    Connection station;
    open(station, disk);
    EXPECT_EQ(answer(station, "bancos", "nome").front(), "Banco do Norte");
}

TEST_P(DiskTroubleTest, ClosingTellsThatWhatIsGatheredCantBeWritten) {
    for (const bool fails : {false, true}) {
        MemoryDisk disk(image);
        Connection station;
        open(station, disk);
        Recordset rows;
        rows.Open("bancos", station);
        const auto rename = [&](const char* name) {
            rows["nome"] = name;
            rows.Update();
        };
        station.BeginTrans();
        rename("guardado");
        station.commitLater();
        station.BeginTrans();
        rename("perdido");
        if (fails) {
            disk.failFrom(disk.calls() + 1, true, EIO);
            EXPECT_NE(errorOf([&] { station.Close(); }), Errc::misuse);
        } else {
            station.Close();
        }
        EXPECT_EQ(station.State(), ado::State::Closed);
        disk.failNoMore();
        open(station, disk);
        EXPECT_EQ(answer(station, "bancos", "nome").front(), fails ? "Banco do Norte" : "guardado");
    }
}

TEST_P(DiskTroubleTest, WhoOnlyReadsIsNotToldThatWhatIsDueCantBeWritten) {
    MemoryDisk disk(image);
    Connection station;
    open(station, disk);
    Recordset rows;
    rows.Open("bancos", station);
    rows["nome"] = "Meu";
    rows.Update();
    int tried = 0;
    disk.failing = [&](const std::string& name) {
        const bool journal = name.ends_with("-journal");
        tried += journal ? 1 : 0;
        return journal;
    };
    while (tried == 0) // until it is old enough to be due
        rows.MoveFirst();
    EXPECT_EQ(rows["nome"].text(), "Meu");
    EXPECT_NE(errorOf([&] { station.flush(); }), Errc::conflict);
    disk.failing = {};
    station.flush();
    Connection other;
    open(other, disk);
    EXPECT_EQ(answer(other, "bancos", "nome").front(), "Meu");
}

/// Two stations on one disk: the second does something just when the first, in the middle of its
/// own work, is about to look at the file for the n-th time.
class AtAnyMoment : public DiskTroubleTest {
protected:
    using Work = std::function<void(Recordset&)>;
    struct Both {
        explicit Both(const AtAnyMoment& shop) : disk(shop.image) {
            shop.open(station, disk);
            shop.open(other, disk);
        }
        MemoryDisk disk;
        Connection station;
        Connection other;
    };
    static constexpr const char* kList = "select * from bancos where cod_banco<1000 order by nome";

    void expectTheNewest(const Work& theirs, const Work& mine) const {
        bool met = true;
        for (int look = 1; met; ++look) {
            SCOPED_TRACE(look);
            Both both(*this);
            Recordset list;
            list.Open(kList, both.station);
            Recordset whole;
            whole.Open("bancos", both.station);
            whole["nome"] = "Aa";
            whole.Update();
            both.station.flush();
            met = false;
            atLook(both.disk, look, [&] {
                met = true;
                Recordset banks;
                banks.Open("bancos", both.other);
                theirs(banks);
                both.other.flush();
            });
            try {
                mine(list);
            } catch (const jet::Error& error) {
                EXPECT_EQ(error.code(), Errc::conflict) << error.what();
                list.CancelUpdate();
            }
            both.disk.onRead = {};
            both.disk.onLock = {};
            both.station.flush();
            list.Requery();
            const Strings stored = answer(both.other, kList, "nome");
            EXPECT_EQ(column(list, "nome"), stored);
            EXPECT_EQ(answer(both.station, kList, "nome"), stored);
            EXPECT_EQ(answer(both.other, "bancos", "nome").size(),
                      static_cast<std::size_t>(whole.RecordCount()));
        }
    }

    /// Before the `look`-th look at the file or for a lock of those that hold nothing of the file.
    static void atLook(MemoryDisk& disk, int look, const std::function<void()>& work) {
        struct State {
            std::set<std::uint64_t> held;
            int looks = 0;
        };
        const auto state = std::make_shared<State>();
        const auto pass = [=] {
            if (state->looks < look && state->held.empty() && ++state->looks == look)
                work();
        };
        disk.onRead = [=](std::uint64_t) { pass(); };
        disk.onLock = [=](std::uint64_t byte) {
            pass();
            if (!state->held.insert(byte).second)
                state->held.erase(byte);
        };
    }
};
INSTANTIATE_TEST_SUITE_P(, AtAnyMoment, testing::Values(jet::Version::jet4));

TEST_P(AtAnyMoment, WhatAnotherStationDoesIsSeenOrAConflict) {
    const std::pair<const char*, Work> theirs[] = {
        {"a row is deleted",
         [](Recordset& banks) {
             banks.Find("codigo=2");
             banks.Delete();
         }},
        {"a row gets another place",
         [](Recordset& banks) {
             banks.Find("codigo=3");
             banks["nome"] = "Zz";
             banks.Update();
         }},
        {"a row is added",
         [](Recordset& banks) {
             banks.AddNew();
             banks["cod_banco"] = 5;
             banks["nome"] = "Bb";
             banks.Update();
         }},
    };
    const std::pair<const char*, Work> mine[] = {
        {"asks anew",        [](Recordset& list) { list.Requery(); }                },
        {"walks to the end",
         [](Recordset& list) {
             for (; !list.EOF(); list.MoveNext())
                 EXPECT_FALSE(list["nome"].text().empty());
         }                                                                          },
        {"looks for a row",
         [](Recordset& list) {
             list.Find("nome='Agrário'");
             if (!list.EOF())
                 list["cod_banco"] = 34;
             list.Update();
         }                                                                          },
        {"deletes the last", [](Recordset& list) { list.MoveLast(), list.Delete(); }},
        {"adds one",
         [](Recordset& list) {
             list.AddNew();
             list["cod_banco"] = 6;
             list["nome"] = "Cc";
             list.Update();
         }                                                                          },
    };
    for (const auto& [what, work] : theirs) {
        SCOPED_TRACE(what);
        for (const auto& [ours, reaction] : mine) {
            SCOPED_TRACE(ours);
            expectTheNewest(work, reaction);
        }
    }
}

TEST_P(AtAnyMoment, WhatWasShownIsNotChangedInAnotherState) {
    const std::pair<const char*, std::function<void(Recordset&, const ado::Shown&)>> mine[] = {
        {"deleted", [](Recordset& banks, const ado::Shown& shown) { banks.Delete(shown); }},
        {"edited",
         [](Recordset& banks,            const ado::Shown& shown) {
             banks.Edit(shown);
             banks["nome"] = "Meu";
             banks.Update();
         }                                                   },
    };
    for (const auto& [what, change] : mine) {
        SCOPED_TRACE(what);
        bool met = true;
        for (int look = 1; met; ++look) {
            SCOPED_TRACE(look);
            Both both(*this);
            Recordset banks;
            banks.Open("bancos", both.station);
            banks.Find("codigo=2");
            const ado::Shown shown = banks.shown();
            met = false;
            atLook(both.disk, look, [&] {
                met = true;
                Recordset theirs;
                theirs.Open("bancos", both.other);
                theirs.Find("codigo=2");
                theirs["cod_banco"] = 77;
                theirs.Update();
                both.other.flush();
            });
            bool done = true;
            try {
                change(banks, shown);
            } catch (const jet::Error& error) {
                EXPECT_EQ(error.code(), Errc::conflict) << error.what();
                banks.CancelUpdate();
                done = false;
            }
            both.disk.onRead = {};
            both.disk.onLock = {};
            both.station.flush();
            EXPECT_NE(done, met);
            if (met) {
                EXPECT_EQ(answer(both.other, "bancos", "cod_banco").at(1), "77");
            }
        }
    }
}

/// A list of cheques on two pages, of which the second row takes long to be looked at.
class LongList : public AtAnyMoment {
protected:
    LongList() {
        MemoryDisk disk(image);
        Connection station;
        open(station, disk);
        Recordset cheques;
        cheques.Open("cheques", station);
        for (int i = 0; i < 14; ++i) {
            cheques.AddNew();
            cheques["observacao"] = std::string(250, 'x');
            cheques.Update();
        }
        expected = column(cheques, "lancamento");
        auto scan = station.database().table("cheques").scan();
        EXPECT_TRUE(scan.first());
        first = scan.id().page;
        EXPECT_TRUE(scan.last());
        last = scan.id().page;
        EXPECT_NE(first, last);
        station.Close();
        image = disk.image();
    }
    static constexpr const char* kLong =
        "select * from cheques where lancamento<>2 or (select count(*) from bancos as b1, bancos "
        "as b2, bancos as b3, bancos as b4, bancos as b5, bancos as b6, bancos as b7, bancos as "
        "b8, bancos as b9)>0";

    Strings expected;
    jet::PageNo first{};
    jet::PageNo last{};
};
INSTANTIATE_TEST_SUITE_P(, LongList, testing::Values(jet::Version::jet4));

TEST_P(LongList, LetsOthersWriteInBetweenWhoWaitForIt) {
    // Of the pages read, and of what keeps others from writing meanwhile.
    const auto events = [&](bool awaited) {
        MemoryDisk disk(image);
        Connection station;
        open(station, disk);
        std::string met;
        std::unique_ptr<jet::Disk::Handle> writer;
        jet::setWaitHook([&] { writer.reset(); });
        disk.onRead = [&](std::uint64_t at) {
            const auto page = static_cast<jet::PageNo>(at / jet::formatOf(GetParam()).pageSize);
            met += page == first ? "1" : page == last ? "2" : "";
            if (page != first || !awaited)
                return;
            int error = 0;
            writer = disk.open(folder / "automacao.ldb", jet::Disk::Mode::readWrite, error);
            EXPECT_EQ(writer->lock(jet::Disk::Lock::exclusive, 0x70001003, 1), 1);
        };
        disk.onLock = [&](std::uint64_t byte) {
            constexpr std::uint64_t kReading = 0x70001000;
            met += byte == kReading ? "r" : "";
        };
        // So long that it is asked several times whether somebody waits.
        std::string longer = kLong;
        longer.insert(longer.find(")>0"), ",bancos as b10,bancos as b11");
        Recordset list;
        list.Open(longer, station);
        disk.onRead = {};
        disk.onLock = {};
        jet::setWaitHook({});
        return met;
    };
    EXPECT_THAT(events(true), testing::HasSubstr("1rr2"));
    EXPECT_THAT(events(false), testing::HasSubstr("12"));
}

TEST_P(LongList, HasEachRowOnceWheneverOthersWrite) {
    bool met = true;
    for (int look = 1; met; ++look) {
        SCOPED_TRACE(look);
        Both both(*this);
        met = false;
        atLook(both.disk, look, [&] {
            met = true;
            Recordset banks;
            banks.Open("bancos", both.other);
            banks["nome"] = "Aa";
            banks.Update();
            both.other.flush();
        });
        Recordset list;
        list.Open(kLong, both.station, ado::CursorType::Keyset); // which isn't asked for anew
        both.disk.onRead = {};
        both.disk.onLock = {};
        EXPECT_EQ(column(list, "lancamento"), expected);
    }
}

} // namespace
