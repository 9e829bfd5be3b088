#pragma once

#include "jet/page/Pager.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <type_traits>

namespace jet {

/// What has been changed in an open file and isn't on the disk yet: what of it belongs together,
/// and when it is written.
///
/// Changes outside an explicit transaction, and transactions that commitLater() ends, are gathered:
/// one transaction for the disk and for the other stations, written by flush(). The turn to write
/// is taken by the first change and given back when the unit is idle again, or when what was
/// gathered couldn't be written and waits for the next attempt. States and calls: see kSteps.
class UnitOfWork {
public:
    enum class State : std::uint8_t {
        idle,                  ///< all is written
        gathering,             ///< changes, each on its own
        gatheringTransactions, ///< and whole transactions, upon which the next may stand
        open,                  ///< an explicit transaction
        openOnGathered,        ///< the same: what was gathered stays if it is undone
    };
    /// A call that came to its end. One that throws leaves the state as it was; but Error{conflict}
    /// from flush(), which means that it can never be written, discards.
    enum class Event : std::uint8_t {
        begin,
        change, ///< one that is kept: see run()
        commit,
        commitLater,
        rollback,
        flush,
        discard,
        overtaken,
    };
    /// Nothing: refused, with Error{misuse}.
    [[nodiscard]] static constexpr std::optional<State> next(State state, Event event) noexcept {
        return kSteps[static_cast<std::size_t>(event)][static_cast<std::size_t>(state)];
    }

    explicit UnitOfWork(Pager& pager) noexcept : pager_(pager) {}
    UnitOfWork(const UnitOfWork&) = delete;
    UnitOfWork& operator=(const UnitOfWork&) = delete;
    /// As Pager::share(): `turns` outlives this object's last call.
    void share(Turns& turns) noexcept { turns_ = &turns; }

    [[nodiscard]] State state() const noexcept { return state_; }
    /// Whether an explicit transaction is open.
    [[nodiscard]] bool isOpen() const noexcept {
        return state_ == State::open || state_ == State::openOnGathered;
    }
    /// Of the changes kept, how many are on the disk and how many are gathered.
    [[nodiscard]] std::uint64_t written() const noexcept { return written_; }
    [[nodiscard]] std::uint64_t gathered() const noexcept { return gathered_; }

    /// Writes single changes that are gathered, and gathered transactions if they are due.
    /// @throws as flush().
    void begin();
    /// @throws as Pager::commit(): the transaction is still open.
    void commit();
    /// As commit() if the catalog was changed: who looks for a table must not find one that may yet
    /// be undone. As rollback() if nothing was.
    /// @throws as flush() if what is gathered is due.
    void commitLater();
    void rollback();

    /// Writes what is gathered. No effect while an explicit transaction is open.
    /// @throws as Pager::claim() and Pager::commit(). It stays gathered, without the turn to write;
    ///         after Error{conflict} it is undone.
    void flush();
    /// The same if the oldest of it is to be on the disk by now, or another station waits; but not
    /// while another has the turn, nor in the middle of a change.
    void flushIfDue();
    /// Undoes what is gathered. No effect while an explicit transaction is open.
    void discard() noexcept;
    /// Another has written while what is gathered here didn't have the turn: it is undone. An open
    /// transaction goes on; it can have changed nothing yet. Before the file is read again.
    void overtaken() noexcept;
    /// After that, once. @throws Error{conflict}.
    void tellOvertaken();

    /// The open transaction, if there is one, has changed the catalog.
    void noteCatalogChange() noexcept { catalogChanged_ = isOpen(); }
    [[nodiscard]] bool hasChangedCatalog() const noexcept { return catalogChanged_; }

    /// One change, or several that belong together: while it lives nobody else changes the file,
    /// and what is read is the newest. They nest.
    class Change {
    public:
        /// @throws as Pager::claim().
        explicit Change(UnitOfWork& work);
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;
        ~Change();

    private:
        UnitOfWork& work_;
    };

    /// While one lives, changes are parts of another one and not counted.
    class Part {
    public:
        explicit Part(UnitOfWork& work) noexcept : work_(work) { ++work.running_; }
        Part(const Part&) = delete;
        Part& operator=(const Part&) = delete;
        ~Part() { --work_.running_; }

    private:
        UnitOfWork& work_;
    };

    /// Runs one change: all of it happens and is kept, or nothing. One inside another is a part of
    /// that: the outer one may still undo it.
    template <class Body>
    auto run(Body&& change) {
        const Change changing(*this);
        const Part part(*this);
        Pager::Statement undo(pager_);
        if constexpr (std::is_void_v<decltype(change())>) {
            change();
            keep(undo);
        } else {
            auto result = change();
            keep(undo);
            return result;
        }
    }

private:
    using Row = std::array<std::optional<State>, 5>;
    static constexpr std::array<Row, 8> kSteps = [] {
        using enum State;
        constexpr std::optional<State> no;
        constexpr State trans = gatheringTransactions;
        // clang-format off
        return std::array<Row, 8>{{
            // from idle, gathering, gatheringTransactions, open,   openOnGathered
            {{open,       open,      openOnGathered,        no,     no}},             // begin
            {{gathering,  gathering, trans,                 open,   openOnGathered}}, // change
            {{no,         no,        no,                    idle,   idle}},           // commit
            {{no,         no,        no,                    trans,  trans}},          // commitLater
            {{no,         no,        no,                    idle,   trans}},          // rollback
            {{idle,       idle,      idle,                  open,   openOnGathered}}, // flush
            {{idle,       idle,      idle,                  open,   openOnGathered}}, // discard
            {{idle,       idle,      idle,                  open,   open}},           // overtaken
        }};
        // clang-format on
    }();

    [[nodiscard]] bool isGathering() const noexcept {
        return state_ == State::gathering || state_ == State::gatheringTransactions;
    }
    void require(Event event) const;
    void step(Event event) noexcept;
    void finish() noexcept;
    void keep(Pager::Statement& undo);
    void gather(Event event, std::uint64_t changes) noexcept;
    void write();
    void setAside() noexcept;
    void giveBackTurn() noexcept;

    Pager& pager_;
    Turns* turns_ = nullptr;
    State state_ = State::idle;
    std::optional<Pager::Statement> savepoint_; ///< openOnGathered: where the gathered ends
    std::uint64_t written_ = 0;
    std::uint64_t gathered_ = 0;
    std::uint64_t changes_ = 0; ///< of the open transaction
    bool catalogChanged_ = false;
    bool untold_ = false; ///< see tellOvertaken()
    bool flushing_ = false;
    unsigned changing_ = 0; ///< changes that live, one inside the other
    unsigned running_ = 0;  ///< those that are run
    std::chrono::steady_clock::time_point gatheredSince_{};
    std::chrono::steady_clock::time_point askedForWaiting_{};
};

} // namespace jet
