#include "ado/server/ServerWire.h"

#include "ado/server/ServerError.h"
#include "jet/Error.h"

#include <algorithm>
#include <charconv>
#include <libpq-fe.h>
#include <utility>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

/// What every line is set to, whatever the server's own settings are: how values are written, where
/// our names are looked for, and how long anybody waits.
constexpr const char* kSettings =
    "-c search_path=valtrino -c DateStyle=ISO -c bytea_output=hex -c extra_float_digits=1 "
    "-c standard_conforming_strings=on -c lock_timeout=10s -c statement_timeout=10min "
    "-c idle_in_transaction_session_timeout=10min -c client_min_messages=warning";

struct Options {
    struct Freer {
        void operator()(PQconninfoOption* options) const { PQconninfoFree(options); }
    };
    std::unique_ptr<PQconninfoOption, Freer> list;

    [[nodiscard]] std::string operator[](std::string_view keyword) const {
        for (const PQconninfoOption* option = list.get(); option->keyword != nullptr; ++option)
            if (keyword == option->keyword && option->val != nullptr)
                return option->val;
        return {};
    }
};

Options parsed(const std::string& address) {
    char* reason = nullptr;
    Options options{std::unique_ptr<PQconninfoOption, Options::Freer>(
        PQconninfoParse(address.c_str(), &reason))};
    const std::string why = reason != nullptr ? reason : "";
    PQfreemem(reason);
    if (!options.list) // the reason may quote the password
        throw Error(Errc::syntax, "O endereço do servidor não está escrito como deve ser: "
                                  "postgresql://servidor/base.");
    return options;
}

/// The parts of a list with commas between them.
std::vector<std::string> partsOf(const std::string& list) {
    std::vector<std::string> parts(1);
    for (const char c : list) {
        if (c == ',')
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

/// Where a line goes that mustn't leave the machine, for each of those hosts: nothing if one of
/// them isn't named as this machine. What isn't said could be said elsewhere, in a service's file
/// or in the environment, so that nothing said isn't this machine.
std::optional<std::string> addressesHere(const Options& options) {
    std::string addresses;
    for (const std::string& host : partsOf(options["host"])) {
        const bool named = host == "localhost" || host == "127.0.0.1";
        const bool socket = host.starts_with('/');
        if (!named && !socket && host != "::1")
            return std::nullopt;
        addresses += named ? ",127.0.0.1" : socket ? "," : "," + host;
    }
    addresses.erase(0, 1);
    if (const std::string said = options["hostaddr"]; !said.empty()) {
        for (const std::string& address : partsOf(said))
            if (address != "127.0.0.1" && address != "::1")
                return std::nullopt;
        return said;
    }
    return addresses;
}

std::string placeOf(const Options& options) {
    const std::string port = options["port"];
    return "postgresql://" + options["host"] + (port.empty() ? "" : ":" + port) + "/" +
           options["dbname"];
}

} // namespace

// ---- rows -------------------------------------------------------------------------------------

void ServerRows::Clearer::operator()(pg_result* result) const { PQclear(result); }
int ServerRows::rows() const { return PQntuples(result_.get()); }
int ServerRows::columns() const { return PQnfields(result_.get()); }
std::optional<std::string> ServerRows::field(int row, int column) const {
    if (PQgetisnull(result_.get(), row, column) != 0)
        return std::nullopt;
    return std::string(PQgetvalue(result_.get(), row, column),
                       static_cast<std::size_t>(PQgetlength(result_.get(), row, column)));
}
std::string ServerRows::columnName(int column) const { return PQfname(result_.get(), column); }
unsigned ServerRows::columnType(int column) const { return PQftype(result_.get(), column); }
int ServerRows::columnModifier(int column) const { return PQfmod(result_.get(), column); }
unsigned ServerRows::columnTable(int column) const { return PQftable(result_.get(), column); }
std::int64_t ServerRows::affected() const {
    const std::string_view count = PQcmdTuples(result_.get());
    std::int64_t number = 0;
    std::from_chars(count.data(), count.data() + count.size(), number);
    return number;
}

// ---- the line ---------------------------------------------------------------------------------

void ServerWire::Finisher::operator()(pg_conn* line) const { PQfinish(line); }

ServerWire::ServerWire(const std::string& address) {
    const Options options = parsed(address);
    place_ = placeOf(options);
    // Whoever isn't on this machine has to prove who he is, whatever the address, a service's file
    // or the environment say: what stands later in this list goes before all of them. A socket
    // isn't asked for a certificate. Other encryption doesn't tell whom it is made with.
    const std::string here = addressesHere(options).value_or("");
    const bool local = here.find_first_not_of(',') != std::string::npos;
    const char* const keywords[] = {"dbname",
                                    "fallback_application_name",
                                    "client_encoding",
                                    "options",
                                    "connect_timeout",
                                    "hostaddr",
                                    "sslmode",
                                    "gssencmode",
                                    nullptr};
    const char* const values[] = {address.c_str(),
                                  "valtrino",
                                  "UTF8",
                                  kSettings,
                                  "10",
                                  local ? here.c_str() : nullptr,
                                  local ? nullptr : "verify-full",
                                  "disable",
                                  nullptr};
    line_.reset(PQconnectdbParams(keywords, values, 1));
    ++roundTrips_;
    if (!line_ || PQstatus(line_.get()) != CONNECTION_OK)
        throwNoConnection(place_, line_ ? PQerrorMessage(line_.get()) : "");
    order("listen valtrino");
}

/// One that broke is made anew, unless a transaction was open on it: that is lost.
void ServerWire::requireLine() {
    if (PQstatus(line_.get()) == CONNECTION_OK)
        return;
    if (begun_)
        throwNoConnection(place_, PQerrorMessage(line_.get()));
    PQreset(line_.get());
    ++roundTrips_;
    if (PQstatus(line_.get()) != CONNECTION_OK)
        throwNoConnection(place_, PQerrorMessage(line_.get()));
    order("listen valtrino");
}

void ServerWire::order(const char* sql) {
    ++roundTrips_;
    pg_result* const result = PQexec(line_.get(), sql);
    const ServerRows answer(result);
    if (PQresultStatus(result) != PGRES_COMMAND_OK)
        throwServerError(line_.get(), result, place_);
}

namespace {

bool isFailure(const pg_result* result) {
    const ExecStatusType status = PQresultStatus(result);
    return status == PGRES_FATAL_ERROR || status == PGRES_BAD_RESPONSE ||
           status == PGRES_NONFATAL_ERROR;
}

int send(pg_conn* line, const std::string& sql, const std::vector<Parameter>& parameters) {
    std::vector<unsigned> types;
    std::vector<const char*> values;
    std::vector<int> lengths;
    types.reserve(parameters.size());
    values.reserve(parameters.size());
    lengths.reserve(parameters.size());
    for (const Parameter& parameter : parameters) {
        types.push_back(parameter.type);
        values.push_back(parameter.text ? parameter.text->c_str() : nullptr);
        lengths.push_back(0);
    }
    return PQsendQueryParams(line, sql.c_str(), static_cast<int>(parameters.size()), types.data(),
                             values.data(), lengths.data(), nullptr, 0);
}

} // namespace

/// All that one statement needs goes out at once: the beginning of the transaction, a point to go
/// back to, the statement, and that the point isn't needed any more.
ServerRows ServerWire::exchange(const std::string& sql, const std::vector<Parameter>& parameters) {
    struct Step {
        const char* sql;
        bool wanted;
    };
    const bool first = open_ && !begun_;
    const Step before[] = {
        {"begin",           first},
        {"savepoint passo", open_}
    };
    ++roundTrips_;
    int sent = 0;
    bool good = PQenterPipelineMode(line_.get()) == 1;
    for (const Step& step : before) {
        if (step.wanted) {
            good = good && send(line_.get(), step.sql, {}) == 1;
            ++sent;
        }
    }
    good = good && send(line_.get(), sql, parameters) == 1;
    if (open_)
        good = good && send(line_.get(), "release savepoint passo", {}) == 1;
    good = good && PQpipelineSync(line_.get()) == 1;
    begun_ = open_;

    std::optional<ServerRows> answer;
    std::optional<ServerRows> failure;
    pg_result* failed = nullptr;
    int number = 0;
    while (good) {
        pg_result* const result = PQgetResult(line_.get());
        if (result == nullptr) { // the end of one statement's
            if (PQstatus(line_.get()) != CONNECTION_OK)
                break;
            ++number;
            continue;
        }
        const ExecStatusType status = PQresultStatus(result);
        ServerRows rows(result);
        if (status == PGRES_PIPELINE_SYNC)
            break;
        if (isFailure(result) && !failure) {
            failed = result;
            failure.emplace(std::move(rows));
        } else if (number == sent && !answer) {
            answer.emplace(std::move(rows));
        }
    }
    PQexitPipelineMode(line_.get());
    if (failed != nullptr || !answer) {
        if (begun_ && PQtransactionStatus(line_.get()) == PQTRANS_INERROR)
            order("rollback to savepoint passo");
        throwServerError(line_.get(), failed, place_);
    }
    return std::move(*answer);
}

ServerRows ServerWire::run(const std::string& sql, const std::vector<Parameter>& parameters) {
    requireLine();
    return exchange(sql, parameters);
}

void ServerWire::begin() {
    if (open_)
        throw Error(Errc::misuse, "Já há uma transação aberta.");
    open_ = true;
}

void ServerWire::commit() {
    if (!open_)
        throw Error(Errc::misuse, "Não há transação aberta.");
    open_ = false;
    if (!std::exchange(begun_, false))
        return;
    order("commit");
}

void ServerWire::rollback() {
    if (!open_)
        throw Error(Errc::misuse, "Não há transação aberta.");
    open_ = false;
    if (std::exchange(begun_, false) && PQstatus(line_.get()) == CONNECTION_OK)
        order("rollback");
}

void ServerWire::mark() {
    if (!std::exchange(begun_, true))
        order("begin");
    order("savepoint mudanca");
}

void ServerWire::forgetMark() { order("release savepoint mudanca"); }

void ServerWire::backToMark() { order("rollback to savepoint mudanca"); }

bool ServerWire::isReadOnly() const {
    for (const char* const setting : {"in_hot_standby", "default_transaction_read_only"}) {
        const char* const value = PQparameterStatus(line_.get(), setting);
        if (value != nullptr && std::string_view(value) == "on")
            return true;
    }
    return false;
}

void ServerWire::listen(const std::function<void(std::string_view payload, bool own)>& heard) {
    if (PQconsumeInput(line_.get()) == 0)
        return; // the next statement says so
    struct Freer {
        void operator()(PGnotify* notice) const { PQfreemem(notice); }
    };
    while (const auto notice = std::unique_ptr<PGnotify, Freer>(PQnotifies(line_.get())))
        heard(notice->extra, notice->be_pid == PQbackendPID(line_.get()));
}

} // namespace ado
