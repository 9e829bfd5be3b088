#include "ado/server/ServerCursor.h"

#include "jet/Error.h"
#include "jet/TextParts.h"

namespace ado {

using jet::Errc;
using jet::Error;

std::unique_ptr<Cursor> ServerCursor::open(ServerSession& session, const std::string& source,
                                           CommandType command) {
    ServerQuery query(session.catalog(), source, command);
    std::unique_ptr<ServerCursor> made;
    if (query.keyed() != nullptr)
        made = std::make_unique<ServerList>(session, std::move(query));
    else
        made = std::make_unique<ServerAnswer>(session, std::move(query));
    made->reload();
    return made;
}

Spelling ServerCursor::spelling() { return fields().spelling(session_.catalog().spelling()); }

void ServerCursor::reload() {
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
    restrict([&](ServerQuery& query) { query.setFilter(condition, spelling()); });
    filter_ = jet::trimmed(condition, jet::Side::both).empty() ? "" : condition;
}

void ServerCursor::setSort(const std::string& fields) {
    restrict([&](ServerQuery& query) { query.setSort(fields, spelling()); });
    sort_ = jet::trimmed(fields, jet::Side::both).empty() ? "" : fields;
}

std::optional<std::string> ServerCursor::refusal(const QueryField& field, const jet::Value& value) {
    const jet::Column& column = columns(field.table)[field.column];
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
