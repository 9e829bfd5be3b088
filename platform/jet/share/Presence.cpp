#include "jet/share/Presence.h"

#include "jet/Waiting.h"
#include "jet/share/Held.h"

#include <algorithm>
#include <vector>

namespace jet {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using Why = Hindrance::Why;

constexpr std::size_t kMostNamed = 3;
constexpr std::size_t kGateClosed = 250; ///< so many users at once are none
/// A foreign program needs some time to open a file: twice that often we look.
constexpr milliseconds kForeignEvery{500};

constexpr const char* kByAnotherName =
    "O banco de dados também está aberto por outro caminho ou com outro nome, ou o arquivo .ldb "
    "foi apagado enquanto estava em uso. Para proteger os dados, nada pode ser alterado até que "
    "uma das estações o feche; as consultas continuam.";

} // namespace

// ---- we ---------------------------------------------------------------------------------------

void Presence::open() {
    try {
        lock_.open(&database_);
        // Some shares have no locks: then this says so.
        if (lock_.tryLock(LockFile::kReading, Disk::Lock::shared))
            lock_.unlock(LockFile::kReading);
        shared_ = true;
    } catch (const Error& error) {
        hinder(Why::noLockFile,
               std::string("O banco de dados pode ser consultado mas não alterado, porque o "
                           "arquivo que avisa as outras estações não pôde ser usado. ") +
                   error.what());
        careful_ = true;
    }
}

void Presence::takeUser() {
    if (!lock_.takeUser())
        throw Error(Errc::locked,
                    "O banco de dados já está aberto em 255 estações, o máximo possível. Feche-o "
                    "em alguma delas e tente de novo.");
    attendance_.mark();
}

void Presence::require(std::uint64_t what, milliseconds longest) {
    if (!waitFor([&] { return lock_.tryLock(what); }, longest))
        throw Error(Errc::locked, "O banco de dados está ocupado por outra estação" + others() +
                                      ". Espere um pouco e tente de novo.");
}

// ---- whether anybody may write ----------------------------------------------------------------

std::optional<Hindrance> Presence::hindrance(Look look) {
    if (lasting_ || look == Look::known)
        return lasting_;
    // Who has come by another name since has seen our mark, and doesn't write; and before pages are
    // written he is looked for again, as is the file itself.
    if (look == Look::users && clear_ && !isLookDue(steady_clock::now()) && !foreigner(look))
        return std::nullopt;
    return lookAround(look);
}

void Presence::hinder(Why why, const std::string& sentence) { lasting_ = {why, sentence}; }

std::optional<Hindrance> Presence::lookAround(Look look) {
    const auto stranger = foreigner(look);
    looked_ = steady_clock::now();
    clear_ = false;
    careful_ = suspect_ || stranger.has_value();
    if (!database_.isAt(database_.path()))
        return Hindrance{Why::replaced, "O arquivo \"" + database_.path().string() +
                                            "\" foi substituído, ou mudou de lugar, enquanto "
                                            "estava aberto: o que se vê aqui é do arquivo "
                                            "anterior, e nada mais pode ser alterado. Feche o "
                                            "programa e abra-o de novo."};
    if (stranger)
        return Hindrance{Why::foreign,
                         "O banco de dados também está aberto em outro programa, de " +
                             lock_.nameOf(*stranger) +
                             ". Para proteger os dados, nada pode ser alterado até "
                             "que ele seja fechado lá; as consultas continuam."};
    if (!attendance_.hasStranger()) {
        clear_ = true;
        return std::nullopt;
    }
    careful_ = true;
    return Hindrance{Why::otherName, kByAnotherName};
}

// ---- foreign programs -------------------------------------------------------------------------

/// A copy that is just entering is unmarked for a moment, and one that writes closes the gate: both
/// hold O.
std::optional<unsigned> Presence::foreigner(Look look) {
    const auto find = [&]() -> std::optional<unsigned> {
        const std::vector<unsigned> users = lock_.otherUsers();
        // One of us who takes long to write: nobody else comes in meanwhile.
        if (look != Look::entranceClosed && users.size() >= kGateClosed)
            return std::nullopt;
        for (const unsigned user : users)
            if (lock_.isForeign(user))
                return user;
        return std::nullopt;
    };
    std::optional<unsigned> found = find();
    if (!found || look == Look::entranceClosed)
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

bool Presence::isLookDue(steady_clock::time_point now) const noexcept {
    return now - looked_ >= kForeignEvery;
}

void Presence::lookIfDue() {
    if (shared_ && !suspect_ && isLookDue(steady_clock::now()))
        lookAround(Look::around);
}

void Presence::requireNoStranger() const {
    if (attendance_.hasStranger())
        throw Error(Errc::locked, kByAnotherName);
}

// ---- who died ---------------------------------------------------------------------------------

std::optional<std::size_t> Presence::deadWriter(const CommitPairs& pairs) const {
    for (std::size_t user = 0; shared_ && user < CommitPairs::kUsers; ++user)
        if (pairs[user] == CommitPairs::kWriting &&
            (user == 0 || user == lock_.user() || !lock_.isForeign(static_cast<unsigned>(user))))
            return user;
    return std::nullopt;
}

void Presence::noteSuspect(const CommitPairs& pairs) {
    noteSuspect();
    const auto damaged = pairs.find(CommitPairs::kDamaged);
    const auto user = damaged ? damaged : deadWriter(pairs);
    const std::string who =
        user.value_or(0) > 0 ? lock_.nameOf(static_cast<unsigned>(*user)) : "usuário desconhecido";
    hinder(Why::suspect, "O banco de dados foi deixado danificado por outro programa, de " + who +
                             ": os dados podem ser consultados, mas não alterados. Repare-o com o "
                             "programa que o gravou, ou volte a uma cópia de segurança.");
}

// ---- names ------------------------------------------------------------------------------------

/// As far as they help to find them: somebody who has closed the gate looks like all of them at
/// once.
std::string Presence::others() const {
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

} // namespace jet
