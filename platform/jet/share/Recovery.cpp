#include "jet/share/Recovery.h"

#include "jet/page/Header.h"

#include <algorithm>

namespace jet {

namespace {

constexpr int kMostAside = 1000;

std::uint64_t placeOf(PageNo page, const Format& format) {
    return std::uint64_t{number(page)} * format.pageSize;
}

/// How a file stands to a journal.
struct Match {
    bool whole = true; ///< the journal was written to its end
    bool own = true;   ///< every sector is the old or the new one
};

Match compare(Journal::Reader& journal, const File& database, const Format& format) {
    Match result;
    const std::uint64_t size = database.size();
    Bytes page(format.pageSize);
    result.whole = journal.readAll([&](const Journal::Entry& entry) {
        const std::uint64_t at = placeOf(entry.page, format);
        if (at + format.pageSize > size) {
            result.own = result.own && entry.before.empty();
            return;
        }
        database.read(at, page);
        for (std::size_t i = 0; i * Journal::kSector < format.pageSize; ++i) {
            const auto sector = std::span(page).subspan(i * Journal::kSector, Journal::kSector);
            if (Journal::sectorSum(sector) == entry.sum(i))
                continue;
            // What a disk shows at the end of a file that was growing is nobody's data.
            if (!entry.before.empty() &&
                !std::ranges::equal(sector,
                                    entry.before.subspan(i * Journal::kSector, Journal::kSector)))
                result.own = false;
        }
    });
    return result;
}

/// The old pages and the old length, on the disk; then the pair that says so.
void putBack(Journal::Reader& journal, File& database, const Format& format) {
    const JournalHeader& header = *journal.header();
    journal.readAll([&](const Journal::Entry& entry) {
        if (!entry.before.empty())
            database.write(placeOf(entry.page, format), entry.before);
    });
    database.truncate(std::uint64_t{header.fileBefore} * format.pageSize);
    database.sync();
    CommitPairs::write(database, format, header.user, header.announced);
}

/// The first free name "<journal>.old", "<journal>.old2", ...
std::filesystem::path asideName(const std::filesystem::path& journal, Disk& disk) {
    for (int i = 1; i <= kMostAside; ++i) {
        std::filesystem::path name = journal;
        name += i == 1 ? ".old" : ".old" + std::to_string(i);
        if (!disk.exists(name))
            return name;
    }
    throw Error(Errc::exists, "Ao lado já há " + std::to_string(kMostAside) +
                                  " guardados, que devem ser apagados antes.");
}

/// A journal that lies beside a file, and what becomes of it.
class Leftover {
public:
    Leftover(File& database, const Format& format)
        : database_(database), format_(format), disk_(database.disk()),
          path_(Journal::pathFor(database.path())), pairs_(database, format),
          writing_(pairs_.find(CommitPairs::kWriting).has_value()) {}

    [[nodiscard]] Recovery settle(const Journal::Found& found);

private:
    [[nodiscard]] Recovery remove(Recovery::Outcome outcome) const;
    [[nodiscard]] Recovery setAside(const std::string& reason) const;
    [[nodiscard]] Recovery unusable(const std::string& why) const;
    [[nodiscard]] Recovery incomplete(const Journal::Reader& journal) const;
    [[nodiscard]] Recovery settleWhole(Journal::Reader& journal, bool sectorsKnown);
    [[nodiscard]] bool isUntouched(const JournalHeader& header) const;
    [[nodiscard]] bool isBegun(const JournalHeader& header) const;

    File& database_;
    const Format& format_;
    Disk& disk_;
    std::filesystem::path path_;
    CommitPairs pairs_;
    bool writing_; ///< whether a pair says that somebody was
};

Recovery Leftover::remove(Recovery::Outcome outcome) const {
    try {
        Journal::remove(path_, disk_);
    } catch (const Error& error) {
        if (error.code() != Errc::readOnly)
            throw;
        return {Recovery::Outcome::leftThere, {}, error.what()};
    }
    return {outcome, {}, {}};
}

Recovery Leftover::setAside(const std::string& reason) const {
    try {
        Recovery result{Recovery::Outcome::setAside, asideName(path_, disk_), reason};
        File::rename(disk_, path_, result.aside);
        return result;
    } catch (const Error& error) {
        if (error.code() != Errc::readOnly && error.code() != Errc::exists)
            throw;
        return {Recovery::Outcome::leftThere, {}, reason + " " + error.what()};
    }
}

Recovery Leftover::unusable(const std::string& why) const {
    if (writing_)
        throw Error(Errc::readOnly, "Uma gravação foi interrompida e precisa ser desfeita "
                                    "antes que os dados possam ser lidos. " +
                                        why);
    return setAside(why);
}

/// Cut off while it was written: the file hadn't been touched yet.
Recovery Leftover::incomplete(const Journal::Reader& journal) const {
    if (journal.kind() != Journal::Reader::Kind::journal)
        return setAside("ele não é o registro de uma gravação.");
    return writing_ ? setAside("ele está incompleto.") : remove(Recovery::Outcome::discarded);
}

bool Leftover::isUntouched(const JournalHeader& header) const {
    return pairs_ == header.pairs && !writing_;
}

/// Nobody has written since but the one who was interrupted.
bool Leftover::isBegun(const JournalHeader& header) const {
    CommitPairs others = pairs_;
    others.set(header.user, header.pairs[header.user]);
    const std::uint64_t size = database_.size();
    return pairs_[header.user] == CommitPairs::kWriting && others == header.pairs &&
           size >= std::uint64_t{header.fileBefore} * format_.pageSize &&
           size <= std::uint64_t{header.fileAfter} * format_.pageSize;
}

Recovery Leftover::settleWhole(Journal::Reader& journal, bool sectorsKnown) {
    const JournalHeader& header = *journal.header();
    if (Journal::identityOf(database_, format_) != header.identity)
        return setAside("ele é de outro arquivo.");
    if (pairs_[header.user] == header.announced) {
        // Complete. The pair may not have reached the disk when its writer, not the power, died;
        // and after a sync that failed the system takes for written what isn't, unless it is
        // written anew.
        CommitPairs::write(database_, format_, header.user, header.announced);
        return remove(Recovery::Outcome::discarded);
    }
    if (isUntouched(header))
        return remove(Recovery::Outcome::discarded);
    if (!isBegun(header) || !sectorsKnown)
        return setAside("o banco de dados foi alterado por outro programa, ou substituído por uma "
                        "cópia, depois da interrupção.");
    // Even where all is new to look at: see above.
    putBack(journal, database_, format_);
    return remove(Recovery::Outcome::undone);
}

Recovery Leftover::settle(const Journal::Found& found) {
    if (found.what == Journal::Found::What::unusable)
        return unusable(found.why);
    Journal::Reader journal(path_, format_, disk_);
    if (journal.kind() == Journal::Reader::Kind::ofAnotherVersion)
        return unusable("O registro dela é de outra versão deste programa, e só ela pode usá-lo.");
    if (!journal.header())
        return incomplete(journal);
    const Match match = compare(journal, database_, format_);
    return match.whole ? settleWhole(journal, match.own) : incomplete(journal);
}

} // namespace

Recovery recover(File& database, const Format& format) {
    const Journal::Found found = Journal::find(database.path(), database.disk(), true);
    if (found.what == Journal::Found::What::nothing)
        return {};
    return Leftover(database, format).settle(found);
}

Recovery recover(const std::filesystem::path& database, Disk& disk) {
    if (Journal::find(database, disk, true).what == Journal::Found::What::nothing)
        return {};
    File file(database, File::Mode::readWrite, disk);
    return recover(file, formatOf(readHeader(file).version));
}

void undoFromJournal(File& database, const Format& format) {
    Journal::Reader journal(Journal::pathFor(database.path()), format, database.disk());
    if (!journal.header())
        throw Error(Errc::io, "O arquivo de segurança da gravação não pôde ser lido.");
    // The announced number may have been set already: whoever finds the pages half put back must
    // not find it.
    CommitPairs::write(database, format, journal.header()->user, CommitPairs::kWriting);
    putBack(journal, database, format);
}

} // namespace jet
