#include "jet/DatabaseParts.h"

namespace jet {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A change is written no later than that, or when its program next looks (flushIfDue): on the disk
/// within half a second.
constexpr milliseconds kLongestPending{350};
/// So often who gathers changes asks whether another station waits to write.
constexpr milliseconds kWaitingEvery{10};

bool sameKeys(const std::vector<RealIndex::KeyColumn>& a,
              const std::vector<RealIndex::KeyColumn>& b) {
    return std::ranges::equal(a, b, [](const auto& x, const auto& y) {
        return x.column == y.column && x.ascending == y.ascending;
    });
}

/// Whether rows and indexes are to be read in the same way.
bool sameStructure(const TableDefinition& a, const TableDefinition& b) {
    return a.pages == b.pages && a.maxColumns == b.maxColumns && a.maxVariables == b.maxVariables &&
           a.ownedMap == b.ownedMap && a.freeMap == b.freeMap &&
           std::ranges::equal(a.columns, b.columns,
                              [](const Column& x, const Column& y) {
                                  return x.name == y.name && x.type == y.type &&
                                         x.number == y.number && x.length == y.length &&
                                         x.variableIndex == y.variableIndex &&
                                         x.fixedOffset == y.fixedOffset && x.fixed == y.fixed &&
                                         x.autonumber == y.autonumber && x.scale == y.scale;
                              }) &&
           std::ranges::equal(a.realIndexes, b.realIndexes,
                              [](const RealIndex& x, const RealIndex& y) {
                                  return x.root == y.root && x.map == y.map &&
                                         x.unique == y.unique && x.ignoreNulls == y.ignoreNulls &&
                                         x.required == y.required && sameKeys(x.columns, y.columns);
                              }) &&
           std::ranges::equal(a.longValues, b.longValues,
                              [](const LongValueMaps& x, const LongValueMaps& y) {
                                  return x.columnNumber == y.columnNumber && x.owned == y.owned &&
                                         x.free == y.free;
                              });
}

} // namespace

void Database::Parts::share(bool mayWrite) {
    sharing.emplace(pager.file(), pager.format(), [this] { noticeNews(); });
    sharing->enter(mayWrite);
    pager.refresh();
    pager.share(*sharing);
}

/// Another has written. Tables keep their object and their definition, which row changes don't
/// touch; a program that has changed the structure itself is told apart here.
void Database::Parts::noticeNews() {
    pager.refresh();
    catalogStale = true;
    for (const auto& [key, entry] : catalog) {
        if (!entry.table)
            continue;
        entry.table->forgetRules();
        if (!restructured && !sameStructure(entry.table->definition(),
                                            parseDefinition(pager, entry.definition, texts)))
            restructured = "A estrutura da tabela \"" + entry.name +
                           "\" foi alterada por outro programa. Feche o programa e abra-o de novo.";
    }
    if (restructured)
        throw Error(Errc::conflict, *restructured);
}

Database::Parts::Change::Change(Parts& parts) : parts_(parts) {
    if (parts.changes_ == 0) {
        if (parts.readOnly)
            throw Error(Errc::readOnly, *parts.readOnly);
        parts.flushIfDue();
        if (parts.sharing)
            parts.sharing->beginWriting();
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
    if (sharing)
        sharing->endWriting();
}

void Database::Parts::flush() {
    if (!pendingSince || explicitTransaction)
        return;
    flushing_ = true;
    try {
        pager.commit();
    } catch (const Error& error) {
        flushing_ = false;
        // What another program has overtaken can never be written.
        if (error.code() == Errc::conflict)
            end();
        throw;
    } catch (...) {
        flushing_ = false;
        throw;
    }
    flushing_ = false;
    end();
}

void Database::Parts::flushIfDue() {
    // The program's clock may strike while the wait hook lets its window be painted.
    if (!pendingSince || explicitTransaction || flushing_ || changes_ > 0)
        return;
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
