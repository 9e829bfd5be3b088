#pragma once

#include "jet/share/Journal.h"

namespace jet {

/// Puts the pages of a transaction into the file: all of them or none, whenever the power goes.
///
///   1  the journal, with the old pages             synced (and its name, the first time)
///   2  our commit pair: 0x0000, writing            synced
///   3  the pages in their places                   synced
///   4  our commit pair: the announced number       synced: committed, for good
///   5  the journal emptied                         not synced
///
/// Each sync keeps what comes after from reaching the disk before what comes ahead. Without 1
/// before 2 a file could say "being written" and have no journal to undo it with; without 2 before
/// 3 another program could find half a transaction in a file that looks whole. 5 needs none: a
/// journal whose transaction is complete does nothing when it is found again, since the pair says
/// that number, and the next transaction's journal is written over it and synced before the pair
/// changes. Were another program to write as the same user and die before we open the file again,
/// recover() would still put no page back: all of them hold their new content by then.
///
/// Four it has to be. 1 and 2 are of two files: done together they would be two all the same. 4
/// could only wait if this journal stayed whole until then, beside that of the next transaction;
/// and after a power cut another program would find a file that is whole still marked as being
/// written, long after the operator was told that it is stored. Who has many transactions to write
/// gathers them instead: see Database::commitLater().
///
/// The caller holds what keeps others from writing and reading (see Sharing).
class Committer {
public:
    /// `user` is whose commit pair is used.
    Committer(File& database, const Format& format, std::size_t user)
        : database_(database), format_(format), user_(user), journal_(database, format) {}

    /// @throws Error{full, io}. The file is then as before; only if even that can't be brought
    ///         about, isBroken() is true from then on: nobody may use the file until another
    ///         opening has recovered it.
    void commit(const ChangedPages& changed);
    [[nodiscard]] bool isBroken() const noexcept { return broken_; }

    /// When the last one leaves: nothing is being written, and the journal's file goes.
    void leave();

private:
    void undo() noexcept;

    File& database_;
    const Format& format_;
    std::size_t user_;
    Journal journal_;
    bool broken_ = false;
};

} // namespace jet
