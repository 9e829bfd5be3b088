#include "ado/server/ServerAddress.h"

#include "jet/Error.h"

#include <libpq-fe.h>
#include <optional>
#include <utility>
#include <vector>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

/// What every line is set to, whatever the server's own settings are: how values are written, where
/// names are looked for, ours before the server's own, how long anybody waits, and that of what is
/// kept on the server for later all is wanted.
constexpr const char* kSettings =
    "-c search_path=valtrino,pg_catalog -c DateStyle=ISO -c bytea_output=hex "
    "-c extra_float_digits=1 -c cursor_tuple_fraction=1 "
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

ServerAddress::ServerAddress(std::string address) : address_(std::move(address)) {
    const Options options = parsed(address_);
    place_ = placeOf(options);
    here_ = addressesHere(options).value_or("");
    if (here_.find_first_not_of(',') == std::string::npos)
        here_.clear(); // sockets alone, which no certificate is asked of
}

void ServerAddress::Finisher::operator()(pg_conn* line) const { PQfinish(line); }

/// As libpq takes them: two lists, each with a null at its end.
struct ServerAddress::Words {
    std::vector<const char*> names;
    std::vector<const char*> values;
};

ServerAddress::Words ServerAddress::words(const pg_conn* sameAs) const {
    struct Setting {
        const char* name;
        const char* value; ///< null leaves it as it is
    };
    const bool local = !here_.empty();
    // Each goes before those above it. Whoever isn't on this machine has to prove who he is,
    // whatever the address, a service's file or the environment say; encryption by ticket doesn't
    // tell who that is.
    // clang-format off
    const Setting settings[] = {
        {"connect_timeout",           "5"},
        {"keepalives_idle",           "10"},
        {"keepalives_interval",       "5"},
        {"keepalives_count",          "3"},
        {"tcp_user_timeout",          "20000"},
        {"dbname",                    address_.c_str()},
        {"password",                  password_ ? password_->c_str() : nullptr},
        {"fallback_application_name", "valtrino"},
        {"client_encoding",           "UTF8"},
        {"options",                   kSettings},
        {"hostaddr",                  local ? here_.c_str() : nullptr},
        {"host",                      sameAs ? PQhost(sameAs) : nullptr},
        {"hostaddr",                  sameAs ? PQhostaddr(sameAs) : nullptr},
        {"port",                      sameAs ? PQport(sameAs) : nullptr},
        {"target_session_attrs",      sameAs ? "any" : nullptr},
        {"sslmode",                   local ? nullptr : "verify-full"},
        {"gssencmode",                "disable"}};
    // clang-format on
    Words words;
    words.names.reserve(std::size(settings) + 1);
    words.values.reserve(std::size(settings) + 1);
    for (const Setting& setting : settings) {
        words.names.push_back(setting.name);
        words.values.push_back(setting.value);
    }
    words.names.push_back(nullptr);
    words.values.push_back(nullptr);
    return words;
}

ServerAddress::Line ServerAddress::connect() const {
    const Words said = words();
    Line line(PQconnectdbParams(said.names.data(), said.values.data(), 1));
    // What the server remarks has no reader.
    PQsetNoticeProcessor(
        line.get(), [](void*, const char*) {}, nullptr);
    return line;
}

bool ServerAddress::answersAt(const pg_conn* line) const {
    const Words said = words(line);
    return PQpingParams(said.names.data(), said.values.data(), 1) != PQPING_NO_RESPONSE;
}

} // namespace ado
