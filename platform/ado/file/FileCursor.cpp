#include "ado/file/FileCursor.h"

#include "jet/Error.h"

#include <utility>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

/// Changed rows remembered for refresh(), at most.
constexpr std::size_t kMostChanged = 4096;

} // namespace

FileCursor::FileCursor(FileSession& session, const std::string& source, CursorType type,
                       CommandType command)
    : session_(session), dynamic_(type == CursorType::Dynamic),
      forwardOnly_(type == CursorType::ForwardOnly),
      query_(session.database(), session.engine(), source, command) {
    readers_.reserve(query_.tables().size());
    for (const jet::Table* table : query_.tables())
        readers_.push_back(table->reader());
    FileCursor::reload();
}

void FileCursor::arrived() noexcept {
    seen_.reset();
    unsure_ = false;
}

void FileCursor::reload() {
    applied_ = session_.logEnd();
    knowsAll_ = true;
    outdated_ = false;
    changed_.clear();
    rows_ = query_.rows(forwardOnly_);
    arrive(rows_->first(), At::afterLast);
}

void FileCursor::refresh() {
    applyChanges();
    if (!rows_->refresh(knowsAll_ ? &changed_ : nullptr))
        return reload();
    knowsAll_ = true;
    outdated_ = false;
    changed_.clear();
    arrive(rows_->first(), At::afterLast);
}

void FileCursor::catchUp() {
    applyChanges();
    if (outdated_ && dynamic_ && rows_->isRenewable())
        renew();
    checkPlace();
}

void FileCursor::renew() {
    const bool same = at() == At::row && isSameRow();
    applied_ = session_.logEnd();
    const bool stays = rows_->renew(same);
    if (at() == At::row && !stays)
        lose(true);
    knowsAll_ = true;
    outdated_ = false;
    unsure_ = false;
    changed_.clear();
}

void FileCursor::checkPlace() {
    if (std::exchange(unsure_, false) && at() == At::row && updatable() && !isSameRow())
        lose(true);
}

bool FileCursor::isSameRow() {
    try {
        return session_.database().onSnapshot([&] {
            return tableRows().isSame(readers_[0], seen_ ? std::span<const jet::Value>(seenKey_)
                                                         : std::span<const jet::Value>());
        });
    } catch (const Error& error) {
        if (!meansErased(error))
            throw;
        return false;
    }
}

bool FileCursor::meansErased(const Error& error) const {
    return error.code() == Errc::corrupt && !knowsAll_;
}

void FileCursor::applyChanges() {
    const auto changes = session_.changesSince(applied_);
    if (!changes) {
        knowsAll_ = false;
        outdated_ = unsure_ = true;
        return;
    }
    if (changes->empty())
        return;
    for (std::size_t i = 0; i < query_.tables().size(); ++i) {
        std::unordered_set<std::int64_t> erased;
        for (const RowChange& change : *changes) {
            if (query_.tables()[i] != change.table)
                continue;
            if (change.kind == RowChange::Kind::erased)
                erased.insert(jet::packed(change.row));
            else
                changed_.push_back(change.row);
        }
        if (!erased.empty() && rows_->erased(i, erased) && at() == At::row)
            lose(false);
    }
    if (changed_.size() > kMostChanged) {
        changed_.clear();
        knowsAll_ = false;
    }
}

void FileCursor::find(const std::string& criterion) {
    PreparedStatement statement = query_.finder(criterion);
    if (at() == At::beforeFirst)
        arrive(rows_->first(), At::afterLast);
    else if (at() == At::gone)
        arrive(rows_->next(), At::afterLast);
    if (at() == At::afterLast)
        return;
    seen_.reset();
    arrive(liveRows().find(std::move(statement), [this] { return view(0); }), At::afterLast);
}

} // namespace ado
