#pragma once

#include "print/ReportValue.h"

/// What RowSource::next() has come to.
enum class NextRow : unsigned char {
    row,
    none, ///< there are no more
    anew, ///< what the rows are read from has changed meanwhile: those given so far fit no longer,
          ///< and the next call gives the first one again
};

/// Where a report's rows come from: forward, as they are needed, all of one state. The windows
/// implement it over a recordset.
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
    /// After NextRow::none it isn't asked again; NextRow::anew must come to an end.
    /// @throws what reading throws: the report has failed then, asks no more and lets it out to who
    ///         asked for rows; out of an idle slice, to the failure handler (controls/Failure.h).
    virtual NextRow next(std::vector<ReportValue>& values) = 0;
};
