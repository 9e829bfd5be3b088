#pragma once

#include "ado/engine/StatementRuns.h"
#include "jet/Types.h"

#include <functional>
#include <memory>
#include <string>

namespace ado {

/// A statement that SQLite has understood, and its rows. Errors are jet::Error in Portuguese.
/// Mustn't outlive its Engine.
///
/// One that takes long lets other stations write in between: before its first row it then begins
/// anew, later it goes on in the file as it is by then, as it does from row to row.
class PreparedStatement {
public:
    /// Takes the statement over; to be made by Engine::prepare().
    PreparedStatement(sqlite3_stmt* statement, StatementRuns& runs)
        : statement_(statement), runs_(&runs) {}
    PreparedStatement(PreparedStatement&&) noexcept = default;
    PreparedStatement& operator=(PreparedStatement&&) noexcept = default;

    /// The parameter `?number`, counted from 1.
    void bind(int number, const jet::Value& value);
    /// To the next row; false after the last. @throws Error{full} beyond the bounds.
    bool step();
    /// As step() up to `most` times, all of one state of the file unless a step takes long: calls
    /// `row` on each row. Stops early, but not before the first, when it has kept others from
    /// writing for a few thousandths of a second; before the first row of all it calls `begin`, and
    /// both again if others have written meanwhile, and doesn't go on for longer than that row
    /// took. False after the last row.
    bool steps(std::size_t most, const std::function<void()>& begin,
               const std::function<void()>& row);
    /// All rows, of one state of the file: calls `begin`, then `row` on each; and both again from
    /// the first row if others have written meanwhile, which they can while it takes long.
    void all(const std::function<void()>& begin, const std::function<void()>& row);
    /// Back to before the first row.
    void reset();
    /// Whether an error came because others have written: who asked for a snapshot begins anew.
    [[nodiscard]] bool isDisturbed() const { return runs_->database().isDisturbed(); }

    [[nodiscard]] int columns() const;
    /// Of the current row; columns count from 0.
    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] jet::Value value(int column) const;
    [[nodiscard]] std::string columnName(int column) const;
    /// The stored table that a column comes from unchanged, as named there, or "".
    [[nodiscard]] std::string columnTable(int column) const;

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };

    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
    StatementRuns* runs_;
    std::uint64_t steps_ = 0; ///< of this run, a little behind
};

} // namespace ado
