#include "jet/share/Sharing.h"

#include "jet/Waiting.h"
#include "jet/share/Held.h"
#include "jet/share/Patience.h"

#include <utility>

namespace jet {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using Look = Presence::Look;

constexpr int kMostRounds = 50;
constexpr milliseconds kForOthersRecovery{200};
/// Of who has no lock file, for another station's transaction to end.
constexpr milliseconds kForQuiet{2000};
/// For a foreign program's transaction.
constexpr int kMostForeignRounds = 20;
constexpr milliseconds kForeignRound{100};

} // namespace

// ---- entering ---------------------------------------------------------------------------------

Sharing::Sharing(File& database, const Format& format, bool mayWrite, Snapshot::Forget forget)
    : presence_(database, format), snapshot_(presence_, std::move(forget)),
      rescue_(presence_, mayWrite), reading_(presence_, snapshot_), writing_(presence_, snapshot_) {
    presence_.open();
    presence_.isShared() ? enter() : enterUnshared();
    if (mayWrite && presence_.isShared())
        writing_.allow();
}

/// Another station may just be writing.
void Sharing::enterUnshared() {
    const bool quiet = waitFor(
        [&] {
            snapshot_.start(snapshot_.inFile());
            return !snapshot_.pairs().find(CommitPairs::kWriting);
        },
        kForQuiet);
    if (quiet)
        return;
    if (rescue_.hasJournal())
        throw Error(Errc::locked,
                    "Uma gravação em \"" + presence_.database().path().string() +
                        "\" foi interrompida e ainda não pôde ser desfeita. Abra o "
                        "banco de dados num computador que possa gravar nessa pasta.");
    presence_.noteSuspect();
}

void Sharing::enter() {
    const File& database = presence_.database();
    const std::string name = "\"" + database.path().string() + "\"";
    LockFile& lock = presence_.lock();
    bool leftThere = false; // a journal that nobody needs
    for (int round = 0;; ++round) {
        presence_.require(LockFile::kEntering, patience::kForEntering);
        std::optional<Held> entering(std::in_place, lock, LockFile::kEntering);
        if (!lock.isCurrent()) {
            // Whoever left meanwhile has removed the very file we opened.
            if (round > kMostRounds)
                throw Error(Errc::io, "O arquivo .ldb ao lado de " + name +
                                          " não se deixa abrir: a pasta muda sem parar.");
            lock.open(&database);
            continue;
        }
        if (!database.isAt(database.path()))
            throw Error(Errc::locked,
                        "O banco de dados " + name + " acaba de ser substituído. Tente de novo.");
        const CommitPairs pairs = snapshot_.inFile();
        const bool journal = rescue_.hasJournal();
        // While we hold O nobody of us writes pages: a journal there is a dead station's, unless
        // that is still being recovered by another, who holds W.
        const bool beingWritten = lock.isHeldAlone(LockFile::kWriting);
        const bool dead = presence_.deadWriter(pairs).has_value();
        if (journal && !leftThere && (dead || !beingWritten)) {
            if (round > kMostRounds)
                throw Error(Errc::locked, "Uma gravação interrompida em " + name +
                                              " está sendo desfeita por outra estação. Tente de "
                                              "novo.");
            entering.reset();
            if (beingWritten)
                pause(kForOthersRecovery);
            else
                leftThere = rescue_.run(false) == Recovery::Outcome::leftThere;
            continue;
        }
        if (dead || pairs.find(CommitPairs::kDamaged))
            presence_.noteSuspect(pairs);
        presence_.takeUser();
        // What a foreign program is writing at this moment has been seen by nobody: the first
        // section waits for its end.
        if (presence_.isSuspect() || !pairs.find(CommitPairs::kWriting))
            snapshot_.start(pairs);
        presence_.lookAround(Look::entranceClosed);
        return;
    }
}

// ---- reading ----------------------------------------------------------------------------------

void Sharing::beginReading() {
    if (reading_.isOpen() || writing_.isHeld())
        reading_.nest();
    else
        openSection();
}

void Sharing::openSection() {
    reading_.open();
    try {
        presence_.lookIfDue();
        catchUp();
    } catch (...) {
        reading_.abandon();
        throw;
    }
}

void Sharing::beginOnSnapshot() {
    const auto now = steady_clock::now();
    if (!presence_.isCareful() && !reading_.isDisturbed() && !presence_.isLookDue(now) &&
        snapshot_.holds(now))
        return reading_.openOnSnapshot();
    openSection();
    reading_.makeRepeatable();
}

void Sharing::verifyPage() {
    if (presence_.isCareful() && !writing_.isHeld())
        reading_.verify();
}

/// Whoever sees that another has written forgets what is known of the file.
void Sharing::catchUp() {
    const auto readAt = steady_clock::now();
    CommitPairs pairs = snapshot_.inFile();
    if (snapshot_.confirm(pairs, readAt))
        return;
    for (int round = 0; !presence_.isSuspect() && pairs.find(CommitPairs::kWriting); ++round) {
        if (!undoDeadWriter(pairs)) {
            if (presence_.isSuspect())
                break;
            // A foreign program at work.
            presence_.beCareful();
            if (round == kMostForeignRounds)
                throw Error(Errc::locked, "Outro programa está gravando no banco de dados" +
                                              presence_.others() +
                                              ". Espere um pouco e tente de novo.");
            pause(kForeignRound);
        }
        pairs = snapshot_.inFile();
    }
    snapshot_.replace(pairs);
}

/// True if the file was brought back and has to be looked at again.
bool Sharing::undoDeadWriter(const CommitPairs& pairs) {
    if (!presence_.deadWriter(pairs))
        return false;
    if (!rescue_.hasJournal()) {
        presence_.noteSuspect(pairs);
        return false;
    }
    reading_.release();
    if (rescue_.run(writing_.isHeld()) == Recovery::Outcome::leftThere)
        presence_.noteSuspect(pairs);
    if (!writing_.isHeld())
        reading_.lock();
    return true;
}

// ---- writing ----------------------------------------------------------------------------------

void Sharing::requireWritable(Look look) {
    if (const auto why = presence_.hindrance(look))
        throw why->error();
}

void Sharing::beginWriting() {
    if (writing_.isHeld())
        return;
    requireWritable(Look::known);
    reading_.release();
    if (!writing_.take()) {
        if (reading_.isOpen()) {
            reading_.lock();
            reading_.verify(); // somebody may have written meanwhile
        }
        throw Error(Errc::locked, "Outra estação está gravando no banco de dados há muito tempo" +
                                      presence_.others() + patience::kNotSaved);
    }
    try {
        presence_.database().lookAgain();
        catchUp();
        requireWritable(Look::users);
    } catch (...) {
        endWriting();
        throw;
    }
}

void Sharing::endWriting() noexcept {
    if (!writing_.isHeld())
        return;
    try {
        // A section that is still open goes on as a reader: with W in hand nobody else can be
        // writing pages.
        if (reading_.isOpen())
            reading_.tryLock();
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // Then the section reads on without its lock; the next one catches up.
    }
    writing_.giveBack();
}

} // namespace jet
