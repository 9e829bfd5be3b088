#pragma once

#include "jet/Types.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct pg_conn;
struct pg_result;

namespace ado {

/// A value that a statement is sent with: never a part of its text.
struct Parameter {
    unsigned type = 0; ///< the server's number of it
    std::optional<std::string> text;
};

/// The rows that a statement has given, as texts.
class ServerRows {
public:
    explicit ServerRows(pg_result* result) : result_(result) {}

    [[nodiscard]] int rows() const;
    [[nodiscard]] int columns() const;
    /// Nothing for a null.
    [[nodiscard]] std::optional<std::string> field(int row, int column) const;
    [[nodiscard]] std::string columnName(int column) const;
    [[nodiscard]] unsigned columnType(int column) const;
    [[nodiscard]] int columnModifier(int column) const;
    /// The server's number of the table that a column comes from unchanged; 0 if it is computed.
    [[nodiscard]] unsigned columnTable(int column) const;
    /// Rows that the statement has changed.
    [[nodiscard]] std::int64_t affected() const;

private:
    struct Clearer {
        void operator()(pg_result* result) const;
    };
    std::unique_ptr<pg_result, Clearer> result_;
};

/// The line to a server: statements with parameters, one transaction, news.
///
/// A statement that fails inside a transaction is undone by itself, and the transaction goes on.
/// What begins a transaction travels with its first statement.
class ServerWire {
public:
    /// @throws Error{io} if nobody answers, Error{password} if the server doesn't let us in,
    ///         Error{syntax} for an address that is none.
    explicit ServerWire(const std::string& address);

    /// The address without what is secret.
    [[nodiscard]] const std::string& place() const noexcept { return place_; }

    /// One round trip; a second one if it fails in a transaction.
    /// @throws jet::Error, as errorOf() makes it of what the server says.
    ServerRows run(const std::string& sql, const std::vector<Parameter>& parameters = {});

    /// Not nested.
    void begin();
    void commit();
    void rollback();
    [[nodiscard]] bool inTransaction() const noexcept { return open_; }
    /// Inside a transaction: a point that it can go back to. Not nested.
    void mark();
    void forgetMark();
    void backToMark();

    /// Takes in what the server has told meanwhile, without asking it: `heard` is called for each
    /// notification.
    void listen(const std::function<void(std::string_view payload, bool own)>& heard);

    /// As the server has told by now.
    [[nodiscard]] bool isReadOnly() const;
    /// How often this has waited for the server so far.
    [[nodiscard]] std::uint64_t roundTrips() const noexcept { return roundTrips_; }

private:
    struct Finisher {
        void operator()(pg_conn* line) const;
    };
    void requireLine();
    ServerRows exchange(const std::string& sql, const std::vector<Parameter>& parameters);
    void order(const char* sql);

    std::unique_ptr<pg_conn, Finisher> line_;
    std::string place_;
    bool open_ = false;  ///< a transaction, by its user
    bool begun_ = false; ///< on the server too
    std::uint64_t roundTrips_ = 0;
};

} // namespace ado
