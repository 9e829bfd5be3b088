// A primary falls in the middle of saves, and its standby takes over, again and again.
#include "ado/ServerShop.h"
#include "ado/Shop.h"
#include "ado/server/ServerWire.h"
#include "support/Cluster.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <future>
#include <iostream>
#include <optional>
#include <thread>

namespace {

namespace fs = std::filesystem;
using ado::Recordset;
using std::chrono::milliseconds;

/// Two servers: one that is worked on, and one that copies all it does, and is waited for.
class Pair {
public:
    explicit Pair(const std::vector<jet::TableSpec>& tables) {
        for (const char* const name : {"a", "b"}) {
            fs::create_directory(folder_.path() / name);
            fs::permissions(folder_.path() / name, fs::perms::all);
        }
        Cluster::makeData(data(0), said_);
        start(0);
        {
            ado::ServerWire admin(address({0}, "postgres"));
            static_cast<void>(admin.run("create database loja"));
        }
        ado::createShopOnServer(address({0}, "loja"), tables);
        ado::ServerWire admin(address({0}, "postgres"));
        static_cast<void>(admin.run("alter system set synchronous_standby_names = '*'"));
        copy(0, 1);
        static_cast<void>(admin.run("select pg_reload_conf()"));
    }
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;
    ~Pair() {
        for (const pid_t server : servers_)
            Cluster::end(server);
    }

    [[nodiscard]] std::string address() const { return address({0, 1}, "loja"); }

    /// Of the one that copies the other.
    [[nodiscard]] std::string standby() const { return address({1 - primary_}, "loja"); }

    /// The primary falls, the standby takes over.
    void fail() {
        Cluster::end(servers_[primary_]);
        const std::size_t next = 1 - primary_;
        ado::ServerWire standby(address({next}, "postgres"));
        EXPECT_EQ(standby.run("select pg_promote()").field(0, 0), "t");
        primary_ = next;
    }
    /// What has fallen comes back as the standby of the other.
    void mend() {
        fs::remove_all(data(1 - primary_));
        copy(primary_, 1 - primary_);
    }

private:
    [[nodiscard]] std::string socket(std::size_t server) const {
        return (folder_.path() / (server == 0 ? "a" : "b")).string();
    }
    [[nodiscard]] std::string data(std::size_t server) const { return socket(server) + "/data"; }
    [[nodiscard]] std::string address(std::initializer_list<std::size_t> servers,
                                      const std::string& base) const {
        std::string hosts;
        for (const std::size_t server : servers)
            hosts += (hosts.empty() ? "" : ",") + socket(server);
        return "postgresql:///" + base + "?user=loja&host=" + hosts +
               (servers.size() > 1 ? "&target_session_attrs=read-write" : "");
    }
    /// Until it answers.
    void start(std::size_t server) {
        servers_[server] =
            Cluster::start({"postgres", "-D", data(server), "-k", socket(server), "-c",
                            "listen_addresses=", "-c", "fsync=off", "-c", "shared_buffers=16MB"},
                           said_);
        Cluster::await(servers_[server], address({server}, "postgres"), said_);
    }
    /// Until the copy keeps up.
    void copy(std::size_t from, std::size_t to) {
        Cluster::run({"pg_basebackup", "-D", data(to), "-h", socket(from), "-U", "loja", "-c",
                      "fast", "-R", "--no-sync"},
                     said_);
        start(to);
        ado::ServerWire admin(address({from}, "postgres"));
        while (admin.run("select 1 from pg_stat_replication where state = 'streaming'").rows() == 0)
            std::this_thread::sleep_for(milliseconds(5));
    }

    TemporaryFolder folder_;
    const fs::path said_ = Cluster::open(folder_.path());
    pid_t servers_[2] = {0, 0};
    std::size_t primary_ = 0;
};

/// A clerk who saves cheque after cheque, and does what he is told when one goes wrong.
class Clerk {
public:
    explicit Clerk(const std::string& address) { station_.Open("Data Source=" + address); }

    void saveOne() {
        ++number_;
        while (!saved())
            ++toldUndone_;
        ++done_;
    }
    [[nodiscard]] int done() const { return done_; }
    [[nodiscard]] std::string told() const {
        return std::to_string(done_) + " saved; told of the last one in doubt: done " +
               std::to_string(toldDone_) + ", not done " + std::to_string(toldUndone_) +
               ", not known yet " + std::to_string(unknown_);
    }

private:
    void save() {
        Recordset cheques;
        std::optional<ado::Transaction> all;
        if (number_ % 2 == 0)
            all.emplace(station_);
        cheques.Open("cheques", station_);
        cheques.AddNew();
        cheques["numero"] = std::to_string(number_);
        cheques.Update();
        if (all)
            all->commit();
    }
    /// Whether it is done, as far as the clerk is told.
    bool saved() {
        std::string told = what([&] { save(); });
        if (told.empty())
            return true;
        if (told.find("ainda não se sabe") != std::string::npos) {
            ++unknown_;
            do
                told = what([&] { station_.flushIfDue(); });
            while (told.empty());
        }
        const bool done = told.find("Ela foi feita") != std::string::npos;
        toldDone_ += done ? 1 : 0;
        return done;
    }
    static std::string what(const std::function<void()>& work) {
        try {
            work();
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), jet::Errc::offline) << error.what();
            return error.what();
        }
        return {};
    }

    ado::Connection station_;
    int number_ = 0;
    std::atomic<int> done_ = 0;
    int toldDone_ = 0;
    int toldUndone_ = 0;
    int unknown_ = 0;
};

/// How often: enough to see that it works, or as VALTRINO_FAILOVERS says.
int failovers() {
    const char* const said = std::getenv("VALTRINO_FAILOVERS");
    return said != nullptr ? std::atoi(said) : 1;
}

/// Who reads from a standby hears of what others do once it has taken over.
void expectNews(ado::Connection& reader) {
    Recordset cheques;
    cheques.Open("cheques", reader);
    EXPECT_GT(cheques.RecordCount(), 0); // with the answer the server says: no standby any more
    static_cast<void>(reader.store().generation());
    const auto before = reader.store().generation();
    for (int i = 0; i < 6000 && reader.store().generation() == before; ++i)
        std::this_thread::sleep_for(milliseconds(5));
    EXPECT_NE(reader.store().generation(), before);
}

/// Before that he hears nothing, and asks each time he walks over a list.
void expectToSeeMore(ado::Connection& reader) {
    Recordset cheques;
    cheques.Open("cheques", reader);
    const auto walked = [&] {
        cheques.setSort("numero");
        int rows = 0;
        for (; !cheques.EOF(); cheques.MoveNext())
            ++rows;
        return rows;
    };
    const int before = walked();
    int rows = before;
    for (int i = 0; i < 6000 && rows == before; ++i) {
        std::this_thread::sleep_for(milliseconds(5));
        rows = walked();
    }
    EXPECT_GT(rows, before);
}

TEST(Failover, NothingIsLostAndNothingDoneTwice) {
    if (const std::string why = Cluster::absence(); !why.empty())
        GTEST_SKIP() << why;
    Pair servers(shopTables());
    std::atomic<bool> over = false;
    std::atomic<int> done = 0;
    auto work = std::async(std::launch::async, [&] {
        Clerk clerk(servers.address());
        for (; !over; done = clerk.done())
            clerk.saveOne();
        return clerk.told();
    });
    ado::Connection reader;
    reader.Open("Data Source=" + servers.standby());
    expectToSeeMore(reader);
    for (int i = 0; i < failovers(); ++i) {
        // In the middle of saves: after so many more, and a little of the next one.
        for (const int until = done + 20 + i % 7; done < until;)
            std::this_thread::sleep_for(std::chrono::microseconds(100 + 37 * i));
        servers.fail();
        servers.mend();
        if (i == 0)
            expectNews(reader);
    }
    over = true;
    const std::string told = work.get();
    ado::ServerWire looking(servers.address());
    const ado::ServerRows all = looking.run("select count(*), count(distinct numero), max(numero::"
                                            "int) from cheques");
    const std::string count = std::to_string(done);
    for (int column = 0; column < 3; ++column)
        EXPECT_EQ(all.field(0, column), count) << column;
    std::cout << failovers() << " failovers: " << told << '\n';
}

} // namespace
