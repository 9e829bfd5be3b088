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

/// While one lives, the line takes one statement after the other, as copying asks, and nothing that
/// is done with it waits by itself: a server may stand still.
class OneByOne {
public:
    explicit OneByOne(ServerWire& wire) : line_(wire.line()) {
        if (PQexitPipelineMode(line_) != 1 || PQsetnonblocking(line_, 1) != 0)
            throwServerError(line_, nullptr, wire.place());
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

/// @throws what the server says, or that the line has broken: what it was in is lost with it.
[[noreturn]] void refuse(const ServerWire& wire, const pg_result* result) {
    try {
        throwServerError(wire.line(), result, wire.place());
    } catch (const jet::Error& error) {
        if (PQstatus(wire.line()) != CONNECTION_BAD)
            throw;
        throw jet::Error(jet::Errc::offline, error.what());
    }
}

ServerRows nextAnswer(ServerWire& wire) {
    auto said = wire.next();
    if (!said)
        ServerWire::throwLost();
    return std::move(*said);
}

/// All that was put is on its way. Who can't take it any more says so later.
void sendAll(ServerWire& wire) {
    pg_conn* const line = wire.line();
    const auto sent = [line] {
        for (bool ready = true; ready;) {
            if (PQflush(line) != 1)
                return true;
            ready = hasInputOrRoom(PQsocket(line), kAtOnce);
            if (PQconsumeInput(line) == 0)
                return true;
        }
        return false;
    };
    if (!wire.await(sent))
        ServerWire::throwLost();
}

/// Sends the statement, which has to be answered by that.
void startCopy(ServerWire& wire, const std::string& sql, ExecStatusType wanted) {
    if (PQsendQuery(wire.line(), sql.c_str()) != 1)
        refuse(wire, nullptr);
    sendAll(wire);
    const ServerRows answer = nextAnswer(wire);
    if (PQresultStatus(answer.get()) == wanted)
        return;
    if (answer.get() != nullptr)
        while (nextAnswer(wire).get() != nullptr) {
        }
    refuse(wire, answer.get());
}

/// All that is still to be heard. @throws what the server refuses.
void endCopy(ServerWire& wire) {
    std::optional<ServerRows> refused;
    for (ServerRows answer = nextAnswer(wire); answer.get() != nullptr; answer = nextAnswer(wire)) {
        const ExecStatusType status = PQresultStatus(answer.get());
        if (status == PGRES_COPY_IN) // the end didn't get through
            refuse(wire, nullptr);
        if (status != PGRES_COMMAND_OK && !refused)
            refused = std::move(answer);
    }
    if (refused)
        refuse(wire, refused->get());
}

/// So that nothing is kept of it, and the line is good for the next statement.
void stopCopy(ServerWire& wire) {
    PQputCopyEnd(wire.line(), "parado");
    try {
        sendAll(wire);
        endCopy(wire);
    } catch (const jet::Error&) { // NOLINT(bugprone-empty-catch)
        // that it was stopped
    }
}

} // namespace

void copyIn(ServerWire& wire, const std::string& sql,
            const std::function<bool(std::string& piece)>& next) {
    const OneByOne copying(wire);
    startCopy(wire, sql, PGRES_COPY_IN);
    std::string piece;
    for (bool more = true; more;) {
        piece.clear();
        try {
            more = next(piece);
        } catch (...) {
            stopCopy(wire);
            throw;
        }
        if (PQputCopyData(wire.line(), piece.data(), static_cast<int>(piece.size())) != 1)
            break; // the end says why
        sendAll(wire);
    }
    PQputCopyEnd(wire.line(), nullptr);
    sendAll(wire);
    endCopy(wire);
}

void copyOut(ServerWire& wire, const std::string& sql,
             const std::function<void(std::string_view piece)>& take) {
    const OneByOne copying(wire);
    startCopy(wire, sql, PGRES_COPY_OUT);
    struct Freer {
        void operator()(char* piece) const { PQfreemem(piece); }
    };
    pg_conn* const line = wire.line();
    char* piece = nullptr;
    int length = 0;
    while ((length = PQgetCopyData(line, &piece, 1)) >= 0) {
        if (length == 0) {
            if (!wire.await([line] { return hasInput(PQsocket(line), kAtOnce); }))
                ServerWire::throwLost();
            if (PQconsumeInput(line) == 0)
                refuse(wire, nullptr);
            continue;
        }
        const std::unique_ptr<char, Freer> owned(piece);
        take({piece, static_cast<std::size_t>(length)});
    }
    if (length == -2)
        refuse(wire, nullptr);
    endCopy(wire);
}

} // namespace ado
