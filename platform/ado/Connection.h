#pragma once

#include "ado/RecordsetTypes.h"
#include "ado/Store.h"
#include "ado/Text.h"
#include "jet/Database.h"

#include <memory>
#include <string>

namespace ado {

class Recorder;
class Recordset;
class Provider;
class Follower;

/// The way to the shop's data: opens them, holds their transaction, and is what recordsets open on.
///
/// One thread. Must outlive nothing: recordsets still open when it closes are closed with it.
class Connection {
public:
    Connection();
    /// As Close(), but silent.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// "Provider=...;Data Source=<path of the file>": of the parts, separated by semicolons, only
    /// the data source counts; one that begins with "postgresql://" is a server's address instead
    /// of a path. Used by the next Open().
    void setConnectionString(const Text& text);
    /// Another disk than the system's for the next Open(); outlives the connection.
    void setDisk(jet::Disk& disk) noexcept { disk_ = &disk; }
    [[nodiscard]] const std::string& ConnectionString() const noexcept { return string_; }

    /// Opens the file. Both / and \ separate folders, doubled ones count once; a folder or file
    /// whose name differs only in case is found where none has the exact name. A file that can't
    /// be written opens for reading: see jet::Database::readOnlyReason().
    /// @throws Error{misuse} if open already or if no data source is given, Error{notFound} if
    ///         there is no such file, and what jet::Database throws.
    void Open();
    void Open(const Text& connectionString);
    /// Closes the recordsets on it, undoes a transaction still open, writes what is to be written,
    /// and closes the file. Does nothing if closed. @throws Error{io}: it is closed all the same.
    void Close();
    [[nodiscard]] ado::State State() const noexcept;

    /// Not nested: @throws Error{misuse} if a transaction is open (begin) or none is (commit, roll
    /// back).
    void BeginTrans();
    void CommitTrans();
    void RollbackTrans();
    [[nodiscard]] bool inTransaction() const noexcept;
    /// Whether changes of the last transaction have been undone, if this wasn't asked before.
    [[nodiscard]] bool hasUndone() noexcept;
    /// As CommitTrans(), but written together with the transactions that follow it within half a
    /// second: see jet::Database::commitLater(). Ends with flush().
    void commitLater();
    /// Writes all that is committed, or changed outside a transaction. @throws Error{io, full,
    /// ...}.
    void flush();

    /// Undoes what is gathered and not written yet.
    void discard();

    /// Writes changes made outside a transaction when they are old enough; to be called while
    /// idle, every half second or so. Does nothing if closed.
    void flushIfDue();

    /// Who keeps a record of what is changed through this connection from the next Open() on, or
    /// null for nobody; outlives it. See Recorder.h.
    void setRecorder(Recorder* recorder) noexcept { recorder_ = recorder; }

    /// What it is open on. @throws Error{misuse} if closed.
    [[nodiscard]] Store& store() const;
    /// The open file. @throws Error{misuse} if closed, Error{unsupported} if the data aren't in
    /// one.
    [[nodiscard]] jet::Database& database() const;

private:
    friend class Recordset;
    friend class Follower;
    [[nodiscard]] Provider& provider() const;

    std::string string_;
    jet::Disk* disk_ = nullptr; ///< null: the system's
    Recorder* recorder_ = nullptr;
    std::unique_ptr<Provider> provider_; ///< null when closed
};

/// All changes made through a connection while it lives, or none: undone unless committed.
class Transaction {
public:
    explicit Transaction(Connection& connection) : connection_(connection) {
        connection.BeginTrans();
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();
    void commit() {
        connection_.CommitTrans();
        done_ = true;
    }
    void commitLater() {
        connection_.commitLater();
        done_ = true;
    }

private:
    Connection& connection_;
    bool done_ = false;
};

} // namespace ado
