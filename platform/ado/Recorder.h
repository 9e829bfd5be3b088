#pragma once

#include "ado/TableShape.h"
#include "jet/Types.h"

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
    /// What it throws undoes the change. Its own changes are asked about as others are.
    virtual void changed(const TableShape& table, const jet::Row* before,
                         const jet::Row* after) = 0;

protected:
    ~Recorder() = default;
};

} // namespace ado
