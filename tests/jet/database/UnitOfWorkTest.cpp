// What each call makes of each state of the changes that aren't on the disk yet: what is seen, what
// the disk has, who has the turn to write.
#include "jet/database/UnitOfWork.h"

#include "jet/MemoryDisk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

using namespace jet;

namespace {

using State = UnitOfWork::State;
using Event = UnitOfWork::Event;

constexpr std::array kStates = {State::idle, State::gathering, State::gatheringTransactions,
                                State::open, State::openOnGathered};

constexpr std::array kStateNames = {"Idle", "Gathering", "GatheringTransactions", "Open",
                                    "OpenOnGathered"};
std::string nameOfState(const testing::TestParamInfo<State>& test) {
    return kStateNames[static_cast<std::size_t>(test.param)];
}

/// The turn to write, and what is written in it, without stations.
class OneTurn final : public Turns {
public:
    explicit OneTurn(File& file) : file_(file) {}

    bool awaited = false;
    bool takenByOther = false;
    std::function<void()> onTaking;  ///< may throw
    std::function<void()> onWriting; ///< may throw

    void beginReading() override {}
    void endReading() noexcept override {}
    void beginOnSnapshot() override {}
    void breathe() noexcept override {}
    [[nodiscard]] bool keepsWriterWaiting() override { return false; }
    void beforeRead() override {}
    void verifyPage() override {}
    [[nodiscard]] bool inSection() const noexcept override { return false; }
    [[nodiscard]] bool disturbed() const noexcept override { return false; }

    void beginWriting() override {
        if (held_)
            return;
        if (onTaking)
            onTaking();
        held_ = true;
    }
    void endWriting() noexcept override { held_ = false; }
    [[nodiscard]] bool isWriting() const noexcept override { return held_; }
    [[nodiscard]] bool isAwaited() const override { return awaited; }
    [[nodiscard]] bool isTakenByOther() const override { return takenByOther; }
    void commit(const ChangedPages& changed) override {
        EXPECT_TRUE(held_);
        if (onWriting)
            onWriting();
        for (const ChangedPages::Page& page : changed.pages)
            file_.write(std::uint64_t{number(page.number)} * page.content.size(), page.content);
    }
    [[noreturn]] void refuseOvertaken() override { throw Error(Errc::conflict, "overtaken"); }
    [[nodiscard]] bool isBroken() const noexcept override { return false; }

private:
    File& file_;
    bool held_ = false;
};

/// A file of one page, of which one byte is changed: 1 by what is gathered, 2 by what is open.
class UnitsOfWork : public testing::Test {
protected:
    UnitsOfWork() {
        pager.share(turn);
        work.share(turn);
        turn.takenByOther = true; // then nothing is due, however long a step takes
    }

    void set(int value) {
        work.run([&] { pager.change(PageNo{0})[0] = static_cast<std::byte>(value); });
    }
    [[nodiscard]] int seen() { return std::to_integer<int>(pager.read(PageNo{0}).bytes()[0]); }
    [[nodiscard]] int stored() const {
        Bytes byte(1);
        File("/page", File::Mode::read, disk).read(0, byte);
        return std::to_integer<int>(byte[0]);
    }

    /// `changed`: whether what is open has changed anything.
    void bringTo(State state, bool changed = true) {
        if (state == State::gathering)
            set(1);
        if (state == State::gatheringTransactions || state == State::openOnGathered) {
            work.begin();
            set(1);
            work.commitLater();
        }
        if (state == State::open || state == State::openOnGathered) {
            work.begin();
            if (changed)
                set(2);
        }
        ASSERT_EQ(work.state(), state);
    }

    static std::optional<Errc> errorOf(const std::function<void()>& call) {
        try {
            call();
        } catch (const Error& error) {
            return error.code();
        }
        return std::nullopt;
    }
    void failWriting(Errc code) {
        turn.onWriting = [code] { throw Error(code, "the disk"); };
    }
    /// Nobody heard of it before the turn was to be taken.
    void letOtherWriteFirst() {
        turn.onTaking = [this] {
            turn.onTaking = {};
            work.overtaken();
            pager.refresh();
            work.tellOvertaken();
        };
    }

    mutable MemoryDisk disk{{{"/page", Bytes(4096)}}};
    Pager pager{File("/page", File::Mode::readWrite, disk), formatOf(Version::jet4), true};
    OneTurn turn{pager.file()};
    UnitOfWork work{pager};
};

/// After a call. Nothing: it is refused, and all stays as it was.
struct AfterCall {
    State state;
    int seen;
    int stored;
    bool turn;
};
constexpr auto kRefused = std::nullopt;

struct UnitCall {
    std::string name;
    Event event;
    std::function<void(UnitOfWork&)> make;
    std::vector<std::optional<AfterCall>> after; ///< in the order of kStates
};

class EachUnitCall : public UnitsOfWork,
                     public testing::WithParamInterface<std::tuple<UnitCall, std::size_t>> {};

const UnitCall kCalls[] = {
    {"Begin",
     Event::begin,
     [](UnitOfWork& work) { work.begin(); },
     {AfterCall{State::open, 0, 0, false}, AfterCall{State::open, 1, 1, false},
      AfterCall{State::openOnGathered, 1, 0, true}, kRefused, kRefused}},
    {"Commit",
     Event::commit,
     [](UnitOfWork& work) { work.commit(); },
     {kRefused, kRefused, kRefused, AfterCall{State::idle, 2, 2, false},
      AfterCall{State::idle, 2, 2, false}}                             },
    {"CommitLater",
     Event::commitLater,
     [](UnitOfWork& work) { work.commitLater(); },
     {kRefused, kRefused, kRefused, AfterCall{State::gatheringTransactions, 2, 0, true},
      AfterCall{State::gatheringTransactions, 2, 0, true}}             },
    {"Rollback",
     Event::rollback,
     [](UnitOfWork& work) { work.rollback(); },
     {kRefused, kRefused, kRefused, AfterCall{State::idle, 0, 0, false},
      AfterCall{State::gatheringTransactions, 1, 0, true}}             },
    {"Flush",
     Event::flush,
     [](UnitOfWork& work) { work.flush(); },
     {AfterCall{State::idle, 0, 0, false}, AfterCall{State::idle, 1, 1, false},
      AfterCall{State::idle, 1, 1, false}, AfterCall{State::open, 2, 0, true},
      AfterCall{State::openOnGathered, 2, 0, true}}                    },
    {"Discard",
     Event::discard,
     [](UnitOfWork& work) { work.discard(); },
     {AfterCall{State::idle, 0, 0, false}, AfterCall{State::idle, 0, 0, false},
      AfterCall{State::idle, 0, 0, false}, AfterCall{State::open, 2, 0, true},
      AfterCall{State::openOnGathered, 2, 0, true}}                    },
};

std::string nameOfCall(const testing::TestParamInfo<std::tuple<UnitCall, std::size_t>>& test) {
    const auto& [call, place] = test.param;
    return call.name + "When" + kStateNames[place];
}

INSTANTIATE_TEST_SUITE_P(, EachUnitCall,
                         testing::Combine(testing::ValuesIn(kCalls),
                                          testing::Range<std::size_t>(0, kStates.size())),
                         nameOfCall);

TEST_P(EachUnitCall, DoesInEachStateWhatTheTableSays) {
    const auto& [call, place] = GetParam();
    const State before = kStates[place];
    const std::optional<AfterCall>& after = call.after[place];
    bringTo(before);
    const int seenBefore = seen();
    const bool turnBefore = turn.isWriting();
    const auto error = errorOf([&, &made = call] { made.make(work); });
    EXPECT_EQ(UnitOfWork::next(before, call.event),
              after ? std::optional(after->state) : std::nullopt);
    EXPECT_EQ(error, after ? std::nullopt : std::optional(Errc::misuse));
    EXPECT_EQ(work.state(), after ? after->state : before);
    EXPECT_EQ(seen(), after ? after->seen : seenBefore);
    EXPECT_EQ(stored(), after ? after->stored : 0);
    EXPECT_EQ(turn.isWriting(), after ? after->turn : turnBefore);
    EXPECT_EQ(pager.inTransaction(), work.state() != State::idle);
}

class InEachState : public UnitsOfWork, public testing::WithParamInterface<State> {};
INSTANTIATE_TEST_SUITE_P(, InEachState, testing::ValuesIn(kStates), nameOfState);

TEST_P(InEachState, AChangeTakesTheTurnAndKeepsIt) {
    const State after = GetParam() == State::idle ? State::gathering : GetParam();
    EXPECT_EQ(UnitOfWork::next(GetParam(), Event::change), after);
    bringTo(GetParam(), false);
    set(3);
    EXPECT_EQ(work.state(), after);
    EXPECT_EQ(seen(), 3);
    EXPECT_EQ(stored(), 0);
    EXPECT_TRUE(turn.isWriting());
}

TEST_P(InEachState, AChangeThatFailsLeavesEverythingAsItWas) {
    bringTo(GetParam());
    const int before = seen();
    const bool turnBefore = turn.isWriting();
    EXPECT_EQ(errorOf([&] {
                  work.run([&] {
                      pager.change(PageNo{0})[0] = std::byte{3};
                      throw Error(Errc::rule, "no");
                  });
              }),
              Errc::rule);
    EXPECT_EQ(work.state(), GetParam());
    EXPECT_EQ(seen(), before);
    EXPECT_EQ(turn.isWriting(), turnBefore);
    EXPECT_EQ(pager.inTransaction(), GetParam() != State::idle);
}

TEST_P(InEachState, ChangesThatMakeUpOneAreKeptOrUndoneTogetherAndCountAsOne) {
    bringTo(GetParam(), false);
    const int before = seen();
    const std::uint64_t gathered = work.gathered();
    EXPECT_EQ(errorOf([&] {
                  work.run([&] {
                      set(3);
                      throw Error(Errc::rule, "no");
                  });
              }),
              Errc::rule);
    EXPECT_EQ(seen(), before);
    EXPECT_EQ(work.state(), GetParam());
    EXPECT_EQ(work.gathered(), gathered);
    work.run([&] {
        set(3);
        set(4);
    });
    EXPECT_EQ(seen(), 4);
    if (work.isOpen())
        work.commit();
    else
        work.flush();
    EXPECT_EQ(work.written(), gathered + 1);
    EXPECT_EQ(stored(), 4);
}

TEST_P(InEachState, AnotherWhoWritesFirstUndoesOnlyWhatIsGathered) {
    const bool isOpen = GetParam() == State::open || GetParam() == State::openOnGathered;
    const bool loses = GetParam() != State::idle && GetParam() != State::open;
    EXPECT_EQ(UnitOfWork::next(GetParam(), Event::overtaken), isOpen ? State::open : State::idle);
    // What is gathered is without the turn only after an attempt to write it.
    bringTo(GetParam() == State::openOnGathered ? State::gatheringTransactions : GetParam(), false);
    if (loses) {
        failWriting(Errc::io);
        EXPECT_EQ(errorOf([&] { work.flush(); }), Errc::io);
        turn.onWriting = {};
    }
    if (GetParam() == State::openOnGathered)
        work.begin();
    ASSERT_EQ(work.state(), GetParam());
    ASSERT_FALSE(turn.isWriting());

    letOtherWriteFirst();
    EXPECT_EQ(errorOf([&] { set(3); }), loses ? std::optional(Errc::conflict) : std::nullopt);
    if (loses) {
        EXPECT_EQ(work.state(), isOpen ? State::open : State::idle);
        EXPECT_EQ(seen(), 0);
        EXPECT_EQ(work.gathered(), 0U);
        EXPECT_EQ(pager.inTransaction(), isOpen);
        set(3); // told once, and work goes on
    }
    isOpen ? work.commit() : work.flush();
    EXPECT_EQ(stored(), 3);
    EXPECT_EQ(work.written(), 1U);
}

// ---- what couldn't be written -----------------------------------------------------------------

TEST_F(UnitsOfWork, ThatCannotBeWrittenStaysGatheredWithoutTheTurn) {
    for (const State state : {State::gathering, State::gatheringTransactions}) {
        bringTo(state);
        failWriting(Errc::full);
        EXPECT_EQ(errorOf([&] { work.flush(); }), Errc::full);
        EXPECT_EQ(work.state(), state);
        EXPECT_EQ(seen(), 1);
        EXPECT_FALSE(turn.isWriting());
        turn.onWriting = {};
        work.flush(); // takes the turn anew
        EXPECT_EQ(work.state(), State::idle);
        EXPECT_EQ(stored(), 1);
        set(0);
        work.flush();
    }
}

TEST_F(UnitsOfWork, ThatCanNeverBeWrittenIsUndone) {
    for (const State state : {State::gathering, State::gatheringTransactions}) {
        bringTo(state);
        failWriting(Errc::conflict);
        EXPECT_EQ(errorOf([&] { work.flush(); }), Errc::conflict);
        turn.onWriting = {};
        EXPECT_EQ(work.state(), State::idle);
        EXPECT_EQ(seen(), 0);
        EXPECT_EQ(work.gathered(), 0U);
        EXPECT_FALSE(turn.isWriting());
    }
}

TEST_F(UnitsOfWork, StandsStillWhenTheDiskGivesNoMemory) {
    bringTo(State::gathering);
    turn.onWriting = [] { throw std::bad_alloc(); };
    EXPECT_THROW(work.flush(), std::bad_alloc);
    EXPECT_EQ(work.state(), State::gathering);
    EXPECT_FALSE(turn.isWriting());
}

TEST_F(UnitsOfWork, ThatCannotBeCommittedIsStillOpen) {
    for (const State state : {State::open, State::openOnGathered}) {
        bringTo(state);
        for (const Errc code : {Errc::locked, Errc::conflict}) {
            failWriting(code);
            EXPECT_EQ(errorOf([&] { work.commit(); }), code);
            EXPECT_EQ(work.state(), state);
            EXPECT_EQ(seen(), 2);
        }
        turn.onWriting = {};
        work.commit();
        EXPECT_EQ(stored(), 2);
        set(0);
        work.flush();
    }
}

TEST_F(UnitsOfWork, ThatCannotBeWrittenAheadOfATransactionLetsNoneBegin) {
    bringTo(State::gathering);
    failWriting(Errc::io);
    EXPECT_EQ(errorOf([&] { work.begin(); }), Errc::io);
    EXPECT_EQ(work.state(), State::gathering);
    EXPECT_EQ(seen(), 1);
}

// ---- when it is due ---------------------------------------------------------------------------

TEST_F(UnitsOfWork, IsWrittenWhenAnotherWaits) {
    turn.takenByOther = false;
    bringTo(State::gathering);
    turn.awaited = true;
    work.flushIfDue();
    EXPECT_EQ(work.state(), State::idle);
    EXPECT_EQ(stored(), 1);
}

TEST_F(UnitsOfWork, IsNotDueWhileATransactionIsOpenOrAnotherWrites) {
    turn.awaited = true;
    for (const State state :
         {State::gathering, State::gatheringTransactions, State::open, State::openOnGathered}) {
        bringTo(state); // and another has the turn
        work.flushIfDue();
        EXPECT_EQ(work.state(), state);
        turn.takenByOther = !work.isOpen();
        work.flushIfDue();
        EXPECT_EQ(work.state(), state);
        EXPECT_EQ(stored(), 0);
        turn.takenByOther = true;
        if (work.isOpen())
            work.rollback();
        work.discard();
    }
}

TEST_F(UnitsOfWork, IsNotWrittenInTheMiddleOfAChangeNorOfItsWriting) {
    turn.takenByOther = false;
    {
        const UnitOfWork::Change around(work);
        set(1);
        turn.awaited = true;
        work.flushIfDue();
        EXPECT_EQ(work.state(), State::gathering);
    }
    int writings = 0;
    turn.onWriting = [&] {
        ++writings;
        work.flushIfDue();
    };
    work.flush();
    EXPECT_EQ(writings, 1);
    EXPECT_EQ(stored(), 1);
}

TEST_F(UnitsOfWork, IsWrittenBeforeATransactionBeginsIfAnotherWaits) {
    bringTo(State::gatheringTransactions);
    turn.takenByOther = false;
    turn.awaited = true;
    work.begin();
    EXPECT_EQ(work.state(), State::open);
    EXPECT_EQ(stored(), 1);
}

// ---- ends -------------------------------------------------------------------------------------

TEST_F(UnitsOfWork, ThatChangedNothingKeepsNoTurn) {
    { const UnitOfWork::Change nothing(work); }
    EXPECT_FALSE(turn.isWriting());
    work.begin();
    { const UnitOfWork::Change claimed(work); }
    EXPECT_TRUE(turn.isWriting());
    work.commitLater();
    EXPECT_EQ(work.state(), State::idle);
    EXPECT_FALSE(turn.isWriting());
}

TEST_F(UnitsOfWork, OnTheCatalogIsNotGathered) {
    work.noteCatalogChange();
    EXPECT_FALSE(work.hasChangedCatalog()) << "outside a transaction";
    for (const State state : {State::open, State::openOnGathered}) {
        bringTo(state);
        work.noteCatalogChange();
        EXPECT_TRUE(work.hasChangedCatalog());
        work.commitLater();
        EXPECT_EQ(work.state(), State::idle);
        EXPECT_FALSE(work.hasChangedCatalog());
        EXPECT_EQ(stored(), 2);
        set(0);
        work.flush();
        bringTo(state);
        work.noteCatalogChange();
        work.rollback();
        EXPECT_FALSE(work.hasChangedCatalog());
        work.discard();
    }
}

TEST_F(UnitsOfWork, IsCountedByTheChangesThatAreKept) {
    bringTo(State::openOnGathered);
    set(3);
    EXPECT_EQ(work.gathered(), 1U);
    work.rollback();
    EXPECT_EQ(work.gathered(), 1U);
    bringTo(State::openOnGathered); // one more gathered, one open
    EXPECT_EQ(work.gathered(), 2U);
    work.commitLater();
    EXPECT_EQ(work.gathered(), 3U);
    EXPECT_EQ(work.written(), 0U);
    work.begin();
    set(4);
    set(5);
    work.commit();
    EXPECT_EQ(work.gathered(), 0U);
    EXPECT_EQ(work.written(), 5U);
}

TEST(UnitOfWorkAlone, WorksInAFileThatNobodyElseKnows) {
    MemoryDisk disk({
        {"/page", Bytes(4096)}
    });
    Pager pager(File("/page", File::Mode::readWrite, disk), formatOf(Version::jet4), true);
    UnitOfWork work(pager);
    work.begin();
    work.run([&] { pager.change(PageNo{0})[0] = std::byte{7}; });
    work.commit();
    EXPECT_EQ(work.state(), State::idle);
    EXPECT_EQ(disk.image().at("/page")[0], std::byte{7});
}

} // namespace
