#pragma once

#include "jet/share/Presence.h"
#include "jet/share/Recovery.h"

namespace jet {

/// Brings a shared file back that a station left half written when it died, and knows what the
/// operator must be told of it.
class Rescue {
public:
    /// `mayWrite`: whether we have the file open for that. One that is only read is opened once
    /// more to bring it back.
    Rescue(Presence& presence, bool mayWrite) noexcept : presence_(presence), mayWrite_(mayWrite) {}

    [[nodiscard]] bool hasJournal() const;
    /// Requires that we don't hold R; `holdsWriting`: whether we hold W.
    /// @throws Error{locked, io, full, readOnly} if it can't be done now.
    Recovery::Outcome run(bool holdsWriting);
    /// A journal that couldn't be used, as a sentence.
    [[nodiscard]] const std::optional<std::string>& notice() const noexcept { return notice_; }

private:
    [[nodiscard]] Recovery bringBack();
    void tell(const Recovery& recovery);

    Presence& presence_;
    bool mayWrite_;
    std::optional<std::string> notice_;
};

} // namespace jet
