#include "ado/recordset/RecordsetParts.h"
#include "ado/value/Convert.h"
#include "ado/value/WrittenForm.h"
#include "jet/Error.h"

namespace ado {

using jet::Errc;
using jet::Error;

// ---- the row ----------------------------------------------------------------------------------

Value Recordset::Parts::value(std::size_t field) {
    const QueryField& place = this->field(field);
    if (edit != ado::EditMode::None && assigned[place.column])
        return *assigned[place.column];
    if (edit == ado::EditMode::Add)
        return {};
    return cursor->value(place);
}

Value Recordset::Parts::storable(const QueryField& place, const Value& value) const {
    Value stored = converted(value, column(place));
    const auto* const text = std::get_if<std::string>(&stored);
    return text && text->empty() && !cursor->takesEmptyText(place) ? Value() : stored;
}

// ---- fields by name ---------------------------------------------------------------------------

Field Recordset::operator[](std::string_view name) {
    return {*this, open().cursor->fields().fieldNamed(name)};
}

FieldValue Recordset::operator[](std::string_view name) const {
    return {*this, open().cursor->fields().fieldNamed(name)};
}

std::size_t Recordset::FieldCount() const { return open().cursor->fields().all().size(); }

FieldValue Recordset::field(std::size_t place) const {
    if (place >= FieldCount())
        throw Error(Errc::notFound, "O conjunto não tem " + std::to_string(place + 1) + " campos.");
    return {*this, place};
}

void Recordset::addAlias(const Text& alias, const Text& field) {
    open().cursor->fields().addAlias(alias.utf8(), field.utf8());
}

void Recordset::addOptional(const Text& field) {
    open().cursor->fields().addOptional(field.utf8());
}

std::optional<std::string> Recordset::missing(std::string_view field) const {
    return open().cursor->fields().missing(field);
}

Value Recordset::valueOf(std::size_t column) const {
    return column == QueryFields::kNoField ? Value() : open().value(column);
}

void Recordset::assign(std::size_t column, const Value& value) {
    if (column != QueryFields::kNoField)
        open().assign(column, value);
}

const std::string& Recordset::nameOf(std::size_t column) const {
    static const std::string none;
    return column == QueryFields::kNoField ? none : open().field(column).name;
}

const jet::Column* Recordset::columnOf(std::size_t field) const {
    Parts& parts = open();
    if (!parts.cursor->live() || field == QueryFields::kNoField)
        return nullptr;
    return &parts.column(parts.field(field));
}

std::optional<std::string> Recordset::refusalOf(std::size_t field, const Value& value) const {
    Parts& parts = open();
    if (!parts.cursor->live() || field == QueryFields::kNoField)
        return std::nullopt;
    const QueryField& place = parts.field(field);
    try {
        return parts.cursor->refusal(place, parts.storable(place, value));
    } catch (const Error& reason) {
        return reason.what();
    }
}

// ---- one field --------------------------------------------------------------------------------

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
