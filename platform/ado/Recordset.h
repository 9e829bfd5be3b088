#pragma once

#include "ado/Field.h"
#include "ado/RecordsetTypes.h"
#include "ado/Shown.h"
#include "jet/Error.h"

#include <cstdio> // for the next lines
#include <memory>
#include <string>
#include <string_view>

// <cstdio> makes EOF a macro. The record-set model has EOF for a name, so the macro goes, and goes
// here, after the header that makes it, which won't be read a second time.
#undef EOF

namespace jet {
struct Column;
}

namespace ado {

class Connection;

/// The rows of a table, or of one select statement, and a place among them.
///
/// It stands on a row, before the first (BOF), after the last (EOF), both when there are no rows,
/// or where its row was until Delete() took it. Fields are read live from the file by name.
///
/// Rows come in the order of the statement's "order by", of setSort(), or else of the primary key.
/// A set over one table (all columns, `t.*` or plain columns, no "group by" or "distinct") can be
/// changed; of a join or a computed result the rows can only be read. A whole table costs nothing
/// to open, whatever its size; other sets over one table remember 8 bytes for each row; joins and
/// computed results are fetched as they are walked, some rows ahead.
///
/// What is changed through its own connection while it is open: a row deleted is gone at once, one
/// changed stays in its place, one added through it comes last (in a whole table: at its place);
/// Requery() puts everything right, and after changes of this connection only, looks at the changed
/// rows only. What others do: see CursorType.
///
/// Moving with an edit pending stores it first, as Update() does: that is the record-set model's
/// rule. All functions but Open(), Close() and State() throw Error{misuse} when it is closed. Not
/// copied, not moved: its connection knows it.
class Recordset {
public:
    Recordset();
    /// Closes; a pending edit is forgotten.
    ~Recordset();
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;

    /// Opens on a table's name or one select statement, in the dialect of SqlDialect.h, and goes
    /// to the first row. A connection that is closed but has a connection string is opened.
    /// @throws Error{syntax} if the text is anything else, Error{notFound} for an unknown table or
    ///         column, Error{misuse} if open already, and what Connection::Open() throws. Whatever
    ///         is asked of the recordset before it has been opened is answered by the same.
    void Open(const Text& source, Connection& connection, CursorType cursor = CursorType::Dynamic,
              LockType lock = LockType::Optimistic, CommandType command = CommandType::Unknown);
    /// Does nothing if closed. A pending edit is forgotten.
    void Close();
    [[nodiscard]] ado::State State() const noexcept;
    /// Reads the rows again, keeps filter and sort, goes to the first row.
    /// @throws Error{misuse} while an edit is pending.
    void Requery();

    /// To the first or last row. @throws Error{noCurrentRow} if there are no rows.
    void MoveFirst();
    void MoveLast();
    /// @throws Error{noCurrentRow} at EOF (next) or BOF (previous) already.
    void MoveNext();
    void MovePrevious();
    [[nodiscard]] bool BOF() const;
    [[nodiscard]] bool EOF() const;
    /// The rows, of the filtered set if there is a filter. Costs nothing over one table of a file;
    /// a server counts them, and of a join or a computed result it fetches all rows.
    [[nodiscard]] std::int64_t RecordCount() const;
    /// Whether there are none, which is told without counting them.
    [[nodiscard]] bool isEmpty() const;

    /// Goes to the first row that meets the criterion, from the current row on, the current one
    /// included; to EOF if there is none, or if it stands there already. From BOF it begins at the
    /// first row. The criterion is a condition of the dialect: "codigo=12", "numero='000123'",
    /// "tipo=true".
    /// @throws Error{syntax}, Error{notFound}; Error{misuse} over a computed result.
    void Find(const Text& criterion);

    /// The same from the first row on, wherever it stands. Nothing is found where there are no
    /// rows.
    void FindFirst(const Text& criterion);

    /// Only the rows that meet a condition, which may have And and Or; "" for all. Goes to the
    /// first row (BOF and EOF if there is none). @throws Error{syntax}, Error{notFound}: the old
    /// filter stays.
    void setFilter(const Text& condition);
    void clearFilter() { setFilter(""); }
    [[nodiscard]] const std::string& Filter() const;
    /// "nome", "nome desc", "cidade, nome"; "" for the statement's own order. Goes to the first
    /// row. Equal rows follow the primary key. @throws Error{syntax}, Error{notFound}: the old
    /// order stays.
    void setSort(const Text& fields);
    [[nodiscard]] const std::string& Sort() const;

    /// Begins a new row, all fields null; it is stored, and current, after Update().
    /// @throws Error{readOnly}.
    void AddNew();
    /// How the current row is at this moment, to be kept by who shows it. To be taken before its
    /// fields are: then what comes in between counts as not seen.
    /// @throws Error{noCurrentRow}, Error{conflict} if the row has been deleted.
    [[nodiscard]] Shown shown() const;
    /// The same of one table of a join. @throws also Error{notFound} if it has no such table.
    [[nodiscard]] Shown shown(std::string_view table) const;
    /// Whether there is a current row, and it isn't any more as it was shown.
    [[nodiscard]] bool isOther(const Shown& shown) const;
    /// Who may have changed it since, for a sentence: " por CAIXA2", " por CAIXA2 ou CAIXA3"; if
    /// that can't be told, " por outra janela ou por outro programa".
    [[nodiscard]] std::string byWhom(const Shown& shown) const;
    /// Begins to change the current row, which must be as it was shown. In a transaction nobody
    /// else can change it from here on, or else Update() is refused.
    /// @throws Error{conflict} if it isn't, naming who has changed it if that can be told;
    ///         Error{gone} if there is no current row, the same; Error{readOnly, locked}.
    void Edit(const Shown& shown);
    /// Stores the pending edit; does nothing if there is none.
    /// @throws Error{conflict} if another changed or deleted the row since it was first read here,
    ///         and what jet::Table::insert and update throw. Nothing is stored then, and the edit
    ///         stays pending: CancelUpdate() or try again.
    void Update();
    /// Forgets the pending edit.
    void CancelUpdate();
    /// Deletes the current row. There is no current row then until a move; MoveNext() goes to the
    /// row after it, MovePrevious() to the one before.
    /// @throws Error{noCurrentRow}, Error{conflict}, Error{readOnly}.
    void Delete();
    /// The same of a row that must be as it was shown. @throws as Edit().
    void Delete(const Shown& shown);
    [[nodiscard]] ado::EditMode EditMode() const;

    /// A field by name, without regard to case and trailing blanks: "nome"; in a join where
    /// several tables have it "bancos.nome". @throws Error{notFound} naming it.
    [[nodiscard]] Field operator[](std::string_view name);
    [[nodiscard]] FieldValue operator[](std::string_view name) const;
    /// All fields, in the order of the table or statement.
    [[nodiscard]] std::size_t FieldCount() const;
    /// @throws Error{notFound} if there are not so many.
    [[nodiscard]] FieldValue field(std::size_t place) const;
    /// Lets a field go by another name as well, wherever fields are named: here, in Find(), filter
    /// and sort. Until Close(). Without effect where the set has a field of that name already.
    /// @throws Error{notFound} if there is no field `field`.
    void addAlias(const Text& alias, const Text& field);
    /// Lets a field be named that the table may lack, for files that aren't all alike. If it does,
    /// the field is null and what is assigned to it goes nowhere. Until Close().
    void addOptional(const Text& field);
    /// Where there is no field of this name, optional or not: a sentence that says so.
    [[nodiscard]] std::optional<std::string> missing(std::string_view field) const;

private:
    friend class FieldValue;
    friend class Field;
    struct Parts;

    [[nodiscard]] Value valueOf(std::size_t column) const;
    void assign(std::size_t column, const Value& value);
    [[nodiscard]] const std::string& nameOf(std::size_t column) const;
    /// The table's column that a field is read from; null if it is computed.
    [[nodiscard]] const jet::Column* columnOf(std::size_t field) const;
    [[nodiscard]] std::optional<std::string> refusalOf(std::size_t field, const Value& value) const;
    [[nodiscard]] Parts& open() const;

    std::unique_ptr<Parts> parts_;      ///< null when closed
    std::optional<jet::Error> failure_; ///< of the Open() that it is closed since
};

} // namespace ado
