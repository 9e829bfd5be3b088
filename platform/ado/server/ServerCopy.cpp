#include "ado/server/ServerCopy.h"

#include "ado/server/ServerError.h"
#include "ado/system/Socket.h"
#include "jet/Error.h"

#include <chrono>
#include <libpq-fe.h>
#include <optional>
#include <utility>

namespace ado {

namespace {

/// Most of what is waited for has come by then.
constexpr std::chrono::milliseconds kAtOnce{20};

/// @throws what the server says, or that the line has broken: what it was in is lost with it.
[[noreturn]] void refuse(const ServerLine& line, const pg_result* result) {
    try {
        throwServerError(result, line.place());
    } catch (const jet::Error& error) {
        if (PQstatus(line.get()) != CONNECTION_BAD)
            throw;
        throw jet::Error(jet::Errc::offline, error.what());
    }
}

/// While one lives, the line takes one statement after the other, as copying asks, and nothing that
/// is done with it waits by itself: a server may stand still.
class OneByOne {
public:
    explicit OneByOne(ServerLine& line) : line_(line.get()) {
        if (PQexitPipelineMode(line_) != 1 || PQsetnonblocking(line_, 1) != 0)
            refuse(line, nullptr); // something on it has broken off before
    }
    OneByOne(const OneByOne&) = delete;
    OneByOne& operator=(const OneByOne&) = delete;
    ~OneByOne() {
        // Else something is under way still, and closing the line would wait until it is sent.
        if (PQenterPipelineMode(line_) == 1)
            PQsetnonblocking(line_, 0);
    }

private:
    pg_conn* line_;
};

ServerRows nextAnswer(ServerLine& line) {
    auto said = line.next();
    if (!said)
        ServerLine::throwLost();
    return std::move(*said);
}

/// All that was put is on its way. Who can't take it any more says so later.
void sendAll(ServerLine& line) {
    pg_conn* const under = line.get();
    const auto sent = [under] {
        for (bool ready = true; ready;) {
            const bool left = PQflush(under) == 1;
            // Else nobody would hear before the end that the server has gone.
            if (PQconsumeInput(under) == 0 || !left)
                return true;
            ready = hasInputOrRoom(PQsocket(under), kAtOnce);
        }
        return false;
    };
    if (!line.await(sent))
        ServerLine::throwLost();
}

/// Sends the statement, which has to be answered by that.
void startCopy(ServerLine& line, const std::string& sql, ExecStatusType wanted) {
    if (PQsendQuery(line.get(), sql.c_str()) != 1) // unreached: without memory alone
        refuse(line, nullptr);
    sendAll(line);
    const ServerRows answer = nextAnswer(line);
    if (PQresultStatus(answer.get()) == wanted)
        return;
    static_cast<void>(nextAnswer(line)); // its end
    refuse(line, answer.get());
}

/// All that is still to be heard. @throws what the server refuses.
void endCopy(ServerLine& line) {
    std::optional<ServerRows> refused;
    for (ServerRows answer = nextAnswer(line); answer.get() != nullptr; answer = nextAnswer(line)) {
        const ExecStatusType status = PQresultStatus(answer.get());
        if (status == PGRES_COPY_IN) // unreached: without memory its end didn't get through
            refuse(line, nullptr);
        if (status != PGRES_COMMAND_OK)
            refused = std::move(answer);
    }
    if (refused)
        refuse(line, refused->get());
}

/// So that nothing is kept of it, and the line is good for the next statement.
void stopCopy(ServerLine& line) {
    PQputCopyEnd(line.get(), "parado");
    try {
        sendAll(line);
        endCopy(line);
    } catch (const jet::Error&) { // NOLINT(bugprone-empty-catch)
        // that it was stopped
    }
}

} // namespace

void copyIn(ServerLine& line, const std::string& sql,
            const std::function<bool(std::string& piece)>& next) {
    const OneByOne copying(line);
    startCopy(line, sql, PGRES_COPY_IN);
    std::string piece;
    for (bool more = true; more && PQstatus(line.get()) == CONNECTION_OK;) {
        piece.clear();
        try {
            more = next(piece);
        } catch (...) {
            stopCopy(line);
            throw;
        }
        const int length = static_cast<int>(piece.size());
        if (PQputCopyData(line.get(), piece.data(), length) != 1) // unreached: without memory alone
            break;                                                // the end says why
        sendAll(line);
    }
    PQputCopyEnd(line.get(), nullptr);
    sendAll(line);
    endCopy(line);
}

void copyOut(ServerLine& line, const std::string& sql,
             const std::function<void(std::string_view piece)>& take) {
    const OneByOne copying(line);
    startCopy(line, sql, PGRES_COPY_OUT);
    struct Freer {
        void operator()(char* piece) const { PQfreemem(piece); }
    };
    pg_conn* const under = line.get();
    char* piece = nullptr;
    int length = 0;
    while ((length = PQgetCopyData(under, &piece, 1)) >= 0) {
        if (length == 0) {
            if (!line.await([under] { return hasInput(PQsocket(under), kAtOnce); }))
                ServerLine::throwLost();
            if (PQconsumeInput(under) == 0)
                refuse(line, nullptr);
            continue;
        }
        const std::unique_ptr<char, Freer> owned(piece);
        take({piece, static_cast<std::size_t>(length)});
    }
    if (length == -2) // unreached: without memory alone
        refuse(line, nullptr);
    endCopy(line);
}

} // namespace ado
