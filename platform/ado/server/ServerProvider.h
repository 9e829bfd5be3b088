#pragma once

#include "ado/provider/Provider.h"
#include "ado/server/ServerSession.h"

namespace ado {

/// A PostgreSQL server as provider.
class ServerProvider final : public Provider {
public:
    ServerProvider(const std::string& address, Recorder* recorder) : session_(address, recorder) {}

    void begin() override { session_.begin(); }
    void commit() override { session_.commit(); }
    /// The server gathers what comes at one time by itself.
    void commitLater() override { session_.commit(); }
    void rollback() override { session_.rollback(); }
    [[nodiscard]] bool inTransaction() const noexcept override {
        return session_.wire().inTransaction();
    }
    void flush() override {}
    void flushIfDue() override;
    void discard() override {}
    [[nodiscard]] bool hasUndone() noexcept override { return session_.hasUndone(); }
    void end() override;

    [[nodiscard]] std::unique_ptr<Cursor> open(const std::string& source, CursorType type,
                                               LockType lock, CommandType command) override;
    [[nodiscard]] std::unique_ptr<Following> follow(const std::string& table,
                                                    const std::vector<std::string>& columns,
                                                    Following::Take take) override;

    [[nodiscard]] std::string place() const override { return session_.wire().place(); }
    [[nodiscard]] std::string identity() const override { return session_.wire().place(); }
    [[nodiscard]] std::optional<std::string> readOnlyReason() override;
    void setPassword(const std::string& password) override {
        session_.wire().setPassword(password);
    }
    [[nodiscard]] bool isBroken() const noexcept override { return false; }
    [[nodiscard]] bool hasTable(std::string_view name) override;
    [[nodiscard]] TableShape shape(std::string_view name) override;
    [[nodiscard]] std::vector<std::size_t> keyOf(std::string_view table) override;
    [[nodiscard]] std::optional<std::string> readOnlyReason(std::string_view table) override;
    void createTable(const jet::TableSpec& spec) override { session_.createTable(spec); }
    /// Whoever is about to change anything waits until the transaction ends.
    void claim() override { session_.claim(); }
    /// Stands in the line of those who change rows, from its next statement on.
    void claimRows() override { session_.claimRows(); }
    [[nodiscard]] bool writesAtOnce() const noexcept override { return true; }
    [[nodiscard]] bool write(std::span<const RowWrite> rows) override {
        return session_.write(rows);
    }
    [[nodiscard]] Tally tally() const noexcept override {
        return {session_.written(), 0, session_.wire().roundTrips()};
    }
    /// Of one state outside of transactions, as long as the body changes nothing. Inside of one,
    /// what others end meanwhile is seen, unless it has claimed that there is none.
    void onSnapshot(const std::function<void()>& body) override;
    [[nodiscard]] std::shared_ptr<void> hold() override;
    [[nodiscard]] std::uint64_t generation() override;
    [[nodiscard]] bool isTakenByOther() const override { return false; }

private:
    [[nodiscard]] const ServerTable& table(std::string_view name);

    ServerSession session_;
};

} // namespace ado
