#include "support/Cluster.h"

#include "ado/ServerShop.h"
#include "ado/dialect/Spelling.h"
#include "ado/server/ServerWire.h"
#include "jet/Error.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path kPrograms = "/usr/lib/postgresql/15/bin";
constexpr char kTemplate[] = "modelo";

} // namespace

pid_t Cluster::start(std::vector<std::string> words, const fs::path& said) {
    words.front() = kPrograms / words.front();
    if (geteuid() == 0)
        words.insert(words.begin(), {"setpriv", "--reuid=postgres", "--regid=postgres",
                                     "--clear-groups", "--pdeathsig=INT"});
    else
        words.insert(words.begin(), {"setpriv", "--pdeathsig=INT"});
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        if (std::freopen(said.c_str(), "a", stdout) && dup2(fileno(stdout), fileno(stderr)) >= 0)
            execvp(arguments[0], arguments.data());
        _exit(127);
    }
    return child;
}

namespace {

std::string textOf(const fs::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace

void Cluster::run(std::vector<std::string> words, const fs::path& said) {
    int status = 0;
    waitpid(start(std::move(words), said), &status, 0);
    if (status != 0)
        throw std::runtime_error(textOf(said));
}

void Cluster::makeData(const fs::path& data, const fs::path& said) {
    run({"initdb", "-D", data, "-U", "loja", "-A", "trust", "-E", "UTF8", "--locale=C.UTF-8",
         "--no-sync"},
        said);
}

void Cluster::await(pid_t server, const std::string& address, const fs::path& said) {
    for (;;) {
        try {
            const ado::ServerWire there(address);
            return;
        } catch (const jet::Error&) {
            if (waitpid(server, nullptr, WNOHANG) != 0)
                throw std::runtime_error(textOf(said));
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
}

fs::path Cluster::open(const fs::path& folder) {
    fs::path said = folder / "said";
    std::ofstream(said).close();
    fs::permissions(folder, fs::perms::all);
    fs::permissions(said, fs::perms::all);
    return said;
}

void Cluster::end(pid_t server) {
    if (server > 0 && kill(server, SIGQUIT) == 0)
        waitpid(server, nullptr, 0);
}

struct Cluster::Parts {
    TemporaryFolder folder;
    pid_t server = 0;
    std::optional<ado::ServerWire> admin;
    std::vector<jet::TableSpec> tables;
    std::vector<jet::TableSpec> further;
    int shops = 0;
    std::vector<std::string> free; ///< shops that nobody has, empty
};

std::string Cluster::absence() {
    return fs::exists(kPrograms / "postgres")
               ? ""
               : "No server to test with: Debian's package postgresql isn't installed";
}

Cluster& Cluster::instance(std::span<const jet::TableSpec> tables,
                           std::span<const jet::TableSpec> further) {
    static Cluster cluster(tables, further);
    if (!cluster.failure_.empty()) // of each test at once, without another try
        throw std::runtime_error(cluster.failure_);
    return cluster;
}

std::string Cluster::address(const std::string& database) const {
    return "postgresql:///" + database + "?user=loja&host=" + parts_->folder.path().string();
}

Cluster::Cluster(std::span<const jet::TableSpec> tables, std::span<const jet::TableSpec> further)
    : parts_(std::make_unique<Parts>()) {
    parts_->tables.assign(tables.begin(), tables.end());
    parts_->further.assign(further.begin(), further.end());
    try {
        begin();
    } catch (const std::exception& failure) {
        failure_ = failure.what();
    }
}

void Cluster::begin() {
    const fs::path folder = parts_->folder.path();
    const fs::path said = open(folder);
    makeData(folder / "data", said);
    std::ofstream(folder / "data" / "pg_hba.conf", std::ios::trunc)
        << "local all " << kAsked << " scram-sha-256\nlocal all " << kKeptOut[0]
        << " reject\nlocal all " << kKeptOut[1] << " peer\nlocal all all trust\n";
    startServer();
    await(parts_->server, address("postgres"), said);
    parts_->admin.emplace(address("postgres"));
    static_cast<void>(parts_->admin->run(std::string("create role ") + kAsked +
                                         " superuser login password '" + kPassword + "'"));
    static_cast<void>(parts_->admin->run(std::string("create database ") + kTemplate));
    ado::createShopOnServer(address(kTemplate), parts_->tables, {}, parts_->further);
}

void Cluster::startServer() {
    const fs::path folder = parts_->folder.path();
    const std::string safely = likeAShops_ ? "on" : "off";
    parts_->server = start({"postgres", "-D", folder / "data", "-k", folder.string(), "-c",
                            "listen_addresses=", "-c", "fsync=" + safely, "-c",
                            "full_page_writes=" + safely, "-c", "max_connections=100", "-c",
                            likeAShops_ ? "shared_buffers=128MB" : "shared_buffers=32MB"},
                           folder / "said");
}

fs::path Cluster::log() const { return parts_->folder.path() / "said"; }

void Cluster::crash() {
    end(parts_->server);
    startServer();
    static_cast<void>(parts_->admin->run("select 1")); // until it answers
}

Cluster::~Cluster() {
    parts_->admin.reset();
    end(parts_->server);
}

std::string Cluster::as(const std::string& user, std::string address) {
    constexpr std::string_view kOwner = "user=loja";
    return address.replace(address.find(kOwner), kOwner.size(), "user=" + user);
}

std::string Cluster::newShop() {
    if (!parts_->free.empty()) {
        std::string address = std::move(parts_->free.back());
        parts_->free.pop_back();
        return address;
    }
    return madeLike(kTemplate);
}

std::string Cluster::newDatabase() { return madeLike("template0"); }

std::string Cluster::madeLike(const std::string& other) {
    const std::string name = "loja" + std::to_string(++parts_->shops);
    static_cast<void>(parts_->admin->run("create database " + name + " template " + other));
    return address(name);
}

std::string Cluster::answer(const std::string& address, const std::string& sql) {
    return ado::ServerWire(address).run(sql).field(0, 0).value_or("null");
}

void Cluster::relate(const std::string& address, const std::string& change) {
    answer(address, "do $$ begin alter table " + change +
                        "; perform pg_notify('valtrino', '*'), "
                        "pg_notify('valtrino', 'cheques:0'); end $$");
}

/// A database costs more to make than to empty; and to cut tables off more than to delete their few
/// rows, of which nobody is to hear.
void Cluster::giveBack(const std::string& address) {
    std::string names;
    std::string work;
    for (const jet::TableSpec& table : parts_->tables) {
        const std::string name = ado::quotedName(table.name);
        names.append(names.empty() ? "'" : ", '").append(table.name).append("'");
        work.append("delete from ").append(name).append("; ");
        for (const jet::ColumnSpec& column : table.columns)
            if (column.autonumber)
                work.append("alter table ")
                    .append(name)
                    .append(" alter column ")
                    .append(ado::quotedName(column.name))
                    .append(" restart; ");
    }
    ado::ServerWire wire(address);
    static_cast<void>(wire.run("do $$ declare other text; begin "
                               "set local session_replication_role = replica; "
                               "for other in select format('alter table %s drop constraint %I', "
                               "conrelid::regclass, conname) from pg_catalog.pg_constraint "
                               "where contype in ('f', 'u') and "
                               "connamespace = 'valtrino'::regnamespace order by contype "
                               "loop execute other; end loop; "
                               "for other in select tablename from pg_catalog.pg_tables "
                               "where schemaname = 'valtrino' and tablename not in (" +
                               names + ") loop execute format('drop table %I', other); end loop; " +
                               work + "end $$"));
    parts_->free.push_back(address);
}
