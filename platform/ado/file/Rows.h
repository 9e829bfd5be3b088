#pragma once

#include "ado/engine/PreparedStatement.h"
#include "jet/Table.h"

#include <cstdint>
#include <span>
#include <unordered_set>

/// The rows of a recordset and a place among them, in four kinds: a whole table walked by its key
/// (TableWalk), a list of rows of one table (RowList), rows of a join (JoinRows), computed values
/// (ComputedRows).
namespace ado {

/// A row's id as kept of lists of many millions: its packed() has no more bits.
using RowNumber = std::uint32_t;

/// Any kind.
class Rows {
public:
    Rows() = default;
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;
    virtual ~Rows() = default;

    /// Each moves and says whether there is a row there; where there is none, first() or last()
    /// must come next. When the row it stood on has been erased, next() and previous() go to its
    /// neighbours.
    virtual bool first() = 0;
    virtual bool last() = 0;
    virtual bool next() = 0;
    virtual bool previous() = 0;

    [[nodiscard]] virtual bool empty() = 0;
    [[nodiscard]] virtual std::int64_t count() = 0;

    /// Rows of table number `table` have been erased, given by their packed ids; true if the one
    /// stood on is among them.
    virtual bool erased(std::size_t table, const std::unordered_set<std::int64_t>& ids) = 0;

    /// Takes in rows that have been changed or added, `changed` if it is known which; first() or
    /// last() must come next. False if that can't be done, or costs more than asking for all rows
    /// anew: these are of no use then.
    virtual bool refresh(const std::vector<jet::RowId>* /*changed*/) { return false; }

    /// Whether renew() can take in what others have done.
    [[nodiscard]] virtual bool isRenewable() const { return false; }
    /// Asks for the rows anew. Stays on its row, if that is still there and `same` (an erased row
    /// may have left its id to another); else it stands as if that had been erased.
    /// @return whether it stays.
    virtual bool renew(bool /*same*/) { return true; }
};

/// Rows that are rows of tables.
class LiveRows : public Rows {
public:
    /// The row of table number `table` at the place it stands on; RowId{} where an outer join has
    /// none.
    [[nodiscard]] virtual jet::RowId row(std::size_t table) const = 0;
    /// From the row stood on, itself included, to the first that `statement` finds, which is made
    /// by Query::finder(). `current` reads the row stood on in the first table. False if there is
    /// none.
    virtual bool find(PreparedStatement statement,
                      const std::function<const jet::RowView*()>& current) = 0;
};

/// Rows of one table, which can be changed.
class TableRows : public LiveRows {
public:
    /// A row has been added through the recordset: to it, wherever it belongs.
    virtual void add(jet::RowId row) = 0;
    /// The row stood on has been changed through the recordset.
    virtual void changed(jet::RowId /*row*/) {}
    /// Whether the row stood on is still there, with the key that it had: `key`, if it isn't empty.
    [[nodiscard]] virtual bool isSame(jet::RowReader& reader,
                                      std::span<const jet::Value> key) const = 0;
};

} // namespace ado
