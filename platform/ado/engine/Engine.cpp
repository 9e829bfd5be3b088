#include "ado/engine/Engine.h"

#include "ado/dialect/SqlFunctions.h"
#include "ado/engine/SortFiles.h"
#include "ado/engine/SqlError.h"
#include "ado/engine/VirtualTable.h"
#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/Tokens.h"

#include <sqlite3.h>

namespace ado {

namespace {

using jet::Errc;
using jet::Error;

/// What a statement may ask of SQLite. Far beyond what the windows need, and small enough that a
/// hostile text ends in an error rather than in the machine's memory.
struct Limit {
    int id;
    int value;
};
constexpr Limit kLimits[] = {
    {SQLITE_LIMIT_ATTACHED,            0       },
    {SQLITE_LIMIT_COMPOUND_SELECT,     20      },
    {SQLITE_LIMIT_EXPR_DEPTH,          400     },
    {SQLITE_LIMIT_FUNCTION_ARG,        8       },
    {SQLITE_LIMIT_LENGTH,              64 << 20},
    {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 100     },
    {SQLITE_LIMIT_SQL_LENGTH,          1 << 20 },
    {SQLITE_LIMIT_TRIGGER_DEPTH,       0       },
    {SQLITE_LIMIT_VARIABLE_NUMBER,     32      },
    {SQLITE_LIMIT_VDBE_OP,             250000  },
    {SQLITE_LIMIT_WORKER_THREADS,      0       },
};

/// 0 of one that is in memory.
std::uint64_t sizeOf(const std::filesystem::path& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return error ? 0 : size;
}

} // namespace

void Engine::Closer::operator()(sqlite3* handle) const { sqlite3_close(handle); }

Engine::Engine(jet::Database& database)
    : Engine(database, Bounds::forFileOf(sizeOf(database.path()))) {}

Engine::Engine(jet::Database& database, const Bounds& bounds)
    : database_(database), runs_(database, trap_, bounds.steps),
      sortFiles_(std::make_unique<SortFiles>(bounds.sorted)) {
    // Of all that SQLite has in the program, which is little but the statements at work.
    sqlite3_hard_heap_limit64(static_cast<sqlite3_int64>(bounds.bytes));
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(
        ":memory:", &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX,
        sortFiles_->name());
    handle_.reset(handle);
    if (result != SQLITE_OK)
        throw Error(Errc::io, "Não há memória para abrir o banco de dados.");
    // What is sorted stays in memory, up to a third of the bound: only the lists of a very large
    // file are ever seen by the disk, and those have the places of their rows besides.
    const std::string most = std::to_string(bounds.bytes / 3 / 1024);
    sqlite3_exec(handle, ("pragma temp_store=file; pragma cache_size=-" + most).c_str(), nullptr,
                 nullptr, nullptr);
    // A name between double quotes that no column has is an error, not a text.
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    addFunctions(handle);
    sqlite3_create_collation_v2(handle, kTextOrder, SQLITE_UTF8, this, compareTexts, nullptr);
    sqlite3_create_function_v2(handle, kTextKey, 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, this,
                               giveTextKey, nullptr, nullptr, nullptr);
    for (const Limit& limit : kLimits)
        sqlite3_limit(handle, limit.id, limit.value);
    sqlite3_set_authorizer(handle, authorize, this);
    runs_.watch(handle);
}

Engine::~Engine() = default;

std::uint64_t Engine::mostSorted() const noexcept { return sortFiles_->largest(); }

PreparedStatement Engine::prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(handle_.get(), sql.c_str(),
                                          static_cast<int>(sql.size() + 1), &statement, nullptr);
    PreparedStatement prepared(statement, runs_);
    trap_.rethrow();
    if (result != SQLITE_OK)
        throwSqlError(handle_.get(), result);
    return prepared;
}

Spelling Engine::spelling() {
    return {[this](std::string_view name) { return knownTable(name); },
            [this](std::string_view name, std::span<const std::string> tables) {
                return columnOf(name, tables);
            },
            [](std::string_view name) { return std::string(name); }};
}

std::string Engine::knownTable(std::string_view name) {
    const std::string wanted = jet::foldedName(name);
    if (!database_.hasTable(wanted))
        return std::string(name);
    jet::Table& table = database_.table(wanted);
    const auto known = tables_.find(table.name());
    if (known == tables_.end() || &known->second->table != &table)
        addTable(table);
    return table.name();
}

std::string Engine::columnOf(std::string_view name, std::span<const std::string> tables) const {
    for (const std::string& table : tables) {
        const auto known = tables_.find(table);
        const auto column =
            known != tables_.end() ? known->second->table.findColumn(name) : std::nullopt;
        if (column)
            return known->second->table.columns()[*column].name;
    }
    return std::string(name);
}

void Engine::addTable(jet::Table& table) {
    // SQLite would show its own tables under such a name.
    if (jet::lowerAscii(table.name()).starts_with("sqlite_"))
        throw Error(Errc::unsupported, "A tabela \"" + table.name() +
                                           "\" tem um nome que não pode ser usado num comando.");
    auto source = std::make_unique<TableSource>(TableSource{table, trap_});
    auto& known = tables_[table.name()];
    if (known)
        former_.push_back(std::move(known));
    known = std::move(source);
    const int made = sqlite3_create_module_v2(handle_.get(), table.name().c_str(),
                                              virtualTableModule(), known.get(), nullptr);
    if (made != SQLITE_OK) { // unreached: SQLite has some bytes in reserve
        tables_.erase(table.name());
        throw Error(Errc::full,
                    "Não há memória bastante para abrir a tabela " + table.name() + ".");
    }
    // SQLite declares the columns of a table to itself when a statement first names it, with
    // actions that no statement may have: let that be now.
    declaring_ = true;
    try {
        static_cast<void>(prepare("select 1 from " + quotedName(table.name())));
    } catch (...) {
        declaring_ = false;
        throw;
    }
    declaring_ = false;
}

int Engine::compareTexts(void* self, int sizeA, const void* a, int sizeB, const void* b) {
    auto& engine = *static_cast<Engine*>(self);
    int order = 0;
    engine.trap_.run([&] {
        order = engine.database_.compareText(
            {static_cast<const char*>(a), static_cast<std::size_t>(sizeA)},
            {static_cast<const char*>(b), static_cast<std::size_t>(sizeB)});
    });
    return order;
}

void Engine::giveTextKey(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
    auto& engine = *static_cast<Engine*>(sqlite3_user_data(context));
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(arguments[0]));
    if (text == nullptr)
        return;
    const auto size = static_cast<std::size_t>(sqlite3_value_bytes(arguments[0]));
    const bool done = engine.trap_.run([&] {
        jet::Bytes& key = engine.textKey_;
        key.clear();
        engine.database_.appendTextKey(key, {text, size});
        // A text, not a blob: those SQLite sorts the fastest.
        sqlite3_result_text64(context, reinterpret_cast<const char*>(key.data()), key.size(),
                              SQLITE_TRANSIENT, SQLITE_UTF8);
    });
    if (!done) // unreached: memory for a key is there
        sqlite3_result_error_nomem(context);
}

int Engine::authorize(void* self, int action, const char* first, const char* second,
                      const char* /*database*/, const char* /*trigger*/) {
    const auto& engine = *static_cast<Engine*>(self);
    if (engine.declaring_)
        return SQLITE_OK;
    switch (action) {
    case SQLITE_SELECT:
        return SQLITE_OK;
    case SQLITE_READ:
        // SQLite asks with an empty column for a table of which no column is read.
        return engine.tables_.contains(first) ? SQLITE_OK : SQLITE_DENY;
    case SQLITE_FUNCTION:
        return isAllowedFunction(second) || std::string_view(second) == kTextKey ? SQLITE_OK
                                                                                 : SQLITE_DENY;
    default:
        return SQLITE_DENY;
    }
}

} // namespace ado
