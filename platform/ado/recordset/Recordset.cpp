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
        parts_ = std::make_unique<Parts>(*this, connection.provider(), source.utf8(), cursor, lock,
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
    parts.cursor->refresh();
}

// Who leaves a row stores what was assigned to it: so the record-set model has it.
void Recordset::MoveFirst() {
    Update();
    Cursor& cursor = *open().cursor;
    cursor.catchUp();
    cursor.moveFirst();
    if (cursor.at() != Cursor::At::row)
        noRow("a lista está vazia");
}

void Recordset::MoveLast() {
    Update();
    Cursor& cursor = *open().cursor;
    cursor.catchUp();
    cursor.moveLast();
    if (cursor.at() != Cursor::At::row)
        noRow("a lista está vazia");
}

void Recordset::MoveNext() {
    Update();
    Cursor& cursor = *open().cursor;
    cursor.catchUp();
    if (cursor.at() == Cursor::At::afterLast)
        noRow("o fim da lista já foi alcançado");
    cursor.moveNext();
}

void Recordset::MovePrevious() {
    Update();
    Cursor& cursor = *open().cursor;
    cursor.catchUp();
    if (BOF())
        noRow("o início da lista já foi alcançado");
    cursor.movePrevious();
}

// A new row stands nowhere among the others, so at neither end.
bool Recordset::BOF() const {
    const Parts& parts = open();
    if (parts.edit == ado::EditMode::Add)
        return false;
    const Cursor::At at = parts.cursor->place();
    return at == Cursor::At::beforeFirst || (at == Cursor::At::afterLast && parts.cursor->empty());
}

bool Recordset::EOF() const {
    const Parts& parts = open();
    if (parts.edit == ado::EditMode::Add)
        return false;
    const Cursor::At at = parts.cursor->place();
    return at == Cursor::At::afterLast || (at == Cursor::At::beforeFirst && parts.cursor->empty());
}

std::int64_t Recordset::RecordCount() const {
    Cursor& cursor = *open().cursor;
    cursor.catchUp();
    return cursor.count();
}

bool Recordset::isEmpty() const {
    Cursor& cursor = *open().cursor;
    cursor.catchUp();
    return cursor.empty();
}

void Recordset::Find(const Text& criterion) {
    Update();
    Cursor& cursor = *open().cursor;
    cursor.catchUp();
    cursor.find(criterion.utf8());
}

void Recordset::FindFirst(const Text& criterion) {
    Update();
    open().cursor->findFirst(criterion.utf8());
}

void Recordset::setFilter(const Text& condition) {
    Update();
    Cursor& cursor = *open().cursor;
    if (condition.utf8() == cursor.filter())
        return cursor.refresh();
    cursor.setFilter(condition.utf8());
    cursor.reload();
}

const std::string& Recordset::Filter() const { return open().cursor->filter(); }

void Recordset::setSort(const Text& fields) {
    Update();
    Cursor& cursor = *open().cursor;
    if (fields.utf8() == cursor.sort())
        return cursor.restart();
    cursor.setSort(fields.utf8());
    cursor.reload();
}

const std::string& Recordset::Sort() const { return open().cursor->sort(); }

} // namespace ado
