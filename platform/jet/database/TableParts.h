#pragma once

#include "jet/Table.h"
#include "jet/row/LongValues.h"
#include "jet/share/Hindrance.h"

#include <algorithm>

namespace jet {

class TableRules;

/// The parsed definition of a table and what works on it.
struct Table::Parts {
    Database& owner;
    Pager& pager;
    PageAllocator& pages;
    TableDefinition definition;
    std::vector<IndexTree> trees;
    std::vector<std::string> foldedNames; ///< of the columns
    std::optional<Hindrance> unsound;     ///< what its own check has found, once verified
    bool verified = false;
    bool addsAtEnd = false;
    std::unique_ptr<const TableRules> rules; ///< null if there are none
    bool rulesKnown = false;
    bool rulesTentative = false; ///< read from a catalog that the open transaction has changed

    Parts(Database& database, PageNo page);
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;
    ~Parts();

    [[nodiscard]] const Format& format() const noexcept { return pager.format(); }

    /// Of a long value, wherever it lies.
    [[nodiscard]] Bytes contentOf(const StoredField& field) const {
        return field.content ? *field.content
                             : readLongValue(pager, field.bytes, definition.page());
    }

    /// The key of a row, or nothing if this index passes over it.
    [[nodiscard]] std::optional<Bytes> key(std::size_t index, const StoredRow& row) const {
        const RealIndex& real = definition.realIndexes[index];
        if (real.ignoreNulls && allNull(index, row))
            return std::nullopt;
        Bytes bytes;
        for (const auto& [place, ascending] : real.columns) {
            const Column& column = definition.columns[place];
            const StoredField& field = row[place];
            if (column.type == ColumnType::boolean)
                appendBooleanKey(bytes, ascending, field.present);
            else if (!field.present)
                appendNullKey(bytes, ascending);
            else if (column.type == ColumnType::memo)
                appendStoredKey(bytes, column, ascending, contentOf(field));
            else
                appendStoredKey(bytes, column, ascending, field.bytes);
        }
        return bytes;
    }

    /// Of the columns of an index. A yes/no is never null.
    [[nodiscard]] bool allNull(std::size_t index, const StoredRow& row) const {
        const auto& columns = definition.realIndexes[index].columns;
        return std::all_of(columns.begin(), columns.end(), [&](const auto& key) {
            return definition.columns[key.column].type != ColumnType::boolean &&
                   !row[key.column].present;
        });
    }

    /// The row as it lies in the file. @throws Error{conflict} if it is gone.
    [[nodiscard]] StoredRow stored(RowId id) const {
        RowReader reader(pager, definition);
        const RowView* row = reader.read(id);
        if (!row)
            throw Error(Errc::conflict, "O registro foi excluído por outro usuário ou programa.");
        return storedRow(definition, *row);
    }

    /// Why this table can't be changed, the file aside, or nothing. Reads its rules.
    [[nodiscard]] std::optional<Hindrance> hindrance(Table& table);

    /// That no column of a key is left empty. @throws Error{nullValue}.
    void requireKeys(const Table& table, const StoredRow& row) const;
    void requireKey(const Table& table, const Index& index, const StoredRow& row) const;
    /// That no other row than `self` has the same key. @throws Error{duplicate}.
    void requireUnique(std::span<const Index> indexes, const StoredRow& row,
                       std::optional<RowId> self) const;
    void requireUnique(const Index& index, std::size_t place, const StoredRow& row,
                       std::optional<RowId> self) const;
    /// Writes the long values that are given and not written yet; in the row itself if it has room.
    void settleLongValues(StoredRow& row);
    /// Gives back the long values of `old` that `row` (if any) no longer has.
    void releaseLongValues(const StoredRow& old, const StoredRow* row);
    void addKey(std::size_t index, const Bytes& key, RowId id);
    /// Gives the numbers that count by themselves, where none is given. @throws Error{full}.
    void takeNumber(StoredRow& row);
    /// The counter never stays behind a number that a row has.
    void noteNumber(const StoredRow& row);

    /// Which fields of `row` (its new contents not yet written) differ from those of `old`.
    [[nodiscard]] std::vector<bool> changedFields(const StoredRow& old, const StoredRow& row) const;
    /// The catalog says what rules there are: after a change of it every table reads its own anew.
    void noteCatalogChange();

    /// A number of the definition's first page.
    template <class T>
    [[nodiscard]] T counter(Field<T> field) const {
        definition.requireThere();
        return load(pager.read(definition.page()).bytes().data(), field);
    }
    template <class T>
    void setCounter(Field<T> field, std::type_identity_t<T> value) {
        store(pager.change(definition.page()).data(), field, value);
    }
    [[nodiscard]] Field<std::uint32_t> distinctKeys(std::size_t index) const {
        return {format().statisticsAt(index) + format().statistics.distinctKeys.at};
    }
};

} // namespace jet
