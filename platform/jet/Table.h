#pragma once

#include "jet/index/IndexTree.h"
#include "jet/index/KeyCodec.h"
#include "jet/row/RowCursor.h"
#include "jet/row/RowEncoder.h"

#include <memory>
#include <string>
#include <string_view>

namespace jet {

class Consequences;
class Database;

/// One tree of keys over a table. Logical indexes that share a tree are one Index.
struct Index {
    std::string name;
    std::vector<IndexColumn> columns;
    bool unique;
    bool ignoreNulls; ///< rows whose key columns are all null have no entry
    bool required;    ///< no key column may be null
    bool primary;
};

/// A stretch of an index, in the order of its key bytes: from `lower` (inclusive) to `upper`
/// (exclusive; nothing: to the end).
struct KeyRange {
    Bytes lower;
    std::optional<Bytes> upper;
};

/// A new value for one column.
struct Assignment {
    std::size_t column;
    Value value;
};

class Table;

/// A row that changed or went along with another, as a relationship of the file asks for.
struct Cascaded {
    const Table* table;
    RowId row;
    Row before; ///< as it was until then; a row may change more than once
    bool erased;
};

/// One table of an open file: its columns, indexes and rows.
///
/// Rows are found by RowId, by scanning, or through an index; all three see the open transaction's
/// changes. Every change maintains every index, counter and usage map. A change outside an explicit
/// transaction is a transaction of its own (see Database::flush).
class Table {
public:
    Table(Database& database, std::string name, PageNo definition);
    ~Table();
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    [[nodiscard]] std::span<const Column> columns() const noexcept;
    /// By name, without regard to case and trailing blanks.
    [[nodiscard]] std::optional<std::size_t> findColumn(std::string_view name) const;
    [[nodiscard]] std::span<const Index> indexes() const noexcept { return indexes_; }
    [[nodiscard]] std::optional<std::size_t> primaryKey() const noexcept;
    /// Rows of the table by its own counter.
    [[nodiscard]] std::int64_t rowCount() const;

    /// Why this table can't be changed, or nothing if it can. The first call that could end in a
    /// change compares the indexes with the rows (a bounded sample of them in a large table), and
    /// reads the rules that the file keeps for the table.
    [[nodiscard]] std::optional<std::string> readOnlyReason();
    /// The rules may have become others: they are read again before the next change. Changes made
    /// to the catalog through this engine need no such call.
    void forgetRules() noexcept;
    /// The file has the table no more, or in another form: whoever still reads or changes it is
    /// told why.
    void lose(const Error& why) noexcept;

    /// Walks the rows in RowId order.
    [[nodiscard]] RowCursor scan() const;
    /// Goes to single rows, in any order; the row it returns is valid until its next call.
    [[nodiscard]] RowReader reader() const;
    /// The row at `id`, or nothing if it has been erased.
    /// Costs one page read, plus one for each page of a long value.
    /// @throws Error{corrupt} naming the page if its bytes don't parse; Error{io} if it can't be
    /// read.
    [[nodiscard]] std::optional<Row> read(RowId id) const;
    /// A fingerprint of everything stored for the row, long values included; nothing if it has been
    /// erased. Two different fingerprints mean that the row was changed between.
    [[nodiscard]] std::optional<std::uint64_t> rowVersion(RowId id) const;
    [[nodiscard]] std::uint64_t rowVersion(const RowView& row) const;

    /// Walks an index; start with first(), last() or seek().
    [[nodiscard]] IndexTree::Cursor walk(std::size_t index) const;
    /// The keys whose first columns equal `values` (one or more, in key order).
    /// Values are converted as insert() converts them: Error{outOfRange} for one that the column
    /// can't hold.
    [[nodiscard]] KeyRange keysEqual(std::size_t index, std::span<const Value> values) const;
    /// The keys whose first columns equal `values` but for the last one, which is compared:
    /// from `low` to `high`, each inclusive when given. Rows beyond the bounds may be included
    /// where the key is coarser than the value.
    [[nodiscard]] KeyRange keysBetween(std::size_t index, std::span<const Value> equal,
                                       const std::optional<Value>& low,
                                       const std::optional<Value>& high) const;
    /// About how large a part of an index, 0 to 1, lies between the keys; costs two ways down it.
    [[nodiscard]] double partBetween(std::size_t index, const KeyRange& range) const;
    /// The key of a stored row in an index.
    [[nodiscard]] std::optional<Bytes> keyOf(std::size_t index, RowId id) const;

    /// Why a column would not take a value, by its type and width and by the file's rules for it
    /// alone, as a sentence for the operator; nothing if it would.
    [[nodiscard]] std::optional<std::string> refusal(std::size_t column, const Value& value);

    /// Whether the file's rules let a column hold an empty text.
    [[nodiscard]] bool takesEmptyText(std::size_t column);

    /// Of the column that counts by itself, the last number that was given or passed over.
    [[nodiscard]] std::int32_t lastNumber() const;
    /// Inside a transaction: the next one is beyond `last`.
    /// @throws as insert().
    void passNumber(std::int32_t last);
    /// From now on a row is added behind all others, where a scan meets it last, even if there is
    /// room for it between them: for who fills a new file in the order of another.
    void addAtEnd() noexcept;

    /// Adds a row. `values` has one value per column; null in an autonumber column asks for the
    /// next number, and a value given there is kept.
    /// @throws Error{duplicate, nullValue, rule, related, tooLong, outOfRange, readOnly, locked,
    ///         full}, and nothing is changed.
    RowId insert(std::span<const Value> values);
    /// Adds a row of which some columns are given; the others take their defaults.
    /// @throws as the other insert().
    RowId insert(std::span<const Assignment> given);
    /// Changes some columns of a row.
    /// `expected`, if given, is the rowVersion() of the row as who changes it has seen it: what
    /// another station has stored since is not overwritten.
    /// @return the other rows, of any table, that changed or went with it.
    /// @throws as insert(), and Error{conflict} if the row has gone or isn't as expected.
    std::vector<Cascaded> update(RowId id, std::span<const Assignment> changes,
                                 std::optional<std::uint64_t> expected = std::nullopt);
    /// @return as update() does.
    /// @throws Error{conflict} if the row has gone or isn't as expected, Error{related} if others
    ///         need it, Error{readOnly, locked}.
    std::vector<Cascaded> erase(RowId id, std::optional<std::uint64_t> expected = std::nullopt);

    /// The tables whose rows the cascades of the file may change or erase when one of these is
    /// updated so, or erased if `changes` is nothing. Where none begins here that costs nothing.
    [[nodiscard]] std::vector<const Table*>
    cascadesTo(std::optional<std::span<const Assignment>> changes);

    /// Enters all rows into an index that is empty, as extendTable() makes it.
    /// @throws Error{duplicate, nullValue}, having done a part.
    void fillIndex(std::size_t index);

    /// How the table is stored, for `check`.
    [[nodiscard]] const TableDefinition& definition() const noexcept;
    [[nodiscard]] const IndexTree& tree(std::size_t index) const noexcept;

private:
    friend class Consequences;
    struct Parts; // the parsed definition and what works on it

    void requireWritable();
    // One row's part of a statement.
    RowId addRow(StoredRow row, Consequences& all);
    void changeRow(RowId id, std::span<const Assignment> changes, Consequences& all);
    void eraseRow(RowId id, Consequences& all);
    void requireExpected(RowId id, std::optional<std::uint64_t> expected) const;
    void appendKey(Bytes& key, std::size_t index, std::size_t place, const Value& value) const;

    std::string name_;
    std::vector<Index> indexes_;
    std::unique_ptr<Parts> parts_;
};

} // namespace jet
