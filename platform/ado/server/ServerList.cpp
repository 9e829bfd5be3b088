#include "ado/server/ServerCursor.h"
#include "ado/server/ServerTongue.h"
#include "ado/server/ServerValue.h"
#include "jet/Error.h"

#include <algorithm>
#include <iterator>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

/// Rows read ahead: few at first, so that a window shows at once, many times more when somebody
/// walks on, who may be a long way from the server.
constexpr std::size_t kFirstBatch = 32;
constexpr std::size_t kGrowth = 32;
/// Also the first where all rows are likely to be wanted: of fewer the server might look for the
/// first ones in the order of the key, among all that there are.
constexpr std::size_t kLargestBatch = 32'768;
/// Rows kept around the one stood on, at most.
constexpr std::size_t kMostKept = 32'768;

std::uint64_t versionOf(std::int64_t fingerprint) {
    return static_cast<std::uint64_t>(fingerprint);
}

} // namespace

ServerList::ServerList(ServerSession& session, ServerQuery query, CursorType type)
    : ServerCursor(session, std::move(query)),
      firstBatch_(type == CursorType::ForwardOnly ? kLargestBatch : kFirstBatch) {}

ServerSession::Moment ServerList::now() {
    return query_.dependsOnOthers() ? session_.now() : session_.now(*query_.keyed());
}

std::deque<ServerRow> ServerList::fetch(From from, bool forwards, const std::string& more,
                                        std::size_t most) {
    const ServerStatement statement =
        query_.range(from, forwards, from == From::end ? nullptr : &here(), most, more, spelling());
    const ServerRows found = session_.wire().run(statement);
    std::deque<ServerRow> rows;
    for (int i = 0; i < found.rows(); ++i) {
        if (forwards)
            rows.push_back(query_.rowOf(found, i));
        else
            rows.push_front(query_.rowOf(found, i));
    }
    return rows;
}

// ---- walking ----------------------------------------------------------------------------------

void ServerList::fetchFirst() { fetchFirst(firstBatch_); }

void ServerList::fetchFirst(std::size_t most) {
    const ServerSession::Moment moment = now();
    auto rows = fetch(From::end, true, "", most);
    toLast_ = rows.size() < most;
    fromFirst_ = true;
    rows_ = std::move(rows);
    at_ = 0;
    anchorGone_ = added_ = updated_ = toBegin_ = false;
    batch_ = std::min(kGrowth * firstBatch_, kLargestBatch);
    neighbours_ = current_ = moment;
    count_.reset();
    arrive(!rows_.empty(), At::afterLast);
}

void ServerList::refresh() {
    toBegin_ = true;
    toWalk_ = false;
    count_.reset();
}

/// Who has walked over all rows is about to again.
void ServerList::restart() {
    if (isWhole() || takeBack())
        return moveFirst();
    refresh();
    toWalk_ = true;
}

void ServerList::settle() {
    if (!toBegin_)
        return;
    if (toWalk_ && walked_ > 0) // over a few more, perhaps
        fetchFirst(std::min(walked_ + kFirstBatch, kMostKept));
    else
        fetchFirst();
}

/// Whether rows are good for as long as nobody tells of a change.
bool ServerList::mayKeep() {
    const ServerWire& wire = session_.wire();
    return wire.isTold() && !wire.isReading() && !wire.inTransaction();
}

/// Whether the rows here are all that there are, as far as is known.
bool ServerList::isWhole() {
    return fromFirst_ && toLast_ && !anchorGone_ && !updated_ && !toBegin_ &&
           current_ == neighbours_ && now() == neighbours_ && mayKeep();
}

/// They stay for who walks over them again, while somebody looks for one.
void ServerList::setAside() {
    if (isWhole())
        whole_ = Whole{filter(), sort(), neighbours_, std::move(rows_)};
}

bool ServerList::takeBack() {
    if (!whole_ || whole_->filter != filter() || whole_->sort != sort() ||
        whole_->moment != now() || !mayKeep())
        return false;
    rows_ = std::move(whole_->rows);
    neighbours_ = current_ = whole_->moment;
    whole_.reset();
    fromFirst_ = toLast_ = true;
    at_ = 0;
    anchorGone_ = added_ = updated_ = toBegin_ = false;
    count_.reset();
    return true;
}

Cursor::At ServerList::place() {
    settle();
    return at();
}

bool ServerList::first() {
    if (!fromFirst_ || now() != neighbours_ || anchorGone_)
        fetchFirst();
    at_ = 0;
    current_ = neighbours_;
    return !rows_.empty();
}

bool ServerList::last() {
    const ServerSession::Moment moment = now();
    if (!toLast_ || moment != neighbours_ || anchorGone_) {
        auto rows = fetch(From::end, false, "", kFirstBatch);
        fromFirst_ = rows.size() < kFirstBatch;
        toLast_ = true;
        rows_ = std::move(rows);
        anchorGone_ = added_ = false;
        neighbours_ = moment;
    }
    at_ = rows_.empty() ? 0 : rows_.size() - 1;
    current_ = neighbours_;
    return !rows_.empty();
}

void ServerList::forgetNeighbours() {
    if (rows_.size() > 1) {
        ServerRow anchor = std::move(here());
        rows_.clear();
        rows_.push_back(std::move(anchor));
    }
    at_ = 0;
    fromFirst_ = toLast_ = false;
}

void ServerList::catchUp() {
    settle();
    const ServerSession::Moment moment = now();
    if (moment == neighbours_ || rows_.empty())
        return;
    forgetNeighbours(); // who walks on doesn't ask for the one stood on by itself
    neighbours_ = moment;
}

/// The same, and whether the row stood on is still there.
void ServerList::catchUpRow() {
    catchUp();
    if (at() == At::row)
        requireCurrent();
}

/// The rows beyond the one stood on; which is asked for with them, where it may have changed.
std::deque<ServerRow> ServerList::fetchBeyond(bool forwards) {
    if (at() != At::row || current_ == neighbours_)
        return fetch(From::after, forwards, "", batch_);
    auto rows = fetch(From::at, forwards, "", batch_ + 1);
    if (!rows.empty() && query_.areSame(forwards ? rows.front() : rows.back(), here())) {
        here() = std::move(forwards ? rows.front() : rows.back());
        forwards ? rows.pop_front() : rows.pop_back();
        current_ = neighbours_;
        return rows;
    }
    if (!query_.isWholeTable() && readAgain()) // it has another place now
        return fetch(From::after, forwards, "", batch_);
    anchorGone_ = true;
    if (rows.size() > batch_)
        forwards ? rows.pop_back() : rows.pop_front();
    return rows;
}

/// One row on; false if there is none.
bool ServerList::step(bool forwards) {
    if (added_) { // it stands behind all others
        added_ = false;
        if (forwards)
            return false;
        const ServerRow added = here();
        return last() && (!query_.areSame(here(), added) || step(false));
    }
    const bool inside = forwards ? at_ + 1 < rows_.size() : at_ > 0;
    if (!inside) {
        bool& ended = forwards ? toLast_ : fromFirst_;
        if (!ended) {
            const ServerSession::Moment moment = now();
            auto more = fetchBeyond(forwards);
            ended = more.size() < batch_;
            batch_ = std::min(kGrowth * batch_, kLargestBatch);
            if (ended && forwards && fromFirst_)
                walked_ = rows_.size() + more.size();
            if (rows_.size() == 1)
                neighbours_ = moment;
            if (forwards) {
                std::ranges::move(more, std::back_inserter(rows_));
            } else {
                at_ += more.size();
                rows_.insert(rows_.begin(), std::make_move_iterator(more.begin()),
                             std::make_move_iterator(more.end()));
            }
        }
        if (forwards ? at_ + 1 >= rows_.size() : at_ == 0)
            return false;
    }
    if (anchorGone_) { // nobody stands on it any more
        rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(at_));
        anchorGone_ = false;
        at_ = forwards ? at_ : at_ - 1;
    } else {
        at_ = forwards ? at_ + 1 : at_ - 1;
    }
    current_ = neighbours_;
    while (rows_.size() > kMostKept) {
        if (forwards) {
            rows_.pop_front();
            --at_;
            fromFirst_ = false;
        } else {
            rows_.pop_back();
            toLast_ = false;
        }
    }
    return true;
}

bool ServerList::next() { return step(true); }
bool ServerList::previous() { return step(false); }

bool ServerList::empty() {
    settle();
    const bool current = now() == neighbours_ && current_ == neighbours_;
    if (current && rows_.size() > (anchorGone_ ? 1U : 0U))
        return false;
    if (current && fromFirst_ && toLast_)
        return true;
    return fetch(From::end, true, "", 1).empty();
}

std::int64_t ServerList::count() {
    const ServerSession::Moment moment = now();
    if (fromFirst_ && toLast_ && !anchorGone_ && moment == neighbours_)
        return static_cast<std::int64_t>(rows_.size());
    if (!count_ || counted_ != moment) {
        const ServerStatement statement = query_.count();
        const ServerRows rows = session_.wire().run(statement);
        count_ = std::get<std::int64_t>(valueOf(rows.field(0, 0), server_type::kBigint, -1));
        counted_ = moment;
    }
    return *count_;
}

void ServerList::find(const std::string& criterion) {
    if (at() == At::beforeFirst)
        moveFirst();
    else if (at() == At::gone)
        moveNext();
    find(at() == At::afterLast ? From::end : From::at, criterion);
}

/// Whether that is known without asking, as it is for a key that stands among the rows. Who is
/// about to save wants it as it is at that moment.
bool ServerList::findHere(const std::string& criterion) {
    const auto key = query_.keyIn(criterion);
    if (!key || session_.wire().inTransaction() || now() != neighbours_ ||
        current_ != neighbours_ || anchorGone_ || added_ || updated_ || toBegin_)
        return false;
    const auto row =
        std::ranges::find_if(rows_, [&](const ServerRow& one) { return query_.hasKey(one, *key); });
    if (row == rows_.end() && !(fromFirst_ && toLast_))
        return false;
    if (row != rows_.end())
        at_ = static_cast<std::size_t>(row - rows_.begin());
    arrive(row != rows_.end(), At::afterLast);
    return true;
}

void ServerList::findFirst(const std::string& criterion) {
    if (findHere(criterion))
        return;
    arrive(false, At::beforeFirst);
    find(From::end, criterion);
}

void ServerList::find(From from, const std::string& criterion) {
    std::vector<Parameter> unused;
    ServerTongue tongue(unused);
    static_cast<void>(parseCondition(criterion, spelling(), tongue)); // an empty one is an error
    const bool nowhere = at() == At::afterLast;
    const ServerSession::Moment moment = now();
    // Even where nothing can be found a criterion that is wrong is told.
    auto found = fetch(from, true, criterion, 1);
    if (std::exchange(toBegin_, false))
        neighbours_ = {0, 0}; // what there was is to be read again
    if (nowhere)
        return;
    if (found.empty())
        return arrive(false, At::afterLast);
    setAside();
    rows_ = std::move(found);
    at_ = 0;
    fromFirst_ = toLast_ = anchorGone_ = added_ = updated_ = false;
    batch_ = kFirstBatch;
    neighbours_ = current_ = moment;
    arrive(true, At::row);
}

// ---- the row stood on -------------------------------------------------------------------------

/// False if it isn't there any more.
bool ServerList::readAgain() {
    const ServerSession::Moment moment = now();
    const ServerStatement statement = query_.same(here());
    const ServerRows found = session_.wire().run(statement);
    if (found.rows() == 0)
        return false;
    const bool byOthers = moment.others != current_.others;
    ServerRow row = query_.rowOf(found, 0);
    if (!byOthers && !query_.isWholeTable())
        row.place = query_.placeOf(here()); // what is changed here stays in its place
    here() = std::move(row);
    current_ = moment;
    return true;
}

void ServerList::requireCurrent() {
    settle();
    const ServerSession::Moment moment = now();
    if (at() != At::row || moment == current_)
        return;
    if (readAgain())
        return;
    anchorGone_ = true;
    lose(moment.others != current_.others);
}

jet::Value ServerList::value(const QueryField& field) {
    requireCurrent();
    requireRow();
    if (!seen_)
        seen_ = here().fingerprint;
    const ServerTable::Type& type = query_.keyed()->types[field.column];
    return valueOf(query_.valueIn(here(), field.column), type.number, type.modifier);
}

/// Of rows that were asked for their fields only.
void ServerList::requireFingerprints() {
    if (query_.asksForAll())
        return;
    for (ServerRow& row : rows_)
        row = query_.spread(std::move(row));
    query_.askForAll();
    whole_.reset();
    settle();
    forgetNeighbours();
    current_ = {0, 0};
}

Cursor::State ServerList::state(std::size_t /*table*/) {
    requireFingerprints();
    requireCurrent();
    requireRow();
    return {versionOf(here().fingerprint), session_.now().others};
}

std::optional<std::uint64_t> ServerList::version() {
    requireFingerprints();
    requireCurrent();
    if (at() != At::row)
        return std::nullopt;
    return versionOf(here().fingerprint);
}

std::optional<std::uint64_t> ServerList::versionToEdit() {
    requireCurrent();
    requireRow();
    if (!seen_)
        seen_ = here().fingerprint;
    return *seen_ == here().fingerprint ? std::optional(versionOf(*seen_)) : std::nullopt;
}

/// As far as is known, without asking: the change says itself which row it expects.
std::optional<std::uint64_t> ServerList::versionToChange() {
    catchUpRow();
    return at() == At::row ? std::optional(versionOf(here().fingerprint)) : std::nullopt;
}

// ---- changes ----------------------------------------------------------------------------------

void ServerList::insert(Given given, const Stored& stored) {
    if (session_.isPutting()) { // and stands nowhere then
        session_.put(*query_.keyed(), query_.insert(given));
        stored();
        refresh();
        return arrive(false, At::afterLast);
    }
    std::optional<ServerRow> made;
    session_.change(*query_.keyed(), nullptr, [&] {
        const ServerStatement statement = query_.insert(given);
        made = query_.rowOf(session_.write(statement), 0);
        return made;
    });
    stored();
    rows_.clear();
    rows_.push_back(std::move(*made));
    at_ = 0;
    anchorGone_ = fromFirst_ = toLast_ = toBegin_ = false;
    added_ = !query_.isWholeTable();
    neighbours_ = current_ = now();
    arrive(true, At::row);
}

void ServerList::update(Given given, std::optional<std::uint64_t> expected, const Stored& stored) {
    catchUpRow();
    if (at() != At::row || !expected)
        goneOrChanged();
    const bool known = now() == neighbours_;
    const ServerRow before = here();
    std::optional<ServerRow> after;
    session_.change(*query_.keyed(), &before, [&] {
        const ServerStatement statement =
            query_.update(before, given, static_cast<std::int64_t>(*expected));
        const ServerRows rows = session_.write(statement);
        if (rows.rows() == 0)
            goneOrChanged();
        after = query_.rowOf(rows, 0);
        return after;
    });
    stored();
    updated_ = true;
    const bool stays = !query_.isWholeTable() || query_.placeOf(*after) == query_.placeOf(before);
    if (stays)
        after->place = query_.placeOf(before);
    here() = std::move(*after);
    if (!stays)
        forgetNeighbours();
    const ServerSession::Moment moment = now();
    if (known && stays)
        neighbours_ = moment; // the others are as they were
    current_ = moment;
}

std::optional<std::uint64_t> ServerList::versionToErase(std::optional<std::uint64_t> asShown) {
    catchUpRow();
    requireRow();
    if (asShown)
        return asShown;
    if (seen_ && *seen_ != here().fingerprint)
        goneOrChanged();
    return versionOf(here().fingerprint);
}

void ServerList::erase(std::optional<std::uint64_t> expected) {
    const bool known = now() == neighbours_;
    const ServerRow before = here();
    session_.erase(*query_.keyed(), before, [&]() -> std::optional<ServerRow> {
        const ServerStatement statement =
            query_.erase(before, static_cast<std::int64_t>(expected.value_or(0)));
        if (session_.write(statement).affected() == 0)
            goneOrChanged();
        return std::nullopt;
    });
    anchorGone_ = true;
    const ServerSession::Moment moment = now();
    if (known)
        neighbours_ = moment;
    current_ = moment;
    lose(false);
}

} // namespace ado
