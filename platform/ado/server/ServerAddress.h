#pragma once

#include <memory>
#include <optional>
#include <string>

struct pg_conn;

namespace ado {

/// Where a server is, and how a line to it is made safe.
class ServerAddress {
public:
    /// @throws Error{syntax} for an address that is none.
    explicit ServerAddress(std::string address);

    /// It without what is secret.
    [[nodiscard]] const std::string& place() const noexcept { return place_; }

    struct Finisher {
        void operator()(pg_conn* line) const;
    };
    using Line = std::unique_ptr<pg_conn, Finisher>;
    /// A line to it, which may have failed; null without memory.
    [[nodiscard]] Line connect() const;
    /// Whether anybody answers at the other end of that line, who may let nobody in: of several
    /// servers that one. Takes some seconds if not.
    [[nodiscard]] bool answersAt(const pg_conn* line) const;
    /// In the place of what the address, or a file of passwords, says.
    void setPassword(std::string password) { password_ = std::move(password); }

private:
    struct Words;
    [[nodiscard]] Words words(const pg_conn* sameAs = nullptr) const;

    std::string address_;
    std::optional<std::string> password_;
    std::string place_;
    std::string here_; ///< where it goes if it mustn't leave the machine; "" if it may
};

} // namespace ado
