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
    return session.database().onSnapshot([&]() -> Shown {
        applyChanges();
        checkPlace();
        requireRow();
        const jet::RowView* const row = view(table);
        if (row == nullptr)
            return {};
        return {query.tables()[table]->rowVersion(*row), session.database().changesByOthers()};
    });
}

/// Of the one table's current row, as it is stored; nothing if there is none.
std::optional<std::uint64_t> Recordset::Parts::currentVersion() {
    if (at != At::row)
        return std::nullopt;
    return table().rowVersion(liveRows().row(0));
}

void Recordset::Parts::requireAs(const Shown& asShown) {
    requireChangeable();
    // From here on nobody else changes the row.
    if (session.database().inTransaction())
        session.database().claim();
    catchUp();
    const auto current = currentVersion();
    if (current && asShown.changes_ != 0 && *current == asShown.version_)
        return;
    const std::string who = by(session.database().writersSince(asShown.changes_));
    throw Error(current ? Errc::conflict : Errc::gone,
                "Este registro foi " + std::string(current ? "alterado" : "excluído") + who +
                    " depois de mostrado nesta tela. Nada foi gravado.");
}

// ---- editing ----------------------------------------------------------------------------------

void Recordset::Parts::requireChangeable() const {
    if (lock == LockType::ReadOnly)
        throw Error(Errc::readOnly, "Este conjunto de registros foi aberto somente para leitura.");
    if (!query.updatable())
        throw Error(Errc::readOnly, "Um conjunto de mais de uma tabela, ou calculado, não pode ser "
                                    "alterado.");
}

void Recordset::Parts::assign(std::size_t field, const Value& value) {
    requireChangeable();
    const QueryField& place = this->field(field);
    Value stored = storable(place, value);
    if (edit == ado::EditMode::None) {
        const jet::Reading reading(session.database());
        applyChanges();
        checkPlace();
        requireRow();
        static_cast<void>(see());
        beginEdit(asSeen() ? currentVersion() : std::nullopt);
    }
    assigned[place.column] = std::move(stored);
}

void Recordset::Parts::beginEdit(std::optional<std::uint64_t> as) {
    version = as;
    assigned.assign(table().columns().size(), std::nullopt);
    edit = ado::EditMode::InProgress;
}

void Recordset::Parts::forgetEdit() {
    edit = ado::EditMode::None;
    assigned.clear();
    version.reset();
    seen.reset();
}

void Recordset::Parts::update() {
    if (edit == ado::EditMode::Add)
        storeNew();
    else if (edit == ado::EditMode::InProgress)
        storeChanges();
}

std::vector<jet::Assignment> Recordset::Parts::assignments() const {
    std::vector<jet::Assignment> given;
    for (std::size_t i = 0; i < assigned.size(); ++i) {
        if (assigned[i])
            given.push_back({i, *assigned[i]});
    }
    return given;
}

void Recordset::Parts::storeNew() {
    catchUp(); // the row may take the place of an erased one, which is to be gone from the list
    const jet::RowId row = session.insert(table(), assignments());
    forgetEdit();
    tableRows().add(row);
    arrive(true, At::row);
}

void Recordset::Parts::storeChanges() {
    catchUp();
    const jet::RowId row = liveRows().row(0);
    if (at != At::row || !version)
        goneOrChanged();
    session.update(table(), row, assignments(), version);
    forgetEdit();
    tableRows().changed(row);
}

void Recordset::Parts::erase(const Shown* asShown) {
    requireChangeable();
    if (edit == ado::EditMode::Add)
        throw Error(Errc::misuse, "O registro novo ainda não foi gravado: não há o que excluir.");
    // From here on nobody else changes the row, so that a purge needn't look at each one twice.
    if (session.database().inTransaction())
        session.database().claim();
    if (asShown != nullptr)
        requireAs(*asShown);
    catchUp();
    requireRow();
    if (asShown == nullptr && !asSeen())
        goneOrChanged();
    const jet::RowId row = liveRows().row(0);
    const auto expected = asShown != nullptr                   ? std::optional(asShown->version_)
                          : session.database().inTransaction() ? std::nullopt
                                                               : table().rowVersion(row);
    forgetEdit();
    session.erase(table(), row, expected);
    applyChanges();
    at = At::gone;
}

// ---- the public side --------------------------------------------------------------------------

void Recordset::AddNew() {
    Update();
    Parts& parts = open();
    parts.requireChangeable();
    parts.assigned.assign(parts.table().columns().size(), std::nullopt);
    parts.edit = ado::EditMode::Add;
}

void Recordset::Update() { open().update(); }

void Recordset::CancelUpdate() { open().forgetEdit(); }

void Recordset::Delete() { open().erase(nullptr); }

void Recordset::Delete(const Shown& shown) { open().erase(&shown); }

Shown Recordset::shown() const { return open().shown(0); }

Shown Recordset::shown(std::string_view table) const {
    return open().shown(open().query.fields().tableNamed(table));
}

std::string Recordset::byWhom(const Shown& shown) const {
    return by(open().session.database().writersSince(shown.changes_));
}

bool Recordset::isOther(const Shown& shown) const {
    Parts& parts = open();
    parts.catchUp();
    const auto version = parts.currentVersion();
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
