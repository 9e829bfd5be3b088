#include "ado/file/FetchedRows.h"
#include "ado/file/FileCursor.h"
#include "jet/Error.h"

namespace ado {

using jet::Error;

namespace {

std::size_t hashOf(const jet::RowView& row) {
    const auto bytes = row.bytes();
    return std::hash<std::string_view>{}(
        {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

} // namespace

// ---- reading ----------------------------------------------------------------------------------

const jet::RowView* FileCursor::view(std::size_t table) {
    const jet::RowId row = liveRows().row(table);
    if (row == jet::RowId{})
        return nullptr;
    const jet::RowView* found = nullptr;
    try {
        found = readers_[table].read(row);
    } catch (const Error& error) {
        if (!meansErased(error))
            throw;
    }
    if (found == nullptr)
        goneOrChanged();
    return found;
}

const jet::RowView& FileCursor::see() {
    const jet::RowView& row = *view(0);
    if (!seen_) {
        seen_ = hashOf(row);
        seenKey_.clear();
        if (const auto key = table().primaryKey())
            for (const jet::IndexColumn& column : table().indexes()[*key].columns)
                seenKey_.push_back(row.value(column.column));
    }
    return row;
}

bool FileCursor::asSeen() { return !seen_ || *seen_ == hashOf(*view(0)); }

jet::Value FileCursor::value(const QueryField& field) {
    return session_.database().onSnapshot([&]() -> jet::Value {
        applyChanges();
        checkPlace();
        requireRow();
        if (!query_.live())
            return static_cast<const ComputedRows&>(*rows_).cell(field.column);
        if (query_.updatable())
            return see().value(field.column);
        const jet::RowView* row = view(field.table);
        return row != nullptr ? row->value(field.column) : jet::Value{};
    });
}

bool FileCursor::takesEmptyText(const QueryField& field) {
    return query_.tables()[field.table]->takesEmptyText(field.column);
}

std::optional<std::string> FileCursor::refusal(const QueryField& field, const jet::Value& value) {
    return query_.tables()[field.table]->refusal(field.column, value);
}

// ---- as it was shown --------------------------------------------------------------------------

Cursor::State FileCursor::state(std::size_t table) {
    return session_.database().onSnapshot([&]() -> State {
        applyChanges();
        checkPlace();
        requireRow();
        const jet::RowView* const row = view(table);
        if (row == nullptr)
            return {};
        return {query_.tables()[table]->rowVersion(*row), session_.database().changesByOthers()};
    });
}

std::optional<std::uint64_t> FileCursor::version() {
    if (at() != At::row)
        return std::nullopt;
    return table().rowVersion(liveRows().row(0));
}

std::vector<std::string> FileCursor::writersSince(std::uint64_t moment) const {
    return session_.database().writersSince(moment);
}

std::optional<std::uint64_t> FileCursor::versionToEdit() {
    const jet::Reading reading(session_.database());
    applyChanges();
    checkPlace();
    requireRow();
    static_cast<void>(see());
    return asSeen() ? version() : std::nullopt;
}

/// So that nobody else changes the row any more.
void FileCursor::claim() {
    if (session_.inTransaction())
        session_.database().claim();
}

std::optional<std::uint64_t> FileCursor::versionToChange() {
    claim();
    catchUp();
    return version();
}

// ---- changing ---------------------------------------------------------------------------------

void FileCursor::insert(Given given, const Stored& stored) {
    catchUp(); // the row may take the place of an erased one, which is to be gone from the list
    const jet::RowId row = session_.insert(table(), given);
    stored();
    tableRows().add(row);
    arrive(true, At::row);
}

void FileCursor::update(Given given, std::optional<std::uint64_t> expected, const Stored& stored) {
    catchUp();
    if (at() != At::row || !expected)
        goneOrChanged();
    const jet::RowId row = liveRows().row(0);
    session_.update(table(), row, given, expected);
    stored();
    tableRows().changed(row);
}

std::optional<std::uint64_t> FileCursor::versionToErase(std::optional<std::uint64_t> asShown) {
    claim(); // so that a purge needn't look at each one twice
    catchUp();
    requireRow();
    if (!asShown && !asSeen())
        goneOrChanged();
    if (asShown || session_.inTransaction())
        return asShown;
    return version();
}

void FileCursor::erase(std::optional<std::uint64_t> expected) {
    session_.erase(table(), liveRows().row(0), expected);
    applyChanges();
    lose(false);
}

} // namespace ado
