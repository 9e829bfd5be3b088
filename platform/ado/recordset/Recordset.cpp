#include "ado/Recordset.h"

#include "ado/Connection.h"
#include "ado/recordset/RecordsetParts.h"
#include "jet/Error.h"

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

[[noreturn]] void noRow(const char* reason) {
    throw Error(Errc::noCurrentRow, std::string("Não há registro atual: ") + reason + ".");
}

} // namespace

Recordset::Recordset() = default;

Recordset::~Recordset() { Close(); }

void Recordset::Open(const Text& source, Connection& connection, CursorType cursor, LockType lock,
                     CommandType command) {
    if (parts_)
        throw Error(Errc::misuse, "O conjunto de registros já está aberto.");
    try {
        if (connection.State() == ado::State::Closed && !connection.ConnectionString().empty())
            connection.Open();
        parts_ = std::make_unique<Parts>(*this, connection.session(), source.utf8(), cursor, lock,
                                         command);
        failure_.reset();
    } catch (const Error& failure) {
        failure_ = failure; // who uses it nevertheless is told this, not that it is closed
        throw;
    }
}

void Recordset::Close() { parts_.reset(); }

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

// Who leaves a row stores what was assigned to it: so the record-set model has it.
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

// A new row stands nowhere among the others, so at neither end.
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
