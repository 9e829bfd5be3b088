#include "ado/Recordset.h"

#include "ado/RecordsetParts.h"
#include "jet/Error.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

/// Rows of a join that meet a criterion.
constexpr std::size_t kMostCandidates = 2'000'000;
/// Changed rows remembered for Requery(), at most.
constexpr std::size_t kMostChanged = 4096;

[[noreturn]] void noRow(const char* reason) {
    throw Error(Errc::noCurrentRow, std::string("Não há registro atual: ") + reason + ".");
}

} // namespace

Recordset::Parts::Parts(Session& owner, const std::string& source, CursorType type,
                        LockType locking, CommandType command)
    : session(owner), dynamic(type == CursorType::Dynamic), lock(locking),
      query(owner.database(), owner.engine(), source, command) {
    for (const jet::Table* table : query.tables())
        readers.push_back(table->reader());
    reload();
}

void Recordset::Parts::arrive(bool found, At otherwise) {
    at = found ? At::row : otherwise;
    seen.reset();
    unsure = false;
    goneByOthers = false;
}

void Recordset::Parts::reload() {
    known = session.now();
    knowsAll = true;
    outdated = false;
    changed.clear();
    rows = query.rows();
    arrive(rows->first(), At::afterLast);
}

void Recordset::Parts::refresh() {
    takeNews();
    auto* const list = dynamic_cast<RowList*>(rows.get());
    const bool walks = dynamic_cast<TableWalk*>(rows.get()) != nullptr;
    if (!walks && !(list != nullptr && knowsAll && query.replace(*list, changed)))
        return reload();
    knowsAll = true;
    outdated = false;
    changed.clear();
    arrive(rows->first(), At::afterLast);
}

void Recordset::Parts::catchUp() {
    takeNews();
    if (outdated && dynamic) {
        if (auto* const list = dynamic_cast<RowList*>(rows.get()))
            renew(*list);
    }
    checkPlace();
}

void Recordset::Parts::renew(RowList& list) {
    const bool same = at == At::row && isSameRow();
    known = session.now();
    const auto newer = query.rows();
    const bool stays = list.renew(std::move(static_cast<RowList&>(*newer)), same);
    if (at == At::row && !stays) {
        at = At::gone;
        goneByOthers = true;
    }
    knowsAll = true;
    outdated = false;
    unsure = false;
    changed.clear();
}

void Recordset::Parts::checkPlace() {
    if (!std::exchange(unsure, false) || at != At::row || !query.updatable() || isSameRow())
        return;
    at = At::gone;
    goneByOthers = true;
}

bool Recordset::Parts::isSameRow() {
    return session.database().look([&] {
        if (const auto* const walk = dynamic_cast<TableWalk*>(rows.get()))
            return walk->isSame();
        const jet::RowView* const row = readers[0].read(static_cast<LiveRows&>(*rows).row(0));
        if (row == nullptr || !seen)
            return row != nullptr;
        std::size_t place = 0;
        return std::ranges::all_of(query.walkKey(), [&](const jet::IndexColumn& key) {
            return row->value(key.column) == seenKey[place++];
        });
    });
}

void Recordset::Parts::takeNews() {
    const auto news = session.since(known);
    if (!news) {
        knowsAll = false;
        outdated = unsure = true;
        return;
    }
    if (news->empty())
        return;
    for (std::size_t i = 0; i < query.tables().size(); ++i) {
        std::unordered_set<std::int64_t> erased;
        for (const Change& change : *news) {
            if (query.tables()[i] != change.table)
                continue;
            if (change.kind == Change::Kind::erased)
                erased.insert(jet::packed(change.row));
            else
                changed.push_back(change.row);
        }
        if (!erased.empty() && rows->erased(i, erased) && at == At::row)
            at = At::gone;
    }
    if (changed.size() > kMostChanged) {
        changed.clear();
        knowsAll = false;
    }
}

// ---- find -------------------------------------------------------------------------------------

void Recordset::Parts::find(const std::string& criterion) {
    auto* const walk = dynamic_cast<TableWalk*>(rows.get());
    Statement statement =
        walk != nullptr ? query.firstFrom(criterion) : query.candidates(criterion);
    if (at == At::beforeFirst)
        arrive(rows->first(), At::afterLast);
    else if (at == At::gone)
        arrive(rows->next(), At::afterLast);
    if (at == At::afterLast)
        return;
    seen.reset();
    if (walk != nullptr)
        findInWalk(*walk, std::move(statement));
    else if (auto* const list = dynamic_cast<RowList*>(rows.get()))
        findInList(*list, std::move(statement));
    else if (auto* const joined = dynamic_cast<JoinRows*>(rows.get()))
        findInJoin(*joined, std::move(statement));
}

void Recordset::Parts::findInWalk(TableWalk& walk, Statement statement) {
    const jet::RowId from = walk.row(0);
    if (query.walkKey().empty()) {
        statement.bind(1, jet::packed(from));
    } else if (const jet::RowView* row = view(0)) {
        int number = 0;
        for (const jet::IndexColumn& key : query.walkKey())
            statement.bind(++number, row->value(key.column));
    }
    const bool found = statement.step();
    if (found)
        walk.goTo(jet::unpacked(statement.integer(0)));
    arrive(found, At::afterLast);
}

void Recordset::Parts::findInList(RowList& list, Statement statement) {
    std::unordered_set<std::int64_t> candidates;
    session.database().look([&] {
        candidates.clear();
        statement.reset();
        while (statement.step())
            candidates.insert(statement.integer(0));
    });
    const auto& ids = list.ids();
    const auto from = ids.begin() + static_cast<std::ptrdiff_t>(list.place());
    const auto found = candidates.size() == 1 ? std::find(from, ids.end(), *candidates.begin())
                                              : std::find_if(from, ids.end(), [&](std::int64_t id) {
                                                    return candidates.contains(id);
                                                });
    if (found != ids.end())
        list.goTo(static_cast<std::size_t>(found - ids.begin()));
    arrive(found != ids.end(), At::afterLast);
}

void Recordset::Parts::findInJoin(JoinRows& joined, Statement statement) {
    std::vector<std::vector<std::int64_t>> candidates;
    session.database().look([&] {
        candidates.clear();
        statement.reset();
        while (statement.step()) {
            if (candidates.size() == kMostCandidates)
                tooMuch();
            auto& ids = candidates.emplace_back();
            for (int i = 0; i < statement.columns(); ++i)
                ids.push_back(statement.integer(i));
        }
    });
    std::ranges::sort(candidates);
    bool there = true;
    while (there && !std::ranges::binary_search(candidates, joined.ids()))
        there = joined.next();
    arrive(there, At::afterLast);
}

// ---- the public side --------------------------------------------------------------------------

Recordset::Recordset() = default;

Recordset::~Recordset() { Close(); }

void Recordset::Open(const Text& source, Connection& connection, CursorType cursor, LockType lock,
                     CommandType command) {
    if (parts_)
        throw Error(Errc::misuse, "O conjunto de registros já está aberto.");
    try {
        if (connection.State() == ado::State::Closed && !connection.ConnectionString().empty())
            connection.Open();
        Session& session = connection.session();
        parts_ = std::make_unique<Parts>(session, source.utf8(), cursor, lock, command);
        session.enter(*this);
        failure_.reset();
    } catch (const Error& failure) {
        failure_ = failure;
        throw;
    }
}

void Recordset::Close() {
    if (!parts_)
        return;
    parts_->session.leave(*this);
    parts_.reset();
}

State Recordset::State() const noexcept { return parts_ ? ado::State::Open : ado::State::Closed; }

Recordset::Parts& Recordset::open() const {
    if (!parts_ && failure_)
        throw Error(*failure_);
    if (!parts_)
        throw Error(Errc::misuse, "O conjunto de registros está fechado.");
    return *parts_;
}

void Recordset::Requery() {
    Parts& parts = open();
    if (parts.edit != ado::EditMode::None)
        throw Error(
            Errc::misuse,
            "Há um registro em edição: grave ou cancele antes de ler o conjunto outra vez.");
    parts.refresh();
}

void Recordset::MoveFirst() {
    Update();
    Parts& parts = open();
    parts.catchUp();
    parts.arrive(parts.rows->first(), Parts::At::afterLast);
    if (parts.at != Parts::At::row)
        noRow("a lista está vazia");
}

void Recordset::MoveLast() {
    Update();
    Parts& parts = open();
    parts.catchUp();
    parts.arrive(parts.rows->last(), Parts::At::afterLast);
    if (parts.at != Parts::At::row)
        noRow("a lista está vazia");
}

void Recordset::MoveNext() {
    Update();
    Parts& parts = open();
    parts.catchUp();
    if (parts.at == Parts::At::afterLast)
        noRow("o fim da lista já foi alcançado");
    const bool found =
        parts.at == Parts::At::beforeFirst ? parts.rows->first() : parts.rows->next();
    parts.arrive(found, Parts::At::afterLast);
}

void Recordset::MovePrevious() {
    Update();
    Parts& parts = open();
    parts.catchUp();
    if (BOF())
        noRow("o início da lista já foi alcançado");
    const bool found =
        parts.at == Parts::At::afterLast ? parts.rows->last() : parts.rows->previous();
    parts.arrive(found, Parts::At::beforeFirst);
}

bool Recordset::BOF() const {
    Parts& parts = open();
    if (parts.edit == ado::EditMode::Add)
        return false;
    return parts.at == Parts::At::beforeFirst ||
           (parts.at == Parts::At::afterLast && parts.rows->empty());
}

bool Recordset::EOF() const {
    Parts& parts = open();
    if (parts.edit == ado::EditMode::Add)
        return false;
    return parts.at == Parts::At::afterLast ||
           (parts.at == Parts::At::beforeFirst && parts.rows->empty());
}

std::int64_t Recordset::RecordCount() const {
    Parts& parts = open();
    parts.catchUp();
    return parts.rows->count();
}

void Recordset::Find(const Text& criterion) {
    Update();
    Parts& parts = open();
    parts.catchUp();
    parts.find(criterion.utf8());
}

void Recordset::setFilter(const Text& condition) {
    Update();
    Parts& parts = open();
    if (condition.utf8() == parts.query.filter())
        return parts.refresh();
    parts.query.setFilter(condition.utf8());
    parts.reload();
}

const std::string& Recordset::Filter() const { return open().query.filter(); }

void Recordset::setSort(const Text& fields) {
    Update();
    Parts& parts = open();
    if (fields.utf8() == parts.query.sort())
        return parts.refresh();
    parts.query.setSort(fields.utf8());
    parts.reload();
}

const std::string& Recordset::Sort() const { return open().query.sort(); }

} // namespace ado
