#include "jet/share/Sharing.h"

#include "jet/Error.h"
#include "jet/Waiting.h"

#include <algorithm>
#include <utility>

namespace jet {

namespace {

// The end of a sentence. Not "nothing": many rows may have been saved before this one.
const char* const kNotSaved =
    ". O que se quis gravar agora não foi gravado; espere um pouco e tente de novo.";

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::size_t kMostNamed = 3;
constexpr int kMostRounds = 50;
constexpr std::size_t kGateClosed = 250; ///< so many users at once are none
constexpr milliseconds kLongestWait{10000};
constexpr milliseconds kLongestEntering{5000};
/// A foreign program needs some time to open a file: twice that often we look.
constexpr milliseconds kForeignEvery{500};
/// So often a reader asks whether a writer waits for the readers to leave.
constexpr milliseconds kWriterEvery{2};

constexpr const char* kByAnotherName =
    "O banco de dados também está aberto por outro caminho ou com outro nome, ou o arquivo .ldb "
    "foi apagado enquanto estava em uso. Para proteger os dados, nada pode ser alterado até que "
    "uma das estações o feche; as consultas continuam.";

/// Says by one of the lock file's bytes that something is waited for, unless another says it.
class Announced {
public:
    Announced(LockFile& lock, std::uint64_t what, Disk::Lock kind)
        : lock_(lock), what_(what), done_(lock.tryLock(what, kind)) {}
    Announced(const Announced&) = delete;
    Announced& operator=(const Announced&) = delete;
    ~Announced() {
        if (done_)
            lock_.unlock(what_);
    }

private:
    LockFile& lock_;
    std::uint64_t what_;
    bool done_;
};

/// Holds one of the lock file's bytes.
class Held {
public:
    Held(LockFile& lock, std::uint64_t what) : lock_(lock), what_(what) {}
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() { lock_.unlock(what_); }

private:
    LockFile& lock_;
    std::uint64_t what_;
};

} // namespace

Sharing::Sharing(File& database, const Format& format, std::function<void()> onNews)
    : database_(database), format_(format), onNews_(std::move(onNews)),
      lock_(database.path(), database.disk()), attendance_(database, lock_) {}

Sharing::~Sharing() {
    if (!committer_)
        return;
    try {
        // The journal of somebody else's transaction isn't ours to remove: only with W, which we
        // have if nobody writes, and as the last one.
        if (!writing_ && !lock_.tryLock(LockFile::kWriting))
            return;
        if (lock_.otherUsers().empty())
            committer_->leave();
        lock_.unlock(LockFile::kWriting);
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // An empty journal left behind does no harm.
    }
}

// ---- entering ---------------------------------------------------------------------------------

void Sharing::enter(bool mayWrite) {
    using enum Journal::Found::What;
    mayWrite_ = mayWrite;
    try {
        lock_.open();
        // Some shares have no locks: then this says so.
        if (lock_.tryLock(LockFile::kReading, Disk::Lock::shared))
            lock_.unlock(LockFile::kReading);
        shared_ = true;
    } catch (const Error& error) {
        lasting_ = std::string("O banco de dados pode ser consultado mas não alterado, porque o "
                               "arquivo que avisa as outras estações não pôde ser usado. ") +
                   error.what();
        careful_ = true;
    }
    if (!shared_) {
        // Another station may just be writing.
        const bool quiet = waitFor(
            [&] {
                seen_ = Pairs(database_, format_);
                return !seen_.find(Pairs::kWriting);
            },
            milliseconds(2000));
        if (!quiet && Journal::find(database_.path(), database_.disk()).what != nothing)
            throw Error(Errc::locked,
                        "Uma gravação em \"" + database_.path().string() +
                            "\" foi interrompida e ainda não pôde ser desfeita. Abra o banco de "
                            "dados num computador que possa gravar nessa pasta.");
        suspect_ = !quiet;
        return;
    }
    register_();
    if (!mayWrite_)
        return;
    committer_.emplace(database_, format_, lock_.user());
}

void Sharing::register_() {
    using enum Journal::Found::What;
    bool leftThere = false; // and nobody needs it
    for (int round = 0;; ++round) {
        lockOrSay(LockFile::kEntering, kLongestEntering);
        const Held entering(lock_, LockFile::kEntering);
        if (!lock_.isCurrent()) {
            // Whoever left meanwhile has removed the very file we opened.
            if (round > kMostRounds)
                throw Error(Errc::io, "O arquivo .ldb ao lado de \"" + database_.path().string() +
                                          "\" não se deixa abrir: a pasta muda sem parar.");
            lock_.open();
            continue;
        }
        if (!database_.isAt(database_.path()))
            throw Error(Errc::locked, "O banco de dados \"" + database_.path().string() +
                                          "\" acaba de ser substituído. Tente de novo.");
        const Pairs pairs(database_, format_);
        const auto journal = Journal::find(database_.path(), database_.disk(), mayWrite_).what;
        // While we hold O nobody of us writes pages: a journal there is a dead station's, unless
        // that is still being recovered by another, who holds W.
        const bool beingWritten = lock_.isHeld(LockFile::kWriting);
        const bool dead = deadWriter(pairs).has_value();
        if (journal != nothing && !leftThere && (dead || !beingWritten)) {
            if (round > kMostRounds)
                throw Error(Errc::locked,
                            "Uma gravação interrompida em \"" + database_.path().string() +
                                "\" está sendo desfeita por outra estação. Tente de novo.");
            lock_.unlock(LockFile::kEntering);
            if (beingWritten)
                pause(milliseconds(200));
            else
                leftThere = runRecovery(false) == Recovery::Outcome::leftThere;
            continue;
        }
        if (dead || pairs.find(Pairs::kDamaged))
            noteSuspect(pairs);
        if (!lock_.takeUser())
            throw Error(
                Errc::locked,
                "O banco de dados já está aberto em 255 estações, o máximo possível. Feche-o "
                "em alguma delas e tente de novo.");
        attendance_.mark();
        // What a foreign program is writing at this moment has been seen by nobody: the first
        // section waits for its end.
        if (suspect_ || !pairs.find(Pairs::kWriting))
            seen_ = pairs;
        static_cast<void>(foreignReason(true));
        return;
    }
}

void Sharing::lockOrSay(std::uint64_t what, milliseconds longest) {
    if (!waitFor([&] { return lock_.tryLock(what); }, longest))
        throw Error(Errc::locked, "O banco de dados está ocupado por outra estação" + others() +
                                      ". Espere um pouco e tente de novo.");
}

/// The names of the other users, as far as they help to find them: somebody who has closed the
/// gate looks like all of them at once.
std::string Sharing::others() const {
    if (!shared_)
        return "";
    const std::vector<unsigned> users = lock_.otherUsers();
    if (users.empty() || users.size() >= kGateClosed)
        return "";
    std::string names;
    for (std::size_t i = 0; i < std::min(users.size(), kMostNamed); ++i)
        names += (i == 0 ? ": " : ", ") + lock_.nameOf(users[i]);
    if (users.size() > kMostNamed)
        names += " e mais " + std::to_string(users.size() - kMostNamed);
    return names;
}

// ---- what another has left half done ----------------------------------------------------------

/// The user who died writing: the pair says writing, and nobody is there to write.
std::optional<std::size_t> Sharing::deadWriter(const Pairs& pairs) const {
    for (std::size_t user = 0; shared_ && user < Pairs::kUsers; ++user)
        if (pairs[user] == Pairs::kWriting &&
            (user == 0 || user == lock_.user() || !lock_.isForeign(static_cast<unsigned>(user))))
            return user;
    return std::nullopt;
}

void Sharing::noteSuspect(const Pairs& pairs) {
    suspect_ = careful_ = true;
    const auto user = pairs.find(Pairs::kDamaged) ? pairs.find(Pairs::kDamaged) : deadWriter(pairs);
    const std::string who =
        user.value_or(0) > 0 ? lock_.nameOf(static_cast<unsigned>(*user)) : "usuário desconhecido";
    lasting_ = "O banco de dados foi deixado danificado por outro programa, de " + who +
               ": os dados podem ser consultados, mas não alterados. Repare-o com o programa que o "
               "gravou, ou volte a uma cópia de segurança.";
}

Recovery::Outcome Sharing::runRecovery(bool holdsWriting) {
    if (!holdsWriting)
        lockOrSay(LockFile::kWriting, kLongestWait);
    const auto unlockWriting = [&] {
        if (!holdsWriting)
            lock_.unlock(LockFile::kWriting);
    };
    Recovery recovery;
    try {
        const Alone alone(*this);
        recovery = recoverFile();
    } catch (...) {
        unlockWriting();
        throw;
    }
    unlockWriting();
    tell(recovery);
    return recovery.outcome;
}

/// Requires that nobody of us is at work.
Recovery Sharing::recoverFile() {
    const Journal::Found journal = Journal::find(database_.path(), database_.disk(), mayWrite_);
    const bool needed = Pairs(database_, format_).find(Pairs::kWriting).has_value();
    // What nobody needs can stay where it is.
    const auto left = [&](const std::string& why) {
        return Recovery{Recovery::Outcome::leftThere, {}, why};
    };
    if (journal.what != Journal::Found::What::nothing) {
        if (const auto stranger = foreigner(true)) {
            if (!needed)
                return left(journal.why);
            throw Error(
                Errc::locked,
                "Uma gravação foi interrompida e precisa ser desfeita, mas o banco de dados "
                "está aberto em outro programa, de " +
                    lock_.nameOf(*stranger) + ". Feche-o lá e tente de novo.");
        }
        // The journal may be of a transaction that is being written at this moment.
        if (attendance_.hasStranger())
            throw Error(Errc::locked, kByAnotherName);
    }
    if (mayWrite_)
        return recover(database_, format_);
    try {
        File writable(database_.path(), File::Mode::readWrite, database_.disk());
        return recover(writable, format_);
    } catch (const Error& error) {
        if (error.code() != Errc::readOnly)
            throw;
        if (!needed)
            return left(journal.why);
        throw Error(Errc::readOnly,
                    std::string("Uma gravação foi interrompida e precisa ser desfeita antes "
                                "que os dados possam ser lidos. ") +
                        error.what());
    }
}

void Sharing::tell(const Recovery& recovery) {
    if (recovery.outcome == Recovery::Outcome::setAside)
        notice_ = "Ao lado do banco de dados havia o registro de uma gravação interrompida, que "
                  "não pôde ser usado: " +
                  recovery.reason + " Ele foi guardado como \"" + recovery.aside.string() +
                  "\". Confira os últimos lançamentos.";
    if (recovery.outcome == Recovery::Outcome::leftThere && !recovery.reason.empty())
        (mayWrite_ ? lasting_ : notice_) =
            "O banco de dados pode ser consultado mas não alterado, porque o que está ao lado dele "
            "no lugar do registro das gravações não pode ser usado nem posto de lado. " +
            recovery.reason;
}

/// True if the file was brought back and has to be looked at again.
bool Sharing::recoverDeadWriter(const Pairs& pairs, bool holdsWriting) {
    if (!deadWriter(pairs))
        return false;
    if (Journal::find(database_.path(), database_.disk(), mayWrite_).what ==
        Journal::Found::What::nothing) {
        noteSuspect(pairs);
        return false;
    }
    if (reading_) {
        lock_.unlock(LockFile::kReading);
        reading_ = false;
    }
    if (runRecovery(holdsWriting) == Recovery::Outcome::leftThere)
        noteSuspect(pairs);
    return true;
}

// ---- foreign programs -------------------------------------------------------------------------

/// A copy that is just entering is unmarked for a moment, and one that writes closes the gate: both
/// hold O.
std::optional<unsigned> Sharing::foreigner(bool entranceClosed) {
    const auto find = [&]() -> std::optional<unsigned> {
        const std::vector<unsigned> users = lock_.otherUsers();
        // One of us who takes long to write: nobody else comes in meanwhile.
        if (!entranceClosed && users.size() >= kGateClosed)
            return std::nullopt;
        for (const unsigned user : users)
            if (lock_.isForeign(user))
                return user;
        return std::nullopt;
    };
    std::optional<unsigned> found = find();
    if (!found || entranceClosed)
        return found;
    if (waitFor([&] { return lock_.tryLock(LockFile::kEntering); }, milliseconds(250))) {
        const Held entering(lock_, LockFile::kEntering);
        return find();
    }
    for (int i = 0; i < 4 && found; ++i) {
        pause(milliseconds(50));
        const auto again = find();
        found = again == found ? again : std::nullopt;
    }
    return found;
}

std::optional<std::string> Sharing::whyNotWritable() {
    if (lasting_)
        return lasting_;
    return foreignReason(false);
}

std::optional<std::string> Sharing::foreignReason(bool entranceClosed) {
    const auto stranger = foreigner(entranceClosed);
    lookedForForeign_ = steady_clock::now();
    careful_ = suspect_ || stranger.has_value();
    if (!database_.isAt(database_.path()))
        return replacedReason();
    if (!stranger && attendance_.hasStranger()) {
        careful_ = true;
        return kByAnotherName;
    }
    if (!stranger)
        return std::nullopt;
    return "O banco de dados também está aberto em outro programa, de " + lock_.nameOf(*stranger) +
           ". Para proteger os dados, nada pode ser alterado até que ele seja fechado lá; as "
           "consultas continuam.";
}

std::string Sharing::replacedReason() const {
    return "O arquivo \"" + database_.path().string() +
           "\" foi substituído, ou mudou de lugar, enquanto estava aberto: o que se vê aqui é do "
           "arquivo anterior, e nada mais pode ser alterado. Feche o programa e abra-o de novo.";
}

void Sharing::requireNoForeigner(bool entranceClosed) {
    if (const auto reason = foreignReason(entranceClosed))
        throw Error(Errc::locked, *reason);
}

// ---- reading ----------------------------------------------------------------------------------

void Sharing::lockForReading() {
    if (!shared_)
        return;
    const auto now = steady_clock::now();
    if (now - lookedForWriter_ >= kWriterEvery) {
        // A writer would wait for ever if readers took turns.
        lookedForWriter_ = now;
        if (lock_.isHeld(LockFile::kWantsReaders))
            waitFor([&] { return !lock_.isHeld(LockFile::kWantsReaders); }, milliseconds(100));
    }
    if (!waitFor([&] { return lock_.tryLock(LockFile::kReading, Disk::Lock::shared); },
                 kLongestWait))
        throw Error(Errc::locked, "Outra estação está gravando no banco de dados há muito tempo" +
                                      others() + ". Espere um pouco e tente de novo.");
    reading_ = true;
    database_.lookAgain();
}

void Sharing::enterSection() {
    disturbed_ = repeatable_ = false;
    depth_ = 1;
    try {
        lockForReading();
        if (shared_ && !suspect_ && steady_clock::now() - lookedForForeign_ >= kForeignEvery)
            static_cast<void>(foreignReason(false));
        lookAtNews(false);
    } catch (...) {
        depth_ = 0;
        leaveSection();
        throw;
    }
}

void Sharing::beginLook() {
    const auto now = steady_clock::now();
    bool light = !careful_ && !disturbed_ && !overtaken_ && now - lookedForForeign_ < kForeignEvery;
    if (light && now - lookedAtNews_ >= newsHold_) {
        database_.lookAgain();
        light = Pairs(database_, format_) == seen_;
        if (light)
            lookedAtNews_ = now;
    }
    if (light)
        depth_ = 1;
    else
        enterSection();
    light_ = light;
    repeatable_ = true;
}

void Sharing::makeHeavy() {
    light_ = false;
    lockForReading();
    verifyUnchanged();
}

void Sharing::leaveSection() noexcept {
    if (reading_)
        lock_.unlock(LockFile::kReading);
    reading_ = false;
}

/// Whoever sees that another has written forgets what is known of the file.
void Sharing::lookAtNews(bool holdsWriting) {
    const auto begun = steady_clock::now();
    Pairs pairs(database_, format_);
    if (pairs == seen_ && !overtaken_) {
        lookedAtNews_ = begun;
        return;
    }
    for (int attempt = 0; !suspect_ && pairs.find(Pairs::kWriting); ++attempt) {
        if (!recoverDeadWriter(pairs, holdsWriting)) {
            if (suspect_)
                break;
            // A foreign program at work.
            careful_ = true;
            if (attempt == 20)
                throw Error(Errc::locked, "Outro programa está gravando no banco de dados" +
                                              others() + ". Espere um pouco e tente de novo.");
            pause(milliseconds(100));
        } else if (!holdsWriting) {
            lockForReading();
        }
        pairs = Pairs(database_, format_);
    }
    const Pairs known = std::exchange(seen_, pairs);
    try {
        onNews_();
        overtaken_ = false;
    } catch (...) {
        seen_ = known; // and the next look tries again
        throw;
    }
    noteWriters(known);
}

void Sharing::noteWriters(const Pairs& before) {
    ++news_;
    for (std::size_t user = 1; shared_ && user < Pairs::kUsers; ++user)
        if (before[user] != seen_[user] && user != lock_.user())
            writers_[user] = {news_, lock_.nameOf(static_cast<unsigned>(user))};
}

std::vector<std::string> Sharing::writersSince(std::uint64_t news) const {
    std::vector<std::string> names;
    for (const auto& [user, writer] : writers_)
        if (writer.news > news && std::ranges::find(names, writer.name) == names.end())
            names.push_back(writer.name);
    return names;
}

void Sharing::verifyUnchanged() {
    if (Pairs(database_, format_) == seen_)
        return;
    disturbed_ = true;
    throw Error(Errc::locked,
                "Outra estação ou outro programa gravou no banco de dados durante a leitura" +
                    others() + ". Tente de novo.");
}

// ---- writing ----------------------------------------------------------------------------------

bool Sharing::isAwaited() const { return lock_.isHeld(LockFile::kWantsWriting); }
bool Sharing::isTakenByOther() const { return !writing_ && lock_.isHeld(LockFile::kWriting); }

void Sharing::beginWriting() {
    if (writing_)
        return;
    if (lasting_)
        throw Error(Errc::readOnly, *lasting_);
    // Never wait for W with R in hand: its holder may be waiting for that.
    leaveSection();
    light_ = false;
    if (std::exchange(yields_, false))
        waitFor([&] { return lock_.isHeld(LockFile::kWriting) || !isAwaited(); },
                milliseconds(200));
    if (!lock_.tryLock(LockFile::kWriting)) {
        const Announced wish(lock_, LockFile::kWantsWriting, Disk::Lock::shared);
        const bool got = waitFor([&] { return lock_.tryLock(LockFile::kWriting); }, kLongestWait);
        if (!got) {
            if (depth_ > 0)
                makeHeavy(); // and somebody may have written meanwhile
            throw Error(Errc::locked,
                        "Outra estação está gravando no banco de dados há muito tempo" + others() +
                            kNotSaved);
        }
    }
    writing_ = true;
    try {
        database_.lookAgain();
        lookAtNews(true);
        if (lasting_)
            throw Error(Errc::readOnly, *lasting_);
        requireNoForeigner(false);
    } catch (...) {
        endWriting();
        throw;
    }
}

void Sharing::endWriting() noexcept {
    if (!writing_)
        return;
    try {
        // A section that is still open goes on as a reader: with W in hand nobody else can be
        // writing pages.
        if (depth_ > 0)
            reading_ = lock_.tryLock(LockFile::kReading, Disk::Lock::shared);
        yields_ = isAwaited();
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // Then the section reads on without its lock; the next one looks at the news.
    }
    lock_.unlock(LockFile::kWriting);
    writing_ = false;
}

Sharing::Alone::Alone(Sharing& sharing) : lock_(sharing.lock_) {
    const bool got = [&] {
        const Announced wish(lock_, LockFile::kWantsReaders, Disk::Lock::exclusive);
        return waitFor([&] { return lock_.tryLock(LockFile::kReading); }, kLongestWait);
    }();
    if (!got)
        throw Error(Errc::locked, "Outra estação está lendo o banco de dados há muito tempo" +
                                      sharing.others() + kNotSaved);
    try {
        sharing.database_.lookAgain();
        sharing.lockOrSay(LockFile::kEntering, kLongestEntering);
        if (!waitFor([&] { return lock_.closeGate(); }, milliseconds(500)))
            throw Error(Errc::locked,
                        "Outro programa está abrindo o banco de dados neste momento. Nada foi "
                        "gravado; tente de novo.");
    } catch (...) {
        giveBack();
        throw;
    }
}

void Sharing::Alone::giveBack() noexcept {
    lock_.openGate();
    lock_.unlock(LockFile::kEntering);
    lock_.unlock(LockFile::kReading);
}

void Sharing::refuseOvertaken() {
    overtaken_ = true;
    throw Error(Errc::conflict,
                "Outro programa gravou no arquivo do banco de dados sem avisar as estações. Nada "
                "foi gravado aqui; confira os dados e repita a alteração. Se isso se repetir, "
                "descubra que programa é esse e feche-o antes de continuar.");
}

void Sharing::commit(const ChangedPages& changed) {
    const Alone alone(*this);
    // Into the file that nobody has any more no transaction can go, now or later.
    if (!database_.isAt(database_.path()))
        throw Error(Errc::conflict, replacedReason());
    requireNoForeigner(true);
    const Pairs pairs(database_, format_);
    if (pairs != seen_)
        throw Error(Errc::conflict,
                    "Outro programa alterou o banco de dados ao mesmo tempo. Nada foi gravado; "
                    "confira os dados e repita a alteração.");
    if (database_.size() != std::uint64_t{changed.fileBefore} * format_.pageSize)
        refuseOvertaken();
    try {
        committer_->commit(changed);
    } catch (...) {
        // What was undone has counted as well.
        if (!committer_->isBroken())
            seen_ = Pairs(database_, format_);
        throw;
    }
    seen_.set(lock_.user(), Pairs::after(seen_[lock_.user()]));
}

} // namespace jet
