#include "ado/recordset/RecordsetParts.h"
#include "jet/Error.h"

namespace ado {

using jet::Errc;
using jet::Error;

namespace {

/// " por CAIXA2", " por CAIXA2 ou CAIXA3"; not who, if that can't be told.
std::string by(const std::vector<std::string>& writers) {
    std::string names;
    for (std::size_t i = 0; i < writers.size(); ++i)
        names += (i == 0 ? " por " : i + 1 < writers.size() ? ", " : " ou ") + writers[i];
    return names.empty() ? " por outra janela ou por outro programa" : names;
}

} // namespace

// ---- as it was shown --------------------------------------------------------------------------

Shown Recordset::Parts::shown(std::size_t table) {
    const Cursor::State state = cursor->state(table);
    return {state.version, state.moment};
}

void Recordset::Parts::requireAs(const Shown& asShown) {
    requireChangeable();
    const auto current = cursor->versionToChange();
    if (current && asShown.changes_ != 0 && *current == asShown.version_)
        return;
    const std::string who = by(cursor->writersSince(asShown.changes_));
    throw Error(current ? Errc::conflict : Errc::gone,
                "Este registro foi " + std::string(current ? "alterado" : "excluído") + who +
                    " depois de mostrado nesta tela. Nada foi gravado.");
}

// ---- editing ----------------------------------------------------------------------------------

void Recordset::Parts::requireChangeable() const {
    if (lock == LockType::ReadOnly)
        throw Error(Errc::readOnly, "Este conjunto de registros foi aberto somente para leitura.");
    if (!cursor->updatable())
        throw Error(Errc::readOnly, "Um conjunto de mais de uma tabela, ou calculado, não pode ser "
                                    "alterado.");
}

void Recordset::Parts::assign(std::size_t field, const Value& value) {
    requireChangeable();
    const QueryField& place = this->field(field);
    Value stored = storable(place, value);
    if (edit == ado::EditMode::None)
        beginEdit(cursor->versionToEdit());
    assigned[place.column] = std::move(stored);
}

void Recordset::Parts::beginEdit(std::optional<std::uint64_t> as) {
    version = as;
    assigned.assign(cursor->columns(0).size(), std::nullopt);
    edit = ado::EditMode::InProgress;
}

void Recordset::Parts::forgetEdit() {
    edit = ado::EditMode::None;
    assigned.clear();
    version.reset();
    cursor->forgetSeen();
}

void Recordset::Parts::update() {
    const auto stored = [this] { forgetEdit(); };
    if (edit == ado::EditMode::Add)
        cursor->insert(assignments(), stored);
    else if (edit == ado::EditMode::InProgress)
        cursor->update(assignments(), version, stored);
}

std::vector<jet::Assignment> Recordset::Parts::assignments() const {
    std::vector<jet::Assignment> given;
    for (std::size_t i = 0; i < assigned.size(); ++i) {
        if (assigned[i])
            given.push_back({i, *assigned[i]});
    }
    return given;
}

void Recordset::Parts::erase(const Shown* asShown) {
    requireChangeable();
    if (edit == ado::EditMode::Add)
        throw Error(Errc::misuse, "O registro novo ainda não foi gravado: não há o que excluir.");
    if (asShown != nullptr)
        requireAs(*asShown);
    const auto expected = cursor->versionToErase(
        asShown != nullptr ? std::optional(asShown->version_) : std::nullopt);
    forgetEdit();
    cursor->erase(expected);
}

// ---- the public side --------------------------------------------------------------------------

void Recordset::AddNew() {
    Update();
    Parts& parts = open();
    parts.requireChangeable();
    parts.assigned.assign(parts.cursor->columns(0).size(), std::nullopt);
    parts.edit = ado::EditMode::Add;
}

void Recordset::Update() { open().update(); }

void Recordset::CancelUpdate() { open().forgetEdit(); }

void Recordset::Delete() { open().erase(nullptr); }

void Recordset::Delete(const Shown& shown) { open().erase(&shown); }

Shown Recordset::shown() const { return open().shown(0); }

Shown Recordset::shown(std::string_view table) const {
    return open().shown(open().cursor->fields().tableNamed(table));
}

std::string Recordset::byWhom(const Shown& shown) const {
    return by(open().cursor->writersSince(shown.changes_));
}

bool Recordset::isOther(const Shown& shown) const {
    Cursor& cursor = *open().cursor;
    cursor.catchUp();
    const auto version = cursor.version();
    return version && (shown.changes_ == 0 || *version != shown.version_);
}

void Recordset::Edit(const Shown& shown) {
    Update();
    Parts& parts = open();
    parts.requireAs(shown);
    parts.beginEdit(shown.version_);
}

EditMode Recordset::EditMode() const { return open().edit; }

} // namespace ado
