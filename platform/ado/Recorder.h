#pragma once

#include "ado/TableShape.h"
#include "jet/Types.h"

#include <span>

namespace ado {

/// Keeps a record of what is changed through a connection, row by row and in the same place: what
/// it stores happens together with the change it is about, or neither does.
class Recorder {
public:
    /// Whether it keeps a record of this table's changes, or of its new rows. Asked before each,
    /// outside of it: it may make what it stores them in, in a transaction if none is open. What it
    /// throws refuses the change.
    [[nodiscard]] virtual bool keeps(const TableShape& table, bool isNew) = 0;
    /// A row was `before` and is `after`: null before for a new one, null after for one erased.
    struct Change {
        TableShape table;
        const jet::Row* before;
        const jet::Row* after;
    };
    /// One row, which stands last, and before it all that has followed from it by relationships,
    /// in any table: each before what it has followed from, so that the way back begins at the end.
    /// What follows is told if a record is kept of the row, or of a table that was reached.
    /// What it throws undoes the change. Its own changes are asked about as others are.
    virtual void changed(std::span<const Change> rows) = 0;

protected:
    ~Recorder() = default;
};

} // namespace ado
