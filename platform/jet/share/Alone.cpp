#include "jet/share/Alone.h"

#include "jet/Waiting.h"
#include "jet/share/Held.h"
#include "jet/share/Patience.h"

namespace jet {

Alone::Alone(Presence& presence) : lock_(presence.lock()) {
    bool got = lock_.tryLock(LockFile::kReading);
    if (!got) {
        const Announced wish(lock_, LockFile::kWantsReaders, Disk::Lock::exclusive);
        got = waitFor([&] { return lock_.tryLock(LockFile::kReading); }, patience::kForTurn);
    }
    if (!got) // unreached: ten seconds of waiting, as for the turn to write
        throw Error(Errc::locked, "Outra estação está lendo o banco de dados há muito tempo" +
                                      presence.others() + patience::kNotSaved);
    try {
        presence.database().lookAgain();
        presence.require(LockFile::kEntering, patience::kForEntering);
        if (!waitFor([&] { return lock_.closeGate(); }, patience::kForGate))
            throw Error(Errc::locked,
                        "Outro programa está abrindo o banco de dados neste momento. Nada foi "
                        "gravado; tente de novo.");
    } catch (...) {
        giveBack();
        throw;
    }
}

void Alone::giveBack() noexcept {
    lock_.openGate();
    lock_.unlock(LockFile::kEntering);
    lock_.unlock(LockFile::kReading);
}

} // namespace jet
