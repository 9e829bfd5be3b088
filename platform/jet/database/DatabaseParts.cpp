#include "jet/database/DatabaseParts.h"

#include "jet/disk/FolderAdvice.h"

#include <utility>

namespace jet {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A change is written no later than that, or when its program next looks (flushIfDue): on the disk
/// within half a second.
constexpr milliseconds kLongestPending{350};
/// So often who gathers changes asks whether another station waits to write.
constexpr milliseconds kWaitingEvery{10};

} // namespace

void Database::Parts::share(bool mayWrite, std::function<void()> onNews) {
    sharing.emplace(pager.file(), pager.format(), [this, onNews = std::move(onNews)] {
        if (pendingSince)
            dropGathered();
        pager.refresh();
        onNews();
        if (std::exchange(overtaken_, false))
            throw Error(Errc::conflict,
                        "As últimas alterações feitas aqui foram desfeitas: enquanto não podiam "
                        "ser gravadas, outra estação alterou o banco de dados.");
    });
    sharing->enter(mayWrite);
    pager.refresh();
    pager.share(*sharing);
}

const std::optional<std::string>& Database::Parts::told() noexcept {
    try {
        if (sharing && !std::exchange(lookedAround_, true))
            advice_ = adviceOn(path, pager.file().disk());
        told_ = sharing ? sharing->notice() : std::nullopt;
        if (advice_)
            told_ = told_ ? *told_ + "\n\n" + *advice_ : *advice_;
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch)
        // Without memory for a sentence there is none.
    }
    return told_;
}

void Database::Parts::lose(Entry& entry, const Error& why) {
    lost.push_back(nullptr);
    entry.table->lose(why);
    lost.back() = std::move(entry.table);
}

/// An explicit transaction that stands on them goes on; it has changed nothing yet, or others would
/// have been kept out.
void Database::Parts::dropGathered() noexcept {
    overtaken_ = true;
    pager.rollback();
    onGathered.reset();
    gathersTransactions = false;
    pendingSince.reset();
    tally.gathered = 0;
    if (explicitTransaction)
        pager.begin();
}

Database::Parts::Change::Change(Parts& parts) : parts_(parts) {
    if (parts.changes_ == 0) {
        if (parts.readOnly)
            throw Error(Errc::readOnly, *parts.readOnly);
        parts.flushIfDue();
        parts.pager.claim();
        if (!parts.pager.inTransaction())
            parts.pager.begin();
    }
    ++parts.changes_;
}

Database::Parts::Change::~Change() {
    if (--parts_.changes_ == 0 && !parts_.explicitTransaction && !parts_.pendingSince)
        parts_.end(); // it has changed nothing
}

void Database::Parts::end() noexcept {
    pager.rollback();
    onGathered.reset();
    explicitTransaction = gathersTransactions = false;
    pendingSince.reset();
    tally.gathered = inTransaction = 0;
    if (sharing)
        sharing->endWriting();
}

void Database::Parts::gather(std::uint64_t changes) {
    if (!pendingSince)
        pendingSince = steady_clock::now();
    tally.gathered += changes;
}

void Database::Parts::commit() {
    if (sharing && pager.hasChanges())
        sharing->beginWriting(); // given back if an earlier attempt failed
    pager.commit();
    tally.written += std::exchange(tally.gathered, 0) + std::exchange(inTransaction, 0);
}

void Database::Parts::flush() {
    if (!pendingSince || explicitTransaction)
        return;
    flushing_ = true;
    try {
        commit();
    } catch (const Error& error) {
        flushing_ = false;
        // What another program has overtaken can never be written.
        if (error.code() == Errc::conflict)
            end();
        else
            setAside();
        throw;
    } catch (...) {
        flushing_ = false;
        setAside();
        throw;
    }
    flushing_ = false;
    end();
}

/// What couldn't be written waits for the next attempt, and keeps nobody waiting until then.
void Database::Parts::setAside() noexcept {
    pendingSince = steady_clock::now();
    if (sharing)
        sharing->endWriting();
}

void Database::Parts::flushIfDue() {
    // The program's clock may strike while the wait hook lets its window be painted.
    if (!pendingSince || explicitTransaction || flushing_ || changes_ > 0)
        return;
    if (sharing && sharing->isWrittenByOther())
        return; // set aside: it would wait
    const auto now = steady_clock::now();
    bool due = now - *pendingSince >= kLongestPending;
    if (!due && sharing && now - askedForWaiting_ >= kWaitingEvery) {
        askedForWaiting_ = now;
        due = sharing->isAwaited();
    }
    if (due)
        flush();
}

} // namespace jet
