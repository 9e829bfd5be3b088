#include "ado/Engine.h"

#include "ado/SqlFunctions.h"
#include "ado/VirtualTable.h"
#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/Tokens.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <optional>
#include <tuple>
#include <utility>

namespace ado {

namespace {

using jet::Errc;
using jet::Error;
using std::chrono::steady_clock;

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

/// So long may several steps keep other stations from writing.
constexpr std::chrono::milliseconds kLongestSteps{3};
/// A long step is looked at after so many of SQLite's own, some thousandths of a second.
constexpr int kStepsPerLook = 20'000;

/// How SQLite says that a name is unknown, and how the operator is told.
struct Message {
    std::string_view beginning;
    Errc code;
    const char* portuguese;
};
constexpr Message kMessages[] = {
    {"no such column: ",        Errc::notFound, "Não existe o campo "      },
    {"no such table: ",         Errc::notFound, "Não existe a tabela "     },
    {"no such function: ",      Errc::notFound, "Não existe a função "   },
    {"ambiguous column name: ", Errc::syntax,
     "Mais de uma tabela tem o campo; escreva a tabela e um ponto antes de "},
};

[[noreturn]] void fail(sqlite3* handle, int result) {
    const std::string_view message = sqlite3_errmsg(handle);
    if (result == SQLITE_NOMEM || result == SQLITE_TOOBIG || result == SQLITE_FULL ||
        result == SQLITE_INTERRUPT)
        tooMuch();
    // The second for tables that SQLite would make about itself.
    if (result == SQLITE_AUTH || message == "not authorized")
        throw Error(Errc::notFound,
                    "Foi pedida uma tabela ou função que não existe neste banco de dados.");
    for (const Message& known : kMessages) {
        if (message.starts_with(known.beginning))
            throw Error(known.code, known.portuguese + std::string("\"") +
                                        std::string(message.substr(known.beginning.size())) +
                                        "\".");
    }
    // What else SQLite says is in English and of no use at the counter, but for the place.
    constexpr std::string_view kNear = "near \"";
    std::string place;
    if (const auto end = message.rfind('"'); message.starts_with(kNear) && end >= kNear.size())
        place =
            ", perto de \"" + std::string(message.substr(kNear.size(), end - kNear.size())) + "\"";
    throw Error(Errc::syntax, "O pedido não foi entendido pelo banco de dados" + place +
                                  ". Um apóstrofo ou outro sinal no que foi digitado pode ser a "
                                  "causa.");
}

/// A value as SQL sees it; see VirtualTable.h.
struct Binder {
    sqlite3_stmt* statement;
    int number;

    int operator()(std::monostate) const { return sqlite3_bind_null(statement, number); }
    int operator()(bool yes) const { return sqlite3_bind_int(statement, number, yes ? -1 : 0); }
    int operator()(std::int64_t whole) const {
        return sqlite3_bind_int64(statement, number, whole);
    }
    int operator()(jet::Currency amount) const {
        return (*this)(static_cast<double>(amount.tenThousandths) / 10000.0);
    }
    int operator()(double real) const { return sqlite3_bind_double(statement, number, real); }
    int operator()(jet::Date date) const { return (*this)(date.days); }
    int operator()(const std::string& text) const {
        return sqlite3_bind_text64(statement, number, text.data(), text.size(), SQLITE_TRANSIENT,
                                   SQLITE_UTF8);
    }
    int operator()(const jet::Bytes& bytes) const {
        return sqlite3_bind_blob64(statement, number, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
    }
    int operator()(const jet::Guid& id) const { return (*this)(id.text()); }
    int operator()(const jet::Numeric& decimal) const { return (*this)(approximate(decimal)); }
};

} // namespace

void tooMuch() {
    throw Error(Errc::full, "A consulta pede mais do que o programa pode fazer de uma vez. Procure "
                            "por menos e tente de novo.");
}

// ---- Statement --------------------------------------------------------------------------------

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

void Statement::bind(int number, const jet::Value& value) {
    const int result = std::visit(Binder{statement_.get(), number}, value);
    if (result != SQLITE_OK)
        fail(sqlite3_db_handle(statement_.get()), result);
}

bool Statement::step() {
    jet::Database& database = engine_->database_;
    if (sqlite3_stmt_busy(statement_.get()) == 0)
        return database.look([this] {
            reset();
            return stepInside(nullptr);
        });
    // In its middle it can't be begun anew, should another station have written.
    std::optional<jet::Reading> reading(std::in_place, database);
    return stepInside(&reading);
}

bool Statement::steps(std::size_t most, const std::function<void()>& row) {
    std::optional<jet::Reading> reading;
    if (most > 1)
        reading.emplace(engine_->database_);
    const auto begun = steady_clock::now();
    do {
        const bool fresh = !reading || sqlite3_stmt_busy(statement_.get()) == 0;
        if (!(fresh ? step() : stepInside(&reading)))
            return false;
        row();
    } while (--most > 0 && steady_clock::now() - begun < kLongestSteps);
    return true;
}

bool Statement::stepInside(std::optional<jet::Reading>* reading) {
    Engine::Run run{steps_, reading};
    Engine::Run* const outer = std::exchange(engine_->run_, &run);
    const int result = sqlite3_step(statement_.get());
    engine_->run_ = outer;
    engine_->trap_.rethrow();
    if (result == SQLITE_ROW)
        return true;
    if (result != SQLITE_DONE)
        fail(sqlite3_db_handle(statement_.get()), result);
    return false;
}

void Statement::reset() {
    sqlite3_reset(statement_.get());
    steps_ = 0;
}

int Statement::columns() const { return sqlite3_column_count(statement_.get()); }

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(statement_.get(), column);
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

jet::Value Statement::value(int column) const {
    sqlite3_stmt* const statement = statement_.get();
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_INTEGER:
        return std::int64_t{sqlite3_column_int64(statement, column)};
    case SQLITE_FLOAT:
        return sqlite3_column_double(statement, column);
    case SQLITE_TEXT: {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
        return std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
    }
    case SQLITE_BLOB: {
        const auto* bytes = static_cast<const std::byte*>(sqlite3_column_blob(statement, column));
        return jet::Bytes(bytes, bytes + sqlite3_column_bytes(statement, column));
    }
    default:
        return {};
    }
}

namespace {

std::string orEmpty(const char* text) { return text != nullptr ? text : ""; }

} // namespace

std::string Statement::columnName(int column) const {
    return orEmpty(sqlite3_column_name(statement_.get(), column));
}

std::string Statement::columnTable(int column) const {
    return orEmpty(sqlite3_column_table_name(statement_.get(), column));
}

std::string Statement::columnOrigin(int column) const {
    return orEmpty(sqlite3_column_origin_name(statement_.get(), column));
}

// ---- Engine -----------------------------------------------------------------------------------

void Engine::Closer::operator()(sqlite3* handle) const { sqlite3_close(handle); }

Engine::Engine(jet::Database& database, const Bounds& bounds)
    : database_(database), bounds_(bounds) {
    // Of all that SQLite has in the program, which is little but the statements at work.
    sqlite3_hard_heap_limit64(static_cast<sqlite3_int64>(bounds.bytes));
    sqlite3* handle = nullptr;
    const int result =
        sqlite3_open_v2(":memory:", &handle,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX, nullptr);
    handle_.reset(handle);
    if (result != SQLITE_OK)
        throw Error(Errc::io, "Não há memória para abrir o banco de dados.");
    // Sorting stays in memory: the shop's temporary folder has no business with its data.
    sqlite3_exec(handle, "pragma temp_store=memory", nullptr, nullptr, nullptr);
    // A name between double quotes that no column has is an error, not a text.
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    addFunctions(handle);
    sqlite3_create_collation_v2(handle, kTextOrder, SQLITE_UTF8, this, compareTexts, nullptr);
    for (const Limit& limit : kLimits)
        sqlite3_limit(handle, limit.id, limit.value);
    sqlite3_set_authorizer(handle, authorize, this);
    sqlite3_progress_handler(handle, kStepsPerLook, lookAtRun, this);
}

Engine::~Engine() = default;

Statement Engine::prepare(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(handle_.get(), sql.c_str(),
                                          static_cast<int>(sql.size() + 1), &statement, nullptr);
    Statement prepared(statement, *this);
    trap_.rethrow();
    if (result != SQLITE_OK)
        fail(handle_.get(), result);
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
    if (sqlite3_create_module_v2(handle_.get(), table.name().c_str(), virtualTableModule(),
                                 known.get(), nullptr) != SQLITE_OK) {
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

/// In the middle of a step: whether it has to stop.
int Engine::lookAtRun(void* self) {
    auto& engine = *static_cast<Engine*>(self);
    if (engine.run_ == nullptr)
        return 0;
    const auto [steps, reading] = *engine.run_;
    steps += kStepsPerLook;
    engine.longestRun_ = std::max(engine.longestRun_, steps);
    if (steps > engine.bounds_.steps)
        return 1;
    const bool goesOn = engine.trap_.run([&, held = reading] {
        if (held == nullptr)
            return engine.database_.breathe();
        held->reset();
        held->emplace(engine.database_);
    });
    return goesOn ? 0 : 1;
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
        return isAllowedFunction(second) ? SQLITE_OK : SQLITE_DENY;
    default:
        return SQLITE_DENY;
    }
}

} // namespace ado
