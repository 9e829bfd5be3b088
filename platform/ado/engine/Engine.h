#pragma once

#include "ado/dialect/Spelling.h"
#include "ado/engine/PreparedStatement.h"

#include <unordered_map>
#include <vector>

struct sqlite3_context;
struct sqlite3_value;

namespace ado {

class SortFiles;
struct TableSource;

/// SQLite over one open file: an empty database in memory in which every table of the file is a
/// virtual table. It can read them and call the functions of SqlFunctions.h, and nothing else: an
/// authorizer refuses all other actions, whatever the dialect might let through.
class Engine {
public:
    explicit Engine(jet::Database& database);
    Engine(jet::Database& database, const Bounds& bounds);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// A statement in SQLite's words (see SqlDialect.h).
    /// @throws Error{notFound} for an unknown table or column, Error{syntax} for all else that
    ///         SQLite won't take.
    [[nodiscard]] PreparedStatement prepare(const std::string& sql);

    /// How the file spells names. As a side effect a table that is asked for is known to SQLite
    /// from then on, so every table of a statement must go through here.
    [[nodiscard]] Spelling spelling();

    /// How many steps the run of a statement has taken that took the most.
    [[nodiscard]] std::uint64_t longestRun() const noexcept { return runs_.longest(); }
    /// The most bytes that have been on the disk to be sorted.
    [[nodiscard]] std::uint64_t mostSorted() const noexcept;

private:
    struct Closer {
        void operator()(sqlite3* handle) const;
    };
    void addTable(jet::Table& table);
    [[nodiscard]] std::string knownTable(std::string_view name);
    [[nodiscard]] std::string columnOf(std::string_view name,
                                       std::span<const std::string> tables) const;
    static int compareTexts(void* self, int sizeA, const void* a, int sizeB, const void* b);
    static void giveTextKey(sqlite3_context* context, int count, sqlite3_value** arguments);
    static int authorize(void* self, int action, const char* first, const char* second,
                         const char* database, const char* trigger);

    jet::Database& database_;
    Trap trap_;
    StatementRuns runs_;
    bool declaring_ = false; ///< a table is being made known
    jet::Bytes textKey_;     ///< the last one, for its memory
    std::unordered_map<std::string, std::unique_ptr<TableSource>> tables_; ///< by stored name
    /// Of tables that the file has no more: statements prepared before still know their address.
    std::vector<std::unique_ptr<TableSource>> former_;
    std::unique_ptr<SortFiles> sortFiles_;
    std::unique_ptr<sqlite3, Closer> handle_; ///< last, so first to go: it uses all the others
};

} // namespace ado
