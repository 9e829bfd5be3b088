#pragma once

#include "jet/TableSpec.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <sys/types.h>
#include <vector>

/// A database server of this test program alone: started when it is first asked for, reached by a
/// socket in a temporary folder, gone with the program, however that ends.
class Cluster {
public:
    /// Why there can't be one, a line for who reads the tests; empty if there can.
    [[nodiscard]] static std::string absence();
    /// The next one stores and remembers as a shop's does: for what is measured. What is lost in a
    /// power cut is else a test's.
    static void likeAShops() { likeAShops_ = true; }
    /// A shop has those tables and, for the server alone, those indexes. @throws std::runtime_error
    /// with what the server said if it doesn't start.
    static Cluster& instance(std::span<const jet::TableSpec> tables,
                             std::span<const jet::TableSpec> further = {});
    /// Starts one of the server's programs, which prints to a file; as an ordinary account, since a
    /// server refuses to run as root, and to be ended with us.
    static pid_t start(std::vector<std::string> words, const std::filesystem::path& said);
    /// The same to its end. @throws std::runtime_error with what was printed if it fails.
    static void run(std::vector<std::string> words, const std::filesystem::path& said);
    /// A server's folder, whose owner is "loja", and whom everybody from here is let into.
    static void makeData(const std::filesystem::path& data, const std::filesystem::path& said);
    /// Until a server that was started answers. @throws std::runtime_error if it ends instead.
    static void await(pid_t server, const std::string& address, const std::filesystem::path& said);
    /// Opens a folder to servers, whatever their account, and makes the file there that they print
    /// to.
    static std::filesystem::path open(const std::filesystem::path& folder);
    /// Ends one, and nothing of it is kept.
    static void end(pid_t server);

    Cluster(const Cluster&) = delete;
    Cluster& operator=(const Cluster&) = delete;
    ~Cluster();

    /// A database with the shop's tables and nothing in them, by its address, until it is given
    /// back.
    [[nodiscard]] std::string newShop();
    /// A database with nothing in it, by its address.
    [[nodiscard]] std::string newDatabase();
    /// What the server says to a statement there, by the owner of the server: the first field of
    /// its answer. @throws jet::Error.
    static std::string answer(const std::string& address, const std::string& sql);
    /// Adds a foreign key to a table, as "cheques add foreign key ..."; who is connected is told.
    static void relate(const std::string& address, const std::string& change);
    void giveBack(const std::string& address);
    /// What the server writes down.
    [[nodiscard]] std::filesystem::path log() const;
    /// The server stops at once, whatever it is at, and starts anew.
    void crash();
    /// The same database for another user.
    [[nodiscard]] static std::string as(const std::string& user, std::string address);
    /// Of whom the server wants a password.
    static constexpr char kAsked[] = "caixa";
    static constexpr char kPassword[] = "açaí & 100%";
    /// Whom its rules keep out, and whom the system knows by another name.
    static constexpr const char* kKeptOut[] = {"recusado", "alheio"};

private:
    Cluster(std::span<const jet::TableSpec> tables, std::span<const jet::TableSpec> further);
    void begin();
    void startServer();
    [[nodiscard]] std::string madeLike(const std::string& other);
    [[nodiscard]] std::string address(const std::string& database) const;

    static inline bool likeAShops_ = false;
    struct Parts;
    std::unique_ptr<Parts> parts_;
    std::string failure_; ///< why it doesn't run; "" if it does
};
