#pragma once

#include "jet/share/Presence.h"

namespace jet {

/// The file for ourselves, to write pages: R alone, which waits for the readers to leave, O, and
/// the gate closed. Requires W.
class Alone {
public:
    /// @throws Error{locked} naming who doesn't leave, or if a foreign program is just coming in.
    explicit Alone(Presence& presence);
    Alone(const Alone&) = delete;
    Alone& operator=(const Alone&) = delete;
    ~Alone() { giveBack(); }

private:
    void giveBack() noexcept;

    LockFile& lock_;
};

} // namespace jet
