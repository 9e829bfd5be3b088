#include "ado/server/ServerCopy.h"

#include "ado/server/ServerError.h"
#include "jet/Error.h"

#include <libpq-fe.h>

namespace ado {

namespace {

/// While one lives, the line takes one statement after the other, as copying asks.
class OneByOne {
public:
    explicit OneByOne(ServerWire& wire) : line_(wire.line()) {
        if (PQexitPipelineMode(line_) != 1)
            throwServerError(line_, nullptr, wire.place());
    }
    OneByOne(const OneByOne&) = delete;
    OneByOne& operator=(const OneByOne&) = delete;
    ~OneByOne() { PQenterPipelineMode(line_); }

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

/// Sends the statement, which has to be answered by that.
void startCopy(ServerWire& wire, const std::string& sql, ExecStatusType wanted) {
    pg_result* const result = PQexec(wire.line(), sql.c_str());
    const ServerRows answer(result);
    if (PQresultStatus(result) != wanted)
        refuse(wire, result);
}

/// All that is still to be heard. @throws what the server refuses.
void endCopy(ServerWire& wire) {
    while (pg_result* const result = PQgetResult(wire.line())) {
        const ServerRows answer(result);
        if (PQresultStatus(result) != PGRES_COMMAND_OK)
            refuse(wire, result);
    }
}

} // namespace

void copyIn(ServerWire& wire, const std::string& sql,
            const std::function<bool(std::string& piece)>& next) {
    const OneByOne copying(wire);
    startCopy(wire, sql, PGRES_COPY_IN);
    std::string piece;
    bool more = true;
    try {
        while (more) {
            piece.clear();
            more = next(piece);
            if (PQputCopyData(wire.line(), piece.data(), static_cast<int>(piece.size())) != 1)
                break; // the end says why
        }
    } catch (...) {
        PQputCopyEnd(wire.line(), "parado");
        while (pg_result* const result = PQgetResult(wire.line()))
            PQclear(result);
        throw;
    }
    PQputCopyEnd(wire.line(), nullptr);
    endCopy(wire);
}

void copyOut(ServerWire& wire, const std::string& sql,
             const std::function<void(std::string_view piece)>& take) {
    const OneByOne copying(wire);
    startCopy(wire, sql, PGRES_COPY_OUT);
    struct Freer {
        void operator()(char* piece) const { PQfreemem(piece); }
    };
    char* piece = nullptr;
    int length = 0;
    while ((length = PQgetCopyData(wire.line(), &piece, 0)) > 0) {
        const std::unique_ptr<char, Freer> owned(piece);
        take({piece, static_cast<std::size_t>(length)});
    }
    if (length == -2)
        refuse(wire, nullptr);
    endCopy(wire);
}

} // namespace ado
