#include "ado/Connection.h"

#include "ado/ConnectionString.h"
#include "ado/file/FileProvider.h"
#include "ado/server/OpenServer.h"
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
    if (provider_)
        throw Error(Errc::misuse, "A conexão com o banco de dados já está aberta.");
    if (const auto address = serverAddress(string_))
        provider_ = openServer(*address, recorder_);
    else
        provider_ =
            std::make_unique<FileProvider>(existingFile(dataSource(string_)), disk_, recorder_);
}

void Connection::Open(const Text& connectionString) {
    setConnectionString(connectionString);
    Open();
}

void Connection::Close() {
    if (!provider_)
        return;
    // Gone from here first: whatever the file says while it closes, the connection is closed.
    const auto closing = std::move(provider_);
    closing->closeUsers();
    closing->end();
}

State Connection::State() const noexcept {
    return provider_ ? ado::State::Open : ado::State::Closed;
}

Provider& Connection::provider() const {
    if (!provider_)
        throw Error(Errc::misuse, "A conexão com o banco de dados está fechada.");
    return *provider_;
}

void Connection::BeginTrans() { provider().begin(); }
void Connection::CommitTrans() { provider().commit(); }
void Connection::RollbackTrans() { provider().rollback(); }
void Connection::commitLater() { provider().commitLater(); }
void Connection::flush() { provider().flush(); }
void Connection::discard() { provider().discard(); }

bool Connection::inTransaction() const noexcept { return provider_ && provider_->inTransaction(); }

bool Connection::hasUndone() noexcept { return provider_ && provider_->hasUndone(); }

void Connection::flushIfDue() {
    if (provider_)
        provider_->flushIfDue();
}

Store& Connection::store() const { return provider(); }

jet::Database& Connection::database() const {
    jet::Database* const file = provider().file();
    if (file == nullptr)
        throw Error(Errc::unsupported, "Os dados estão em " + provider().place() +
                                           ", e isto só se faz com um arquivo.");
    return *file;
}

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
