#include "ado/file/FileSession.h"

#include "ado/file/Query.h"
#include "jet/Error.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace ado {

namespace {

/// Changes kept at most. A recordset that has missed more than half of them reads everything again,
/// which then costs about the same.
constexpr std::size_t kLongestLog = 8192;

jet::Database::Options on(jet::Disk* disk) {
    jet::Database::Options options;
    options.disk = disk;
    return options;
}

} // namespace

FileSession::FileSession(const std::filesystem::path& path, jet::Disk* disk, Recorder* recorder)
    : database_(path, on(disk)), engine_(database_), recorder_(recorder),
      generation_(database_.generation()), refreshes_(database_.refreshes()) {}

void FileSession::lookForStrangers() {
    database_.onSnapshot([] {}); // notices what other stations have written
    if (database_.generation() != generation_)
        beginEpoch();
}

/// After something of our own. Other stations' work may have been noticed on the way.
void FileSession::settle() {
    if (database_.refreshes() != refreshes_)
        beginEpoch();
    generation_ = database_.generation();
}

void FileSession::beginEpoch() {
    generation_ = database_.generation();
    refreshes_ = database_.refreshes();
    ++epoch_;
    dropped_ += log_.size();
    log_.clear();
}

void FileSession::note(const RowChange& change) {
    settle();
    if (log_.size() == kLongestLog) {
        dropped_ += kLongestLog / 2;
        log_.erase(log_.begin(), log_.begin() + kLongestLog / 2);
    }
    log_.push_back(change);
    if (database_.inTransaction())
        undo_.push_back(change);
}

void FileSession::note(const std::vector<jet::Cascaded>& others) {
    for (const jet::Cascaded& other : others)
        note({other.table, other.row,
              other.erased ? RowChange::Kind::erased : RowChange::Kind::changed});
}

/// Makes one row's change, an update if there are `changes`, and has it recorded. The change gives
/// where the row is afterwards, and adds what went along with it.
template <class Change>
void FileSession::recorded(jet::Table& table, std::optional<jet::RowId> before,
                           std::optional<std::span<const jet::Assignment>> changes,
                           Change&& change) {
    std::vector<jet::Cascaded> others;
    const bool own = recorder_ && recorder_->keeps(shapeOf(table), !before);
    std::vector<const jet::Table*> kept;
    if (recorder_ && !own && before)
        std::ranges::copy_if(
            table.cascadesTo(changes), std::back_inserter(kept),
            [&](const jet::Table* other) { return recorder_->keeps(shapeOf(*other), false); });
    if (!own && kept.empty()) {
        change(others);
    } else {
        database_.asOne([&] {
            const auto was = before ? table.read(*before) : std::nullopt;
            const std::optional<jet::RowId> after = change(others);
            settle(); // so that the record isn't taken for a stranger's work
            if (own || std::ranges::any_of(others, [&](const jet::Cascaded& other) {
                    return std::ranges::find(kept, other.table) != kept.end();
                }))
                record(table, after, was ? &*was : nullptr, others);
        });
    }
    note(others);
}

/// `row` is where the row is by now, `others` lose what they were.
void FileSession::record(const jet::Table& table, std::optional<jet::RowId> row,
                         const jet::Row* before, std::vector<jet::Cascaded>& others) {
    struct Followed {
        const jet::Table* table;
        jet::Row before;
        std::optional<jet::Row> after;
    };
    std::vector<Followed> followed; // its place is that of its last change, the others first
    std::map<std::pair<const jet::Table*, jet::RowId>, std::size_t> places;
    followed.reserve(others.size());
    for (auto other = others.rbegin(); other != others.rend(); ++other) {
        if (other->table == &table && other->row == row)
            continue; // the row itself, once more
        const auto [place, isNew] = places.try_emplace({other->table, other->row}, followed.size());
        if (isNew)
            followed.push_back(
                {other->table, {}, other->erased ? std::nullopt : other->table->read(other->row)});
        followed[place->second].before = std::move(other->before);
    }
    const auto after = row ? table.read(*row) : std::nullopt;
    std::vector<Recorder::Change> rows;
    rows.reserve(followed.size() + 1);
    for (const Followed& one : followed)
        rows.push_back({shapeOf(*one.table), &one.before, one.after ? &*one.after : nullptr});
    rows.push_back({shapeOf(table), before, after ? &*after : nullptr});
    recorder_->changed(rows);
}

jet::RowId FileSession::insert(jet::Table& table, std::span<const jet::Assignment> given) {
    lookForStrangers();
    jet::RowId row;
    recorded(table, std::nullopt, given, [&](std::vector<jet::Cascaded>& /*others*/) {
        return std::optional(row = table.insert(given));
    });
    note({&table, row, RowChange::Kind::added});
    return row;
}

void FileSession::update(jet::Table& table, jet::RowId row,
                         std::span<const jet::Assignment> changes,
                         std::optional<std::uint64_t> expected) {
    lookForStrangers();
    recorded(table, row, changes, [&](std::vector<jet::Cascaded>& others) {
        others = table.update(row, changes, expected);
        return std::optional(row);
    });
    note({&table, row, RowChange::Kind::changed});
}

void FileSession::erase(jet::Table& table, jet::RowId row, std::optional<std::uint64_t> expected) {
    lookForStrangers();
    recorded(table, row, std::nullopt,
             [&](std::vector<jet::Cascaded>& others) -> std::optional<jet::RowId> {
                 others = table.erase(row, expected);
                 return std::nullopt;
             });
    note({&table, row, RowChange::Kind::erased});
}

void FileSession::begin() {
    lookForStrangers();
    database_.begin();
    undone_ = false;
    undo_.clear();
    settle();
    begunIn_ = epoch_;
}

void FileSession::commitBy(void (jet::Database::*way)()) {
    lookForStrangers();
    (database_.*way)();
    settle();
}

void FileSession::rollback() {
    // Without asking what others have done: could that not be told, nothing would be undone.
    undone_ = undone_ || !undo_.empty();
    database_.rollback();
    if (epoch_ != begunIn_) // a list may have seen what is undone and nobody has told of
        beginEpoch();
    settle();
    for (auto change = undo_.rbegin(); change != undo_.rend(); ++change) {
        RowChange opposite = *change;
        if (change->kind == RowChange::Kind::added)
            opposite.kind = RowChange::Kind::erased;
        else if (change->kind == RowChange::Kind::erased)
            opposite.kind = RowChange::Kind::added;
        note(opposite);
    }
}

void FileSession::flushIfDue() {
    lookForStrangers();
    database_.flushIfDue();
    settle();
}

void FileSession::flush() {
    lookForStrangers();
    database_.flush();
    settle();
}

void FileSession::discard() {
    database_.discard();
    beginEpoch();
}

/// A long work that only reads keeps nobody from writing. That it can't be written now is no matter
/// of who reads: the program's clock tries again, and says so. What is dropped, since another
/// program has put its own in the place, is said at once.
void FileSession::flushWhileReading() {
    try {
        database_.flushIfDue();
        settle();
    } catch (const jet::Error& error) {
        if (error.code() == jet::Errc::conflict)
            throw;
    }
}

LogPosition FileSession::logEnd() {
    lookForStrangers();
    flushWhileReading();
    return {epoch_, dropped_ + log_.size()};
}

std::optional<std::vector<RowChange>> FileSession::changesSince(LogPosition& position) {
    const LogPosition from = std::exchange(position, logEnd());
    if (from.epoch != position.epoch || from.number < dropped_)
        return std::nullopt;
    return std::vector(log_.begin() + static_cast<std::ptrdiff_t>(from.number - dropped_),
                       log_.end());
}

} // namespace ado
