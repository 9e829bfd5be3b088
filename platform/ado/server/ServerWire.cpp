#include "ado/server/ServerWire.h"

#include "ado/provider/Cursor.h"
#include "jet/Error.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <libpq-fe.h>
#include <random>
#include <utility>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

/// Of what was put, so much is sent before an answer is looked at.
constexpr std::size_t kPutAtOnce = 500;

constexpr char kMark[] = "savepoint mudanca";
constexpr char kForgetMark[] = "release savepoint mudanca";
constexpr char kStep[] = "savepoint passo";
constexpr char kForgetStep[] = "release savepoint passo";

/// Each transaction that changes anything leaves its trace there, so that this waits for all of
/// them, and they for this.
constexpr char kClaim[] = "lock table valtrino_estacoes.gravacao in share row exclusive mode";

constexpr char kTurn[] = "select pg_advisory_xact_lock(hashtext('valtrino'))";

constexpr char kLostReading[] =
    "A conexão com o servidor caiu no meio da leitura. Faça de novo o que estava fazendo.";
constexpr char kStillAway[] =
    "A conexão com o servidor caiu e ainda não voltou. Tente de novo daqui a pouco.";
constexpr char kAnotherPassword[] =
    "A conexão com o servidor caiu, e ele não aceita mais o usuário ou a senha de antes. Depois de "
    "digitar a senha que vale agora, faça de novo o que estava fazendo.";
constexpr char kPasswordInDoubt[] = "A conexão com o servidor caiu durante a gravação, e ele não "
                                    "aceita mais o usuário ou a senha de "
                                    "antes. Não a repita: com a senha que vale agora, o programa "
                                    "pergunta a ele se foi feita e avisa.";
constexpr char kDoubtful[] =
    "A conexão com o servidor caiu durante a gravação, e ainda não se sabe se ela foi feita. Não a "
    "repita: assim que o servidor voltar, o programa pergunta a ele e avisa.";
constexpr char kDone[] =
    "A conexão com o servidor caiu durante a gravação. Ela foi feita: não a repita.";
constexpr char kUndone[] =
    "A conexão com o servidor caiu durante a gravação. Ela não foi feita: grave de novo.";

[[noreturn]] void throwOffline(const char* sentence) { throw Error(Errc::offline, sentence); }

/// A name that nobody else has.
std::string newStation() {
    std::random_device random;
    std::array<char, 40> text{};
    const auto four = [&] { return static_cast<unsigned>(random()); };
    const unsigned middle = four();
    const unsigned more = four();
    std::snprintf(text.data(), text.size(), "%08x-%04x-%04x-%04x-%04x%08x", four(), middle >> 16,
                  middle & 0xffff, more >> 16, more & 0xffff, four());
    return text.data();
}

} // namespace

// ---- the line ---------------------------------------------------------------------------------

ServerWire::ServerWire(const std::string& address) : line_(address) {}

ServerWire::~ServerWire() {
    if (number_ > 0 && !station_.empty() && !open_ && !doubtful_)
        later("delete from valtrino_estacoes.gravacao where estacao = '" + station_ +
              "' or quando < now() - interval '90 days'");
}

bool ServerWire::awaitLine() {
    if (!line_.awaitAnew())
        return false;
    if (line_.isRefused())
        throw Error(Errc::password, doubtful_ ? kPasswordInDoubt : kAnotherPassword);
    return true;
}

void ServerWire::requireLine() {
    if (open_ && (lost_ || (begun_ && !line_.isUp())))
        loseTransaction();
    if (reading_ && !line_.isUp())
        loseTransaction();
    if (!line_.isUp() && !awaitLine())
        throwOffline(kStillAway);
}

/// What was begun on the line has gone with it.
void ServerWire::loseTransaction() {
    lost_ = open_;
    begun_ = reading_ = false;
    ahead_.clear();
    if (open_)
        ServerLine::throwLost();
    throwOffline(kLostReading);
}

// ---- exchanges --------------------------------------------------------------------------------

/// What goes before all else that is said now.
std::vector<ServerStatement> ServerWire::opening() const {
    std::vector<ServerStatement> steps;
    if (!begun_ && !reading_) {
        if (open_)
            steps.push_back({"begin isolation level read committed"});
        if (open_ && claiming_)
            steps.push_back({kClaim});
        if (open_ && !station_.empty())
            steps.push_back(trace());
        if (!open_ && readings_ > 0)
            steps.push_back({"begin isolation level repeatable read"});
    }
    for (const std::string& step : ahead_)
        steps.push_back({step});
    return steps;
}

void ServerWire::sendPut() {
    const std::vector<ServerStatement> put = std::exchange(put_, {});
    for (std::size_t sent = 0; sent < put.size(); sent += kPutAtOnce) {
        requireLine();
        std::vector<ServerStatement> steps = opening();
        const std::size_t first = steps.size();
        const auto here = put.begin() + static_cast<std::ptrdiff_t>(sent);
        const std::size_t count = std::min(kPutAtOnce, put.size() - sent);
        steps.insert(steps.end(), here, here + static_cast<std::ptrdiff_t>(count));
        const ServerLine::Answer answer = line_.exchange(steps);
        if (answer.lost)
            loseTransaction();
        begun_ = true;
        ahead_.clear();
        if (answer.failure)
            line_.fail(answer);
        for (std::size_t i = first; i < steps.size(); ++i)
            if (answer.rows[i]->affected() != 1)
                goneOrChanged();
    }
}

ServerRows ServerWire::run(const std::vector<ServerStatement>& statements) {
    sendPut();
    for (int tries = 0;; ++tries) {
        requireLine();
        const bool inside = open_ || readings_ > 0;
        const bool fresh = !begun_ && !reading_; // nothing has gone with the line before
        std::vector<ServerStatement> steps = opening();
        if (inside)
            steps.push_back({kStep});
        steps.insert(steps.end(), statements.begin(), statements.end());
        const std::size_t last = steps.size() - 1;
        if (inside)
            steps.push_back({kForgetStep});
        ServerLine::Answer answer = line_.exchange(steps);
        if (answer.lost && fresh && tries == 0)
            continue;
        if (answer.lost && inside)
            loseTransaction();
        if (answer.lost)
            throwOffline(kLostReading);
        begun_ = open_;
        reading_ = inside && !open_;
        ahead_.clear();
        if (answer.failure) {
            if (inside)
                ahead_ = {"rollback to savepoint passo", kForgetStep};
            line_.fail(answer);
        }
        return std::move(*answer.rows[last]);
    }
}

ServerRows ServerWire::runAlone(const ServerStatement& statement) {
    requireSettled();
    stopReading();
    ++number_;
    const bool inTurn = std::exchange(turn_, false);
    for (int tries = 0;; ++tries) {
        requireLine();
        std::vector<ServerStatement> steps;
        if (!station_.empty())
            steps.push_back(trace());
        if (inTurn)
            steps.push_back({kTurn});
        steps.push_back(statement);
        ServerLine::Answer answer = line_.exchange(steps);
        if (answer.lost) {
            if (settle()) // but what it has given is lost
                throwOffline(kDone);
            if (tries == 0)
                continue;
            throwOffline(kUndone);
        }
        if (answer.failure)
            line_.fail(answer);
        return std::move(*answer.rows.back());
    }
}

// ---- transactions -----------------------------------------------------------------------------

void ServerWire::begin() {
    if (open_)
        throw Error(Errc::misuse, "Já há uma transação aberta.");
    requireSettled();
    stopReading();
    open_ = true;
    claiming_ = turn_ = false;
    ++number_;
}

void ServerWire::commit() {
    if (!open_)
        throw Error(Errc::misuse, "Não há transação aberta.");
    sendPut();
    open_ = turn_ = false;
    const bool lost = std::exchange(lost_, false) || (begun_ && !line_.isUp());
    std::vector<ServerStatement> steps;
    for (const std::string& step : std::exchange(ahead_, {}))
        steps.push_back({step});
    steps.push_back({"commit"});
    const bool begun = std::exchange(begun_, false);
    if (lost)
        ServerLine::throwLost();
    if (!begun)
        return;
    const ServerLine::Answer answer = line_.exchange(steps);
    if (answer.lost && !settle())
        throwOffline(kUndone);
    if (answer.lost || !answer.failure)
        return;
    if (PQtransactionStatus(line_.get()) != PQTRANS_IDLE) // a step before it failed, not "commit"
        static_cast<void>(line_.exchange({{"rollback"}}));
    line_.fail(answer);
}

void ServerWire::rollback() {
    if (!open_)
        throw Error(Errc::misuse, "Não há transação aberta.");
    open_ = lost_ = turn_ = false;
    ahead_.clear();
    put_.clear();
    if (std::exchange(begun_, false))
        line_.later("rollback"); // one that is lost is undone as well
}

/// Before the trace, for which everybody waits who is about to change anything.
void ServerWire::claim() {
    if (begun_)
        static_cast<void>(run(kClaim));
    else
        claiming_ = true; // as the transaction begins, with its first statement
}

void ServerWire::takeTurn() {
    if (!std::exchange(turn_, true) && open_)
        ahead_.emplace_back(kTurn);
}

void ServerWire::mark() { ahead_.emplace_back(kMark); }

void ServerWire::forgetMark() {
    if (!ahead_.empty() && ahead_.back() == kMark)
        ahead_.pop_back(); // not said yet
    else
        ahead_.emplace_back(kForgetMark);
}

void ServerWire::backToMark() {
    if (ahead_.empty() || ahead_.back() != kMark)
        ahead_.emplace_back("rollback to savepoint mudanca");
    forgetMark();
}

void ServerWire::endReading() {
    if (--readings_ == 0)
        stopReading();
}

void ServerWire::stopReading() {
    if (!std::exchange(reading_, false))
        return;
    ahead_.clear();
    later("commit");
}

// ---- what has become of it --------------------------------------------------------------------

void ServerWire::leaveTraces() { station_ = newStation(); }

/// The number of the station's last transaction that was ended well stays with its name.
ServerStatement ServerWire::trace() const {
    return {
        "insert into valtrino_estacoes.gravacao (estacao, numero) values ($1, $2) "
        "on conflict (estacao) do update set numero = excluded.numero, "
        "quando = excluded.quando",
        {{0, station_}, {0, std::to_string(number_)}}
    };
}

/// Whether the last transaction is done; nothing if that can't be told now. Waits until whoever
/// still works at it has ended.
std::optional<bool> ServerWire::wasDone() {
    const ServerLine::Answer answer = line_.exchange({
        {"insert into valtrino_estacoes.gravacao (estacao) values ($1) "
         "on conflict (estacao) do update set quando = excluded.quando returning numero", {{0, station_}}}
    });
    if (answer.lost || answer.failure)
        return std::nullopt;
    return answer.rows.front()->field(0, 0) == std::to_string(number_);
}

/// Whether that which was sent and not answered is done. @throws Error{offline}: not known yet.
bool ServerWire::settle() {
    doubtful_ = true;
    if (!station_.empty() && awaitLine()) {
        if (const auto done = wasDone()) {
            doubtful_ = false;
            return *done;
        }
    }
    throwOffline(kDoubtful);
}

void ServerWire::requireSettled() {
    if (doubtful_)
        throwOffline(settle() ? kDone : kUndone);
}

void ServerWire::lookAfter() {
    if (open_ || reading_ || line_.isRefused() || !line_.tryAnew() || !doubtful_)
        return;
    if (const auto done = wasDone()) {
        doubtful_ = false;
        throwOffline(*done ? kDone : kUndone);
    }
}

void ServerWire::listen(const std::function<void(std::string_view payload, int other)>& heard) {
    if (line_.hasListened() && (begun_ || reading_))
        return; // in the middle of a transaction a server tells none
    if (line_.listen(heard) && !open_ && !reading_)
        line_.askForNews();
}

} // namespace ado
