#pragma once

#include "ado/Recordset.h"
#include "ado/provider/Provider.h"

namespace ado {

/// An open recordset: what its provider's cursor shows, and the edit that is pending.
struct Recordset::Parts final : ProviderUser {
    Parts(Recordset& ofRecordset, Provider& onProvider, const std::string& source, CursorType type,
          LockType locking, CommandType command)
        : recordset(ofRecordset), provider(onProvider), lock(locking),
          cursor(onProvider.open(source, type, locking, command)) {
        provider.enter(*this);
    }
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;
    ~Parts() { provider.leave(*this); }
    void close() override { recordset.Close(); }

    // The row (RecordsetFields.cpp)
    [[nodiscard]] Value value(std::size_t field);
    /// As the field's column is to hold it. An empty box stands for null where the table takes no
    /// empty text.
    [[nodiscard]] Value storable(const QueryField& place, const Value& value) const;

    // Editing (RecordsetEdit.cpp)
    [[nodiscard]] Shown shown(std::size_t table);
    void requireChangeable() const;
    void requireAs(const Shown& asShown);
    void beginEdit(std::optional<std::uint64_t> as);
    void assign(std::size_t field, const Value& value);
    void update();
    /// What the edit has given so far.
    [[nodiscard]] std::vector<jet::Assignment> assignments() const;
    void erase(const Shown* shown);
    void forgetEdit();

    [[nodiscard]] const QueryField& field(std::size_t i) const { return cursor->fields().all()[i]; }
    [[nodiscard]] const jet::Column& column(const QueryField& field) const {
        return cursor->columns(field.table)[field.column];
    }

    Recordset& recordset;
    Provider& provider;
    LockType lock;
    std::unique_ptr<Cursor> cursor;

    ado::EditMode edit = ado::EditMode::None;
    std::vector<std::optional<Value>> assigned; ///< by column of the table
    /// Of the row when its edit began; nothing: changed since.
    std::optional<std::uint64_t> version;
};

} // namespace ado
