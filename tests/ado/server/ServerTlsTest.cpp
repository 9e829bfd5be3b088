// Over the network a server is believed by its certificate, made as the technician is told to.
#include "ado/server/ServerWire.h"
#include "jet/Error.h"
#include "support/Cluster.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <arpa/inet.h>
#include <fstream>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr char kOpenssl[] = "/usr/bin/openssl";
/// Of this machine, but not taken for it.
constexpr char kPlace[] = "127.0.0.2";

/// Where nobody listens now.
std::string freePort() {
    sockaddr_in place{};
    place.sin_family = AF_INET;
    inet_pton(AF_INET, kPlace, &place.sin_addr);
    socklen_t size = sizeof place;
    auto* const any = reinterpret_cast<sockaddr*>(&place);
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    const bool bound = bind(socket, any, size) == 0 && getsockname(socket, any, &size) == 0;
    close(socket);
    if (!bound)
        throw std::runtime_error("no port to listen at");
    return std::to_string(ntohs(place.sin_port));
}

/// A server called "servidor", which proves it by a certificate of the shop's.
class CertifiedServer {
public:
    CertifiedServer() {
        sign("Loja", {"-keyout", at("loja.key"), "-out", at("root.crt")});
        sign("Outra", {"-keyout", at("outra.key"), "-out", at("outra.crt")});
        sign("servidor", {"-CA", at("root.crt"), "-CAkey", at("loja.key"), "-extensions",
                          "usr_cert", "-addext", "subjectAltName=DNS:servidor", "-keyout",
                          at("servidor.key"), "-out", at("servidor.crt")});
        Cluster::makeData(at("data"), said_);
        std::ofstream(at("data/pg_hba.conf"), std::ios::trunc)
            << "local all all trust\nhostssl all all 127.0.0.0/8 trust\n";
        server_ = Cluster::start(
            {"postgres", "-D", at("data"), "-k", folder_.path(), "-p", port_, "-c",
             std::string("listen_addresses=") + kPlace, "-c", "fsync=off", "-c", "ssl=on", "-c",
             "ssl_cert_file=" + at("servidor.crt"), "-c", "ssl_key_file=" + at("servidor.key")},
            said_);
        Cluster::await(server_,
                       "postgresql:///postgres?user=loja&port=" + port_ +
                           "&host=" + folder_.path().string(),
                       said_);
    }
    CertifiedServer(const CertifiedServer&) = delete;
    CertifiedServer& operator=(const CertifiedServer&) = delete;
    ~CertifiedServer() { Cluster::end(server_); }

    /// By that name, for who believes that signer.
    [[nodiscard]] std::string address(const std::string& name, const std::string& signer) const {
        return "postgresql://" + name + ":" + port_ + "/postgres?user=loja&hostaddr=" + kPlace +
               "&sslrootcert=" + at(signer);
    }

private:
    [[nodiscard]] std::string at(const char* name) const { return folder_.path() / name; }
    [[nodiscard]] std::string at(const std::string& name) const { return at(name.c_str()); }
    void sign(const std::string& name, const std::vector<std::string>& how) {
        std::vector<std::string> words{kOpenssl, "req",   "-x509", "-newkey", "rsa:2048",
                                       "-nodes", "-days", "1",     "-subj",   "/CN=" + name};
        words.insert(words.end(), how.begin(), how.end());
        Cluster::run(words, said_);
    }

    TemporaryFolder folder_;
    const fs::path said_ = Cluster::open(folder_.path());
    const std::string port_ = freePort();
    pid_t server_ = 0;
};

std::string refusal(const std::string& address) {
    try {
        const ado::ServerWire wire(address);
    } catch (const jet::Error& error) {
        EXPECT_EQ(error.code(), jet::Errc::io);
        return error.what();
    }
    return {};
}

TEST(ServerTls, AServerIsBelievedByItsNameAndByWhoSignedIt) {
    if (const std::string why = Cluster::absence(); !why.empty())
        GTEST_SKIP() << why;
    if (!fs::exists(kOpenssl))
        GTEST_SKIP() << "No certificate to test with: Debian's package openssl isn't installed";
    const CertifiedServer server;
    ado::ServerWire wire(server.address("servidor", "root.crt"));
    EXPECT_EQ(wire.run("select ssl from pg_stat_ssl where pid = pg_backend_pid()").field(0, 0),
              "t");
    using testing::HasSubstr;
    EXPECT_THAT(refusal(server.address("outro", "root.crt")), HasSubstr("\"outro\""));
    EXPECT_THAT(refusal(server.address("servidor", "outra.crt")),
                HasSubstr("certificate verify failed"));
    EXPECT_THAT(refusal(server.address("servidor", "nenhum.crt")), HasSubstr("nenhum.crt"));
    EXPECT_THAT(refusal(server.address("outro", "root.crt") + "&sslmode=require"),
                HasSubstr("\"outro\""));
}

} // namespace
