#include "ado/server/ServerWire.h"

#include "ado/provider/Cursor.h"
#include "ado/server/ServerError.h"
#include "jet/Error.h"
#include "jet/Waiting.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <libpq-fe.h>
#include <random>
#include <thread>
#include <utility>

namespace ado {

using jet::Errc;
using jet::Error;
using std::chrono::milliseconds;

namespace {

/// Between two tries.
constexpr milliseconds kPauseOfTries{200};
constexpr std::chrono::microseconds kPauseOfNews{50};

/// Of what was put, so much is sent before an answer is looked at.
constexpr std::size_t kPutAtOnce = 500;

constexpr char kMark[] = "savepoint mudanca";
constexpr char kForgetMark[] = "release savepoint mudanca";
constexpr char kStep[] = "savepoint passo";
constexpr char kForgetStep[] = "release savepoint passo";

/// Each transaction that changes anything leaves its trace there, so that this waits for all of
/// them, and they for this.
constexpr char kClaim[] = "lock table valtrino_estacoes.gravacao in share row exclusive mode";

constexpr char kListen[] = "listen valtrino";

constexpr char kTurn[] = "select pg_advisory_xact_lock(hashtext('valtrino'))";

constexpr char kLostWriting[] =
    "A conexão com o servidor caiu no meio da gravação. Nada dela foi gravado: grave de novo.";
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

bool isFailure(const pg_result* result) {
    const ExecStatusType status = PQresultStatus(result);
    return status == PGRES_FATAL_ERROR || status == PGRES_BAD_RESPONSE ||
           status == PGRES_NONFATAL_ERROR;
}

/// Whether the server has ended the line with it.
bool isLastWord(const pg_result* result) {
    const char* const severity = PQresultErrorField(result, PG_DIAG_SEVERITY_NONLOCALIZED);
    return severity != nullptr && std::string_view(severity) != "ERROR";
}

bool send(pg_conn* line, const ServerStatement& statement) {
    std::vector<unsigned> types;
    std::vector<const char*> values;
    types.reserve(statement.parameters.size());
    values.reserve(statement.parameters.size());
    for (const Parameter& parameter : statement.parameters) {
        types.push_back(parameter.type);
        values.push_back(parameter.text ? parameter.text->c_str() : nullptr);
    }
    return PQsendQueryParams(line, statement.sql.c_str(), static_cast<int>(values.size()),
                             types.data(), values.data(), nullptr, nullptr, 0) == 1;
}

bool isOn(const pg_conn* line, const char* setting) {
    const char* const value = PQparameterStatus(line, setting);
    return value != nullptr && std::string_view(value) == "on";
}

/// One that copies another, which tells nothing of what is changed.
bool isStandby(const pg_conn* line) { return isOn(line, "in_hot_standby"); }

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

ServerWire::ServerWire(const std::string& address) : address_(address), line_(address_.connect()) {
    ++roundTrips_;
    if (isUp())
        greet();
    if (!isUp())
        throwNoConnection(line_.get(), place());
}

ServerWire::~ServerWire() {
    if (made_.valid())
        made_.wait();
    if (number_ > 0 && !station_.empty() && !open_ && !doubtful_)
        later("delete from valtrino_estacoes.gravacao where estacao = '" + station_ +
              "' or quando < now() - interval '90 days'");
}

bool ServerWire::isUp() const {
    return line_ && !down_ && !made_.valid() && PQstatus(line_.get()) == CONNECTION_OK;
}

/// What a new line is told first. Whoever is at the server's end of the one before might still be
/// about to do what was last said on it, which mustn't happen later than we have asked for it.
void ServerWire::greet() {
    unanswered_ = 0;
    PQenterPipelineMode(line_.get());
    std::vector<ServerStatement> words;
    if (!end_.empty())
        words.push_back({
            "select pg_terminate_backend(pid, 5000) from pg_stat_activity "
            "where pid = $1 and backend_start = $2 and pid <> pg_backend_pid()",
            {{0, end_[0]}, {0, end_[1]}}
        });
    listening_ = !isStandby(line_.get());
    if (listening_)
        words.push_back({kListen});
    words.push_back({"select pid, backend_start from pg_stat_activity "
                     "where pid = pg_backend_pid()"});
    const Answer answer = exchange(words);
    if (answer.lost)
        return;
    if (answer.failure)
        fail(answer);
    end_ = {answer.rows.back()->field(0, 0).value_or("0"),
            answer.rows.back()->field(0, 1).value_or("-infinity")};
}

/// A step towards a line: whether there is one. It is made beside, since that may take long.
bool ServerWire::tryLine() {
    if (!made_.valid()) {
        if (isUp())
            return true;
        made_ = std::async(std::launch::async, [old = std::move(line_), to = address_]() mutable {
            old.reset();
            ServerAddress::Line line = to.connect();
            if (PQstatus(line.get()) != CONNECTION_OK)
                std::this_thread::sleep_for(kPauseOfTries);
            return line;
        });
        return false;
    }
    if (made_.wait_for(milliseconds(0)) != std::future_status::ready)
        return false;
    line_ = made_.get();
    down_ = false;
    refused_ = refusesPassword(line_.get());
    if (!isUp())
        return false;
    ++roundTrips_;
    ++lines_;
    greet();
    return isUp();
}

bool ServerWire::awaitLine() {
    refused_ = false;
    if (!jet::waitFor([this] { return tryLine() || refused_; }, patience))
        return false;
    if (refused_)
        throw Error(Errc::password, doubtful_ ? kPasswordInDoubt : kAnotherPassword);
    return true;
}

void ServerWire::requireLine() {
    if (open_ && (lost_ || (begun_ && !isUp())))
        loseTransaction();
    if (reading_ && !isUp())
        loseTransaction();
    if (!isUp() && !awaitLine())
        throwOffline(kStillAway);
}

/// What was begun on the line has gone with it.
void ServerWire::loseTransaction() {
    lost_ = open_;
    begun_ = reading_ = false;
    ahead_.clear();
    throwOffline(open_ ? kLostWriting : kLostReading);
}

// ---- exchanges --------------------------------------------------------------------------------

/// Whether the server is, though it says nothing on this line.
bool ServerWire::isAlive() const {
    auto asked = std::async(std::launch::async, [this] { return address_.answersAt(line_.get()); });
    const auto told = [&] { return asked.wait_for(milliseconds(0)) == std::future_status::ready; };
    while (!jet::waitFor(told, silence)) {
    }
    return asked.get();
}

bool ServerWire::await(const std::function<bool()>& come) {
    while (!jet::waitFor(come, silence))
        if (!isAlive()) {
            down_ = true;
            return false;
        }
    return true;
}

std::optional<ServerRows> ServerWire::next() {
    if (!await([this] { return ServerRows::haveCome(line_.get()); }))
        return std::nullopt;
    return ServerRows(PQgetResult(line_.get()));
}

void ServerWire::throwLost() { throwOffline(kLostWriting); }

/// Takes in what one pipeline gives: for `answer`, if that is given.
void ServerWire::take(Answer* answer) {
    std::size_t number = 0;
    for (bool ended = false;;) {
        auto one = next();
        if (!one)
            return;
        const pg_result* const result = one->get();
        if (result == nullptr) { // the end of what one statement gives; twice, of all there is
            down_ = down_ || ended || PQstatus(line_.get()) != CONNECTION_OK;
            if (down_)
                return;
            ended = true;
            ++number;
            continue;
        }
        ended = false;
        if (PQresultStatus(result) == PGRES_PIPELINE_SYNC)
            return;
        const bool failed = isFailure(result);
        down_ = down_ || (failed && isLastWord(result));
        if (answer == nullptr)
            continue;
        if (failed && !answer->failure)
            answer->failure = std::move(one);
        else if (!failed && number < answer->rows.size())
            answer->rows[number] = std::move(one);
    }
}

/// Takes in what nobody waits for, as far as it has come.
void ServerWire::takeUnanswered() {
    for (bool ended = false; unanswered_ > 0 && isUp() && PQisBusy(line_.get()) == 0;) {
        const ServerRows one(PQgetResult(line_.get()));
        down_ = down_ || (ended && one.get() == nullptr);
        ended = one.get() == nullptr;
        if (!ended && PQresultStatus(one.get()) == PGRES_PIPELINE_SYNC)
            --unanswered_;
    }
}

ServerWire::Answer ServerWire::exchange(const std::vector<ServerStatement>& statements) {
    ++roundTrips_;
    listened_ = {};
    Answer answer;
    answer.rows.resize(statements.size());
    for (const ServerStatement& statement : statements)
        down_ = down_ || !send(line_.get(), statement);
    down_ = down_ || PQpipelineSync(line_.get()) != 1;
    for (; unanswered_ > 0 && !down_; --unanswered_)
        take(nullptr);
    if (!down_)
        take(&answer);
    answer.lost = down_;
    return answer;
}

void ServerWire::fail(const Answer& answer) const {
    throwServerError(line_.get(), answer.failure ? answer.failure->get() : nullptr, place());
}

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
        const Answer answer = exchange(steps);
        if (answer.lost)
            loseTransaction();
        begun_ = true;
        ahead_.clear();
        if (answer.failure)
            fail(answer);
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
        Answer answer = exchange(steps);
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
            fail(answer);
        }
        return std::move(*answer.rows[last]);
    }
}

ServerRows ServerWire::runAlone(const ServerStatement& statement) {
    requireSettled();
    stopReading();
    ++number_;
    for (int tries = 0;; ++tries) {
        requireLine();
        std::vector<ServerStatement> steps;
        if (!station_.empty())
            steps.push_back(trace());
        steps.push_back(statement);
        Answer answer = exchange(steps);
        if (answer.lost) {
            if (settle()) // but what it has given is lost
                throwOffline(kDone);
            if (tries == 0)
                continue;
            throwOffline(kUndone);
        }
        if (answer.failure)
            fail(answer);
        return std::move(*answer.rows.back());
    }
}

void ServerWire::later(const std::string& sql) {
    if (!isUp())
        return;
    if (send(line_.get(), {sql}) && PQpipelineSync(line_.get()) == 1)
        ++unanswered_;
    else
        down_ = true;
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
    open_ = false;
    const bool lost = std::exchange(lost_, false) || (begun_ && !isUp());
    std::vector<ServerStatement> steps;
    for (const std::string& step : std::exchange(ahead_, {}))
        steps.push_back({step});
    steps.push_back({"commit"});
    const bool begun = std::exchange(begun_, false);
    if (lost)
        throwOffline(kLostWriting);
    if (!begun)
        return;
    const Answer answer = exchange(steps);
    if (answer.lost && !settle())
        throwOffline(kUndone);
    if (answer.lost || !answer.failure)
        return;
    if (PQtransactionStatus(line_.get()) != PQTRANS_IDLE) // a step before it failed, not "commit"
        static_cast<void>(exchange({{"rollback"}}));
    fail(answer);
}

void ServerWire::rollback() {
    if (!open_)
        throw Error(Errc::misuse, "Não há transação aberta.");
    open_ = lost_ = false;
    ahead_.clear();
    put_.clear();
    if (std::exchange(begun_, false) && isUp())
        static_cast<void>(exchange({{"rollback"}})); // one that is lost is undone as well
}

/// Before the trace, for which everybody waits who is about to change anything.
void ServerWire::claim() {
    if (begun_)
        static_cast<void>(run(kClaim));
    else
        claiming_ = true; // as the transaction begins, with its first statement
}

void ServerWire::takeTurn() {
    if (open_ && !std::exchange(turn_, true))
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
    const Answer answer = exchange({
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
    if (open_ || reading_ || refused_ || !tryLine() || !doubtful_)
        return;
    if (const auto done = wasDone()) {
        doubtful_ = false;
        throwOffline(*done ? kDone : kUndone);
    }
}

// ---- news -------------------------------------------------------------------------------------

bool ServerWire::isReadOnly() const {
    return isUp() && (isStandby(line_.get()) || isOn(line_.get(), "default_transaction_read_only"));
}

void ServerWire::listen(const std::function<void(std::string_view payload, int other)>& heard) {
    const bool since = listened_ != std::chrono::steady_clock::time_point{};
    if (since && (begun_ || reading_))
        return; // in the middle of a transaction a server tells none
    const auto moment = std::chrono::steady_clock::now();
    if (moment - listened_ < kPauseOfNews)
        return; // whoever reads field after field spends no more on news than on them
    if (!isUp() || PQconsumeInput(line_.get()) == 0)
        return; // the next statement sees to it
    listened_ = moment;
    takeUnanswered();
    struct Freer {
        void operator()(PGnotify* notice) const { PQfreemem(notice); }
    };
    while (const auto notice = std::unique_ptr<PGnotify, Freer>(PQnotifies(line_.get())))
        heard(notice->extra, notice->be_pid == PQbackendPID(line_.get()) ? 0 : notice->be_pid);
    if (listening_ || open_ || reading_ || isStandby(line_.get()))
        return;
    listening_ = true; // it has taken over from the one it copied
    ++lines_;
    later(kListen);
}

} // namespace ado
