#pragma once

#include "ado/server/ServerAddress.h"
#include "ado/server/ServerRows.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ado {

/// A value that a statement is sent with: never a part of its text.
struct Parameter {
    unsigned type = 0; ///< the server's number of it
    std::optional<std::string> text;
};

/// A statement and what it is sent with.
struct ServerStatement {
    std::string sql;
    std::vector<Parameter> parameters = {};
};

/// The line to a server: what is said on it, and what is heard.
///
/// One that broke is made anew, as soon as the server lets it, while the windows stay painted. One
/// on which nothing is said, as of a server that stands still, counts as broken as soon as nobody
/// answers there who is asked anew.
class ServerLine {
public:
    /// @throws as ServerWire.
    explicit ServerLine(const std::string& address);
    /// How long whoever needs a line that broke waits for a server that is gone: one that starts
    /// anew, or whose standby takes over, is back by then.
    static inline std::chrono::milliseconds patience{20000};
    /// How long an answer may take until somebody else there is asked whether he is alive.
    static inline std::chrono::milliseconds silence{30000};
    void setPassword(std::string password) {
        address_.setPassword(std::move(password));
        refused_ = false;
    }

    /// The address without what is secret.
    [[nodiscard]] const std::string& place() const noexcept { return address_.place(); }
    [[nodiscard]] pg_conn* get() const noexcept { return line_.get(); }

    [[nodiscard]] bool isUp() const;
    /// A step towards a line: whether there is one. It is made beside, since that may take long.
    bool tryAnew();
    /// Whether there is one within the time that `patience` allows, or one that is refused.
    [[nodiscard]] bool awaitAnew();
    /// For its password; then it isn't tried again by itself.
    [[nodiscard]] bool isRefused() const noexcept { return refused_; }
    /// How many there have been so far: with each one what was told meanwhile is missed.
    [[nodiscard]] std::uint64_t lines() const noexcept { return lines_; }

    /// What has come of what was sent at once.
    struct Answer {
        std::vector<std::optional<ServerRows>> rows; ///< of each statement that came so far
        std::optional<ServerRows> failure;
        bool lost = false; ///< the line has broken: there may be no rows, or not all
    };
    /// One round trip.
    [[nodiscard]] Answer exchange(const std::vector<ServerStatement>& statements);
    /// @throws jet::Error, as throwServerError() makes it of what the server says.
    [[noreturn]] void fail(const Answer& answer) const;
    /// Without waiting for an answer that nobody needs.
    void later(const std::string& sql);
    /// How often this has waited for the server so far.
    [[nodiscard]] std::uint64_t roundTrips() const noexcept { return roundTrips_; }

    /// As ServerWire::listen(); false if it has just been done, or there is no line to listen on.
    bool listen(const std::function<void(std::string_view payload, int other)>& heard);
    /// Whether that was since anything was said.
    [[nodiscard]] bool hasListened() const noexcept;
    /// Outside of transactions, to one that has taken over from the one it copied.
    void askForNews();
    [[nodiscard]] bool isTold() const noexcept { return listening_; }
    /// As the server has told by now.
    [[nodiscard]] bool isReadOnly() const;

    // For what has words of its own with the server, in between (ServerCopy.h).
    /// Until `come` says so, however long that takes, while the windows stay painted: another
    /// station may be at work on the same. False, and the line counts as broken, as soon as nobody
    /// answers there any more.
    [[nodiscard]] bool await(const std::function<bool()>& come);
    /// What the server says next; nothing as await().
    [[nodiscard]] std::optional<ServerRows> next();
    /// What was in the line is lost with it.
    [[noreturn]] static void throwLost();

private:
    void greet();
    [[nodiscard]] bool isAlive() const;
    void take(Answer* answer);
    void takeUnanswered();

    ServerAddress address_;
    ServerAddress::Line line_;
    bool listening_ = false;                ///< the server tells it what others change
    bool down_ = false;                     ///< it has broken, though it may not know yet
    std::future<ServerAddress::Line> made_; ///< it is being made anew
    bool refused_ = false;
    std::vector<std::string> end_; ///< who is at the server's end
    std::uint64_t lines_ = 1;
    std::uint64_t unanswered_ = 0; ///< pipelines sent that nobody waits for
    std::uint64_t roundTrips_ = 0;
    std::chrono::steady_clock::time_point listened_; ///< since nothing was asked
};

} // namespace ado
