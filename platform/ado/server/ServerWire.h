#pragma once

#include "ado/server/ServerLine.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ado {

/// What is done on the line to a server: statements with parameters, one transaction, news.
///
/// A statement that fails inside a transaction is undone by itself, and the transaction goes on.
/// Beginnings and points to go back to travel with the next statement.
///
/// A line that broke is made anew when it is next needed. What was asked is asked again; a
/// transaction that was open is lost, which Error{offline} tells; of one that was being ended the
/// server is asked whether it has done it.
class ServerWire {
public:
    /// @throws Error{io} if nobody answers, Error{password} if the server doesn't let us in,
    ///         Error{syntax} for an address that is none.
    explicit ServerWire(const std::string& address);
    /// Error{password} says that the server, back again, wants another one than before: nothing is
    /// waited for then.
    void setPassword(std::string password) { line_.setPassword(std::move(password)); }
    ~ServerWire();

    /// The address without what is secret.
    [[nodiscard]] const std::string& place() const noexcept { return line_.place(); }

    /// One round trip. Outside a transaction for what only reads: it may be asked twice.
    /// @throws jet::Error, as errorOf() makes it of what the server says; Error{offline}.
    ServerRows run(const std::string& sql, const std::vector<Parameter>& parameters = {}) {
        return run(std::vector<ServerStatement>{
            {sql, parameters}
        });
    }
    ServerRows run(const ServerStatement& statement) {
        return run(std::vector<ServerStatement>{statement});
    }
    /// All of them in one round trip, or none; gives what the last one gives.
    ServerRows run(const std::vector<ServerStatement>& statements);
    /// Inside a transaction: a statement that changes one row. It is sent before whatever is said
    /// next, many together; @throws of that also Error{conflict} if it changed none, and then, or
    /// if the server refuses one of them, the transaction can only be undone.
    void put(ServerStatement statement) { put_.push_back(std::move(statement)); }
    void sendPut();
    /// Outside a transaction: one of its own, in one round trip.
    ServerRows runAlone(const ServerStatement& statement);
    /// Without waiting for an answer that nobody needs.
    void later(const std::string& sql) { line_.later(sql); }

    /// Not nested.
    void begin();
    /// @throws also Error{offline}, whose sentence says whether it has been done.
    void commit();
    void rollback();
    [[nodiscard]] bool inTransaction() const noexcept { return open_; }
    /// Inside a transaction, best at its beginning, where it travels with the next statement: no
    /// station changes anything until it ends.
    void claim();
    /// Before a transaction, or what is run alone next, changes a row that is there: one after the
    /// other do, as two that change the same rows in different orders would wait for each other.
    void takeTurn();
    /// Inside a transaction: a point that it can go back to. Not nested.
    void mark();
    void forgetMark();
    void backToMark();

    /// From now on, outside of transactions, all that is read is of one state, until it has been
    /// ended as often as it was begun, or something is changed.
    void beginReading() noexcept { ++readings_; }
    void endReading();
    [[nodiscard]] bool isReading() const noexcept { return readings_ > 0; }

    /// From now on each transaction leaves a trace by which the server can be asked whether it has
    /// been done.
    void leaveTraces();
    /// While idle: makes a line that broke anew, without waiting for it.
    /// @throws Error{offline}, which says what has become of a transaction that was in doubt.
    void lookAfter();

    /// Takes in what the server has told meanwhile, without asking it: `heard` is called for each
    /// notification, with the server's number of whose line it comes from, 0 for this one.
    void listen(const std::function<void(std::string_view payload, int other)>& heard);
    /// Whether it is told of changes at all: by a standby nobody is.
    [[nodiscard]] bool isTold() const noexcept { return line_.isTold(); }
    /// How many lines there have been so far: with each one what was told meanwhile is missed.
    [[nodiscard]] std::uint64_t lines() const noexcept { return line_.lines(); }

    /// As the server has told by now.
    [[nodiscard]] bool isReadOnly() const { return line_.isReadOnly(); }
    /// How often this has waited for the server so far.
    [[nodiscard]] std::uint64_t roundTrips() const noexcept { return line_.roundTrips(); }
    [[nodiscard]] ServerLine& line() noexcept { return line_; }

private:
    [[nodiscard]] std::vector<ServerStatement> opening() const;
    [[nodiscard]] bool awaitLine();
    void requireLine();
    [[noreturn]] void loseTransaction();
    void stopReading();

    [[nodiscard]] ServerStatement trace() const;
    [[nodiscard]] std::optional<bool> wasDone();
    [[nodiscard]] bool settle();
    void requireSettled();

    ServerLine line_;
    bool open_ = false;                ///< a transaction, by its user
    bool begun_ = false;               ///< on the server too
    bool claiming_ = false;            ///< for itself alone
    bool turn_ = false;                ///< the open one, or the next alone, changes rows in turn
    bool lost_ = false;                ///< the open one has gone with its line
    std::vector<std::string> ahead_;   ///< what goes before the next statement
    std::vector<ServerStatement> put_; ///< and what changes rows, before that
    int readings_ = 0;                 ///< of one state, by their users
    bool reading_ = false;             ///< on the server too

    std::string station_;      ///< "" without traces
    std::uint64_t number_ = 0; ///< of the last transaction
    bool doubtful_ = false;    ///< whether that is done isn't known
};

} // namespace ado
