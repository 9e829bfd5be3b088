#include "ado/engine/PreparedStatement.h"

#include "ado/engine/SqlError.h"
#include "ado/engine/SqlValue.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>

namespace ado {

using std::chrono::steady_clock;

namespace {

/// So long may several steps keep other stations from writing.
constexpr std::chrono::milliseconds kLongestSteps{3};

std::string orEmpty(const char* text) { return text != nullptr ? text : ""; }

} // namespace

void PreparedStatement::Finalizer::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

void PreparedStatement::bind(int number, const jet::Value& value) {
    const int result = bindValue(statement_.get(), number, value);
    if (result != SQLITE_OK)
        throwSqlError(sqlite3_db_handle(statement_.get()), result);
}

bool PreparedStatement::step() {
    if (sqlite3_stmt_busy(statement_.get()) == 0)
        return runs_->database().onSnapshot([this] {
            reset();
            return runs_->step(statement_.get(), steps_, nullptr);
        });
    // In its middle it can't be begun anew, should another station have written.
    std::optional<jet::Reading> reading(std::in_place, runs_->database());
    return runs_->step(statement_.get(), steps_, &reading);
}

bool PreparedStatement::steps(std::size_t most, const std::function<void()>& begin,
                              const std::function<void()>& row) {
    const auto walk = [&](std::optional<jet::Reading>* reading) {
        const bool first = reading == nullptr;
        const auto begun = steady_clock::now();
        auto until = begun + kLongestSteps;
        for (std::size_t walked = 0; walked < most && (walked == 0 || steady_clock::now() < until);
             ++walked) {
            if (!runs_->step(statement_.get(), steps_, reading))
                return false;
            row();
            if (!first || walked > 0)
                continue;
            const auto now = steady_clock::now();
            until = std::min(until, now + (now - begun));
        }
        return true;
    };
    if (sqlite3_stmt_busy(statement_.get()) == 0)
        return runs_->database().onSnapshot([&] {
            begin();
            reset();
            return walk(nullptr);
        });
    std::optional<jet::Reading> reading(std::in_place, runs_->database());
    return walk(&reading);
}

void PreparedStatement::all(const std::function<void()>& begin, const std::function<void()>& row) {
    runs_->database().onSnapshot([&] {
        begin();
        reset();
        // In its middle too it can be begun anew, should another station have written.
        while (runs_->step(statement_.get(), steps_, nullptr))
            row();
    });
}

void PreparedStatement::reset() {
    sqlite3_reset(statement_.get());
    steps_ = 0;
}

int PreparedStatement::columns() const { return sqlite3_column_count(statement_.get()); }

std::int64_t PreparedStatement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

jet::Value PreparedStatement::value(int column) const {
    return columnValue(statement_.get(), column);
}

std::string PreparedStatement::columnName(int column) const {
    return orEmpty(sqlite3_column_name(statement_.get(), column));
}

std::string PreparedStatement::columnTable(int column) const {
    return orEmpty(sqlite3_column_table_name(statement_.get(), column));
}

} // namespace ado
