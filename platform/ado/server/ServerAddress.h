#pragma once

#include <memory>
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

private:
    std::string address_;
    std::string place_;
    std::string here_; ///< where it goes if it mustn't leave the machine; "" if it may
};

} // namespace ado
