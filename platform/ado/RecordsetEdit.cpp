#include "ado/Convert.h"
#include "ado/RecordsetParts.h"
#include "jet/Error.h"
#include "jet/Names.h"

#include <algorithm>

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

[[noreturn]] void goneOrChanged() {
    throw Error(
        Errc::conflict,
        "O registro foi alterado ou excluído por outro usuário ou por outra janela depois de "
        "lido. Nada foi gravado; localize o registro outra vez e repita a alteração.");
}

/// As the column is to hold it. An empty box stands for null where the file takes no empty text.
Value storable(const Value& value, jet::Table& table, std::size_t column) {
    Value stored = converted(value, table.columns()[column]);
    const auto* const text = std::get_if<std::string>(&stored);
    return text && text->empty() && !table.takesEmptyText(column) ? Value() : stored;
}

std::size_t hashOf(const jet::RowView& row) {
    const auto bytes = row.bytes();
    return std::hash<std::string_view>{}(
        {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

} // namespace

// ---- reading ----------------------------------------------------------------------------------

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

const jet::RowView* Recordset::Parts::view(std::size_t table) {
    const jet::RowId row = static_cast<const LiveRows&>(*rows).row(table);
    if (row == jet::RowId{})
        return nullptr;
    if (jet::packed(row) == JoinRows::kErased)
        goneOrChanged();
    const jet::RowView* found = nullptr;
    try {
        found = readers[table].read(row);
    } catch (const Error& error) {
        // Where a stranger changes the file, the page of an erased row may belong to another table.
        if (error.code() != Errc::corrupt || knowsAll)
            throw;
    }
    if (found == nullptr)
        goneOrChanged();
    return found;
}

const jet::RowView& Recordset::Parts::look() {
    const jet::RowView& row = *view(0);
    if (!seen) {
        seen = hashOf(row);
        seenKey.clear();
        for (const jet::IndexColumn& key : query.walkKey())
            seenKey.push_back(row.value(key.column));
    }
    return row;
}

bool Recordset::Parts::asSeen() { return !seen || *seen == hashOf(*view(0)); }

Shown Recordset::Parts::shown(std::size_t table) {
    return session.database().look([&]() -> Shown {
        takeNews();
        checkPlace();
        requireRow();
        const jet::RowView* const row = view(table);
        if (row == nullptr)
            return {};
        return {query.tables()[table]->stamp(*row), session.database().news()};
    });
}

/// Of the one table's current row, as it is stored; nothing if there is none.
std::optional<std::uint64_t> Recordset::Parts::currentStamp() {
    if (at != At::row)
        return std::nullopt;
    return table().stamp(static_cast<const LiveRows&>(*rows).row(0));
}

void Recordset::Parts::requireAs(const Shown& asShown) {
    requireChangeable();
    // From here on nobody else changes the row.
    if (session.database().inTransaction())
        session.database().claim();
    catchUp();
    const auto current = currentStamp();
    if (current && asShown.news_ != 0 && *current == asShown.stamp_)
        return;
    const std::string who = by(session.database().writersSince(asShown.news_));
    throw Error(current ? Errc::conflict : Errc::gone,
                "Este registro foi " + std::string(current ? "alterado" : "excluído") + who +
                    " depois de mostrado nesta tela. Nada foi gravado.");
}

Value Recordset::Parts::value(std::size_t field) {
    const Query::QueryField& place = query.fields()[field];
    if (edit != ado::EditMode::None && assigned[place.column])
        return *assigned[place.column];
    if (edit == ado::EditMode::Add)
        return {};
    return session.database().look([&]() -> Value {
        takeNews();
        checkPlace();
        requireRow();
        if (!query.live())
            return static_cast<const ComputedRows&>(*rows).cell(place.column);
        if (query.updatable())
            return look().value(place.column);
        const jet::RowView* row = view(place.table);
        return row != nullptr ? row->value(place.column) : Value{};
    });
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
    const Query::QueryField& place = query.fields()[field];
    Value stored = storable(value, table(), place.column);
    if (edit == ado::EditMode::None) {
        const jet::Reading reading(session.database());
        takeNews();
        checkPlace();
        requireRow();
        static_cast<void>(look());
        beginEdit(asSeen() ? currentStamp() : std::nullopt);
    }
    assigned[place.column] = std::move(stored);
}

void Recordset::Parts::beginEdit(std::optional<std::uint64_t> as) {
    stamp = as;
    assigned.assign(table().columns().size(), std::nullopt);
    edit = ado::EditMode::InProgress;
}

void Recordset::Parts::forgetEdit() {
    edit = ado::EditMode::None;
    assigned.clear();
    stamp.reset();
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
    if (auto* const list = dynamic_cast<RowList*>(rows.get())) {
        list->append(row);
        list->goTo(list->ids().size() - 1);
    } else {
        static_cast<TableWalk&>(*rows).goTo(row);
    }
    arrive(true, At::row);
}

void Recordset::Parts::storeChanges() {
    catchUp();
    const jet::RowId row = static_cast<const LiveRows&>(*rows).row(0);
    if (at != At::row || !stamp)
        goneOrChanged();
    session.update(table(), row, assignments(), stamp);
    forgetEdit();
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
    const jet::RowId row = static_cast<const LiveRows&>(*rows).row(0);
    const auto expected = asShown != nullptr                   ? std::optional(asShown->stamp_)
                          : session.database().inTransaction() ? std::nullopt
                                                               : table().stamp(row);
    forgetEdit();
    session.erase(table(), row, expected);
    takeNews();
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
    return open().shown(open().query.tableNamed(table));
}

std::string Recordset::byWhom(const Shown& shown) const {
    return by(open().session.database().writersSince(shown.news_));
}

bool Recordset::isOther(const Shown& shown) const {
    Parts& parts = open();
    parts.catchUp();
    const auto stamp = parts.currentStamp();
    return stamp && (shown.news_ == 0 || *stamp != shown.stamp_);
}

void Recordset::Edit(const Shown& shown) {
    Update();
    Parts& parts = open();
    parts.requireAs(shown);
    parts.beginEdit(shown.stamp_);
}

EditMode Recordset::EditMode() const { return open().edit; }

Field Recordset::operator[](std::string_view name) {
    return {*this, open().query.fieldNamed(name)};
}

FieldValue Recordset::operator[](std::string_view name) const {
    return {*this, open().query.fieldNamed(name)};
}

std::size_t Recordset::FieldCount() const { return open().query.fields().size(); }

FieldValue Recordset::field(std::size_t place) const {
    if (place >= FieldCount())
        throw Error(Errc::notFound, "O conjunto não tem " + std::to_string(place + 1) + " campos.");
    return {*this, place};
}

void Recordset::addAlias(const Text& alias, const Text& field) {
    open().query.addAlias(alias.utf8(), field.utf8());
}

void Recordset::addOptional(const Text& field) { open().query.addOptional(field.utf8()); }

std::optional<std::string> Recordset::missing(std::string_view field) const {
    const Query& query = open().query;
    const std::string wanted = jet::foldedName(field);
    const bool found = std::ranges::any_of(query.fields(), [&](const Query::QueryField& other) {
        return jet::foldedName(other.name) == wanted;
    });
    return found ? std::nullopt : std::optional(query.missing(field));
}

Value Recordset::valueOf(std::size_t column) const {
    return column == Query::kNoField ? Value() : open().value(column);
}

void Recordset::assign(std::size_t column, const Value& value) {
    if (column != Query::kNoField)
        open().assign(column, value);
}

const std::string& Recordset::nameOf(std::size_t column) const {
    static const std::string none;
    return column == Query::kNoField ? none : open().query.fields()[column].name;
}

const jet::Column* Recordset::columnOf(std::size_t field) const {
    const Query& query = open().query;
    if (!query.live() || field == Query::kNoField)
        return nullptr;
    const Query::QueryField& place = query.fields()[field];
    return &query.tables()[place.table]->columns()[place.column];
}

std::optional<std::string> Recordset::refusalOf(std::size_t field, const Value& value) const {
    const Query& query = open().query;
    if (!query.live() || field == Query::kNoField)
        return std::nullopt;
    const Query::QueryField& place = query.fields()[field];
    jet::Table& table = *query.tables()[place.table];
    try {
        return table.refusal(place.column, storable(value, table, place.column));
    } catch (const Error& reason) {
        return reason.what();
    }
}

// ---- fields -----------------------------------------------------------------------------------

Value FieldValue::value() const { return recordset_->valueOf(column_); }
bool FieldValue::isNull() const { return jet::isNull(value()); }
std::string FieldValue::text() const { return asText(value()); }
std::int64_t FieldValue::integer() const { return asInteger(value()); }
Currency FieldValue::currency() const { return asCurrency(value()); }
double FieldValue::number() const { return asNumber(value()); }
Date FieldValue::date() const { return asDate(value()); }
bool FieldValue::boolean() const { return asBoolean(value()); }
const std::string& FieldValue::name() const { return recordset_->nameOf(column_); }

std::optional<std::size_t> FieldValue::DefinedSize() const {
    const jet::Column* column = recordset_->columnOf(column_);
    if (column == nullptr || column->type != jet::ColumnType::text)
        return std::nullopt;
    return column->maxCharacters();
}

bool FieldValue::isNumbered() const {
    const jet::Column* column = recordset_->columnOf(column_);
    return column != nullptr && (column->autonumber || column->autoGuid);
}

std::optional<std::string> FieldValue::refusal(const Text& text) const {
    return recordset_->refusalOf(column_, text.utf8());
}

std::optional<Unstorable> FieldValue::unstorable(std::string_view utf8) const {
    const jet::Column* column = recordset_->columnOf(column_);
    if (column == nullptr ||
        (column->type != jet::ColumnType::text && column->type != jet::ColumnType::memo))
        return std::nullopt;
    constexpr auto kContinues = [](char c) { return (static_cast<unsigned>(c) & 0xC0U) == 0x80U; };
    for (std::size_t at = 0, end = 0; at < utf8.size(); at = end) {
        end = at + 1;
        while (end < utf8.size() && kContinues(utf8[end]))
            ++end;
        // Behind another, as it stands in the text: some can't be the first.
        const std::string behind = (at == 0 ? "" : "a") + std::string(utf8.substr(at, end - at));
        try {
            static_cast<void>(column->codec.encode(behind, false, false));
        } catch (const Error&) {
            return Unstorable{at, end - at};
        }
    }
    return std::nullopt;
}

std::optional<std::string> FieldValue::refusal(Currency amount) const {
    const jet::Column* column = recordset_->columnOf(column_);
    if (column == nullptr)
        return std::nullopt;
    try {
        static_cast<void>(converted(amount, *column));
        return std::nullopt;
    } catch (const Error& reason) {
        return reason.what();
    }
}

Field& Field::assign(const Value& value) {
    target_->assign(column_, value);
    return *this;
}

} // namespace ado
