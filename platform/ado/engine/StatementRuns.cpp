#include "ado/engine/StatementRuns.h"

#include "ado/engine/SqlError.h"

#include <sqlite3.h>

#include <algorithm>
#include <utility>

namespace ado {

namespace {

/// A long step is looked at after so many of SQLite's own, some thousandths of a second.
constexpr int kStepsPerLook = 20'000;

} // namespace

void StatementRuns::watch(sqlite3* handle) {
    sqlite3_progress_handler(handle, kStepsPerLook, lookAtRun, this);
}

bool StatementRuns::step(sqlite3_stmt* statement, std::uint64_t& steps,
                         std::optional<jet::Reading>* reading) {
    Run run{steps, reading};
    Run* const outer = std::exchange(run_, &run);
    const int result = sqlite3_step(statement);
    run_ = outer;
    trap_.rethrow();
    if (result == SQLITE_ROW)
        return true;
    if (result != SQLITE_DONE)
        throwSqlError(sqlite3_db_handle(statement), result);
    return false;
}

/// In the middle of a step: whether it has to stop.
int StatementRuns::lookAtRun(void* self) {
    auto& runs = *static_cast<StatementRuns*>(self);
    if (runs.run_ == nullptr) // unreached: nothing else takes so many steps
        return 0;
    const auto [steps, reading] = *runs.run_;
    steps += kStepsPerLook;
    runs.longest_ = std::max(runs.longest_, steps);
    if (steps > runs.mostSteps_)
        return 1;
    const bool goesOn = runs.trap_.run([&runs, held = reading] {
        if (held == nullptr)
            return runs.database_.breathe();
        if (!runs.database_.keepsWriterWaiting())
            return;
        held->reset();
        held->emplace(runs.database_);
    });
    return goesOn ? 0 : 1;
}

} // namespace ado
