#pragma once

#include "ado/RecordsetTypes.h"
#include "ado/Store.h"
#include "ado/provider/Cursor.h"
#include "jet/Error.h"

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ado {

/// Who works on an open provider, and lets go of it before it ends.
class ProviderUser {
public:
    /// Has left when it returns.
    virtual void close() = 0;

protected:
    ~ProviderUser() = default;
};

/// The rows that a Follower is given of one block.
class BlockRows {
public:
    /// To the first row, or the next one. False after the last.
    virtual bool next() = 0;
    // By the place of the column in those asked for.
    [[nodiscard]] virtual bool isNull(std::size_t column) const = 0;
    [[nodiscard]] virtual jet::Value value(std::size_t column) const = 0;

protected:
    ~BlockRows() = default;
};

/// What a provider does for one Follower, whose promises it keeps.
class Following {
public:
    using Take = std::function<void(std::uint32_t block, BlockRows&)>;

    Following() = default;
    Following(const Following&) = delete;
    Following& operator=(const Following&) = delete;
    virtual ~Following() = default;

    virtual bool follow(std::chrono::microseconds time) = 0;
    [[nodiscard]] virtual bool isComplete() const = 0;
    [[nodiscard]] virtual double progress() const = 0;
    [[nodiscard]] virtual std::optional<jet::Error> damage() const = 0;
};

/// An engine that keeps the data, as connections and recordsets use it. Open as long as it lives.
///
/// A change outside a transaction is one of its own.
class Provider : public Store {
public:
    /// What Connection promises of each.
    virtual void begin() = 0;
    virtual void commit() = 0;
    virtual void commitLater() = 0;
    virtual void rollback() = 0;
    [[nodiscard]] virtual bool inTransaction() const noexcept = 0;
    virtual void flush() = 0;
    virtual void flushIfDue() = 0;
    virtual void discard() = 0;
    /// Whether changes of the last transaction have been undone, if this wasn't asked before.
    [[nodiscard]] virtual bool hasUndone() noexcept = 0;
    /// Undoes an open transaction, and writes what is to be written.
    virtual void end() = 0;

    /// A recordset's statement, or the name of its table; at the first row.
    /// @throws Error{syntax, notFound}.
    [[nodiscard]] virtual std::unique_ptr<Cursor> open(const std::string& source, CursorType type,
                                                       LockType lock, CommandType command) = 0;
    /// @throws as the constructor of Follower.
    [[nodiscard]] virtual std::unique_ptr<Following> follow(const std::string& table,
                                                            const std::vector<std::string>& columns,
                                                            Following::Take take) = 0;

    void enter(ProviderUser& user) { users_.push_back(&user); }
    void leave(ProviderUser& user) noexcept { std::erase(users_, &user); }
    /// Closes all who work on it.
    void closeUsers() {
        while (!users_.empty())
            users_.back()->close();
    }

private:
    std::vector<ProviderUser*> users_; ///< in the order in which they came
};

} // namespace ado
