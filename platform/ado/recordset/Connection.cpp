#include "ado/Connection.h"

#include "ado/ConnectionString.h"
#include "ado/recordset/Session.h"
#include "jet/Error.h"

namespace ado {

using jet::Errc;
using jet::Error;

Connection::Connection() = default;

Connection::~Connection() {
    try {
        Close();
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch)
        // What couldn't be written has nobody left to be told to; whoever wants to know calls
        // Close().
    }
}

void Connection::setConnectionString(const Text& text) { string_ = text.utf8(); }

void Connection::Open() {
    if (session_)
        throw Error(Errc::misuse, "A conexão com o banco de dados já está aberta.");
    session_ = std::make_unique<Session>(existingFile(dataSource(string_)), disk_, recorder_);
}

void Connection::Open(const Text& connectionString) {
    setConnectionString(connectionString);
    Open();
}

void Connection::Close() {
    if (!session_)
        return;
    // Gone from here first: whatever the file says while it closes, the connection is closed.
    const auto closing = std::move(session_);
    closing->closeUsers();
    if (closing->database().inTransaction())
        closing->rollback();
    closing->database().flush();
}

State Connection::State() const noexcept {
    return session_ ? ado::State::Open : ado::State::Closed;
}

Session& Connection::session() const {
    if (!session_)
        throw Error(Errc::misuse, "A conexão com o banco de dados está fechada.");
    return *session_;
}

void Connection::BeginTrans() { session().begin(); }
void Connection::CommitTrans() { session().commit(); }
void Connection::RollbackTrans() { session().rollback(); }
void Connection::commitLater() { session().commitLater(); }
void Connection::flush() { session().flush(); }
void Connection::discard() { session().discard(); }

bool Connection::inTransaction() const noexcept {
    return session_ && session_->database().inTransaction();
}

bool Connection::hasUndone() noexcept { return session_ && session_->hasUndone(); }

void Connection::flushIfDue() {
    if (session_)
        session_->flushIfDue();
}

jet::Database& Connection::database() const { return session().database(); }

Transaction::~Transaction() {
    if (done_ || !connection_.inTransaction())
        return;
    try {
        connection_.RollbackTrans();
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch)
        // unreached: undoing asks nothing of the disk
    }
}

} // namespace ado
