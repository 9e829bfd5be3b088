#pragma once

#include "jet/page/ChangedPages.h"

namespace jet {

/// What a pager asks of whoever agrees with the other stations on when a file is read and written.
/// A section is a time in which nobody of us writes pages; sections nest.
class Turns {
public:
    Turns() = default;
    Turns(const Turns&) = delete;
    Turns& operator=(const Turns&) = delete;
    virtual ~Turns() = default;

    /// @throws Error{locked} if somebody writes for too long; and whatever it costs to notice that
    ///         another has written.
    virtual void beginReading() = 0;
    virtual void endReading() noexcept = 0;
    /// A section that takes no lock as long as the cache has what is read: it is enough then that
    /// nobody has written since the cache was filled. Only for what can be done again from its
    /// beginning: see beforeRead(). Requires that none is open.
    virtual void beginOnSnapshot() = 0;
    /// In the middle of a section of beginOnSnapshot(): if somebody waits for the readers to leave,
    /// lets him write. From there on it takes no lock again until a page is read from the file.
    virtual void breathe() noexcept = 0;
    /// Whether somebody waits so, asked every few thousandths of a second. @throws Error{io}.
    [[nodiscard]] virtual bool keepsWriterWaiting() = 0;
    /// Before a page is read from the file.
    /// @throws Error{locked}, and disturbed() is true, if another station has written since
    ///         beginOnSnapshot().
    virtual void beforeRead() = 0;
    /// After a page was read from the file: it belongs to what the section has seen so far.
    /// @throws Error{locked}, and disturbed() is true until the next section, if a foreign program
    ///         has written meanwhile.
    virtual void verifyPage() = 0;
    [[nodiscard]] virtual bool inSection() const noexcept = 0;
    [[nodiscard]] virtual bool disturbed() const noexcept = 0;

    /// From here to endWriting() nobody else of us changes the file.
    /// @throws Error{readOnly}, Error{locked} naming who has the file; as beginReading().
    virtual void beginWriting() = 0;
    /// What was not committed is no concern of this class.
    virtual void endWriting() noexcept = 0;
    [[nodiscard]] virtual bool isWriting() const noexcept = 0;
    /// Whether another station waits for the turn to write.
    [[nodiscard]] virtual bool isAwaited() const = 0;
    /// Whether another has it at this moment.
    [[nodiscard]] virtual bool isTakenByOther() const = 0;
    /// All of it reaches the disk, or nothing.
    /// @throws Error{locked} if readers don't leave or a foreign program has come: the transaction
    ///         is as it was; Error{conflict} if one has written meanwhile, heeding our locks or
    ///         not; Error{full, io}, after which isBroken() tells whether the file is as before.
    virtual void commit(const ChangedPages& changed) = 0;
    /// For who finds the file other than it was when last read, though nobody told of a change:
    /// all that is remembered of it goes before the next section.
    /// @throws Error{conflict}, always.
    [[noreturn]] virtual void refuseOvertaken() = 0;
    /// A commit failed half-way and couldn't be undone: the file can't be used until another
    /// opening has brought it back.
    [[nodiscard]] virtual bool isBroken() const noexcept = 0;
};

} // namespace jet
