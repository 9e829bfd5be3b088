#include "ado/server/ServerProvider.h"

#include "ado/server/OpenServer.h"
#include "ado/server/ServerCursor.h"
#include "ado/server/ServerFollowing.h"
#include "jet/Error.h"

namespace ado {

std::unique_ptr<Provider> openServer(const std::string& address, Recorder* recorder) {
    return std::make_unique<ServerProvider>(address, recorder);
}

void ServerProvider::end() {
    if (inTransaction())
        rollback();
}

void ServerProvider::flushIfDue() {
    session_.wire().lookAfter();
    static_cast<void>(session_.now());
}

namespace {

/// Outside of a transaction all that is read is of one state, as long as it lives.
class OneState {
public:
    explicit OneState(ServerWire& wire) : wire_(wire) { wire.beginReading(); }
    OneState(const OneState&) = delete;
    OneState& operator=(const OneState&) = delete;
    ~OneState() { wire_.endReading(); }

private:
    ServerWire& wire_;
};

} // namespace

std::shared_ptr<void> ServerProvider::hold() { return std::make_shared<OneState>(session_.wire()); }

void ServerProvider::onSnapshot(const std::function<void()>& body) {
    try {
        const OneState reading(session_.wire());
        return body();
    } catch (const jet::Error& error) {
        if (error.code() != jet::Errc::offline || inTransaction() || session_.wire().isReading())
            throw;
    }
    // The line broke in the middle.
    const OneState reading(session_.wire());
    body();
}

std::unique_ptr<Cursor> ServerProvider::open(const std::string& source, CursorType type,
                                             LockType lock, CommandType command) {
    return ServerCursor::open(session_, source, type, lock, command);
}

std::unique_ptr<Following> ServerProvider::follow(const std::string& table,
                                                  const std::vector<std::string>& columns,
                                                  Following::Take take) {
    return std::make_unique<ServerFollowing>(session_, table, columns, std::move(take));
}

std::optional<std::string> ServerProvider::readOnlyReason() {
    if (session_.wire().isReadOnly())
        return "O servidor " + place() + " está aberto somente para leitura.";
    return std::nullopt;
}

bool ServerProvider::hasTable(std::string_view name) {
    return session_.catalog().find(name) != nullptr;
}

const ServerTable& ServerProvider::table(std::string_view name) {
    const ServerTable* const table = session_.catalog().find(name);
    if (table == nullptr)
        throw jet::Error(jet::Errc::notFound, "Não existe a tabela \"" + std::string(name) + "\".");
    return *table;
}

TableShape ServerProvider::shape(std::string_view name) { return table(name).shape(); }

std::vector<std::size_t> ServerProvider::keyOf(std::string_view name) { return table(name).key; }

std::optional<std::string> ServerProvider::readOnlyReason(std::string_view name) {
    static_cast<void>(table(name));
    return readOnlyReason();
}

std::uint64_t ServerProvider::generation() {
    const ServerSession::Moment moment = session_.now();
    return moment.own + moment.others;
}

} // namespace ado
