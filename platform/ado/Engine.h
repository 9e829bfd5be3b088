#pragma once

#include "ado/SqlDialect.h"
#include "jet/Database.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace ado {

/// Where an exception waits that was thrown inside a callback of SQLite, which is C and lets none
/// through: it is thrown again when SQLite has returned.
class Trap {
public:
    /// Runs `body`; false if it threw.
    template <class Body>
    bool run(Body&& body) noexcept {
        try {
            body();
            return true;
        } catch (...) {
            caught_ = std::current_exception();
            return false;
        }
    }
    void rethrow() {
        if (caught_)
            std::rethrow_exception(std::exchange(caught_, nullptr));
    }

private:
    std::exception_ptr caught_;
};

/// What one run of a statement, or what is kept of its rows, may take. Far beyond the work of the
/// windows over a million rows; what goes beyond it, because a join was typed where a name was
/// asked for, ends in Error{full} instead of holding up the shop.
struct Bounds {
    std::uint64_t steps = 200'000'000; ///< of SQLite's machine; some tens for each row
    std::size_t bytes = std::size_t{256} << 20;
};
/// @throws Error{full}, the sentence for all that goes beyond the bounds.
[[noreturn]] void tooMuch();

class Engine;

/// A prepared statement and its rows. Errors are jet::Error in Portuguese. Mustn't outlive its
/// Engine.
///
/// One that takes long lets other stations write in between: before its first row it then begins
/// anew, later it goes on in the file as it is by then, as it does from row to row.
class Statement {
public:
    Statement(Statement&&) noexcept = default;
    Statement& operator=(Statement&&) noexcept = default;

    /// The parameter `?number`, counted from 1.
    void bind(int number, const jet::Value& value);
    /// To the next row; false after the last. @throws Error{full} beyond the bounds.
    bool step();
    /// As step() up to `most` times, all of one state of the file unless a step takes long: calls
    /// `row` on each row. Stops early, but not before the first, when it has kept others from
    /// writing for a few thousandths of a second. False after the last row.
    bool steps(std::size_t most, const std::function<void()>& row);
    /// Back to before the first row.
    void reset();

    [[nodiscard]] int columns() const;
    /// Of the current row; columns count from 0.
    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] bool isNull(int column) const;
    [[nodiscard]] jet::Value value(int column) const;
    [[nodiscard]] std::string columnName(int column) const;
    /// The stored table that a column comes from unchanged, as named there, or "".
    [[nodiscard]] std::string columnTable(int column) const;
    /// What the column is called in that table, or "".
    [[nodiscard]] std::string columnOrigin(int column) const;

private:
    friend class Engine;
    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const;
    };
    Statement(sqlite3_stmt* statement, Engine& engine) : statement_(statement), engine_(&engine) {}
    bool stepInside(std::optional<jet::Reading>* reading);

    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
    Engine* engine_;
    std::uint64_t steps_ = 0; ///< of this run, a little behind
};

struct TableSource;

/// SQLite over one open file: an empty database in memory in which every table of the file is a
/// virtual table. It can read them and call the functions of SqlFunctions.h, and nothing else: an
/// authorizer refuses all other actions, whatever the dialect might let through.
class Engine {
public:
    explicit Engine(jet::Database& database, const Bounds& bounds = {});
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// A statement in SQLite's words (see SqlDialect.h).
    /// @throws Error{notFound} for an unknown table or column, Error{syntax} for all else that
    ///         SQLite won't take.
    [[nodiscard]] Statement prepare(const std::string& sql);

    /// How the file spells names. As a side effect a table that is asked for is known to SQLite
    /// from then on, so every table of a statement must go through here.
    [[nodiscard]] Spelling spelling();

    /// How many steps the run of a statement has taken that took the most.
    [[nodiscard]] std::uint64_t longestRun() const noexcept { return longestRun_; }

private:
    friend class Statement;
    struct Closer {
        void operator()(sqlite3* handle) const;
    };
    /// The step at work: what it has of the file, if it can't be begun anew.
    struct Run {
        std::uint64_t& steps;
        std::optional<jet::Reading>* reading;
    };
    static int lookAtRun(void* self);
    void addTable(jet::Table& table);
    [[nodiscard]] std::string knownTable(std::string_view name);
    [[nodiscard]] std::string columnOf(std::string_view name,
                                       std::span<const std::string> tables) const;
    static int compareTexts(void* self, int sizeA, const void* a, int sizeB, const void* b);
    static int authorize(void* self, int action, const char* first, const char* second,
                         const char* database, const char* trigger);

    jet::Database& database_;
    Bounds bounds_;
    Trap trap_;
    Run* run_ = nullptr;
    std::uint64_t longestRun_ = 0;
    bool declaring_ = false; ///< a table is being made known
    std::unordered_map<std::string, std::unique_ptr<TableSource>> tables_; ///< by stored name
    /// Of tables that the file has no more: statements prepared before still know their address.
    std::vector<std::unique_ptr<TableSource>> former_;
    std::unique_ptr<sqlite3, Closer> handle_; ///< last, so first to go: it uses all the others
};

} // namespace ado
