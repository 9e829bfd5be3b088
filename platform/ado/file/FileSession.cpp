#include "ado/file/FileSession.h"

#include "ado/file/Query.h"
#include "jet/Error.h"

#include <algorithm>
#include <iterator>

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

/// Makes one row's change, which says where the row is afterwards, and has it recorded.
template <class Change>
void FileSession::recorded(const jet::Table& table, std::optional<jet::RowId> before,
                           Change&& change) {
    if (!recorder_ || !recorder_->keeps(shapeOf(table), !before)) {
        change();
        return;
    }
    database_.asOne([&] {
        const auto was = before ? table.read(*before) : std::nullopt;
        const std::optional<jet::RowId> after = change();
        settle(); // so that the record isn't taken for a stranger's work
        const auto is = after ? table.read(*after) : std::nullopt;
        recorder_->changed(shapeOf(table), was ? &*was : nullptr, is ? &*is : nullptr);
    });
}

jet::RowId FileSession::insert(jet::Table& table, std::span<const jet::Assignment> given) {
    lookForStrangers();
    jet::RowId row;
    recorded(table, std::nullopt, [&] { return std::optional(row = table.insert(given)); });
    note({&table, row, RowChange::Kind::added});
    return row;
}

void FileSession::update(jet::Table& table, jet::RowId row,
                         std::span<const jet::Assignment> changes,
                         std::optional<std::uint64_t> expected) {
    lookForStrangers();
    std::vector<jet::Cascaded> others;
    recorded(table, row, [&] {
        others = table.update(row, changes, expected);
        return std::optional(row);
    });
    note({&table, row, RowChange::Kind::changed});
    note(others);
}

void FileSession::erase(jet::Table& table, jet::RowId row, std::optional<std::uint64_t> expected) {
    lookForStrangers();
    std::vector<jet::Cascaded> others;
    recorded(table, row, [&]() -> std::optional<jet::RowId> {
        others = table.erase(row, expected);
        return std::nullopt;
    });
    note({&table, row, RowChange::Kind::erased});
    note(others);
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
