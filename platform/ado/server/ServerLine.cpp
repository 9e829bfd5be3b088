#include "ado/server/ServerLine.h"

#include "ado/server/ServerError.h"
#include "jet/Error.h"
#include "jet/Waiting.h"

#include <libpq-fe.h>
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

constexpr char kListen[] = "listen valtrino";

constexpr char kLost[] =
    "A conexão com o servidor caiu no meio da gravação. Nada dela foi gravado: grave de novo.";

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

} // namespace

ServerLine::ServerLine(const std::string& address) : address_(address), line_(address_.connect()) {
    ++roundTrips_;
    if (isUp())
        greet();
    if (!isUp())
        throwNoConnection(line_.get(), place());
}

bool ServerLine::isUp() const {
    return line_ && !down_ && !made_.valid() && PQstatus(line_.get()) == CONNECTION_OK;
}

/// What a new line is told first. Whoever is at the server's end of the one before might still be
/// about to do what was last said on it, which mustn't happen later than we have asked for it.
void ServerLine::greet() {
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

bool ServerLine::tryAnew() {
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

bool ServerLine::awaitAnew() {
    refused_ = false;
    return jet::waitFor([this] { return tryAnew() || refused_; }, patience);
}

// ---- exchanges --------------------------------------------------------------------------------

/// Whether the server is, though it says nothing on this line.
bool ServerLine::isAlive() const {
    auto asked = std::async(std::launch::async, [this] { return address_.answersAt(line_.get()); });
    const auto told = [&] { return asked.wait_for(milliseconds(0)) == std::future_status::ready; };
    while (!jet::waitFor(told, silence)) {
    }
    return asked.get();
}

bool ServerLine::await(const std::function<bool()>& come) {
    while (!jet::waitFor(come, silence))
        if (!isAlive()) {
            down_ = true;
            return false;
        }
    return true;
}

std::optional<ServerRows> ServerLine::next() {
    if (!await([this] { return ServerRows::haveCome(line_.get()); }))
        return std::nullopt;
    return ServerRows(PQgetResult(line_.get()));
}

void ServerLine::throwLost() { throw Error(Errc::offline, kLost); }

/// Takes in what one pipeline gives: for `answer`, if that is given.
void ServerLine::take(Answer* answer) {
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
void ServerLine::takeUnanswered() {
    for (bool ended = false; unanswered_ > 0 && isUp() && PQisBusy(line_.get()) == 0;) {
        const ServerRows one(PQgetResult(line_.get()));
        down_ = down_ || (ended && one.get() == nullptr);
        ended = one.get() == nullptr;
        if (!ended && PQresultStatus(one.get()) == PGRES_PIPELINE_SYNC)
            --unanswered_;
    }
}

ServerLine::Answer ServerLine::exchange(const std::vector<ServerStatement>& statements) {
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

void ServerLine::fail(const Answer& answer) const {
    throwServerError(answer.failure->get(), place());
}

void ServerLine::later(const std::string& sql) {
    if (!isUp())
        return;
    if (send(line_.get(), {sql}) && PQpipelineSync(line_.get()) == 1)
        ++unanswered_;
    else
        down_ = true;
}

// ---- news -------------------------------------------------------------------------------------

bool ServerLine::isReadOnly() const {
    return isUp() && (isStandby(line_.get()) || isOn(line_.get(), "default_transaction_read_only"));
}

bool ServerLine::hasListened() const noexcept {
    return listened_ != std::chrono::steady_clock::time_point{};
}

bool ServerLine::listen(const std::function<void(std::string_view payload, int other)>& heard) {
    const auto moment = std::chrono::steady_clock::now();
    if (moment - listened_ < kPauseOfNews)
        return false; // whoever reads field after field spends no more on news than on them
    if (!isUp() || PQconsumeInput(line_.get()) == 0)
        return false; // the next statement sees to it
    listened_ = moment;
    takeUnanswered();
    struct Freer {
        void operator()(PGnotify* notice) const { PQfreemem(notice); }
    };
    while (const auto notice = std::unique_ptr<PGnotify, Freer>(PQnotifies(line_.get())))
        heard(notice->extra, notice->be_pid == PQbackendPID(line_.get()) ? 0 : notice->be_pid);
    return true;
}

void ServerLine::askForNews() {
    if (listening_ || isStandby(line_.get()))
        return;
    listening_ = true;
    ++lines_;
    later(kListen);
}

} // namespace ado
