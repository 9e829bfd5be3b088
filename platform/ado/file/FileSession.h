#pragma once

#include "ado/Recorder.h"
#include "ado/engine/Engine.h"
#include "jet/Database.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <utility>
#include <vector>

namespace ado {

/// One change of one row, made through this connection.
struct RowChange {
    enum class Kind : std::uint8_t { added, changed, erased };
    const jet::Table* table;
    jet::RowId row;
    Kind kind;
};

/// A position in the change log of a connection: everything before it is known to its holder. The
/// log of an older `epoch` is lost, as the file has changed in ways that nobody has told of.
struct LogPosition {
    std::uint64_t epoch = 0;
    std::uint64_t number = 0;
};

/// An open file, SQLite over it, and the log of the changes made through its connection, which
/// spares a recordset reading everything again.
///
/// The file's generation tells of changes that didn't come through here (another program, or the
/// engine's own users): then a new epoch begins, and every recordset's next Requery() reads all.
class FileSession {
public:
    /// `disk` is null for the system's, `recorder` for none.
    FileSession(const std::filesystem::path& path, jet::Disk* disk, Recorder* recorder);
    FileSession(const FileSession&) = delete;
    FileSession& operator=(const FileSession&) = delete;

    [[nodiscard]] jet::Database& database() noexcept { return database_; }
    [[nodiscard]] const jet::Database& database() const noexcept { return database_; }
    [[nodiscard]] Engine& engine() noexcept { return engine_; }

    /// Changes of rows; throw as the functions of jet::Table do.
    /// Columns that aren't given take their defaults.
    jet::RowId insert(jet::Table& table, std::span<const jet::Assignment> given);
    void update(jet::Table& table, jet::RowId row, std::span<const jet::Assignment> changes,
                std::optional<std::uint64_t> expected = std::nullopt);
    void erase(jet::Table& table, jet::RowId row,
               std::optional<std::uint64_t> expected = std::nullopt);

    void begin();
    void commit() { commitBy(&jet::Database::commit); }
    void commitLater() { commitBy(&jet::Database::commitLater); }
    /// The log then tells of the opposite of what the transaction did.
    void rollback();
    [[nodiscard]] bool inTransaction() const noexcept { return database_.inTransaction(); }
    void flushIfDue();
    void flush();
    void discard();
    [[nodiscard]] bool hasUndone() noexcept { return std::exchange(undone_, false); }

    /// Where the log ends now.
    [[nodiscard]] LogPosition logEnd();
    /// What has come since `position`, which moves to the end. Nothing if that can't be told.
    [[nodiscard]] std::optional<std::vector<RowChange>> changesSince(LogPosition& position);

private:
    void lookForStrangers();
    void flushWhileReading();
    void beginEpoch();
    void commitBy(void (jet::Database::*way)());
    void settle();
    template <class Change>
    void recorded(jet::Table& table, std::optional<jet::RowId> before,
                  std::optional<std::span<const jet::Assignment>> changes, Change&& change);
    void record(const jet::Table& table, std::optional<jet::RowId> row, const jet::Row* before,
                std::vector<jet::Cascaded>& others);
    void note(const RowChange& change);
    void note(const std::vector<jet::Cascaded>& others);

    jet::Database database_;
    Engine engine_;
    Recorder* recorder_;

    std::uint64_t generation_; ///< of the file when last looked at
    std::uint64_t refreshes_;  ///< the same: grows when another station has written
    std::uint64_t epoch_ = 1;
    std::uint64_t begunIn_ = 0;   ///< the epoch in which the last transaction began
    std::vector<RowChange> log_;  ///< the newest; those before were dropped
    std::uint64_t dropped_ = 0;   ///< how many
    std::vector<RowChange> undo_; ///< of the open transaction
    bool undone_ = false;         ///< changes of the last transaction, not asked for yet
};

} // namespace ado
