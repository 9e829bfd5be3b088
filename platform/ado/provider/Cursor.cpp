#include "ado/provider/Cursor.h"

#include "jet/Error.h"

namespace ado {

using jet::Errc;
using jet::Error;

void goneOrChanged() {
    throw Error(
        Errc::conflict,
        "O registro foi alterado ou excluído por outro usuário ou por outra janela depois de "
        "lido. Nada foi gravado; localize o registro outra vez e repita a alteração.");
}

void Cursor::requireRow() const {
    if (at_ == At::row)
        return;
    if (at_ == At::gone && byOthers_)
        goneOrChanged();
    const char* reason = at_ == At::gone          ? "ele foi excluído"
                         : at_ == At::beforeFirst ? "a lista está antes do primeiro"
                                                  : "a lista já passou do último";
    throw Error(Errc::noCurrentRow, std::string("Não há registro atual: ") + reason + ".");
}

void Cursor::arrive(bool found, At otherwise) {
    at_ = found ? At::row : otherwise;
    byOthers_ = false;
    arrived();
}

void Cursor::lose(bool byOthers) noexcept {
    at_ = At::gone;
    byOthers_ = byOthers;
}

void Cursor::moveFirst() { arrive(first(), At::afterLast); }

void Cursor::moveLast() { arrive(last(), At::afterLast); }

void Cursor::findFirst(const std::string& criterion) {
    catchUp();
    moveFirst();
    if (at_ == At::row)
        find(criterion);
}

void Cursor::moveNext() { arrive(at_ == At::beforeFirst ? first() : next(), At::afterLast); }

void Cursor::movePrevious() { arrive(at_ == At::afterLast ? last() : previous(), At::beforeFirst); }

} // namespace ado
