#pragma once

#include "ado/Recordset.h"
#include "ado/recordset/Query.h"
#include "ado/recordset/Session.h"

namespace ado {

/// Others have changed or deleted the row. @throws Error{conflict}.
[[noreturn]] void goneOrChanged();

/// An open recordset.
struct Recordset::Parts final : SessionUser {
    /// Where it stands. `gone`: the row it stood on has been erased.
    enum class At : std::uint8_t { beforeFirst, row, gone, afterLast };

    Parts(Recordset& ofRecordset, Session& onSession, const std::string& source, CursorType type,
          LockType locking, CommandType command);
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;
    ~Parts() { session.leave(*this); }
    void close() override { recordset.Close(); }

    // Walking (RecordsetParts.cpp)
    /// Asks for the rows anew and goes to the first.
    void reload();
    /// The same, for the changed rows only where that can be told.
    void refresh();
    /// Takes in what has happened through the connection since last time: rows erased go at once.
    void applyChanges();
    /// The same, and what others have done, as the kind of cursor promises.
    void catchUp();
    /// Asks for the rows anew; the place stays with its row.
    void renew();
    /// Others have written: finds out whether the row stood on is still the same.
    void checkPlace();
    /// Whether the row is there and, if its key is known, has it still.
    [[nodiscard]] bool isSameRow();
    /// Of an error of reading the row: where others change the file, the page of an erased row may
    /// belong to another table.
    [[nodiscard]] bool meansErased(const jet::Error& error) const;
    void arrive(bool found, At otherwise);
    void requireRow() const;
    void find(const std::string& criterion);

    // The row (RecordsetFields.cpp)
    [[nodiscard]] Value value(std::size_t field);
    /// The row of a table at the place it stands on, or null where an outer join has none.
    [[nodiscard]] const jet::RowView* view(std::size_t table);
    /// The same of the one table of an updatable recordset, from here on `seen`.
    [[nodiscard]] const jet::RowView& see();
    /// Whether the current row is still as it was when it was first read.
    [[nodiscard]] bool asSeen();
    /// As the field's column is to hold it. An empty box stands for null where the file takes no
    /// empty text.
    [[nodiscard]] Value storable(const QueryField& place, const Value& value) const;

    // Editing (RecordsetEdit.cpp)
    [[nodiscard]] Shown shown(std::size_t table);
    [[nodiscard]] std::optional<std::uint64_t> currentVersion();
    void requireChangeable() const;
    void requireAs(const Shown& asShown);
    void beginEdit(std::optional<std::uint64_t> as);
    void assign(std::size_t field, const Value& value);
    void update();
    /// What the edit has given so far.
    [[nodiscard]] std::vector<jet::Assignment> assignments() const;
    void storeNew();
    void storeChanges();
    void erase(const Shown* shown);
    void forgetEdit();

    [[nodiscard]] const QueryField& field(std::size_t i) const { return query.fields().all()[i]; }
    [[nodiscard]] jet::Table& table() const { return *query.tables().front(); }
    /// If the query is live, and if it is updatable: see Query::rows().
    [[nodiscard]] LiveRows& liveRows() const { return static_cast<LiveRows&>(*rows); }
    [[nodiscard]] TableRows& tableRows() const { return static_cast<TableRows&>(*rows); }

    Recordset& recordset;
    Session& session;
    bool dynamic; ///< a list takes in what others do
    LockType lock;
    Query query;
    std::unique_ptr<Rows> rows;
    std::vector<jet::RowReader> readers; ///< one for each table
    At at = At::afterLast;

    LogPosition applied;             ///< the changes taken in
    bool knowsAll = true;            ///< none were missed since the rows were asked for
    bool outdated = false;           ///< others have written since the rows were asked for
    bool unsure = false;             ///< and since the place was last checked
    bool goneByOthers = false;       ///< At::gone, and not by us
    std::vector<jet::RowId> changed; ///< or added: rows that the next refresh() looks at

    std::optional<std::size_t> seen; ///< a hash of the current row as first read
    std::vector<Value> seenKey;      ///< its key's values, as of then
    ado::EditMode edit = ado::EditMode::None;
    std::vector<std::optional<Value>> assigned; ///< by column of the table
    /// Of the row when its edit began; nothing: changed since.
    std::optional<std::uint64_t> version;
};

} // namespace ado
