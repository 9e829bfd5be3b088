#pragma once

#include "ado/TableShape.h"
#include "jet/TableSpec.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace jet {
class Database;
}

namespace ado {

/// What a connection is open on, as the windows ask about it, whichever engine keeps the data.
class Store {
public:
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    virtual ~Store() = default;

    /// Where the data are, for a sentence: the path of a file, a server's address without password.
    [[nodiscard]] virtual std::string place() const = 0;
    /// The same for whoever tells one shop's data from another's: one text, however it is reached.
    [[nodiscard]] virtual std::string identity() const = 0;
    /// Why nothing can be changed at this moment, or nothing if it can.
    [[nodiscard]] virtual std::optional<std::string> readOnlyReason() = 0;
    /// For a server that has said, by Error{password}, that it wants another one now.
    virtual void setPassword(const std::string& /*password*/) {}
    /// Whether what was being saved can neither be ended nor undone before the next opening.
    [[nodiscard]] virtual bool isBroken() const noexcept = 0;

    [[nodiscard]] virtual bool hasTable(std::string_view name) = 0;
    /// By name, without regard to case. @throws Error{notFound}.
    [[nodiscard]] virtual TableShape shape(std::string_view name) = 0;
    /// The places of its primary key's columns; none without one. @throws Error{notFound}.
    [[nodiscard]] virtual std::vector<std::size_t> keyOf(std::string_view table) = 0;
    /// Why this table can't be changed, or nothing if it can. @throws Error{notFound}.
    [[nodiscard]] virtual std::optional<std::string> readOnlyReason(std::string_view table) = 0;
    /// @throws Error{exists, misuse, readOnly, full}.
    virtual void createTable(const jet::TableSpec& spec) = 0;

    /// Inside a transaction: from here on nobody else changes what it is about to read, and all
    /// that others have written until now is seen. @throws Error{locked, readOnly}.
    virtual void claim() = 0;
    /// The same of the rows that are there, which nobody else then changes or erases; on a server
    /// who only adds rows doesn't wait for it. For who reads rows to say what they are to be.
    virtual void claimRows() { claim(); }
    /// A row as it is and as it is to be: null before of a new one, null after of one to be erased.
    struct RowWrite {
        std::string table;
        const jet::Row* before = nullptr;
        const jet::Row* after = nullptr;
    };
    /// Whether writing many rows at once is any shorter than one after the other by a recordset.
    [[nodiscard]] virtual bool writesAtOnce() const noexcept { return false; }
    /// Inside a transaction: all of these in their order, each told to whoever keeps a record of
    /// it. Each must be in all its columns as it is `before`.
    /// @return false, and nothing is done, if others may go along with one of them: those are to be
    ///         written by recordsets. @throws as Recordset::Update() and Delete(), without saying
    ///         of which row; the transaction can only be undone then.
    [[nodiscard]] virtual bool write(std::span<const RowWrite> /*rows*/) { return false; }
    /// Of the rows inserted, updated and erased here, how many are stored for good and how many
    /// wait for that; and how often a server's answer has been waited for.
    struct Tally {
        std::uint64_t written = 0;
        std::uint64_t gathered = 0;
        std::uint64_t waits = 0;
    };
    [[nodiscard]] virtual Tally tally() const noexcept = 0;

    /// What `body` reads, all of one state of the data. It may be called again, so it begins anew
    /// each time.
    virtual void onSnapshot(const std::function<void()>& body) = 0;
    /// The same of a body that gives something.
    template <class Body>
    [[nodiscard]] auto read(Body&& body) {
        std::optional<std::invoke_result_t<Body>> result;
        onSnapshot([&] { result.emplace(body()); });
        return std::move(*result);
    }
    /// While what it gives lives, all that is read is of one state, and nothing begins anew. Keep
    /// it short: it may keep others from writing.
    [[nodiscard]] virtual std::shared_ptr<void> hold() = 0;
    /// Grows whenever anything may have been changed, by whomever.
    [[nodiscard]] virtual std::uint64_t generation() = 0;
    /// Whether another is about to write, or does: who only wants to read, and has time, spares
    /// itself the wait.
    [[nodiscard]] virtual bool isTakenByOther() const = 0;

    /// The open file, for what only a file has; null where the data aren't in one.
    [[nodiscard]] virtual jet::Database* file() noexcept { return nullptr; }

protected:
    Store() = default;
};

} // namespace ado
