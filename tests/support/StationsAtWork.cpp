#include "support/StationsAtWork.h"

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "jet/Error.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kOfThem = 4; ///< the client whose cheques come and go
constexpr int kSteadyCheques = StationsAtWork::kSteadyCheques;
constexpr int kManyClients = 300; ///< the ones after that
constexpr int kBanks = 3;
constexpr char kSame[] = "shown_same";
constexpr char kApart[] = "shown_apart";
constexpr const char* kKinds[] = {"inserts",     "updates",   kSame,    kApart,
                                  "settlements", "transfers", "purges", "reports"};
constexpr char kNews[] = "news";
constexpr char kTry[] = ".try"; ///< behind the kind of work: one of however many it took

jet::Date dueDay(int month, int dayOfMonth) {
    return jet::Date::of({.year = 2026, .month = month, .day = dayOfMonth});
}

} // namespace

/// The work of one station, in a process of its own; what came of it goes to a file.
class StationsAtWork::Station {
public:
    Station(int number, const std::string& connection, const std::filesystem::path& told)
        : number_(number), random_(static_cast<unsigned>(number)), told_(told) {
        connection_.Open(connection);
    }

    void work(int rounds, int seconds) {
        const auto end = Clock::now() + std::chrono::seconds(seconds);
        for (int round = 0; seconds > 0 ? Clock::now() < end : round < rounds; ++round) {
            const int kind = below(100);
            kind < 45 ? perform(
                            "inserts", [this] { insert(); })
            : kind < 56 ? perform(
                              "updates", [this] { update(); })
            : kind < 62 ? perform(
                              kSame, [this] { changeShown(1, kRaised, "raised 1\n"); })
            : kind < 70
                ? perform(
                      kApart, [this] { changeShown(kOfThem + 1, kManyClients, "apart 1\n"); })
            : kind < 82 ? perform(
                              "settlements", [this] { settle(3); })
            : kind < 90 ? perform(
                              "transfers", [this] { transfer(); })
            : kind < 92 ? perform(
                              "purges", [this] { settle(20); })
                        : perform(
                              "reports", [this] { report(); });
        }
    }
    /// Writes down the time, and again until all others are done.
    void tell(const std::function<bool()>& done) {
        for (bool last = false; !last;) {
            last = done();
            ado::Recordset bank;
            bank.Open("select * from bancos where codigo=1", connection_);
            bank["nome"] = last ? "fim" : std::to_string(now());
            bank.Update();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
    /// Notes how long ago that was when it is seen, without asking before there is news.
    void listen() {
        for (std::uint64_t seen = 0;;) {
            const std::uint64_t generation = connection_.store().generation();
            if (std::exchange(seen, generation) == generation) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                continue;
            }
            ado::Recordset bank;
            bank.Open("select nome from bancos where codigo=1", connection_);
            const std::string stamp = bank["nome"].text();
            if (stamp == "fim")
                return;
            if (stamp.find_first_not_of("0123456789") == std::string::npos &&
                std::exchange(stamp_, stamp) != stamp)
                told_ << kNews << ' ' << (now() - std::stoll(stamp)) / 1000 << '\n';
        }
    }

private:
    static std::int64_t now() { return Clock::now().time_since_epoch().count(); }
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }

    /// As often as another has been faster: that is told, and the clerk does it again.
    void perform(const char* kind, const std::function<void()>& work) {
        const std::int64_t begun = now();
        for (bool again = true; again;) {
            const std::int64_t tried = now();
            try {
                work();
                again = false;
            } catch (const jet::Error& error) {
                if (error.code() != jet::Errc::conflict && error.code() != jet::Errc::gone) {
                    told_ << "error " << kind << ": " << error.what() << std::endl;
                    again = false;
                }
            }
            told_ << kind << kTry << ' ' << (now() - tried) / 1000 << '\n';
        }
        told_ << kind << ' ' << (now() - begun) / 1000 << '\n';
    }

    void insert() {
        ado::Transaction saving(connection_);
        ado::Recordset cheques;
        cheques.Open("cheques", connection_);
        cheques.AddNew();
        cheques["cliente"] = kOfThem;
        cheques["banco"] = 1 + below(3);
        cheques["numero"] = std::to_string(number_) + "-" + std::to_string(++made_);
        cheques["bompara"] = dueDay(1 + below(12), 1 + below(28));
        cheques["valor"] = jet::Currency{10'000};
        cheques.Update();
        saving.commit();
        told_ << "made 1\n";
    }
    static void raise(ado::Recordset& client) {
        client["limite_credito"] =
            jet::Currency{client["limite_credito"].currency().tenThousandths + 10'000};
        client.Update();
    }
    void openOneOf(ado::Recordset& client, int first, int many) {
        client.Open("select * from cliente_fornecedor where codigo=" +
                        std::to_string(first + below(many)),
                    connection_);
    }
    void update() {
        ado::Transaction saving(connection_);
        connection_.store().claimRows();
        ado::Recordset client;
        openOneOf(client, 1, kRaised);
        raise(client);
        saving.commit();
        told_ << "raised 1\n";
    }
    void changeShown(int first, int many, const char* done) {
        ado::Recordset client;
        openOneOf(client, first, many);
        const ado::Shown shown = client.shown();
        ado::Transaction saving(connection_);
        client.Edit(shown);
        raise(client);
        saving.commit();
        told_ << done;
    }
    /// The first of a list, whose order is some clerk's own.
    void settle(int most) {
        ado::Transaction saving(connection_);
        connection_.store().claimRows();
        ado::Recordset list;
        list.Open("select * from cheques where cliente=4 order by bompara" +
                      std::string(below(2) == 0 ? "" : " desc"),
                  connection_);
        int settled = 0;
        for (; settled < most && !list.EOF(); list.MoveNext(), ++settled)
            list.Delete();
        saving.commit();
        told_ << "settled " << settled << '\n';
    }
    void transfer() {
        const int from = 1 + below(kSteadyCheques);
        const int to = 1 + (from + below(kSteadyCheques - 1)) % kSteadyCheques;
        ado::Transaction saving(connection_);
        connection_.store().claimRows();
        for (const auto& [cheque, amount] : {
                 std::pair(from, -10'000), {to, 10'000}
        }) {
            ado::Recordset row;
            row.Open("select * from cheques where lancamento=" + std::to_string(cheque),
                     connection_);
            row["valor"] = jet::Currency{row["valor"].currency().tenThousandths + amount};
            row.Update();
        }
        saving.commit();
    }
    void report() {
        ado::Recordset rows;
        rows.Open("select * from (cheques inner join cliente_fornecedor on "
                  "cheques.cliente=cliente_fornecedor.codigo) inner join bancos on "
                  "cheques.banco=bancos.codigo where lancamento<=6 order by "
                  "cliente_fornecedor.nome,bompara",
                  connection_);
        std::int64_t sum = 0;
        for (; !rows.EOF(); rows.MoveNext())
            sum += rows["valor"].currency().tenThousandths;
        told_ << "sum " << sum << '\n';
    }

    int number_;
    std::mt19937 random_;
    std::ofstream told_;
    std::string stamp_;
    int made_ = 0;
    ado::Connection connection_;
};

void StationsAtWork::addRows(ado::Connection& shop) {
    ado::Recordset clients;
    clients.Open("cliente_fornecedor", shop);
    for (int client = 1; client <= kOfThem + kManyClients; ++client) {
        clients.AddNew();
        clients["nome"] = "Cliente " + std::to_string(client);
        clients["limite_credito"] = jet::Currency{0};
        clients.Update();
    }
    ado::Recordset banks;
    banks.Open("bancos", shop);
    for (int bank = 1; bank <= kBanks; ++bank) {
        banks.AddNew();
        banks["nome"] = "Banco " + std::to_string(bank);
        banks.Update();
    }
    ado::Recordset cheques;
    cheques.Open("cheques", shop);
    for (int cheque = 1; cheque <= kSteadyCheques; ++cheque) {
        cheques.AddNew();
        cheques["cliente"] = 1 + cheque % kRaised;
        cheques["banco"] = 1 + cheque % kBanks;
        cheques["numero"] = std::to_string(cheque);
        cheques["bompara"] = dueDay(cheque, 1);
        cheques["valor"] = jet::Currency{std::int64_t{cheque} * 1'000'000};
        cheques.Update();
    }
}

pid_t StationsAtWork::start(int number, const std::function<void(Station&)>& work) const {
    const pid_t child = fork();
    if (child != 0)
        return child;
    int status = 0;
    const std::filesystem::path said = folder_ / std::to_string(number);
    try {
        Station station(number, connection_, said);
        work(station);
    } catch (const std::exception& failure) {
        std::ofstream(said, std::ios::app) << "error " << failure.what() << '\n';
        status = 1;
    }
    std::ofstream(folder_ / (std::to_string(number) + ".done")) << status;
    _exit(status); // what the one that starts them has is its own to end
}

void StationsAtWork::work(int clerks, int rounds, int seconds) {
    std::vector<pid_t> children;
    children.reserve(static_cast<std::size_t>(clerks) + 2);
    for (int number = 0; number < clerks; ++number)
        children.push_back(start(number, [=](Station& clerk) { clerk.work(rounds, seconds); }));
    const auto done = [this, clerks] {
        for (int number = 0; number < clerks; ++number)
            if (!std::filesystem::exists(folder_ / (std::to_string(number) + ".done")))
                return false;
        return true;
    };
    children.push_back(start(clerks, [](Station& clerk) { clerk.listen(); }));
    children.push_back(start(clerks + 1, [&](Station& clerk) { clerk.tell(done); }));
    for (const pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        if (status != 0)
            errors_.emplace_back("a station has ended with " + std::to_string(status));
    }
    gather(clerks + 2);
}

/// What all have told: kind, number.
void StationsAtWork::gather(int stations) {
    for (int number = 0; number < stations; ++number) {
        std::ifstream file(folder_ / std::to_string(number));
        for (std::string line; std::getline(file, line);) {
            std::istringstream words(line);
            std::string kind;
            std::int64_t value = 0;
            words >> kind >> value;
            kind == "error" ? errors_.push_back(line) : told_[kind].push_back(value);
        }
    }
}

void StationsAtWork::print() {
    const auto at = [this](const std::string& kind, double part) {
        constexpr double kMicroseconds = 1000;
        auto& times = told_[kind];
        std::ranges::sort(times);
        const double place = part * static_cast<double>(times.size() - 1);
        return times.empty()
                   ? 0.0
                   : static_cast<double>(times[static_cast<std::size_t>(place)]) / kMicroseconds;
    };
    std::printf("%-12s %8s %9s %9s %9s %9s %22s %9s\n", "", "times", "half ms", "90% ms", "99% ms",
                "most", "one try: half, 99% ms", "again");
    for (const char* const kind : kKinds) {
        const std::string tries = std::string(kind) + kTry;
        std::printf("%-12s %8zu %9.1f %9.1f %9.1f %9.1f %12.1f %9.1f %9zu\n", kind,
                    told_[kind].size(), at(kind, 0.5), at(kind, 0.9), at(kind, 0.99), at(kind, 1),
                    at(tries, 0.5), at(tries, 0.99), told_[tries].size() - told_[kind].size());
    }
    std::printf("%-12s %8zu %9.1f %9.1f %9.1f %9.1f\n", kNews, told_[kNews].size(), at(kNews, 0.5),
                at(kNews, 0.9), at(kNews, 0.99), at(kNews, 1));
}
