#include "ado/recordset/RecordsetParts.h"

#include <algorithm>
#include <utility>

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

/// Changed rows remembered for Requery(), at most.
constexpr std::size_t kMostChanged = 4096;

} // namespace

Recordset::Parts::Parts(Recordset& ofRecordset, Session& onSession, const std::string& source,
                        CursorType type, LockType locking, CommandType command)
    : recordset(ofRecordset), session(onSession), dynamic(type == CursorType::Dynamic),
      lock(locking), query(onSession.database(), onSession.engine(), source, command) {
    for (const jet::Table* table : query.tables())
        readers.push_back(table->reader());
    reload();
    session.enter(*this);
}

void Recordset::Parts::arrive(bool found, At otherwise) {
    at = found ? At::row : otherwise;
    seen.reset();
    unsure = false;
    goneByOthers = false;
}

void Recordset::Parts::requireRow() const {
    if (at == At::row)
        return;
    if (at == At::gone && goneByOthers)
        goneOrChanged();
    const char* reason = at == At::gone          ? "ele foi excluído"
                         : at == At::beforeFirst ? "a lista está antes do primeiro"
                                                 : "a lista já passou do último";
    throw Error(Errc::noCurrentRow, std::string("Não há registro atual: ") + reason + ".");
}

void goneOrChanged() {
    throw Error(
        Errc::conflict,
        "O registro foi alterado ou excluído por outro usuário ou por outra janela depois de "
        "lido. Nada foi gravado; localize o registro outra vez e repita a alteração.");
}

// ---- changes ----------------------------------------------------------------------------------

void Recordset::Parts::reload() {
    applied = session.logEnd();
    knowsAll = true;
    outdated = false;
    changed.clear();
    rows = query.rows();
    arrive(rows->first(), At::afterLast);
}

void Recordset::Parts::refresh() {
    applyChanges();
    if (!rows->refresh(knowsAll ? &changed : nullptr))
        return reload();
    knowsAll = true;
    outdated = false;
    changed.clear();
    arrive(rows->first(), At::afterLast);
}

void Recordset::Parts::catchUp() {
    applyChanges();
    if (outdated && dynamic && rows->isRenewable())
        renew();
    checkPlace();
}

void Recordset::Parts::renew() {
    const bool same = at == At::row && isSameRow();
    applied = session.logEnd();
    const bool stays = rows->renew(same);
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
    try {
        return session.database().onSnapshot([&] {
            return tableRows().isSame(readers[0], seen ? std::span<const Value>(seenKey)
                                                       : std::span<const Value>());
        });
    } catch (const Error& error) {
        if (!meansErased(error))
            throw;
        return false;
    }
}

bool Recordset::Parts::meansErased(const Error& error) const {
    return error.code() == Errc::corrupt && !knowsAll;
}

void Recordset::Parts::applyChanges() {
    const auto changes = session.changesSince(applied);
    if (!changes) {
        knowsAll = false;
        outdated = unsure = true;
        return;
    }
    if (changes->empty())
        return;
    for (std::size_t i = 0; i < query.tables().size(); ++i) {
        std::unordered_set<std::int64_t> erased;
        for (const RowChange& change : *changes) {
            if (query.tables()[i] != change.table)
                continue;
            if (change.kind == RowChange::Kind::erased)
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
    PreparedStatement statement = query.finder(criterion);
    if (at == At::beforeFirst)
        arrive(rows->first(), At::afterLast);
    else if (at == At::gone)
        arrive(rows->next(), At::afterLast);
    if (at == At::afterLast)
        return;
    seen.reset();
    arrive(liveRows().find(std::move(statement), [this] { return view(0); }), At::afterLast);
}

} // namespace ado
