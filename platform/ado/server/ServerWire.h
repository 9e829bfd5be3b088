#pragma once

#include "ado/server/ServerAddress.h"
#include "jet/Types.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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
    /// Whether what the server says next is there, or the line has gone.
    [[nodiscard]] static bool haveCome(pg_conn* line);

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

    [[nodiscard]] const pg_result* get() const noexcept { return result_.get(); }

private:
    struct Clearer {
        void operator()(pg_result* result) const;
    };
    std::unique_ptr<pg_result, Clearer> result_;
};

/// A statement and what it is sent with.
struct ServerStatement {
    std::string sql;
    std::vector<Parameter> parameters = {};
};

/// The line to a server: statements with parameters, one transaction, news.
///
/// A statement that fails inside a transaction is undone by itself, and the transaction goes on.
/// Beginnings and points to go back to travel with the next statement.
///
/// A line that broke is made anew when it is next needed, as soon as the server lets it, while the
/// windows stay painted. What was asked is asked again; a transaction that was open is lost, which
/// Error{offline} tells; of one that was being ended the server is asked whether it has done it.
/// One on which nothing is said, as of a server that stands still, counts as broken as soon as
/// nobody answers there who is asked anew.
class ServerWire {
public:
    /// @throws Error{io} if nobody answers, Error{password} if the server doesn't let us in,
    ///         Error{syntax} for an address that is none.
    explicit ServerWire(const std::string& address);
    /// How long whoever needs a line that broke waits for a server that is gone: one that starts
    /// anew, or whose standby takes over, is back by then.
    static inline std::chrono::milliseconds patience{20000};
    /// How long an answer may take until somebody else there is asked whether he is alive.
    static inline std::chrono::milliseconds silence{30000};
    /// Error{password} says that the server, back again, wants another one than before: nothing is
    /// waited for then.
    void setPassword(std::string password) {
        address_.setPassword(std::move(password));
        refused_ = false;
    }
    ~ServerWire();

    /// The address without what is secret.
    [[nodiscard]] const std::string& place() const noexcept { return address_.place(); }

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
    void later(const std::string& sql);

    /// Not nested.
    void begin();
    /// @throws also Error{offline}, whose sentence says whether it has been done.
    void commit();
    void rollback();
    [[nodiscard]] bool inTransaction() const noexcept { return open_; }
    /// Inside a transaction, best at its beginning, where it travels with the next statement: no
    /// station changes anything until it ends.
    void claim();
    /// Inside a transaction, before it changes a row that is there: one after the other do, as two
    /// that change the same rows in different orders would wait for each other.
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
    [[nodiscard]] bool isTold() const noexcept { return listening_; }
    /// How many lines there have been so far: with each one what was told meanwhile is missed.
    [[nodiscard]] std::uint64_t lines() const noexcept { return lines_; }

    // For what has words of its own with the server, in between (ServerCopy.h).
    [[nodiscard]] pg_conn* line() const noexcept { return line_.get(); }
    /// Until `come` says so, however long that takes, while the windows stay painted: another
    /// station may be at work on the same. False, and the line counts as broken, as soon as nobody
    /// answers there any more.
    [[nodiscard]] bool await(const std::function<bool()>& come);
    /// What the server says next; nothing as await().
    [[nodiscard]] std::optional<ServerRows> next();
    /// What was in the line is lost with it.
    [[noreturn]] static void throwLost();
    /// As the server has told by now.
    [[nodiscard]] bool isReadOnly() const;
    /// How often this has waited for the server so far.
    [[nodiscard]] std::uint64_t roundTrips() const noexcept { return roundTrips_; }

private:
    /// What has come of what was sent at once.
    struct Answer {
        std::vector<std::optional<ServerRows>> rows; ///< of each statement that came so far
        std::optional<ServerRows> failure;
        bool lost = false; ///< the line has broken: there may be no rows, or not all
    };

    [[nodiscard]] bool isUp() const;
    [[nodiscard]] std::vector<ServerStatement> opening() const;
    void greet();
    bool tryLine();
    [[nodiscard]] bool awaitLine();
    void requireLine();
    [[noreturn]] void loseTransaction();

    [[nodiscard]] bool isAlive() const;
    void take(Answer* answer);
    void takeUnanswered();
    [[nodiscard]] Answer exchange(const std::vector<ServerStatement>& statements);
    [[noreturn]] void fail(const Answer& answer) const;
    void stopReading();

    [[nodiscard]] ServerStatement trace() const;
    [[nodiscard]] std::optional<bool> wasDone();
    [[nodiscard]] bool settle();
    void requireSettled();

    ServerAddress address_;
    ServerAddress::Line line_;
    bool listening_ = false;                ///< the server tells it what others change
    bool down_ = false;                     ///< it has broken, though it may not know yet
    std::future<ServerAddress::Line> made_; ///< it is being made anew
    bool refused_ = false;                  ///< for its password; isn't tried again by itself
    std::vector<std::string> end_;          ///< who is at the server's end
    std::uint64_t lines_ = 1;
    std::uint64_t unanswered_ = 0; ///< pipelines sent that nobody waits for
    std::uint64_t roundTrips_ = 0;
    std::chrono::steady_clock::time_point listened_; ///< since nothing was asked

    bool open_ = false;                ///< a transaction, by its user
    bool begun_ = false;               ///< on the server too
    bool claiming_ = false;            ///< for itself alone
    bool turn_ = false;                ///< the open one has taken its turn to change rows
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
