#include "jet/share/Committer.h"

#include "jet/share/Recovery.h"

namespace jet {

void Committer::commit(const ChangedPages& changed) {
    JournalHeader header;
    header.pairs = CommitPairs(database_, format_);
    header.user = static_cast<std::uint32_t>(user_);
    header.announced = CommitPairs::after(header.pairs[user_]);
    header.fileBefore = changed.fileBefore;
    header.fileAfter = changed.fileAfter;
    header.changes = static_cast<std::uint32_t>(changed.pages.size());
    header.identity = Journal::identityOf(database_, format_);
    journal_.write(header, changed);
    try {
        CommitPairs::write(database_, format_, user_, CommitPairs::kWriting);
        for (const ChangedPages::Page& page : changed.pages)
            database_.write(std::uint64_t{number(page.number)} * format_.pageSize, page.content);
        database_.sync();
        CommitPairs::write(database_, format_, user_, header.announced);
    } catch (...) {
        undo();
        throw;
    }
    try {
        journal_.empty();
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // The transaction is complete, and its journal says nothing else.
    }
}

void Committer::undo() noexcept {
    try {
        undoFromJournal(database_, format_);
        journal_.empty();
    } catch (...) {
        broken_ = true;
    }
}

void Committer::leave() {
    // A journal that isn't empty is that of a station that died: the next opening needs it.
    if (!broken_ &&
        Journal::find(database_.path(), database_.disk()).what == Journal::Found::What::nothing)
        journal_.remove();
}

} // namespace jet
