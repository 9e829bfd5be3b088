#include "jet/database/UnitOfWork.h"

#include <utility>

namespace jet {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A change is written no later than that, or when its program next looks (flushIfDue): on the disk
/// within half a second.
constexpr milliseconds kLongestGathered{350};
/// So often who gathers changes asks whether another station waits to write.
constexpr milliseconds kWaitingEvery{10};

} // namespace

// ---- states -----------------------------------------------------------------------------------

void UnitOfWork::require(Event event) const {
    if (!next(state_, event))
        throw Error(Errc::misuse,
                    isOpen() ? "Já há uma transação aberta." : "Não há transação aberta.");
}

/// Once nothing waits to be written any more the pager's transaction and the turn end.
void UnitOfWork::step(Event event) noexcept {
    state_ = *next(state_, event);
    if (state_ != State::openOnGathered)
        savepoint_.reset();
    if (!isOpen()) {
        changes_ = 0;
        catalogChanged_ = false;
    }
    if (state_ == State::idle)
        finish();
}

void UnitOfWork::finish() noexcept {
    pager_.rollback();
    gathered_ = 0;
    giveBackTurn();
}

void UnitOfWork::giveBackTurn() noexcept {
    if (turns_)
        turns_->endWriting();
}

// ---- changes ----------------------------------------------------------------------------------

UnitOfWork::Change::Change(UnitOfWork& work) : work_(work) {
    if (work.changing_ == 0) {
        work.flushIfDue();
        work.pager_.claim();
        if (!work.pager_.inTransaction())
            work.pager_.begin();
    }
    ++work.changing_;
}

UnitOfWork::Change::~Change() {
    if (--work_.changing_ == 0 && work_.state_ == State::idle)
        work_.finish(); // it has changed nothing
}

void UnitOfWork::keep(Pager::Statement& undo) {
    undo.keep();
    if (running_ > 1)
        return;
    if (isOpen())
        ++changes_;
    else
        gather(Event::change, 1);
}

void UnitOfWork::gather(Event event, std::uint64_t changes) noexcept {
    if (state_ == State::idle || state_ == State::open)
        gatheredSince_ = steady_clock::now();
    gathered_ += changes;
    step(event);
}

// ---- transactions -----------------------------------------------------------------------------

void UnitOfWork::begin() {
    require(Event::begin);
    if (state_ == State::gathering)
        flush();
    else
        flushIfDue();
    if (state_ == State::idle)
        pager_.begin();
    else
        savepoint_.emplace(pager_);
    step(Event::begin);
}

void UnitOfWork::commit() {
    require(Event::commit);
    write();
    step(Event::commit);
}

void UnitOfWork::commitLater() {
    require(Event::commitLater);
    if (catalogChanged_)
        return commit();
    if (!pager_.hasChanges())
        return rollback();
    if (savepoint_)
        savepoint_->keep();
    gather(Event::commitLater, changes_);
    flushIfDue();
}

void UnitOfWork::rollback() {
    require(Event::rollback);
    step(Event::rollback);
}

// ---- what is gathered -------------------------------------------------------------------------

void UnitOfWork::write() {
    if (turns_ && pager_.hasChanges())
        turns_->beginWriting(); // given back if an earlier attempt failed
    pager_.commit();
    written_ += std::exchange(gathered_, 0) + std::exchange(changes_, 0);
}

void UnitOfWork::flush() {
    if (!isGathering())
        return;
    flushing_ = true;
    try {
        write();
    } catch (const Error& error) {
        flushing_ = false;
        // What another program has overtaken can never be written.
        if (error.code() == Errc::conflict)
            discard();
        else
            setAside();
        throw;
    } catch (...) {
        flushing_ = false;
        setAside();
        throw;
    }
    flushing_ = false;
    step(Event::flush);
}

/// What couldn't be written waits for the next attempt, and keeps nobody waiting until then.
void UnitOfWork::setAside() noexcept {
    gatheredSince_ = steady_clock::now();
    giveBackTurn();
}

void UnitOfWork::flushIfDue() {
    // The program's clock may strike while the wait hook lets its window be painted.
    if (!isGathering() || flushing_ || changing_ > 0)
        return;
    if (turns_ && turns_->isTakenByOther())
        return; // set aside: it would wait
    const auto now = steady_clock::now();
    bool due = now - gatheredSince_ >= kLongestGathered;
    if (!due && turns_ && now - askedForWaiting_ >= kWaitingEvery) {
        askedForWaiting_ = now;
        due = turns_->isAwaited();
    }
    if (due)
        flush();
}

void UnitOfWork::discard() noexcept {
    if (isGathering())
        step(Event::discard);
}

/// The turn stays with who is just taking it.
void UnitOfWork::overtaken() noexcept {
    if (state_ == State::idle || state_ == State::open)
        return;
    untold_ = true;
    pager_.rollback();
    savepoint_.reset();
    gathered_ = 0;
    state_ = *next(state_, Event::overtaken);
    if (isOpen())
        pager_.begin();
}

void UnitOfWork::tellOvertaken() {
    if (std::exchange(untold_, false))
        throw Error(Errc::conflict,
                    "As últimas alterações feitas aqui foram desfeitas: enquanto não podiam ser "
                    "gravadas, outra estação alterou o banco de dados.");
}

} // namespace jet
