#include "ado/server/ServerCursor.h"

#include "ado/provider/SourceSelect.h"
#include "jet/Error.h"
#include "jet/TextParts.h"

#include <cstdint>
#include <utility>

namespace ado {

using jet::Errc;
using jet::Error;

std::unique_ptr<Cursor> ServerCursor::open(ServerSession& session, const std::string& source,
                                           CursorType type, LockType lock, CommandType command) {
    ServerQuery query(session.catalog(), source, command);
    if (type == CursorType::ForwardOnly && lock == LockType::ReadOnly)
        query.askForFieldsOnly();
    std::unique_ptr<ServerCursor> made;
    if (query.keyed() != nullptr)
        made = std::make_unique<ServerList>(session, std::move(query), type);
    else
        made = std::make_unique<ServerAnswer>(session, std::move(query));
    // With a table nothing can be wrong; with a statement the server says what is.
    made->later_ = made->query_.isWholeTable() && session.catalog().find(source) != nullptr;
    made->reload();
    return made;
}

Spelling ServerCursor::spelling() { return fields().spelling(session_.catalog().spelling()); }

void ServerCursor::reload() {
    if (std::exchange(later_, false))
        return refresh();
    if (!std::exchange(fresh_, false))
        fetchFirst();
    moveFirst();
}

/// What doesn't work leaves all as it was.
void ServerCursor::restrict(const std::function<void(ServerQuery&)>& change) {
    ServerQuery before = query_;
    try {
        change(query_);
        fetchFirst();
        fresh_ = true;
    } catch (...) {
        query_ = std::move(before);
        throw;
    }
}

void ServerCursor::setFilter(const std::string& condition) {
    if (saysNothing(condition)) { // which can't be wrong
        query_.setFilter("", spelling());
        filter_.clear();
        later_ = true;
        return;
    }
    restrict([&](ServerQuery& query) { query.setFilter(condition, spelling()); });
    filter_ = condition;
}

void ServerCursor::setSort(const std::string& fields) {
    restrict([&](ServerQuery& query) { query.setSort(fields, spelling()); });
    sort_ = jet::trimmed(fields, jet::Side::both).empty() ? "" : fields;
}

namespace {

/// What a column of whole numbers holds: there are two kinds of them on a server.
std::pair<std::int64_t, std::int64_t> limitsOf(jet::ColumnType type) {
    return type == jet::ColumnType::integer ? std::pair(INT16_MIN, INT16_MAX)
                                            : std::pair(INT32_MIN, INT32_MAX);
}

} // namespace

std::optional<std::string> ServerCursor::refusal(const QueryField& field, const jet::Value& value) {
    const jet::Column& column = columns(field.table)[field.column];
    if (const auto* const whole = std::get_if<std::int64_t>(&value)) {
        const auto [least, most] = limitsOf(column.type);
        if (*whole < least || *whole > most)
            return "O valor informado não cabe no campo \"" + column.name + "\".";
    }
    const auto* const text = std::get_if<std::string>(&value);
    if (text == nullptr)
        return std::nullopt;
    if (text->find('\0') != std::string::npos)
        return "O campo \"" + column.name + "\" não guarda o caractere zero.";
    const auto most = static_cast<std::int64_t>(column.maxCharacters());
    const std::int64_t length = jet::lengthOf(*text);
    if (column.type == jet::ColumnType::text && length > most)
        return "O campo \"" + column.name + "\" aceita no máximo " + std::to_string(most) +
               " caracteres; o texto informado tem " + std::to_string(length) + ".";
    return std::nullopt;
}

} // namespace ado
