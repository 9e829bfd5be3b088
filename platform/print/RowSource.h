#pragma once

#include "print/ReportValue.h"

/// Where a report's rows come from: forward, once, as they are needed. The windows implement it
/// over a recordset.
class RowSource {
public:
    RowSource() = default;
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;
    virtual ~RowSource() = default;

    /// The columns' names, always the same; one value for each in every row, in this order.
    [[nodiscard]] virtual QStringList columns() const = 0;

    /// Puts the next row's values into `values`, which comes with as many as there are columns, all
    /// null; any it leaves null stay so.
    /// @return false if there are no more rows; then it isn't asked again.
    /// @throws what reading throws: the report takes no more rows then and lets it out to who asked
    ///         for them; out of an idle slice, to the failure handler (controls/Failure.h).
    virtual bool next(std::vector<ReportValue>& values) = 0;
};
