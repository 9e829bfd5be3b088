#pragma once

#include "jet/share/Journal.h"

namespace jet {

/// What has become of a journal that was found beside a file.
struct Recovery {
    enum class Outcome : std::uint8_t {
        none,      ///< there is none, or an empty one
        discarded, ///< its transaction hadn't begun to change the file, or was complete
        undone,    ///< its transaction was undone
        setAside,  ///< it isn't this file's, or the file has changed since: renamed to `aside`
        leftThere, ///< the same, or it isn't needed any more, but nobody lets us move it
    };
    Outcome outcome = Outcome::none;
    std::filesystem::path aside;
    std::string reason; ///< why it was set aside, or couldn't be; in Portuguese
};

/// Whether there is a journal that a transaction has been written with.
[[nodiscard]] inline bool hasJournal(const std::filesystem::path& database, Disk& disk) {
    return Journal::find(database, disk).what == Journal::Found::What::written;
}

/// Brings a file whose writer died back to the state before or after the last transaction. Can be
/// cut off anywhere and done again. Nobody else may be at work in the file meanwhile.
///
/// A journal is only ever used if it proves to be that of this very file in this very state: the
/// first page is the same but for the pairs, the pairs are those it was written under but for its
/// own, which says "writing", the file's length lies between old and new, and every sector of every
/// page holds either the old or the new content. So a backup put in the file's place, another file
/// of that name, or what some other program has written since, are never overwritten with older
/// pages: such a journal is renamed and reported.
///
/// A journal that can't be used (see Journal::Found; or another version's) is needed only if a pair
/// says that somebody was writing; otherwise it is set aside like one that isn't this file's, or
/// left.
///
/// @throws Error{io, full, readOnly} if the file can't be brought back now.
[[nodiscard]] Recovery recover(File& database, const Format& format);
/// The same by the file's name, for who has it alone (FileAlone).
/// @throws also Error{notFound, unsupported} for a journal beside what isn't a database.
Recovery recover(const std::filesystem::path& database, Disk& disk);

/// For a transaction that failed while it was written: puts the old pages back from its journal,
/// which is known to be good.
void undoFromJournal(File& database, const Format& format);

} // namespace jet
