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

} // namespace

Recovery recover(File& database, const Format& format) {
    Disk& disk = database.disk();
    const Journal::Found found = Journal::find(database.path(), disk, true);
    if (found.what == Journal::Found::What::nothing)
        return {};
    const std::filesystem::path path = Journal::pathFor(database.path());
    const auto setAside = [&](const std::string& reason) {
        try {
            Recovery result{Recovery::Outcome::setAside, asideName(path, disk), reason};
            File::rename(disk, path, result.aside);
            return result;
        } catch (const Error& error) {
            if (error.code() != Errc::readOnly && error.code() != Errc::exists)
                throw;
            return Recovery{Recovery::Outcome::leftThere, {}, reason + " " + error.what()};
        }
    };
    const auto done = [&](Recovery::Outcome outcome) {
        try {
            Journal::remove(path, disk);
        } catch (const Error& error) {
            if (error.code() != Errc::readOnly)
                throw;
            return Recovery{Recovery::Outcome::leftThere, {}, error.what()};
        }
        return Recovery{outcome, {}, {}};
    };

    const CommitPairs pairs(database, format);
    const bool writing = pairs.find(CommitPairs::kWriting).has_value();
    const auto unusable = [&](const std::string& why) {
        if (writing)
            throw Error(Errc::readOnly, "Uma gravação foi interrompida e precisa ser desfeita "
                                        "antes que os dados possam ser lidos. " +
                                            why);
        return setAside(why);
    };
    if (found.what == Journal::Found::What::unusable)
        return unusable(found.why);
    Journal::Reader journal(path, format, disk);
    if (journal.kind() == Journal::Reader::Kind::ofAnotherVersion)
        return unusable("O registro dela é de outra versão deste programa, e só ela pode usá-lo.");
    Match state;
    if (journal.header())
        state = compare(journal, database, format);
    if (!journal.header() || !state.whole) {
        // Cut off while it was written: the file hadn't been touched yet.
        if (journal.kind() != Journal::Reader::Kind::journal)
            return setAside("ele não é o registro de uma gravação.");
        if (!writing)
            return done(Recovery::Outcome::discarded);
        return setAside("ele está incompleto.");
    }
    const JournalHeader& header = *journal.header();
    CommitPairs others = pairs;
    others.set(header.user, header.pairs[header.user]);
    const bool sameFile = Journal::identityOf(database, format) == header.identity;
    const std::uint16_t pair = pairs[header.user];
    if (sameFile && pair == header.announced) {
        // Complete. The pair may not have reached the disk when its writer, not the power, died;
        // and after a sync that failed the system takes for written what isn't, unless it is
        // written anew.
        CommitPairs::write(database, format, header.user, header.announced);
        return done(Recovery::Outcome::discarded);
    }
    if (sameFile && pairs == header.pairs && !writing)
        return done(Recovery::Outcome::discarded);
    const std::uint64_t size = database.size();
    if (!sameFile)
        return setAside("ele é de outro arquivo.");
    if (pair != CommitPairs::kWriting || others != header.pairs || !state.own ||
        size < std::uint64_t{header.fileBefore} * format.pageSize ||
        size > std::uint64_t{header.fileAfter} * format.pageSize)
        return setAside("o banco de dados foi alterado por outro programa, ou substituído por uma "
                        "cópia, depois da interrupção.");
    // Even where all is new to look at: see above.
    putBack(journal, database, format);
    return done(Recovery::Outcome::undone);
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
