#include "ado/server/ServerSession.h"

#include "ado/server/ServerSchema.h"
#include "ado/server/ServerValue.h"
#include "ado/server/ServerWriting.h"
#include "jet/Error.h"

#include <algorithm>
#include <charconv>
#include <deque>

namespace ado {

namespace {

/// The payload that says that the tables themselves are others.
constexpr std::string_view kTablesChanged = "*";

/// What is remembered of who has changed anything.
constexpr std::size_t kMostWritings = 1000;

} // namespace

jet::Row rowOf(const ServerTable& table, const ServerRow& row) {
    jet::Row values;
    values.reserve(row.values.size());
    for (std::size_t i = 0; i < row.values.size(); ++i)
        values.push_back(valueOf(row.values[i], table.types[i].number, table.types[i].modifier));
    return values;
}

ServerSession::ServerSession(const std::string& address, Recorder* recorder)
    : wire_(address), recorder_(recorder) {
    wire_.leaveTraces();
    if (catalog().isEmpty())
        requireShop(wire_);
}

const ServerCatalog& ServerSession::catalog() {
    static_cast<void>(now());
    if (catalogIsOld_) {
        catalog_.load(wire_);
        catalogIsOld_ = false;
    }
    return catalog_;
}

void ServerSession::createTable(const jet::TableSpec& spec) {
    if (catalog().find(spec.name) != nullptr)
        throw jet::Error(jet::Errc::exists, "Já existe a tabela \"" + spec.name + "\".");
    createServerTable(wire_, spec);
    static_cast<void>(wire_.run("select pg_notify('valtrino', '*')"));
    catalogIsOld_ = true;
    changeAnywhere(&Moment::own);
}

void ServerSession::hear(std::string_view payload, int other) {
    const bool own = other == 0;
    if (payload == kTablesChanged) {
        catalogIsOld_ = true;
        return;
    }
    const std::size_t colon = payload.rfind(':');
    const std::string table(payload.substr(0, colon));
    if (!own) {
        writings_.push_back({++moment_.others, table, other});
        if (writings_.size() > kMostWritings) {
            writingsFrom_ = writings_.front().moment;
            writings_.pop_front();
        }
    }
    if (!own || !changed_.contains(table)) // what follows from a change here is told as well
        ++inTable_[table].others;
    std::uint32_t block = 0;
    if (colon != std::string_view::npos)
        std::from_chars(payload.data() + colon + 1, payload.data() + payload.size(), block);
    for (NewsListener* const listener : listeners_)
        listener->hear(table, block);
}

ServerSession::Moment ServerSession::now() {
    wire_.listen([this](std::string_view payload, int other) { hear(payload, other); });
    if (std::exchange(lines_, wire_.lines()) != lines_) {
        catalogIsOld_ = true;
        changeAnywhere(&Moment::others);
        writings_.clear(); // some haven't been told
        writingsFrom_ = moment_.others;
        for (NewsListener* const listener : listeners_)
            listener->miss();
    }
    return moment_;
}

ServerSession::Moment ServerSession::now(const ServerTable& table) {
    static_cast<void>(now());
    const auto inIt = inTable_.find(table.name);
    const Moment it = inIt != inTable_.end() ? inIt->second : Moment{0, 0};
    return {anywhere_.own + it.own, anywhere_.others + it.others};
}

std::vector<std::string> ServerSession::writersSince(const std::string& table,
                                                     std::uint64_t moment) {
    std::string lines;
    for (const Writing& writing : writings_)
        if (writing.moment > moment && writing.table == table)
            lines.append(lines.empty() ? "" : ",").append(std::to_string(writing.by));
    if (lines.empty() || moment < writingsFrom_)
        return {};
    const ServerRows found =
        wire_.run("select distinct a.usename, a.usename operator(pg_catalog.<>) session_user from "
                  "unnest('{" +
                  lines +
                  "}'::int[]) line left join pg_catalog.pg_stat_activity a on a.pid = line "
                  "order by 1");
    std::vector<std::string> names;
    for (int row = 0; row < found.rows(); ++row) {
        if (found.field(row, 1) != "t")
            return {};
        names.push_back(found.field(row, 0).value_or(""));
    }
    return names;
}

void ServerSession::changeAnywhere(std::uint64_t Moment::*whose) {
    ++(moment_.*whose);
    ++(anywhere_.*whose);
}

ServerRows ServerSession::write(const ServerStatement& statement) {
    return wire_.inTransaction() ? wire_.run(statement) : wire_.runAlone(statement);
}

void ServerSession::put(const ServerTable& table, ServerStatement statement) {
    wire_.put(std::move(statement));
    ++moment_.own;
    ++inTable_[table.name].own;
    changed_.insert(table.name);
}

bool ServerSession::write(std::span<const Store::RowWrite> rows) {
    const ServerCatalog& tables = catalog();
    for (const Store::RowWrite& row : rows) {
        const ServerTable* const table = tables.find(row.table);
        if (table == nullptr || table->key.empty() ||
            (recorder_ != nullptr && row.before != nullptr && !table->bonds.empty()))
            return false;
    }
    putting_ = true;
    try {
        for (const Store::RowWrite& row : rows) {
            const ServerTable& table = *tables.find(row.table);
            const bool kept =
                recorder_ != nullptr && recorder_->keeps(table.shape(), row.before == nullptr);
            if (row.before != nullptr)
                wire_.takeTurn();
            put(table, writing(table, row));
            ++unwritten_;
            const Recorder::Change change{table.shape(), row.before, row.after};
            if (kept)
                recorder_->changed({&change, 1});
        }
        wire_.sendPut();
        putting_ = false;
    } catch (...) {
        putting_ = false;
        throw;
    }
    return true;
}

/// The tables that a change here may reach and of which a record is kept.
std::set<const ServerTable*> ServerSession::keptAlong(const ServerTable& table) {
    std::set<const ServerTable*> kept;
    if (!table.bonds.empty())
        for (const ServerTable* const other : cascadeTargets(catalog_, table))
            if (recorder_->keeps(other->shape(), false))
                kept.insert(other);
    return kept;
}

void ServerSession::change(const ServerTable& table, const ServerRow* before, bool erases,
                           const Change& change) {
    const bool itself = recorder_ != nullptr && recorder_->keeps(table.shape(), before == nullptr);
    const auto along = recorder_ != nullptr && !itself && before != nullptr
                           ? keptAlong(table)
                           : std::set<const ServerTable*>();
    const bool kept = itself || !along.empty();
    const bool own = kept && !wire_.inTransaction();
    const bool within = kept && !own;
    if (own)
        begin();
    if (before != nullptr)
        wire_.takeTurn();
    if (within)
        wire_.mark();
    const std::uint64_t counted = unwritten_;
    try {
        FollowedRow row{&table, before != nullptr ? *before : ServerRow(), std::nullopt};
        std::vector<FollowedRow> followed;
        if (kept && erases)
            followed = followingRows(wire_, catalog_, row);
        row.after = change();
        ++moment_.own;
        ++inTable_[table.name].own;
        changed_.insert(table.name);
        ++(wire_.inTransaction() ? unwritten_ : written_);
        if (kept && before != nullptr && row.after)
            followed = followingRows(wire_, catalog_, row);
        if (itself || std::ranges::any_of(followed, [&](const FollowedRow& other) {
                return along.contains(other.table);
            })) {
            record(before != nullptr, row, followed);
            unwritten_ = counted + 1; // what is recorded counts with it
        }
        if (within)
            wire_.forgetMark();
        if (own)
            commit();
    } catch (...) {
        if (own && wire_.inTransaction())
            rollback();
        if (within) {
            wire_.backToMark();
            unwritten_ = counted;
            changeAnywhere(&Moment::own);
        }
        throw;
    }
}

void ServerSession::record(bool wasThere, const FollowedRow& row,
                           const std::vector<FollowedRow>& followed) {
    std::deque<jet::Row> values; // which the changes look at
    std::vector<Recorder::Change> changes;
    changes.reserve(followed.size() + 1);
    const auto tell = [&](const FollowedRow& one, bool was) {
        const auto of = [&](const ServerRow& stored) {
            return &values.emplace_back(rowOf(*one.table, stored));
        };
        changes.push_back({one.table->shape(), was ? of(one.before) : nullptr,
                           one.after ? of(*one.after) : nullptr});
    };
    for (auto one = followed.rbegin(); one != followed.rend(); ++one)
        tell(*one, true);
    tell(row, wasThere);
    recorder_->changed(changes);
}

void ServerSession::begin() {
    wire_.begin();
    static_cast<void>(now()); // what has been told of the one before
    changed_.clear();
    undone_ = false;
    unwritten_ = 0;
}

void ServerSession::commit() {
    try {
        wire_.commit();
    } catch (const jet::Error&) {
        forget();
        throw;
    }
    written_ += std::exchange(unwritten_, 0);
}

void ServerSession::rollback() {
    wire_.rollback();
    forget();
}

/// What the transaction has changed isn't any more.
void ServerSession::forget() {
    const bool changed = std::exchange(unwritten_, 0) > 0;
    undone_ = changed;
    if (changed)
        changeAnywhere(&Moment::own);
    catalogIsOld_ = catalogIsOld_ || changed;
}

/// What others have ended until then is told only when the transaction is over.
void ServerSession::claim(void (ServerWire::*how)()) {
    if (!wire_.inTransaction())
        throw jet::Error(jet::Errc::misuse, "Não há transação aberta.");
    (wire_.*how)();
    changeAnywhere(&Moment::others);
}

void ServerSession::claim() { claim(&ServerWire::claim); }

void ServerSession::claimRows() { claim(&ServerWire::takeTurn); }

} // namespace ado
