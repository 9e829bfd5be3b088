#pragma once

#include "ado/engine/Trap.h"
#include "jet/Database.h"

#include <cstddef>
#include <cstdint>
#include <optional>

struct sqlite3;
struct sqlite3_stmt;

namespace ado {

/// What one run of a statement, or what is kept of its rows, may take. Far beyond the work of the
/// windows over all rows of the file; what goes beyond it, because a join was typed where a name
/// was asked for, ends in Error{full} instead of holding up the shop.
struct Bounds {
    std::uint64_t steps = 200'000'000; ///< of SQLite's machine; some tens for each row
    std::size_t bytes = std::size_t{256} << 20;
    /// Bytes on the disk, of what is sorted and is too much for memory.
    std::uint64_t sorted = std::uint64_t{256} << 20;

    /// Where the file has so many bytes, of which each row takes a hundred or so: a list of them
    /// all needs fewer steps than that, and no more room than the file when it is sorted.
    [[nodiscard]] static constexpr Bounds forFileOf(std::uint64_t size) noexcept {
        Bounds bounds;
        bounds.steps += size;
        bounds.sorted += 2 * size;
        return bounds;
    }
};

/// The statements at work over one file: keeps each within its bounds, and lets other stations
/// write in the middle of a long step.
class StatementRuns {
public:
    /// All outlive it.
    StatementRuns(jet::Database& database, Trap& trap, std::uint64_t mostSteps)
        : database_(database), trap_(trap), mostSteps_(mostSteps) {}
    StatementRuns(const StatementRuns&) = delete;
    StatementRuns& operator=(const StatementRuns&) = delete;

    /// Has SQLite ask in the middle of every step of this handle.
    void watch(sqlite3* handle);

    [[nodiscard]] jet::Database& database() const noexcept { return database_; }
    /// To the next row; false after the last. `steps` counts those of the run, a little behind.
    /// `reading` is what the step holds of the file if it can't be begun anew, else null.
    /// @throws as throwSqlError(), and what was thrown inside a callback.
    bool step(sqlite3_stmt* statement, std::uint64_t& steps, std::optional<jet::Reading>* reading);
    /// Of the run that has taken the most.
    [[nodiscard]] std::uint64_t longest() const noexcept { return longest_; }

private:
    struct Run {
        std::uint64_t& steps;
        std::optional<jet::Reading>* reading;
    };
    static int lookAtRun(void* self);

    jet::Database& database_;
    Trap& trap_;
    std::uint64_t mostSteps_;
    Run* run_ = nullptr; ///< whose step is at work
    std::uint64_t longest_ = 0;
};

} // namespace ado
